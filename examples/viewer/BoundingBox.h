// The box around the mesh, and how far it reaches.
#pragma once

#include "Canvas.h"

namespace viewer {

/// Draws the box's edges in stippled lines and the coordinates of two opposite corners, which have all
/// its extents between them.
void DrawBoundingBox(Canvas const& canvas, Box const& box);

} // namespace viewer
