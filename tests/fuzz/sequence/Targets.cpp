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

bgfx::TextureHandle FindTexture(Shared const& shared, zx3D::FrameBuffer const& target) {
    if (shared.texture == nullptr || !bgfx::isValid(shared.texture->GetHandle()) ||
        shared.texture->GetHandle().idx == target.GetHandle().idx)
        return BGFX_INVALID_HANDLE;
    return bgfx::getTexture(shared.texture->GetHandle(), 0);
}

void Window::DrawFrame() {
    if (!GetRenderer().StartFrame(GetFrameBuffer()))
        return;
    DrawSomething(m_random, GetRenderer(), GetFrameBuffer(), GetViewport(), kViewsOfWindows, m_shared.font,
                  FindTexture(m_shared, GetFrameBuffer()));
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
                  m_shared.font, FindTexture(m_shared, Base::GetFrameBuffer()));
    if (event != nullptr)
        PutOnScreen(*this);
}

template class Widget<zx3DQt::BGFXNativeWidget>;
template class Widget<zx3DQt::BGFXOffscreenWidget>;

} // namespace zarvex::fuzz
