// The warnings about what is missing in a frame.
#include "FrameCounter.h"

#include "../frame/Logging.h"

namespace zarvex::zx3DQt {

namespace {

struct Warning {
    char const* name;
    char const* text;
};

/// By `LeftOutReason`.
constexpr Warning kWarnings[] = {
    {"draw.no-transient-space",
     "Draw calls are left out: bgfx's transient buffers are full. ContextOptions has "
     "their sizes"},
    {"draw.no-buffer", "Draw calls are left out: bgfx has no buffer or texture left"},
    {"draw.no-program", "Draw calls are left out: their shader program is invalid"},
    {"draw.no-frame-buffer", "A frame is left out: its frame buffer could not be created"},
};
static_assert(std::size(kWarnings) == static_cast<std::size_t>(LeftOutReason::Count));

void Say(Warning const& warning) {
    LogWarning(warning.name, [&] { return QString::fromUtf8(warning.text); });
}

} // namespace

void FrameCounter::StartFrame() {
    if (m_statistics.withoutOwnBuffers == 0)
        m_withoutOwnBuffers.Clear();
    for (std::size_t i = 0; i < m_leftOut.size(); ++i) {
        if (m_statistics.leftOut[i] == 0)
            m_leftOut[i].Clear();
    }
    m_statistics = {};
}

void FrameCounter::AddWithoutOwnBuffers() {
    ++m_statistics.withoutOwnBuffers;
    m_withoutOwnBuffers.Raise([] {
        Say({"draw.shared-buffer",
             "Too many calls of wide lines or large points for a buffer each: the rest of "
             "them is expanded on the CPU, into the transient buffers"});
    });
}

void FrameCounter::LeaveOut(LeftOutReason reason) {
    auto const index = static_cast<std::size_t>(reason);
    ++m_statistics.leftOut[index];
    m_leftOut[index].Raise([&] { Say(kWarnings[index]); });
}

} // namespace zarvex::zx3DQt
