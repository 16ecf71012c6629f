// Frames of the targets.
#include "Targets.h"

namespace zarvex::fuzz {

namespace {

constexpr ViewIds kViewsOfWindows{1, 8};
constexpr ViewIds kViewsOfWidgets{10, 8};

void PutOnScreen(zx3DQt::BGFXNativeWidget& widget) {
    widget.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
}

void PutOnScreen(zx3DQt::BGFXOffscreenWidget& widget) {
    widget.Flush();
}

} // namespace

Content Shared::For(zx3D::FrameBuffer const& target) {
    bool const hasTexture = texture != nullptr && bgfx::isValid(texture->GetHandle()) &&
                            texture->GetHandle().idx != target.GetHandle().idx;
    bgfx::TextureHandle const none = BGFX_INVALID_HANDLE;
    return {font, hasTexture ? bgfx::getTexture(texture->GetHandle(), 0) : none, batches};
}

void Window::DrawFrame() {
    if (!GetRenderer().StartFrame(GetFrameBuffer()))
        return;
    DrawSomething(m_random, GetRenderer(), GetFrameBuffer(), GetViewport(), kViewsOfWindows,
                  m_shared.For(GetFrameBuffer()));
    if (m_random.OneIn(2))
        GetRenderer().PresentCurrentAndSubmitNextFrame(m_random.OneIn(8));
    else
        GetRenderer().PresentSubmittedFrame(m_random.OneIn(8));
}

void Window::exposeEvent(QExposeEvent* event) {
    BGFXWindow::exposeEvent(event);
    if (isExposed())
        DrawFrame();
}

template<typename Base>
void Widget<Base>::paintEvent(QPaintEvent* event) {
    Base::paintEvent(event);
    if (!Base::GetRenderer().StartFrame(Base::GetFrameBuffer()))
        return;
    DrawSomething(m_random, Base::GetRenderer(), Base::GetFrameBuffer(), Base::GetViewport(), kViewsOfWidgets,
                  m_shared.For(Base::GetFrameBuffer()));
    if (event != nullptr)
        PutOnScreen(*this);
}

template class Widget<zx3DQt::BGFXNativeWidget>;
template class Widget<zx3DQt::BGFXOffscreenWidget>;

} // namespace zarvex::fuzz
