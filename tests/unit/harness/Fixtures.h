// Test fixtures: a recorded bgfx, a zx3D context on it, and the whole library on it.
#pragma once

#include <Recorder.h>

#include <zx3D/BgfxVersion.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

/// A callback that keeps bgfx's traces.
class TraceKeeper : public bgfx::CallbackI {
public:
    std::vector<std::string> traces;

    void fatal(char const*, std::uint16_t, bgfx::Fatal::Enum, char const*) override {}
    void traceVargs(char const* filePath, std::uint16_t line, char const* format,
                    std::va_list arguments) override;
    void profilerBegin(char const*, std::uint32_t, char const*, std::uint16_t) override {}
    void profilerBeginLiteral(char const*, std::uint32_t, char const*, std::uint16_t) override {}
    void profilerEnd() override {}
    std::uint32_t cacheReadSize(std::uint64_t) override { return 0; }
    bool cacheRead(std::uint64_t, void*, std::uint32_t) override { return false; }
    void cacheWrite(std::uint64_t, void const*, std::uint32_t) override {}
    void screenShot(char const*, std::uint32_t, std::uint32_t, std::uint32_t,
                    ZX3D_SCREENSHOT_FORMAT void const*, std::uint32_t, bool) override {}
    void captureBegin(std::uint32_t, std::uint32_t, std::uint32_t, bgfx::TextureFormat::Enum, bool) override {
    }
    void captureEnd() override {}
    void captureFrame(void const*, std::uint32_t) override {}
};

/// Starts every test with empty records, and ends it with the check that bgfx was not misused.
class RecordedTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// For tests in which something has to be left behind.
    void ExpectLeaks() { m_leaksExpected = true; }

    /// Changes the stand-in's settings.
    template<typename Change>
    static void Configure(Change change) {
        recorder::Settings settings = recorder::GetSettings();
        change(settings);
        recorder::Apply(settings);
    }

private:
    bool m_leaksExpected = false;
};

/// With a running zx3D context that draws nothing and needs no display.
class ContextFixture : public RecordedTest {
protected:
    void SetUp() override;
    void TearDown() override;

    TraceKeeper m_callback;
};

/// With the library initialised; the calls of its start are not in the records.
class LibraryFixture : public RecordedTest {
protected:
    void SetUp() override;
    void TearDown() override;
};
