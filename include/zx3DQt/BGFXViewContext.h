// One bgfx view: where it draws, from where it looks, and what it clears.
#pragma once

#include <zx3DQt/WorldPosition.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/FrameBuffer.h>

#include <bgfx/bgfx.h>
#include <bx/math.h>

#include <QMatrix4x4>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QVector3D>
#include <QVector4D>

#include <cstdint>
#include <optional>

class QQuaternion;

namespace zarvex::zx3DQt {

/// The arguments of `bgfx::setViewClear`.
struct BGFXViewClearOptions {
    std::uint16_t flags = BGFX_CLEAR_NONE; ///< `BGFX_CLEAR_COLOR`, `_DEPTH`, `_STENCIL`, combinable
    std::uint32_t rgba = 0;                ///< colour, 0xRRGGBBAA
    float depth = 1.0f;                    ///< depth, 0 to 1
    std::uint8_t stencil = 0;              ///< stencil, 0 to 255
};

/// Everything that a bgfx view needs for a frame: id, viewport, view and projection matrix, draw order and
/// clear. Every draw operation takes one and submits into its view id.
///
/// A plain value that owns nothing. Spaces: world units; normalised device coordinates (NDC), −1 to 1 with
/// +y up; viewport pixels, physical, +y down from the top-left of the target. Matrices are Qt's: column
/// vectors, column-major storage.
///
/// Submit the context once a frame before drawing with it: bgfx keeps a view's settings, but another context
/// of the same id may have changed them. It checks nothing that it passes to bgfx.
class ZX3DQT_EXPORT BGFXViewContext {
public:
    /// A view with identity matrices and an empty viewport. Contexts of the same `viewId` share one bgfx
    /// view.
    BGFXViewContext(std::uint16_t viewId = 127,
                    std::optional<BGFXViewClearOptions> const& clearOptions = std::nullopt,
                    std::optional<bgfx::ViewMode::Enum> viewMode = std::nullopt);

    /// The view id, so that a context can stand wherever bgfx expects one.
    operator std::uint16_t const&() const { return m_viewId; }

    /// The bgfx view that is drawn into. bgfx draws views in the order of their ids.
    /// @{
    std::uint16_t GetViewId() const { return m_viewId; }
    void SetViewId(std::uint16_t viewId) { m_viewId = viewId; }
    /// @}

    /// How bgfx orders the view's draw calls.
    /// @{
    bgfx::ViewMode::Enum GetViewMode() const { return m_viewMode; }
    void SetViewMode(bgfx::ViewMode::Enum viewMode) { m_viewMode = viewMode; }
    /// @}

    /// The view's rectangle on the target, pixels.
    /// @{
    QRect const& GetViewport() const { return m_viewport; }
    void SetViewport(QRect const& viewport) { m_viewport = viewport; }
    /// @}

    /// View space to clip space, in the convention of the running renderer (see `ComputeOrthoProjection`).
    /// @{
    QMatrix4x4& GetProjectionMatrix() { return m_projectionMatrix; }
    QMatrix4x4 const& GetProjectionMatrix() const { return m_projectionMatrix; }
    void SetProjectionMatrix(QMatrix4x4 const& projectionMatrix) { m_projectionMatrix = projectionMatrix; }
    /// @}

    /// World space to view space.
    /// @{
    QMatrix4x4& GetViewMatrix() { return m_viewMatrix; }
    QMatrix4x4 const& GetViewMatrix() const { return m_viewMatrix; }
    void SetViewMatrix(QMatrix4x4 const& viewMatrix) { m_viewMatrix = viewMatrix; }
    /// @}

    /// The world position that the view's floats call (0, 0, 0), its matrices' and those of the positions
    /// that are drawn; at first the world's own. Batches subtract it from their origins in double precision:
    /// with one near what is looked at, a millimetre stays a millimetre a thousand kilometres from the
    /// world's origin.
    /// @{
    WorldPosition const& GetOrigin() const { return m_origin; }
    void SetOrigin(WorldPosition const& origin) { m_origin = origin; }
    /// @}

    /// A view matrix that only rotates; any earlier translation is discarded.
    void SetViewMatrix(QQuaternion const& rotation);

    /// What `Submit` tells bgfx to clear. Empty: the view keeps the clear that it has.
    /// @{
    std::optional<BGFXViewClearOptions>& GetViewClearOptions() { return m_clearOptions; }
    std::optional<BGFXViewClearOptions> const& GetViewClearOptions() const { return m_clearOptions; }
    void SetViewClearOptions(std::optional<BGFXViewClearOptions> const& clearOptions) {
        m_clearOptions = clearOptions;
    }
    /// @}

    /// Makes both matrices the identity.
    void SetToIdentity();

    /// A parallel projection of `rect` (world units, y down as in Qt) and of the depths `near` to `far`, left
    /// handed, upright: the rectangle's top edge maps to NDC y = +1. `offset` is added to NDC x. Depth maps
    /// to 0 to 1, or to −1 to 1 where the running renderer clips so (`bgfx::Caps::homogeneousDepth`), which
    /// is why bgfx must run. The formula is that of `bx::mtxOrtho`.
    static QMatrix4x4 ComputeOrthoProjection(QRectF const& rect, float near, float far, float offset);

    /// Sets the projection matrix to `ComputeOrthoProjection` of the arguments.
    void SetOrthoProjectionFromRect(QRectF const& rect, float near, float far, float offset);

    /// A parallel projection of the viewport's rectangle: one world unit is one pixel, with y down.
    void SetOrthoProjectionFromViewport(float near, float far, float offset);

    /// The camera's position in world space: the translation of the inverse view matrix; the origin for a
    /// matrix that has no inverse. Without an argument, of the context's own view matrix.
    /// @{
    static QVector3D ComputeViewPosition(QMatrix4x4 const& viewMatrix);
    QVector3D ComputeViewPosition() const;
    /// @}

    /// Width over height of the viewport, each counted as at least 1.
    double ComputeViewportAspectRatio() const;

    /// Where a world position appears, in viewport pixels (y down); its depth is dropped. Positions behind
    /// the camera give the place of their mirror image, those in its plane infinities.
    /// @{
    QPointF TransformToViewport(bx::Vec3 const& position) const;
    QPointF TransformToViewport(QVector3D const& position) const;
    /// @}

    /// The same for positions that may be behind the camera or in its plane, which have no place in the
    /// picture (their w in clip space is 0 or less): empty for them. In a parallel projection none is.
    /// @{
    std::optional<QPointF> ProjectToViewport(bx::Vec3 const& position) const;
    std::optional<QPointF> ProjectToViewport(QVector3D const& position) const;
    /// @}
    /// The same for a position in the world, from which the view's origin is subtracted in double precision.
    std::optional<QPointF> ProjectToViewport(WorldPosition const& position) const;

    /// Whether a position in the world lies in what the view shows: in the viewport, and from the near plane
    /// to the far plane; bgfx must run. Something may stand in front of it.
    bool IsInView(WorldPosition const& position) const;

    /// All positions in the world that appear at a place of the viewport, pixels, from the near plane on;
    /// bgfx must run. Computed in double precision from the view's matrices, and relative to its origin.
    /// Empty for a viewport without area and matrices without an inverse.
    std::optional<WorldRay> ComputeRay(QPointF const& position) const;

    /// Binds the view to the frame buffer for the frame being recorded, with the context's viewport,
    /// matrices, mode and, if there are any, clear options. Does not touch the view: without a draw call into
    /// it, bgfx does not process it.
    void Submit(zx3D::FrameBuffer const& frameBuffer) const;

    /// The same with another rectangle, pixels; a `QRectF` is rounded, and coordinates wrap at 16 bits.
    /// @{
    void Submit(zx3D::FrameBuffer const& frameBuffer, QRectF const& viewRect) const;
    void Submit(zx3D::FrameBuffer const& frameBuffer, QRect const& viewRect) const;
    /// @}

protected:
    /// A world position in NDC, divided by w; the result's w is 1.
    QVector4D TransformToNDC(bx::Vec3 const& position) const;

    /// From NDC to viewport pixels, y down.
    QPointF TransformFromNDCToViewPort(QPointF const& ndc) const;

private:
    QVector4D TransformToClip(bx::Vec3 const& position) const;
    bx::Vec3 RelativeToOrigin(WorldPosition const& position) const;

    QRect m_viewport;
    QMatrix4x4 m_projectionMatrix;
    QMatrix4x4 m_viewMatrix;
    WorldPosition m_origin;
    std::uint16_t m_viewId;
    bgfx::ViewMode::Enum m_viewMode;
    std::optional<BGFXViewClearOptions> m_clearOptions;
};

} // namespace zarvex::zx3DQt
