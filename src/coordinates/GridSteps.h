// The positions of grid lines along an axis.
#pragma once

#include <algorithm>
#include <cstddef>

namespace zarvex::zx3DQt {

/// Says, the first time, that a grid was cut short.
void WarnOfEndlessGrid(float first, float step, float end);

/// Steps to reserve memory for: about as many as the function below visits, 4,096 at most.
inline std::size_t EstimateGridSteps(float first, float step, float end) {
    constexpr float most = 4096.0f;
    float const steps = (end - first) / step + 1.0f;
    return steps >= 1.0f ? static_cast<std::size_t>(std::min(steps, most)) : 0;
}

/// Calls `visit` with `first`, `first` + `step`, ... below `end`. Stops where a step does not come nearer to
/// the end, and after a million.
template<typename Visit>
void ForEachGridStep(float first, float step, float end, Visit visit) {
    constexpr int mostSteps = 1'000'000;
    float position = first;
    for (int count = 0; end > position; ++count) {
        if (count == mostSteps)
            return WarnOfEndlessGrid(first, step, end);
        visit(position);
        float const next = position + step;
        if (next <= position)
            return WarnOfEndlessGrid(first, step, end);
        position = next;
    }
}

} // namespace zarvex::zx3DQt
