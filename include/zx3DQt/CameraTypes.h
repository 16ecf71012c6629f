// What all cameras share.
#pragma once

#include <zx3DQt/WorldPosition.h>

#include <cstdint>

namespace zarvex::zx3DQt {

/// How depth appears in the picture.
enum class Projection : std::uint8_t {
    Perspective, ///< what is farther away is smaller
    Parallel,    ///< everything keeps its size
};

/// The axis of the world that points up.
enum class UpAxis : std::uint8_t {
    Y, ///< the front looks along -z
    Z, ///< the front looks along +y
};

/// The sides that technical drawings show, named by where the viewer stands. The right side is where x is
/// greatest.
enum class StandardView : std::uint8_t {
    Isometric, ///< between front, right and top: all three axes equally short
    Front,     ///< x to the right, the up axis up
    Back,      ///< x to the left
    Left,      ///< from where x is least
    Right,     ///< from where x is greatest
    Top,       ///< x to the right, the front at the bottom
    Bottom,    ///< x to the right, the front at the top
};

/// What `Apply` makes of the view's origin (`BGFXViewContext::SetOrigin`).
enum class ViewOrigin : std::uint8_t {
    Keep,  ///< leaves it: right near the world's origin, and where you have set one of your own
    Focus, ///< moves it to what is looked at, for batches anywhere in the world. Positions that are drawn
           ///< immediately are relative to it, too: subtract it from them in each frame
};

/// The picture's directions in the world: unit vectors at right angles to each other, right handed.
struct ViewAxes {
    WorldVector right;         ///< along the picture's lower edge
    WorldVector up;            ///< along its left edge
    WorldVector towardsViewer; ///< out of the picture
};

} // namespace zarvex::zx3DQt
