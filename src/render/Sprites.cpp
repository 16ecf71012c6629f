// Points and lines of several pixels: each becomes two triangles. One way to draw them for two kinds.
#include "Drawing.h"

#include "PointSpriteExpansion.h"
#include "RectangleSpriteExpansion.h"
#include "SpriteSubmission.h"

namespace zarvex::zx3DQt {

namespace {

// What a kind of sprites consists of:
// - `Sprites` are given, `Input` is what the compute shader reads of one, `Vertex` one of the six it writes;
// - `kInput` and `kOutput` are where its buffers are kept, `kExpanded` those that are filled here.

struct PointSprites {
    using Sprites = Drawing::Points;
    using Input = PointSprite::ComputeStageInputVertexData;
    using Vertex = PointSprite::DummyVertexT;

    static constexpr FrameResource kInput = FrameResource::PointSpriteInput;
    static constexpr FrameResource kOutput = FrameResource::SpriteVertices;
    static constexpr Program kComputeProgram = Program::PointSpriteCompute;
    static constexpr Program kProgram = Program::PointSprite;
    static constexpr std::uint32_t kVertices = PointSprite::kVerticesPerPoint;
    static constexpr auto kUpdateUniform = &Drawing::UpdatePointSpriteUniform;
    static constexpr auto kExpand = &PointSprite::Expand;
    static constexpr bool kIsStippled = false;
    static constexpr std::initializer_list<bgfx::Attrib::Enum> kInputLayout{bgfx::Attrib::Position,
                                                                            bgfx::Attrib::Color0};
    static constexpr std::initializer_list<bgfx::Attrib::Enum> kVertexLayout{
        bgfx::Attrib::Position, bgfx::Attrib::Color0, bgfx::Attrib::TexCoord0};

    static Input ToInput(zx3D::Vertex::Pos3fColorRGBA const& point) {
        return {ToFloat4(point.position), ToFloat4(point.color)};
    }
};

struct RectangleSprites {
    using Sprites = Drawing::Lines;
    using Input = RectangleSprite::ComputeStageInputVertexData;
    using Vertex = RectangleSprite::DummyVertexT;

    static constexpr FrameResource kInput = FrameResource::RectangleSpriteInput;
    static constexpr FrameResource kOutput = FrameResource::RectangleSpriteOutput;
    static constexpr Program kComputeProgram = Program::RectangleSpriteCompute;
    static constexpr Program kProgram = Program::RectangleSprite;
    static constexpr std::uint32_t kVertices = RectangleSprite::kVerticesPerLine;
    static constexpr auto kUpdateUniform = &Drawing::UpdateRectangleSpriteUniform;
    static constexpr auto kExpand = &RectangleSprite::Expand;
    static constexpr bool kIsStippled = true;
    static constexpr std::initializer_list<bgfx::Attrib::Enum> kInputLayout{
        bgfx::Attrib::TexCoord0, bgfx::Attrib::TexCoord1, bgfx::Attrib::Color0};
    /// Without a position: the draw program takes all that it needs from texture coordinates.
    static constexpr std::initializer_list<bgfx::Attrib::Enum> kVertexLayout{
        bgfx::Attrib::TexCoord0, bgfx::Attrib::Color0, bgfx::Attrib::TexCoord1, bgfx::Attrib::TexCoord2};

    static Input ToInput(zx3D::Line const& line) {
        return {ToFloat4(line.start), ToFloat4(line.end), ToFloat4(line.color)};
    }
};

template<typename Kind>
bgfx::VertexLayout const& InputLayout() {
    static bgfx::VertexLayout const layout = LayoutOfFloat4s(Kind::kInputLayout);
    return layout;
}

template<typename Kind>
bgfx::VertexLayout const& VertexLayout() {
    static bgfx::VertexLayout const layout = LayoutOfFloat4s(Kind::kVertexLayout);
    return layout;
}

template<typename Kind>
std::shared_ptr<typename Kind::Input[]> CopyInput(typename Kind::Sprites sprites) {
    auto input = std::make_shared_for_overwrite<typename Kind::Input[]>(sprites.count);
    for (std::uint64_t i = 0; i < sprites.count; ++i)
        input[i] = Kind::ToInput(sprites.data[i]);
    return input;
}

} // namespace

template<typename Kind>
void Drawing::UpdateSpriteUniforms(DrawCall const& call, std::uint32_t count, std::uint16_t size) const {
    UpdateViewportUniform(call.view);
    (this->*Kind::kUpdateUniform)(count, size);
}

template<typename Kind>
void Drawing::SubmitSprites(DrawCall const& call, std::uint32_t count, std::uint16_t size,
                            bgfx::DynamicVertexBufferHandle vertices) const {
    bgfx::setState(call.state);
    bgfx::setVertexBuffer(0, vertices);
    UpdateSpriteUniforms<Kind>(call, count, size);
    if constexpr (Kind::kIsStippled)
        UpdateLineStippleUniform(call.stipple);
    bgfx::submit(call.view, GetProgram(Kind::kProgram), 0, BGFX_DISCARD_ALL);
}

template<typename Kind>
void Drawing::DrawSpritesCPU(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size) {
    using Vertex = typename Kind::Vertex;
    if (sprites.IsEmpty() || size == 0)
        return;
    auto const count = static_cast<std::uint32_t>(sprites.count);
    auto& expanded = Append<Vertex>(m_frameResources, FrameResource::SpriteVertices);
    expanded.vertexBuffer = zx3D::Owned(
        bgfx::createDynamicVertexBuffer(Kind::kVertices * count, VertexLayout<Kind>(), BGFX_BUFFER_NONE));
    if (!expanded.vertexBuffer) // bgfx has only so many, and would write beyond its records
        return;

    SetTransform(call);
    // Expanded in place: bgfx owns the memory, and nothing is copied again.
    bgfx::Memory const* const vertices = bgfx::alloc(Kind::kVertices * count * sizeof(Vertex));
    Kind::kExpand(sprites, ModelViewProjection(call), call.view.GetViewport().size(), size,
                  reinterpret_cast<Vertex*>(vertices->data));
    bgfx::update(expanded.vertexBuffer.Get(), 0, vertices);
    SubmitSprites<Kind>(call, count, size, expanded.vertexBuffer.Get());
}

template<typename Kind>
void Drawing::DrawSpritesGPU(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size) {
    if (sprites.IsEmpty() || size == 0)
        return;
    auto const count = static_cast<std::uint32_t>(sprites.count);
    auto& input = Append<typename Kind::Input>(m_frameResources, Kind::kInput);
    input.vertices = CopyInput<Kind>(sprites);
    input.vertexBuffer =
        zx3D::Owned(bgfx::createDynamicVertexBuffer(count, InputLayout<Kind>(), BGFX_BUFFER_COMPUTE_READ));
    if (!input.vertexBuffer)
        return;
    bgfx::update(input.vertexBuffer.Get(), 0, MakeSharedRef(input.vertices, count));

    auto& output = Append<typename Kind::Vertex>(m_frameResources, Kind::kOutput);
    output.vertexBuffer = zx3D::Owned(bgfx::createDynamicVertexBuffer(
        Kind::kVertices * count, VertexLayout<Kind>(), BGFX_BUFFER_COMPUTE_WRITE));
    if (!output.vertexBuffer)
        return;

    SetTransform(call);
    UpdateSpriteUniforms<Kind>(call, count, size);
    bgfx::setBuffer(0, input.vertexBuffer.Get(), bgfx::Access::Read);
    bgfx::setBuffer(1, output.vertexBuffer.Get(), bgfx::Access::Write);
    bgfx::dispatch(call.view, GetProgram(Kind::kComputeProgram), GroupCount(count), 1, 1, BGFX_DISCARD_ALL);
    // With the uniforms again: the dispatch has used them up.
    SubmitSprites<Kind>(call, count, size, output.vertexBuffer.Get());
}

template<typename Kind>
void Drawing::DrawSprites(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size) {
    bgfx::Caps const* const caps = bgfx::getCaps();
    if (caps == nullptr)
        return;
    bool const hasCompute = (caps->supported & BGFX_CAPS_COMPUTE) != 0;
    ForEachSubmission(sprites, [&](typename Kind::Sprites part) {
        if (hasCompute)
            DrawSpritesGPU<Kind>(call, part, size);
        else
            DrawSpritesCPU<Kind>(call, part, size);
    });
}

void Drawing::DrawPointSprites(DrawCall const& call, Points points, std::uint16_t size) {
    DrawSprites<PointSprites>(call, points, size);
}

void Drawing::DrawPointSpritesCPU(DrawCall const& call, Points points, std::uint16_t size) {
    DrawSpritesCPU<PointSprites>(call, points, size);
}

void Drawing::DrawPointSpritesGPU(DrawCall const& call, Points points, std::uint16_t size) {
    DrawSpritesGPU<PointSprites>(call, points, size);
}

void Drawing::DrawRectangleSprites(DrawCall const& call, Lines lines, std::uint16_t width) {
    DrawSprites<RectangleSprites>(call, lines, width);
}

void Drawing::DrawRectangleSpritesCPU(DrawCall const& call, Lines lines, std::uint16_t width) {
    DrawSpritesCPU<RectangleSprites>(call, lines, width);
}

void Drawing::DrawRectangleSpritesGPU(DrawCall const& call, Lines lines, std::uint16_t width) {
    DrawSpritesGPU<RectangleSprites>(call, lines, width);
}

} // namespace zarvex::zx3DQt
