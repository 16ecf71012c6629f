// Rays and places of a camera, in double precision.
#include "SoftwareCamera.h"

#include <numbers>

namespace zarvex::testing {

namespace {

constexpr float kNear = 0.1f;
constexpr float kFar = 100.0f;

} // namespace

void SoftwareCamera::SetUp(zx3DQt::BGFXViewContext& view) const {
    bx::mtxLookAt(view.GetViewMatrix().data(), ToVec3(place), ToVec3(target), ToVec3(up));
    auto const aspectRatio = static_cast<float>(view.ComputeViewportAspectRatio());
    bool const hasHomogeneousDepth = bgfx::getCaps()->homogeneousDepth;
    float* const projection = view.GetProjectionMatrix().data();
    if (IsParallel()) {
        auto const y = static_cast<float>(halfHeight);
        float const x = y * aspectRatio;
        bx::mtxOrtho(projection, -x, x, -y, y, kNear, kFar, 0.0f, hasHomogeneousDepth);
    } else {
        bx::mtxProj(projection, static_cast<float>(angle), aspectRatio, kNear, kFar, hasHomogeneousDepth);
    }
}

Ray SoftwareCamera::RayThrough(QPointF pixel, QSize size) const {
    Axes const axes = ViewAxes();
    double const pixelSize = 2.0 * HalfHeightAtDistance(1.0) / size.height();
    Vector3 const offset = (pixel.x() - 0.5 * size.width()) * pixelSize * axes.right +
                           (0.5 * size.height() - pixel.y()) * pixelSize * axes.up;
    return IsParallel() ? Ray{place + offset, axes.forward} : Ray{place, axes.forward + offset};
}

QPointF SoftwareCamera::ToPixels(Vector3 const& position, QSize size) const {
    Axes const axes = ViewAxes();
    Vector3 const toPosition = position - place;
    double const pixelSize = 2.0 * HalfHeightAtDistance(Dot(toPosition, axes.forward)) / size.height();
    return {0.5 * size.width() + Dot(toPosition, axes.right) / pixelSize,
            0.5 * size.height() - Dot(toPosition, axes.up) / pixelSize};
}

SoftwareCamera::Axes SoftwareCamera::ViewAxes() const {
    Vector3 const forward = Normalized(target - place);
    Vector3 const right = Normalized(Cross(up, forward));
    return {right, Cross(forward, right), forward};
}

double SoftwareCamera::HalfHeightAtDistance(double distance) const {
    return IsParallel() ? halfHeight : distance * std::tan(angle * 0.5 * std::numbers::pi / 180.0);
}

Coverage SampledCoverage(QPointF pixelCenter, std::function<bool(QPointF)> const& isCovered) {
    constexpr double diagonal = kEdgeWidth * std::numbers::sqrt2 / 2.0;
    constexpr QPointF offsets[] = {{kEdgeWidth, 0.0},     {-kEdgeWidth, 0.0},     {0.0, kEdgeWidth},
                                   {0.0, -kEdgeWidth},    {diagonal, diagonal},   {-diagonal, diagonal},
                                   {diagonal, -diagonal}, {-diagonal, -diagonal}, {0.0, 0.0}};
    std::size_t covered = 0;
    for (QPointF const& offset : offsets)
        covered += isCovered(pixelCenter + offset);
    return covered == 0                    ? Coverage::Outside
           : covered == std::size(offsets) ? Coverage::Inside
                                           : Coverage::Edge;
}

} // namespace zarvex::testing
