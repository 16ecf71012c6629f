// Where something is, seen from the place that a fade measures its distances from.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/DistanceFade.h>

#include <QMatrix4x4>

#include <optional>

namespace zarvex::zx3DQt {

/// What leads to homogeneous places in world units whose distance from the origin is the distance that fades.
struct FadePlace {
    QMatrix4x4 fromWorld;
    /// As exact as depths are in floats: less so with a near plane that is very near, or far from the world's
    /// origin.
    QMatrix4x4 fromClip;
};

/// Empty when the view's matrices cannot be inverted.
std::optional<FadePlace> ComputeFadePlace(BGFXViewContext const& view, DistanceFade const& fade);

/// What u_fadeRange takes: where the fade begins, and 1 / how far it reaches.
struct FadeRange {
    explicit FadeRange(DistanceFade const& fade);

    /// What is left of a colour at a distance: 1 to 0, as fade_fragment.glsl computes it.
    float RestAt(float distance) const;

    float begin;
    float perUnit;
};

/// A fade as it is at single positions.
class FadeAtPositions {
public:
    FadeAtPositions(BGFXViewContext const& view, DistanceFade const& fade);

    /// What is left of a colour at a world position. 1 where there is no fading.
    float RestAt(QVector3D const& position) const;

private:
    std::optional<FadePlace> m_place;
    FadeRange m_range;
};

} // namespace zarvex::zx3DQt
