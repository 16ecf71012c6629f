// X protocol side of the windows.
#include "NativeWindows.h"

#include "../message/Say.h"

#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>

namespace zarvex::zx3D {

namespace {

template<typename T>
using Reply = std::unique_ptr<T, decltype([](T* reply) { std::free(reply); })>;

std::uint32_t ToId(void* window) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window));
}

void* ToHandle(std::uint32_t window) {
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(window));
}

/// Waits for the display server; true when it carried the request out.
bool Succeeds(xcb_connection_t* connection, xcb_void_cookie_t request) {
    Reply<xcb_generic_error_t> const error(xcb_request_check(connection, request));
    return !error && xcb_connection_has_error(connection) == 0;
}

/// For a connection that broke. Xlib and toolkits end the process then, by `exit`, and may do so on any
/// thread: exit handlers of drivers and libraries then wait for each other, or for the render thread, for
/// ever.
void EndProcessWithoutDisplay() {
    std::thread([] {
        std::this_thread::sleep_for(std::chrono::seconds(2)); // for those who end it in order
        std::_Exit(EXIT_FAILURE);
    }).detach();
    Say(MessageLevel::Critical, "display.lost", "the connection to the X display broke; the process ends");
}

} // namespace

std::unique_ptr<NativeWindows> NativeWindows::Connect() {
    int screen = 0;
    std::unique_ptr<NativeWindows> windows(new NativeWindows(xcb_connect(nullptr, &screen)));
    if (xcb_connection_has_error(windows->m_connection.get()) != 0 || !windows->CreateNowhere(screen))
        return nullptr;
    windows->m_eventThread = std::thread(&NativeWindows::HandleEvents, windows.get());
    return windows;
}

NativeWindows::NativeWindows(xcb_connection_t* connection) : m_connection(connection) {}

NativeWindows::~NativeWindows() {
    if (!m_eventThread.joinable())
        return;
    // Its destruction ends the event thread; the server destroys the other windows with the connection.
    xcb_destroy_window(m_connection.get(), m_nowhere);
    xcb_flush(m_connection.get());
    m_eventThread.join();
}

bool NativeWindows::Exists(void* window) {
    auto const request = xcb_get_geometry(m_connection.get(), ToId(window));
    return Reply<xcb_get_geometry_reply_t>(xcb_get_geometry_reply(m_connection.get(), request, nullptr)) !=
           nullptr;
}

void NativeWindows::UseVisual(std::uint32_t visual) {
    m_visual = 0;
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())); screen.rem != 0;
         xcb_screen_next(&screen)) {
        if (screen.data->root != m_root)
            continue;
        for (auto depth = xcb_screen_allowed_depths_iterator(screen.data); depth.rem != 0;
             xcb_depth_next(&depth)) {
            for (auto type = xcb_depth_visuals_iterator(depth.data); type.rem != 0;
                 xcb_visualtype_next(&type)) {
                if (type.data->visual_id == visual) {
                    m_visual = visual;
                    m_depth = depth.data->depth;
                }
            }
        }
    }
    if (m_visual == 0)
        return;
    m_colormap = xcb_generate_id(m_connection.get());
    xcb_create_colormap(m_connection.get(), XCB_COLORMAP_ALLOC_NONE, m_colormap, m_root, m_visual);
}

void* NativeWindows::CreateChild(void* parent, std::uint16_t width, std::uint16_t height,
                                 std::uint32_t firstFrame) {
    Window const child = xcb_generate_id(m_connection.get());
    // Without a background the server leaves on the screen what is there until bgfx presents. A visual other
    // than the parent's needs a border's colour and a colour map.
    std::uint32_t const attributes[] = {XCB_BACK_PIXMAP_NONE, 0, m_colormap};
    std::uint32_t const colormapMask = m_visual != 0 ? XCB_CW_COLORMAP : 0;
    std::uint8_t const depth = m_visual != 0 ? m_depth : XCB_COPY_FROM_PARENT;
    auto const request = xcb_create_window_checked(
        m_connection.get(), depth, child, m_nowhere, 0, 0, width, height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        m_visual, XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | colormapMask, attributes);
    LetInputThrough(child);
    // Waits for the server, since bgfx uses the window on another connection.
    Succeeds(m_connection.get(), request);
    if (WatchParent(ToId(parent))) {
        std::lock_guard const lock(m_mutex);
        m_newcomers.push_back({child, ToId(parent), firstFrame});
    }
    return ToHandle(child);
}

void NativeWindows::ShowDrawn(std::uint32_t frame) {
    std::lock_guard const lock(m_mutex);
    std::erase_if(m_newcomers, [&](Newcomer const& newcomer) {
        bool const isDrawn = static_cast<std::int32_t>(frame - newcomer.firstFrame) >= 0; // may wrap around
        if (isDrawn)
            Show(newcomer);
        return isDrawn;
    });
}

void NativeWindows::Show(Newcomer const& newcomer) {
    auto const [child, parent, firstFrame] = newcomer;
    auto const request = xcb_reparent_window_checked(m_connection.get(), child, parent, 0, 0);
    if (!Succeeds(m_connection.get(), request)) {
        DestroyRetired(parent); // which died, and they with it
        return;
    }
    PutBelowOthers(child, parent);
    xcb_map_window(m_connection.get(), child);
    DestroyRetired(parent);
    // From now on: that the parent's contents are covered is no news, since a picture follows.
    constexpr std::uint32_t events = XCB_EVENT_MASK_EXPOSURE;
    auto const last =
        xcb_change_window_attributes_checked(m_connection.get(), child, XCB_CW_EVENT_MASK, &events);
    Succeeds(m_connection.get(), last); // waits, since bgfx presents on another connection
}

bool NativeWindows::IsNewcomerIn(Window parent) const {
    return std::ranges::any_of(m_newcomers,
                               [&](Newcomer const& newcomer) { return newcomer.parent == parent; });
}

void NativeWindows::MoveOutOfSight(void* child) {
    Forget(ToId(child));
    auto const request = xcb_reparent_window_checked(m_connection.get(), ToId(child), m_nowhere, 0, 0);
    Succeeds(m_connection.get(), request); // it fails when the child died with its parent
}

void NativeWindows::DestroyChild(void* child) {
    Forget(ToId(child));
    xcb_destroy_window(m_connection.get(),
                       ToId(child)); // an error, if it died with its parent, is left unread
    xcb_flush(m_connection.get());
}

void NativeWindows::RetireChild(void* child) {
    {
        std::lock_guard const lock(m_mutex);
        if (m_parentOfChild.contains(ToId(child))) {
            m_retired.push_back(ToId(child));
            return;
        }
    }
    DestroyChild(child);
}

void NativeWindows::DestroyRetired(Window parent) {
    std::erase_if(m_retired, [&](Window child) {
        auto const entry = m_parentOfChild.find(child);
        if (entry->second != parent)
            return false;
        m_parentOfChild.erase(entry);
        xcb_destroy_window(m_connection.get(), child);
        return true;
    });
}

void NativeWindows::Forget(Window child) {
    std::lock_guard const lock(m_mutex);
    std::erase_if(m_newcomers, [&](Newcomer const& newcomer) {
        bool const isIt = newcomer.child == child;
        if (isIt)
            DestroyRetired(newcomer.parent);
        return isIt;
    });
    m_parentOfChild.erase(child);
}

bool NativeWindows::IsAlive(void* parent) {
    std::lock_guard const lock(m_mutex);
    return m_aliveParents.contains(ToId(parent));
}

bool NativeWindows::CreateNowhere(int screenNumber) {
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get()));
    for (int i = 0; i < screenNumber; ++i)
        xcb_screen_next(&screen);
    m_root = screen.data->root;
    m_nowhere = xcb_generate_id(m_connection.get());
    constexpr std::uint32_t attributes[] = {true, XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    auto const request =
        xcb_create_window_checked(m_connection.get(), XCB_COPY_FROM_PARENT, m_nowhere, m_root, 0, 0, 1, 1, 0,
                                  XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                                  XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, attributes);
    return Succeeds(m_connection.get(), request);
}

bool NativeWindows::WatchParent(Window parent) {
    constexpr std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    {
        // First, so that a destruction that comes with the answer already finds it.
        std::lock_guard const lock(m_mutex);
        m_aliveParents.insert(parent);
    }
    auto const request =
        xcb_change_window_attributes_checked(m_connection.get(), parent, XCB_CW_EVENT_MASK, &events);
    if (Succeeds(m_connection.get(), request))
        return true;
    std::lock_guard const lock(m_mutex);
    m_aliveParents.erase(parent);
    return false;
}

void NativeWindows::LetInputThrough(Window child) {
    xcb_query_extension_reply_t const* const shape =
        xcb_get_extension_data(m_connection.get(), &xcb_shape_id);
    if (shape == nullptr || shape->present == 0)
        return; // input then reaches the parent as it does from any child that selects none
    xcb_shape_rectangles(m_connection.get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                         child, 0, 0, 0, nullptr);
}

void NativeWindows::PutBelowOthers(Window child, Window parent) {
    Window newest = XCB_NONE; // of ours; ids grow
    for (auto const& [other, itsParent] : m_parentOfChild)
        newest = itsParent == parent ? other : newest;
    if (newest == XCB_NONE) {
        constexpr std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(m_connection.get(), child, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    } else {
        std::uint32_t const aboveNewest[] = {newest, XCB_STACK_MODE_ABOVE};
        xcb_configure_window(m_connection.get(), child,
                             XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, aboveNewest);
    }
    m_parentOfChild[child] = parent;
}

void NativeWindows::HandleEvents() {
    while (Reply<xcb_generic_event_t> const event{xcb_wait_for_event(m_connection.get())}) {
        switch (event->response_type & ~0x80) {
        case XCB_EXPOSE:
            ForwardExposure(event.get());
            break;
        case XCB_DESTROY_NOTIFY: {
            Window const window = reinterpret_cast<xcb_destroy_notify_event_t const*>(event.get())->window;
            if (window == m_nowhere)
                return;
            std::lock_guard const lock(m_mutex);
            m_aliveParents.erase(window);
            DestroyRetired(window);
            break;
        }
        default:
            break;
        }
    }
    EndProcessWithoutDisplay();
}

void NativeWindows::ForwardExposure(void const* exposeEvent) {
    xcb_expose_event_t expose;
    std::memcpy(&expose, exposeEvent, sizeof expose);
    {
        std::lock_guard const lock(m_mutex);
        auto const child = m_parentOfChild.find(expose.window);
        if (child == m_parentOfChild.end() || IsNewcomerIn(child->second))
            return;
        expose.window = child->second;
    }
    char event[32] = {}; // the length of every event
    std::memcpy(event, &expose, sizeof expose);
    xcb_send_event(m_connection.get(), false, expose.window, XCB_EVENT_MASK_EXPOSURE, event);
    xcb_flush(m_connection.get());
}

void NativeWindows::Disconnect::operator()(xcb_connection_t* connection) const {
    xcb_disconnect(connection);
}

} // namespace zarvex::zx3D
