// A texture under one lamp, with a glow where the surface turns away from the viewer.

layout(location = 0) in vec3 v_position;
layout(location = 1) in vec3 v_normal;
layout(location = 2) in vec2 v_texcoord;

layout(location = 0) out vec4 o_color;

layout(binding = 0) uniform sampler2D s_paint;

uniform vec4 u_lamp;  // the lamp's place, in world space
uniform vec4 u_eye;   // the viewer's place
uniform vec4 u_glow;  // the colour of the glow, and how narrow it is

void main() {
    vec3 normal = normalize(v_normal);
    vec3 toLamp = normalize(u_lamp.xyz - v_position);
    vec3 toEye = normalize(u_eye.xyz - v_position);
    float diffuse = max(dot(normal, toLamp), 0.0);
    float highlight = pow(max(dot(normal, normalize(toLamp + toEye)), 0.0), 60.0);
    float edge = pow(1.0 - max(dot(normal, toEye), 0.0), u_glow.w);

    vec3 paint = texture(s_paint, v_texcoord).rgb;
    o_color = vec4(paint * (0.18 + 0.82 * diffuse) + 0.5 * highlight + edge * u_glow.rgb, 1.0);
}
