// The X server goes while the library draws.
#include "ChildProcess.h"

#include <harness/LibraryRun.h>

#include <zx3D/Context.h>
#include <zx3D/FrameBuffer.h>

#include <QWidget>

#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr int kTooLate = 3; ///< exit status

/// Kills the X server that this process has started for itself.
void KillServer() {
    std::string const self = std::to_string(getpid());
    std::ifstream children("/proc/" + self + "/task/" + self + "/children");
    for (pid_t child; children >> child;) {
        std::string name;
        std::getline(std::ifstream("/proc/" + std::to_string(child) + "/comm"), name);
        if (name == "Xvfb")
            kill(child, SIGKILL);
    }
}

[[noreturn]] void DrawOnADisplayThatGoes(bgfx::RendererType::Enum backend) {
    QWidget widget;
    auto* const window = reinterpret_cast<void*>(widget.winId());
    zx3D::Context::PreferRenderer(backend);
    zx3D::Context::Initialize(zx3D::ContextOptions::Create(
        window, 64, 64, nullptr, zx3D::ContextOptions::ThreadMode::MultiThreaded, false));
    zx3D::FrameBuffer frameBuffer(window, bgfx::TextureFormat::BGRA8, bgfx::TextureFormat::D16);
    frameBuffer.RequestResize(64, 64);
    for (int i = 0;; ++i) {
        if (i == 5) {
            KillServer();
            std::thread([] {
                std::this_thread::sleep_for(std::chrono::seconds(5));
                std::_Exit(kTooLate);
            }).detach();
        }
        frameBuffer.SubmitOnDemand();
        frameBuffer.BindToView(1);
        bgfx::touch(1);
        zx3D::Context::SubmitFrame();
    }
}

class DisplayLossTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {};

} // namespace

TEST_P(DisplayLossTest, EndsTheProcessWithinSecondsAndWithAMessage) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(DrawOnADisplayThatGoes(GetParam()), ::testing::ExitedWithCode(EXIT_FAILURE),
                "connection to the X display broke");
}

ZX3D_INSTANTIATE_BACKENDS(DisplayLossTest);
