// Drawing as if the GPU had no compute shaders.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>

namespace zarvex::testing {

/// For its lifetime bgfx's capabilities lack compute. bgfx must run; it keeps them in one record of the
/// process, which it fills anew at its next start.
class WithoutCompute {
public:
    WithoutCompute() { Supported() &= ~BGFX_CAPS_COMPUTE; }
    ~WithoutCompute() { Supported() = m_before; }

    WithoutCompute(WithoutCompute const&) = delete;
    WithoutCompute& operator=(WithoutCompute const&) = delete;

private:
    static std::uint64_t& Supported() { return const_cast<bgfx::Caps&>(*bgfx::getCaps()).supported; }

    std::uint64_t m_before = Supported();
};

} // namespace zarvex::testing
