// What picking reads of a pixel, beside its first colour, which is (number of the element in the draw call, number of the
// draw call from 1 on, number of the instance in it, 1): the place in the batch that the pixel shows, and its depth.
// u_pickDraw is (number of the draw call, 0, 0, 0).

layout(location = 1) out vec4 o_place;

uniform vec4 u_pickDraw;

// `element` is the place, and the number of the element.
vec4 Picked(vec4 element, float depth) {
    o_place = vec4(element.xyz, depth);
    return vec4(floor(element.w + 0.5), u_pickDraw.x, 0.0, 1.0);
}
