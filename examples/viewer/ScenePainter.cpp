// The views of a frame, in the order of their ids: bgfx draws them so.
#include "ScenePainter.h"

#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/Shapes.h>

#include <array>
#include <chrono>
#include <cmath>
#include <limits>

namespace viewer {

using namespace zarvex;

namespace {

// From 1 on: view 0 belongs to the off-screen widget.
enum ViewId : std::uint16_t {
    kBackground = 1,
    kSurfaces,
    kOnSurfaces,
    kAxes,
    kLabels,
    kAxesLabels,
};

constexpr zx3D::Color kTop{0.105f, 0.125f, 0.160f, 1.0f};
constexpr zx3D::Color kBottom{0.300f, 0.340f, 0.400f, 1.0f};

/// How much nearer than surfaces are lines that lie on them, of the range of depths.
constexpr float kNearer = 4e-4f;

/// What a frame may take to prepare what is new: the window goes on answering while a large mesh appears.
constexpr std::chrono::milliseconds kPreparation{10};
constexpr std::uint64_t kBytesPerFrame = 16 << 20;

/// Of the small coordinate axes in the corner, device-independent pixels.
constexpr float kAxesSize = 104.0f;

QSize SizeOf(zx3D::FrameBuffer const& frameBuffer) {
    return {frameBuffer.GetWidth(), frameBuffer.GetHeight()};
}

/// A view that keeps what the views before it have drawn, in the order of the calls.
zx3DQt::BGFXViewContext MakeView(ViewId id, QRect const& viewport) {
    zx3DQt::BGFXViewContext view(id, zx3DQt::BGFXViewClearOptions{}, bgfx::ViewMode::Sequential);
    view.SetViewport(viewport);
    return view;
}

/// The views that look through the camera.
zx3DQt::BGFXViewContext MakeCameraView(ViewId id, QRect const& viewport, Scene const& scene, float nearer) {
    zx3DQt::BGFXViewContext view = MakeView(id, viewport);
    Box box = scene.GetBox();
    QVector3D const beyond =
        0.7f * box.Radius() * QVector3D(1.0f, 1.0f, 1.0f); // that is how far the ground goes
    box.Extend(Box{box.min - beyond, box.max + beyond});
    scene.GetCamera().Apply(view, ToWorldBox(box));
    QMatrix4x4& projection = view.GetProjectionMatrix();
    projection.setRow(2, projection.row(2) - nearer * projection.row(3));
    return view;
}

void DrawBackground(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view) {
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    Vertex const corners[] = {Vertex({-1.0f, 1.0f, 0.5f}, kTop), Vertex({1.0f, 1.0f, 0.5f}, kTop),
                              Vertex({-1.0f, -1.0f, 0.5f}, kBottom), Vertex({1.0f, -1.0f, 0.5f}, kBottom)};
    std::uint16_t const indices[] = {0, 1, 2, 1, 3, 2};
    renderer.DrawTriangles(view, corners, indices, std::nullopt, zx3DQt::BGFXRenderer::STATE_MARKER_OVERLAY);
}

/// The directions of the axes, in a corner: the library's axes without their negative halves.
void DrawAxes(zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view,
              zx3DQt::BGFXViewContext const& labelView, zx3D::FontHandle font, float pixelRatio) {
    constexpr float length = 1.6f;
    std::array<QColor, 3> const colors{QColor(240, 96, 100), QColor(124, 214, 98), QColor(98, 160, 255)};
    zx3DQt::CoordinateAxesStyle style;
    style.colors = colors;
    style.lineWidths.fill(std::round(2.0f * pixelRatio));
    // The rectangle has y down: its lower side is where y is negative.
    constexpr zx3D::LineStipplePattern nothing{0x0000, 1};
    constexpr zx3D::LineStipplePattern solid{0xFFFF, 1};
    style.minSideLineStipplePatterns = {nothing, solid, nothing};
    style.maxSideLineStipplePatterns = {solid, nothing, solid};
    zx3DQt::DrawCoordinateAxesLines(renderer, view, QRectF(-length, -length, 2.0 * length, 2.0 * length),
                                    style);
    for (int axis = 0; axis < 3; ++axis) {
        QVector3D direction;
        direction[axis] = 1.0f;
        QVector3D const tip = (length + 0.3f) * direction;
        QVector3D const label = (length + 0.65f) * direction;
        QColor const& color = colors[static_cast<std::size_t>(axis)];
        zx3DQt::DrawCone(renderer, view, direction, tip, 0.5, 0.16, 24,
                         {static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
                          static_cast<float>(color.blueF()), 1.0f});
        renderer.RenderText(labelView, bx::Vec3(label.x(), label.y(), label.z()), QString("XYZ").mid(axis, 1),
                            font, color, Qt::AlignCenter);
    }
}

/// Looks at the axes from the direction of another view.
void LookAtAxes(zx3DQt::BGFXViewContext& view, zx3DQt::BGFXViewContext const& other) {
    constexpr float reach = 2.5f;
    QMatrix4x4 rotation = other.GetViewMatrix();
    rotation.setColumn(3, QVector4D(0.0f, 0.0f, 0.0f, 1.0f));
    view.SetViewMatrix(rotation);
    bx::mtxOrtho(view.GetProjectionMatrix().data(), -reach, reach, -reach, reach, -reach, reach, 0.0f,
                 bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
}

/// All views of a frame.
struct Views {
    zx3DQt::BGFXViewContext background;
    zx3DQt::BGFXViewContext surfaces;
    zx3DQt::BGFXViewContext onSurfaces;
    zx3DQt::BGFXViewContext axes;
    zx3DQt::BGFXViewContext labels;
    zx3DQt::BGFXViewContext axesLabels;
};

Views MakeViews(Scene const& scene, QSize size, float pixelRatio) {
    QRect const all(QPoint(0, 0), size);
    int const axesSize = static_cast<int>(std::lround(kAxesSize * pixelRatio));
    QRect const corner(0, size.height() - axesSize, axesSize, axesSize);
    Views views{MakeView(kBackground, all),
                MakeCameraView(kSurfaces, all, scene, 0.0f),
                MakeCameraView(kOnSurfaces, all, scene, kNearer),
                MakeView(kAxes, corner),
                MakeCameraView(kLabels, all, scene, 0.0f),
                MakeView(kAxesLabels, corner)};
    views.background.SetViewClearOptions(
        zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, kTop.ToRGBA(), 1.0f, 0});
    views.axes.SetViewClearOptions(zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_DEPTH, 0, 1.0f, 0});
    LookAtAxes(views.axes, views.surfaces);
    LookAtAxes(views.axesLabels, views.surfaces);
    return views;
}

void Submit(Views const& views, zx3D::FrameBuffer const& frameBuffer) {
    for (auto const view : {&Views::background, &Views::surfaces, &Views::onSurfaces, &Views::axes,
                            &Views::labels, &Views::axesLabels})
        (views.*view).Submit(frameBuffer);
}

} // namespace

bool PaintScene(Scene& scene, zx3DQt::BGFXRenderer& renderer, zx3D::FrameBuffer& frameBuffer,
                float pixelRatio, Purpose purpose) {
    if (!renderer.StartFrame(frameBuffer))
        return false;
    QSize const size = SizeOf(frameBuffer);
    scene.PrepareCamera(static_cast<float>(size.width()) / static_cast<float>(size.height()));
    Views const views = MakeViews(scene, size, pixelRatio);
    Submit(views, frameBuffer);

    bool const isPicture = purpose == Purpose::Picture;
    renderer.SetUploadBudget(isPicture ? std::numeric_limits<std::uint64_t>::max() : kBytesPerFrame);
    renderer.SetModelTransform(QMatrix4x4()); // transforms are those of one frame
    DrawBackground(renderer, views.background);
    scene.Draw({renderer, views.surfaces, views.onSurfaces, views.labels, scene.GetCamera(), scene.GetFonts(),
                size, pixelRatio,
                isPicture ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(kPreparation)});
    if (scene.GetAppearance().showsAxes)
        DrawAxes(renderer, views.axes, views.axesLabels, scene.GetFonts().Get(12.0f * pixelRatio),
                 pixelRatio);
    return true;
}

} // namespace viewer
