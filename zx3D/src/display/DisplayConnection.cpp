// Xlib side of the display connection.
#include "DisplayConnection.h"

#include <X11/Xlib.h>

namespace zarvex::zx3D {

DisplayConnection DisplayConnection::Open() {
    // The connection is made here and used on bgfx's render thread.
    XInitThreads();
    DisplayConnection connection;
    connection.m_display.reset(XOpenDisplay(nullptr));
    return connection;
}

void DisplayConnection::Close::operator()(void* display) const {
    XCloseDisplay(static_cast<Display*>(display));
}

} // namespace zarvex::zx3D
