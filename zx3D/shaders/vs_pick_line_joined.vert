// Picking the segments of polylines, of any shape, from a batch.

#include "batch_texels.glsl"
#include "collapsed_vertex.glsl"
#include "line_batch.glsl"
#include "pick_line.glsl"
#include "line_batch_cut.glsl"
#include "line_batch_joined.glsl"
#include "line_batch_anew.glsl"
#include "line_batch_shape.glsl"
