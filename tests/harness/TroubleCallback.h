// What bgfx must not say while a test runs.
#pragma once

#include <zx3DQt/BGFXDefaultCallback.h>

namespace zarvex::testing {

/// Reports bgfx's fatal errors, its leaked handles, every message of a zx3D that has no message handler and
/// every one of Vulkan's validation layer as trouble. A debug build of bgfx loads that layer where it is
/// installed.
class TroubleCallback : public zx3DQt::BGFXDefaultCallback {
public:
    void fatal(char const* filePath, std::uint16_t line, bgfx::Fatal::Enum code, char const* str) override;
    void traceVargs(char const* filePath, std::uint16_t line, char const* format,
                    std::va_list argList) override;
};

} // namespace zarvex::testing
