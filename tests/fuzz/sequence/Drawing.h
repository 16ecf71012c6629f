// What is drawn into a frame: anything that the public operations allow.
#pragma once

#include "Batches.h"
#include "Random.h"

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/TextHandles.h>

#include <bgfx/bgfx.h>

#include <QRect>

namespace zarvex::fuzz {

/// The view ids that a target may draw into; bgfx has views 0 to 255, and the libraries use the ends.
struct ViewIds {
    bgfx::ViewId first = 1;
    bgfx::ViewId count = 8;
};

/// What is drawn that outlives a frame.
struct Content {
    zx3D::FontHandle font;       ///< may be none, or one that is gone
    bgfx::TextureHandle texture; ///< left out when it is invalid
    Batches& batches;
};

/// Draws some operations into some views of a frame that was started.
void DrawSomething(Random& random, zx3DQt::BGFXRenderer& renderer, zx3D::FrameBuffer const& frameBuffer,
                   QRect const& viewport, ViewIds views, Content const& content);

} // namespace zarvex::fuzz
