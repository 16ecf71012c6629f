// A mesh that is drawn in many places. Each has four texels: the rows of a matrix of three rows and four columns, and a
// colour, which the mesh's is multiplied by.

uvec4 InstanceTexel(int index) { return FetchTexel(4 * gl_InstanceID + index); }

vec4 InstanceRow(int index) { return uintBitsToFloat(InstanceTexel(index)); }

vec3 PositionOf(vec3 position) {
    vec4 p = vec4(position, 1.0);
    return vec3(dot(InstanceRow(0), p), dot(InstanceRow(1), p), dot(InstanceRow(2), p));
}

// By the cofactor matrix, which takes the place of the inverse transpose up to a factor.
vec3 NormalOf(vec3 normal) {
    vec3 x = InstanceRow(0).xyz;
    vec3 y = InstanceRow(1).xyz;
    vec3 z = InstanceRow(2).xyz;
    return vec3(dot(cross(y, z), normal), dot(cross(z, x), normal), dot(cross(x, y), normal));
}

vec4 ColorOf(vec4 color) { return color * UnpackColor(InstanceTexel(3).x); }
