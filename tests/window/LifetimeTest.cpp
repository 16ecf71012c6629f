// Windows and the library's start and stop.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"

namespace zarvex::testing {

class LifetimeTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {};

TEST_P(LifetimeTest, AWindowMayOutliveShutdown) {
    std::unique_ptr<CornerWindow> window;
    {
        LibraryRun const run(GetParam());
        window = std::make_unique<CornerWindow>(Qt::darkCyan);
        ShowAndWait(*window);
        ExpectPicture(*window);
    }
    EXPECT_FALSE(bgfx::isValid(window->GetFrameBuffer().GetHandle()));
    window->resize(400, 300);
    window.reset();
}

TEST_P(LifetimeTest, AWindowDrawsAgainAfterTheNextInit) {
    CornerWindow window(Qt::darkGreen);
    for (int i = 0; i < 3; ++i) {
        LibraryRun const run(GetParam());
        ShowAndWait(window);
        ExpectPicture(window);
    }
}

TEST_P(LifetimeTest, AWindowDrawsOnAlternatingBackends) {
    CornerWindow window(Qt::darkRed);
    for (auto const backend : {bgfx::RendererType::OpenGL, bgfx::RendererType::Vulkan, GetParam()}) {
        LibraryRun const run(backend);
        ShowAndWait(window);
        ExpectPicture(window);
    }
}

ZX3D_INSTANTIATE_BACKENDS(LifetimeTest);

} // namespace zarvex::testing
