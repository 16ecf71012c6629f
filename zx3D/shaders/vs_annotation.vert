// Glyphs, boxes, lines and arrow heads, placed in pixels of the target.

layout(location = 0) in vec3 a_position;
layout(location = 1) in vec4 a_texcoord0;
layout(location = 2) in vec4 a_color0;

layout(location = 0) out vec4 v_shape;
layout(location = 1) out vec4 v_color;

// x, y, width and height of the view in pixels of the target, y down.
uniform vec4 u_viewRect;

void main() {
    vec2 inView = (a_position.xy - u_viewRect.xy) / u_viewRect.zw;
    gl_Position = vec4(inView.x * 2.0 - 1.0, 1.0 - inView.y * 2.0, a_position.z, 1.0);
    // From sixteenths, which arrive divided by 32767: of a glyph to the 1024 texels of a page, of a shape to pixels.
    bool isGlyph = a_texcoord0.z < -0.5;
    v_shape = isGlyph ? vec4(a_texcoord0.xy * (32767.0 / 16384.0), -1.0, 0.0) : a_texcoord0 * (32767.0 / 16.0);
    v_color = a_color0;
}
