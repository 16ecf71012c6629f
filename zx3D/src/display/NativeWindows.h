// The windows that bgfx draws into, inside those that the application gives.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

struct xcb_connection_t;

namespace zarvex::zx3D {

/// Creates and watches X11 windows, through a connection of its own.
///
/// bgfx is never given the application's window itself but a child of exactly the frame buffer's size,
/// because
/// - Vulkan sizes its images by the window. The application's may have another size at any moment (the user
///   drags its edge, a fractional scale factor rounds), and bgfx would then draw beyond the images;
/// - the application's window may die at any moment, and takes its surface with it; a child can be moved
///   away;
/// - a window can have one surface at a time, and a new child has none.
///
/// A new child stays out of sight until its first picture has been drawn: bgfx takes hold of a window on its
/// render thread, later than it is told, and it would take the process down if the window died meanwhile, as
/// a child of the application's may.
///
/// To the application a child is invisible: input passes through it, and where it is exposed its parent is
/// told, unless another child of the parent waits for its first picture, which will cover it.
class NativeWindows {
public:
    /// Connects to the display of the environment; null when there is none.
    static std::unique_ptr<NativeWindows> Connect();
    ~NativeWindows();

    NativeWindows(NativeWindows const&) = delete;
    NativeWindows& operator=(NativeWindows const&) = delete;

    /// True when the handle is a window of the display.
    bool Exists(void* window);

    /// Creates children with this visual from now on, which the display must have; 0: with their parent's.
    void UseVisual(std::uint32_t visual);

    /// Creates a child of the given size in pixels, which appears at the parent's top-left once `ShowDrawn`
    /// is told of the given frame. When the parent does not exist, the child stays out of sight.
    void* CreateChild(void* parent, std::uint16_t width, std::uint16_t height, std::uint32_t firstFrame);

    /// A frame was drawn, and is not yet presented: shows the children that waited for it. From any thread.
    void ShowDrawn(std::uint32_t frame);

    /// Takes a child out of its parent, so that it stays when the parent dies. When the call returns, the
    /// display server has done so.
    void MoveOutOfSight(void* child);

    void DestroyChild(void* child);

    /// Destroys a child once another one of its parent is shown, or goes unshown, or the parent dies. The
    /// parent, which would be exposed in between, is told of nothing, and what is on the screen stays there.
    void RetireChild(void* child);

    /// True while a window that was a parent once has not been destroyed. Does not wait for the display
    /// server.
    bool IsAlive(void* parent);

private:
    using Window = std::uint32_t;

    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };

    explicit NativeWindows(xcb_connection_t* connection);

    /// A child that has no picture yet.
    struct Newcomer {
        Window child;
        Window parent;
        std::uint32_t firstFrame;
    };

    bool CreateNowhere(int screenNumber);
    void Show(Newcomer const& newcomer);

    /// With the mutex locked.
    bool IsNewcomerIn(Window parent) const;

    /// With the mutex locked.
    void DestroyRetired(Window parent);

    /// Neither waiting to be shown nor shown any more.
    void Forget(Window child);
    bool WatchParent(Window parent);
    void LetInputThrough(Window child);

    /// Below the windows that the application has in the parent, above those that we have there; notes the
    /// parent. With the mutex locked.
    void PutBelowOthers(Window child, Window parent);
    void HandleEvents();
    void ForwardExposure(void const* exposeEvent);

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    std::uint32_t m_root = 0;
    Window m_nowhere = 0;       ///< never shown; parent of what is out of sight
    std::uint32_t m_visual = 0; ///< of children, with its depth and colour map; 0: their parent's
    std::uint8_t m_depth = 0;
    std::uint32_t m_colormap = 0;
    std::mutex m_mutex; ///< guards the four below
    std::vector<Newcomer> m_newcomers;
    std::set<Window> m_aliveParents;
    std::map<Window, Window> m_parentOfChild;
    std::vector<Window> m_retired; ///< of those
    std::thread m_eventThread;
};

} // namespace zarvex::zx3D
