// All surfaces that have a bgfx object.
#pragma once

#include "NativeWindowWatch.h"

#include <memory>
#include <vector>

namespace zarvex::zx3D {

class Surface;

/// Knows every surface that bgfx holds an object for, so that a native window never has two, none is
/// presented to after its window died, and none is left when the context goes.
class SurfaceRegistry {
public:
    static SurfaceRegistry& Get();

    /// The context started. Without a display native windows are mere numbers, and all of them count as alive.
    void BeginRun(bool hasDisplay);

    /// The context is about to stop: destroys the bgfx objects that are left.
    void EndRun();

    /// A surface is about to get an object on its native window: watches the window, and takes the object
    /// of any other surface on it away. False when the window does not exist.
    bool ClaimWindow(Surface const& surface);

    /// True while the native window of an object exists.
    bool IsWindowAlive(Surface const& surface);

    void Add(Surface& surface);
    void Remove(Surface& surface);

    /// Takes over a surface that no frame buffer refers to any more. Its object stays until the context
    /// goes, or until its native window is found dead.
    void Adopt(std::unique_ptr<Surface> surface);

    /// Frees the adopted surfaces whose native window died.
    void FreeDeadOrphans();

private:
    SurfaceRegistry() = default;
    ~SurfaceRegistry() = default;

    bool m_hasDisplay = false;
    NativeWindowWatch m_windows;
    std::vector<Surface*> m_withObject;
    std::vector<std::unique_ptr<Surface>> m_orphans;
};

} // namespace zarvex::zx3D
