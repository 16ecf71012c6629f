// Picking discs and balls of a batch.

#define VERTICES_PER_POINT 6

#include "batch_texels.glsl"
#include "pick_point.glsl"
#include "point_batch_round.glsl"
