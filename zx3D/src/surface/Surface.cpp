// Creating, re-creating and destroying the bgfx object of a surface.
#include "Surface.h"

#include "../context/FramePump.h"
#include "../message/Say.h"
#include "NativeWindows.h"
#include "SurfaceRegistry.h"

#include <algorithm>
#include <utility>

namespace zarvex::zx3D {

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

bgfx::FrameBufferHandle Surface::GetHandle() const {
    return m_run.IsCurrent() ? m_handle : bgfx::FrameBufferHandle(BGFX_INVALID_HANDLE);
}

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
    Destroy();
    m_handle = IsAttached() ? CreateOnWindow() : CreateOnTextures();
    if (!bgfx::isValid(m_handle)) // too large, or bgfx holds as many as it can
        return;
    m_run = ContextRun::Current();
    m_created = m_requested;
    SurfaceRegistry::Get().Add(*this);
}

void Surface::Destroy() {
    if (!HasObject())
        return;
    DestroyObject();
    if (!IsAttached())
        return;
    FinishRecordedFrames();
    if (NativeWindows* const windows = SurfaceRegistry::Get().GetNativeWindows())
        windows->DestroyChild(m_child);
}

void Surface::DestroyObject() {
    SurfaceRegistry::Get().Remove(*this);
    bgfx::destroy(std::exchange(m_handle, BGFX_INVALID_HANDLE));
}

void Surface::LeaveWindow() {
    if (!IsAttached())
        return;
    m_leftWindow = true;
    m_inSight = false;
    NativeWindows* const windows = SurfaceRegistry::Get().GetNativeWindows();
    if (HasObject() && windows != nullptr)
        windows->MoveOutOfSight(m_child);
}

bool Surface::IsWindowAlive() const {
    NativeWindows* const windows = SurfaceRegistry::Get().GetNativeWindows();
    return !IsAttached() || windows == nullptr || windows->IsAlive(m_nativeWindow);
}

bool Surface::IsUpToDate() const {
    // A surface whose window died is created once more, out of sight, so that drawing goes on harmlessly.
    return HasObject() && m_created == m_requested && m_inSight == CanBeInSight();
}

bgfx::FrameBufferHandle Surface::CreateOnWindow() {
    NativeWindows* const windows = SurfaceRegistry::Get().GetNativeWindows();
    auto const [width, height] = m_requested;
    void* const parent = m_leftWindow ? nullptr : m_nativeWindow;
    m_child = windows != nullptr ? windows->CreateChild(parent, width, height) : m_nativeWindow;
    m_inSight = CanBeInSight();
    if (!m_inSight) {
        Say(MessageLevel::Warning, "surface.window-gone",
            "native window %p does not exist; what is drawn for it is not shown", m_nativeWindow);
    }
    bgfx::FrameBufferHandle const handle =
        bgfx::createFrameBuffer(m_child, width, height, m_colorFormat, m_depthFormat);
    if (!bgfx::isValid(handle) && windows != nullptr)
        windows->DestroyChild(m_child);
    return handle;
}

bgfx::FrameBufferHandle Surface::CreateOnTextures() const {
    auto const [width, height] = m_requested;
    if (std::max(width, height) > bgfx::getCaps()->limits.maxTextureSize) {
        Say(MessageLevel::Warning, "surface.too-large",
            "a frame buffer of %u x %u pixels is beyond this GPU's textures (at most %u)", width, height,
            bgfx::getCaps()->limits.maxTextureSize);
        return BGFX_INVALID_HANDLE;
    }
    constexpr std::uint64_t colorFlags = BGFX_TEXTURE_RT | BGFX_SAMPLER_U_CLAMP | BGFX_SAMPLER_V_CLAMP;
    bgfx::TextureHandle const textures[] = {
        bgfx::createTexture2D(width, height, false, 1, m_colorFormat, colorFlags),
        bgfx::createTexture2D(width, height, false, 1, m_depthFormat, BGFX_TEXTURE_RT_WRITE_ONLY),
    };
    constexpr bool ownsTextures = true;
    bgfx::FrameBufferHandle const handle = bgfx::createFrameBuffer(2, textures, ownsTextures);
    if (!bgfx::isValid(handle)) {
        for (bgfx::TextureHandle const texture : textures) {
            if (bgfx::isValid(texture))
                bgfx::destroy(texture);
        }
    }
    return handle;
}

} // namespace zarvex::zx3D
