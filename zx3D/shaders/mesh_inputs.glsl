// What the vertex stage mesh_lit.glsl hands on.

layout(location = 0) in vec4 v_color;
layout(location = 1) in vec4 v_place;
layout(location = 2) in vec4 v_normal;

layout(location = 0) out vec4 o_color;
