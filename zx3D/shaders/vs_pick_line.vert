// Picking segments of their own, of any shape, from a batch.

#include "batch_texels.glsl"
#include "collapsed_vertex.glsl"
#include "line_batch.glsl"
#include "pick_line.glsl"
#include "line_batch_cut.glsl"
#include "line_batch_separate.glsl"
#include "line_batch_shape.glsl"
