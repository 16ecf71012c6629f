// All surfaces that have a bgfx object.
#pragma once

#include <zx3D/ContextListener.h>
#include <zx3D/FrameBuffer.h>

#include <bgfx/bgfx.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace zarvex::zx3D {

class Surface;

/// Knows every surface that bgfx holds an object for, so that none is left when the context goes, and takes
/// over those that nobody refers to any more. Knows the views that were bound to them, too: bgfx would go on
/// drawing into a frame buffer that is gone.
class SurfaceRegistry final : private ContextListener {
public:
    static SurfaceRegistry& Get();

    void Add(Surface& surface);
    void Remove(Surface& surface);

    /// Has a view draw into a frame buffer of bgfx's, which may be invalid and has these options.
    void BindView(bgfx::ViewId view, bgfx::FrameBufferHandle handle, FrameBufferOptions const& options);

    /// The view in which a surface's samples are resolved in the frame that is being recorded. No other
    /// surface has it in this frame.
    bgfx::ViewId TakeResolveView(Surface const& surface);

    /// One of those views that no surface has in this frame so far.
    bgfx::ViewId FindFreeResolveView();

    /// Calls what submits frames while one is recorded. What is recorded for that one's end, the resolving of
    /// its surfaces, is recorded again.
    void InterruptFrame(std::function<void()> const& submitFrames);

    /// Has the views draw into the back buffer that were last bound to this frame buffer.
    void UnbindViews(bgfx::FrameBufferHandle handle);

    /// Takes over a surface that no frame buffer refers to any more. Its object stays until the context goes,
    /// or until its native window is found dead.
    void Adopt(std::unique_ptr<Surface> surface);

    /// Frees the adopted surfaces whose native window died.
    void FreeDeadOrphans();

private:
    SurfaceRegistry() = default;
    ~SurfaceRegistry() = default;

    static void NoteOptions(bgfx::ViewId view, FrameBufferOptions const& options);

    /// Destroys the bgfx objects that are left.
    void OnContextStopping() override;

    void BeginFrameOfResolves();

    std::vector<Surface*> m_withObject;
    std::vector<std::unique_ptr<Surface>> m_orphans;
    std::map<bgfx::ViewId, bgfx::FrameBufferHandle> m_boundViews;
    std::map<Surface const*, bgfx::ViewId> m_resolveViews; ///< of one frame
    std::uint32_t m_resolveFrame = 0;                      ///< its number
};

} // namespace zarvex::zx3D
