// Lines that stay on the GPU: what bgfx is asked for, and what is refused.
#include <DrawFixture.h>
#include <Warnings.h>

#include <zx3DQt/LineBatch.h>

#include <zx3D/ProgramFactory.h>

#include <cstring>
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

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

class LineBatchTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_view.SetViewport({10, 20, 100, 50});
        StartFrame();
        recorder::ClearCalls();
    }

    /// Short segments in a row from (0, 0, 0) on, which the identity shows.
    static std::vector<LineSegment> Row(std::size_t count) {
        std::vector<LineSegment> segments(count);
        for (std::size_t i = 0; i < count; ++i) {
            segments[i].start.position.x = static_cast<float>(i) / static_cast<float>(count);
            segments[i].end.position.x = static_cast<float>(i) / static_cast<float>(count) + 0.001f;
            segments[i].end.rgba = static_cast<std::uint32_t>(i);
        }
        return segments;
    }

    static std::vector<LineVertex> Vertices(std::size_t count, float from = 0.0f) {
        std::vector<LineVertex> vertices(count);
        for (std::size_t i = 0; i < count; ++i) {
            vertices[i].position.x = from + static_cast<float>(i) / static_cast<float>(count);
            vertices[i].rgba = static_cast<std::uint32_t>(i);
        }
        return vertices;
    }

    void Draw(LineBatch& batch, LineStyle const& style = {}) { batch.Draw(*m_renderer, m_view, style); }

    /// Frames in which the batch is drawn until it is uploaded.
    int CountFrames(LineBatch& batch) {
        int frames = 0;
        while (!batch.IsUploaded()) {
            m_renderer->PresentCurrentAndSubmitNextFrame(false);
            StartFrame();
            Draw(batch);
            ++frames;
        }
        return frames;
    }

    /// What was written to textures, as texels, from the one call that did.
    static std::vector<LineVertex> TheUpload() {
        std::vector<recorder::Call> const updates = recorder::CallsNamed("updateTexture2D");
        EXPECT_THAT(updates, SizeIs(1));
        std::vector<LineVertex> texels(updates.at(0).payload.size() / sizeof(LineVertex));
        std::memcpy(texels.data(), updates.at(0).payload.data(), texels.size() * sizeof(LineVertex));
        return texels;
    }

    /// What they are, a letter each: vertices by their colour, gaps, and what joins a closed line.
    static std::string Letters(std::vector<LineVertex> const& texels) {
        std::string letters;
        for (LineVertex const& texel : texels) {
            std::uint32_t bits;
            std::memcpy(&bits, &texel.position.x, sizeof(bits));
            if (bits == 0x7FC00000u)
                letters += '|';
            else if (bits == 0x7FC00001u)
                letters += '<';
            else if (bits == 0x7FC00002u)
                letters += '>';
            else
                letters += static_cast<char>('0' + texel.rgba);
        }
        return letters;
    }
};

} // namespace

TEST_F(LineBatchTest, DrawsForAFewCallsHoweverManyLinesThereAre) {
    LineBatch few;
    few.Set(Row(10));
    LineBatch many;
    many.Set(Row(262'144 * 4));
    for (LineBatch* const batch : {&few, &many}) {
        CountFrames(*batch);
        recorder::ClearCalls();
        Draw(*batch);
        EXPECT_THAT(recorder::CallNames(),
                    ElementsAre("setTransform", "setTransform", "setState", "setVertexCount", "setTexture",
                                "setUniform", "setUniform", "submit"));
    }
}

TEST_F(LineBatchTest, SegmentsAreHandedOverOnceAndAsTheyAre) {
    std::vector<LineSegment> const segments = Row(3);
    LineBatch batch;
    batch.Set(segments);
    Draw(batch);
    std::vector<recorder::Call> const updates = recorder::CallsNamed("updateTexture2D");
    ASSERT_THAT(updates, SizeIs(1));
    ASSERT_THAT(updates[0].payload, SizeIs(3 * sizeof(LineSegment)));
    EXPECT_EQ(std::memcmp(updates[0].payload.data(), segments.data(), 3 * sizeof(LineSegment)), 0);
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 0u);
    EXPECT_THAT(recorder::CallTexts(), Contains("setVertexCount(6)"));
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_LINES));
}

TEST_F(LineBatchTest, PolylinesHaveGapsBetweenThem) {
    std::vector<LineVertex> const three = Vertices(3);
    std::vector<LineVertex> const two = Vertices(2);
    LineBatch batch;
    batch.Set(std::vector<Polyline>{
        {three}, {two}, {}, {three, PolylineEnds::Closed}, {two, PolylineEnds::Closed}});
    EXPECT_EQ(batch.GetCount(), 5u);
    Draw(batch);
    EXPECT_EQ(Letters(TheUpload()), "|012|01||2<0120>1|01|");
    EXPECT_TRUE(batch.IsUploaded());
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_LINES));
    EXPECT_THAT(recorder::CallTexts(),
                Contains("setVertexCount(40)")); // a segment begins at all but the last gap
    recorder::ClearCalls();
    Draw(batch, {.width = 3.0f});
    EXPECT_EQ(recorder::CountCalls("setVertexCount"), 0u);
    std::vector<std::uint32_t> const indices = TheDraw().IndicesAs<std::uint32_t>();
    ASSERT_GE(indices.size(), 120u) << "two triangles for each";
    EXPECT_THAT(std::vector(indices.begin() + 114, indices.begin() + 120),
                ElementsAre(76, 77, 78, 78, 79, 76));
    batch.Append(std::vector<Polyline>{{two}});
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_EQ(Letters(TheUpload()).substr(0, 3), "01|") << "into what is left of the texture, or a new one";
}

TEST_F(LineBatchTest, EachStyleHasItsProgram) {
    LineBatch segments;
    segments.Set(Row(3));
    std::vector<LineVertex> const vertices = Vertices(3);
    LineBatch polylines;
    polylines.Set(std::vector<Polyline>{{vertices}});
    auto const programOf = [&](LineBatch& batch, LineStyle const& style) {
        recorder::ClearCalls();
        Draw(batch, style);
        return recorder::Draws().at(0).program.idx;
    };
    auto const expected = [](char const* vertexShader, char const* fragmentShader) {
        return zx3D::ProgramFactory::Get().CreateProgram(vertexShader, fragmentShader)->idx;
    };
    LineStyle const stippled{.stipple = {0x00FF, 1}};
    EXPECT_EQ(programOf(segments, {}), expected("vs_line_batch_thin", "fs_basic"));
    EXPECT_EQ(programOf(segments, {.width = 2.0f}), expected("vs_line_batch_wide", "fs_basic"));
    EXPECT_EQ(programOf(segments, {.width = 2.0f, .cap = LineCap::Square}),
              expected("vs_line_batch_wide", "fs_basic"));
    EXPECT_EQ(programOf(segments, {.width = 2.0f, .cap = LineCap::Round}),
              expected("vs_line_batch_shape", "fs_line_batch_shape"));
    EXPECT_EQ(programOf(segments, {.smoothEdges = true}),
              expected("vs_line_batch_shape", "fs_line_batch_smooth"));
    EXPECT_EQ(programOf(segments, stippled), expected("vs_line_batch_shape", "fs_line_batch_stipple"));
    EXPECT_EQ(programOf(polylines, {}), expected("vs_line_batch_thin_joined", "fs_basic"));
    EXPECT_EQ(programOf(polylines, {.width = 0.5f, .widthUnit = SizeUnit::World}),
              expected("vs_line_batch_joined", "fs_line_batch_shape"));
    QMatrix4x4 projection; // the camera is among the lines
    projection(3, 0) = 2.0f;
    projection(3, 3) = -0.5f;
    m_view.SetProjectionMatrix(projection);
    EXPECT_EQ(programOf(segments, {.width = 2.0f}), expected("vs_line_batch_wide_cut", "fs_basic"));
    EXPECT_EQ(programOf(polylines, {.width = 2.0f}),
              expected("vs_line_batch_joined_cut", "fs_line_batch_shape"));
}

TEST_F(LineBatchTest, StipplesOfPolylinesAreMeasuredFirst) {
    std::vector<LineVertex> const vertices = Vertices(600);
    LineBatch batch;
    batch.Set(std::vector<Polyline>{{vertices}});
    LineStyle const style{.stipple = {0x00FF, 3}, .smoothEdges = true};
    auto const programs = [&] {
        std::vector<std::uint16_t> indices;
        for (recorder::Draw const& draw : recorder::Draws())
            indices.push_back(draw.program.idx);
        return indices;
    };
    auto const expected = [](char const* vertexShader, char const* fragmentShader) {
        return zx3D::ProgramFactory::Get().CreateProgram(vertexShader, fragmentShader)->idx;
    };
    Draw(batch, style);
    EXPECT_THAT(programs(),
                ElementsAre(zx3D::ProgramFactory::Get().CreateProgram("cs_line_batch_lengths")->idx,
                            zx3D::ProgramFactory::Get().CreateProgram("cs_line_batch_carries")->idx,
                            expected("vs_line_batch_run", "fs_line_batch_smooth_stipple")));
    EXPECT_THAT(recorder::Draws()[0].uniforms.at("u_lineRun"), ElementsAre(0.0f, 601.0f, 48.0f, 3.0f));
    EXPECT_THAT(recorder::Draws()[1].uniforms.at("u_lineRun"), ElementsAre(0.0f, 0.0f, 48.0f, 3.0f));
    std::size_t const textures = recorder::CountCalls("createTexture2D");
    Draw(batch, style);
    EXPECT_EQ(recorder::CountCalls("createTexture2D"), textures + 3) << "in the same frame others";
    StartFrame();
    Draw(batch, style);
    Draw(batch, style);
    EXPECT_EQ(recorder::CountCalls("createTexture2D"), textures + 3) << "and in the next the same";
    DisableCompute();
    recorder::ClearCalls();
    Draw(batch, style);
    EXPECT_THAT(programs(), ElementsAre(expected("vs_line_batch_joined", "fs_line_batch_smooth_stipple")));
}

TEST_F(LineBatchTest, StylesAreUniforms) {
    LineBatch batch;
    batch.Set(Row(3));
    Draw(batch, {.width = 3.0f, .cap = LineCap::Square});
    EXPECT_THAT(TheDraw().uniforms.at("u_lineSize"), ElementsAre(1.5f, 0.0f, 1.0f, 0.0f));
    EXPECT_THAT(TheDraw().uniforms.at("u_lineShape"), ElementsAre(1.0f, 0.0f, 0.0f, 8.0f));
    recorder::ClearCalls();
    Draw(batch,
         {.width = 0.5f, .widthUnit = SizeUnit::World, .join = LineJoin::Round, .cap = LineCap::Round});
    EXPECT_THAT(TheDraw().uniforms.at("u_lineSize"), ElementsAre(0.0f, 6.25f, 1.0f, 0.0f))
        << "25 pixels a unit";
    EXPECT_THAT(TheDraw().uniforms.at("u_lineShape"), ElementsAre(0.0f, 1.0f, 1.0f, 0.0f));
    recorder::ClearCalls();
    Draw(batch, {.stipple = {0x0F0F, 3}, .smoothEdges = true});
    EXPECT_THAT(TheDraw().uniforms.at("u_lineStipple"), ElementsAre(0x0F0F, 3.0f, 0.0f, 0.0f));
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT) & ~BGFX_STATE_WRITE_Z);
}

TEST_F(LineBatchTest, DepthsAreShiftedByPixels) {
    LineBatch batch;
    batch.Set(Row(3));
    // A parallel view of 50 pixels, which are 2 units: a pixel is 0.04 long. Then one in perspective.
    QMatrix4x4 projection;
    m_view.SetProjectionMatrix(projection);
    float const step = (bgfx::getCaps()->homogeneousDepth ? 2.0f : 1.0f) / 65'536.0f;
    Draw(batch, {.depthOffset = 2.0f});
    EXPECT_FLOAT_EQ(TheDraw().uniforms.at("u_lineSize")[2], 1.0f);
    EXPECT_FLOAT_EQ(TheDraw().uniforms.at("u_lineSize")[3], -2.0f * 0.04f - 2.0f * step);
    recorder::ClearCalls();
    bx::mtxProj(projection.data(), 60.0f, 2.0f, 0.1f, 100.0f, bgfx::getCaps()->homogeneousDepth,
                bx::Handedness::Right);
    m_view.SetProjectionMatrix(projection);
    Draw(batch, {.depthOffset = 2.0f});
    std::vector<float> const size = TheDraw().uniforms.at("u_lineSize");
    // 7 units away, and 2 pixels nearer.
    double const away = 7.0;
    double const nearer = away - 2.0 * away * 2.0 / (projection(1, 1) * 50.0);
    auto const depth = [&](double z) { return (projection(2, 2) * -z + projection(2, 3)) / z; };
    double const clipZ = depth(away) * away;
    EXPECT_NEAR((clipZ * size[2] + away * size[3]) / away, depth(nearer) - 2.0 * step, 1e-6);
}

TEST_F(LineBatchTest, WidthsAndOffsetsThatMakeNoSenseAreOneAndNone) {
    LineBatch batch;
    batch.Set(Row(3));
    for (float const width : {0.0f, -7.0f, kNotANumber}) {
        recorder::ClearCalls();
        Draw(batch, {.width = width, .depthOffset = kNotANumber});
        EXPECT_THAT(recorder::CallTexts(), Contains("setVertexCount(6)")) << width;
        EXPECT_THAT(TheDraw().uniforms.at("u_lineSize"), ElementsAre(0.5f, 0.0f, 1.0f, 0.0f)) << width;
    }
}

TEST_F(LineBatchTest, TheBoxIsInTheWorldAndHasWhatIsFinite) {
    LineBatch batch;
    EXPECT_FALSE(batch.GetBoundingBox());
    ExpectWarning("line-batch.not-finite");
    std::vector<LineSegment> segments(2);
    segments[0].start.position = {-1.0f, 2.0f, 3.0f};
    segments[0].end.position = {4.0f, -5.0f, 6.0f};
    segments[1].end.position = {kNotANumber, 900.0f, 0.0f};
    batch.Set(segments);
    batch.SetOrigin({1000.5, 0.0, 0.0});
    WorldBox const box{{999.5, -5.0, 3.0}, {1004.5, 2.0, 6.0}};
    EXPECT_EQ(batch.GetBoundingBox(), box);
    std::vector<LineVertex> const vertices = {segments[0].start, segments[0].end, segments[1].end};
    batch.Set(std::vector<Polyline>{{vertices, PolylineEnds::Closed}});
    EXPECT_EQ(batch.GetBoundingBox(), box);
    batch.Clear();
    EXPECT_FALSE(batch.GetBoundingBox());
}

TEST_F(LineBatchTest, RefusedPositionsAreCountedAndBecomeGaps) {
    std::vector<LineSegment> segments = Row(4);
    segments[1].end.position.z = kNotANumber;
    LineBatch batch;
    batch.Set(segments);
    EXPECT_THAT(TakeWarnings("line-batch.not-finite"), ElementsAre(HasSubstr("1 of 4 segments")));
    Draw(batch);
    EXPECT_EQ(Letters(TheUpload()).substr(2, 2), "||");
    std::vector<LineVertex> vertices = Vertices(5);
    vertices[3].position.y = std::numeric_limits<float>::infinity();
    batch.Set(std::vector<Polyline>{{vertices}});
    EXPECT_THAT(TakeWarnings("line-batch.not-finite"), ElementsAre(HasSubstr("1 of 5 vertices")));
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_EQ(Letters(TheUpload()), "|012|4|");
    // Whoever hands over such numbers cannot forge what joins closed lines.
    std::uint32_t const bits = 0x7FC00001u;
    std::memcpy(&vertices[2].position.x, &bits, sizeof(bits));
    batch.Update(0, 2, std::span(&vertices[2], 1));
    EXPECT_THAT(TakeWarnings("line-batch.not-finite"), SizeIs(1));
    recorder::ClearCalls();
    Draw(batch);
    batch.Update(0, 3, std::span(&vertices[0], 1));
    EXPECT_EQ(Letters(TheUpload()), "0") << "where there was a gap";
}

TEST_F(LineBatchTest, WhatTheBudgetOfAFrameHasNoRoomForFollows) {
    LineBatch batch;
    batch.Set(Row(2048 * 10));
    m_renderer->SetUploadBudget(4096 * 16 * 4 + 16); // an odd number of texels: no segment is halved
    EXPECT_EQ(CountFrames(batch), 3);
    batch.Append(Row(2048 * 4));
    EXPECT_EQ(CountFrames(batch), 1);
    for (recorder::Call const& update : recorder::CallsNamed("updateTexture2D"))
        EXPECT_EQ(update.payload.size() % sizeof(LineSegment), 0u);
}

TEST_F(LineBatchTest, HalfAPolylineIsDrawnAsFarAsItsNeighboursAreThere) {
    std::vector<LineVertex> const line = Vertices(4096 * 2);
    LineBatch batch;
    batch.Set(std::vector<Polyline>{{line}, {line}});
    m_renderer->SetUploadBudget(4096 * 16 * 3);
    StartFrame();
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_EQ(batch.GetUploadedCount(), 1u);
    EXPECT_EQ(m_renderer->GetFrameStatistics().primitives, 4096u * 3 - 3);
    EXPECT_EQ(CountFrames(batch), 1);
    EXPECT_EQ(batch.GetUploadedCount(), 2u);
}

TEST_F(LineBatchTest, AStreamOfSmallPiecesGetsFewTextures) {
    std::vector<LineVertex> const line = Vertices(9);
    LineBatch batch;
    for (int i = 0; i < 5000; ++i) {
        batch.Append(std::vector<Polyline>{{line}});
        Draw(batch);
    }
    EXPECT_EQ(batch.GetCount(), 5000u);
    EXPECT_LE(recorder::CountCalls("createTexture2D"), 10u);
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_LE(recorder::CountCalls("submit"), 10u);
}

TEST_F(LineBatchTest, PiecesOutsideThePictureAreNotSubmitted) {
    std::vector<LineSegment> segments(3 * 262'144);
    for (std::size_t i = 0; i < segments.size(); ++i)
        segments[i].start.position.x = segments[i].end.position.x = i / 262'144 == 1 ? 0.0f : 1.2f;
    LineBatch batch;
    batch.Set(segments);
    CountFrames(batch);
    auto const count = [&](LineStyle const& style) {
        StartFrame();
        Draw(batch, style);
        return m_renderer->GetFrameStatistics().primitives;
    };
    EXPECT_EQ(count({}), 262'144u);
    EXPECT_EQ(count({.width = 9.0f, .join = LineJoin::Bevel}), 262'144u)
        << "widths that end before the picture";
    EXPECT_EQ(count({.width = 15.0f, .join = LineJoin::Bevel}), 3 * 262'144u) << "and that reach in";
    EXPECT_EQ(count({.width = 0.5f, .widthUnit = SizeUnit::World}), 3 * 262'144u);
    m_view.SetOrigin({-3.0, 0.0, 0.0});
    EXPECT_EQ(count({}), 0u);
}

TEST_F(LineBatchTest, UpdatesBeyondTheEndAreRefusedAsAWhole) {
    LineBatch batch;
    batch.Set(Row(10));
    Draw(batch);
    recorder::ClearCalls();
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    for (std::uint64_t const first : {std::uint64_t(8), std::uint64_t(11), largest}) {
        batch.Update(first, Row(3));
        EXPECT_THAT(TakeWarnings("line-batch.range"), ElementsAre(HasSubstr("there are 10"))) << first;
    }
    batch.Update(7, Row(3));
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 1u);

    std::vector<LineVertex> const line = Vertices(4);
    batch.Set(std::vector<Polyline>{{line}, {line, PolylineEnds::Closed}});
    Draw(batch);
    recorder::ClearCalls();
    for (auto const& [polyline, first] :
         {std::pair<std::uint64_t, std::uint64_t>{2, 0}, {0, 3}, {1, 3}, {largest, 0}, {1, largest}}) {
        batch.Update(polyline, first, std::span(line).first(2));
        EXPECT_THAT(TakeWarnings("line-batch.range"), SizeIs(1)) << polyline << ", " << first;
    }
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 0u);
    batch.Update(0, 2, std::span(line).first(2));
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 1u);
    batch.Update(1, 0, line);
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 5u) << "the vertices, and three that are repeated";
}

TEST_F(LineBatchTest, TheOtherKindOfLinesIsRefused) {
    std::vector<LineVertex> const line = Vertices(4);
    std::vector<Polyline> const polylines = {{line}};
    LineBatch batch;
    batch.Set(Row(10));
    batch.Append(polylines);
    batch.Update(0, 0, line);
    EXPECT_THAT(TakeWarnings("line-batch.kind"), SizeIs(2));
    EXPECT_EQ(batch.GetCount(), 10u);
    batch.Set(polylines);
    EXPECT_EQ(batch.GetCount(), 1u);
    batch.Append(Row(10));
    batch.Update(0, Row(1));
    EXPECT_THAT(TakeWarnings("line-batch.kind"), SizeIs(2));
    EXPECT_EQ(batch.GetCount(), 1u);
}

TEST_F(LineBatchTest, WhereTexturesRanOutItIsCountedAndTriedAgain) {
    std::vector<LineVertex> const line = Vertices(10);
    LineBatch batch;
    batch.Set(std::vector<Polyline>{{line}});
    LineBatch stippled;
    stippled.Set(std::vector<Polyline>{{line}});
    CountFrames(stippled);
    LineStyle const style{.stipple = {0x00FF, 1}};
    std::vector<bgfx::TextureHandle> textures;
    while (textures.empty() || bgfx::isValid(textures.back()))
        textures.push_back(bgfx::createTexture2D(1, 1, false, 1, bgfx::TextureFormat::RGBA8));
    textures.pop_back();
    for (int frame = 0; frame < 3; ++frame) {
        StartFrame();
        recorder::ClearCalls();
        Draw(batch);
        Draw(stippled, style);
        EXPECT_EQ(recorder::CountCalls("submit"), 0u);
        EXPECT_EQ(m_renderer->GetFrameStatistics().CountLeftOut(LeftOutReason::NoBuffer), 2u);
    }
    EXPECT_THAT(TakeWarnings("draw.no-buffer"), SizeIs(1));
    for (bgfx::TextureHandle const texture : textures)
        bgfx::destroy(texture);
    EXPECT_EQ(CountFrames(batch), 1);
    recorder::ClearCalls();
    Draw(stippled, style);
    EXPECT_EQ(recorder::CountCalls("submit"), 1u);
}

TEST_F(LineBatchTest, AnEmptyBatchDrawsNothing) {
    LineBatch batch;
    Draw(batch);
    batch.Set(zx3D::DataSpan<LineSegment const>());
    batch.Set(zx3D::DataSpan<Polyline const>());
    Draw(batch);
    batch.Update(0, zx3D::DataSpan<LineSegment const>(nullptr, 4));
    EXPECT_THAT(recorder::CallNames(), IsEmpty());
    EXPECT_TRUE(batch.IsUploaded());
}

TEST_F(LineBatchTest, OutlivesTheContextWithTheDataItKeeps) {
    std::vector<LineVertex> const line = Vertices(5000);
    LineBatch segments(LineBatch::KeepData::Yes);
    segments.Set(Row(5000));
    LineBatch polylines(LineBatch::KeepData::Yes);
    polylines.Set(std::vector<Polyline>{{line}});
    CountFrames(segments);
    CountFrames(polylines);
    TearDown();
    EXPECT_EQ(segments.GetUploadedCount(), 0u);
    EXPECT_EQ(polylines.GetUploadedCount(), 0u);
    segments.Update(4999, Row(1));
    polylines.Update(0, 4999, std::span(line).first(1));
    SetUp();
    EXPECT_EQ(CountFrames(segments), 1);
    EXPECT_EQ(CountFrames(polylines), 1);
    EXPECT_EQ(segments.GetCount(), 5000u);
    EXPECT_EQ(polylines.GetCount(), 1u);
}

TEST_F(LineBatchTest, WithoutItsDataItIsEmptyAfterTheContextAndSaysSo) {
    std::vector<LineVertex> const line = Vertices(2);
    LineBatch uploaded;
    uploaded.Set(std::vector<Polyline>{{line}});
    CountFrames(uploaded);
    LineBatch waiting;
    waiting.Set(Row(5000));
    TearDown();
    SetUp();
    Draw(uploaded);
    Draw(uploaded);
    EXPECT_THAT(TakeWarnings("line-batch.lost"), SizeIs(1));
    EXPECT_EQ(uploaded.GetCount(), 0u);
    EXPECT_FALSE(uploaded.GetBoundingBox());
    uploaded.Set(Row(1)); // of the other kind
    EXPECT_EQ(uploaded.GetCount(), 1u);
    EXPECT_EQ(CountFrames(waiting), 1);
    EXPECT_EQ(waiting.GetCount(), 5000u) << "what was never handed over is not lost";
}

TEST_F(LineBatchTest, MovesWithWhatItHas) {
    LineBatch batch;
    batch.Set(Row(10));
    Draw(batch);
    LineBatch moved(std::move(batch));
    recorder::ClearCalls();
    Draw(moved);
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 0u);
    EXPECT_EQ(recorder::CountCalls("submit"), 1u);
}

TEST_F(LineBatchTest, WithoutAContextNothingIsDrawnAndNothingIsLost) {
    LineBatch batch;
    batch.Set(Row(10));
    TearDown();
    BGFXRenderer renderer;
    batch.Draw(renderer, m_view);
    EXPECT_EQ(batch.GetCount(), 10u);
    SetUp();
}
