// Formatting of what bgfx reports, and the end of the application after a fatal error.
#include <zx3DQt/BGFXDefaultCallback.h>

#include "Logging.h"

#include <bx/string.h>

#include <QFileInfo>
#include <QString>

#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

namespace zarvex::zx3DQt {

namespace {

char const* NameOf(bgfx::Fatal::Enum code) {
    switch (code) {
    case bgfx::Fatal::DebugCheck:
        return "DebugCheck";
    case bgfx::Fatal::InvalidShader:
        return "InvalidShader";
    case bgfx::Fatal::UnableToInitialize:
        return "UnableToInitialize";
    case bgfx::Fatal::UnableToCreateTexture:
    case bgfx::Fatal::DeviceLost: // reported under the same name
        return "UnableToCreateTexture";
    default:
        return "UNKNOWN";
    }
}

/// True for conversions that only bx's formatter knows: "%S", which takes a `bx::StringView` there, and the
/// length "I64".
bool IsForBx(char const* format) {
    for (char const* next = std::strchr(format, '%'); next != nullptr; next = std::strchr(next, '%')) {
        next += 1 + std::strspn(next + 1, " -+#0123456789.*hljtz");
        if (*next == 'S' || *next == 'I')
            return true;
        if (*next != '\0')
            ++next;
    }
    return false;
}

/// The formatted text, cut to 4095 characters.
QString Format(char const* format, std::va_list argList) {
    std::array<char, 4096> buffer;
    if (IsForBx(format))
        bx::vsnprintf(buffer.data(), static_cast<std::int32_t>(buffer.size()), format, argList);
    else
        std::vsnprintf(buffer.data(), buffer.size(), format, argList);
    return QString::fromUtf8(buffer.data());
}

void StripLineEnds(QString& text) {
    while (text.endsWith(u'\n') || text.endsWith(u'\r'))
        text.chop(1);
}

template<typename... Pieces>
void LogWarning(Pieces const&... pieces) {
    if (BgfxLog().isWarningEnabled())
        (LoggerOf(BgfxLog()).warning() << ... << pieces);
}

} // namespace

BGFXDefaultCallback::BGFXDefaultCallback() = default;
BGFXDefaultCallback::BGFXDefaultCallback(BGFXDefaultCallback const&) = default;
BGFXDefaultCallback& BGFXDefaultCallback::operator=(BGFXDefaultCallback const&) = default;
BGFXDefaultCallback::~BGFXDefaultCallback() = default;

void BGFXDefaultCallback::registerFatalAbortHandler(std::function<void()> handler) {
    m_fatalAbortHandler = std::move(handler);
}

void BGFXDefaultCallback::fatal(char const* filePath, std::uint16_t line, bgfx::Fatal::Enum code,
                                char const* str) {
    QString const message = QString("BGFX encountered a fatal error at %1:%2 [error:%3]: %4")
                                .arg(filePath)
                                .arg(line)
                                .arg(NameOf(code))
                                .arg(str);
    if (BgfxLog().isCriticalEnabled())
        LoggerOf(BgfxLog()).critical().noquote() << message;
    if (m_fatalAbortHandler) {
        (*m_fatalAbortHandler)();
        return;
    }
    // The printf form: fatal messages cannot be streamed before Qt 6.5.
    LoggerOf(BgfxLog()).fatal("Aborting application ...");
}

void BGFXDefaultCallback::traceVargs(char const* filePath, std::uint16_t line, char const* format,
                                     std::va_list argList) {
    QString text = Format(format, argList);
    if (text == "BGFX ") // the prefix of bgfx's lines, which it sends by itself
        return;
    StripLineEnds(text);
    text.replace(u'\t', "  ");
    if (BgfxLog().isInfoEnabled()) {
        LoggerOf(BgfxLog()).info().noquote()
            << QString("%1 (%2): %3").arg(QFileInfo(filePath).fileName()).arg(line).arg(text);
    }
}

void BGFXDefaultCallback::profilerBegin(char const*, std::uint32_t, char const*, std::uint16_t) {}

void BGFXDefaultCallback::profilerBeginLiteral(char const*, std::uint32_t, char const*, std::uint16_t) {}

void BGFXDefaultCallback::profilerEnd() {}

std::uint32_t BGFXDefaultCallback::cacheReadSize(std::uint64_t) {
    return 0;
}

bool BGFXDefaultCallback::cacheRead(std::uint64_t, void*, std::uint32_t) {
    return false;
}

void BGFXDefaultCallback::cacheWrite(std::uint64_t, void const*, std::uint32_t) {}

void BGFXDefaultCallback::screenShot(char const* filePath, std::uint32_t width, std::uint32_t height,
                                     std::uint32_t pitch, ZX3D_SCREENSHOT_FORMAT void const*, std::uint32_t,
                                     bool yflip) {
    LogWarning("Screenshot captured (not implemented):", filePath, "Width:", width, "Height", height,
               "Pitch:", pitch, "Y-flip:", yflip);
}

void BGFXDefaultCallback::captureBegin(std::uint32_t width, std::uint32_t height, std::uint32_t pitch,
                                       bgfx::TextureFormat::Enum format, bool yflip) {
    LogWarning("Video capture begin (not implemented):", "Width:", width, "Height", height, "Pitch:", pitch,
               "Format:", static_cast<int>(format), "Y-flip:", yflip);
}

void BGFXDefaultCallback::captureEnd() {
    LogWarning("Video capture end (not implemented)");
}

void BGFXDefaultCallback::captureFrame(void const*, std::uint32_t size) {
    LogWarning("Frame captured (not implemented):", " size: ", size, " bytes ");
}

} // namespace zarvex::zx3DQt
