// Blinn-Phong lighting in world space, of both sides of a surface.
//
// Material: a material named "u_material" (u_material_ambient, _diffuse, _specular, _emission, and _shininess in x).
//   Its ambient and diffuse colours are multiplied by the vertex colour. A shininess below 1 counts as 1. Without a
//   material, that is with all of these zero, the vertex colour is the ambient and the diffuse colour, and there is no
//   highlight.
// Lights: up to eight, named "u_light0" to "u_light7" (each _position, _ambient, _diffuse, _specular). Position w = 0
//   makes xyz the direction towards a light that is infinitely far away, any other w makes xyz / w its place; there is
//   no attenuation. A light whose colours are all zero, alpha included, does not exist. A light without a place or
//   direction, (0, 0, 0, 0), shines from the viewer. Without any light, a white headlight does (ambient 0.3, diffuse
//   0.7, specular 1), so that a surface that faces the viewer shows its own colour.
// Viewer: u_viewPosition, when its w is not 0. Otherwise the view's camera: its place under a perspective projection,
//   its direction under a parallel one.
// Result: emission plus the sum over the lights of ambient, diffuse and specular. Alpha is the vertex colour's, times
//   the diffuse alpha of the material if there is one.
//
// Lights and materials choose between values; no if, && or || depends on uniforms alone: lavapipe 22 would compile the
// program anew for each draw that sets such uniforms, and never free what it compiled.

#include "viewer.glsl"

layout(location = 0) in vec3 v_worldPosition;
layout(location = 1) in vec3 v_worldNormal;
layout(location = 2) in vec4 v_color;

layout(location = 0) out vec4 o_color;

uniform vec4 u_material_ambient;
uniform vec4 u_material_diffuse;
uniform vec4 u_material_specular;
uniform vec4 u_material_emission;
uniform vec4 u_material_shininess;

uniform vec4 u_light0_position;
uniform vec4 u_light0_ambient;
uniform vec4 u_light0_diffuse;
uniform vec4 u_light0_specular;

uniform vec4 u_light1_position;
uniform vec4 u_light1_ambient;
uniform vec4 u_light1_diffuse;
uniform vec4 u_light1_specular;

uniform vec4 u_light2_position;
uniform vec4 u_light2_ambient;
uniform vec4 u_light2_diffuse;
uniform vec4 u_light2_specular;

uniform vec4 u_light3_position;
uniform vec4 u_light3_ambient;
uniform vec4 u_light3_diffuse;
uniform vec4 u_light3_specular;

uniform vec4 u_light4_position;
uniform vec4 u_light4_ambient;
uniform vec4 u_light4_diffuse;
uniform vec4 u_light4_specular;

uniform vec4 u_light5_position;
uniform vec4 u_light5_ambient;
uniform vec4 u_light5_diffuse;
uniform vec4 u_light5_specular;

uniform vec4 u_light6_position;
uniform vec4 u_light6_ambient;
uniform vec4 u_light6_diffuse;
uniform vec4 u_light6_specular;

uniform vec4 u_light7_position;
uniform vec4 u_light7_ambient;
uniform vec4 u_light7_diffuse;
uniform vec4 u_light7_specular;

const vec3 kHeadlightAmbient = vec3(0.3);
const vec3 kHeadlightDiffuse = vec3(0.7);
const vec3 kHeadlightSpecular = vec3(1.0);

struct Surface {
    vec3 position;
    vec3 normal;
    vec3 toViewer;
    vec3 ambient;
    vec3 diffuse;
    vec3 specular;
    float shininess;
};

bool IsSet(vec4 value) { return any(notEqual(value, vec4(0.0))); }

bool HasMaterial() {
    return IsSet(abs(u_material_ambient) + abs(u_material_diffuse) + abs(u_material_specular) +
                 abs(u_material_emission) + abs(u_material_shininess));
}

// The side of the triangle itself that the viewer sees, of any length.
vec3 VisibleFaceNormal(vec3 toViewer) {
    vec3 faceNormal = cross(dFdx(v_worldPosition), dFdy(v_worldPosition));
    return dot(faceNormal, toViewer) < 0.0 ? -faceNormal : faceNormal;
}

// The unit normal on the side that the viewer sees; a missing normal faces the viewer. A normal that points away from
// the viewer is turned round only when it points away from the visible side of the triangle too: near the outline of a
// curved surface it may do the one and not the other, and would light single pixels from the wrong side.
vec3 VisibleNormal(vec3 toViewer) {
    vec3 faceNormal = VisibleFaceNormal(toViewer);
    float squaredLength = dot(v_worldNormal, v_worldNormal);
    if (!(squaredLength > 0.0)) {
        return toViewer;
    }
    vec3 normal = v_worldNormal * inversesqrt(squaredLength);
    bool isBackSide = dot(normal, toViewer) < 0.0 && dot(normal, faceNormal) < 0.0;
    return isBackSide ? -normal : normal;
}

vec3 DirectionToLight(vec4 position, Surface surface) {
    vec3 toPlace = position.xyz / position.w - surface.position;
    vec3 toLight = mix(toPlace, position.xyz, bvec3(position.w == 0.0));
    float squaredLength = dot(toLight, toLight);
    return squaredLength > 0.0 ? toLight * inversesqrt(squaredLength) : surface.toViewer;
}

vec3 Shade(Surface surface, vec3 toLight, vec3 ambient, vec3 diffuse, vec3 specular) {
    vec3 color = ambient * surface.ambient;
    float cosine = dot(surface.normal, toLight);
    if (cosine > 0.0) {
        vec3 halfway = normalize(toLight + surface.toViewer);
        float highlight = pow(max(dot(surface.normal, halfway), 0.0), surface.shininess);
        color += diffuse * surface.diffuse * cosine + specular * surface.specular * highlight;
    }
    return color;
}

// Adds a light to the colour and, if it exists, to the count. One that does not exist has no direction, which skips
// what is expensive.
void AddLight(Surface surface, vec4 position, vec4 ambient, vec4 diffuse, vec4 specular, inout vec3 color,
              inout int count) {
    bool exists = IsSet(abs(ambient) + abs(diffuse) + abs(specular));
    vec3 toLight = mix(vec3(0.0), DirectionToLight(position, surface), bvec3(exists));
    color += Shade(surface, toLight, ambient.rgb, diffuse.rgb, specular.rgb);
    count += int(exists);
}

vec3 Illuminate(Surface surface) {
    vec3 color = vec3(0.0);
    int count = 0;
    AddLight(surface, u_light0_position, u_light0_ambient, u_light0_diffuse, u_light0_specular, color, count);
    AddLight(surface, u_light1_position, u_light1_ambient, u_light1_diffuse, u_light1_specular, color, count);
    AddLight(surface, u_light2_position, u_light2_ambient, u_light2_diffuse, u_light2_specular, color, count);
    AddLight(surface, u_light3_position, u_light3_ambient, u_light3_diffuse, u_light3_specular, color, count);
    AddLight(surface, u_light4_position, u_light4_ambient, u_light4_diffuse, u_light4_specular, color, count);
    AddLight(surface, u_light5_position, u_light5_ambient, u_light5_diffuse, u_light5_specular, color, count);
    AddLight(surface, u_light6_position, u_light6_ambient, u_light6_diffuse, u_light6_specular, color, count);
    AddLight(surface, u_light7_position, u_light7_ambient, u_light7_diffuse, u_light7_specular, color, count);
    float headlight = float(count == 0);
    return color + Shade(surface, headlight * surface.toViewer, headlight * kHeadlightAmbient, kHeadlightDiffuse,
                         kHeadlightSpecular);
}

void main() {
    bool hasMaterial = HasMaterial();
    Surface surface;
    surface.position = v_worldPosition;
    surface.toViewer = DirectionToViewer(v_worldPosition);
    surface.normal = VisibleNormal(surface.toViewer);
    surface.ambient = mix(vec3(1.0), u_material_ambient.rgb, bvec3(hasMaterial)) * v_color.rgb;
    surface.diffuse = mix(vec3(1.0), u_material_diffuse.rgb, bvec3(hasMaterial)) * v_color.rgb;
    surface.specular = u_material_specular.rgb;
    surface.shininess = max(u_material_shininess.x, 1.0);

    float alpha = v_color.a * (hasMaterial ? u_material_diffuse.a : 1.0);
    o_color = vec4(u_material_emission.rgb + Illuminate(surface), alpha);
}
