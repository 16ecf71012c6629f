// What the fixtures do before and after each test.
#include "Fixtures.h"

#include <zx3D/Context.h>
#include <zx3DQt/Library.h>

#include <cstdio>

using namespace zarvex;

void TraceKeeper::traceVargs(char const*, std::uint16_t, char const* format, std::va_list arguments) {
    char text[1024];
    std::vsnprintf(text, sizeof(text), format, arguments);
    traces.emplace_back(text);
}

void RecordedTest::SetUp() {
    recorder::Reset();
    zx3D::Context::PreferRenderer(bgfx::RendererType::Noop);
}

void RecordedTest::TearDown() {
    EXPECT_THAT(recorder::Errors(), testing::IsEmpty());
    if (!m_leaksExpected) {
        EXPECT_THAT(recorder::Leaks(), testing::IsEmpty());
    }
    EXPECT_FALSE(recorder::IsRunning());
}

void ContextFixture::SetUp() {
    RecordedTest::SetUp();
    ASSERT_TRUE(zx3D::Context::Initialize(zx3D::ContextOptions::Create(
        nullptr, 64, 64, &m_callback, zx3D::ContextOptions::ThreadMode::MultiThreaded, false)));
    recorder::ClearCalls();
}

void ContextFixture::TearDown() {
    zx3D::Context::Shutdown();
    RecordedTest::TearDown();
}

void LibraryFixture::SetUp() {
    RecordedTest::SetUp();
    ASSERT_TRUE(zx3DQt::Init(false));
    recorder::ClearCalls();
}

void LibraryFixture::TearDown() {
    zx3DQt::Shutdown();
    RecordedTest::TearDown();
}
