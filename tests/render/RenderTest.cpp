// Views and rectangles in pixels.
#include "RenderTest.h"

namespace zarvex::testing {

zx3D::Color ToColor(QColor const& color) {
    return {static_cast<float>(color.red()) / 255.0f, static_cast<float>(color.green()) / 255.0f,
            static_cast<float>(color.blue()) / 255.0f, static_cast<float>(color.alpha()) / 255.0f};
}

zx3DQt::BGFXViewContext PixelView(QRect const& viewport, QColor const& clearColor, bgfx::ViewId id) {
    zx3DQt::BGFXViewClearOptions const clear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH,
                                             ToColor(clearColor).ToRGBA(), 1.0f, 0};
    zx3DQt::BGFXViewContext view(id, clear, bgfx::ViewMode::Sequential);
    view.SetViewport(viewport);
    view.SetOrthoProjectionFromRect(QRectF(0.0, 0.0, viewport.width(), viewport.height()), 0.0f, 1.0f, 0.0f);
    return view;
}

void DrawRect(zx3DQt::BGFXRenderer& renderer, zx3DQt::BGFXViewContext const& view, QRectF const& rect,
              QColor const& color, float depth, std::optional<zx3DQt::ModelTransformCacheId> modelTransform,
              std::optional<zx3DQt::BGFXRenderState> state) {
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    auto const corner = [&](QPointF point) {
        bx::Vec3 const position(static_cast<float>(point.x()), static_cast<float>(point.y()), depth);
        return Vertex(position, ToColor(color));
    };
    Vertex const vertices[] = {corner(rect.topLeft()), corner(rect.topRight()), corner(rect.bottomLeft()),
                               corner(rect.bottomRight())};
    std::uint16_t const indices[] = {0, 1, 2, 2, 1, 3};
    renderer.DrawTriangles(view, vertices, indices, modelTransform, state);
}

void TakeOverUniforms(zx3DQt::BGFXRenderer& renderer) {
    renderer.SetModelTransform(QMatrix4x4());
    DrawRect(renderer, PixelView(QRect(0, 0, 1, 1)), QRectF(0.0, 0.0, 1.0, 1.0), Qt::black);
    bgfx::frame();
}

void RenderTest::StartFrame() {
    ASSERT_TRUE(m_renderer.StartFrame(m_target.GetFrameBuffer()));
    m_renderer.SetModelTransform(QMatrix4x4());
}

zx3DQt::BGFXViewContext RenderTest::SubmitPixelView(QColor const& clearColor) {
    zx3DQt::BGFXViewContext const view = PixelView(m_target.GetViewport(), clearColor);
    view.Submit(m_target.GetFrameBuffer());
    return view;
}

} // namespace zarvex::testing
