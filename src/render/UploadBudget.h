// How much batches hand to bgfx in a frame.
#pragma once

#include <algorithm>
#include <cstdint>

namespace zarvex::zx3DQt {

/// What is left of a frame's bytes, of one renderer.
class UploadBudget {
public:
    void SetLimit(std::uint64_t bytesPerFrame) { m_left = m_limit = bytesPerFrame; }
    std::uint64_t GetLimit() const { return m_limit; }

    void StartFrame() { m_left = m_limit; }
    std::uint64_t GetLeft() const { return m_left; }
    void Take(std::uint64_t bytes) { m_left -= std::min(bytes, m_left); }

private:
    std::uint64_t m_limit = 16 * 1024 * 1024;
    std::uint64_t m_left = m_limit;
};

} // namespace zarvex::zx3DQt
