// Filled circles, rectangles and cones.
#pragma once

#include <zx3DQt/RenderTypes.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Color.h>

#include <QVector2D>
#include <QVector3D>

#include <bx/math.h>

namespace zarvex::zx3DQt {

class BGFXRenderer;
class BGFXViewContext;

// Shapes of one flat colour, without light unless told otherwise, in world units. Each call is one
// submission. Rectangles and cones are drawn with the renderer's current model transform. Circles set none:
// they are drawn with the identity, or with a transform that was set since the last draw.

/// A disc in a plane of constant z.
struct BGFXCircleModel2D {
    QVector2D center;    ///< world units
    float radius = 1.0f; ///< world units
    zx3D::Color color;   ///< of the whole disc
};

/// A rectangle with edges along x and y in a plane of constant z.
struct BGFXRectangleModel2D {
    QVector2D center;                  ///< world units
    QVector2D halfExtents{1.0f, 1.0f}; ///< from the centre to the edges
    zx3D::Color color;                 ///< of the whole rectangle
};

/// A cone, closed by a disc.
struct BGFXConeModel {
    bx::Vec3 direction{0.0f, 0.0f, 0.0f}; ///< unit vector from the base towards the tip
    bx::Vec3 apex{0.0f, 0.0f, 0.0f};      ///< the tip
    float height = 0.15f;                 ///< from the base to the tip
    float radius = 0.05f;                 ///< of the base
    int segments = 32;                    ///< of the base's edge
    zx3D::Color color;                    ///< of the whole cone
};

/// A light that goes with the camera, far away over the viewer's left shoulder: a matt surface has its own
/// colour where it faces the light, and `ambient` of it where it turns away. Computed from the view's
/// matrices and the renderer's current model transform, whatever lights and materials there are.
struct CameraLight {
    float ambient = 0.45f; ///< what is left of the colour in the shade, 0 to 1
};

/// Draws a disc of 360 segments at height `z`.
ZX3DQT_EXPORT void DrawCircle(BGFXRenderer const& renderer, BGFXViewContext const& view,
                              QVector2D const& center, float radius, zx3D::Color const& color, float z,
                              BGFXRenderState state);
/// The same.
ZX3DQT_EXPORT void DrawCircle(BGFXRenderer const& renderer, BGFXViewContext const& view,
                              BGFXCircleModel2D const& model, float z, BGFXRenderState state);

/// Draws a rectangle at height `z`.
ZX3DQT_EXPORT void DrawRectangle(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                 QVector2D const& center, QVector2D const& halfExtents,
                                 zx3D::Color const& color, float z, BGFXRenderState state);
/// The same.
ZX3DQT_EXPORT void DrawRectangle(BGFXRenderer const& renderer, BGFXViewContext const& view,
                                 BGFXRectangleModel2D const& model, float z, BGFXRenderState state);

/// Draws a cone, with `BGFXRenderer::STATE_OPAQUE`. A `direction` that is no unit vector scales height and
/// base. Draws nothing for a radius of about zero, a NaN, or fewer than one segment; at most 65,533 segments
/// can be addressed by 16-bit indices, which is not checked.
ZX3DQT_EXPORT void DrawCone(BGFXRenderer const& renderer, BGFXViewContext const& view,
                            QVector3D const& direction, QVector3D const& apex, double height, double radius,
                            int segments, zx3D::Color const& color);
/// The same.
ZX3DQT_EXPORT void DrawCone(BGFXRenderer const& renderer, BGFXViewContext const& view,
                            BGFXConeModel const& model);

/// The same cone with light and shade, round to the eye. It has at most 21,845 segments.
ZX3DQT_EXPORT void DrawCone(BGFXRenderer const& renderer, BGFXViewContext const& view,
                            BGFXConeModel const& model, CameraLight const& light);

} // namespace zarvex::zx3DQt
