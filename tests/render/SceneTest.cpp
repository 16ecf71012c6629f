// Lines and points of all kinds, on the compute path and on the CPU path, against pictures drawn in software.
#include "RenderTest.h"
#include "Scenes.h"

using namespace zarvex;
using namespace zarvex::testing;

namespace {

/// Where the two paths round differently.
constexpr int kMaxDifferencesOfPaths = 4;

class SceneTest : public RenderTest {
protected:
    SceneTest() : RenderTest(kSceneSize) {}

    void Check(std::vector<Scene> const& scenes);

private:
    void Check(Scene const& scene);
};

void SceneTest::Check(std::vector<Scene> const& scenes) {
    for (Scene const& scene : scenes) {
        SCOPED_TRACE(scene.name);
        Check(scene);
    }
}

void SceneTest::Check(Scene const& scene) {
    ReferencePicture const reference = DrawReference(scene);
    EXPECT_GT(reference.CountDrawn(), 100);
    EXPECT_LE(reference.CountEdges(), scene.maxEdges * reference.CountDrawn());

    QImage const byCompute = Draw(scene, SpritePath::Compute, m_renderer, m_target);
    QImage const byCPU = Draw(scene, SpritePath::CPU, m_renderer, m_target);
    EXPECT_TRUE(Matches(byCompute, reference.Nearest(byCompute)));
    EXPECT_TRUE(Matches(byCPU, reference.Nearest(byCPU)));
    EXPECT_TRUE(Matches(reference.WithoutEdges(byCPU), reference.WithoutEdges(byCompute)));
    EXPECT_LE(CountDifferences(byCPU, byCompute), kMaxDifferencesOfPaths);
}

} // namespace

TEST_P(SceneTest, ThinLines) {
    Check(ThinLineScenes());
}

TEST_P(SceneTest, WideLines) {
    Check(WideLineScenes());
}

TEST_P(SceneTest, Points) {
    Check(PointScenes());
}

TEST_P(SceneTest, Transforms) {
    Check(TransformScenes());
}

TEST_P(SceneTest, CameraInside) {
    Check(InsideScenes());
}

ZX3D_INSTANTIATE_BACKENDS(SceneTest);
