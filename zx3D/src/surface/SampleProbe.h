// How many samples a renderer really has.
#pragma once

#include <cstdint>

namespace zarvex::zx3D {

/// bgfx takes the nearest number of samples that the GPU has, and does not say which: this draws an edge and
/// looks at how many steps it has. Once in a run for each number.
class SampleProbe {
public:
    /// What is known without drawing; 0 when nothing is.
    static std::uint32_t Recall(std::uint32_t asked);

    /// Samples in a pixel of a texture that is created for so many. Submits frames. What was asked for where
    /// that cannot be measured.
    static std::uint32_t Measure(std::uint32_t asked);
};

} // namespace zarvex::zx3D
