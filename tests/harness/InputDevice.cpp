// Input through the X server's test extension.
#include "InputDevice.h"

#include <X11/keysym.h>
#include <xcb/xtest.h>

#include <cstdlib>
#include <stdexcept>

namespace zarvex::testing {

InputDevice::InputDevice() : m_connection(xcb_connect(nullptr, nullptr)) {}

InputDevice::~InputDevice() {
    xcb_disconnect(m_connection);
}

void InputDevice::MoveTo(QPoint place) {
    Send(XCB_MOTION_NOTIFY, false, place);
}

void InputDevice::Press(Button button) {
    Send(XCB_BUTTON_PRESS, button);
}

void InputDevice::Release(Button button) {
    Send(XCB_BUTTON_RELEASE, button);
}

void InputDevice::Click(Button button) {
    Press(button);
    Release(button);
}

void InputDevice::Type(std::uint32_t keySymbol) {
    std::uint8_t const code = KeyCodeOf(keySymbol);
    Send(XCB_KEY_PRESS, code);
    Send(XCB_KEY_RELEASE, code);
}

void InputDevice::TypeShifted(std::uint32_t keySymbol) {
    std::uint8_t const shift = KeyCodeOf(XK_Shift_L);
    Send(XCB_KEY_PRESS, shift);
    Type(keySymbol);
    Send(XCB_KEY_RELEASE, shift);
}

void InputDevice::Send(std::uint8_t event, std::uint8_t detail, QPoint place) {
    xcb_window_t const root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    xcb_test_fake_input(m_connection, event, detail, XCB_CURRENT_TIME, root,
                        static_cast<std::int16_t>(place.x()), static_cast<std::int16_t>(place.y()), 0);
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

std::uint8_t InputDevice::KeyCodeOf(std::uint32_t keySymbol) const {
    xcb_setup_t const& setup = *xcb_get_setup(m_connection);
    auto const count = static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1);
    auto const request = xcb_get_keyboard_mapping(m_connection, setup.min_keycode, count);
    auto* const mapping = xcb_get_keyboard_mapping_reply(m_connection, request, nullptr);
    if (mapping == nullptr)
        throw std::runtime_error("the X server names no keys");
    xcb_keysym_t const* const symbols = xcb_get_keyboard_mapping_keysyms(mapping);
    int code = 0;
    for (int i = 0; i < count && code == 0; ++i) {
        if (symbols[i * mapping->keysyms_per_keycode] == keySymbol)
            code = setup.min_keycode + i;
    }
    std::free(mapping);
    if (code == 0)
        throw std::runtime_error("the display has no such key");
    return static_cast<std::uint8_t>(code);
}

} // namespace zarvex::testing
