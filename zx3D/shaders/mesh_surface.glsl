// What the fragment stages of a batch's meshes are told of the surface and its sides.

// 0: ambient light, times the material's colour; the factor of alpha.
// 1: the material's emission, and its shininess.
// 2: the colour of the back.
// 3: 1 when the back has a colour of its own; 1 or -1, whichever makes the normal of a triangle point to the viewer, as
//    SeenFaceNormal has it; the sign of what gl_FrontFacing calls front, 1 being the counter-clockwise side; the sign of
//    the normals that gl_FrontFacing calls those of the side that is seen.
// 4: where the viewer is, w being 1, or in which direction, w being 0.
uniform vec4 u_meshSurface[5];

// For each light: where it is, w being 1, or in which direction, w being 0; its diffuse light times the material's
// colour; its specular light times the material's colour.
#ifdef LIGHTS
uniform vec4 u_meshLights[3 * LIGHTS];
#endif

// The front is the side whose corners appear counter-clockwise.
vec4 ColorOfSide(vec4 frontColor) {
    float side = gl_FrontFacing ? u_meshSurface[3].z : -u_meshSurface[3].z;
    return mix(frontColor, u_meshSurface[2], side < 0.0 ? u_meshSurface[3].x : 0.0);
}

vec3 Normalized(vec3 direction) { return direction * inversesqrt(max(dot(direction, direction), 1e-37)); }
