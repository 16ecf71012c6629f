// Points and lines of several pixels: each becomes two triangles. One way to draw them for two kinds.
#include "Drawing.h"

#include "PointSpriteExpansion.h"
#include "RectangleSpriteExpansion.h"
#include "SpriteSubmission.h"
#include "TransientBuffers.h"

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
std::shared_ptr<typename Kind::Input[]> CopyInput(BlockPool& pool, typename Kind::Sprites sprites) {
    auto input = TakeValues<typename Kind::Input>(pool, sprites.count);
    for (std::uint64_t i = 0; i < sprites.count; ++i)
        input[i] = Kind::ToInput(sprites.data[i]);
    return input;
}

template<typename Kind>
void Expand(typename Kind::Sprites sprites, std::uint16_t size, DrawCall const& call,
            QMatrix4x4 const& modelViewProjection, std::uint8_t* vertices) {
    Kind::kExpand(sprites, modelViewProjection, call.view.GetViewport().size(), size,
                  reinterpret_cast<typename Kind::Vertex*>(vertices));
}

/// Uninitialised memory for bgfx: from the pool where it is much.
bgfx::Memory const* AllocateMemory(BlockPool& pool, std::size_t bytes) {
    return bytes < BlockPool::kSmallestBlock ? bgfx::alloc(static_cast<std::uint32_t>(bytes))
                                             : MakeSharedRef(pool.Take(bytes), bytes);
}

} // namespace

template<typename Kind>
void Drawing::UpdateSpriteUniforms(DrawCall const& call, std::uint32_t count, std::uint16_t size) const {
    UpdateViewportUniform(call.view);
    (this->*Kind::kUpdateUniform)(count, size);
}

template<typename Kind, typename VertexBuffer>
void Drawing::SubmitSprites(DrawCall const& call, std::uint32_t count, std::uint16_t size,
                            VertexBuffer vertices, std::uint64_t bytes) {
    bgfx::setState(call.state);
    bgfx::setVertexBuffer(0, vertices);
    UpdateSpriteUniforms<Kind>(call, count, size);
    if constexpr (Kind::kIsStippled) {
        UpdateLineStippleUniform(call.stipple);
        UpdateFadeUniforms(call);
    }
    bgfx::submit(call.view, LineProgram(call, Kind::kProgram), 0, BGFX_DISCARD_ALL);
    m_counter.AddPrimitives(count, bytes);
}

template<typename V>
DynamicBufferResource<V>* Drawing::CreateBuffer(FrameResource kind, std::uint32_t count,
                                                bgfx::VertexLayout const& layout, std::uint16_t flags) {
    zx3D::Owned buffer(bgfx::createDynamicVertexBuffer(count, layout, flags));
    if (!buffer)
        return nullptr;
    CountBuffer();
    auto& resource = Append<V>(m_frameResources, kind);
    resource.vertexBuffer = std::move(buffer);
    return &resource;
}

template<typename Kind>
void Drawing::DrawSpritesCPU(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size) {
    using Vertex = typename Kind::Vertex;
    if (sprites.IsEmpty() || size == 0)
        return;
    auto const count = static_cast<std::uint32_t>(sprites.count);
    auto const* const expanded =
        MayTakeBuffers(1) ? CreateBuffer<Vertex>(FrameResource::SpriteVertices, Kind::kVertices * count,
                                                 VertexLayout<Kind>(), BGFX_BUFFER_NONE)
                          : nullptr;
    if (expanded == nullptr)
        return DrawSpritesWithoutBuffers<Kind>(call, sprites, size);

    SetTransform(call);
    // Expanded in place: bgfx owns the memory, and nothing is copied again.
    bgfx::Memory const* const vertices = AllocateMemory(*m_pool, Kind::kVertices * count * sizeof(Vertex));
    Expand<Kind>(sprites, size, call, ModelViewProjection(call), vertices->data);
    bgfx::update(expanded->vertexBuffer.Get(), 0, vertices);
    SubmitSprites<Kind>(call, count, size, expanded->vertexBuffer.Get(), vertices->size);
}

template<typename Kind>
void Drawing::DrawSpritesGPU(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size) {
    using Input = typename Kind::Input;
    if (sprites.IsEmpty() || size == 0)
        return;
    auto const count = static_cast<std::uint32_t>(sprites.count);
    auto* const input = MayTakeBuffers(2) ? CreateBuffer<Input>(Kind::kInput, count, InputLayout<Kind>(),
                                                                BGFX_BUFFER_COMPUTE_READ)
                                          : nullptr;
    if (input == nullptr)
        return DrawSpritesWithoutBuffers<Kind>(call, sprites, size);
    input->vertices = CopyInput<Kind>(*m_pool, sprites);
    bgfx::update(input->vertexBuffer.Get(), 0, MakeSharedRef(input->vertices, count));

    auto const* const output = CreateBuffer<typename Kind::Vertex>(
        Kind::kOutput, Kind::kVertices * count, VertexLayout<Kind>(), BGFX_BUFFER_COMPUTE_WRITE);
    if (output == nullptr)
        return DrawSpritesWithoutBuffers<Kind>(call, sprites, size);

    SetTransform(call);
    UpdateSpriteUniforms<Kind>(call, count, size);
    bgfx::setBuffer(0, input->vertexBuffer.Get(), bgfx::Access::Read);
    bgfx::setBuffer(1, output->vertexBuffer.Get(), bgfx::Access::Write);
    bgfx::dispatch(call.view, GetProgram(Kind::kComputeProgram), GroupCount(count), 1, 1, BGFX_DISCARD_ALL);
    // With the uniforms again: the dispatch has used them up.
    SubmitSprites<Kind>(call, count, size, output->vertexBuffer.Get(), count * sizeof(Input));
}

/// The way out where bgfx has no more buffers: all such calls share the frame's transient one.
template<typename Kind>
void Drawing::DrawSpritesWithoutBuffers(DrawCall const& call, typename Kind::Sprites sprites,
                                        std::uint16_t size) {
    auto const count = static_cast<std::uint32_t>(sprites.count);
    bgfx::TransientVertexBuffer vertices;
    if (!AllocateTransient(VertexLayout<Kind>(), Kind::kVertices * count, vertices))
        return m_counter.LeaveOut(LeftOutReason::NoTransientSpace);
    m_counter.AddWithoutOwnBuffers();
    SetTransform(call);
    Expand<Kind>(sprites, size, call, ModelViewProjection(call), vertices.data);
    SubmitSprites<Kind>(call, count, size, &vertices, vertices.size);
}

template<typename Kind>
void Drawing::DrawSprites(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size) {
    bgfx::Caps const* const caps = bgfx::getCaps();
    if (caps == nullptr || !Begin(GetProgram(Kind::kProgram)))
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
