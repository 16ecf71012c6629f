// The inverse of a view's matrices, relative to what distances are measured from.
#include "FadePlace.h"

#include <algorithm>
#include <cmath>

namespace zarvex::zx3DQt {

namespace {

/// What a matrix does to directions.
QMatrix4x4 WithoutTranslation(QMatrix4x4 matrix) {
    matrix.setColumn(3, QVector4D(0.0f, 0.0f, 0.0f, 1.0f));
    return matrix;
}

/// Takes away what is along a direction.
QMatrix4x4 ProjectionAlong(QVector3D const& direction) {
    QVector4D const unit(direction.normalized(), 0.0f);
    QMatrix4x4 projection;
    for (int i = 0; i < 3; ++i)
        projection.setColumn(i, projection.column(i) - unit[i] * unit);
    return projection;
}

bool IsFinite(QMatrix4x4 const& matrix) {
    return std::all_of(matrix.constData(), matrix.constData() + 16,
                       [](float element) { return std::isfinite(element); });
}

} // namespace

std::optional<FadePlace> ComputeFadePlace(BGFXViewContext const& view, DistanceFade const& fade) {
    QMatrix4x4 const& projection = view.GetProjectionMatrix();
    QMatrix4x4 const& camera = view.GetViewMatrix();
    QMatrix4x4 const cameraToWorld = camera.inverted(); // Qt inverts in doubles
    QMatrix4x4 const clipToCamera = projection.inverted();
    // What x, y and w of clip space are 0 at: in perspective the eye, otherwise the direction of sight. In
    // the latter case distances count from the middle of the viewport.
    QVector4D const eye = clipToCamera.column(2);
    bool const isParallel = eye.w() == 0.0f;
    QVector3D const start = (isParallel ? clipToCamera.column(3) : eye).toVector3DAffine();

    FadePlace place;
    if (!fade.center && isParallel)
        place.fromWorld = ProjectionAlong(cameraToWorld.mapVector(eye.toVector3D()));
    place.fromWorld.translate(-fade.center.value_or(cameraToWorld.map(start)));
    // Relative to the centre from the start: far from the world's origin as little as possible is lost.
    QMatrix4x4 toClip = projection;
    toClip.translate(fade.center ? camera.map(*fade.center) : start);
    toClip *= WithoutTranslation(camera);
    bool isInvertible = false;
    place.fromClip = toClip.inverted(&isInvertible);
    // Along the line of sight nothing is further from it; in perspective this is 0 but for rounding.
    if (!fade.center)
        place.fromClip.setColumn(2, QVector4D(0.0f, 0.0f, 0.0f, place.fromClip(3, 2)));
    bool const isUsable = isInvertible && IsFinite(place.fromClip) && IsFinite(place.fromWorld);
    return isUsable ? std::optional(place) : std::nullopt;
}

FadeRange::FadeRange(DistanceFade const& fade) : begin(fade.begin > 0.0f ? fade.begin : 0.0f) {
    constexpr float shortest = 1e-20f;
    float const reach = fade.end - begin;
    perUnit = 1.0f / (reach > shortest ? reach : shortest);
}

float FadeRange::RestAt(float distance) const {
    float const part = std::clamp((distance - begin) * perUnit, 0.0f, 1.0f);
    return 1.0f - part * part * (3.0f - 2.0f * part);
}

FadeAtPositions::FadeAtPositions(BGFXViewContext const& view, DistanceFade const& fade)
    : m_place(ComputeFadePlace(view, fade)),
      m_range(fade) {}

float FadeAtPositions::RestAt(QVector3D const& position) const {
    return m_place ? m_range.RestAt(m_place->fromWorld.map(position).length()) : 1.0f;
}

} // namespace zarvex::zx3DQt
