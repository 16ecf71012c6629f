// Start and stop.
#include "LibraryRun.h"

#include "TroubleCallback.h"

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
}

} // namespace zarvex::testing
