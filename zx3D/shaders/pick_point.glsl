// In place of a point's colour: where it is in its batch, and its number in the draw call.

layout(location = 3) flat out vec4 v_element;

vec4 PointColor(uint word) {
    int point = gl_VertexID / VERTICES_PER_POINT;
    v_element = vec4(uintBitsToFloat(FetchTexel(point).xyz), float(point));
    return vec4(0.0);
}
