// Polylines of any shape, all in front of the camera, from a batch.

#include "batch_texels.glsl"
#include "collapsed_vertex.glsl"
#include "line_batch.glsl"
#include "line_batch_color.glsl"
#include "line_batch_whole.glsl"
#include "line_batch_joined.glsl"
#include "line_batch_anew.glsl"
#include "line_batch_shape.glsl"
