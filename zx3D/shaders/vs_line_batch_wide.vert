// Wide segments, all in front of the camera, from a batch.

#include "batch_texels.glsl"
#include "collapsed_vertex.glsl"
#include "line_batch.glsl"
#include "line_batch_color.glsl"
#include "line_batch_whole.glsl"
#include "line_batch_wide.glsl"
