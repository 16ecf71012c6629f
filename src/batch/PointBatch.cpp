// Points on the GPU: what is stored of them, and how they are drawn.
#include <zx3DQt/PointBatch.h>

#include "../frame/Logging.h"
#include "../render/Drawing.h"
#include "AlphaCoverage.h"
#include "BatchUniforms.h"
#include "ColorMapTable.h"
#include "ModelMatrix.h"
#include "PieceBounds.h"
#include "TexelStore.h"
#include "VertexCount.h"
#include "WorldPlace.h"

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Context.h>
#include <zx3D/FrameBuffer.h>
#include <zx3D/ProgramFactory.h>

#include <cmath>
#include <cstring>
#include <type_traits>

namespace zarvex::zx3DQt {

namespace {

static_assert(sizeof(ColoredPoint) == sizeof(Texel) && sizeof(ScalarPoint) == sizeof(Texel));

/// What the fourth word of a point's texel is.
enum class Kind : std::uint8_t { Colored, Scalar };

template<typename Point>
constexpr Kind kKindOf = std::is_same_v<Point, ScalarPoint> ? Kind::Scalar : Kind::Colored;

/// How points are expanded and filled: as they were handed over, or to squares of six vertices.
struct Technique {
    char const* vertexShader;
    char const* fragmentShader;
    std::uint32_t verticesPerPoint;
};

bool IsSinglePixel(PointStyle const& style) {
    return style.sizeUnit == SizeUnit::Pixels && !(style.size > 1.0f); // a size that is not a number, too
}

/// Whether the outlines of round points are made smooth: where a pixel has several samples, of which some can
/// be left out. What is blended has its own use for alpha.
bool HasSmoothOutline(PointStyle const& style, BGFXRenderState state, bgfx::ViewId view) {
    return style.shape != PointShape::Square && !IsSinglePixel(style) && !Blends(state) &&
           zx3D::FrameBuffer::IsMultisampled(view);
}

char const* FragmentShaderOf(PointShape shape, bool isSmooth) {
    if (shape == PointShape::Disc)
        return isSmooth ? "fs_point_batch_disc_smooth" : "fs_point_batch_disc";
    return isSmooth ? "fs_point_batch_ball_smooth" : "fs_point_batch_ball";
}

Technique TechniqueOf(PointStyle const& style, Kind kind, bool isSmooth) {
    bool const hasColor = kind == Kind::Colored;
    if (IsSinglePixel(style))
        return {hasColor ? "vs_point_batch_pixel" : "vs_point_batch_pixel_scalar", "fs_basic", 1};
    if (style.shape == PointShape::Square)
        return {hasColor ? "vs_point_batch_square" : "vs_point_batch_square_scalar", "fs_basic", 6};
    return {hasColor ? "vs_point_batch_round" : "vs_point_batch_round_scalar",
            FragmentShaderOf(style.shape, isSmooth), 6};
}

/// How far points reach beyond their positions: in NDC, or in the view's units, which a model may scale.
ViewVolume VolumeOf(BGFXViewContext const& view, QMatrix4x4 const& model, PointStyle const& style) {
    QMatrix4x4 const toClip = view.GetProjectionMatrix() * view.GetViewMatrix() * model;
    if (style.sizeUnit == SizeUnit::Pixels) {
        QRect const& viewport = view.GetViewport();
        return {toClip, style.size / static_cast<float>(viewport.width()),
                style.size / static_cast<float>(viewport.height()), 0.0f};
    }
    // Not scaled with the model: what a length of 1 of the view's is in its coordinates.
    float const scale = std::cbrt(std::abs(static_cast<float>(model.determinant())));
    return {toClip, 0.0f, 0.0f, style.size / scale};
}

} // namespace

class PointBatch::Data {
public:
    explicit Data(bool keepsData) : texels(keepsData) {}

    template<typename Point>
    void Append(zx3D::DataSpan<Point const> points) {
        if (points.IsEmpty() || !Takes<Point>("Append"))
            return;
        std::uint64_t const first = texels.GetCount();
        if (first == 0)
            bounds.Clear(); // of what a stopped context took along
        std::span<Texel> const added = texels.Append(points.count);
        std::memcpy(added.data(), points.data, added.size_bytes());
        AddBounds(first, points);
        kind = kKindOf<Point>;
    }

    template<typename Point>
    void Update(std::uint64_t first, zx3D::DataSpan<Point const> points) {
        if (points.IsEmpty() || !Takes<Point>("Update"))
            return;
        std::uint64_t const count = texels.GetCount();
        if (first > count || points.count > count - first) {
            LogWarning("point-batch.range", [&] {
                return QString("Points %1 to %2 are not updated: the batch has %3")
                    .arg(first)
                    .arg(first + points.count - 1)
                    .arg(count);
            });
            return;
        }
        texels.Update(first, {reinterpret_cast<Texel const*>(points.data), points.count});
        AddBounds(first, points);
    }

    void Clear() {
        texels.Clear();
        bounds.Clear();
    }

    void Draw(Drawing& drawing, BGFXViewContext const& view, PointStyle const& style,
              QMatrix4x4 const& transform);

    WorldPosition origin;
    TexelStore texels;
    PieceBounds bounds;
    Kind kind = Kind::Colored;
    zx3D::OncePerCause lost;

private:
    template<typename Point>
    bool Takes(char const* operation) const {
        if (texels.GetCount() == 0 || kind == kKindOf<Point>)
            return true;
        LogWarning("point-batch.kind", [&] {
            return QString("%1 of points %2 is refused: those of the batch are %3")
                .arg(operation, kind == Kind::Scalar ? "with colours" : "with numbers",
                     kind == Kind::Scalar ? "with numbers" : "with colours");
        });
        return false;
    }

    template<typename Point>
    void AddBounds(std::uint64_t first, zx3D::DataSpan<Point const> points) {
        std::uint64_t refused = 0;
        for (std::uint64_t i = 0; i < points.count; ++i) {
            bx::Vec3 const& position = points.data[i].position;
            if (IsFinite(position))
                bounds.At(first + i).Add(position.x, position.y, position.z);
            else
                ++refused; // the shader leaves it out
        }
        if (refused > 0)
            LogWarning("point-batch.not-finite", [&] {
                return QString("%1 of %2 points are not drawn: their positions are not finite")
                    .arg(refused)
                    .arg(points.count);
            });
    }

    void Upload(Drawing& drawing);
};

void PointBatch::Data::Upload(Drawing& drawing) {
    std::uint64_t const before = texels.GetUploadedCount();
    if (!texels.Upload(drawing.GetUploadBudget().GetLeft()))
        drawing.GetCounter().LeaveOut(LeftOutReason::NoBuffer);
    std::uint64_t const bytes = (texels.GetUploadedCount() - before) * sizeof(Texel);
    drawing.GetUploadBudget().Take(bytes);
    drawing.GetCounter().AddPrimitives(0, bytes);
}

void PointBatch::Data::Draw(Drawing& drawing, BGFXViewContext const& view, PointStyle const& style,
                            QMatrix4x4 const& transform) {
    FrameCounter& counter = drawing.GetCounter();
    counter.AddCall();
    Upload(drawing);

    BGFXRenderState const asked = Drawing::ForView(view, style.state.value_or(BGFXRenderer::STATE_OPAQUE));
    bool const isSmooth = HasSmoothOutline(style, asked, view);
    Technique const technique = TechniqueOf(style, kind, isSmooth);
    auto const program =
        zx3D::ProgramFactory::Get().CreateProgram(technique.vertexShader, technique.fragmentShader);
    BatchUniforms& uniforms = BatchUniforms::Get();
    if (!program || !uniforms.Create())
        return counter.LeaveOut(LeftOutReason::NoProgram);
    bgfx::TextureHandle colorMap = BGFX_INVALID_HANDLE;
    if (kind == Kind::Scalar && !bgfx::isValid(colorMap = ColorMapTexture::Of(style.colorMap)))
        return counter.LeaveOut(LeftOutReason::NoBuffer);

    QMatrix4x4 const model = ModelMatrix(origin, view.GetOrigin(), transform);
    std::uint32_t const modelId = bgfx::setTransform(model.constData(), 1);
    BGFXRenderState const state = asked | (technique.verticesPerPoint == 1 ? BGFX_STATE_PT_POINTS : 0) |
                                  (isSmooth ? kAlphaIsCoverage : 0);
    auto const submit = [&](bgfx::TextureHandle texture, std::uint32_t first, std::uint32_t count,
                            std::uint32_t rowLength) {
        bgfx::setTransform(modelId, 1);
        bgfx::setState(state);
        SetVertexCount(count * technique.verticesPerPoint);
        bgfx::setTexture(0, uniforms[BatchUniform::Texels], texture);
        uniforms.Set(BatchUniform::Range, static_cast<float>(first), static_cast<float>(rowLength));
        if (technique.verticesPerPoint > 1) {
            bool const isInPixels = style.sizeUnit == SizeUnit::Pixels;
            uniforms.Set(BatchUniform::PointSize, isInPixels ? style.size : 0.0f,
                         isInPixels ? 0.0f : style.size);
        }
        if (kind == Kind::Scalar) {
            float const range = style.greatestValue - style.leastValue;
            uniforms.Set(BatchUniform::PointRange, style.leastValue, range != 0.0f ? 1.0f / range : 0.0f);
            bgfx::setTexture(1, uniforms[BatchUniform::ColorMap], colorMap);
        }
        bgfx::submit(view, *program, 0, BGFX_DISCARD_ALL);
        counter.AddPrimitives(count, 0);
    };
    bounds.ForEachVisible(
        VolumeOf(view, model, style), texels.GetUploadedCount(),
        [&](std::uint64_t first, std::uint64_t count) { texels.ForEachTexture(first, count, submit); });
}

PointBatch::PointBatch(KeepData keepData) : m_data(std::make_unique<Data>(keepData == KeepData::Yes)) {}
PointBatch::~PointBatch() = default;
PointBatch::PointBatch(PointBatch&& other) noexcept = default;
PointBatch& PointBatch::operator=(PointBatch&& other) noexcept = default;

void PointBatch::SetOrigin(WorldPosition const& origin) {
    m_data->origin = origin;
}

WorldPosition const& PointBatch::GetOrigin() const {
    return m_data->origin;
}

void PointBatch::Set(zx3D::DataSpan<ColoredPoint const> points) {
    m_data->Clear();
    m_data->Append(points);
}

void PointBatch::Set(zx3D::DataSpan<ScalarPoint const> points) {
    m_data->Clear();
    m_data->Append(points);
}

void PointBatch::Append(zx3D::DataSpan<ColoredPoint const> points) {
    m_data->Append(points);
}

void PointBatch::Append(zx3D::DataSpan<ScalarPoint const> points) {
    m_data->Append(points);
}

void PointBatch::Update(std::uint64_t first, zx3D::DataSpan<ColoredPoint const> points) {
    m_data->Update(first, points);
}

void PointBatch::Update(std::uint64_t first, zx3D::DataSpan<ScalarPoint const> points) {
    m_data->Update(first, points);
}

void PointBatch::Clear() {
    m_data->Clear();
}

std::uint64_t PointBatch::GetCount() const {
    return m_data->texels.GetCount();
}

std::uint64_t PointBatch::GetUploadedCount() const {
    return m_data->texels.GetUploadedCount();
}

std::optional<WorldBox> PointBatch::GetBoundingBox() const {
    if (GetCount() == 0)
        return std::nullopt;
    return InWorld(m_data->bounds.Total(), m_data->origin);
}

void PointBatch::Draw(BGFXRenderer const& renderer, BGFXViewContext const& view, PointStyle const& style,
                      QMatrix4x4 const& transform) {
    if (m_data->texels.IsLost()) {
        m_data->lost.Raise([] {
            LogWarning("point-batch.lost", [] {
                return QString(
                    "A batch of points is empty: bgfx was shut down, and it does not keep its data");
            });
        });
    } else {
        m_data->lost.Clear();
    }
    if (GetCount() > 0 && zx3D::Context::IsInitialized())
        m_data->Draw(*renderer.m_drawing, view, style, transform);
}

} // namespace zarvex::zx3DQt
