// Where the viewer is, seen from a point of the world.

uniform vec4 u_viewPosition;
uniform mat4 u_invView;
uniform mat4 u_proj;

// A perspective projection computes clip w from the depth, a parallel one leaves it at 1.
bool IsParallelProjection() { return u_proj[2][3] == 0.0; }

// The camera of a parallel projection is infinitely far away, against the direction in which clip depth grows; that
// is along view +z or -z, according to the handedness of the projection.
vec3 ParallelDirectionToViewer() { return u_invView[2].xyz * (u_proj[2][2] > 0.0 ? -1.0 : 1.0); }

// A unit vector, also when the point is where the viewer is.
vec3 DirectionToViewer(vec3 worldPosition) {
    vec3 toViewer = u_invView[3].xyz - worldPosition;
    toViewer = mix(toViewer, ParallelDirectionToViewer(), bvec3(IsParallelProjection()));
    toViewer = mix(toViewer, u_viewPosition.xyz / u_viewPosition.w - worldPosition, bvec3(u_viewPosition.w != 0.0));
    float squaredLength = dot(toViewer, toViewer);
    return squaredLength > 0.0 ? toViewer * inversesqrt(squaredLength) : vec3(0.0, 0.0, 1.0);
}
