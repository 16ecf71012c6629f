// Start, stop and what went wrong in between.
#include "LibraryRun.h"

#include "Trouble.h"

#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

namespace zarvex::testing {

std::string NameOf(bgfx::RendererType::Enum backend) {
    return backend == bgfx::RendererType::OpenGL ? "OpenGL" : "Vulkan";
}

LibraryRun::LibraryRun(bgfx::RendererType::Enum backend) {
    zx3D::Context::PreferRenderer(backend);
    EXPECT_TRUE(zx3DQt::Init(false, std::make_unique<TroubleCallback>()));
    EXPECT_EQ(bgfx::getRendererType(), backend) << "bgfx fell back to another backend";
}

LibraryRun::~LibraryRun() {
    zx3DQt::Shutdown();
    std::vector<std::string> troubles = Trouble::Take();
    for (std::string const& expected : m_expected) {
        auto const says = [&expected](std::string const& trouble) {
            return trouble.find(expected) != std::string::npos;
        };
        EXPECT_NE(std::erase_if(troubles, says), 0u) << "expected, but not met: " << expected;
    }
    for (std::string const& trouble : troubles)
        ADD_FAILURE() << trouble;
}

} // namespace zarvex::testing
