// One triangle that covers the whole view, made from the vertex index alone.

layout(location = 0) out vec2 v_texcoord;

void main() {
    // (-1, -1), (3, -1), (-1, 3): the part beyond the view is clipped away.
    vec2 corner = vec2(float(gl_VertexID & 1), float(gl_VertexID >> 1)) * 4.0 - 1.0;
    gl_Position = vec4(corner, 0.0, 1.0);
    // A frame buffer's first row is its top one on Vulkan and its bottom one on OpenGL.
#ifdef VULKAN
    v_texcoord = vec2(corner.x, -corner.y) * 0.5 + 0.5;
#else
    v_texcoord = corner * 0.5 + 0.5;
#endif
}
