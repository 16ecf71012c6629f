// Angles, places in the picture, near and far planes, matrices.
#include "ViewGeometry.h"

#include <bx/math.h>

#include <algorithm>
#include <numbers>

namespace zarvex::zx3DQt {

namespace {

/// Of the near plane to the far plane: what a depth of 24 bits tells apart.
constexpr double kLeastNear = 1e-4;
/// Of the near plane to what is looked at, which is never cut off.
constexpr double kNearestFocus = 0.05;
/// What lies on the box's surface is not cut off by rounding.
constexpr double kShareBeyondBox = 0.005;
constexpr double kShareOfFocus = 1e-3;
constexpr double kShareOfRounding = 1e-6; ///< of the way from the view's origin

/// The world's directions as on a map, with north at the top.
struct Compass {
    WorldVector east, north, up;
};

Compass CompassOf(UpAxis up) {
    if (up == UpAxis::Y)
        return {{1.0, 0.0, 0.0}, {0.0, 0.0, -1.0}, {0.0, 1.0, 0.0}};
    return {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
}

struct DepthRange {
    double near;
    double far;
};

/// Of the box's corners, from the eye's plane on.
DepthRange DepthsOf(WorldBox const& box, Sight const& sight) {
    DepthRange depths{HUGE_VAL, -HUGE_VAL};
    for (WorldPosition const& corner : CornersOf(box)) {
        double const depth = Dot(sight.eye - corner, sight.axes.towardsViewer);
        depths.near = std::min(depths.near, depth);
        depths.far = std::max(depths.far, depth);
    }
    return depths;
}

double LargestOf(WorldVector const& vector) {
    return std::max({std::abs(vector.x), std::abs(vector.y), std::abs(vector.z)});
}

/// Encloses the scene, and little more.
DepthRange ChooseDepths(Sight const& sight, std::optional<WorldBox> const& scene, double rounding) {
    bool const isParallel = sight.projection == Projection::Parallel;
    double const focus = sight.focusDistance;
    if (!scene || !IsBox(*scene))
        return {isParallel ? -100.0 * focus : 0.01 * focus, 100.0 * focus};
    DepthRange const box = DepthsOf(*scene, sight);
    double const reference = isParallel ? focus : std::max(box.far, focus);
    double const margin = kShareBeyondBox * (box.far - box.near) + kShareOfFocus * reference + rounding;
    if (isParallel)
        return {box.near - margin, box.far + margin};
    double const far = std::max(box.far + margin, focus);
    double const least = std::min(kLeastNear * far, kNearestFocus * focus);
    return {std::max(box.near - margin, least), far};
}

} // namespace

SineCosine SineCosineOf(double degrees) {
    int quarters = 0;
    double const rest = std::remquo(degrees, 90.0, &quarters) * std::numbers::pi / 180.0;
    double const sine = std::sin(rest);
    double const cosine = std::cos(rest);
    switch (quarters & 3) {
    case 0:
        return {sine, cosine};
    case 1:
        return {cosine, -sine};
    case 2:
        return {-sine, -cosine};
    default:
        return {-cosine, sine};
    }
}

double TangentOfHalf(double degrees) {
    return std::tan(0.5 * degrees * std::numbers::pi / 180.0);
}

Direction DirectionOf(StandardView view) {
    switch (view) {
    case StandardView::Front:
        return {0.0, 0.0};
    case StandardView::Back:
        return {180.0, 0.0};
    case StandardView::Left:
        return {-90.0, 0.0};
    case StandardView::Right:
        return {90.0, 0.0};
    case StandardView::Top:
        return {0.0, 90.0};
    case StandardView::Bottom:
        return {0.0, -90.0};
    case StandardView::Isometric:
        break;
    }
    return {45.0, std::atan(std::sqrt(0.5)) * 180.0 / std::numbers::pi};
}

ViewAxes AxesOf(UpAxis up, Direction const& direction, double roll) {
    auto const [east, north, worldUp] = CompassOf(up);
    auto const [sine, cosine] = SineCosineOf(direction.azimuth);
    auto const [rise, level] = SineCosineOf(direction.elevation);
    WorldVector const right = cosine * east + sine * north;
    WorldVector const outwards = sine * east - cosine * north;
    ViewAxes const axes{right, level * worldUp - rise * outwards, level * outwards + rise * worldUp};
    return Rolled(axes, roll);
}

ViewAxes Rolled(ViewAxes const& axes, double clockwise) {
    auto const [sine, cosine] = SineCosineOf(clockwise); // the camera turns the other way
    return {cosine * axes.right + sine * axes.up, cosine * axes.up - sine * axes.right, axes.towardsViewer};
}

PictureMove Unrolled(PictureMove const& move, double clockwise) {
    auto const [sine, cosine] = SineCosineOf(clockwise);
    return {cosine * move.right - sine * move.up, sine * move.right + cosine * move.up};
}

std::optional<QPointF> ToUnits(QPointF const& position, QRectF const& viewport) {
    QPointF const units(2.0 * (position.x() - viewport.x()) / viewport.width() - 1.0,
                        1.0 - 2.0 * (position.y() - viewport.y()) / viewport.height());
    bool const hasArea = viewport.width() > 0.0 && viewport.height() > 0.0;
    if (!hasArea || !AreFinite(units.x(), units.y()))
        return std::nullopt;
    return units;
}

bool IsBox(WorldBox const& box) {
    return IsFinite(box.minimum) && IsFinite(box.maximum) && box.minimum.x <= box.maximum.x &&
           box.minimum.y <= box.maximum.y && box.minimum.z <= box.maximum.z;
}

WorldPosition CenterOf(WorldBox const& box) {
    return box.minimum + 0.5 * (box.maximum - box.minimum);
}

std::array<WorldPosition, 8> CornersOf(WorldBox const& box) {
    std::array<WorldPosition, 8> corners;
    for (unsigned i = 0; i < corners.size(); ++i)
        corners[i] = {(i & 1 ? box.maximum : box.minimum).x, (i & 2 ? box.maximum : box.minimum).y,
                      (i & 4 ? box.maximum : box.minimum).z};
    return corners;
}

double FittedShare(double margin) {
    return 1.0 - 2.0 * (std::isfinite(margin) ? std::clamp(margin, 0.0, 0.45) : 0.0);
}

Progress ProgressOf(double fromSize, double toSize, double t) {
    double const size = fromSize * std::pow(toSize / fromSize, t);
    double const way = toSize - fromSize;
    bool const isZoom = std::abs(way) > 1e-6 * fromSize;
    return {size, isZoom ? (size - fromSize) / way : t};
}

void SetMatrices(BGFXViewContext& view, Sight const& sight, std::optional<WorldBox> const& scene) {
    WorldVector const eye = sight.eye - view.GetOrigin();
    auto const row = [&eye](WorldVector const& axis) {
        return QVector4D(static_cast<float>(axis.x), static_cast<float>(axis.y), static_cast<float>(axis.z),
                         static_cast<float>(-Dot(axis, eye)));
    };
    QMatrix4x4 matrix;
    matrix.setRow(0, row(sight.axes.right));
    matrix.setRow(1, row(sight.axes.up));
    matrix.setRow(2, row(sight.axes.towardsViewer));
    view.SetViewMatrix(matrix);

    DepthRange const depths = ChooseDepths(sight, scene, kShareOfRounding * LargestOf(eye));
    bool const isPerspective = sight.projection == Projection::Perspective;
    double const scale = isPerspective ? depths.near : 1.0; // bx asks for the rectangle on the near plane
    auto const width = static_cast<float>(scale * sight.halfWidth);
    auto const height = static_cast<float>(scale * sight.halfHeight);
    auto const near = static_cast<float>(depths.near);
    auto const far = static_cast<float>(depths.far);
    bool const isHomogeneous = bgfx::getCaps()->homogeneousDepth;
    QMatrix4x4 projection;
    if (isPerspective)
        bx::mtxProj(projection.data(), height, -height, -width, width, near, far, isHomogeneous,
                    bx::Handedness::Right);
    else
        bx::mtxOrtho(projection.data(), -width, width, -height, height, near, far, 0.0f, isHomogeneous,
                     bx::Handedness::Right);
    view.SetProjectionMatrix(projection);
}

} // namespace zarvex::zx3DQt
