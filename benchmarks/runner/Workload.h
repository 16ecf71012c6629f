// What is measured: the same picture drawn in two ways.
#pragma once

#include <QImage>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zarvex::benchmarks {

/// What a frame came to: its picture (null on Noop) and what bgfx counted of it.
struct FrameResult {
    QImage picture;               ///< top row first
    std::uint32_t draws = 0;      ///< on Noop bgfx counts neither these
    std::uint32_t dispatches = 0; ///< nor these
    std::int32_t transientVertexBytes = 0;
    std::int32_t transientIndexBytes = 0;
};

/// One thing to draw, with the library and by hand. The library runs as long as it exists.
class Workload {
public:
    Workload() = default;
    virtual ~Workload() = default;

    Workload(Workload const&) = delete;
    Workload& operator=(Workload const&) = delete;

    /// Everything from the start of a frame until the frame is done: what is timed.
    virtual void RunLibrary() = 0;
    /// The floor: the same by hand, straight on bgfx.
    virtual void RunFloor() = 0;

    /// The same two frames, looked at instead of timed.
    virtual FrameResult InspectLibrary() = 0;
    virtual FrameResult InspectFloor() = 0;

    /// Bytes that each of them writes a frame for bgfx to read; 0 when a comparison with memcpy says nothing.
    virtual std::size_t GetByteCount() const { return 0; }
};

/// Which of the two ways to draw.
enum class Side { Library, Floor };

/// Runs the same way `frames` times.
inline void Draw(Workload& workload, Side side, std::size_t frames) {
    for (std::size_t i = 0; i < frames; ++i) {
        if (side == Side::Library)
            workload.RunLibrary();
        else
            workload.RunFloor();
    }
}

/// A workload that can be chosen from the command line.
struct WorkloadKind {
    std::string name;                  ///< short, for the command line
    std::string title;                 ///< for people
    std::vector<std::string> variants; ///< ways to run it, at least one
    std::size_t warmUpFrames = 3;      ///< of each of the two, not counted
    std::function<std::unique_ptr<Workload>(std::string const& variant)> create;
};

} // namespace zarvex::benchmarks
