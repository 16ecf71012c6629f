// The lights of a studio, which stand around the camera and go with it.
#pragma once

#include "Camera.h"

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXPointLightSource.h>

#include <array>

namespace viewer {

/// Key light from the upper left, a cooler and dimmer fill light from the right, and one at the camera, so
/// that no side of a mesh is without shape, and none is dark.
///
/// Lifetime: creates its uniforms with the first frame; destroy it while bgfx runs.
class Lights {
public:
    Lights();

    /// Lets them shine on what is drawn from here on by the renderer's operations.
    void Submit(OrbitCamera const& camera);

    /// Adds them to those that shine on batches.
    static void AddTo(zarvex::zx3DQt::BGFXLightingContext& lights, OrbitCamera const& camera);

private:
    bool m_created = false;
    std::array<zarvex::zx3DQt::BGFXPointLightSource, 3> m_lights;
};

} // namespace viewer
