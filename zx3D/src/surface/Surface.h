// The state that the copies of a frame buffer share.
#pragma once

#include <zx3D/Context.h>

#include <bgfx/bgfx.h>

#include <cstdint>
#include <memory>

namespace zarvex::zx3D {

/// One surface and the bgfx frame buffer that stands for it, while there is one.
class Surface {
public:
    /// A surface for the copies of a frame buffer. When the last of them goes while the bgfx object exists,
    /// the registry takes the surface over.
    static std::shared_ptr<Surface> Create(void* nativeWindow, bgfx::TextureFormat::Enum colorFormat,
                                           bgfx::TextureFormat::Enum depthFormat);

    Surface(Surface const&) = delete;
    Surface& operator=(Surface const&) = delete;

    std::uint16_t GetWidth() const { return m_requested.width; }
    std::uint16_t GetHeight() const { return m_requested.height; }
    bool IsSized() const { return m_sized; }
    void* GetNativeWindow() const { return m_nativeWindow; }
    bool IsAttached() const { return m_nativeWindow != nullptr; }
    bgfx::FrameBufferHandle GetHandle() const;
    bool HasObject() const { return bgfx::isValid(GetHandle()); }

    void RequestResize(std::uint16_t width, std::uint16_t height);
    void SubmitOnDemand();
    void Destroy();

    /// Gives the bgfx object up without waiting for bgfx to let go of it. There must be one.
    void DestroyObject();

private:
    struct Size {
        std::uint16_t width = 0;
        std::uint16_t height = 0;
        friend bool operator==(Size const&, Size const&) = default;
    };

    Surface(void* nativeWindow, bgfx::TextureFormat::Enum colorFormat,
            bgfx::TextureFormat::Enum depthFormat);

    bool IsCollapsed() const { return m_requested.width == 0 || m_requested.height == 0; }
    void LetGoOfDeadWindow();
    void Recreate();
    bgfx::FrameBufferHandle CreateOnWindow() const;
    bgfx::FrameBufferHandle CreateOnTextures() const;

    void* m_nativeWindow;
    bgfx::TextureFormat::Enum m_colorFormat;
    bgfx::TextureFormat::Enum m_depthFormat;
    bool m_sized = false;
    Size m_requested;
    Size m_created; ///< size of the bgfx object, while there is one
    bgfx::FrameBufferHandle m_handle = BGFX_INVALID_HANDLE;
    ContextRun m_run; ///< in which `m_handle` was created
};

} // namespace zarvex::zx3D
