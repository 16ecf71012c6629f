// All surfaces that have a bgfx object.
#pragma once

#include <zx3D/ContextListener.h>

#include <bgfx/bgfx.h>

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

    /// Has a view draw into a frame buffer of bgfx's, which may be invalid.
    void BindView(bgfx::ViewId view, bgfx::FrameBufferHandle handle);

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

    /// Destroys the bgfx objects that are left.
    void OnContextStopping() override;

    std::vector<Surface*> m_withObject;
    std::vector<std::unique_ptr<Surface>> m_orphans;
    std::map<bgfx::ViewId, bgfx::FrameBufferHandle> m_boundViews;
};

} // namespace zarvex::zx3D
