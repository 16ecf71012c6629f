// What a view draws into: a native window's surface, or a pair of textures.
#pragma once

#include <zx3D/zx3DExport.h>

#include <bgfx/bgfx.h>

#include <bitset>
#include <cstdint>
#include <memory>

namespace zarvex::zx3D {

class Surface;

/// What a frame buffer is drawn with. A plain value.
struct FrameBufferOptions {
    /// Samples for each pixel: 1, 2, 4, 8 or 16. With more than one, edges are smooth.
    std::uint32_t sampleCount = 1;
    /// `D16`, `D24S8`, `D32F` or another format of bgfx's for depth; `bgfx::TextureFormat::Count` means that
    /// there is no depth, though a window's surface of one sample may have it nonetheless.
    bgfx::TextureFormat::Enum depthFormat = bgfx::TextureFormat::D16;
    /// For pictures that are laid over others: over a ground that was cleared to 0x00000000, what is blended
    /// by its alpha leaves colours that are multiplied by their alpha, and that alpha. Otherwise blending
    /// multiplies the alpha by itself, too, as bgfx has it, and leaves holes in it; the colours are the same.
    /// Draw with the renderer of zx3DQt, or what blends with `BlendedState`.
    bool blendsAlpha = false;

    friend bool operator==(FrameBufferOptions const&, FrameBufferOptions const&) = default; ///< in each
};

/// A bgfx frame buffer for one surface: attached to a native window, or, without one, a colour and a depth
/// texture of its own.
///
/// With more than one sample it is drawn into multisampled textures of its own, and their average goes to
/// where it is shown once in a frame, after everything that is drawn into it: a window's by a triangle in a
/// view of its own, a texture's when bgfx turns to another frame buffer. The last view ids are for that: 255
/// for the first such frame buffer of a frame, for further ones 253 and downwards. Draw into it with
/// `BGFX_STATE_MSAA`, which OpenGL needs.
///
/// A value whose copies share one state: each sees the size that any of them requested, and what happened to
/// the bgfx object. Creation is deferred: `RequestResize` records a size, `SubmitOnDemand` makes the bgfx
/// object follow it.
///
/// Lifetime: the bgfx object goes with `Destroy()`, or with `Context::Shutdown`, never with the destructor:
/// the owner decides. `Destroy()` an attached frame buffer, or let it `LeaveWindow()`, before its native
/// window goes. If a window dies without that, what is drawn for it is shown nowhere, and the bgfx object is
/// freed when that is noticed, at the latest with the context. A frame buffer may outlive the context, and is
/// created anew in the next one.
///
/// Thread: the one that calls bgfx's API.
class ZX3D_EXPORT FrameBuffer {
public:
    /// Records the surface and its formats; creates nothing. A null handle makes an unattached frame buffer.
    /// `colorFormat` and `depthFormat` are what is asked for; a window's surface takes the nearest that the
    /// window system offers. `bgfx::TextureFormat::Count` as the depth format means that there is no depth; a
    /// window's surface may have one nonetheless.
    FrameBuffer(void* nativeWindowHandle, bgfx::TextureFormat::Enum colorFormat,
                bgfx::TextureFormat::Enum depthFormat);

    /// The same with all options.
    FrameBuffer(void* nativeWindowHandle, bgfx::TextureFormat::Enum colorFormat,
                FrameBufferOptions const& options);

    /// The copy shares the state. There are no moves: a moved-from value would have no state, so rvalues are
    /// copied.
    /// @{
    FrameBuffer(FrameBuffer const&);
    FrameBuffer& operator=(FrameBuffer const&);
    /// @}
    ~FrameBuffer();

    /// Pixels; what was last requested. A frame buffer with a width or height of 0 is collapsed: nothing is
    /// rendered to it.
    /// @{
    std::uint16_t GetWidth() const;
    std::uint16_t GetHeight() const;
    /// @}

    /// The native window that it is attached to; null for an unattached one.
    void* GetNativeWindow() const;

    /// True once a size was requested.
    bool IsSized() const;

    /// The options that were asked for.
    FrameBufferOptions GetOptions() const;

    /// Asks for other options, for all copies; the bgfx object follows at the next `SubmitOnDemand`, as it
    /// follows a size. What the GPU does not have, or has not enough memory or textures for, becomes the
    /// nearest that it has: fewer samples, another depth; a warning says so.
    void SetOptions(FrameBufferOptions const& options);

    /// Samples for each pixel that the bgfx object has: what was asked for, or less. 1 while there is none.
    std::uint32_t GetSampleCount() const;

    /// The bgfx object that views draw into, or the invalid handle while there is none. For an unattached
    /// frame buffer, or one of several samples, `bgfx::getTexture(handle, 0)` is its colour texture.
    bgfx::FrameBufferHandle GetHandle() const;

    /// Records a new size in pixels; the bgfx object follows at the next `SubmitOnDemand`. Any number of
    /// requests between two frames costs one re-creation, and a request of the present size costs none.
    void RequestResize(std::uint16_t width, std::uint16_t height);

    /// Creates the bgfx object if there is none, or re-creates it if its size or its options are not the
    /// requested ones, and records the resolving of its samples for the end of the frame. Does nothing while
    /// collapsed or while the context is not initialised. Where bgfx cannot create it (a side beyond the
    /// GPU's limit, no handle left, a format that it does not have) there is none afterwards, and a warning
    /// says why; handles that were given back are first fetched, by frames of their own. Re-creating an
    /// attached frame buffer, or one of several samples, submits what was recorded so far, as `Destroy` does,
    /// and so does freeing the surfaces of windows that died: call it before recording.
    void SubmitOnDemand();

    /// Calls `bgfx::setViewFrameBuffer` with the bgfx object, and remembers it: when that object is
    /// destroyed, the views that were last bound to it this way draw into the back buffer, where bgfx would
    /// go on drawing into what is gone.
    void BindToView(bgfx::ViewId view) const;

    /// Whether the view was last bound, this way, to a bgfx object of several samples.
    static bool IsMultisampled(bgfx::ViewId view) { return IsIn(s_multisampledViews, view); }

    /// Whether the view was last bound, this way, to a bgfx object that blends alpha.
    static bool BlendsAlpha(bgfx::ViewId view) { return IsIn(s_alphaViews, view); }

    /// The state to draw with in the view: where that blends alpha, `BGFX_STATE_BLEND_ALPHA` becomes the
    /// same blending of colours with another one of alpha. What else there is in `state` stays.
    static std::uint64_t BlendedState(bgfx::ViewId view, std::uint64_t state) {
        constexpr std::uint64_t mask = BGFX_STATE_BLEND_MASK | BGFX_STATE_BLEND_EQUATION_MASK;
        constexpr std::uint64_t withAlpha =
            BGFX_STATE_BLEND_FUNC_SEPARATE(BGFX_STATE_BLEND_SRC_ALPHA, BGFX_STATE_BLEND_INV_SRC_ALPHA,
                                           BGFX_STATE_BLEND_ONE, BGFX_STATE_BLEND_INV_SRC_ALPHA);
        bool const isBlended = (state & mask) == BGFX_STATE_BLEND_ALPHA;
        return isBlended && BlendsAlpha(view) ? (state & ~mask) | withAlpha : state;
    }

    /// The native window is about to go, and drawing may go on: what is drawn from here on is shown nowhere,
    /// also by a bgfx object that is created later. Does nothing for an unattached frame buffer. Quicker than
    /// `Destroy`: it submits no frame.
    void LeaveWindow();

    /// Destroys the bgfx object, for all copies. For an attached frame buffer it returns when bgfx and its
    /// render thread have let go of the native window, having submitted what was recorded so far.
    void Destroy();

    /// As `Destroy`, but the native window goes on showing its last picture until the next one of a frame
    /// buffer on it, or until it goes: for a time without the surface that nobody shall see.
    void DestroyKeepingPicture();

private:
    using Views = std::bitset<1024>; ///< bgfx has no more

    friend class SurfaceRegistry; // knows which views are bound to what

    static bool IsIn(Views const& views, bgfx::ViewId view) { return view < views.size() && views[view]; }

    // Here, since every draw call asks.
    static Views s_multisampledViews;
    static Views s_alphaViews;

    std::shared_ptr<Surface> m_surface;
};

} // namespace zarvex::zx3D
