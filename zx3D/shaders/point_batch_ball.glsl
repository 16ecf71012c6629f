// Balls, lit by the viewer, with their own depth.

layout(location = 0) in vec4 v_color;
layout(location = 1) in vec2 v_place;
layout(location = 2) flat in vec4 v_ball;

layout(location = 0) out vec4 o_color;

// As the light that the viewer carries where a scene has none.
const float kAmbient = 0.3;
const float kDiffuse = 0.7;

// Writes the depth at a height of 0 to 1 above the outline, and returns the colour there. The height is the part of the
// normal that points to the viewer, too; the ball's surface is as much nearer than its centre.
vec3 BallSurface(float height) {
    vec2 depth = v_ball.xy + height * v_ball.zw;
#ifdef VULKAN
    gl_FragDepth = depth.x / depth.y;
#else
    gl_FragDepth = depth.x / depth.y * 0.5 + 0.5;
#endif
    return v_color.rgb * (kAmbient + kDiffuse * height);
}
