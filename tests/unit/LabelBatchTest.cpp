// Labels in the world: which are shown, where, and what bgfx is asked for.
#include <DrawFixture.h>
#include <Warnings.h>

#include <zx3DQt/LabelBatch.h>
#include <zx3DQt/Library.h>
#include <zx3DQt/OrbitCamera.h>

#include <zx3D/Text.h>

#include <QColor>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <set>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// A corner of a glyph, a box or a line.
struct Corner {
    float x, y, depth;
    std::int16_t shape[4];
    std::uint8_t color[4];

    bool IsGlyph() const { return shape[2] == -32767; }
};

/// A label's box by its corners, in double precision.
using Corners = std::array<QPointF, 4>;

Corners CornersOf(DrawnLabel const& label, double gap = 0.0) {
    double const angle = label.angle * std::numbers::pi / 180.0;
    QPointF const along(std::cos(angle), -std::sin(angle));
    QPointF const down(-along.y(), along.x());
    QPointF const length = along * (0.5 * label.size.width() + gap);
    QPointF const breadth = down * (0.5 * label.size.height() + gap);
    return {label.center - length - breadth, label.center + length - breadth, label.center + length + breadth,
            label.center - length + breadth};
}

/// Convex shapes overlap unless a side of one of them separates them.
bool Overlap(Corners const& a, Corners const& b) {
    constexpr double rounding = 1e-3;
    for (Corners const* const shape : {&a, &b}) {
        for (std::size_t i = 0; i < 4; ++i) {
            QPointF const side = (*shape)[(i + 1) % 4] - (*shape)[i];
            QPointF const axis = QPointF(-side.y(), side.x()) / std::hypot(side.x(), side.y());
            auto const range = [&](Corners const& corners) {
                std::array<double, 4> places;
                std::transform(corners.begin(), corners.end(), places.begin(),
                               [&](QPointF const& corner) { return QPointF::dotProduct(corner, axis); });
                return std::minmax({places[0], places[1], places[2], places[3]});
            };
            auto const ofA = range(a);
            auto const ofB = range(b);
            if (ofA.second <= ofB.first + rounding || ofB.second <= ofA.first + rounding)
                return false;
        }
    }
    return true;
}

class LabelBatchTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_font = zx3D::LoadDefaultFont(12).value();
        m_style.font = m_font;
        StartFrame();
        m_view.SetViewport({0, 0, 1280, 800});
        recorder::ClearCalls();
    }
    void TearDown() override {
        zx3D::DestroyFont(m_font);
        DrawFixture::TearDown();
    }

    std::vector<DrawnLabel> Draw(LabelBatch& batch) {
        batch.Draw(*m_renderer, m_view, m_style);
        zx3D::DataSpan<DrawnLabel const> const drawn = batch.GetDrawnLabels(*m_renderer, m_view);
        return {drawn.data, drawn.data + drawn.count};
    }

    /// The indices of the labels that are shown.
    std::set<std::uint64_t> Shown(LabelBatch& batch) {
        std::set<std::uint64_t> indices;
        for (DrawnLabel const& label : Draw(batch))
            indices.insert(label.index);
        return indices;
    }

    void NextFrame() {
        m_renderer->PresentCurrentAndSubmitNextFrame(false);
        StartFrame();
        recorder::ClearCalls();
    }

    /// A label that the identity shows at a pixel.
    static Label At(double x, double y, QString const& text = "label", float priority = 0.0f) {
        return {
            {static_cast<float>(x / 640.0 - 1.0), static_cast<float>(1.0 - y / 400.0), 0.5f}, text, priority};
    }

    /// Labels in a ball of radius 1, some of which follow a direction.
    static std::vector<Label> Cloud(std::size_t count, unsigned seed, bool withDirections) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> coordinate(-1.0f, 1.0f);
        std::vector<Label> labels(count);
        for (std::size_t i = 0; i < count; ++i) {
            labels[i].position = {coordinate(random), coordinate(random), coordinate(random)};
            labels[i].text = QString("P%1").arg(i, 1 + static_cast<int>(i % 5));
            labels[i].priority = 0.5f * (coordinate(random) + 1.0f);
            if (withDirections && i % 2 == 0)
                labels[i].direction = {coordinate(random), coordinate(random), coordinate(random)};
        }
        return labels;
    }

    static OrbitCamera CloudCamera() {
        OrbitCamera camera;
        camera.SetDistance(4.0);
        camera.SetElevation(25.0);
        return camera;
    }

    zx3D::FontHandle m_font;
    LabelStyle m_style;
};

} // namespace

TEST_F(LabelBatchTest, AllLabelsAreOneDrawOfBgfxs) {
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(100, 100, "ab"), At(300, 100, "cde")});
    m_style.boxColor = zx3D::Color{0, 0, 0, 1};
    Draw(batch);
    NextFrame(); // the glyphs are there
    Draw(batch);
    EXPECT_THAT(recorder::CallNames(), ElementsAre("allocTransientVertexBuffer", "setState", "setTexture",
                                                   "setVertexBuffer", "setIndexBuffer", "submit"));
    EXPECT_THAT(TheDraw().VerticesAs<Corner>(), SizeIs((2 + 5) * 4));
    EXPECT_EQ(TheDraw().view, 5);
    EXPECT_EQ(m_renderer->GetFrameStatistics().calls, 1u);
}

TEST_F(LabelBatchTest, OnlyATestedDepthIsCompared) {
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(100, 100)});
    auto const depthTest = [&] { return *TheDraw().state & BGFX_STATE_DEPTH_TEST_MASK; };
    Draw(batch);
    EXPECT_EQ(depthTest(), 0u);
    recorder::ClearCalls();
    m_style.depth = zx3D::AnnotationDepth::Tested;
    m_style.depthOffset = 0.0f;
    Draw(batch);
    EXPECT_EQ(depthTest(), BGFX_STATE_DEPTH_TEST_LEQUAL);
    EXPECT_EQ(TheDraw().VerticesAs<Corner>()[0].depth, 0.5f);
    EXPECT_EQ(*TheDraw().state & BGFX_STATE_WRITE_Z, 0u);
}

TEST_F(LabelBatchTest, BoxesStandBesideTheirPlacesAsTheyAreAligned) {
    zx3D::TextSize const size = zx3D::MeasureText(m_font, "label");
    m_style.padding = 3.0f;
    double const width = size.width + 6.0, height = size.height + 6.0;
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(200, 100)});
    auto const center = [&](QFlags<Qt::AlignmentFlag> alignment, QPointF const& offset) {
        m_style.alignment = alignment;
        m_style.offset = offset;
        std::vector<DrawnLabel> const drawn = Draw(batch);
        EXPECT_EQ(drawn.at(0).size, QSizeF(width, height));
        return drawn.at(0).center;
    };
    EXPECT_EQ(center(Qt::AlignLeft | Qt::AlignTop, {}), QPointF(200 + width / 2, 100 + height / 2));
    EXPECT_EQ(center(Qt::AlignRight | Qt::AlignBottom, {}), QPointF(200 - width / 2, 100 - height / 2));
    EXPECT_EQ(center(Qt::AlignLeft | Qt::AlignTop, {7, -20}), QPointF(207 + width / 2, 80 + height / 2));
}

TEST_F(LabelBatchTest, PlacesAreThoseOfDoublePrecision) {
    OrbitCamera camera = CloudCamera();
    WorldPosition const origin{500'000.125, 5'400'000.25, 300.5};
    camera.SetTarget(origin);
    std::vector<Label> const labels = Cloud(500, 1, true);
    LabelBatch batch;
    batch.SetOrigin(origin);
    batch.Set(labels);
    m_style.overlap = LabelOverlap::Allowed;
    for (int frame = 0; frame < 4; ++frame) {
        camera.SetAzimuth(31.0 * frame);
        camera.Apply(m_view);
        auto const project = [&](WorldVector const& place) {
            WorldVector const moved = origin + place - m_view.GetOrigin();
            auto const transform = [](QMatrix4x4 const& matrix, std::array<double, 4> const& in) {
                std::array<double, 4> out{};
                for (int row = 0; row < 4; ++row) {
                    for (int column = 0; column < 4; ++column)
                        out[static_cast<std::size_t>(row)] +=
                            double(matrix(row, column)) * in[static_cast<std::size_t>(column)];
                }
                return out;
            };
            auto const clip = transform(m_view.GetProjectionMatrix(),
                                        transform(m_view.GetViewMatrix(), {moved.x, moved.y, moved.z, 1.0}));
            return QPointF(640.0 * (1.0 + clip[0] / clip[3]), 400.0 * (1.0 - clip[1] / clip[3]));
        };
        std::vector<DrawnLabel> const drawn = Draw(batch);
        EXPECT_THAT(drawn, SizeIs(testing::Gt(300u)));
        for (DrawnLabel const& label : drawn) {
            Label const& wanted = labels[label.index];
            WorldVector const place{wanted.position.x, wanted.position.y, wanted.position.z};
            WorldVector const direction{wanted.direction.x, wanted.direction.y, wanted.direction.z};
            QPointF const pixel = project(place);
            if (direction == WorldVector()) {
                EXPECT_EQ(label.angle, 0.0);
                QPointF const corner = CornersOf(label)[0];
                EXPECT_EQ(corner.x(), std::floor(pixel.x() - label.size.width() / 2 + 0.5)) << label.index;
                EXPECT_EQ(corner.y(), std::floor(pixel.y() - label.size.height() / 2 + 0.5)) << label.index;
            } else {
                EXPECT_NEAR(label.center.x(), pixel.x(), 1e-3) << label.index;
                EXPECT_NEAR(label.center.y(), pixel.y(), 1e-3) << label.index;
                QPointF const along = project(place + 1e-4 * direction) - project(place - 1e-4 * direction);
                double const angle = std::atan2(-along.y(), along.x()) * 180.0 / std::numbers::pi;
                EXPECT_NEAR(std::remainder(label.angle - angle, 180.0), 0.0, 0.05) << label.index;
                EXPECT_LE(std::abs(label.angle), 93.0) << "not upside down";
            }
        }
    }
}

TEST_F(LabelBatchTest, NoTwoLabelsOverlapAndNoneIsHiddenWithoutNeed) {
    for (unsigned seed = 0; seed < 6; ++seed) {
        std::vector<Label> const labels = Cloud(300, seed, seed % 2 == 1);
        LabelBatch batch;
        batch.Set(labels);
        OrbitCamera camera = CloudCamera();
        camera.SetAzimuth(40.0 * seed);
        camera.Apply(m_view);
        m_style.overlap = LabelOverlap::Allowed;
        std::vector<DrawnLabel> const all = Draw(batch);
        m_style.overlap = LabelOverlap::Avoided;
        std::vector<DrawnLabel> const shown = Draw(batch);
        ASSERT_GT(shown.size(), 20u);
        ASSERT_LT(shown.size(), all.size());
        std::set<std::uint64_t> indices;
        for (std::size_t i = 0; i < shown.size(); ++i) {
            indices.insert(shown[i].index);
            for (std::size_t j = 0; j < i; ++j)
                EXPECT_FALSE(Overlap(CornersOf(shown[i]), CornersOf(shown[j])))
                    << seed << ": " << shown[i].index << " and " << shown[j].index;
        }
        for (DrawnLabel const& label : all) {
            bool const hasReason = indices.contains(label.index) ||
                                   std::any_of(shown.begin(), shown.end(), [&](DrawnLabel const& other) {
                                       return labels[other.index].priority >= labels[label.index].priority &&
                                              Overlap(CornersOf(label, 0.01), CornersOf(other));
                                   });
            EXPECT_TRUE(hasReason) << seed << ": " << label.index << " is hidden for nothing";
        }
    }
}

TEST_F(LabelBatchTest, LabelsDoNotFlickerWhileTheCameraOrbits) {
    constexpr int frames = 150;
    constexpr int soon = 30; // frames: half a second
    constexpr std::size_t count = 3'000;
    LabelBatch batch;
    batch.Set(Cloud(count, 7, false));
    OrbitCamera camera = CloudCamera();
    std::vector<bool> wasShown(count, false);
    std::vector<int> lastChange(count, -soon - 1);
    std::uint64_t changes = 0, flickers = 0, shownInAll = 0;
    for (int frame = 0; frame < frames; ++frame) {
        camera.SetAzimuth(0.05 * frame);
        camera.Apply(m_view);
        std::vector<bool> shown(count, false);
        for (DrawnLabel const& label : Draw(batch)) {
            shown[label.index] = true;
            ++shownInAll;
        }
        for (std::size_t i = 0; i < count; ++i) {
            bool const isShown = shown[i];
            if (frame > 0 && isShown != wasShown[i]) {
                ++changes;
                flickers += frame - lastChange[i] <= soon ? 1 : 0;
                lastChange[i] = frame;
            }
            wasShown[i] = isShown;
        }
        NextFrame();
    }
    std::uint64_t const pairs = std::uint64_t(frames - 1) * count;
    EXPECT_GT(shownInAll / frames, 100u);
    EXPECT_GT(changes, 0u) << "the camera moves";
    EXPECT_LT(changes * 1000, pairs) << "labels that come or go from one frame to the next";
    EXPECT_LT(flickers * 1000, shownInAll) << "labels that come and go again";
}

TEST_F(LabelBatchTest, AShownLabelGivesWayOnlyToAClearlyGreaterPriority) {
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(200, 100, "first", 1.0f), At(600, 100, "second", 1.05f)});
    EXPECT_THAT(Shown(batch), ElementsAre(0, 1));
    auto const moveSecond = [&](double x, float priority) {
        batch.Update(1, std::vector<Label>{At(x, 100, "second", priority)});
        return Shown(batch);
    };
    EXPECT_THAT(moveSecond(210, 1.05f), ElementsAre(1)) << "both were shown: the greater one stays";
    EXPECT_THAT(moveSecond(210, 0.95f), ElementsAre(1)) << "not clearly less";
    EXPECT_THAT(moveSecond(210, 0.85f), ElementsAre(0)) << "clearly less";
    EXPECT_THAT(moveSecond(210, 1.05f), ElementsAre(0));
    EXPECT_THAT(moveSecond(210, 1.15f), ElementsAre(1));
}

TEST_F(LabelBatchTest, AHiddenLabelComesBackWithRoomToSpare) {
    double const width = zx3D::MeasureText(m_font, "label").width + 4.0;
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(200, 100), At(210, 100)});
    EXPECT_THAT(Shown(batch), ElementsAre(0));
    auto const at = [&](double x) {
        batch.Update(1, std::vector<Label>{At(x, 100)});
        return Shown(batch);
    };
    EXPECT_THAT(at(200 + width + 1), ElementsAre(0)) << "it would touch nothing";
    EXPECT_THAT(at(200 + width + 7), ElementsAre(0));
    EXPECT_THAT(at(200 + width + 9), ElementsAre(0, 1));
    EXPECT_THAT(at(200 + width + 1), ElementsAre(0, 1)) << "and stays until they touch";
    EXPECT_THAT(at(200 + width - 2), ElementsAre(0));
}

TEST_F(LabelBatchTest, AnotherViewHasItsOwnLabels) {
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(200, 100, "first"), At(230, 100, "second")});
    EXPECT_THAT(Shown(batch), ElementsAre(0));
    m_view.SetViewId(6);
    m_view.SetViewport({0, 0, 12800, 800});
    EXPECT_THAT(Shown(batch), ElementsAre(0, 1));
    m_view.SetViewId(5);
    EXPECT_EQ(batch.GetDrawnLabels(*m_renderer, m_view).count, 1u);
}

TEST_F(LabelBatchTest, ATextAlongADirectionIsNotTurnedOverAtTheVertical) {
    LabelBatch batch;
    auto const angleOf = [&](double degrees) {
        double const radians = degrees * std::numbers::pi / 180.0;
        Label label = At(640, 400);
        // Pixels are square: the identity shows 1280 by 800 of them.
        label.direction = {static_cast<float>(std::cos(radians) / 640.0),
                           static_cast<float>(std::sin(radians) / 400.0), 0.0f};
        if (batch.GetCount() == 0)
            batch.Set(std::vector<Label>{label});
        else
            batch.Update(0, std::vector<Label>{label});
        return Draw(batch).at(0).angle;
    };
    EXPECT_NEAR(angleOf(30), 30, 1e-3);
    EXPECT_NEAR(angleOf(88), 88, 1e-3);
    EXPECT_NEAR(angleOf(92), 92, 1e-3) << "a little beyond is as before";
    EXPECT_NEAR(angleOf(100), -80, 1e-3);
    EXPECT_NEAR(angleOf(88), -92, 1e-3) << "and back likewise";
    EXPECT_NEAR(angleOf(80), 80, 1e-3);
    EXPECT_NEAR(angleOf(180), 0, 1e-3);
}

TEST_F(LabelBatchTest, LeadersRunFromPlacesToBoxesThatAreAway) {
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(200, 100, "a")});
    m_style.leaderColor = zx3D::Color{1, 0, 0, 1};
    m_style.leaderWidth = 2.0f;
    Draw(batch);
    EXPECT_THAT(TheDraw().VerticesAs<Corner>(), SizeIs(4)) << "the place is in the box: only the glyph";
    recorder::ClearCalls();
    m_style.offset = {0.0, -40.0};
    DrawnLabel const label = Draw(batch).at(0);
    auto const corners = TheDraw().VerticesAs<Corner>();
    ASSERT_THAT(corners, SizeIs(8));
    // Upwards, two pixels broad, with half a pixel around it that fades.
    EXPECT_FALSE(corners[0].IsGlyph());
    EXPECT_FLOAT_EQ(corners[0].y, 100.5f);
    EXPECT_FLOAT_EQ(corners[1].y, static_cast<float>(label.center.y() + label.size.height() / 2) - 0.5f);
    EXPECT_FLOAT_EQ(corners[0].x, 198.5f);
    EXPECT_FLOAT_EQ(corners[3].x, 201.5f);
    EXPECT_THAT(corners[0].color, ElementsAre(255, 0, 0, 255));
    EXPECT_TRUE(corners[4].IsGlyph());
}

TEST_F(LabelBatchTest, ColorsAreTheLabelsOwnOrTheStyles) {
    LabelBatch batch;
    std::vector<Label> labels{At(200, 100, "a", 1.0f), At(400, 100, "b")};
    labels[1].rgba = 0x01020304;
    batch.Set(labels);
    m_style.color = {0, 1, 0, 1};
    Draw(batch);
    auto const corners = TheDraw().VerticesAs<Corner>();
    ASSERT_THAT(corners, SizeIs(8));
    EXPECT_THAT(corners[0].color, ElementsAre(0, 255, 0, 255));
    EXPECT_THAT(corners[4].color, ElementsAre(1, 2, 3, 4));
}

TEST_F(LabelBatchTest, WhatIsNothingIsNotDrawn) {
    LabelBatch batch;
    Draw(batch);
    batch.Append(std::vector<Label>{});
    batch.Set(std::vector<Label>{At(100, 100, "")});
    m_style.boxColor = zx3D::Color{0, 0, 0, 1};
    EXPECT_THAT(Draw(batch), IsEmpty());
    m_view.SetViewport({});
    batch.Append(std::vector<Label>{At(100, 100, "a"), At(5000, 100, "beside the view")});
    batch.Draw(*m_renderer, m_view, m_style);
    m_view.SetViewport({0, 0, 1280, 800});
    m_view.SetProjectionMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -1, 0}); // w is -z: behind
    recorder::ClearCalls();
    EXPECT_THAT(Draw(batch), IsEmpty());
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(LabelBatchTest, WhatIsNotFiniteIsRefusedAndCounted) {
    std::vector<Label> labels{At(100, 100, "a"), At(200, 100, "b"), At(300, 100, "c"), At(400, 100, "d")};
    labels[0].position.y = kNaN;
    labels[1].direction.x = std::numeric_limits<float>::infinity();
    labels[2].priority = kNaN;
    LabelBatch batch;
    batch.Set(labels);
    EXPECT_THAT(TakeWarnings("label-batch.not-finite"), ElementsAre(HasSubstr("2 of 4 labels")));
    EXPECT_EQ(batch.GetCount(), 4u);
    m_style.gap = m_style.padding = m_style.depthOffset = m_style.leaderWidth = m_style.priorityLead = kNaN;
    m_style.offset = {kNaN, 1e30};
    EXPECT_THAT(Shown(batch), ElementsAre(2, 3));
    batch.Update(0, std::vector<Label>{At(100, 100, "a")});
    EXPECT_THAT(Shown(batch), ElementsAre(0, 2, 3));
}

TEST_F(LabelBatchTest, AnUpdateBeyondTheLastLabelIsRefused) {
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(100, 100)});
    batch.Update(1, std::vector<Label>{At(200, 100)});
    batch.Update(std::numeric_limits<std::uint64_t>::max(), std::vector<Label>{At(200, 100)});
    EXPECT_THAT(TakeWarnings("label-batch.range"), SizeIs(2));
    EXPECT_EQ(batch.GetCount(), 1u);
}

TEST_F(LabelBatchTest, TheBoxIsInTheWorldAndHasWhatIsFinite) {
    LabelBatch batch;
    EXPECT_FALSE(batch.GetBoundingBox());
    ExpectWarning("label-batch.not-finite");
    batch.Set(std::vector<Label>{
        {{-1.0f, 2.0f, 3.0f}, "a"}, {{4.0f, -5.0f, 6.0f}, "b"}, {{kNaN, 9.0f, 9.0f}, "c"}});
    batch.SetOrigin({1000.5, 0.0, 0.0});
    EXPECT_EQ(batch.GetBoundingBox(), (WorldBox{{999.5, -5.0, 3.0}, {1004.5, 2.0, 6.0}}));
    batch.Clear();
    EXPECT_FALSE(batch.GetBoundingBox());
    EXPECT_EQ(batch.GetOrigin(), (WorldPosition{1000.5, 0.0, 0.0}));
}

TEST_F(LabelBatchTest, WithoutItsFontNothingIsDrawn) {
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(100, 100)});
    EXPECT_THAT(Draw(batch), SizeIs(1));
    zx3D::DestroyFont(m_font);
    ExpectWarning("text.no-font");
    EXPECT_THAT(Draw(batch), IsEmpty());
    m_style.font = m_font = zx3D::LoadDefaultFont(24).value(); // may have the same handle
    EXPECT_GT(Draw(batch).at(0).size.height(), 24.0);
}

TEST_F(LabelBatchTest, WhatTheTransientVerticesHaveNoRoomForIsLeftOut) {
    std::vector<Label> labels;
    for (int i = 0; i < 100; ++i)
        labels.push_back(At(40.0 + 120.0 * (i % 10), 40.0 + 70.0 * (i / 10), "0123456789", float(100 - i)));
    LabelBatch batch;
    batch.Set(labels);
    RestartWithTransientSpace(300 * 96, 1 << 16);
    StartFrame();
    EXPECT_THAT(Draw(batch), SizeIs(100));
    std::size_t glyphs = 0;
    for (recorder::Draw const& draw : recorder::Draws())
        glyphs += draw.VerticesAs<Corner>().size() / 4;
    EXPECT_GT(glyphs, 250u);
    EXPECT_LE(glyphs, 300u);
    EXPECT_EQ(m_renderer->GetFrameStatistics().CountLeftOut(LeftOutReason::NoTransientSpace), 1u);
    ExpectWarning("text.full-frame");
    ExpectWarning("draw.no-transient-space");
}

TEST_F(LabelBatchTest, GlyphsThatTheAtlasHasNoRoomForAreLeftOut) {
    zx3D::FontHandle const large = zx3D::LoadDefaultFont(512).value();
    std::vector<Label> labels;
    constexpr int count = 180; // on 16 pages, each for about half a dozen
    for (int i = 0; i < count; ++i)
        labels.push_back(At(640, 400, QString(QChar(0x0100 + i))));
    m_style.font = large;
    m_style.overlap = LabelOverlap::Allowed;
    LabelBatch batch;
    batch.Set(labels);
    ExpectWarning("text.full-atlas");
    EXPECT_THAT(Draw(batch), SizeIs(count));
    std::size_t glyphs = 0;
    for (recorder::Draw const& draw : recorder::Draws())
        glyphs += draw.VerticesAs<Corner>().size() / 4;
    EXPECT_GT(glyphs, 30u);
    EXPECT_LT(glyphs, std::size_t(count));
    zx3D::DestroyFont(large);
}

TEST_F(LabelBatchTest, LabelsSurviveAShutdown) {
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(100, 100, "ab")});
    Draw(batch);
    recorder::Draw const before = TheDraw();
    RestartWithTransientSpace(1 << 20, 1 << 20);
    StartFrame();
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_EQ(TheDraw().vertices, before.vertices);
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 2u) << "the glyphs are new to this run";
}

TEST_F(LabelBatchTest, NothingGivesWayToAnythingIfToldSo) {
    m_style.priorityLead = std::numeric_limits<float>::infinity();
    LabelBatch batch;
    batch.Set(std::vector<Label>{At(200, 100), At(600, 100)});
    EXPECT_THAT(Shown(batch), ElementsAre(0, 1));
    batch.Append(std::vector<Label>{At(205, 100, "label", 1e30f)});
    EXPECT_THAT(Shown(batch), ElementsAre(0, 1));
}

TEST_F(LabelBatchTest, AnnotationsIntoAViewThatBgfxHasNotAreLeftOut) {
    zx3D::Annotations annotations;
    annotations.Submit(300, zx3D::AnnotationDepth::Ignored); // there is nothing to draw
    annotations.AddBox({10, 10}, 5, 5, 0xffffffff);
    ExpectWarning("text.no-view");
    EXPECT_EQ(annotations.Submit(300, zx3D::AnnotationDepth::Ignored).drawn, 0u);
    EXPECT_THAT(recorder::Draws(), IsEmpty());
    EXPECT_EQ(annotations.Submit(5, zx3D::AnnotationDepth::Ignored).drawn, 1u);
    EXPECT_FALSE(annotations.IsEmpty());
    annotations.Clear();
    EXPECT_TRUE(annotations.IsEmpty());
}
