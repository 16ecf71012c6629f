// Starting when needed, and finding what a test left behind.
#include "SharedRun.h"

#include "OffscreenTarget.h"
#include "TextPainting.h"

#include <zx3DQt/BGFXRenderer.h>

#include <memory>
#include <ostream>

namespace zarvex::testing {

namespace {

struct State {
    std::unique_ptr<LibraryRun> run;
    bgfx::RendererType::Enum backend = bgfx::RendererType::Count;
};

State state;

/// Draws a text, so that what all texts of a run share is there before objects are counted. A renderer comes
/// before it, as in an application: programs are ordered by age.
void CreateSharedObjects() {
    OffscreenTarget target(QSize(8, 8));
    zx3DQt::BGFXRenderer renderer;
    renderer.StartFrame(target.GetFrameBuffer());
    Draw({.text = "a", .pixelSize = 8});
    bgfx::frame();
}

void Use(bgfx::RendererType::Enum backend) {
    if (state.run && state.backend == backend)
        return;
    state.run.reset(); // one run at a time
    state.run = std::make_unique<LibraryRun>(backend);
    state.backend = backend;
    CreateSharedObjects();
}

/// What bgfx holds when everything submitted so far is done, destructions included.
ObjectCounts Count() {
    bgfx::frame();
    bgfx::frame();
    bgfx::Stats const& stats = *bgfx::getStats();
    return {stats.numFrameBuffers,         stats.numTextures,
            stats.numVertexBuffers,        stats.numIndexBuffers,
            stats.numDynamicVertexBuffers, stats.numDynamicIndexBuffers};
}

void ResetViews() {
    for (std::uint32_t view = 0; view < bgfx::getCaps()->limits.maxViews; ++view)
        bgfx::resetView(static_cast<bgfx::ViewId>(view));
}

} // namespace

std::ostream& operator<<(std::ostream& stream, ObjectCounts const& counts) {
    return stream << counts.frameBuffers << " frame buffers, " << counts.textures << " textures, "
                  << counts.vertexBuffers << " vertex buffers, " << counts.indexBuffers << " index buffers, "
                  << counts.dynamicVertexBuffers << " dynamic vertex buffers, " << counts.dynamicIndexBuffers
                  << " dynamic index buffers";
}

SharedRunTest::SharedRunTest() {
    Use(GetParam());
    ResetViews();
    m_countsBefore = Count();
}

SharedRunTest::~SharedRunTest() {
    EXPECT_EQ(Count(), m_countsBefore) << "left behind";
}

void SharedRunTest::TearDownTestSuite() {
    state.run.reset();
}

} // namespace zarvex::testing
