// The mouse and the keyboard of the display, used as a person uses them: the events come from the X server.
#pragma once

#include <QPoint>

#include <cstdint>

struct xcb_connection_t;

namespace zarvex::testing {

/// Presses keys and buttons and moves the pointer. Each operation returns when the X server has taken it; the
/// application's events are then on their way.
class InputDevice {
public:
    enum Button : std::uint8_t { Left = 1, Middle = 2, Right = 3, WheelUp = 4, WheelDown = 5 };

    InputDevice();
    ~InputDevice();

    InputDevice(InputDevice const&) = delete;
    InputDevice& operator=(InputDevice const&) = delete;

    /// Physical pixels from the display's top left corner.
    void MoveTo(QPoint place);

    void Press(Button button);
    void Release(Button button);
    void Click(Button button);

    /// Presses and releases a key, named by its X key symbol (`XK_…`).
    void Type(std::uint32_t keySymbol);

    /// The same while the left shift key is held.
    void TypeShifted(std::uint32_t keySymbol);

private:
    void Send(std::uint8_t event, std::uint8_t detail, QPoint place = {});
    std::uint8_t KeyCodeOf(std::uint32_t keySymbol) const;

    xcb_connection_t* m_connection;
};

} // namespace zarvex::testing
