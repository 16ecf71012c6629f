// Which input moves a camera how.
#pragma once

#include <Qt>

#include <cstdint>
#include <optional>
#include <vector>

namespace zarvex::zx3DQt {

/// What a movement of the mouse, of fingers or of a wheel does to a camera.
enum class CameraMovement : std::uint8_t {
    None,  ///< nothing
    Orbit, ///< turns the scene; a planar camera pans, a fly camera looks around
    Pan,   ///< moves the scene along with the pointer
    Zoom,  ///< makes the scene larger or smaller about the pointer; a fly camera goes there, or back
    Roll,  ///< turns the picture
};

/// What a key does to a camera. A scene goes where its arrow points; a fly camera goes and looks there
/// itself.
enum class CameraCommand : std::uint8_t {
    OrbitLeft,        ///< turns the scene, or the fly camera
    OrbitRight,       ///< likewise
    OrbitUp,          ///< likewise
    OrbitDown,        ///< likewise
    PanLeft,          ///< moves the scene, or the fly camera
    PanRight,         ///< likewise
    PanUp,            ///< likewise
    PanDown,          ///< likewise
    ZoomIn,           ///< about the middle of the picture; a fly camera goes ahead
    ZoomOut,          ///< likewise; a fly camera goes back
    RollLeft,         ///< turns the picture counterclockwise
    RollRight,        ///< turns it clockwise
    Fit,              ///< shows all of the scene's box
    LookIsometric,    ///< shows all of it from there; with a planar camera, as it is
    LookFront,        ///< likewise
    LookBack,         ///< likewise
    LookLeft,         ///< likewise
    LookRight,        ///< likewise
    LookTop,          ///< likewise
    LookBottom,       ///< likewise
    ToggleProjection, ///< between perspective and parallel, of an orbit camera
};

/// A mouse button with modifiers that were held when it was pressed.
struct CameraMouseBinding {
    Qt::MouseButton button = Qt::NoButton; ///< that is dragged with
    Qt::KeyboardModifiers modifiers{};     ///< exactly these
    CameraMovement movement{};             ///< what dragging does
};

/// A wheel, or two fingers on a trackpad, with modifiers.
struct CameraWheelBinding {
    Qt::KeyboardModifiers modifiers{}; ///< exactly these
    CameraMovement movement{};         ///< what turning, or scrolling, does
};

/// A key with modifiers, of which the keypad's is none.
struct CameraKeyBinding {
    Qt::Key key = Qt::Key_unknown;     ///< that is pressed
    Qt::KeyboardModifiers modifiers{}; ///< exactly these
    CameraCommand command{};           ///< what pressing it does
};

/// Which input moves a camera how, and how far: a plain table to change. What is not in it goes on to the
/// window or widget as if there was no camera.
struct CameraBindings {
    /// Left: orbit; with Shift, or another button: pan; with Ctrl: zoom; with both: roll.
    std::vector<CameraMouseBinding> mouse{
        {Qt::LeftButton, Qt::NoModifier, CameraMovement::Orbit},
        {Qt::LeftButton, Qt::ShiftModifier, CameraMovement::Pan},
        {Qt::LeftButton, Qt::ControlModifier, CameraMovement::Zoom},
        {Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier, CameraMovement::Roll},
        {Qt::MiddleButton, Qt::NoModifier, CameraMovement::Pan},
        {Qt::RightButton, Qt::NoModifier, CameraMovement::Pan},
    };

    /// A second click at the same place.
    std::optional<CameraCommand> doubleClick = CameraCommand::Fit;

    /// A wheel that turns in notches or parts of them.
    std::vector<CameraWheelBinding> wheel{{Qt::NoModifier, CameraMovement::Zoom}};

    /// What scrolls by pixels and tells its phases, as trackpads do on some systems.
    std::vector<CameraWheelBinding> scroll{
        {Qt::NoModifier, CameraMovement::Pan},
        {Qt::ShiftModifier, CameraMovement::Orbit},
        {Qt::ControlModifier, CameraMovement::Zoom},
    };

    CameraMovement oneFinger = CameraMovement::Orbit; ///< of a touch screen
    CameraMovement twoFingers = CameraMovement::Pan;  ///< what moving both does
    bool pinchZooms = true;                           ///< moving fingers apart, on a trackpad too
    bool twistRolls = false;                          ///< turning them about each other, likewise

    /// Arrows: orbit, with Shift pan, with Ctrl roll. Plus and minus: zoom. F and Home: fit. 0 to 6: standard
    /// views. P: projection.
    std::vector<CameraKeyBinding> keys{
        {Qt::Key_Left, Qt::NoModifier, CameraCommand::OrbitLeft},
        {Qt::Key_Right, Qt::NoModifier, CameraCommand::OrbitRight},
        {Qt::Key_Up, Qt::NoModifier, CameraCommand::OrbitUp},
        {Qt::Key_Down, Qt::NoModifier, CameraCommand::OrbitDown},
        {Qt::Key_Left, Qt::ShiftModifier, CameraCommand::PanLeft},
        {Qt::Key_Right, Qt::ShiftModifier, CameraCommand::PanRight},
        {Qt::Key_Up, Qt::ShiftModifier, CameraCommand::PanUp},
        {Qt::Key_Down, Qt::ShiftModifier, CameraCommand::PanDown},
        {Qt::Key_Left, Qt::ControlModifier, CameraCommand::RollLeft},
        {Qt::Key_Right, Qt::ControlModifier, CameraCommand::RollRight},
        {Qt::Key_Plus, Qt::NoModifier, CameraCommand::ZoomIn},
        {Qt::Key_Plus, Qt::ShiftModifier, CameraCommand::ZoomIn},
        {Qt::Key_Equal, Qt::NoModifier, CameraCommand::ZoomIn},
        {Qt::Key_Minus, Qt::NoModifier, CameraCommand::ZoomOut},
        {Qt::Key_F, Qt::NoModifier, CameraCommand::Fit},
        {Qt::Key_Home, Qt::NoModifier, CameraCommand::Fit},
        {Qt::Key_0, Qt::NoModifier, CameraCommand::LookIsometric},
        {Qt::Key_1, Qt::NoModifier, CameraCommand::LookFront},
        {Qt::Key_2, Qt::NoModifier, CameraCommand::LookBack},
        {Qt::Key_3, Qt::NoModifier, CameraCommand::LookLeft},
        {Qt::Key_4, Qt::NoModifier, CameraCommand::LookRight},
        {Qt::Key_5, Qt::NoModifier, CameraCommand::LookTop},
        {Qt::Key_6, Qt::NoModifier, CameraCommand::LookBottom},
        {Qt::Key_P, Qt::NoModifier, CameraCommand::ToggleProjection},
    };

    double degreesPerPixel = 0.4; ///< of orbiting, device-independent pixels
    double degreesPerKey = 7.5;   ///< of orbiting and rolling
    double panPerKey = 0.05;      ///< share of the viewport's height
    double zoomPerStep = 1.15;    ///< factor of a key or a wheel's notch; above 1
    double pixelsPerStep = 20.0;  ///< of a zoom by dragging, and of a notch where a wheel does not zoom
};

} // namespace zarvex::zx3DQt
