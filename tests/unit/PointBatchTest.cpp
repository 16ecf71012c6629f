// Points that stay on the GPU: what bgfx is asked for, and what is refused.
#include <DrawFixture.h>
#include <Warnings.h>

#include <zx3DQt/PointBatch.h>

#include <limits>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class PointBatchTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_view.SetViewport({10, 20, 100, 50});
        StartFrame();
        recorder::ClearCalls();
    }

    /// Points in a row from (0, 0, 0) on, which the identity shows.
    static std::vector<ColoredPoint> Row(std::size_t count) {
        std::vector<ColoredPoint> points(count);
        for (std::size_t i = 0; i < count; ++i) {
            points[i].position.x = static_cast<float>(i) / static_cast<float>(count);
            points[i].rgba = static_cast<std::uint32_t>(i);
        }
        return points;
    }

    void Draw(PointBatch& batch, PointStyle const& style = {}) { batch.Draw(*m_renderer, m_view, style); }

    /// The caller destroys them.
    static std::vector<bgfx::TextureHandle> TakeAllTextures() {
        std::vector<bgfx::TextureHandle> textures;
        while (textures.empty() || bgfx::isValid(textures.back()))
            textures.push_back(bgfx::createTexture2D(1, 1, false, 1, bgfx::TextureFormat::RGBA8));
        textures.pop_back();
        return textures;
    }

    /// Frames in which the batch is drawn until it is uploaded.
    int CountFrames(PointBatch& batch) {
        int frames = 0;
        while (!batch.IsUploaded()) {
            m_renderer->PresentCurrentAndSubmitNextFrame(false);
            StartFrame();
            Draw(batch);
            ++frames;
        }
        return frames;
    }
};

} // namespace

TEST_F(PointBatchTest, DrawsForAFewCallsHoweverManyPointsThereAre) {
    PointBatch few;
    few.Set(Row(10));
    PointBatch many;
    many.Set(Row(262'144 * 6));
    for (PointBatch* const batch : {&few, &many}) {
        CountFrames(*batch);
        recorder::ClearCalls();
        Draw(*batch);
        EXPECT_THAT(recorder::CallNames(),
                    ElementsAre("setTransform", "setTransform", "setState", "setVertexCount", "setTexture",
                                "setUniform", "submit"));
    }
}

TEST_F(PointBatchTest, PointsAreHandedOverOnceAndAsTheyAre) {
    std::vector<ColoredPoint> const points = Row(3);
    PointBatch batch;
    batch.Set(points);
    Draw(batch);
    std::vector<recorder::Call> const updates = recorder::CallsNamed("updateTexture2D");
    ASSERT_THAT(updates, SizeIs(1));
    ASSERT_THAT(updates[0].payload, SizeIs(3 * sizeof(ColoredPoint)));
    EXPECT_EQ(std::memcmp(updates[0].payload.data(), points.data(), 3 * sizeof(ColoredPoint)), 0);
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 0u);
    EXPECT_THAT(recorder::CallTexts(), Contains("setVertexCount(3)"));
}

TEST_F(PointBatchTest, LargePointsAreSixVerticesAndHaveASize) {
    PointBatch batch;
    batch.Set(Row(3));
    Draw(batch, {.size = 1.5f});
    EXPECT_THAT(recorder::CallTexts(), Contains("setVertexCount(18)"));
    EXPECT_THAT(TheDraw().uniforms.at("u_pointSize"), ElementsAre(1.5f, 0.0f, 0.0f, 0.0f));
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_OPAQUE));
    recorder::ClearCalls();
    Draw(batch, {.size = 0.25f, .sizeUnit = SizeUnit::World});
    EXPECT_THAT(TheDraw().uniforms.at("u_pointSize"), ElementsAre(0.0f, 0.25f, 0.0f, 0.0f));
}

TEST_F(PointBatchTest, SizesThatMakeNoSenseArePixels) {
    PointBatch batch;
    batch.Set(Row(3));
    for (float const size : {0.0f, -7.0f, std::numeric_limits<float>::quiet_NaN()}) {
        recorder::ClearCalls();
        Draw(batch, {.size = size});
        EXPECT_THAT(recorder::CallTexts(), Contains("setVertexCount(3)")) << size;
    }
}

TEST_F(PointBatchTest, OriginsAreSubtractedInDoublePrecision) {
    PointBatch batch;
    batch.Set(Row(3));
    batch.SetOrigin({500'000.001, 5'400'000.0, -7.0});
    m_view.SetOrigin({500'000.0, 5'399'999.998, -7.0});
    QMatrix4x4 transform;
    transform.scale(0.5f);
    batch.Draw(*m_renderer, m_view, {}, transform);
    QMatrix4x4 expected = Translation(static_cast<float>(500'000.001 - 500'000.0),
                                      static_cast<float>(5'400'000.0 - 5'399'999.998), 0.0f) *
                          transform;
    EXPECT_EQ(TheDraw().matrix, Floats(expected));
    EXPECT_NEAR(TheDraw().matrix[12], 0.001f, 1e-9f);
}

TEST_F(PointBatchTest, TheBoxIsInTheWorldAndHasWhatIsFinite) {
    PointBatch batch;
    EXPECT_FALSE(batch.GetBoundingBox());
    ExpectWarning("point-batch.not-finite");
    std::vector<ColoredPoint> points(3);
    points[0].position = {-1.0f, 2.0f, 3.0f};
    points[1].position = {4.0f, -5.0f, 6.0f};
    points[2].position = {std::numeric_limits<float>::quiet_NaN(), 900.0f, 0.0f};
    batch.Set(points);
    batch.SetOrigin({1000.5, 0.0, 0.0});
    EXPECT_EQ(batch.GetBoundingBox(), (WorldBox{{999.5, -5.0, 3.0}, {1004.5, 2.0, 6.0}}));
    batch.Clear();
    EXPECT_FALSE(batch.GetBoundingBox());
}

TEST_F(PointBatchTest, WhatTheBudgetOfAFrameHasNoRoomForFollows) {
    PointBatch batch;
    batch.Set(Row(4096 * 10));
    m_renderer->SetUploadBudget(4096 * 16 * 4);
    EXPECT_EQ(CountFrames(batch), 3);
    batch.Append(Row(4096 * 4));
    EXPECT_EQ(CountFrames(batch), 1);
}

TEST_F(PointBatchTest, TwoBatchesShareTheBudgetOfAFrame) {
    m_renderer->SetUploadBudget(4096 * 16);
    StartFrame();
    PointBatch first;
    PointBatch second;
    first.Set(Row(4096));
    second.Set(Row(4096));
    Draw(first);
    Draw(second);
    EXPECT_TRUE(first.IsUploaded());
    EXPECT_EQ(second.GetUploadedCount(), 0u);
    EXPECT_EQ(CountFrames(second), 1);
}

TEST_F(PointBatchTest, AStreamOfSmallPiecesGetsFewTextures) {
    PointBatch batch;
    for (int i = 0; i < 5000; ++i) {
        batch.Append(Row(10));
        Draw(batch);
    }
    EXPECT_EQ(batch.GetCount(), 50'000u);
    EXPECT_LE(recorder::CountCalls("createTexture2D"), 10u);
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_LE(recorder::CountCalls("submit"), 10u);
}

TEST_F(PointBatchTest, PiecesOutsideThePictureAreNotSubmitted) {
    std::vector<ColoredPoint> points(3 * 262'144);
    for (std::size_t i = 0; i < points.size(); ++i)
        points[i].position.x = i / 262'144 == 1 ? 0.0f : 1.2f;
    PointBatch batch;
    batch.Set(points);
    CountFrames(batch);
    auto const count = [&](PointStyle const& style) {
        StartFrame();
        Draw(batch, style);
        return m_renderer->GetFrameStatistics().primitives;
    };
    EXPECT_EQ(count({}), 262'144u);
    EXPECT_EQ(count({.size = 19.0f}), 262'144u) << "squares that end before the picture";
    EXPECT_EQ(count({.size = 21.0f}), 3 * 262'144u) << "and that reach in: 0.2 of 50 pixels";
    EXPECT_EQ(count({.size = 0.5f, .sizeUnit = SizeUnit::World}), 3 * 262'144u);
    m_view.SetOrigin({-3.0, 0.0, 0.0});
    EXPECT_EQ(count({}), 0u);
}

TEST_F(PointBatchTest, UpdatesBeyondTheEndAreRefusedAsAWhole) {
    PointBatch batch;
    batch.Set(Row(10));
    Draw(batch);
    recorder::ClearCalls();
    for (std::uint64_t const first :
         {std::uint64_t(8), std::uint64_t(11), std::numeric_limits<std::uint64_t>::max()}) {
        batch.Update(first, Row(3));
        EXPECT_THAT(TakeWarnings("point-batch.range"), ElementsAre(HasSubstr("the batch has 10"))) << first;
    }
    batch.Update(7, Row(3));
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 1u);
}

TEST_F(PointBatchTest, TheOtherKindOfPointsIsRefused) {
    PointBatch batch;
    batch.Set(Row(10));
    std::vector<ScalarPoint> const numbers(2);
    batch.Append(numbers);
    batch.Update(0, numbers);
    EXPECT_THAT(TakeWarnings("point-batch.kind"), SizeIs(2));
    EXPECT_EQ(batch.GetCount(), 10u);
    batch.Set(numbers);
    EXPECT_EQ(batch.GetCount(), 2u);
}

TEST_F(PointBatchTest, WhereTexturesRanOutItIsCountedAndTriedAgain) {
    std::vector<bgfx::TextureHandle> const textures = TakeAllTextures();
    PointBatch batch;
    batch.Set(Row(10));
    recorder::ClearCalls();
    for (int frame = 0; frame < 3; ++frame) {
        StartFrame();
        Draw(batch);
        EXPECT_EQ(m_renderer->GetFrameStatistics().CountLeftOut(LeftOutReason::NoBuffer), 1u);
    }
    EXPECT_THAT(TakeWarnings("draw.no-buffer"), SizeIs(1));
    EXPECT_EQ(recorder::CountCalls("submit"), 0u);
    for (bgfx::TextureHandle const texture : textures)
        bgfx::destroy(texture);
    EXPECT_EQ(CountFrames(batch), 1);
    EXPECT_EQ(batch.GetCount(), 10u) << "nothing is lost";
}

TEST_F(PointBatchTest, WithoutATextureForItsColorMapItIsCounted) {
    QColor const colors[] = {Qt::red, Qt::blue};
    PointStyle const style{.colorMap = ColorMap(colors)};
    std::vector<ScalarPoint> const numbers(3);
    PointBatch batch;
    batch.Set(numbers);
    CountFrames(batch);
    std::vector<bgfx::TextureHandle> const textures = TakeAllTextures();
    StartFrame();
    Draw(batch, style);
    EXPECT_EQ(m_renderer->GetFrameStatistics().CountLeftOut(LeftOutReason::NoBuffer), 1u);
    EXPECT_THAT(TakeWarnings("draw.no-buffer"), SizeIs(1));
    for (bgfx::TextureHandle const texture : textures)
        bgfx::destroy(texture);
}

TEST_F(PointBatchTest, AnEmptyBatchDrawsNothing) {
    PointBatch batch;
    Draw(batch);
    batch.Set(zx3D::DataSpan<ColoredPoint const>());
    Draw(batch);
    batch.Update(0, zx3D::DataSpan<ScalarPoint const>(nullptr, 4));
    EXPECT_THAT(recorder::CallNames(), IsEmpty());
    EXPECT_TRUE(batch.IsUploaded());
}

TEST_F(PointBatchTest, OutlivesTheContextWithTheDataItKeeps) {
    PointBatch batch(PointBatch::KeepData::Yes);
    batch.Set(Row(5000));
    CountFrames(batch);
    TearDown();
    EXPECT_EQ(batch.GetUploadedCount(), 0u);
    batch.Update(4999, Row(1));
    SetUp();
    EXPECT_EQ(CountFrames(batch), 1);
    EXPECT_EQ(batch.GetCount(), 5000u);
}

TEST_F(PointBatchTest, WithoutItsDataItIsEmptyAfterTheContextAndSaysSo) {
    PointBatch uploaded;
    uploaded.Set(Row(5000));
    CountFrames(uploaded);
    PointBatch waiting;
    waiting.Set(Row(5000));
    TearDown();
    SetUp();
    Draw(uploaded);
    Draw(uploaded);
    EXPECT_THAT(TakeWarnings("point-batch.lost"), SizeIs(1));
    EXPECT_EQ(uploaded.GetCount(), 0u);
    EXPECT_FALSE(uploaded.GetBoundingBox());
    EXPECT_EQ(CountFrames(waiting), 1);
    EXPECT_EQ(waiting.GetCount(), 5000u) << "what was never handed over is not lost";
}

TEST_F(PointBatchTest, MovesWithWhatItHas) {
    PointBatch batch;
    batch.Set(Row(10));
    Draw(batch);
    PointBatch moved(std::move(batch));
    recorder::ClearCalls();
    Draw(moved);
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 0u);
    EXPECT_EQ(recorder::CountCalls("submit"), 1u);
}

TEST_F(PointBatchTest, WithoutAContextNothingIsDrawnAndNothingIsLost) {
    PointBatch batch;
    batch.Set(Row(10));
    TearDown();
    BGFXRenderer renderer;
    batch.Draw(renderer, m_view);
    EXPECT_EQ(batch.GetCount(), 10u);
    SetUp();
}

TEST(ColorMapTest, ColorsLieEvenlyBetweenTheGivenOnes) {
    QColor const colors[] = {QColor(0, 0, 0), QColor(255, 0, 100, 55), QColor(255, 255, 200)};
    ColorMap const map{colors};
    EXPECT_EQ(map.At(0.0), colors[0]);
    EXPECT_EQ(map.At(1.0), colors[2]);
    EXPECT_NEAR(map.At(0.5).red(), 255, 1);
    EXPECT_NEAR(map.At(0.5).alpha(), 55, 1);
    EXPECT_NEAR(map.At(0.25).blue(), 50, 1);
    EXPECT_EQ(map.At(-7.0), colors[0]);
    EXPECT_EQ(map.At(7.0), colors[2]);
    EXPECT_EQ(map.At(std::numeric_limits<double>::quiet_NaN()), colors[0]);
}

TEST(ColorMapTest, OneColorIsThatOfAllAndNoneGivesGrays) {
    QColor const red[] = {Qt::red};
    EXPECT_EQ(ColorMap(red).At(0.3), QColor(Qt::red));
    EXPECT_EQ(ColorMap(std::span<QColor const>()).At(1.0), QColor(Qt::white));
    EXPECT_EQ(ColorMap().At(0.0), QColor(Qt::black));
}

TEST(ColorMapTest, ViridisGrowsLighterAllTheWay) {
    int before = 0;
    for (int i = 0; i <= 20; ++i) {
        int const lightness = qGray(ColorMap::Viridis().At(i / 20.0).rgb());
        EXPECT_GT(lightness, before);
        before = lightness;
    }
}
