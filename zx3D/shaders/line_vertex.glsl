// The vertex stage of thin lines: everything that the fragment stage needs to know how far along its line it is.
//
// A fragment knows its own place (v_pixel) and one end of its line (v_anchor.xy), since a flat variable keeps the value
// of one vertex. That is the first one, but with a bgfx from elsewhere the last one in the windows of OpenGL. So each
// vertex also says whether it is the line's start (parity 0) or its end (parity 1): flat in v_anchor.z, and interpolated in
// v_rest, which shrinks from 1 at the start to 0 at the end in screen space.

layout(location = 0) in vec3 a_position;
layout(location = 1) in vec4 a_color0;

layout(location = 0) out vec4 v_color;
layout(location = 1) noperspective out vec2 v_pixel;
layout(location = 2) noperspective out float v_rest;
layout(location = 3) flat out vec3 v_anchor;

uniform mat4 u_modelViewProj;
uniform vec4 u_viewport;

void WriteLineVertex() {
    gl_Position = u_modelViewProj * vec4(a_position, 1.0);
    gl_PointSize = 1.0;

    // Lines are drawn with the indices 0, 1, 2, ...: even vertices start a line, odd ones end it.
    float parity = float(gl_VertexID & 1);
    v_color = a_color0;
    v_pixel = (gl_Position.xy / gl_Position.w) * 0.5 * u_viewport.xy;
    v_rest = 1.0 - parity;
    v_anchor = vec3(v_pixel, parity);
}
