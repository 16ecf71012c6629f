// One of the draw operations after the other, with arguments of any kind.
#include "Drawing.h"

#include "HostileData.h"

#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/CoordinateGrid.h>
#include <zx3DQt/Shapes.h>

#include <zx3D/Text.h>

#include <QRectF>

#include <optional>
#include <utility>
#include <vector>

namespace zarvex::fuzz {

namespace {

using zx3DQt::BGFXRenderer;

/// What a frame is drawn with.
struct Frame {
    Random& random;
    BGFXRenderer& renderer;
    zx3DQt::BGFXViewContext view;
    Content const& content;
    std::vector<zx3DQt::ModelTransformCacheId> transforms; ///< of this frame
};

zx3DQt::BGFXViewContext SubmitView(Random& random, zx3D::FrameBuffer const& frameBuffer,
                                   QRect const& viewport, ViewIds views) {
    auto const id = static_cast<bgfx::ViewId>(views.first + random.Below(views.count));
    std::optional<zx3DQt::BGFXViewClearOptions> clear;
    if (random.OneIn(2))
        clear = {BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, static_cast<std::uint32_t>(random.NewSeed()), 1.0f, 0};
    std::optional<bgfx::ViewMode::Enum> mode;
    if (random.OneIn(2))
        mode = static_cast<bgfx::ViewMode::Enum>(random.Below(bgfx::ViewMode::Count));
    zx3DQt::BGFXViewContext view(id, clear, mode);
    // One that begins outside of the target is not allowed by Vulkan, one that ends outside is.
    view.SetViewport(random.OneIn(16) ? QRect(0, 0, random.Between(1, 4000), 1) : viewport);
    if (random.OneIn(2))
        view.SetOrthoProjectionFromViewport(0.0f, 1.0f, 0.0f);
    else
        view.SetProjectionMatrix(Matrix(random));
    if (random.OneIn(4))
        view.SetViewMatrix(Matrix(random));
    if (random.OneIn(8))
        view.SetOrigin(Place(random));
    view.Submit(frameBuffer);
    return view;
}

std::optional<zx3DQt::ModelTransformCacheId> Transform(Frame& frame) {
    if (frame.random.OneIn(8))
        frame.transforms.push_back(frame.renderer.SetModelTransform(Matrix(frame.random)));
    if (frame.transforms.empty() || frame.random.OneIn(2))
        return std::nullopt;
    return frame.transforms[frame.random.Below(frame.transforms.size())];
}

std::optional<zx3DQt::BGFXRenderState> TriangleState(Random& random) {
    switch (random.Below(4)) {
    case 0:
        return BGFXRenderer::STATE_OPAQUE;
    case 1:
        return BGFXRenderer::STATE_TRANSPARENT;
    case 2:
        return BGFXRenderer::STATE_MARKER_OVERLAY;
    default:
        return std::nullopt;
    }
}

void DrawLines(Frame& frame) {
    std::vector<zx3D::Line> const lines = Lines(frame.random);
    frame.renderer.DrawLines(frame.view, Span(frame.random, lines), Width(frame.random), Transform(frame),
                             Stipple(frame.random));
}

void DrawLineStrip(Frame& frame) {
    std::vector<QVector3D> positions(Count(frame.random));
    for (QVector3D& position : positions)
        position = QPosition(frame.random);
    // One beyond the positions makes no segment.
    std::vector<std::uint16_t> const indices = IndicesBelow(frame.random, positions.size() + 3);
    frame.renderer.DrawLines(frame.view, Span(frame.random, positions), Span(frame.random, indices),
                             RgbColor(frame.random), Width(frame.random), Transform(frame),
                             Stipple(frame.random));
}

void DrawPoints(Frame& frame) {
    auto const points = ColoredVertices(frame.random);
    std::optional<std::uint16_t> size;
    if (!frame.random.OneIn(4))
        size = static_cast<std::uint16_t>(frame.random.OneIn(8) ? 65535 : frame.random.Below(12));
    frame.renderer.DrawPoints(frame.view, Span(frame.random, points), size, Transform(frame));
}

void DrawTriangles(Frame& frame) {
    auto const vertices = ColoredVertices(frame.random);
    auto const indices = IndicesBelow(frame.random, vertices.size());
    frame.renderer.DrawTriangles(frame.view, Span(frame.random, vertices), Span(frame.random, indices),
                                 Transform(frame), TriangleState(frame.random));
}

void DrawLitTriangles(Frame& frame) {
    auto const vertices = LitVertices(frame.random);
    auto const indices = IndicesBelow(frame.random, vertices.size());
    frame.renderer.UpdateViewPositionUniform(QPosition(frame.random));
    frame.renderer.DrawTriangles(frame.view, Span(frame.random, vertices), Span(frame.random, indices),
                                 Transform(frame), TriangleState(frame.random));
}

void RenderText(Frame& frame) {
    QString const text = Text(frame.random);
    QColor const color = RgbColor(frame.random);
    auto const alignment = Qt::Alignment::fromInt(static_cast<int>(frame.random.Below(512)));
    QPointF const position(100.0f * Number(frame.random), 100.0f * Number(frame.random));
    if (frame.random.OneIn(3))
        frame.renderer.RenderText(frame.view, Position(frame.random), text, frame.content.font, color,
                                  alignment);
    else
        frame.renderer.RenderText(frame.view, std::pair(position, frame.random.Between(-3, 3)), text,
                                  frame.content.font, color, alignment);
}

void SubmitTextBuffer(Frame& frame) {
    auto const type = static_cast<zx3D::TextBufferType>(frame.random.Below(3));
    zx3D::TextBufferHandle const text = zx3D::CreateTextBuffer(type, frame.content.font);
    zx3D::SetPenPosition(text, 100.0f * Number(frame.random), 100.0f * Number(frame.random));
    zx3D::AppendText(text, "broken \xff\xc3 bytes");
    zx3D::AlignText(text, Number(frame.random), Number(frame.random));
    zx3D::SubmitTextBuffer(text, frame.view, frame.random.Between(-2, 2));
    zx3D::DestroyTextBuffer(text);
    zx3D::SetTextColor(text, 0); // an unknown handle does nothing
}

void DrawShape(Frame& frame) {
    Random& random = frame.random;
    QVector2D const center = QPosition(random).toVector2D();
    zx3D::Color const color = Color(random);
    switch (random.Below(3)) {
    case 0:
        return DrawCircle(frame.renderer, frame.view, center, Number(random), color, Number(random),
                          BGFXRenderer::STATE_OPAQUE);
    case 1:
        return DrawRectangle(frame.renderer, frame.view, center, QPosition(random).toVector2D(), color,
                             Number(random), BGFXRenderer::STATE_TRANSPARENT);
    default:
        return DrawCone(frame.renderer, frame.view, QPosition(random), QPosition(random), Number(random),
                        Number(random), random.Between(-2, 40), color);
    }
}

QRectF Rect(Random& random) {
    return {10.0f * Number(random), 10.0f * Number(random), 10.0f * Number(random), 10.0f * Number(random)};
}

void DrawAxes(Frame& frame) {
    zx3DQt::CoordinateAxesStyle style;
    style.margins = QPosition(frame.random).toVector2D();
    style.lineWidths[frame.random.Below(3)] = Number(frame.random);
    if (frame.random.OneIn(2))
        style.arrowHeads.emplace();
    if (style.arrowHeads && frame.random.OneIn(2))
        style.arrowHeads->light.emplace().ambient = Number(frame.random);
    if (frame.random.OneIn(2))
        style.labels.emplace().font = frame.content.font;
    if (style.labels && frame.random.OneIn(2))
        style.labels->placement = zx3DQt::CoordinateAxesLabelStyle::Placement::BeyondHeads;
    DrawCoordinateAxes(frame.renderer, frame.view, frame.view, Rect(frame.random), style);
}

void DrawGrid(Frame& frame) {
    zx3DQt::CoordinateGridStyle style;
    style.gridSpacing = QPosition(frame.random).toVector2D();
    style.gridMargins = QPosition(frame.random).toVector2D();
    style.lineWidth = 3.0f * Number(frame.random);
    if (frame.random.OneIn(2))
        style.frameTickLabels.emplace().font = frame.content.font;
    if (style.frameTickLabels && frame.random.OneIn(2))
        style.frameTickLabels->minimumGap = Number(frame.random);
    if (frame.random.OneIn(2))
        style.fade.emplace(Number(frame.random), Number(frame.random));
    if (style.fade && frame.random.OneIn(2))
        style.fade->center = QPosition(frame.random);
    DrawCoordinateGrid(frame.renderer, frame.view, frame.view, Rect(frame.random), style);
}

void DrawTexture(Frame& frame) {
    if (bgfx::isValid(frame.content.texture))
        frame.renderer.DrawFullscreenTexture(frame.view, frame.content.texture);
}

void DrawBatch(Frame& frame) {
    constexpr std::uint64_t kBudgets[] = {0, 1, 100, 1 << 16, 1 << 24};
    if (frame.random.OneIn(8))
        frame.renderer.SetUploadBudget(frame.random.PickFrom(kBudgets));
    frame.content.batches.Draw(frame.random, frame.renderer, frame.view, frame.content.texture);
}

using Operation = void (*)(Frame&);
constexpr Operation kOperations[] = {
    DrawLines,        DrawLineStrip, DrawPoints, DrawTriangles, RenderText, SubmitTextBuffer, DrawShape,
    DrawLitTriangles, DrawAxes,      DrawGrid,   DrawTexture,   DrawBatch,  DrawBatch};

} // namespace

void DrawSomething(Random& random, BGFXRenderer& renderer, zx3D::FrameBuffer const& frameBuffer,
                   QRect const& viewport, ViewIds views, Content const& content) {
    for (int view = random.Between(0, 2); view > 0; --view) {
        Frame frame{random, renderer, SubmitView(random, frameBuffer, viewport, views), content, {}};
        if (random.OneIn(2))
            frame.transforms.push_back(renderer.SetModelTransform(Matrix(random)));
        for (std::uint64_t operations = random.Below(6); operations > 0; --operations)
            random.PickFrom(kOperations)(frame);
    }
}

} // namespace zarvex::fuzz
