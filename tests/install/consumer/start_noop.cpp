// zx3D by itself, without Qt: the renderer that draws nothing needs no display.
#include <zx3D/zx3D.h>

#include <cstdio>

using namespace zarvex;

int main() {
    zx3D::Context::PreferRenderer(bgfx::RendererType::Noop);
    if (!zx3D::Context::Initialize({}))
        return 1;
    bool const isNoop = bgfx::getRendererType() == bgfx::RendererType::Noop;
    zx3D::Context::Shutdown();
    std::puts(isNoop ? "started" : "another renderer");
    return isNoop ? 0 : 1;
}
