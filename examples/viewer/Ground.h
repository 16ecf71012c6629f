// A grid beneath the mesh, or behind it, whose lines and numbers follow the zoom.
#pragma once

#include "Canvas.h"

namespace viewer {

/// Draws the grid's lines, with those of the coordinate axes in colour, and the numbers along its near edges.
void DrawGround(Canvas const& canvas, Box const& box);

} // namespace viewer
