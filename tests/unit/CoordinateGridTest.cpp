// Coordinate grids: bounds, lines, tick labels, and grids that would never end.
#include <DrawFixture.h>
#include <LogCapture.h>

#include <ColorConversion.h>

#include <zx3D/Text.h>
#include <zx3DQt/CoordinateGrid.h>

#include <QRectF>
#include <QVector3D>

#include <array>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using Segment = std::pair<QVector3D, QVector3D>;

class CoordinateGridTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_font = zx3D::LoadDefaultFont(16).value();
        m_style.gridSpacing = {100, 100};
        // A pixel for a world unit.
        QMatrix4x4 projection;
        projection.scale(1.0f / 512.0f);
        m_view.SetProjectionMatrix(projection);
        m_view.SetViewport(QRect(0, 0, 1024, 1024));
    }
    void TearDown() override {
        zx3D::DestroyFont(m_font);
        DrawFixture::TearDown();
    }

    CoordinateGridFrameTickLabelStyle Labels() const {
        CoordinateGridFrameTickLabelStyle labels;
        labels.font = m_font;
        labels.color = QColor(1, 2, 3);
        return labels;
    }

    void DrawLines() { DrawCoordinateGridLines(*m_renderer, m_view, m_rect, m_style); }
    void DrawLabels() {
        DrawCoordinateGridFrameTickLabels(*m_renderer, m_view, m_labelView, m_rect, m_style);
    }
    void DrawGrid() { DrawCoordinateGrid(*m_renderer, m_view, m_labelView, m_rect, m_style); }

    /// The lines of the one draw.
    static std::vector<Segment> Lines() {
        std::vector<Segment> lines;
        std::vector<Vertex> const vertices = TheDraw().VerticesAs<Vertex>();
        for (std::size_t i = 0; i + 1 < vertices.size(); i += 2)
            lines.emplace_back(ToQt(vertices[i].position), ToQt(vertices[i + 1].position));
        return lines;
    }

    static Segment Line(float fromX, float fromY, float toX, float toY) {
        return {QVector3D(fromX, fromY, 0), QVector3D(toX, toY, 0)};
    }

    static QVector3D ToQt(bx::Vec3 const& position) { return {position.x, position.y, position.z}; }

    CoordinateGridBounds Bounds() const { return ComputeCoordinateGridBounds(m_rect, m_style); }

    static void ExpectBounds(CoordinateGridBounds const& bounds, std::array<float, 4> const& expected) {
        EXPECT_EQ((std::array{bounds.minX, bounds.minY, bounds.maxX, bounds.maxY}), expected);
    }

    QRectF m_rect{-250, -150, 500, 300};
    CoordinateGridStyle m_style;
    BGFXViewContext m_labelView{6};
    zx3D::FontHandle m_font;
};

/// Grids that are cut short: one warning from all of them in a process.
class EndlessCoordinateGridTest : public CoordinateGridTest {
protected:
    void SetUp() override {
        CoordinateGridTest::SetUp();
        m_log.emplace();
    }
    void TearDown() override {
        static std::size_t warnings = 0;
        for (LogLine const& line : m_log->Lines())
            warnings += line.text.ends_with("[grid.cut-short]");
        EXPECT_EQ(warnings, 1u);
        m_log.reset();
        CoordinateGridTest::TearDown();
    }

    /// As many lines as bgfx was asked to take.
    static std::size_t LineCount() {
        std::size_t vertices = 0;
        for (recorder::Call const& call : recorder::CallsNamed("allocTransientBuffers"))
            vertices += std::stoul(call.arguments);
        return vertices / 2;
    }

    std::optional<LogCapture> m_log;
};

} // namespace

TEST_F(CoordinateGridTest, StylesHaveTheirDefaults) {
    CoordinateGridStyle style;
    EXPECT_EQ(style.gridSpacing, QVector2D());
    EXPECT_EQ(style.gridMargins, QVector2D(100, 100));
    EXPECT_EQ(style.lineStipplePattern.pattern, 0xf0f0);
    EXPECT_EQ(style.lineStipplePattern.factor, 1);
    EXPECT_EQ(style.lineColor, QColor());
    EXPECT_EQ(style.lineWidth, 1.0f);
    EXPECT_FALSE(style.frameTickLabels);
    EXPECT_THAT(CoordinateGridStyle::defaultAxisIds, ElementsAre(0, 1));
    style.enabledAxes.erase(X);
    EXPECT_FALSE(style.IsAxisEnabled(X));
    EXPECT_TRUE(std::as_const(style).IsAxisEnabled(Y));
    ExpectBounds(CoordinateGridBounds(), {0, 0, 0, 0});
}

TEST_F(CoordinateGridTest, LabelStylesHaveTheirDefaults) {
    CoordinateGridFrameTickLabelStyle style;
    EXPECT_EQ(style.font.idx, zx3D::FontHandle().idx);
    EXPECT_EQ(style.color, QColor());
    EXPECT_THAT(CoordinateGridFrameTickLabelStyle::defaultAxisIds, ElementsAre(0, 1));
    for (std::function<QString(float)> const& function : style.tickLabelFunctions)
        EXPECT_EQ(function(150.0f), "1.5e+02");
    style.enabledAxes.erase(Y);
    EXPECT_TRUE(std::as_const(style).IsAxisEnabled(X));
    EXPECT_FALSE(style.IsAxisEnabled(Y));
}

TEST_F(CoordinateGridTest, DefaultLabelsHaveTwoSignificantDigits) {
    auto const text = &CoordinateGridFrameTickLabelStyle::DefaultTickLabelFunction;
    EXPECT_EQ(text(50.0f), "50");
    EXPECT_EQ(text(100.0f), "1e+02");
    EXPECT_EQ(text(150.0f), "1.5e+02");
    EXPECT_EQ(text(0.0f), "0");
    EXPECT_EQ(text(-0.25f), "-0.25");
}

TEST_F(CoordinateGridTest, LowerBoundsAreMultiplesOfTheSpacingBeforeTheMargin) {
    ExpectBounds(Bounds(), {-300, -200, 350, 250});
    m_style.gridMargins = {10, 20};
    ExpectBounds(Bounds(), {-210, -120, 260, 170});
    m_style.gridSpacing = {40, 60};
    ExpectBounds(Bounds(), {-250, -140, 260, 170});
}

TEST_F(CoordinateGridTest, LowerBoundsAreRoundedTowardsZero) {
    m_rect = QRectF(-50, -99, 500, 300);
    ExpectBounds(Bounds(), {-100, -100, 550, 301});
    m_rect = QRectF(150, 250, 500, 300);
    ExpectBounds(Bounds(), {0, 100, 750, 650});
}

TEST_F(CoordinateGridTest, LinesAreAtTheStepsAndNotAtZero) {
    DrawLines();
    EXPECT_THAT(Lines(),
                ElementsAre(Line(-300, 250, -300, -250), Line(-200, 250, -200, -250),
                            Line(-100, 250, -100, -250), Line(100, 250, 100, -250), Line(200, 250, 200, -250),
                            Line(300, 250, 300, -250), Line(-350, 200, 350, 200), Line(-350, 100, 350, 100),
                            Line(-350, -100, 350, -100), Line(-350, -200, 350, -200)));
}

TEST_F(CoordinateGridTest, LowEndsTakeTheXMarginAndHighEndsTheYMargin) {
    m_style.gridMargins = {10, 20};
    DrawLines();
    EXPECT_THAT(Lines(),
                ElementsAre(Line(-210, 160, -210, -170), Line(-110, 160, -110, -170),
                            Line(-10, 160, -10, -170), Line(90, 160, 90, -170), Line(190, 160, 190, -170),
                            Line(-260, 120, 270, 120), Line(-260, 20, 270, 20), Line(-260, -80, 270, -80)));
}

TEST_F(CoordinateGridTest, NoLineIsAtTheUpperBound) {
    m_style.gridMargins = {0, 0};
    m_style.enabledAxes = {X};
    m_rect = QRectF(100, 0, 200, 10);
    DrawLines();
    EXPECT_THAT(Lines(), ElementsAre(Line(100, 0, 100, -10), Line(200, 0, 200, -10)));
}

TEST_F(CoordinateGridTest, AllLinesAreOneDrawInTheirStyle) {
    m_style.lineColor = QColor(1, 2, 3, 4);
    m_style.lineStipplePattern = {0x1234, 5};
    DrawLines();
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ(draw.view, 5);
    EXPECT_EQ(draw.state, std::uint64_t(BGFXRenderer::STATE_LINES));
    EXPECT_EQ(draw.transform, 0u);
    EXPECT_THAT(draw.uniforms.at("u_lineStipple"), ElementsAre(0x1234, 5, 0, 0));
    for (Vertex const& vertex : draw.VerticesAs<Vertex>())
        EXPECT_EQ(vertex.color, QColorToColor(QColor(1, 2, 3, 4)));
}

TEST_F(CoordinateGridTest, LinesAreOpaqueBlackAndDashedAtFirst) {
    DrawLines();
    EXPECT_THAT(TheDraw().uniforms.at("u_lineStipple"), ElementsAre(0xf0f0, 1, 0, 0));
    EXPECT_EQ(TheDraw().VerticesAs<Vertex>().at(0).color, QColorToColor(QColor(0, 0, 0)));
}

TEST_F(CoordinateGridTest, WideLinesHaveTheirWidth) {
    m_style.lineWidth = 3.0f;
    DrawLines();
    EXPECT_THAT(TheDraw().uniforms.at("u_rectangleSprite"), ElementsAre(10, 3, 0, 0));
}

TEST_F(CoordinateGridTest, OnlyEnabledAxesHaveLines) {
    m_style.enabledAxes = {Y};
    DrawLines();
    EXPECT_THAT(Lines(), ElementsAre(Line(-350, 200, 350, 200), Line(-350, 100, 350, 100),
                                     Line(-350, -100, 350, -100), Line(-350, -200, 350, -200)));
    recorder::ClearCalls();
    m_style.enabledAxes.clear();
    DrawLines();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(CoordinateGridTest, WithoutSpacingThereAreNeitherLinesNorLabels) {
    m_style.frameTickLabels = Labels();
    for (float const none :
         {0.0f, -0.0f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        for (QRectF const rect : {QRectF(-250, -150, 500, 300), QRectF(0, 0, 500, 300)}) {
            m_style.gridSpacing = {none, none};
            m_rect = rect;
            DrawGrid();
        }
    }
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(CoordinateGridTest, WithoutLabelsOnlyTheLinesAreDrawn) {
    DrawGrid();
    EXPECT_THAT(recorder::Draws(), SizeIs(1));
}

TEST_F(CoordinateGridTest, LinesComeBeforeLabels) {
    m_style.frameTickLabels = Labels();
    DrawGrid();
    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_THAT(draws, SizeIs(1 + 7 + 5));
    for (std::size_t i = 0; i < draws.size(); ++i)
        EXPECT_EQ(draws[i].view, i == 0 ? 5 : 6);
}

TEST_F(CoordinateGridTest, LabelsAreAskedForTheirSceneCoordinates) {
    m_style.frameTickLabels = Labels();
    std::vector<float> xs;
    std::vector<float> ys;
    auto const keep = [](std::vector<float>& values) {
        return [&values](float value) { return values.push_back(value), QString("a"); };
    };
    m_style.frameTickLabels->tickLabelFunctions = {keep(xs), keep(ys)};
    DrawLabels();
    EXPECT_THAT(xs, ElementsAre(-300, -200, -100, 0, 100, 200, 300));
    EXPECT_THAT(ys, ElementsAre(200, 100, 0, -100, -200));
}

TEST_F(CoordinateGridTest, LabelsAreBesideTheirLinesAtTheBottomAndLeftEdge) {
    m_style.frameTickLabels = Labels();
    m_labelView.SetViewport(QRect(0, 0, 3, 3)); // the scene's places count
    DrawLabels();
    std::vector<recorder::Draw> const draws = recorder::Draws();
    std::vector<std::pair<QPointF, char const*>> const labels{
        {{-299, -150}, "-3e+02"}, {{-199, -150}, "-2e+02"}, {{-99, -150}, "-1e+02"},
        {{1, -150}, "0"},         {{101, -150}, "1e+02"},   {{201, -150}, "2e+02"},
        {{301, -150}, "3e+02"},   {{-249, 200}, "2e+02"},   {{-249, 100}, "1e+02"},
        {{-249, 0}, "0"},         {{-249, -100}, "-1e+02"}, {{-249, -200}, "-2e+02"}};
    ASSERT_EQ(draws.size(), labels.size());
    for (std::size_t i = 0; i < labels.size(); ++i) {
        auto const& [scene, text] = labels[i];
        // One pixel is one world unit, and a text is 16 pixels high.
        QPointF const place(512 + scene.x(), 512 - scene.y() - 16);
        recorder::ClearCalls();
        m_renderer->RenderText(m_labelView, place, text, m_font, QColor(1, 2, 3),
                               Qt::AlignLeft | Qt::AlignTop);
        EXPECT_EQ(draws[i].vertices, TheDraw().vertices) << text;
        EXPECT_EQ(draws[i].depth, 0u);
    }
}

TEST_F(CoordinateGridTest, LabelsAreLiftedTowardsTheViewer) {
    QMatrix4x4 projection;
    projection(0, 2) = 1000.0f / 512.0f;
    m_view.SetProjectionMatrix(projection);
    m_style.frameTickLabels = Labels();
    m_style.frameTickLabels->enabledAxes = {Y};
    m_style.gridMargins = {};
    m_rect = QRectF(-1, 0, 1, 1);
    DrawLabels();
    recorder::Draw const draw = TheDraw();
    recorder::ClearCalls();
    // x + 1 is 0, so what moves the label is 0.1 in z: 100 pixels.
    m_renderer->RenderText(m_labelView, QPointF(612, 512 - 16), "0", m_font, QColor(1, 2, 3), {});
    EXPECT_EQ(draw.vertices, TheDraw().vertices);
}

TEST_F(CoordinateGridTest, LabelsBehindTheCameraAreAskedForAndNotDrawn) {
    // w is the scene's x - 100: of the x labels, a unit to the right of their lines, those at 100, 200 and
    // 300 are in front; of the y labels, at -249, none.
    m_view.SetProjectionMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, -100});
    m_style.frameTickLabels = Labels();
    int asked = 0;
    auto const text = [&asked](float) { return ++asked, QString("a"); };
    m_style.frameTickLabels->tickLabelFunctions = {text, text};
    DrawLabels();
    EXPECT_EQ(asked, 12);
    EXPECT_THAT(recorder::Draws(), SizeIs(3));
}

TEST_F(CoordinateGridTest, OnlyEnabledAxesHaveLabelsWhateverLinesThereAre) {
    m_style.frameTickLabels = Labels();
    m_style.enabledAxes.clear();
    m_style.frameTickLabels->enabledAxes = {X};
    DrawLabels();
    EXPECT_THAT(recorder::Draws(), SizeIs(7));
    recorder::ClearCalls();
    m_style.frameTickLabels->enabledAxes = {Y};
    DrawLabels();
    EXPECT_THAT(recorder::Draws(), SizeIs(5));
}

TEST_F(CoordinateGridTest, AnEmptyLabelFunctionThrowsWhereItsAxisIsEnabled) {
    m_style.frameTickLabels = Labels();
    m_style.frameTickLabels->tickLabelFunctions[X] = nullptr;
    EXPECT_THROW(DrawLabels(), std::bad_function_call);
    m_style.frameTickLabels->enabledAxes = {Y};
    EXPECT_NO_THROW(DrawLabels());
}

TEST_F(EndlessCoordinateGridTest, NegativeSpacingEndsAfterTheFirstLine) {
    m_style.gridSpacing = {-100, -100};
    DrawLines();
    EXPECT_THAT(Lines(), ElementsAre(Line(-300, 250, -300, -250), Line(-350, 200, 350, 200)));
}

TEST_F(EndlessCoordinateGridTest, SpacingThatIsLostInPrecisionEndsAfterTheFirstLine) {
    m_rect = QRectF(16'777'216.0, 0, 100, 100);
    m_style.gridSpacing = {0.5f, 100};
    m_style.gridMargins = {};
    m_style.enabledAxes = {X};
    m_style.frameTickLabels = Labels();
    int labelCount = 0;
    m_style.frameTickLabels->tickLabelFunctions[X] = [&](float) { return QString::number(++labelCount); };
    DrawGrid();
    EXPECT_EQ(LineCount(), 1u);
    EXPECT_EQ(labelCount, 1);
}

TEST_F(EndlessCoordinateGridTest, AnAxisHasAMillionLinesAtMost) {
    m_rect = QRectF(100, 0, 5000, 100);
    m_style.gridSpacing = {1.0f / 1024.0f, 1};
    m_style.gridMargins = {};
    m_style.enabledAxes = {X};
    DrawLines();
    EXPECT_EQ(LineCount(), 1'000'000u);
    DrawLines();
    EXPECT_EQ(LineCount(), 2'000'000u);
}

TEST_F(CoordinateGridTest, AMillionLinesAreNotCutShort) {
    LogCapture const log;
    m_rect = QRectF(1, 0, 999'999.5, 100);
    m_style.gridSpacing = {1, 1};
    m_style.gridMargins = {};
    m_style.enabledAxes = {X};
    DrawLines();
    std::size_t vertices = 0;
    for (recorder::Call const& call : recorder::CallsNamed("allocTransientBuffers"))
        vertices += std::stoul(call.arguments);
    EXPECT_EQ(vertices, 2'000'000u);
    for (LogLine const& line : log.Lines())
        EXPECT_THAT(line.text, testing::Not(testing::HasSubstr("cut short")));
}
