// Quads of glyphs, placed in pixels of the target.

layout(location = 0) in vec2 a_position;
layout(location = 1) in vec2 a_texcoord0;
layout(location = 2) in vec4 a_color0;

layout(location = 0) out vec2 v_texcoord;
layout(location = 1) out vec4 v_color;

// x, y, width and height of the view in pixels of the target, y down.
uniform vec4 u_viewRect;

void main() {
    vec2 inView = (a_position - u_viewRect.xy) / u_viewRect.zw;
    gl_Position = vec4(inView.x * 2.0 - 1.0, 1.0 - inView.y * 2.0, 0.0, 1.0);
    // From sixteenths of a texel, which arrive divided by 32767, to the 1024 texels of a page.
    v_texcoord = a_texcoord0 * (32767.0 / 16384.0);
    v_color = a_color0;
}
