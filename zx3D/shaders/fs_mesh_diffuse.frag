// Meshes of a batch in the light of one direction, without highlights, whose normals are on one and the same side of all
// triangles: the side that is seen is known without the viewer. Half of what any light costs.

#define LIGHTS 1
#include "mesh_surface.glsl"

layout(location = 0) in vec4 v_color;
layout(location = 1) in vec3 v_normal;

layout(location = 0) out vec4 o_color;

void main() {
    float cosine = dot(Normalized(v_normal), u_meshLights[0].xyz);
    cosine *= gl_FrontFacing ? u_meshSurface[3].w : -u_meshSurface[3].w;
    vec3 light = u_meshSurface[0].rgb + u_meshLights[1].rgb * max(cosine, 0.0);
    o_color = vec4(v_color.rgb * light + u_meshSurface[1].rgb, v_color.a * u_meshSurface[0].a);
}
