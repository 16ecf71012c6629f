// Points on the GPU: what is stored of them, and how they are drawn.
#include <zx3DQt/PointBatch.h>

#include "../frame/Logging.h"
#include "../picking/IdPass.h"
#include "../picking/PickCollection.h"
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
#include <zx3DQt/Picker.h>

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

/// Fragment stages that do without the points' colours.
struct Colorless {
    char const* plain;
    char const* disc;
    char const* ball;
};
constexpr Colorless kPicking{"fs_pick_plain", "fs_pick_disc", "fs_pick_ball"};
constexpr Colorless kHighlighting{"fs_highlight_plain", "fs_highlight_disc", "fs_highlight_ball"};

Technique TechniqueOf(PointStyle const& style, Colorless const& shaders) {
    if (IsSinglePixel(style))
        return {"vs_pick_point_pixel", shaders.plain, 1};
    if (style.shape == PointShape::Square)
        return {"vs_pick_point_square", shaders.plain, 6};
    return {"vs_pick_point_round", style.shape == PointShape::Disc ? shaders.disc : shaders.ball, 6};
}

void SetPointSize(BatchUniforms const& uniforms, PointStyle const& style) {
    bool const isInPixels = style.sizeUnit == SizeUnit::Pixels;
    uniforms.Set(BatchUniform::PointSize, isInPixels ? style.size : 0.0f, isInPixels ? 0.0f : style.size);
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
    void DrawNumbers(IdPass& ids, PointStyle const& style, QMatrix4x4 const& transform) const;
    void Collect(PickCollection& collection) const;

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
    template<typename ForEachRun, typename Submit>
    bool DrawWithoutColors(BGFXViewContext const& view, PointStyle const& style, QMatrix4x4 const& model,
                           Colorless const& shaders, ForEachRun forEachRun, Submit submit) const;
    void DrawHighlight(FrameCounter& counter, BGFXViewContext const& view, PointStyle const& style,
                       QMatrix4x4 const& model) const;
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
        if (technique.verticesPerPoint > 1)
            SetPointSize(uniforms, style);
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
    DrawHighlight(counter, view, style, model);
}

/// `forEachRun(draw)` calls `draw(first, count)` for what is to be drawn; `submit(program, state, first)`
/// ends each submission. False when bgfx has no program or uniform left.
template<typename ForEachRun, typename Submit>
bool PointBatch::Data::DrawWithoutColors(BGFXViewContext const& view, PointStyle const& style,
                                         QMatrix4x4 const& model, Colorless const& shaders,
                                         ForEachRun forEachRun, Submit submit) const {
    Technique const technique = TechniqueOf(style, shaders);
    auto const program =
        zx3D::ProgramFactory::Get().CreateProgram(technique.vertexShader, technique.fragmentShader);
    BatchUniforms& uniforms = BatchUniforms::Get();
    if (!program || !uniforms.Create())
        return false;
    std::uint32_t const modelId = bgfx::setTransform(model.constData(), 1);
    BGFXRenderState const state = Drawing::ForView(view, style.state.value_or(BGFXRenderer::STATE_OPAQUE)) |
                                  (technique.verticesPerPoint == 1 ? BGFX_STATE_PT_POINTS : 0);
    forEachRun([&](std::uint64_t first, std::uint64_t all) {
        std::uint64_t point = first;
        auto const submitSome = [&](bgfx::TextureHandle texture, std::uint32_t firstTexel,
                                    std::uint32_t count, std::uint32_t rowLength) {
            bgfx::setTransform(modelId, 1);
            SetVertexCount(count * technique.verticesPerPoint);
            bgfx::setTexture(0, uniforms[BatchUniform::Texels], texture);
            uniforms.Set(BatchUniform::Range, static_cast<float>(firstTexel), static_cast<float>(rowLength));
            if (technique.verticesPerPoint > 1)
                SetPointSize(uniforms, style);
            submit(*program, state, point);
            point += count;
        };
        texels.ForEachTexture(first, all, submitSome);
    });
    return true;
}

void PointBatch::Data::DrawNumbers(IdPass& ids, PointStyle const& style, QMatrix4x4 const& transform) const {
    BGFXViewContext const& view = ids.GetView();
    QMatrix4x4 const model = ModelMatrix(origin, view.GetOrigin(), transform);
    auto const forEachVisible = [&](auto draw) {
        bounds.ForEachVisible(VolumeOf(view, model, style), texels.GetUploadedCount(), draw);
    };
    auto const submit = [&](bgfx::ProgramHandle program, BGFXRenderState state, std::uint64_t first) {
        ids.Submit(program, state, first);
    };
    if (!DrawWithoutColors(view, style, model, kPicking, forEachVisible, submit))
        ids.LeaveOut();
}

void PointBatch::Data::DrawHighlight(FrameCounter& counter, BGFXViewContext const& view,
                                     PointStyle const& style, QMatrix4x4 const& model) const {
    if (style.highlight.elements.IsEmpty())
        return;
    auto const forEachRun = [&](auto draw) { style.highlight.ForEachRun(texels.GetUploadedCount(), draw); };
    auto const submit = [&](bgfx::ProgramHandle program, BGFXRenderState state, std::uint64_t) {
        BatchUniforms::Get().SetColor(BatchUniform::Highlight, style.highlight.rgba);
        bgfx::setState(state.GetValue());
        bgfx::submit(view, program, 0, BGFX_DISCARD_ALL);
    };
    if (!DrawWithoutColors(view, style, model, kHighlighting, forEachRun, submit))
        counter.LeaveOut(LeftOutReason::NoProgram);
}

void PointBatch::Data::Collect(PickCollection& collection) const {
    std::span<Texel const> const kept = texels.GetTexels();
    for (std::uint64_t i = 0; i < kept.size(); ++i) {
        if (!collection.HasPoint(PlaceOf(kept[i])))
            continue;
        PickElement element = collection.GetAddition();
        element.element = i;
        collection.Add(element);
    }
}

PointBatch::PointBatch(KeepData keepData) : m_data(std::make_shared<Data>(keepData == KeepData::Yes)) {}
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

void PickScene::Add(PointBatch& batch, PointStyle const& style, QMatrix4x4 const& transform) {
    PointBatch::Data& data = *batch.m_data;
    if (m_collection != nullptr) {
        if (!data.texels.KeepsData())
            return m_collection->Skip();
        m_collection->Begin(&batch, data.origin, transform, style.size, style.sizeUnit);
        return data.Collect(*m_collection);
    }
    m_ids->Begin({&batch, PickKind::Points, data.origin, transform,
                  [gone = std::weak_ptr(batch.m_data)](std::uint64_t drawn, PickElement& element) {
                      element.element = drawn;
                      auto const there = gone.lock();
                      return there != nullptr && drawn < there->texels.GetCount();
                  }});
    if (data.texels.GetCount() > 0)
        data.DrawNumbers(*m_ids, style, transform);
}

} // namespace zarvex::zx3DQt
