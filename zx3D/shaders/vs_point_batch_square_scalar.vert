// Square points with the colours of numbers, from a batch.

#include "batch_texels.glsl"
#include "point_batch_scalar.glsl"
#include "point_batch_square.glsl"
