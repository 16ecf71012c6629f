// Asks malloc and the kernel, and prints what they say.
#include "runner/Memory.h"

#include "runner/Stage.h"

#include <bgfx/bgfx.h>

#include <cstddef>
#include <cstdio>
#include <fstream>

#include <malloc.h>
#include <unistd.h>

namespace zarvex::benchmarks {

namespace {

/// Once bgfx's render thread is through with what was drawn.
MemoryUse Ask() {
    bgfx::frame();
    bgfx::frame();
    struct mallinfo2 const info = mallinfo2();
    std::size_t totalPages = 0, residentPages = 0;
    std::ifstream("/proc/self/statm") >> totalPages >> residentPages;
    return {info.uordblks + info.hblkhd, residentPages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE))};
}

double ToKiB(std::size_t bytes) {
    return static_cast<double>(bytes) / 1024.0;
}

} // namespace

std::size_t FramesUntilSteady() {
    return DrawsNothing() ? 100 : 1200;
}

MemoryGrowth MeasureMemory(Workload& workload, Side side, std::size_t frames) {
    MemoryGrowth growth;
    growth.firstFrames = FramesUntilSteady();
    growth.lastFrames = frames;
    Draw(workload, side, growth.firstFrames);
    growth.first = Ask();
    Draw(workload, side, frames - growth.firstFrames);
    growth.last = Ask();
    return growth;
}

void PrintMemoryHeader() {
    std::printf("%-28s  %13s  %32s  %26s\n", "", "", "allocated, KiB (growth: bytes)", "resident, KiB");
    std::printf("%-4s %-8s %-7s %-7s %6s %6s  %10s %10s %10s  %8s %8s %8s\n", "", "variant", "backend",
                "side", "frames", "frames", "first", "last", "growth", "first", "last", "growth");
}

void PrintMemoryRow(MemoryReport const& report) {
    auto const& [workload, variant, backend, side, growth] = report;
    auto const grown = static_cast<std::ptrdiff_t>(growth.last.allocated - growth.first.allocated);
    std::printf("%-4s %-8s %-7s %-7s %6zu %6zu  %10.1f %10.1f %10td  %8.0f %8.0f %8.0f%s\n", workload.c_str(),
                variant.c_str(), backend.c_str(), side == Side::Library ? "library" : "floor",
                growth.firstFrames, growth.lastFrames, ToKiB(growth.first.allocated),
                ToKiB(growth.last.allocated), grown, ToKiB(growth.first.resident),
                ToKiB(growth.last.resident), ToKiB(growth.last.resident) - ToKiB(growth.first.resident),
                growth.IsSteady() ? "" : "  GROWS");
}

} // namespace zarvex::benchmarks
