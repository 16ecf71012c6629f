// What frames leave behind in memory.
#pragma once

#include "runner/Workload.h"

#include <cstddef>
#include <string>

namespace zarvex::benchmarks {

/// What a process uses, bytes.
struct MemoryUse {
    std::size_t allocated = 0; ///< handed out by malloc, by whomever it was asked
    std::size_t resident = 0;  ///< in the machine's memory: code, shared memory and what malloc keeps, too
};

/// Use once everything has its size, and many frames later.
struct MemoryGrowth {
    /// Bytes that are no growth: a page more in the atlas of glyphs takes 16 KiB besides its texture, and
    /// what a driver holds goes up and down with the frames that it has in the works. Whoever loses one of
    /// malloc's smallest blocks, 32 bytes, in every fourth of 10,000 frames is found.
    static constexpr std::size_t kAllowance = 60 << 10;

    std::size_t firstFrames = 0, lastFrames = 0;
    MemoryUse first, last;

    bool IsSteady() const { return last.allocated <= first.allocated + kAllowance; }
};

/// 100 frames on Noop. Otherwise more: bgfx times its frames with 1,024 pairs of queries, one after the
/// other, and drivers take memory for each when it is used for the first time.
std::size_t FramesUntilSteady();

/// Draws `frames` frames, more than `FramesUntilSteady()`.
MemoryGrowth MeasureMemory(Workload& workload, Side side, std::size_t frames);

struct MemoryReport {
    std::string workload, variant, backend;
    Side side = Side::Library;
    MemoryGrowth growth;
};

void PrintMemoryHeader();
void PrintMemoryRow(MemoryReport const& report);

} // namespace zarvex::benchmarks
