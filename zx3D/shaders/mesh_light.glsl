// The light of so many lights (LIGHTS) on both sides of a surface, as fs_lighting.frag has it: Blinn-Phong in world space.
// Where there is no normal, that of the triangle itself counts.

// The normal of the triangle itself on the side that is seen, of any length.
vec3 SeenFaceNormal() {
    vec3 normal = u_meshSurface[3].y * cross(dFdx(v_place.xyz), dFdy(v_place.xyz));
#ifdef VULKAN
    normal = -normal; // rows count from the top
#endif
    return normal;
}

vec3 SeenNormal() {
    vec3 faceNormal = SeenFaceNormal();
    vec3 normal = mix(faceNormal, v_normal.xyz, bvec3(dot(v_normal.xyz, v_normal.xyz) > 0.0));
    return Normalized(dot(normal, faceNormal) < 0.0 ? -normal : normal);
}

vec3 DirectionTo(vec4 place) { return Normalized(place.xyz - place.w * v_place.xyz); }

void main() {
    vec3 normal = SeenNormal();
    vec3 toViewer = DirectionTo(u_meshSurface[4]);
    vec3 light = u_meshSurface[0].rgb;
    vec3 highlight = u_meshSurface[1].rgb;
    for (int i = 0; i < LIGHTS; ++i) {
        vec3 toLight = DirectionTo(u_meshLights[3 * i]);
        float cosine = dot(normal, toLight);
        if (cosine > 0.0) {
            vec3 halfway = Normalized(toLight + toViewer);
            light += u_meshLights[3 * i + 1].rgb * cosine;
            highlight += u_meshLights[3 * i + 2].rgb * pow(max(dot(normal, halfway), 0.0), u_meshSurface[1].w);
        }
    }
    vec4 color = SurfaceColor();
    o_color = vec4(color.rgb * light + highlight, color.a * u_meshSurface[0].a);
}
