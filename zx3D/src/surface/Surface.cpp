// Creating, re-creating and destroying the bgfx object of a surface.
#include "Surface.h"

#include "../context/FramePump.h"
#include "../context/RunningContext.h"
#include "../message/Say.h"
#include "SurfaceRegistry.h"

#include <algorithm>
#include <utility>

namespace zarvex::zx3D {

namespace {

/// The windows of the running context; null where there are none. Native handles are mere numbers then,
/// passed to bgfx as they are.
NativeWindows* GetNativeWindows() {
    RunningContext const* const running = RunningContext::Get();
    return running != nullptr ? running->GetNativeWindows() : nullptr;
}

} // namespace

std::shared_ptr<Surface> Surface::Create(void* nativeWindow, bgfx::TextureFormat::Enum colorFormat,
                                         bgfx::TextureFormat::Enum depthFormat) {
    auto const release = [](Surface* last) {
        std::unique_ptr<Surface> surface(last);
        if (surface->HasObject())
            SurfaceRegistry::Get().Adopt(std::move(surface));
    };
    return {new Surface(nativeWindow, colorFormat, depthFormat), release};
}

Surface::Surface(void* nativeWindow, bgfx::TextureFormat::Enum colorFormat,
                 bgfx::TextureFormat::Enum depthFormat)
    : m_nativeWindow(nativeWindow),
      m_colorFormat(colorFormat),
      m_depthFormat(depthFormat) {}

void Surface::RequestResize(std::uint16_t width, std::uint16_t height) {
    m_requested = {width, height};
    m_sized = true;
}

void Surface::SubmitOnDemand() {
    if (!Context::IsInitialized())
        return;
    SurfaceRegistry::Get().FreeDeadOrphans();
    if (IsCollapsed() || IsUpToDate())
        return;
    if (!IsWithinLimits()) {
        Destroy();
        return;
    }
    DestroyKeepingPicture();
    Create();
    if (!HasObject()) {
        // bgfx gives the handles of what was destroyed back with a frame only.
        FinishRecordedFrames();
        Create();
    }
    if (!HasObject()) {
        m_notCreated.Raise([this] {
            Say(MessageLevel::Warning, "surface.not-created",
                "a frame buffer of %u x %u pixels cannot be created: bgfx has no more, or not in these "
                "formats",
                m_requested.width, m_requested.height);
        });
        return;
    }
    m_notCreated.Clear();
    m_created = m_requested;
    SurfaceRegistry::Get().Add(*this);
}

void Surface::BindToView(bgfx::ViewId view) const {
    SurfaceRegistry::Get().BindView(view, GetHandle());
}

void Surface::Destroy() {
    DestroyAnd(&NativeWindows::DestroyChild);
}

void Surface::DestroyKeepingPicture() {
    DestroyAnd(&NativeWindows::RetireChild);
}

void Surface::DestroyAnd(void (NativeWindows::*letChildGo)(void*)) {
    if (!HasObject())
        return;
    bgfx::FrameBufferHandle const handle = GetHandle();
    DestroyObject();
    if (IsAttached()) {
        FinishRecordedFrames(); // into it, what was recorded for it
        if (NativeWindows* const windows = GetNativeWindows())
            (windows->*letChildGo)(m_child);
    }
    SurfaceRegistry::Get().UnbindViews(handle);
}

void Surface::DestroyObject() {
    SurfaceRegistry::Get().Remove(*this);
    m_handle.Reset();
}

void Surface::LeaveWindow() {
    if (!IsAttached())
        return;
    m_leftWindow = true;
    m_inSight = false;
    NativeWindows* const windows = GetNativeWindows();
    if (HasObject() && windows != nullptr)
        windows->MoveOutOfSight(m_child);
}

bool Surface::IsWindowAlive() const {
    NativeWindows* const windows = GetNativeWindows();
    return !IsAttached() || windows == nullptr || windows->IsAlive(m_nativeWindow);
}

bool Surface::IsUpToDate() const {
    // A surface whose window died is created once more, out of sight, so that drawing goes on harmlessly.
    return HasObject() && m_created == m_requested && m_inSight == CanBeInSight();
}

bool Surface::IsWithinLimits() {
    auto const [width, height] = m_requested;
    std::uint32_t const limit = bgfx::getCaps()->limits.maxTextureSize;
    if (std::max(width, height) <= limit)
        return true;
    m_notCreated.Raise([&] {
        Say(MessageLevel::Warning, "surface.too-large",
            "a frame buffer of %u x %u pixels is beyond this GPU's limit of %u", width, height, limit);
    });
    return false;
}

void Surface::Create() {
    m_handle = IsAttached() ? CreateOnWindow() : CreateOnTextures();
}

Owned<bgfx::FrameBufferHandle> Surface::CreateOnWindow() {
    NativeWindows* const windows = GetNativeWindows();
    auto const [width, height] = m_requested;
    void* const parent = m_leftWindow ? nullptr : m_nativeWindow;
    m_child = m_nativeWindow;
    if (windows != nullptr)
        m_child = windows->CreateChild(parent, width, height, RunningContext::Get()->GetNextFrame());
    m_inSight = CanBeInSight();
    if (m_inSight) {
        m_windowGone.Clear();
    } else {
        m_windowGone.Raise([this] {
            Say(MessageLevel::Warning, "surface.window-gone",
                "native window %p does not exist; what is drawn for it is not shown", m_nativeWindow);
        });
    }
    Owned handle(bgfx::createFrameBuffer(m_child, width, height, m_colorFormat, m_depthFormat));
    if (!handle && windows != nullptr)
        windows->DestroyChild(m_child);
    return handle;
}

Owned<bgfx::FrameBufferHandle> Surface::CreateOnTextures() const {
    auto const [width, height] = m_requested;
    bool const hasDepth = m_depthFormat != bgfx::TextureFormat::Count;
    constexpr std::uint64_t colorFlags = BGFX_TEXTURE_RT | BGFX_SAMPLER_U_CLAMP | BGFX_SAMPLER_V_CLAMP;
    Owned color(bgfx::createTexture2D(width, height, false, 1, m_colorFormat, colorFlags));
    Owned<bgfx::TextureHandle> depth;
    if (hasDepth)
        depth =
            Owned(bgfx::createTexture2D(width, height, false, 1, m_depthFormat, BGFX_TEXTURE_RT_WRITE_ONLY));
    if (!color || (hasDepth && !depth))
        return {};
    constexpr bool ownsTextures = true;
    bgfx::TextureHandle const textures[] = {color.Get(), depth.Get()};
    Owned handle(bgfx::createFrameBuffer(hasDepth ? 2 : 1, textures, ownsTextures));
    // bgfx has the textures now: where it creates no frame buffer, it has destroyed them.
    static_cast<void>(color.Release());
    static_cast<void>(depth.Release());
    return handle;
}

} // namespace zarvex::zx3D
