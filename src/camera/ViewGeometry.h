// What all cameras compute: directions from angles, places in the picture, and a view's matrices.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/CameraTypes.h>

#include <QPointF>
#include <QRectF>

#include <array>
#include <cmath>
#include <optional>

namespace zarvex::zx3DQt {

constexpr double kLeastLength = 1e-18; ///< world units; its square is a float
constexpr double kGreatestLength = 1e18;
constexpr double kLeastFieldOfView = 0.001; ///< degrees
constexpr double kGreatestFieldOfView = 170.0;

template<typename... Numbers>
bool AreFinite(Numbers... numbers) {
    return (std::isfinite(numbers) && ...);
}

inline bool IsFinite(WorldPosition const& position) {
    return AreFinite(position.x, position.y, position.z);
}

inline bool IsFactor(double factor) {
    return std::isfinite(factor) && factor > 0.0;
}

/// The same angle from -180 to 180.
inline double WrapDegrees(double degrees) {
    return std::remainder(degrees, 360.0);
}

struct SineCosine {
    double sine;
    double cosine;
};

/// Exact for multiples of 90 degrees.
SineCosine SineCosineOf(double degrees);

/// The tangent of half an angle.
double TangentOfHalf(double degrees);

/// Azimuth and elevation of a standard view, degrees.
struct Direction {
    double azimuth;
    double elevation;
};
Direction DirectionOf(StandardView view);

/// The axes of a camera that stands at an azimuth and an elevation, looks at the middle and shows a picture
/// that is turned clockwise, degrees.
ViewAxes AxesOf(UpAxis up, Direction const& direction, double roll);

/// The axes of a picture that is turned clockwise, degrees.
ViewAxes Rolled(ViewAxes const& axes, double clockwise);

/// From the picture's directions to those of the unrolled one.
struct PictureMove {
    double right;
    double up;
};
PictureMove Unrolled(PictureMove const& move, double clockwise);

/// Coordinates along the axes.
inline WorldVector ToAxes(ViewAxes const& axes, WorldVector const& vector) {
    return {Dot(vector, axes.right), Dot(vector, axes.up), Dot(vector, axes.towardsViewer)};
}

inline WorldVector FromAxes(ViewAxes const& axes, WorldVector const& coordinates) {
    return coordinates.x * axes.right + coordinates.y * axes.up + coordinates.z * axes.towardsViewer;
}

/// A place in the viewport, -1 to 1 with y up; empty for a viewport without area and what is not finite.
std::optional<QPointF> ToUnits(QPointF const& position, QRectF const& viewport);

/// False where a coordinate is not finite or a maximum is less than its minimum.
bool IsBox(WorldBox const& box);
WorldPosition CenterOf(WorldBox const& box);
std::array<WorldPosition, 8> CornersOf(WorldBox const& box);

/// The share of half a picture that what is fitted into it takes.
double FittedShare(double margin);

/// How far along their way two cameras' positions are when their sizes go by equal factors, so that what has
/// the same place in both pictures has it all the way.
struct Progress {
    double size;     ///< in between
    double position; ///< 0 to 1
};
Progress ProgressOf(double fromSize, double toSize, double t);

/// What a camera sees: the way to it, and how wide.
struct Sight {
    ViewAxes axes;
    WorldPosition eye;
    Projection projection;
    double halfWidth;     ///< of the picture, at a depth of 1 in perspective, world units
    double halfHeight;    ///< likewise
    double focusDistance; ///< how deep what is looked at is, world units
};

/// Sets a view's matrices, relative to the origin that it has.
void SetMatrices(BGFXViewContext& view, Sight const& sight, std::optional<WorldBox> const& scene);

} // namespace zarvex::zx3DQt
