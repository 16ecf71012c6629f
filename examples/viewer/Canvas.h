// What the parts of a scene draw on for the length of one frame.
#pragma once

#include "Camera.h"
#include "Fonts.h"

#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/BGFXViewContext.h>

#include <QColor>
#include <QDeadlineTimer>
#include <QPointF>
#include <QSize>
#include <QString>

#include <optional>
#include <span>

namespace viewer {

/// Views that look through the camera, and operations in device-independent pixels.
struct Canvas {
    zarvex::zx3DQt::BGFXRenderer& renderer;
    zarvex::zx3DQt::BGFXViewContext const& surfaces;   ///< draws in the order of the calls
    zarvex::zx3DQt::BGFXViewContext const& onSurfaces; ///< the same a little nearer: for lines on surfaces
    zarvex::zx3DQt::BGFXViewContext const& labels;     ///< over all that
    OrbitCamera const& camera;
    Fonts& fonts;
    QSize size;       ///< physical pixels
    float pixelRatio; ///< physical pixels per device-independent pixel
    /// Until when what is not there yet may be prepared for the frame; never ends for pictures.
    QDeadlineTimer deadline;

    float AspectRatio() const {
        return static_cast<float>(size.width()) / static_cast<float>(std::max(size.height(), 1));
    }

    /// World units that a pixel covers at the depth of the camera's target.
    float WorldPerPixel() const {
        auto const height = static_cast<float>(2.0 * camera.ComputeHalfHeight());
        return pixelRatio * height / static_cast<float>(std::max(size.height(), 1));
    }

    /// Where a place appears, physical pixels; empty for what is behind the camera.
    std::optional<QPointF> Project(QVector3D const& place) const;

    /// Draws lines `width` pixels wide. Keeps them from passing behind the camera.
    void DrawLines(zarvex::zx3DQt::BGFXViewContext const& view, std::span<zarvex::zx3D::Line const> lines,
                   float width, std::optional<zarvex::zx3D::LineStipplePattern> const& stipple = {},
                   zarvex::zx3DQt::BGFXRenderState state = kBlended) const;

    /// Writes on the picture, physical pixels, with a shadow that sets the text off from what is behind it.
    void DrawLabel(QPointF place, QString const& text, QColor const& color, float size,
                   Qt::Alignment alignment) const;

    static constexpr zarvex::zx3DQt::BGFXRenderState kSolid = zarvex::zx3DQt::BGFXRenderer::STATE_OPAQUE;
    /// Lets what is behind shine through; leaves the depth to the surfaces.
    static constexpr zarvex::zx3DQt::BGFXRenderState kBlended{
        BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A | BGFX_STATE_DEPTH_TEST_LEQUAL | BGFX_STATE_BLEND_ALPHA};
};

} // namespace viewer
