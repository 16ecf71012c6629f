// Polylines of any shape with a stipple that runs on, which may reach behind the camera, from a batch.

#include "batch_texels.glsl"
#include "collapsed_vertex.glsl"
#include "line_batch.glsl"
#include "line_batch_color.glsl"
#include "line_batch_cut.glsl"
#include "line_batch_joined.glsl"
#include "line_batch_run.glsl"
#include "line_batch_shape.glsl"
