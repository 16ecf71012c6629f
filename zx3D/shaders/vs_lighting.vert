// Lit triangles: hands position and normal on in world space, where fs_lighting computes the light.

layout(location = 0) in vec3 a_position;
layout(location = 1) in vec3 a_normal;
layout(location = 2) in vec4 a_color0;

layout(location = 0) out vec3 v_worldPosition;
layout(location = 1) out vec3 v_worldNormal;
layout(location = 2) out vec4 v_color;

uniform mat4 u_model;
uniform mat4 u_viewProj;

// Normals follow the inverse transpose of the model matrix. The cofactor matrix is the same up to a factor, which the
// fragment shader's normalisation removes, and exists for singular matrices too.
mat3 CofactorMatrix(mat3 m) { return mat3(cross(m[1], m[2]), cross(m[2], m[0]), cross(m[0], m[1])); }

void main() {
    vec4 worldPosition = u_model * vec4(a_position, 1.0);
    gl_Position = u_viewProj * worldPosition;
    gl_PointSize = 1.0;
    v_worldPosition = worldPosition.xyz / worldPosition.w;
    v_worldNormal = CofactorMatrix(mat3(u_model)) * a_normal;
    v_color = a_color0;
}
