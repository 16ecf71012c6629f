// Discs and balls of their own colours, from a batch.

#include "batch_texels.glsl"
#include "point_batch_color.glsl"
#include "point_batch_round.glsl"
