// Submitting annotations to bgfx.
#pragma once

#include "AnnotationItems.h"
#include "GlyphAtlas.h"
#include "TextRenderer.h"

#include <zx3D/Annotations.h>

#include <bgfx/bgfx.h>

#include <span>

namespace zarvex::zx3D {

struct CachedText;

/// A text that can be drawn: its quads are places in the atlas, on pages that are in use.
struct ResolvedText {
    AnnotationText const* text = nullptr;
    CachedText const* cached = nullptr;
};

/// Owns what annotations of a context's run are drawn with beyond what texts are, from the first ones on.
///
/// Needs a running context.
class AnnotationRenderer {
public:
    /// Creates the resources, unless it was tried before. False when they are not there.
    bool Start();

    /// Submits shapes and texts in the order in which they were added, as many as there is transient space
    /// for. `renderer` has what texts are drawn with, and was started.
    Annotations::Submitted Draw(std::span<AnnotationQuad const> shapes, std::span<ResolvedText const> texts,
                                GlyphAtlas& atlas, TextRenderer const& renderer, bgfx::ViewId view,
                                AnnotationDepth depth) const;

private:
    bool m_isTried = false;
    bgfx::ProgramHandle m_program = BGFX_INVALID_HANDLE; // the program factory's
    bgfx::VertexLayout m_layout;
};

} // namespace zarvex::zx3D
