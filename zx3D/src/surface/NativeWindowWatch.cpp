// Watching windows with the X protocol's structure notifications.
#include "NativeWindowWatch.h"

#include <xcb/xcb.h>

#include <cstdlib>

namespace zarvex::zx3D {

namespace {

std::uint32_t ToWindowId(void* window)
{
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window));
}

template<typename T>
using Reply = std::unique_ptr<T, decltype([](T* reply) { std::free(reply); })>;

} // namespace

bool NativeWindowWatch::Watch(void* window)
{
    std::uint32_t const id = ToWindowId(window);
    if (!Connect() || !SelectEvents(id, XCB_EVENT_MASK_STRUCTURE_NOTIFY))
        return false;
    m_alive.insert(id);
    return true;
}

void NativeWindowWatch::Unwatch(void* window)
{
    std::uint32_t const id = ToWindowId(window);
    if (m_alive.erase(id) != 0)
        SelectEvents(id, XCB_EVENT_MASK_NO_EVENT);
}

bool NativeWindowWatch::IsAlive(void* window)
{
    ReadEvents();
    return m_alive.contains(ToWindowId(window));
}

bool NativeWindowWatch::Connect()
{
    if (!m_connection || xcb_connection_has_error(m_connection.get()) != 0) {
        m_alive.clear();
        m_connection.reset(xcb_connect(nullptr, nullptr));
    }
    return xcb_connection_has_error(m_connection.get()) == 0;
}

bool NativeWindowWatch::SelectEvents(std::uint32_t window, std::uint32_t mask)
{
    auto const request =
        xcb_change_window_attributes_checked(m_connection.get(), window, XCB_CW_EVENT_MASK, &mask);
    Reply<xcb_generic_error_t> const error(xcb_request_check(m_connection.get(), request));
    return !error;
}

void NativeWindowWatch::ReadEvents()
{
    if (!m_connection)
        return;
    while (Reply<xcb_generic_event_t> const event{xcb_poll_for_event(m_connection.get())}) {
        if ((event->response_type & ~0x80) == XCB_DESTROY_NOTIFY)
            m_alive.erase(reinterpret_cast<xcb_destroy_notify_event_t const*>(event.get())->window);
    }
    if (xcb_connection_has_error(m_connection.get()) != 0)
        m_alive.clear(); // the display is gone, and every window with it
}

void NativeWindowWatch::Disconnect::operator()(xcb_connection_t* connection) const
{
    xcb_disconnect(connection);
}

} // namespace zarvex::zx3D
