// Balls, lit by the viewer, with their own depth.

layout(location = 0) in vec4 v_color;
layout(location = 1) in vec2 v_place;
layout(location = 2) flat in vec4 v_ball;

layout(location = 0) out vec4 o_color;

// As the light that the viewer carries where a scene has none.
const float kAmbient = 0.3;
const float kDiffuse = 0.7;

void main() {
    float squaredDistance = dot(v_place, v_place);
    if (squaredDistance > 1.0) {
        discard;
    }
    // The part of the normal that points to the viewer; the ball's surface is as much nearer than its centre.
    float height = sqrt(1.0 - squaredDistance);
    vec2 depth = v_ball.xy + height * v_ball.zw;
#ifdef VULKAN
    gl_FragDepth = depth.x / depth.y;
#else
    gl_FragDepth = depth.x / depth.y * 0.5 + 0.5;
#endif
    o_color = vec4(v_color.rgb * (kAmbient + kDiffuse * height), v_color.a);
}
