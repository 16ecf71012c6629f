// Render targets that draw something else in every frame.
#pragma once

#include "Drawing.h"
#include "Random.h"

#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>
#include <zx3DQt/BGFXWindow.h>

namespace zarvex::fuzz {

/// What all targets draw with; font and texture may be none.
struct Shared {
    zx3D::FontHandle font;
    zx3D::FrameBuffer* texture = nullptr; ///< its colours; not those of the target's own frame buffer
    Batches batches;

    /// What there is of it for a target now.
    Content For(zx3D::FrameBuffer const& target);
};

/// A window that draws when it is exposed and when it is told to.
class Window final : public zx3DQt::BGFXWindow {
public:
    Window(Shared& shared, std::uint64_t seed) : m_shared(shared), m_random(seed) {}

    void DrawFrame();
    void exposeEvent(QExposeEvent* event) override;

private:
    Shared& m_shared;
    Random m_random;
};

/// A widget that draws when it is painted. Its own decisions do not change those of the sequence, since the
/// window system decides how often it is painted.
template<typename Base>
class Widget final : public Base {
public:
    Widget(Shared& shared, std::uint64_t seed) : m_shared(shared), m_random(seed) { Base::resize(80, 60); }

    void paintEvent(QPaintEvent* event) override;

private:
    Shared& m_shared;
    Random m_random;
};

using NativeWidget = Widget<zx3DQt::BGFXNativeWidget>;
using OffscreenWidget = Widget<zx3DQt::BGFXOffscreenWidget>;

} // namespace zarvex::fuzz
