// All surfaces that have a bgfx object.
#pragma once

#include <memory>
#include <vector>

namespace zarvex::zx3D {

class NativeWindows;
class Surface;

/// Knows every surface that bgfx holds an object for, so that none is left when the context goes, and takes
/// over those that nobody refers to any more.
class SurfaceRegistry {
public:
    static SurfaceRegistry& Get();

    /// The context started. Without windows (null) native handles are mere numbers, passed to bgfx as they
    /// are.
    void BeginRun(NativeWindows* windows);

    /// The context is about to stop: destroys the bgfx objects that are left.
    void EndRun();

    /// The windows of the running context; null where there are none.
    NativeWindows* GetNativeWindows() const { return m_windows; }

    void Add(Surface& surface);
    void Remove(Surface& surface);

    /// Takes over a surface that no frame buffer refers to any more. Its object stays until the context goes,
    /// or until its native window is found dead.
    void Adopt(std::unique_ptr<Surface> surface);

    /// Frees the adopted surfaces whose native window died.
    void FreeDeadOrphans();

private:
    SurfaceRegistry() = default;
    ~SurfaceRegistry() = default;

    NativeWindows* m_windows = nullptr;
    std::vector<Surface*> m_withObject;
    std::vector<std::unique_ptr<Surface>> m_orphans;
};

} // namespace zarvex::zx3D
