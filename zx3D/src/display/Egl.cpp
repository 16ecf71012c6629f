// The calls of EGL, where there is one.
#include "Egl.h"

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
    /// Flags of dlopen, besides RTLD_LAZY.
    explicit Egl(int flags) : m_library(dlopen("libEGL.so.1", RTLD_LAZY | flags)) {
        m_isComplete = m_library != nullptr && Find(getDisplay, "eglGetDisplay") &&
                       Find(initialize, "eglInitialize") && Find(terminate, "eglTerminate") &&
                       Find(queryString, "eglQueryString") && Find(chooseConfig, "eglChooseConfig") &&
                       Find(getConfigAttribute, "eglGetConfigAttrib") && Find(queryApi, "eglQueryAPI") &&
                       Find(bindApi, "eglBindAPI") && Find(createContext, "eglCreateContext") &&
                       Find(destroyContext, "eglDestroyContext");
    }

    explicit operator bool() const { return m_isComplete; }

    decltype(&eglGetDisplay) getDisplay = nullptr;
    decltype(&eglInitialize) initialize = nullptr;
    decltype(&eglTerminate) terminate = nullptr;
    decltype(&eglQueryString) queryString = nullptr;
    decltype(&eglChooseConfig) chooseConfig = nullptr;
    decltype(&eglGetConfigAttrib) getConfigAttribute = nullptr;
    decltype(&eglQueryAPI) queryApi = nullptr;
    decltype(&eglBindAPI) bindApi = nullptr;
    decltype(&eglCreateContext) createContext = nullptr;
    decltype(&eglDestroyContext) destroyContext = nullptr;

private:
    template<typename Function>
    bool Find(Function*& function, char const* name) {
        function = reinterpret_cast<Function*>(dlsym(m_library.get(), name));
        return function != nullptr;
    }

    std::unique_ptr<void, decltype([](void* library) { dlclose(library); })> m_library;
    bool m_isComplete = false;
};

/// The one that bgfx chooses on a display that is open. Null for none.
EGLConfig ChooseConfig(Egl const& egl, EGLDisplay display) {
    char const* const extensions = egl.queryString(display, EGL_EXTENSIONS);
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
    return egl.chooseConfig(display, attributes, &config, 1, &count) && count != 0 ? config : nullptr;
}

/// A context of OpenGL 4.3 on a display that is open. The calling thread goes on with the interface that it
/// has bound.
EGLContext CreateContext(Egl const& egl, EGLDisplay display) {
    EGLConfig const config = ChooseConfig(egl, display);
    if (config == nullptr)
        return EGL_NO_CONTEXT;
    EGLenum const boundBefore = egl.queryApi();
    EGLContext context = EGL_NO_CONTEXT;
    if (egl.bindApi(EGL_OPENGL_API)) {
        EGLint const attributes[] = {EGL_CONTEXT_MAJOR_VERSION, 4, EGL_CONTEXT_MINOR_VERSION, 3, EGL_NONE};
        context = egl.createContext(display, config, EGL_NO_CONTEXT, attributes);
    }
    egl.bindApi(boundBefore);
    return context;
}

} // namespace

bool HasOpenGL(void* nativeDisplay) {
    Egl const egl(RTLD_NODELETE); // drivers do not like to be unloaded
    if (!egl)
        return false;
    EGLDisplay const display = egl.getDisplay(static_cast<EGLNativeDisplayType>(nativeDisplay));
    if (!egl.initialize(display, nullptr, nullptr))
        return false;
    EGLContext const context = CreateContext(egl, display);
    if (context == EGL_NO_CONTEXT) {
        egl.terminate(display);
        return false;
    }
    egl.destroyContext(display, context);
    return true;
}

std::uint32_t ChooseEglVisual(void* nativeDisplay) {
    Egl const egl(RTLD_NOLOAD);
    if (!egl)
        return 0;
    EGLDisplay const display = egl.getDisplay(static_cast<EGLNativeDisplayType>(nativeDisplay));
    EGLConfig const config = ChooseConfig(egl, display);
    EGLint visual = 0;
    if (config == nullptr || !egl.getConfigAttribute(display, config, EGL_NATIVE_VISUAL_ID, &visual))
        return 0;
    return static_cast<std::uint32_t>(visual);
}

} // namespace zarvex::zx3D
