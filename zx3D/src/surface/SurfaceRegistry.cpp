// Bookkeeping of surfaces.
#include "SurfaceRegistry.h"

#include "../context/FramePump.h"
#include "Surface.h"

#include <utility>

namespace zarvex::zx3D {

SurfaceRegistry& SurfaceRegistry::Get() {
    // Never destroyed: frame buffers of static storage duration may outlive any other order.
    static SurfaceRegistry& registry = *new SurfaceRegistry;
    return registry;
}

void SurfaceRegistry::BeginRun(NativeWindows* windows) {
    m_windows = windows;
}

void SurfaceRegistry::EndRun() {
    if (!m_withObject.empty()) {
        while (!m_withObject.empty())
            m_withObject.back()->DestroyObject();
        // Before the shutdown: while it shuts down, bgfx's OpenGL renderer fails to destroy the surface that
        // it presented last.
        FinishRecordedFrames();
    }
    m_orphans.clear();
    m_windows = nullptr;
}

void SurfaceRegistry::Add(Surface& surface) {
    m_withObject.push_back(&surface);
}

void SurfaceRegistry::Remove(Surface& surface) {
    std::erase(m_withObject, &surface);
}

void SurfaceRegistry::Adopt(std::unique_ptr<Surface> surface) {
    surface->LeaveWindow();
    m_orphans.push_back(std::move(surface));
}

void SurfaceRegistry::FreeDeadOrphans() {
    std::erase_if(m_orphans, [](std::unique_ptr<Surface> const& orphan) {
        if (!orphan->IsWindowAlive())
            orphan->Destroy();
        return !orphan->HasObject();
    });
}

} // namespace zarvex::zx3D
