// The fragment stage of what fades with distance: u_fadeRange is (where it begins, 1 / how far it reaches, 0, 0), world
// units.

layout(location = 4) in vec4 v_place;

uniform vec4 u_fadeRange;

// What is left of a colour: 1 up to where the fade begins, 0 where it ends, without a visible border at either.
float Rest() {
    float part = clamp((length(v_place.xyz / v_place.w) - u_fadeRange.x) * u_fadeRange.y, 0.0, 1.0);
    return 1.0 - part * part * (3.0 - 2.0 * part);
}

// The colour that is left, or none at all: what is invisible hides nothing in states that write depth.
vec4 Faded(vec4 color) {
    float rest = Rest();
    if (!(rest > 0.0)) {
        discard;
    }
    return vec4(color.rgb, color.a * rest);
}
