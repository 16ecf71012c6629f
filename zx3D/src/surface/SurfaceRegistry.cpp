// Bookkeeping of surfaces.
#include "SurfaceRegistry.h"

#include "../context/FramePump.h"
#include "../context/RunningContext.h"
#include "ReservedViews.h"
#include "Surface.h"

#include <algorithm>
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
    FrameBuffer::s_multisampledViews.reset();
    FrameBuffer::s_alphaViews.reset();
    m_resolveViews.clear();
}

void SurfaceRegistry::Add(Surface& surface) {
    m_withObject.push_back(&surface);
}

void SurfaceRegistry::Remove(Surface& surface) {
    std::erase(m_withObject, &surface);
    m_resolveViews.erase(&surface);
}

void SurfaceRegistry::BeginFrameOfResolves() {
    // A frame that the application submits by itself does not show: surfaces keep their views then, which are
    // different ones all the same.
    std::uint32_t const frame = RunningContext::Get()->GetNextFrame();
    if (std::exchange(m_resolveFrame, frame) != frame)
        m_resolveViews.clear();
}

void SurfaceRegistry::InterruptFrame(std::function<void()> const& submitFrames) {
    BeginFrameOfResolves();
    submitFrames();
    m_resolveFrame = RunningContext::Get()->GetNextFrame();
    for (auto const& [surface, view] : m_resolveViews)
        surface->RecordResolve();
}

bgfx::ViewId SurfaceRegistry::FindFreeResolveView() {
    BeginFrameOfResolves();
    auto const isTaken = [this](bgfx::ViewId view) {
        return view == kCaptureView ||
               std::any_of(m_resolveViews.begin(), m_resolveViews.end(),
                           [view](auto const& taken) { return taken.second == view; });
    };
    bgfx::ViewId view = kLastView;
    while (isTaken(view))
        --view; // there are fewer surfaces than views
    return view;
}

bgfx::ViewId SurfaceRegistry::TakeResolveView(Surface const& surface) {
    BeginFrameOfResolves();
    if (auto const found = m_resolveViews.find(&surface); found != m_resolveViews.end())
        return found->second;
    bgfx::ViewId const view = FindFreeResolveView();
    m_resolveViews.emplace(&surface, view);
    return view;
}

void SurfaceRegistry::BindView(bgfx::ViewId view, bgfx::FrameBufferHandle handle,
                               FrameBufferOptions const& options) {
    bgfx::setViewFrameBuffer(view, handle);
    NoteOptions(view, options);
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
        NoteOptions(view, {});
        return true;
    });
}

void SurfaceRegistry::NoteOptions(bgfx::ViewId view, FrameBufferOptions const& options) {
    if (view >= FrameBuffer::s_multisampledViews.size())
        return;
    FrameBuffer::s_multisampledViews[view] = options.sampleCount > 1;
    FrameBuffer::s_alphaViews[view] = options.blendsAlpha;
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
