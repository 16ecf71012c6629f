// The connection to the X display that bgfx draws through.
#pragma once

#include <memory>

namespace zarvex::zx3D {

/// An X11 display connection of zx3D's own, handed to bgfx as its native display.
///
/// bgfx's Vulkan renderer needs one, and sharing the toolkit's would mix two threads' requests on it.
class DisplayConnection {
public:
    /// Connects to the display of the environment; no connection when there is none.
    static DisplayConnection Open();

    /// True when there is a connection.
    bool IsOpen() const { return m_display != nullptr; }

    /// The connection as bgfx's `platformData.ndt`; null when not open.
    void* GetNativeDisplay() const { return m_display.get(); }

private:
    struct Close {
        void operator()(void* display) const;
    };

    std::unique_ptr<void, Close> m_display;
};

} // namespace zarvex::zx3D
