// Knows which native windows are alive.
#pragma once

#include <cstdint>
#include <memory>
#include <set>

struct xcb_connection_t;

namespace zarvex::zx3D {

/// Watches X11 windows for their destruction, through a connection of its own, so that it neither takes
/// events from the toolkit nor waits for the display server once a window is watched.
class NativeWindowWatch {
public:
    /// Starts to watch. False when the handle is not a window of the display, or there is no display.
    bool Watch(void* window);

    void Unwatch(void* window);

    /// True while a watched window has not been destroyed.
    bool IsAlive(void* window);

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };

    bool Connect();
    bool SelectEvents(std::uint32_t window, std::uint32_t mask);
    void ReadEvents();

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    std::set<std::uint32_t> m_alive;
};

} // namespace zarvex::zx3D
