// Bookkeeping of surfaces and their native windows.
#include "SurfaceRegistry.h"

#include "../context/FramePump.h"
#include "Surface.h"

#include <algorithm>

namespace zarvex::zx3D {

SurfaceRegistry& SurfaceRegistry::Get()
{
    // Never destroyed: frame buffers of static storage duration may outlive any other order.
    static SurfaceRegistry& registry = *new SurfaceRegistry;
    return registry;
}

void SurfaceRegistry::BeginRun(bool hasDisplay)
{
    m_hasDisplay = hasDisplay;
}

void SurfaceRegistry::EndRun()
{
    while (!m_withObject.empty())
        m_withObject.back()->DestroyObject();
    m_orphans.clear();
}

bool SurfaceRegistry::ClaimWindow(Surface const& surface)
{
    auto const holder = std::ranges::find(m_withObject, surface.GetNativeWindow(), &Surface::GetNativeWindow);
    if (holder != m_withObject.end())
        (*holder)->Destroy();
    return !m_hasDisplay || m_windows.Watch(surface.GetNativeWindow());
}

bool SurfaceRegistry::IsWindowAlive(Surface const& surface)
{
    return !m_hasDisplay || m_windows.IsAlive(surface.GetNativeWindow());
}

void SurfaceRegistry::Add(Surface& surface)
{
    m_withObject.push_back(&surface);
}

void SurfaceRegistry::Remove(Surface& surface)
{
    std::erase(m_withObject, &surface);
    if (m_hasDisplay && surface.IsAttached())
        m_windows.Unwatch(surface.GetNativeWindow());
}

void SurfaceRegistry::Adopt(std::unique_ptr<Surface> surface)
{
    // The native window may die next: let bgfx show now what was recorded for it.
    if (surface->IsAttached())
        FinishPresentation();
    m_orphans.push_back(std::move(surface));
}

void SurfaceRegistry::FreeDeadOrphans()
{
    std::erase_if(m_orphans, [this](std::unique_ptr<Surface> const& orphan) {
        if (orphan->HasObject() && orphan->IsAttached() && !IsWindowAlive(*orphan))
            orphan->DestroyObject();
        return !orphan->HasObject();
    });
}

} // namespace zarvex::zx3D
