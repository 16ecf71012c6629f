// The same scene is the same picture on both backends and on both of their paths.
#include "RenderTest.h"
#include "Scenes.h"

#include <harness/LibraryRun.h>

#include <vector>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

/// Pictures of all scenes, and what they should be.
struct Pictures {
    std::vector<ReferencePicture> references;
    std::vector<QImage> byCompute, byCPU;
};

Pictures DrawAll(bgfx::RendererType::Enum backend) {
    LibraryRun const run(backend);
    OffscreenTarget target(kSceneSize);
    zx3DQt::BGFXRenderer renderer;
    Pictures pictures;
    for (Scene const& scene : AllScenes()) {
        pictures.references.push_back(DrawReference(scene));
        pictures.byCompute.push_back(Draw(scene, SpritePath::Compute, renderer, target));
        pictures.byCPU.push_back(Draw(scene, SpritePath::CPU, renderer, target));
    }
    return pictures;
}

} // namespace

TEST(BackendAgreementTest, AllFourPicturesOfASceneAreAlike) {
    Pictures const openGL = DrawAll(bgfx::RendererType::OpenGL);
    Pictures const vulkan = DrawAll(bgfx::RendererType::Vulkan);
    std::vector<Scene> const scenes = AllScenes();
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        SCOPED_TRACE(scenes[i].name);
        ReferencePicture const& reference = openGL.references[i];
        QImage const expected = reference.WithoutEdges(openGL.byCompute[i]);
        for (QImage const* const actual : {&openGL.byCPU[i], &vulkan.byCompute[i], &vulkan.byCPU[i]}) {
            EXPECT_TRUE(Matches(reference.WithoutEdges(*actual), expected));
            EXPECT_LE(CountDifferences(*actual, openGL.byCompute[i]),
                      scenes[i].maxEdges * reference.CountDrawn());
        }
    }
}
