// Hearing of the context's end in time.
#pragma once

#include <zx3D/zx3DExport.h>

namespace zarvex::zx3D {

/// Base of objects that own bgfx resources and may outlive the context: they are told to free them before
/// bgfx stops.
///
/// Who was constructed last is told first. Any listener may be constructed or destroyed meanwhile, itself
/// included: who is gone is not told, and who is new is told too.
///
/// Thread: constructed, told and destroyed on the thread that calls bgfx's API.
class ZX3D_EXPORT ContextListener {
public:
    ContextListener(ContextListener const&) = delete;
    ContextListener& operator=(ContextListener const&) = delete;

    /// bgfx still runs, and stops when all have been told. Not called when no context runs.
    virtual void OnContextStopping() = 0;

protected:
    ContextListener();
    ~ContextListener();
};

} // namespace zarvex::zx3D
