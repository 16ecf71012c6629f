// What the vertex stages of a batch's meshes are told: the columns of the matrix for normals, in xyz; the colour that
// the front has instead of the vertices' own; and (1 when there is such a colour, 1 when the vertices have normals, 0, 0).

uniform vec4 u_meshVertex[5];

uniform mat4 u_modelViewProj;

vec4 FrontColor(vec4 color) { return ColorOf(mix(color, u_meshVertex[3], u_meshVertex[4].x)); }

vec3 WorldNormal(vec3 normal) {
    return mat3(u_meshVertex[0].xyz, u_meshVertex[1].xyz, u_meshVertex[2].xyz) * NormalOf(normal);
}
