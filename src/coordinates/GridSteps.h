// The positions of grid lines along an axis.
#pragma once

namespace zarvex::zx3DQt {

/// Says, the first time, that a grid was cut short.
void WarnOfEndlessGrid(float first, float step, float end);

/// Calls `visit` with `first`, `first` + `step`, ... below `end`. Stops where a step does not come nearer to
/// the end, and after a million.
template<typename Visit>
void ForEachGridStep(float first, float step, float end, Visit visit) {
    constexpr int mostSteps = 1'000'000;
    int count = 0;
    for (float position = first; end > position;) {
        visit(position);
        float const next = position + step;
        if (next <= position || ++count == mostSteps) {
            WarnOfEndlessGrid(first, step, end);
            return;
        }
        position = next;
    }
}

} // namespace zarvex::zx3DQt
