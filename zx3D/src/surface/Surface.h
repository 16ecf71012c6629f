// The state that the copies of a frame buffer share.
#pragma once

#include <zx3D/FrameBuffer.h>
#include <zx3D/Message.h>
#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <cstdint>
#include <memory>

namespace zarvex::zx3D {

class NativeWindows;

/// One surface and the bgfx frame buffer that stands for it, while there is one.
class Surface {
public:
    /// A surface for the copies of a frame buffer. When the last of them goes while the bgfx object exists,
    /// the registry takes the surface over.
    static std::shared_ptr<Surface> Create(void* nativeWindow, bgfx::TextureFormat::Enum colorFormat,
                                           FrameBufferOptions const& options);

    Surface(Surface const&) = delete;
    Surface& operator=(Surface const&) = delete;

    std::uint16_t GetWidth() const { return m_requested.width; }
    std::uint16_t GetHeight() const { return m_requested.height; }
    void* GetNativeWindow() const { return m_nativeWindow; }
    bool IsSized() const { return m_sized; }
    FrameBufferOptions const& GetOptions() const { return m_options; }
    std::uint32_t GetSampleCount() const { return HasObject() ? m_possible.sampleCount : 1; }
    bgfx::FrameBufferHandle GetHandle() const { return m_handle.Get(); }
    bool HasObject() const { return static_cast<bool>(m_handle); }

    void RequestResize(std::uint16_t width, std::uint16_t height);
    void SetOptions(FrameBufferOptions const& options);
    void SubmitOnDemand();
    void BindToView(bgfx::ViewId view) const;
    void Destroy();
    void DestroyKeepingPicture();

    /// Records the way of the samples to where they are shown, for the end of the frame. The surface must
    /// have several.
    void RecordResolve() const;

    /// Gives the bgfx object up without waiting for bgfx to let go of it. There must be one.
    void DestroyObject();

    /// Takes what bgfx draws into out of the native window, which may then die.
    void LeaveWindow();

    /// False when the surface has a native window that was destroyed.
    bool IsWindowAlive() const;

private:
    struct Size {
        std::uint16_t width = 0;
        std::uint16_t height = 0;
        friend bool operator==(Size const&, Size const&) = default;
    };

    Surface(void* nativeWindow, bgfx::TextureFormat::Enum colorFormat, FrameBufferOptions const& options);

    bool IsAttached() const { return m_nativeWindow != nullptr; }
    bool IsCollapsed() const { return m_requested.width == 0 || m_requested.height == 0; }
    bool IsUpToDate() const;
    bool CanBeInSight() const { return !m_leftWindow && IsWindowAlive(); }
    bool IsWithinLimits();
    void DestroyAnd(void (NativeWindows::*letChildGo)(void* child));
    void Renew();
    void Create();
    void CreateAfterFrame();
    void CreateMultisampled();
    void ClearOnce(bgfx::FrameBufferHandle samples) const;
    void LimitDepthFormat();
    void LimitSampleCount();
    void Lower(std::uint32_t sampleCount, char const* reason);
    Owned<bgfx::FrameBufferHandle> CreateOnWindow(bgfx::TextureFormat::Enum depthFormat);
    Owned<bgfx::FrameBufferHandle> CreateOnTextures() const;

    void* m_nativeWindow;
    bgfx::TextureFormat::Enum m_colorFormat;
    FrameBufferOptions m_options;
    bool m_leftWindow = false; ///< the native window is about to go: nothing may be created in it again
    bool m_sized = false;
    Size m_requested;
    OncePerCause m_notCreated;
    OncePerCause m_windowGone;
    OncePerCause m_fewerSamples;
    OncePerCause m_otherDepth;

    // What belongs to the bgfx object, while there is one:
    Owned<bgfx::FrameBufferHandle> m_handle; ///< what is drawn into
    Size m_created;
    FrameBufferOptions m_createdFor; ///< the options that were asked for
    FrameBufferOptions m_possible;   ///< those that it has

    // With several samples:
    Owned<bgfx::FrameBufferHandle> m_resolved;    ///< what they are resolved into, or by turning to it
    Owned<bgfx::UniformHandle> m_resolvedSampler; ///< of the program that does it, on a window

    void* m_child = nullptr; ///< window of ours inside the native window that bgfx draws into
    bool m_inSight = true;   ///< false: the child is not in the native window, which was dead or left
};

} // namespace zarvex::zx3D
