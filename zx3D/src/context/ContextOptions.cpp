// Building the options of the context.
#include <zx3D/ContextOptions.h>

namespace zarvex::zx3D {

ContextOptions ContextOptions::Create(void* nativeWindowHandle, std::uint32_t width, std::uint32_t height,
                                      bgfx::CallbackI* callback, ThreadMode threadMode, bool verticalSync) {
    ContextOptions options;
    options.nativeWindowHandle = nativeWindowHandle;
    options.width = width;
    options.height = height;
    options.callback = callback;
    options.threadMode = threadMode;
    options.verticalSync = verticalSync;
    return options;
}

} // namespace zarvex::zx3D
