// Points of one pixel of their own colours, from a batch.

#include "batch_texels.glsl"
#include "point_batch_color.glsl"
#include "point_batch_pixel.glsl"
