// The vertex stage of a batch's lines of one pixel, which the GPU draws as such: a vertex for each end.

#include "batch_texels.glsl"
#include "collapsed_vertex.glsl"
#include "line_batch.glsl"

layout(location = 0) out vec4 v_color;

void WriteThinVertex(uvec4 texel, bool isDrawn) {
    vec4 clip = ToClipSpace(texel);
    clip.z = ShiftedDepth(clip);
    gl_Position = isDrawn ? clip : kCollapsedVertex;
    gl_PointSize = 1.0;
    v_color = UnpackColor(texel.w);
}
