// Copies a buffer of vec4s to a texture, row by row. u_copyCount is (number of vec4s, 0, 0, 0).

layout(local_size_x = 64) in;

layout(std430, binding = 0) readonly buffer Values { vec4 b_values[]; };
layout(rgba32f, binding = 1) writeonly uniform image2D i_copy;

uniform vec4 u_copyCount;

void main() {
    int index = int(gl_GlobalInvocationID.x);
    if (index < int(u_copyCount.x)) {
        int width = imageSize(i_copy).x;
        imageStore(i_copy, ivec2(index % width, index / width), b_values[index]);
    }
}
