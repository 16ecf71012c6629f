// Asks EGL as bgfx does.
#include "EglVisual.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <dlfcn.h>

#include <cstring>
#include <memory>

namespace zarvex::zx3D {

namespace {

/// EGL as bgfx opens it. zx3D does not link to it: there may be none, where only Vulkan works.
class Egl {
public:
    explicit operator bool() const { return m_library != nullptr; }

    template<typename Function>
    Function* Find(Function*, char const* name) const {
        return reinterpret_cast<Function*>(dlsym(m_library.get(), name));
    }

private:
    std::unique_ptr<void, decltype([](void* library) { dlclose(library); })> m_library{
        dlopen("libEGL.so.1", RTLD_LAZY | RTLD_NOLOAD)};
};

} // namespace

#define ZX3D_FIND(function) egl.Find(&::function, #function)

std::uint32_t ChooseEglVisual(void* nativeDisplay) {
    Egl const egl;
    if (!egl)
        return 0;
    auto* const getDisplay = ZX3D_FIND(eglGetDisplay);
    auto* const queryString = ZX3D_FIND(eglQueryString);
    auto* const chooseConfig = ZX3D_FIND(eglChooseConfig);
    auto* const getConfigAttribute = ZX3D_FIND(eglGetConfigAttrib);
    if (getDisplay == nullptr || queryString == nullptr || chooseConfig == nullptr ||
        getConfigAttribute == nullptr)
        return 0;
    EGLDisplay const display = getDisplay(static_cast<EGLNativeDisplayType>(nativeDisplay));
    char const* const extensions = queryString(display, EGL_EXTENSIONS);
    bool const isRecordable =
        extensions != nullptr && std::strstr(extensions, "EGL_ANDROID_recordable") != nullptr;
    EGLint const attributes[] = {EGL_RENDERABLE_TYPE,
                                 EGL_OPENGL_BIT,
                                 EGL_SURFACE_TYPE,
                                 EGL_WINDOW_BIT,
                                 EGL_BLUE_SIZE,
                                 8,
                                 EGL_GREEN_SIZE,
                                 8,
                                 EGL_RED_SIZE,
                                 8,
                                 EGL_ALPHA_SIZE,
                                 8,
                                 EGL_DEPTH_SIZE,
                                 24,
                                 EGL_STENCIL_SIZE,
                                 8,
                                 isRecordable ? EGL_RECORDABLE_ANDROID : EGL_NONE,
                                 isRecordable ? 1 : EGL_NONE,
                                 EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    EGLint visual = 0;
    if (!chooseConfig(display, attributes, &config, 1, &count) || count == 0 ||
        !getConfigAttribute(display, config, EGL_NATIVE_VISUAL_ID, &visual))
        return 0;
    return static_cast<std::uint32_t>(visual);
}

#undef ZX3D_FIND

} // namespace zarvex::zx3D
