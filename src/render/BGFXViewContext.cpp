// Projections, coordinate transforms and the submission of a view.
#include <zx3DQt/BGFXViewContext.h>

#include "../frame/Logging.h"
#include "Unproject.h"

#include <QQuaternion>

#include <algorithm>
#include <cmath>

namespace zarvex::zx3DQt {

namespace {

/// By component: Qt's own division asserts that w is not 0.
QVector4D DivideByW(QVector4D const& clip) {
    float const w = clip.w();
    return {clip.x() / w, clip.y() / w, clip.z() / w, w / w};
}

bx::Vec3 ToVec3(QVector3D const& position) {
    return {position.x(), position.y(), position.z()};
}

/// Of the near plane, in NDC.
float NearestDepth() {
    return bgfx::getCaps()->homogeneousDepth ? -1.0f : 0.0f;
}

} // namespace

BGFXViewContext::BGFXViewContext(std::uint16_t viewId,
                                 std::optional<BGFXViewClearOptions> const& clearOptions,
                                 std::optional<bgfx::ViewMode::Enum> viewMode)
    : m_viewId(viewId),
      m_viewMode(viewMode.value_or(bgfx::ViewMode::Default)),
      m_clearOptions(clearOptions) {}

void BGFXViewContext::SetViewMatrix(QQuaternion const& rotation) {
    m_viewMatrix = QMatrix4x4();
    m_viewMatrix.rotate(rotation);
}

void BGFXViewContext::SetToIdentity() {
    m_viewMatrix.setToIdentity();
    m_projectionMatrix.setToIdentity();
}

QMatrix4x4 BGFXViewContext::ComputeOrthoProjection(QRectF const& rect, float near, float far, float offset) {
    // Qt's bottom is the larger y; taken as the projection's bottom it turns the y axis up.
    QMatrix4x4 projection;
    bx::mtxOrtho(projection.data(), static_cast<float>(rect.left()), static_cast<float>(rect.right()),
                 static_cast<float>(rect.bottom()), static_cast<float>(rect.top()), near, far, offset,
                 bgfx::getCaps()->homogeneousDepth, bx::Handedness::Left);
    return projection;
}

void BGFXViewContext::SetOrthoProjectionFromRect(QRectF const& rect, float near, float far, float offset) {
    m_projectionMatrix = ComputeOrthoProjection(rect, near, far, offset);
}

void BGFXViewContext::SetOrthoProjectionFromViewport(float near, float far, float offset) {
    m_projectionMatrix = ComputeOrthoProjection(QRectF(m_viewport), near, far, offset);
}

QVector3D BGFXViewContext::ComputeViewPosition(QMatrix4x4 const& viewMatrix) {
    return viewMatrix.inverted().column(3).toVector3D();
}

QVector3D BGFXViewContext::ComputeViewPosition() const {
    return ComputeViewPosition(m_viewMatrix);
}

double BGFXViewContext::ComputeViewportAspectRatio() const {
    return static_cast<double>(std::max(m_viewport.width(), 1)) / std::max(m_viewport.height(), 1);
}

QVector4D BGFXViewContext::TransformToClip(bx::Vec3 const& position) const {
    QMatrix4x4 const worldToClip = m_projectionMatrix * m_viewMatrix;
    return worldToClip * QVector4D(position.x, position.y, position.z, 1.0f);
}

QVector4D BGFXViewContext::TransformToNDC(bx::Vec3 const& position) const {
    return DivideByW(TransformToClip(position));
}

QPointF BGFXViewContext::TransformFromNDCToViewPort(QPointF const& ndc) const {
    return {m_viewport.x() + m_viewport.width() * (ndc.x() + 1.0) * 0.5,
            m_viewport.y() + m_viewport.height() * (1.0 - ndc.y()) * 0.5};
}

QPointF BGFXViewContext::TransformToViewport(bx::Vec3 const& position) const {
    QVector4D const ndc = TransformToNDC(position);
    return TransformFromNDCToViewPort(QPointF(ndc.x(), ndc.y()));
}

QPointF BGFXViewContext::TransformToViewport(QVector3D const& position) const {
    return TransformToViewport(ToVec3(position));
}

std::optional<QPointF> BGFXViewContext::ProjectToViewport(bx::Vec3 const& position) const {
    QVector4D const clip = TransformToClip(position);
    if (clip.w() <= 0.0f)
        return std::nullopt;
    QVector4D const ndc = DivideByW(clip);
    return TransformFromNDCToViewPort(QPointF(ndc.x(), ndc.y()));
}

std::optional<QPointF> BGFXViewContext::ProjectToViewport(QVector3D const& position) const {
    return ProjectToViewport(ToVec3(position));
}

bx::Vec3 BGFXViewContext::RelativeToOrigin(WorldPosition const& position) const {
    WorldVector const relative = position - m_origin;
    return {static_cast<float>(relative.x), static_cast<float>(relative.y), static_cast<float>(relative.z)};
}

std::optional<QPointF> BGFXViewContext::ProjectToViewport(WorldPosition const& position) const {
    return ProjectToViewport(RelativeToOrigin(position));
}

bool BGFXViewContext::IsInView(WorldPosition const& position) const {
    QVector4D const clip = TransformToClip(RelativeToOrigin(position));
    float const w = clip.w();
    return w > 0.0f && std::abs(clip.x()) <= w && std::abs(clip.y()) <= w && clip.z() >= NearestDepth() * w &&
           clip.z() <= w;
}

std::optional<WorldRay> BGFXViewContext::ComputeRay(QPointF const& position) const {
    if (m_viewport.isEmpty())
        return std::nullopt;
    double const x = 2.0 * (position.x() - m_viewport.x()) / m_viewport.width() - 1.0;
    double const y = 1.0 - 2.0 * (position.y() - m_viewport.y()) / m_viewport.height();
    return Unproject(m_projectionMatrix, m_viewMatrix, m_origin, x, y, NearestDepth());
}

void BGFXViewContext::Submit(zx3D::FrameBuffer const& frameBuffer) const {
    Submit(frameBuffer, m_viewport);
}

void BGFXViewContext::Submit(zx3D::FrameBuffer const& frameBuffer, QRectF const& viewRect) const {
    Submit(frameBuffer, viewRect.toRect());
}

void BGFXViewContext::Submit(zx3D::FrameBuffer const& frameBuffer, QRect const& viewRect) const {
    LogDebug("Submitting view context [this: ", static_cast<void const*>(this), "] ", "[viewId: ", m_viewId,
             "] ", "[viewMode: ", static_cast<int>(m_viewMode), "] ",
             "[framebuffer: (w:", frameBuffer.GetWidth(), ",h:", frameBuffer.GetHeight(),
             "), handle: ", frameBuffer.GetHandle().idx, "] ", "[viewRect: (w:", viewRect.width(),
             ",h:", viewRect.height(), ")]");
    bgfx::setViewMode(m_viewId, m_viewMode);
    frameBuffer.BindToView(m_viewId);
    bgfx::setViewRect(
        m_viewId, static_cast<std::uint16_t>(viewRect.left()), static_cast<std::uint16_t>(viewRect.top()),
        static_cast<std::uint16_t>(viewRect.width()), static_cast<std::uint16_t>(viewRect.height()));
    bgfx::setViewTransform(m_viewId, m_viewMatrix.constData(), m_projectionMatrix.constData());
    if (m_clearOptions) {
        bgfx::setViewClear(m_viewId, m_clearOptions->flags, m_clearOptions->rgba, m_clearOptions->depth,
                           m_clearOptions->stencil);
    }
}

} // namespace zarvex::zx3DQt
