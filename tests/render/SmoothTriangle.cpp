// The triangle, and how far its picture is off.
#include "SmoothTriangle.h"

#include "RenderTest.h"

namespace zarvex::testing {

namespace {

/// The mean error on edges. Empty where the picture is wrong elsewhere.
std::optional<double> ErrorOnEdges(QImage const& picture) {
    CoverageError const error = CompareCoverage(picture, {TriangleIn(picture.size())});
    if (error.edges == 0 || error.wrongElsewhere != 0)
        return std::nullopt;
    return error.meanOnEdges;
}

} // namespace

ConvexPolygon TriangleIn(QSize size) {
    double const width = size.width();
    double const height = size.height();
    return {{0.07 * width, 0.91 * height}, {0.93 * width, 0.64 * height}, {0.36 * width, 0.06 * height}};
}

bool RecordTriangle(zx3DQt::BGFXRenderer& renderer, zx3D::FrameBuffer& frameBuffer, bgfx::ViewId id) {
    if (!renderer.StartFrame(frameBuffer))
        return false;
    renderer.SetModelTransform(QMatrix4x4());
    QSize const size(frameBuffer.GetWidth(), frameBuffer.GetHeight());
    zx3DQt::BGFXViewContext const view = PixelView(QRect(QPoint(), size), Qt::black, id);
    view.Submit(frameBuffer);
    std::vector<zx3D::Vertex::Pos3fColorRGBA> corners;
    for (QPointF const corner : TriangleIn(size))
        corners.push_back(
            {{static_cast<float>(corner.x()), static_cast<float>(corner.y()), 0.5f}, ToColor(Qt::white)});
    std::uint16_t const indices[] = {0, 1, 2};
    renderer.DrawTriangles(view, corners, indices);
    return true;
}

bool IsSmooth(QImage const& picture) {
    std::optional<double> const error = ErrorOnEdges(picture);
    return error && *error <= kLargestError;
}

bool IsStepped(QImage const& picture) {
    std::optional<double> const error = ErrorOnEdges(picture);
    return error && *error > kLargestError;
}

} // namespace zarvex::testing
