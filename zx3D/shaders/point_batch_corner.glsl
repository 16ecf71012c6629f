// Where the corners of a batch's large points are: squares parallel to the picture, six vertices each.
// u_pointSize is (pixels, world units, 0, 0), of which one is 0.

#include "collapsed_vertex.glsl"

uniform mat4 u_modelViewProj;
uniform mat4 u_proj;
uniform vec4 u_viewRect;
uniform vec4 u_pointSize;

const vec2 kCorners[6] = vec2[6](vec2(-1.0, -1.0), vec2(1.0, -1.0), vec2(1.0, 1.0), //
                                 vec2(-1.0, -1.0), vec2(1.0, 1.0), vec2(-1.0, 1.0));

struct PointCorner {
    vec4 clip;
    vec4 centre; // in clip space
    vec2 place;   // -1 to 1
    float radius; // in the view's units
};

// How many of the view's units a unit of NDC is, up or down, where clip w has this value.
float WorldPerNdc(float w) { return w / abs(u_proj[1][1]); }

PointCorner CornerOf(uvec3 position, int corner) {
    vec4 centre = u_modelViewProj * vec4(uintBitsToFloat(position), 1.0);
    // The radius in NDC, of both kinds of sizes.
    float ofWorld = 0.5 * u_pointSize.y / WorldPerNdc(centre.w);
    vec2 radius = u_pointSize.xx / u_viewRect.zw + vec2(ofWorld * u_viewRect.w / u_viewRect.z, ofWorld);
    PointCorner result;
    result.centre = centre;
    result.place = kCorners[corner];
    result.radius = radius.y * WorldPerNdc(centre.w);
    // Scaled by w, so that the corner keeps its distance in NDC after the division. What is behind the camera has no
    // place on the screen.
    bool isDrawable = IsFinite(position) && centre.w > 0.0;
    result.clip = isDrawable ? vec4(centre.xy + centre.w * radius * result.place, centre.zw) : kCollapsedVertex;
    return result;
}
