// Timing frames in turn.
#pragma once

#include "runner/Workload.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zarvex::benchmarks {

/// Milliseconds of one way to draw, frame by frame.
using Times = std::vector<double>;

struct Summary {
    double median = 0.0, min = 0.0, max = 0.0;
};

Summary Summarize(Times times);

/// The median of the quotients of times that were measured next to each other. What disturbs a machine for
/// longer than a frame disturbs both of a pair, so this moves less than the quotient of the medians.
double MedianRatio(Times const& numerators, Times const& denominators);

/// Two things timed in turn: A B, B A, A B ...
struct Pair {
    Times first, second;
};

Pair MeasureFrames(Workload& workload, std::size_t frames, std::size_t warmUpFrames);

/// The library's frame, and a copy of `GetByteCount()` bytes from memory to memory.
Pair MeasureAgainstMemcpy(Workload& workload, std::size_t frames, std::size_t warmUpFrames);

/// Whether both ways do the same.
struct Comparison {
    FrameResult library;
    bool sameWork = false;       ///< as far as bgfx counts it
    std::size_t drawnPixels = 0; ///< of the library's picture: those that have not the clear colour
    std::size_t differentPixels = 0;
    int largestDifference = 0; ///< of a colour channel, in 255ths
};

/// Draws a frame in each way. On Noop the pictures are left out. Unequal pictures are written to the working
/// folder.
Comparison Compare(Workload& workload);

} // namespace zarvex::benchmarks
