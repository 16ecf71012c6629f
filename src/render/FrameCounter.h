// Counts what a frame consists of, and says what is missing in it.
#pragma once

#include <zx3DQt/FrameStatistics.h>

#include <zx3D/Message.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace zarvex::zx3DQt {

/// Fills the statistics of one renderer's frames. What is left out is a warning, said once per cause: again
/// only after a frame in which it did not occur.
class FrameCounter {
public:
    void StartFrame();

    void AddCall() { ++m_statistics.calls; }
    void AddPrimitives(std::uint64_t primitives, std::uint64_t bytes) {
        m_statistics.primitives += primitives;
        m_statistics.bytes += bytes;
    }
    void AddWithoutOwnBuffers();
    void LeaveOut(LeftOutReason reason);

    FrameStatistics const& GetStatistics() const { return m_statistics; }

private:
    FrameStatistics m_statistics;
    zx3D::OncePerCause m_withoutOwnBuffers;
    std::array<zx3D::OncePerCause, static_cast<std::size_t>(LeftOutReason::Count)> m_leftOut;
};

} // namespace zarvex::zx3DQt
