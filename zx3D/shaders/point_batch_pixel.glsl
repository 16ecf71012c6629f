// The vertex stage of a batch's points of one pixel: a vertex each.

#include "collapsed_vertex.glsl"

layout(location = 0) out vec4 v_color;

uniform mat4 u_modelViewProj;

void main() {
    uvec4 point = FetchTexel(gl_VertexID);
    vec4 clip = u_modelViewProj * vec4(uintBitsToFloat(point.xyz), 1.0);
    gl_Position = IsFinite(point.xyz) ? clip : kCollapsedVertex;
    gl_PointSize = 1.0;
    v_color = PointColor(point.w);
}
