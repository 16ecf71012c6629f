// Picking points of one pixel of a batch.

#define VERTICES_PER_POINT 1

#include "batch_texels.glsl"
#include "pick_point.glsl"
#include "point_batch_pixel.glsl"
