// Starting and stopping the library.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/ContextOptions.h>

#include <bgfx/bgfx.h>

#include <memory>

class QColor;
class QWidget;

namespace zarvex::zx3DQt {

/// Starts the rendering context, and with it bgfx, on a hidden widget of the library's own.
///
/// Call it once, on the GUI thread, after the QApplication exists and before the first render target.
/// `verticalSync` makes presenting wait for the display's refresh. `callback` receives bgfx's errors and
/// messages, from any thread, and is owned by the library from here on; without one a `BGFXDefaultCallback`
/// is installed.
///
/// Returns whether the context started. When it did not, the library nevertheless counts as initialised:
/// call `Shutdown` before another attempt. When it is initialised already, returns true, deletes `callback`
/// and changes nothing.
ZX3DQT_EXPORT bool Init(bool verticalSync, std::unique_ptr<bgfx::CallbackI> callback = nullptr);

/// Stops the context, then frees the hidden widget and last the callback. On the GUI thread, after the render
/// targets are destroyed and before the QApplication goes; targets and renderers that are left can still be
/// destroyed later. Harmless without `Init`, and when a `zx3D::ContextListener` calls it while it is under
/// way.
ZX3DQT_EXPORT void Shutdown();

/// Lets view 0 clear the hidden back buffer (colour, and depth to 1) in the next frame, so that the frame
/// has work even when nothing is drawn. Submits no frame. GUI thread; does nothing while no context runs.
ZX3DQT_EXPORT void ClearBackBufferWidget(QColor const& color);

/// The hidden widget that bgfx was started on; null before `Init` and after `Shutdown`. Owned by the library.
/// GUI thread.
ZX3DQT_EXPORT QWidget* GetBackBufferWidget();

/// The options that the rendering context was started with. GUI thread.
ZX3DQT_EXPORT zx3D::ContextOptions const& GetZx3DContextOptions();

} // namespace zarvex::zx3DQt
