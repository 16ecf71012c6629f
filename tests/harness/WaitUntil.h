// Waiting for what the X server, the window manager and Qt do in their own time.
#pragma once

#include <functional>

namespace zarvex::testing {

/// Runs the event loop until the condition holds; false after a few seconds.
bool WaitUntil(std::function<bool()> const& condition);

/// Lets the application handle everything that the X server has sent so far.
void HandlePendingEvents();

} // namespace zarvex::testing
