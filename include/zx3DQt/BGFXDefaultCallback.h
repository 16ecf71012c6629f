// What bgfx reports, routed into Qt's logging.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/BgfxVersion.h>

#include <cstdarg>
#include <cstdint>
#include <functional>
#include <optional>

namespace zarvex::zx3DQt {

/// Sends bgfx's trace text, warnings and fatal errors to the logging category "zarvex.bgfx".
///
/// A fatal error is logged; then the registered handler is called or, without one, the application ends
/// through Qt's fatal message. There is no shader cache, and screenshots and video capture are only logged.
///
/// Thread: bgfx calls it from any thread, so register the handler before the object is passed to `Init`.
/// Lifetime: as long as bgfx runs; `Init` takes ownership.
class ZX3DQT_EXPORT BGFXDefaultCallback : public bgfx::CallbackI {
public:
    /// Without a handler.
    BGFXDefaultCallback();
    /// With a copy of the other's handler.
    /// @{
    BGFXDefaultCallback(BGFXDefaultCallback const&);
    BGFXDefaultCallback& operator=(BGFXDefaultCallback const&);
    /// @}
    ~BGFXDefaultCallback() override;

    /// Makes `handler` the one that a fatal error calls instead of ending the application; replaces an
    /// earlier one. It is called on whatever thread met the error, and bgfx continues when it returns. An
    /// empty function counts as registered and throws `std::bad_function_call` when it is called.
    void registerFatalAbortHandler(std::function<void()> handler);

    /// Logs the error as critical, then calls the handler or ends the application.
    void fatal(char const* filePath, std::uint16_t line, bgfx::Fatal::Enum code, char const* str) override;

    /// Logs the text as information, with the name and line of the source file before it. It is formatted as
    /// by C's `vsnprintf`, and cut to 4,095 bytes; but a format with "%S", which in bgfx's texts takes a
    /// `bx::StringView`, by bx, which cuts what is wider than its field, and knows no "%a".
    void traceVargs(char const* filePath, std::uint16_t line, char const* format,
                    std::va_list argList) override;

    /// Does nothing.
    /// @{
    void profilerBegin(char const* name, std::uint32_t abgr, char const* filePath,
                       std::uint16_t line) override;
    void profilerBeginLiteral(char const* name, std::uint32_t abgr, char const* filePath,
                              std::uint16_t line) override;
    void profilerEnd() override;
    /// @}

    /// There is no cache of shaders: nothing is found, and nothing is kept.
    /// @{
    std::uint32_t cacheReadSize(std::uint64_t id) override;
    bool cacheRead(std::uint64_t id, void* data, std::uint32_t size) override;
    void cacheWrite(std::uint64_t id, void const* data, std::uint32_t size) override;
    /// @}

    /// Logs a warning that says what came; the pixels are not kept.
    /// @{
    void screenShot(char const* filePath, std::uint32_t width, std::uint32_t height, std::uint32_t pitch,
                    ZX3D_SCREENSHOT_FORMAT void const* data, std::uint32_t size, bool yflip) override;
    void captureBegin(std::uint32_t width, std::uint32_t height, std::uint32_t pitch,
                      bgfx::TextureFormat::Enum format, bool yflip) override;
    void captureEnd() override;
    void captureFrame(void const* data, std::uint32_t size) override;
    /// @}

private:
    std::optional<std::function<void()>> m_fatalAbortHandler;
};

} // namespace zarvex::zx3DQt
