// One frame of a scene, for a target of any kind.
#pragma once

#include "Scene.h"

namespace viewer {

enum class Purpose { Frame, Picture };

/// Records a frame over all of the frame buffer: the scene, and text over it. False when there is nothing to
/// record into; then there is nothing to present either. A picture is complete; a frame has what it had time
/// to prepare, and the scene asks for the next.
bool PaintScene(Scene& scene, zarvex::zx3DQt::BGFXRenderer& renderer, zarvex::zx3D::FrameBuffer& frameBuffer,
                float pixelRatio, Purpose purpose);

} // namespace viewer
