// How depths are moved towards the viewer.
#pragma once

#include <zx3DQt/BGFXViewContext.h>

namespace zarvex::zx3DQt {

/// What clip z is multiplied by and what part of clip w is added to it to move depths towards the viewer.
///
/// A view-space z that is moved by c w, which is as long as so many pixels there, changes the depth from
/// z / w to (z + c a w) / (w + c b w), where a and b are what z adds to clip z and clip w.
struct DepthShift {
    float ofZ; ///< the factor
    float ofW; ///< the part
};

/// By so many pixels, as long as they are at each place.
DepthShift DepthShiftOf(BGFXViewContext const& view, float pixels);

} // namespace zarvex::zx3DQt
