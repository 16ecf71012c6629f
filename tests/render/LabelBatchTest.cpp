// Labels and what belongs to them in pixels: against texts of text buffers, and coverage computed without a
// GPU.
#include "ExactCoverage.h"
#include "RenderTest.h"

#include <zx3DQt/LabelBatch.h>

#include <zx3D/Annotations.h>
#include <zx3D/Text.h>

#include <cmath>
#include <numbers>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using zx3D::AnnotationDepth;
using zx3DQt::Label;
using zx3DQt::LabelBatch;
using zx3DQt::LabelStyle;

namespace {

constexpr std::uint32_t kWhite = 0xffffffff;

class LabelBatchTest : public RenderTest {
protected:
    LabelBatchTest() : RenderTest(QSize(240, 120)), m_font(zx3D::LoadDefaultFont(20).value()) {
        m_style.font = m_font;
        m_style.alignment = Qt::AlignLeft | Qt::AlignTop;
        m_style.padding = 0.0f;
    }
    ~LabelBatchTest() override { zx3D::DestroyFont(m_font); }

    /// A frame with what `draw` draws.
    template<typename DrawAll>
    QImage Frame(DrawAll draw) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        DrawRect(view, QRectF(0, 0, 1, 1), Qt::black, 0.99f); // bgfx clears views that are drawn into
        draw(view);
        return Present();
    }

    QImage DrawLabels(std::vector<Label> const& labels) {
        LabelBatch batch;
        batch.Set(labels);
        return Frame([&](auto const& view) { batch.Draw(m_renderer, view, m_style); });
    }

    QImage DrawTexts(std::vector<Label> const& labels, float angle) {
        return Frame([&](auto const& view) {
            for (Label const& label : labels)
                m_renderer.RenderText(view, label.position, label.text, m_font, Qt::white, {}, angle);
        });
    }

    zx3D::FontHandle m_font;
    LabelStyle m_style;
};

} // namespace

TEST_P(LabelBatchTest, UprightLabelsAreAsSharpAsTexts) {
    std::vector<Label> const labels{{{20.0f, 15.0f, 0.5f}, "AVAST (q̃j)"},
                                    {{90.4f, 70.7f, 0.5f}, "two\nlines"}};
    EXPECT_TRUE(Matches(DrawLabels(labels), DrawTexts(labels, 0.0f), kExact));
}

TEST_P(LabelBatchTest, LabelsFollowDirectionsAsTurnedTextsDo) {
    for (float const angle : {90.0f, 37.0f, -60.0f}) {
        std::vector<Label> labels{{{110.0f, 60.0f, 0.5f}, "H 7 e"}};
        double const radians = angle * std::numbers::pi / 180.0;
        labels[0].direction = {static_cast<float>(std::cos(radians)), static_cast<float>(-std::sin(radians)),
                               0.0f};
        EXPECT_TRUE(Matches(DrawLabels(labels), DrawTexts(labels, angle), {2, 0})) << angle;
    }
}

TEST_P(LabelBatchTest, BoxesAreWholePixelsBehindTheTexts) {
    std::vector<Label> const labels{{{30.3f, 20.8f, 0.5f}, "box"}};
    m_style.padding = 4.0f;
    m_style.boxColor = ToColor(QColor(0, 60, 120));
    m_style.color = ToColor(QColor(0, 60, 120)); // the text is not seen
    zx3D::TextSize const size = zx3D::MeasureText(m_font, "box");
    QImage expected = Canvas();
    Fill(expected, QRect(30, 21, size.width + 8, size.height + 8), QColor(0, 60, 120));
    EXPECT_TRUE(Matches(DrawLabels(labels), expected, kExact));
    m_style.color = ToColor(Qt::white);
    EXPECT_GT(CountDifferences(DrawLabels(labels), expected), 30) << "over the box";
}

TEST_P(LabelBatchTest, WhatIsInFrontHidesLabelsPixelByPixel) {
    LabelBatch batch;
    batch.Set(std::vector<Label>{{{40.0f, 40.0f, 0.5f}, "hidden half"}});
    auto const draw = [&](AnnotationDepth depth, float wallDepth) {
        m_style.depth = depth;
        m_style.depthOffset = 0.0f;
        return Frame([&](auto const& view) {
            DrawRect(view, QRectF(0, 0, 90, 120), Qt::darkRed, wallDepth);
            batch.Draw(m_renderer, view, m_style);
        });
    };
    QImage const inFront = draw(AnnotationDepth::Ignored, 0.3f);
    EXPECT_TRUE(Matches(draw(AnnotationDepth::Tested, 0.7f), inFront, kExact)) << "the wall is behind";
    QImage expected = inFront;
    Fill(expected, QRect(0, 0, 90, 120), Qt::darkRed);
    EXPECT_TRUE(Matches(draw(AnnotationDepth::Tested, 0.3f), expected, kExact));
    EXPECT_GT(CountDifferences(inFront, expected), 100);
}

TEST_P(LabelBatchTest, ADepthOffsetLiftsLabelsFromTheirSurface) {
    // In a view whose depths are as long as pixels, a slope of 45 degrees that cuts into its label.
    LabelBatch batch;
    batch.Set(std::vector<Label>{{{120.0f, 50.0f, 120.0f}, "on a slope"}});
    m_style.alignment = Qt::AlignHCenter;
    auto const draw = [&](AnnotationDepth depth, float offset) {
        m_style.depth = depth;
        m_style.depthOffset = offset;
        StartFrame();
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
        view.SetOrthoProjectionFromViewport(0.0f, 240.0f, 0.0f);
        view.Submit(m_target.GetFrameBuffer());
        using Vertex = zx3D::Vertex::Pos3fColorRGBA;
        zx3D::Color const color = ToColor(Qt::darkGreen);
        Vertex const slope[] = {{{0.0f, 0.0f, 0.0f}, color},
                                {{240.0f, 0.0f, 240.0f}, color},
                                {{240.0f, 120.0f, 240.0f}, color},
                                {{0.0f, 120.0f, 0.0f}, color}};
        std::uint16_t const indices[] = {0, 1, 2, 2, 3, 0};
        m_renderer.DrawTriangles(view, slope, indices);
        batch.Draw(m_renderer, view, m_style);
        return Present();
    };
    QImage const whole = draw(AnnotationDepth::Ignored, 0.0f);
    EXPECT_GT(CountDifferences(draw(AnnotationDepth::Tested, 0.0f), whole), 100);
    EXPECT_TRUE(Matches(draw(AnnotationDepth::Tested, 100.0f), whole, kExact));
    // Where the text follows the slope, a little is enough.
    Label along{{120.0f, 50.0f, 120.0f}, "on a slope"};
    along.direction = {1.0f, 0.0f, 1.0f};
    batch.Set(std::vector<Label>{along});
    m_style.offset = {20.0, 0.0};
    QImage const moved = draw(AnnotationDepth::Ignored, 0.0f);
    EXPECT_GT(CountDifferences(moved, whole), 100);
    EXPECT_TRUE(Matches(draw(AnnotationDepth::Tested, 2.0f), moved, kExact));
}

TEST_P(LabelBatchTest, BoxesLinesAndArrowHeadsCoverWhatTheyShould) {
    auto const expectCovered = [&](zx3D::Annotations const& annotations,
                                   std::vector<ConvexPolygon> const& shapes, double allowed) {
        QImage const image =
            Frame([&](auto const& view) { annotations.Submit(view, AnnotationDepth::Ignored); });
        CoverageError const error = CompareCoverage(image, shapes);
        EXPECT_GT(error.edges, 20);
        EXPECT_LT(error.meanOnEdges, allowed);
        EXPECT_LT(error.wrongElsewhere, error.edges / 3) << "beside the edges";
    };
    for (double const degrees : {0.0, 20.0, 45.0, 131.0}) {
        double const radians = degrees * std::numbers::pi / 180.0;
        QPointF const along(std::cos(radians), std::sin(radians));
        QPointF const across(-along.y(), along.x());
        QPointF const middle(118.3, 61.6);
        zx3D::PictureDirection const direction{static_cast<float>(along.x()), static_cast<float>(along.y())};
        auto const place = [](QPointF const& point) {
            return zx3D::PicturePlace{static_cast<float>(point.x()), static_cast<float>(point.y()), 0.5f};
        };
        SCOPED_TRACE(degrees);
        zx3D::Annotations box;
        box.AddBox(place(middle), 70.0f, 31.0f, kWhite, direction);
        expectCovered(box,
                      {{middle - 35 * along - 15.5 * across, middle + 35 * along - 15.5 * across,
                        middle + 35 * along + 15.5 * across, middle - 35 * along + 15.5 * across}},
                      0.06);
        zx3D::Annotations line;
        line.AddLine(place(middle - 40 * along), place(middle + 40 * along), 3.0f, kWhite);
        expectCovered(line, {AroundLine(middle - 40 * along, middle + 40 * along, 3.0)}, 0.06);
        zx3D::Annotations head;
        head.AddArrowHead(place(middle + 30 * along), direction, 60.0f, 24.0f, kWhite);
        expectCovered(
            head,
            {{middle + 30 * along, middle - 30 * along + 12 * across, middle - 30 * along - 12 * across}},
            0.06);
    }
}

TEST_P(LabelBatchTest, WhatIsAddedLaterIsOnTop) {
    zx3D::TextLayout const text(m_font, "MMMM");
    QImage const image = Frame([&](auto const& view) {
        zx3D::Annotations annotations;
        annotations.AddBox({60, 60}, 100, 100, 0xff0000ff);
        annotations.AddText(text, {20, 50}, kWhite);
        annotations.AddBox({60, 60}, 80, 80, 0x0000ffff);
        annotations.Submit(view, AnnotationDepth::Ignored);
    });
    QImage expected = Canvas();
    Fill(expected, QRect(10, 10, 100, 100), Qt::red);
    EXPECT_EQ(image.pixelColor(60, 60), QColor(Qt::blue));
    EXPECT_EQ(image.pixelColor(12, 60), QColor(Qt::red));
    Fill(expected, QRect(20, 20, 80, 80), Qt::blue);
    EXPECT_TRUE(Matches(image.copy(0, 0, 100, 120), expected.copy(0, 0, 100, 120), kExact));
}

ZX3D_INSTANTIATE_BACKENDS(LabelBatchTest);
