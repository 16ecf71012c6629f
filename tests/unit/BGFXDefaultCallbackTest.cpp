// What the default callback logs, and how it ends the application.
#include <zx3DQt/BGFXDefaultCallback.h>

#include <LogCapture.h>

#include <bx/string.h>

#include <QLoggingCategory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr char kCategory[] = "zarvex.bgfx";

/// Calls what bgfx calls, with the format from the versions on that tell it.
template<typename Callback>
void TakeScreenShot(Callback& callback, char const* path, std::uint32_t width, std::uint32_t height,
                    std::uint32_t pitch, bool yflip) {
    std::uint32_t const size = pitch * height;
    if constexpr (requires { callback.screenShot(path, width, height, pitch, nullptr, size, yflip); }) {
        callback.screenShot(path, width, height, pitch, nullptr, size, yflip);
    } else {
        callback.screenShot(path, width, height, pitch, bgfx::TextureFormat::BGRA8, nullptr, size, yflip);
    }
}

[[gnu::format(printf, 4, 5)]] void Trace(bgfx::CallbackI& callback, char const* filePath, std::uint16_t line,
                                         char const* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    callback.traceVargs(filePath, line, format, arguments);
    va_end(arguments);
}

/// The same for formats that mean something else to the compiler.
void TraceForBx(bgfx::CallbackI& callback, char const* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    callback.traceVargs("a.cpp", 1, format, arguments);
    va_end(arguments);
}

/// What a trace of one text, from file.cpp line 1, is logged as.
std::string Traced(std::string const& text) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    Trace(callback, "file.cpp", 1, "%s", text.c_str());
    std::vector<std::string> const texts = log.Texts(kCategory);
    return texts.size() == 1 ? texts[0] : "(" + std::to_string(texts.size()) + " lines)";
}

std::string FatalText(bgfx::Fatal::Enum code) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    callback.registerFatalAbortHandler([] {});
    callback.fatal("/src/bgfx/renderer.cpp", 7, code, "no memory");
    std::vector<LogLine> const lines = log.Lines();
    return lines.size() == 1 ? lines[0].text : "(" + std::to_string(lines.size()) + " lines)";
}

/// Prints messages where a parent process reads them; "category|level|text".
void PrintMessage(QtMsgType level, QMessageLogContext const& context, QString const& text) {
    std::fprintf(stderr, "%s|%d|%s\n", context.category, int(level), qPrintable(text));
}

void FatalWithoutHandler() {
    qInstallMessageHandler(PrintMessage);
    BGFXDefaultCallback callback;
    callback.fatal("/src/bgfx.cpp", 12, bgfx::Fatal::InvalidShader, "broken");
}

/// Switches levels of the category off for its lifetime.
class Silence {
public:
    explicit Silence(char const* rules) { QLoggingCategory::setFilterRules(rules); }
    ~Silence() { QLoggingCategory::setFilterRules(""); }
};

} // namespace

TEST(BGFXDefaultCallbackTest, ATraceIsLoggedWithFileNameAndLine) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    Trace(callback, "/home/src/bgfx/renderer_d3d11", 42, "%s", "hello");
    EXPECT_THAT(log.Lines(), ElementsAre(LogLine{QtInfoMsg, kCategory, "renderer_d3d11 (42): hello", false}));
}

TEST(BGFXDefaultCallbackTest, TraceArgumentsAreFormatted) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    Trace(callback, "a.cpp", 1, "%d|%u|%5.2f|%-4s|%04x|%c|%%|%ld|%+d", -3, 7u, 1.5, "ab", 0xBEu, 'z',
          123456789L, 4);
    EXPECT_THAT(log.Texts(kCategory), ElementsAre("a.cpp (1): -3|7| 1.50|ab  |00be|z|%|123456789|+4"));
}

TEST(BGFXDefaultCallbackTest, NumbersWiderThanTheirFieldAreNotCut) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    Trace(callback, "a.cpp", 1, "%2d|%-2s|%3x|%e|%#x", 12345, "abc", 0x12345u, 1.5, 255u);
    EXPECT_THAT(log.Texts(kCategory), ElementsAre("a.cpp (1): 12345|abc|12345|1.500000e+00|0xff"));
}

TEST(BGFXDefaultCallbackTest, StringViewsOfBxAreFormatted) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    bx::StringView const view("texture of which nothing more", 7);
    TraceForBx(callback, "%3d%% '%S'", 5, &view);
    EXPECT_THAT(log.Texts(kCategory), ElementsAre("a.cpp (1):   5% 'texture'"));
}

TEST(BGFXDefaultCallbackTest, TheLonePrefixOfBgfxsLinesIsDropped) {
    EXPECT_EQ(Traced("BGFX "), "(0 lines)");
}

TEST(BGFXDefaultCallbackTest, ThePrefixWithAnythingAfterItIsLogged) {
    EXPECT_EQ(Traced("BGFX x"), "file.cpp (1): BGFX x");
    EXPECT_EQ(Traced("BGFX \n"), "file.cpp (1): BGFX ");
    EXPECT_EQ(Traced("BGFX  "), "file.cpp (1): BGFX  ");
    EXPECT_EQ(Traced("BGFX"), "file.cpp (1): BGFX");
}

TEST(BGFXDefaultCallbackTest, TrailingLineEndsAreStrippedInAnyMix) {
    EXPECT_EQ(Traced("abc\r\n\n"), "file.cpp (1): abc");
    EXPECT_EQ(Traced("abc\n\r\r\n"), "file.cpp (1): abc");
    EXPECT_EQ(Traced("\n"), "file.cpp (1): ");
}

TEST(BGFXDefaultCallbackTest, LineEndsInsideStay) {
    EXPECT_EQ(Traced("a\nb\n"), "file.cpp (1): a\nb");
}

TEST(BGFXDefaultCallbackTest, EveryTabBecomesTwoBlanks) {
    EXPECT_EQ(Traced("a\tb"), "file.cpp (1): a  b");
    EXPECT_EQ(Traced("\t\ta\t\n"), "file.cpp (1):     a  ");
}

TEST(BGFXDefaultCallbackTest, ATabBeforeALineEndIsNotALineEnd) {
    EXPECT_EQ(Traced("a\n\t"), "file.cpp (1): a\n  ");
}

TEST(BGFXDefaultCallbackTest, TraceTextIsUtf8) {
    EXPECT_EQ(Traced("\xC3\xA4\xE2\x82\xAC"), "file.cpp (1): \xC3\xA4\xE2\x82\xAC");
}

TEST(BGFXDefaultCallbackTest, TraceTextIsNotQuotedOrEscaped) {
    EXPECT_EQ(Traced("say \"hi\" \\ 100%"), "file.cpp (1): say \"hi\" \\ 100%");
}

TEST(BGFXDefaultCallbackTest, TraceTextIsCutAt4095Characters) {
    EXPECT_EQ(Traced(std::string(4095, 'a')), "file.cpp (1): " + std::string(4095, 'a'));
    EXPECT_EQ(Traced(std::string(5000, 'a')), "file.cpp (1): " + std::string(4095, 'a'));
}

TEST(BGFXDefaultCallbackTest, AFatalErrorIsLoggedAsCriticalWithTheWholePath) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    callback.registerFatalAbortHandler([] {});
    callback.fatal("/src/bgfx/renderer.cpp", 7, bgfx::Fatal::InvalidShader, "\"quoted\"");
    EXPECT_THAT(log.Lines(), ElementsAre(LogLine{QtCriticalMsg, kCategory,
                                                 "BGFX encountered a fatal error at /src/bgfx/renderer.cpp:7 "
                                                 "[error:InvalidShader]: \"quoted\"",
                                                 false}));
}

TEST(BGFXDefaultCallbackTest, FatalCodesHaveTheirNames) {
    std::string const before = "BGFX encountered a fatal error at /src/bgfx/renderer.cpp:7 [error:";
    std::string const after = "]: no memory";
    EXPECT_EQ(FatalText(bgfx::Fatal::Enum(0)), before + "DebugCheck" + after);
    EXPECT_EQ(FatalText(bgfx::Fatal::Enum(1)), before + "InvalidShader" + after);
    EXPECT_EQ(FatalText(bgfx::Fatal::Enum(2)), before + "UnableToInitialize" + after);
    EXPECT_EQ(FatalText(bgfx::Fatal::Enum(3)), before + "UnableToCreateTexture" + after);
    EXPECT_EQ(FatalText(bgfx::Fatal::Enum(4)), before + "UnableToCreateTexture" + after);
    EXPECT_EQ(FatalText(bgfx::Fatal::Enum(5)), before + "UNKNOWN" + after);
    EXPECT_EQ(FatalText(bgfx::Fatal::Enum(7)), before + "UNKNOWN" + after);
}

TEST(BGFXDefaultCallbackTest, AFatalErrorCallsTheHandlerAfterItsLogLineAndReturns) {
    LogCapture const log;
    std::size_t linesAtCall = 0;
    BGFXDefaultCallback callback;
    callback.registerFatalAbortHandler([&] { linesAtCall = log.Lines().size(); });
    callback.fatal("a.cpp", 1, bgfx::Fatal::DebugCheck, "text");
    EXPECT_EQ(linesAtCall, 1u);
    EXPECT_THAT(log.Lines(), SizeIs(1));
}

TEST(BGFXDefaultCallbackTest, ASecondHandlerReplacesTheFirst) {
    LogCapture const log;
    std::string called;
    BGFXDefaultCallback callback;
    callback.registerFatalAbortHandler([&] { called += "first"; });
    callback.registerFatalAbortHandler([&] { called += "second"; });
    callback.fatal("a.cpp", 1, bgfx::Fatal::DebugCheck, "text");
    EXPECT_EQ(called, "second");
}

TEST(BGFXDefaultCallbackTest, AnEmptyHandlerCountsAsRegisteredAndThrows) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    callback.registerFatalAbortHandler({});
    EXPECT_THROW(callback.fatal("a.cpp", 1, bgfx::Fatal::DebugCheck, "text"), std::bad_function_call);
    EXPECT_THAT(log.Lines(), SizeIs(1));
}

TEST(BGFXDefaultCallbackTest, WithoutAHandlerAFatalErrorEndsTheApplicationAfterTwoLines) {
    EXPECT_EXIT(FatalWithoutHandler(), testing::KilledBySignal(SIGABRT),
                "zarvex.bgfx.2.BGFX encountered a fatal error at /src/bgfx.cpp:12 .error:InvalidShader.: "
                "broken\nzarvex.bgfx.3.Aborting application \\.\\.\\.\n");
}

TEST(BGFXDefaultCallbackTest, ACopyHasTheHandler) {
    LogCapture const log;
    int calls = 0;
    BGFXDefaultCallback callback;
    callback.registerFatalAbortHandler([&] { ++calls; });
    BGFXDefaultCallback copy(callback);
    copy.fatal("a.cpp", 1, bgfx::Fatal::DebugCheck, "text");
    EXPECT_EQ(calls, 1);
}

TEST(BGFXDefaultCallbackTest, AssignmentTakesTheHandlerOver) {
    LogCapture const log;
    std::string called;
    BGFXDefaultCallback source;
    source.registerFatalAbortHandler([&] { called += "source"; });
    BGFXDefaultCallback without;
    without = source;
    without.fatal("a.cpp", 1, bgfx::Fatal::DebugCheck, "text");
    BGFXDefaultCallback with;
    with.registerFatalAbortHandler([&] { called += "target"; });
    with = source;
    with.fatal("a.cpp", 1, bgfx::Fatal::DebugCheck, "text");
    EXPECT_EQ(called, "sourcesource");
}

TEST(BGFXDefaultCallbackTest, AssignmentOfOneWithoutAHandlerTakesItAway) {
    auto const run = [] {
        qInstallMessageHandler(PrintMessage);
        BGFXDefaultCallback target;
        target.registerFatalAbortHandler([] { std::exit(1); });
        target = BGFXDefaultCallback();
        target.fatal("a.cpp", 1, bgfx::Fatal::DebugCheck, "text");
    };
    EXPECT_EXIT(run(), testing::KilledBySignal(SIGABRT), "Aborting application");
}

TEST(BGFXDefaultCallbackTest, AScreenshotIsOnlyLogged) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    TakeScreenShot(callback, "/tmp/shot.png", 640, 480, 2560, true);
    EXPECT_THAT(log.Lines(),
                ElementsAre(LogLine{QtWarningMsg, kCategory,
                                    "Screenshot captured (not implemented): /tmp/shot.png Width: "
                                    "640 Height 480 Pitch: 2560 Y-flip: true",
                                    false}));
}

TEST(BGFXDefaultCallbackTest, VideoCaptureIsOnlyLogged) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    callback.captureBegin(640, 480, 2560, bgfx::TextureFormat::RGBA8, false);
    callback.captureFrame(nullptr, 1234);
    callback.captureEnd();
    std::string const format = std::to_string(int(bgfx::TextureFormat::RGBA8));
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(
            LogLine{QtWarningMsg, kCategory,
                    "Video capture begin (not implemented): Width: 640 Height 480 Pitch: 2560 Format: " +
                        format + " Y-flip: false",
                    false},
            LogLine{QtWarningMsg, kCategory,
                    Streamed("Frame captured (not implemented):", " size: ", 1234u, " bytes "), false},
            LogLine{QtWarningMsg, kCategory, "Video capture end (not implemented)", false}));
}

TEST(BGFXDefaultCallbackTest, ThereIsNoShaderCache) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    char data[4] = {};
    EXPECT_EQ(callback.cacheReadSize(5), 0u);
    EXPECT_FALSE(callback.cacheRead(5, data, sizeof(data)));
    callback.cacheWrite(5, data, sizeof(data));
    EXPECT_FALSE(callback.cacheRead(5, data, sizeof(data)));
    EXPECT_EQ(callback.cacheReadSize(5), 0u);
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST(BGFXDefaultCallbackTest, TheProfilerIsIgnored) {
    LogCapture const log;
    BGFXDefaultCallback callback;
    callback.profilerBegin("name", 0, "a.cpp", 1);
    callback.profilerBeginLiteral("name", 0, "a.cpp", 1);
    callback.profilerEnd();
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST(BGFXDefaultCallbackTest, DisabledLevelsLogNothing) {
    Silence const silence("zarvex.bgfx.info=false\nzarvex.bgfx.warning=false\nzarvex.bgfx.critical=false");
    LogCapture const log;
    int calls = 0;
    BGFXDefaultCallback callback;
    callback.registerFatalAbortHandler([&] { ++calls; });
    Trace(callback, "a.cpp", 1, "text");
    TakeScreenShot(callback, "a.png", 1, 1, 4, false);
    callback.captureBegin(1, 1, 4, bgfx::TextureFormat::RGBA8, false);
    callback.captureFrame(nullptr, 4);
    callback.captureEnd();
    callback.fatal("a.cpp", 1, bgfx::Fatal::DebugCheck, "text");
    EXPECT_THAT(log.Lines(), IsEmpty());
    EXPECT_EQ(calls, 1);
}
