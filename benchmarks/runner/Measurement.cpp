// The clock, the statistics and the check that both ways draw the same.
#include "runner/Measurement.h"

#include "runner/Stage.h"

#include <bgfx/bgfx.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>

#include <time.h>

namespace zarvex::benchmarks {

namespace {

/// Milliseconds on the clock that fits. A frame that is drawn takes what passes until its pixels are there.
/// On Noop only this thread's work counts, so that other processes do not matter.
double Now() {
    timespec now{};
    clock_gettime(DrawsNothing() ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

template<typename Action>
double Milliseconds(Action action) {
    double const start = Now();
    action();
    return Now() - start;
}

/// On Noop nothing is waited for within a frame: lets bgfx's render thread finish it, so that the next one
/// does not pay for it.
void Settle() {
    if (DrawsNothing())
        bgfx::frame();
}

template<typename Action>
double TimeSettled(Action action) {
    double const time = Milliseconds(action);
    Settle();
    return time;
}

/// Frames that are drawn in one way before it is the other's turn.
constexpr std::size_t kRunLength = 10;
/// Of those, the first, which are not timed: they find the caches full of the other's memory, which an
/// application that draws all frames in one way never does.
constexpr std::size_t kUntimedFrames = 2;

template<typename Action>
void TimeRun(Times& times, std::size_t frames, Action action) {
    for (std::size_t i = 0; i < kRunLength && times.size() < frames; ++i) {
        double const time = TimeSettled(action);
        if (i >= kUntimedFrames)
            times.push_back(time);
    }
}

/// In short runs by turns, so that what burdens the machine for a while burdens both. Which of the two goes
/// first changes each time: a burden that comes and goes with their rhythm would always meet the same one.
template<typename First, typename Second>
Pair Alternate(std::size_t frames, std::size_t warmUpFrames, First first, Second second) {
    for (std::size_t i = 0; i < warmUpFrames; ++i) {
        TimeSettled(first);
        TimeSettled(second);
    }
    Pair times;
    for (bool swapped = false; times.first.size() < frames; swapped = !swapped) {
        if (swapped)
            TimeRun(times.second, frames, second);
        TimeRun(times.first, frames, first);
        if (!swapped)
            TimeRun(times.second, frames, second);
    }
    return times;
}

double Median(Times times) {
    auto const middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    if (times.size() % 2 != 0)
        return *middle;
    return (*std::max_element(times.begin(), middle) + *middle) / 2.0;
}

bool IsSameWork(FrameResult const& a, FrameResult const& b) {
    return a.draws == b.draws && a.dispatches == b.dispatches &&
           a.transientVertexBytes == b.transientVertexBytes && a.transientIndexBytes == b.transientIndexBytes;
}

int LargestChannelDifference(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
}

void ComparePixels(QImage const& library, QImage const& floor, Comparison& comparison) {
    QRgb const background = qRgba(26, 26, 26, 255);
    for (int y = 0; y < library.height(); ++y) {
        for (int x = 0; x < library.width(); ++x) {
            QRgb const pixel = library.pixel(x, y);
            int const difference = LargestChannelDifference(pixel, floor.pixel(x, y));
            comparison.drawnPixels += pixel != background;
            comparison.differentPixels += difference != 0;
            comparison.largestDifference = std::max(comparison.largestDifference, difference);
        }
    }
    if (comparison.differentPixels != 0) {
        library.save("bench-library.png");
        floor.save("bench-floor.png");
    }
}

} // namespace

Summary Summarize(Times times) {
    auto const [min, max] = std::minmax_element(times.begin(), times.end());
    return {Median(times), *min, *max};
}

double MedianRatio(Times const& numerators, Times const& denominators) {
    Times ratios(numerators.size());
    std::transform(numerators.begin(), numerators.end(), denominators.begin(), ratios.begin(),
                   std::divides<double>());
    return Median(std::move(ratios));
}

Pair MeasureFrames(Workload& workload, std::size_t frames, std::size_t warmUpFrames) {
    return Alternate(frames, warmUpFrames, [&] { workload.RunLibrary(); }, [&] { workload.RunFloor(); });
}

Pair MeasureAgainstMemcpy(Workload& workload, std::size_t frames, std::size_t warmUpFrames) {
    std::vector<char> const source(workload.GetByteCount(), 'x');
    std::vector<char> copy(source.size());
    return Alternate(
        frames, warmUpFrames, [&] { workload.RunLibrary(); },
        [&] {
            std::memcpy(copy.data(), source.data(), source.size());
            asm volatile("" ::"r"(copy.data()) : "memory"); // keeps the copy, which nobody reads
        });
}

Comparison Compare(Workload& workload) {
    Comparison comparison;
    comparison.library = workload.InspectLibrary();
    FrameResult const floor = workload.InspectFloor();
    comparison.sameWork = IsSameWork(comparison.library, floor);
    ComparePixels(comparison.library.picture, floor.picture, comparison);
    return comparison;
}

} // namespace zarvex::benchmarks
