// What must not happen while a test runs, noticed wherever it happens.
#pragma once

#include <zx3DQt/BGFXDefaultCallback.h>

#include <string>
#include <vector>

namespace zarvex::testing {

/// Collects troubles of the process: X errors, Qt's warnings, bgfx's fatal errors and leak reports.
/// Thread-safe.
class Trouble {
public:
    /// Listens to X errors and to Qt's messages from here on.
    static void Watch();

    static void Report(std::string text);

    /// What was reported since the last call.
    static std::vector<std::string> Take();
};

/// Reports bgfx's fatal errors, its leaked handles, every message of zx3D and every one of Vulkan's
/// validation layer as trouble. A debug build of bgfx loads that layer where it is installed.
class TroubleCallback : public zx3DQt::BGFXDefaultCallback {
public:
    void fatal(char const* filePath, std::uint16_t line, bgfx::Fatal::Enum code, char const* str) override;
    void traceVargs(char const* filePath, std::uint16_t line, char const* format,
                    std::va_list argList) override;
};

} // namespace zarvex::testing
