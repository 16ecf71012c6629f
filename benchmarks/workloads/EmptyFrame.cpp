// W0: nothing but the clear.
#include "runner/Scene.h"
#include "workloads/Workloads.h"

namespace zarvex::benchmarks {

namespace {

class EmptyFrameScene : public Scene {
    // Without a draw call bgfx does not even clear a view.
    void DrawWithLibrary(zx3DQt::BGFXRenderer const&, zx3DQt::BGFXViewContext const& view) override {
        bgfx::touch(view);
    }
    void DrawByHand(bgfx::ViewId view) override { bgfx::touch(view); }
};

} // namespace

WorkloadKind EmptyFrame() {
    return {.name = "W0", .title = "empty frame", .variants = {"clear"}, .create = [](std::string const&) {
                return std::make_unique<EmptyFrameScene>();
            }};
}

} // namespace zarvex::benchmarks
