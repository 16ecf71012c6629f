// One frame of a scene, for a target of any kind.
#pragma once

#include "MultisampledTarget.h"
#include "Scene.h"

namespace viewer {

/// Draws a scene in steps: into textures with several samples a pixel, from there onto the target, and text
/// over it.
///
/// Lifetime: each target has its own, destroyed while bgfx runs.
class ScenePainter {
public:
    /// Records a frame over all of the frame buffer. False when there is nothing to record into; then there
    /// is nothing to present either.
    bool Paint(Scene& scene, zarvex::zx3DQt::BGFXRenderer& renderer, zarvex::zx3D::FrameBuffer& frameBuffer,
               float pixelRatio);

private:
    MultisampledTarget m_target;
};

} // namespace viewer
