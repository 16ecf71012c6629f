// Windows and the library's start and stop.
#include "CornerWindow.h"

#include "harness/LibraryRun.h"

namespace zarvex::testing {

namespace {

/// A run that ends while a renderer still has its uniforms. A debug build of bgfx reports them; they are gone
/// with the run, and the renderer owns nothing of it any more.
class RunThatIsOutlived : public LibraryRun {
public:
    explicit RunThatIsOutlived(bgfx::RendererType::Enum backend) : LibraryRun(backend) {
        if constexpr (BX_CONFIG_DEBUG) {
            ExpectTrouble("LEAK: UniformHandle 8");
            ExpectTrouble("MEMORY LEAK");
        }
    }
};

} // namespace

class LifetimeTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {};

TEST_P(LifetimeTest, AWindowMayOutliveShutdown) {
    std::unique_ptr<CornerWindow> window;
    {
        RunThatIsOutlived const run(GetParam());
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
        RunThatIsOutlived const run(GetParam());
        ShowAndWait(window);
        ExpectPicture(window);
    }
}

TEST_P(LifetimeTest, AWindowDrawsOnAlternatingBackends) {
    CornerWindow window(Qt::darkRed);
    for (auto const backend : {bgfx::RendererType::OpenGL, bgfx::RendererType::Vulkan, GetParam()}) {
        RunThatIsOutlived const run(backend);
        ShowAndWait(window);
        ExpectPicture(window);
    }
}

ZX3D_INSTANTIATE_BACKENDS(LifetimeTest);

} // namespace zarvex::testing
