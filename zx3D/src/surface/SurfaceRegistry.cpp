// Bookkeeping of surfaces.
#include "SurfaceRegistry.h"

#include "../context/FramePump.h"
#include "Surface.h"

#include <utility>

namespace zarvex::zx3D {

namespace {

/// Exists from the start, so that listeners of the application's are told of the context's end before it:
/// they may draw until then.
[[maybe_unused]] SurfaceRegistry const& toldLast = SurfaceRegistry::Get();

} // namespace

SurfaceRegistry& SurfaceRegistry::Get() {
    // Never destroyed: frame buffers of static storage duration may outlive any other order.
    static SurfaceRegistry& registry = *new SurfaceRegistry;
    return registry;
}

void SurfaceRegistry::OnContextStopping() {
    if (!m_withObject.empty()) {
        while (!m_withObject.empty())
            m_withObject.back()->DestroyObject();
        // Before the shutdown: while it shuts down, bgfx's OpenGL renderer fails to destroy the surface that
        // it presented last.
        FinishRecordedFrames();
    }
    m_orphans.clear();
    m_boundViews.clear();
}

void SurfaceRegistry::Add(Surface& surface) {
    m_withObject.push_back(&surface);
}

void SurfaceRegistry::Remove(Surface& surface) {
    std::erase(m_withObject, &surface);
}

void SurfaceRegistry::BindView(bgfx::ViewId view, bgfx::FrameBufferHandle handle) {
    bgfx::setViewFrameBuffer(view, handle);
    if (bgfx::isValid(handle))
        m_boundViews.insert_or_assign(view, handle);
    else
        m_boundViews.erase(view);
}

void SurfaceRegistry::UnbindViews(bgfx::FrameBufferHandle handle) {
    std::erase_if(m_boundViews, [handle](auto const& bound) {
        auto const [view, itsHandle] = bound;
        if (itsHandle.idx != handle.idx)
            return false;
        bgfx::setViewFrameBuffer(view, BGFX_INVALID_HANDLE);
        return true;
    });
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
