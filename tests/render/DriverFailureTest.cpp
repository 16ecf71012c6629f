// Machines on which a driver is missing.
#include "ChildProcess.h"
#include "DrawingCheck.h"

#include <harness/LibraryRun.h>
#include <harness/Trouble.h>
#include <harness/TroubleCallback.h>

#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

#include <display/DisplayConnection.h>
#include <display/Egl.h>
#include <display/Vulkan.h>

#include <csignal>
#include <cstdlib>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr char kNowhere[] = "/nonexistent/driver.json";

void HideVulkanDrivers() {
    setenv("VK_ICD_FILENAMES", kNowhere, true);
    setenv("VK_DRIVER_FILES", kNowhere, true);
}

void HideOpenGLDrivers() {
    setenv("__EGL_VENDOR_LIBRARY_FILENAMES", kNowhere, true);
    setenv("LIBGL_DRIVERS_PATH", "/nonexistent", true);
}

/// Expects that the library starts on the backend and draws.
void ExpectRunOn(bgfx::RendererType::Enum backend) {
    ASSERT_TRUE(zx3DQt::Init(false, std::make_unique<TroubleCallback>()));
    EXPECT_EQ(bgfx::getRendererType(), backend);
    ExpectDrawingWorks(Qt::red);
    zx3DQt::Shutdown();
}

void RunWithoutVulkan() {
    HideVulkanDrivers();
    zx3D::Context::PreferRenderer(bgfx::RendererType::Vulkan);
    ExpectRunOn(bgfx::RendererType::OpenGL);
    EXPECT_TRUE(Trouble::Take().empty());
}

void RunWithoutOpenGL(bgfx::RendererType::Enum preferred) {
    HideOpenGLDrivers();
    zx3D::Context::PreferRenderer(preferred);
    ExpectRunOn(bgfx::RendererType::Vulkan);
}

void RunWithoutAny(bgfx::RendererType::Enum preferred) {
    HideVulkanDrivers();
    HideOpenGLDrivers();
    zx3D::Context::PreferRenderer(preferred);
    EXPECT_FALSE(zx3DQt::Init(false, std::make_unique<TroubleCallback>()));
    EXPECT_FALSE(zx3D::Context::IsInitialized());
    zx3DQt::Shutdown();
    EXPECT_FALSE(zx3DQt::Init(false, std::make_unique<TroubleCallback>())) << "and again";
    zx3DQt::Shutdown();
}

bool RunWithoutAnyOnTheDefaultCallback(bgfx::RendererType::Enum preferred) {
    HideVulkanDrivers();
    HideOpenGLDrivers();
    zx3D::Context::PreferRenderer(preferred);
    return zx3DQt::Init(false);
}

bool HasOpenGL() {
    zx3D::DisplayConnection const display = zx3D::DisplayConnection::Open();
    return display.IsOpen() && zx3D::HasOpenGL(display.GetNativeDisplay());
}

/// No driver works, whatever backend is preferred.
class NoDriverTest : public ::testing::TestWithParam<bgfx::RendererType::Enum> {};

} // namespace

TEST(DriverFailureTest, WithoutVulkanBgfxTakesOpenGL) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(RunWithoutVulkan(), "");
}

// To bgfx a missing EGL is a fatal error, and Vulkan is tried only if the callback returns from it. Where
// bgfx would not try it, it is not asked for OpenGL.
TEST(DriverFailureTest, WithoutOpenGLBgfxTakesVulkanIfTheCallbackLetsIt) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(RunWithoutOpenGL(bgfx::RendererType::OpenGL),
                                 zx3D::kBgfxNoticesMissingOpenGL
                                     ? "bgfx fatal at .*egl.*Failed to create display"
                                     : "OpenGL 4.3 does not work on this machine.*context.no-opengl");
}

TEST(DriverFailureTest, WithoutPreferenceVulkanNeedsNoOpenGL) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(
        {
            RunWithoutOpenGL(bgfx::RendererType::Count);
            EXPECT_TRUE(Trouble::Take().empty());
        },
        "");
}

TEST_P(NoDriverTest, InitFailsIfTheCallbackLetsIt) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(RunWithoutAny(GetParam()), "bgfx finds no renderer that works");
}

TEST_P(NoDriverTest, TheDefaultCallbackEndsTheApplicationWithALastWordOrInitFails) {
    if (!zx3D::kBgfxNoticesMissingOpenGL) {
        ZX3D_EXPECT_IN_CHILD_PROCESS(EXPECT_FALSE(RunWithoutAnyOnTheDefaultCallback(GetParam())),
                                     "bgfx finds no renderer that works");
        return;
    }
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(RunWithoutAnyOnTheDefaultCallback(GetParam()), ::testing::KilledBySignal(SIGABRT),
                "BGFX encountered a fatal error at .*egl.*Aborting application");
}

TEST(DriverCheckTest, FindsTheDriversThatAreThere) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(
        {
            EXPECT_TRUE(HasOpenGL());
            EXPECT_TRUE(HasOpenGL()) << "and again";
            EXPECT_TRUE(zx3D::HasVulkan());
            zx3D::Context::PreferRenderer(bgfx::RendererType::OpenGL);
            ExpectRunOn(bgfx::RendererType::OpenGL);
        },
        "");
}

TEST(DriverCheckTest, FindsNoneThatIsNotThere) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(
        {
            HideVulkanDrivers();
            HideOpenGLDrivers();
            EXPECT_FALSE(HasOpenGL());
            EXPECT_FALSE(zx3D::HasVulkan());
        },
        "");
}

TEST(DriverCheckTest, AnOpenGLThatIsTooOldIsNone) {
    ZX3D_EXPECT_IN_CHILD_PROCESS(
        {
            setenv("MESA_GL_VERSION_OVERRIDE", "4.2", true);
            EXPECT_FALSE(HasOpenGL());
        },
        "");
}

INSTANTIATE_TEST_SUITE_P(Preferences, NoDriverTest,
                         ::testing::Values(bgfx::RendererType::OpenGL, bgfx::RendererType::Vulkan,
                                           bgfx::RendererType::Count),
                         [](auto const& row) {
                             return row.param == bgfx::RendererType::Count ? "None" : NameOf(row.param);
                         });
