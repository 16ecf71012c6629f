// Starting and presenting frames, per-frame resources and the model transform cache.
#include <zx3DQt/BGFXRenderer.h>

#include <DrawingOf.h>
#include <Fixtures.h>

#include <LogCapture.h>
#include <Warnings.h>

#include <any>
#include <map>
#include <memory>
#include <optional>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class BGFXRendererFrameTest : public LibraryFixture {
protected:
    zx3D::FrameBuffer FrameBufferOf(std::uint16_t width, std::uint16_t height) {
        zx3D::FrameBuffer frameBuffer(&m_window, bgfx::TextureFormat::BGRA8, bgfx::TextureFormat::D16);
        frameBuffer.RequestResize(width, height);
        return frameBuffer;
    }

    /// Puts something into a store and tells whether it is still there.
    static std::weak_ptr<int> Put(ResourceStore& store) {
        auto const resource = std::make_shared<int>(1);
        store[1].emplace_back(resource);
        return resource;
    }

    int m_window = 0;
};

QMatrix4x4 Translation(float x) {
    QMatrix4x4 matrix;
    matrix.translate(x, 0.0f, 0.0f);
    return matrix;
}

} // namespace

TEST_F(BGFXRendererFrameTest, ACollapsedFrameBufferStartsNoFrame) {
    for (auto const& [width, height] : {std::pair(0, 100), std::pair(100, 0), std::pair(0, 0)}) {
        BGFXRenderer renderer;
        zx3D::FrameBuffer frameBuffer = FrameBufferOf(std::uint16_t(width), std::uint16_t(height));
        LogCapture const log;
        EXPECT_FALSE(renderer.StartFrame(frameBuffer));
        EXPECT_THAT(log.Lines(),
                    ElementsAre(LogLine{
                        QtDebugMsg, "zarvex.zx3dqt",
                        "--- WARNING: Framebuffer is collapsed: cannot render to framebuffer ---", false}));
        EXPECT_THAT(recorder::Calls(), IsEmpty());
        EXPECT_FALSE(bgfx::isValid(renderer.GetBasicProgram()));
    }
}

TEST_F(BGFXRendererFrameTest, ACollapsedFrameBufferKeepsTheResourcesOfTheFrameBefore) {
    BGFXRenderer renderer;
    std::weak_ptr<int> const resource = Put(FrameResourcesOf(renderer));
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(0, 100);
    EXPECT_FALSE(renderer.StartFrame(frameBuffer));
    EXPECT_FALSE(resource.expired());
}

TEST_F(BGFXRendererFrameTest, StartFrameEmptiesThePerFrameStoreAndNoOther) {
    BGFXRenderer renderer;
    std::weak_ptr<int> const perFrame = Put(FrameResourcesOf(renderer));
    std::weak_ptr<int> const persistent = Put(PersistentResourcesOf(renderer));
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(800, 600);
    EXPECT_TRUE(renderer.StartFrame(frameBuffer));
    EXPECT_TRUE(perFrame.expired());
    EXPECT_THAT(FrameResourcesOf(renderer), IsEmpty());
    EXPECT_FALSE(persistent.expired());
}

TEST_F(BGFXRendererFrameTest, ResourcesLivePastThePresentation) {
    BGFXRenderer renderer;
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(800, 600);
    renderer.StartFrame(frameBuffer);
    std::weak_ptr<int> const resource = Put(FrameResourcesOf(renderer));
    renderer.PresentCurrentAndSubmitNextFrame(false);
    EXPECT_FALSE(resource.expired());
    renderer.StartFrame(frameBuffer);
    EXPECT_TRUE(resource.expired());
}

TEST_F(BGFXRendererFrameTest, StartFrameLogsItsSteps) {
    BGFXRenderer renderer;
    renderer.Initialize();
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(800, 600);
    LogCapture const log;
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    EXPECT_THAT(log.Texts(),
                ElementsAre(Streamed("--- Starting next frame [(width,height):(", quint16(800), ",",
                                     quint16(600), ")] ---"),
                            "--- Cleaning up stale dynamic execution resource contexts (per frame data) ---",
                            "--- Recording commands and pipeline states for next frame ---"));
    for (LogLine const& line : log.Lines())
        EXPECT_EQ(line.level, QtDebugMsg);
}

TEST_F(BGFXRendererFrameTest, TheFirstFrameInitialisesAfterItsFirstLine) {
    BGFXRenderer renderer;
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(800, 600);
    LogCapture const log;
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    std::vector<std::string> const texts = log.Texts();
    ASSERT_EQ(texts.size(), 7u);
    EXPECT_THAT(texts[0], testing::StartsWith("--- Starting next frame"));
    EXPECT_THAT(texts[1], testing::StartsWith("Init BGFXRenderer [this: "));
    EXPECT_THAT(texts[4], testing::StartsWith("Init BGFXRenderer bgfx programs"));
    EXPECT_THAT(texts[5], testing::StartsWith("--- Cleaning up stale"));
}

TEST_F(BGFXRendererFrameTest, TheRendererInitialisesBeforeTheFrameBufferFollowsItsSize) {
    BGFXRenderer renderer;
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(800, 600);
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    std::vector<std::string> const names = recorder::CallNames();
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.front(), "createUniform");
    EXPECT_EQ(names.back(), "createFrameBuffer");
    EXPECT_TRUE(bgfx::isValid(frameBuffer.GetHandle()));
}

TEST_F(BGFXRendererFrameTest, TwoFramesCreateTheResourcesOnce) {
    BGFXRenderer renderer;
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(800, 600);
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    recorder::ClearCalls();
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXRendererFrameTest, AfterCleanUpTheNextFrameCreatesThemAgain) {
    BGFXRenderer renderer;
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(800, 600);
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    renderer.CleanUp();
    recorder::ClearCalls();
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    EXPECT_EQ(recorder::CountCalls("createUniform"), 8u);
}

TEST_F(BGFXRendererFrameTest, AMissingProgramLeavesFrameBufferAndResourcesAlone) {
    ExpectWarning("program.not-created");
    Configure([](recorder::Settings& settings) { settings.failingProgram = 0; });
    BGFXRenderer renderer;
    std::weak_ptr<int> const resource = Put(FrameResourcesOf(renderer));
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(800, 600);
    EXPECT_THROW(renderer.StartFrame(frameBuffer), std::bad_optional_access);
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
    EXPECT_FALSE(resource.expired());
    ExpectLeaks();
}

TEST_F(BGFXRendererFrameTest, PresentCurrentLogsThisFrameAndTheNext) {
    BGFXRenderer renderer;
    recorder::SetNextFrameNumber(41);
    LogCapture const log;
    EXPECT_EQ(renderer.PresentCurrentAndSubmitNextFrame(false), 41u);
    EXPECT_THAT(log.Texts(), ElementsAre(Streamed("--- [1] Presenting current frame [", 41u, "] ---"),
                                         Streamed("--- [2] Submitting next    frame [", 42u, "] ---")));
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("frame(false)"));
}

TEST_F(BGFXRendererFrameTest, PresentSubmittedAdvancesByTwoAndReturnsTheSecond) {
    BGFXRenderer renderer;
    recorder::SetNextFrameNumber(41);
    LogCapture const log;
    EXPECT_EQ(renderer.PresentSubmittedFrame(false), 42u);
    EXPECT_THAT(log.Texts(),
                ElementsAre(Streamed("--- [1] Presenting discarded frame [count:", 41u, "] ---"),
                            Streamed("--- [2] Presenting submitted frame [count:", 42u, "] ---")));
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("frame(false)", "frame(false)"));
}

TEST_F(BGFXRendererFrameTest, CaptureIsPassedOn) {
    BGFXRenderer renderer;
    renderer.PresentCurrentAndSubmitNextFrame(true);
    renderer.PresentSubmittedFrame(true);
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("frame(true)", "frame(true)", "frame(true)"));
}

TEST_F(BGFXRendererFrameTest, SetModelTransformHandsTheMatrixToBgfx) {
    BGFXRenderer renderer;
    QMatrix4x4 matrix;
    for (int i = 0; i < 16; ++i)
        matrix.data()[i] = float(i);
    ModelTransformCacheId const id = renderer.SetModelTransform(matrix);
    EXPECT_EQ(std::uint32_t(id), 1u);
    ASSERT_THAT(recorder::CallTexts(), ElementsAre("setTransform(matrix, 1)"));
    EXPECT_EQ(recorder::Calls()[0].PayloadAs<float>(),
              std::vector<float>(matrix.constData(), matrix.constData() + 16));
}

TEST_F(BGFXRendererFrameTest, TransformsOfOneFrameHaveDifferentIds) {
    BGFXRenderer renderer;
    std::uint32_t const first = renderer.SetModelTransform(Translation(1));
    std::uint32_t const second = renderer.SetModelTransform(Translation(2));
    std::uint32_t const again = renderer.SetModelTransform(Translation(2));
    EXPECT_NE(first, second);
    EXPECT_NE(second, again);
    auto const& cache = ModelTransformsOf(renderer);
    EXPECT_EQ(cache.at(first), Translation(1));
    EXPECT_EQ(cache.at(second), Translation(2));
    EXPECT_EQ(cache.at(again), Translation(2));
}

TEST_F(BGFXRendererFrameTest, TheNextFrameStartsWithTheFirstIdAndOverwritesItsMatrix) {
    BGFXRenderer renderer;
    zx3D::FrameBuffer frameBuffer = FrameBufferOf(800, 600);
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    std::uint32_t const first = renderer.SetModelTransform(Translation(1));
    std::uint32_t const second = renderer.SetModelTransform(Translation(2));
    renderer.PresentCurrentAndSubmitNextFrame(false);
    ASSERT_TRUE(renderer.StartFrame(frameBuffer));
    EXPECT_EQ(std::uint32_t(renderer.SetModelTransform(Translation(3))), first);
    auto const& cache = ModelTransformsOf(renderer);
    EXPECT_EQ(cache.at(first), Translation(3));
    EXPECT_EQ(cache.at(second), Translation(2)) << "entries are not erased";
}
