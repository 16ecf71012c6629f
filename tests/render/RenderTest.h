// What tests with pixels begin from: a small target, a renderer, and rectangles that land on whole pixels.
#pragma once

#include "ImageComparison.h"
#include "OffscreenTarget.h"
#include "SharedRun.h"

#include <zx3DQt/BGFXRenderer.h>

#include <QColor>
#include <QImage>
#include <QRectF>

#include <optional>

namespace zarvex::testing {

/// The colour with each 8-bit channel divided by 255, which becomes the same 8 bits again on a target.
zx3D::Color ToColor(QColor const& color);

/// A view of a viewport in which one world unit is one pixel with y down, depths reach from 0 (near) to 1
/// (far) and draws happen in the order of their calls. Clears colour and depth.
zx3DQt::BGFXViewContext PixelView(QRect const& viewport, QColor const& clearColor = Qt::black,
                                  bgfx::ViewId id = 0);

/// Draws a rectangle of one colour at a depth.
void DrawRect(zx3DQt::BGFXRenderer& renderer, zx3DQt::BGFXViewContext const& view, QRectF const& rect,
              QColor const& color, float depth = 0.5f,
              std::optional<zx3DQt::ModelTransformCacheId> modelTransform = std::nullopt,
              std::optional<zx3DQt::BGFXRenderState> state = std::nullopt);

/// Draws something in a frame of its own, so that bgfx takes over the uniforms that were set. From API
/// version 136 on a mere touch of a view makes it forget them.
void TakeOverUniforms(zx3DQt::BGFXRenderer& renderer);

/// A test that draws with one renderer on one off-screen target, a row per backend.
class RenderTest : public SharedRunTest {
protected:
    explicit RenderTest(QSize targetSize = QSize(64, 48)) : m_target(targetSize) {}

    /// Starts a frame with the identity as the current model transform.
    void StartFrame();

    /// Presents the frame; the target's picture after it.
    QImage Present() { return ReadBack(m_target.GetFrameBuffer()); }

    /// A view over the whole target, submitted to it.
    zx3DQt::BGFXViewContext SubmitPixelView(QColor const& clearColor = Qt::black);

    void DrawRect(zx3DQt::BGFXViewContext const& view, QRectF const& rect, QColor const& color,
                  float depth = 0.5f,
                  std::optional<zx3DQt::ModelTransformCacheId> modelTransform = std::nullopt,
                  std::optional<zx3DQt::BGFXRenderState> state = std::nullopt) {
        testing::DrawRect(m_renderer, view, rect, color, depth, modelTransform, state);
    }

    /// The whole target in one colour.
    QImage Canvas(QColor const& color = Qt::black) const {
        return FilledImage(m_target.GetViewport().size(), color);
    }

    OffscreenTarget m_target;
    zx3DQt::BGFXRenderer m_renderer;
};

} // namespace zarvex::testing
