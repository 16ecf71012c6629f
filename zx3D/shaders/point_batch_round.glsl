// The vertex stage of a batch's discs and balls.

#include "point_batch_corner.glsl"

layout(location = 0) out vec4 v_color;
layout(location = 1) out vec2 v_place;
// Depth and w of the centre in clip space, and how they change from there to the ball's foremost place.
layout(location = 2) flat out vec4 v_ball;

// Clip depth grows away from the viewer, along view +z or -z according to the handedness of the projection.
float TowardsViewer() { return u_proj[2][2] > 0.0 ? -1.0 : 1.0; }

void main() {
    uvec4 point = FetchTexel(gl_VertexID / 6);
    PointCorner corner = CornerOf(point.xyz, gl_VertexID % 6);
    gl_Position = corner.clip;
    gl_PointSize = 1.0;
    v_color = PointColor(point.w);
    v_place = corner.place;
    v_ball = vec4(corner.centre.zw, TowardsViewer() * corner.radius * u_proj[2].zw);
}
