// Coordinate grids: lines and tick labels where their documentation puts them, and grids of very many lines.
#include "RenderTest.h"
#include "Scene.h"
#include "SoftwareCamera.h"
#include "TextPainting.h"

#include <harness/Trouble.h>

#include <zx3DQt/CoordinateGrid.h>

#include <zx3D/Text.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr QColor kColor(200, 120, 40);
constexpr zx3D::LineStipplePattern kSolid{0xFFFF, 1};

/// Straight at the plane: the place is the centre of the pixel (112, 80).
SoftwareCamera PlanCamera(double x, double y, double unitsPerPixel) {
    double const half = 0.5 * unitsPerPixel;
    return {.place = {x - half, y + half, -10.0},
            .target = {x - half, y + half, 0.0},
            .halfHeight = 80.0 * unitsPerPixel};
}

SoftwareCamera const kPerspectiveCamera{
    .place = {0.7, -6.3, -3.1}, .target = {-0.4, 0.2, 0.0}, .angle = 60.0, .up = {0.0, 0.0, -1.0}};

class CoordinateGridTest : public RenderTest {
protected:
    CoordinateGridTest() : RenderTest(kSceneSize) {
        m_style.gridSpacing = {100.0f, 100.0f};
        m_style.lineColor = kColor;
        m_style.lineStipplePattern = kSolid;
    }

    zx3DQt::BGFXViewContext View(SoftwareCamera const& camera, bgfx::ViewId id = 0) {
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport(), Qt::black, id);
        if (id != 0)
            view.SetViewClearOptions(std::nullopt);
        camera.SetUp(view);
        view.Submit(m_target.GetFrameBuffer());
        bgfx::touch(view);
        return view;
    }

    QImage DrawLines(SoftwareCamera const& camera) {
        StartFrame();
        DrawCoordinateGridLines(m_renderer, View(camera), m_rect, m_style);
        return Present();
    }

    /// Expects lines at these scene coordinates, from the first to the second of `xEnds` or `yEnds`, and
    /// nothing else.
    void CheckLines(SoftwareCamera const& camera, std::vector<double> const& xs,
                    std::pair<double, double> yEnds, std::vector<double> const& ys,
                    std::pair<double, double> xEnds, int leastDrawn = 300);

    /// Expects whole columns and rows and nothing else.
    void CheckColumnsAndRows(SoftwareCamera const& camera, std::vector<int> const& columns,
                             std::vector<int> const& rows);

    QRectF m_rect{-250.0, -150.0, 500.0, 300.0};
    zx3DQt::CoordinateGridStyle m_style;
};

void CoordinateGridTest::CheckLines(SoftwareCamera const& camera, std::vector<double> const& xs,
                                    std::pair<double, double> yEnds, std::vector<double> const& ys,
                                    std::pair<double, double> xEnds, int leastDrawn) {
    SceneLines lines;
    zx3D::Color const color = ToColor(m_style.lineColor);
    for (double const x : xs)
        lines.push_back({ToVec3({x, yEnds.first, 0.0}), ToVec3({x, yEnds.second, 0.0}), color});
    for (double const y : ys)
        lines.push_back({ToVec3({xEnds.first, y, 0.0}), ToVec3({xEnds.second, y, 0.0}), color});
    Scene scene;
    scene.calls = {{.shapes = lines,
                    .size = static_cast<std::uint16_t>(m_style.lineWidth),
                    .stipple = m_style.lineStipplePattern}};
    scene.setUpView = [&camera](zx3DQt::BGFXViewContext& view) { camera.SetUp(view); };
    ReferencePicture const reference = DrawReference(scene);
    EXPECT_GT(reference.CountDrawn(), leastDrawn);
    EXPECT_LE(reference.CountEdges(), 0.15 * reference.CountDrawn());
    QImage const image = DrawLines(camera);
    EXPECT_TRUE(Matches(image, reference.Nearest(image)));
}

void CoordinateGridTest::CheckColumnsAndRows(SoftwareCamera const& camera, std::vector<int> const& columns,
                                             std::vector<int> const& rows) {
    QImage expected = Canvas();
    for (int const column : columns)
        Fill(expected, QRect(column, 0, 1, kSceneSize.height()), kColor);
    for (int const row : rows)
        Fill(expected, QRect(0, row, kSceneSize.width(), 1), kColor);
    EXPECT_TRUE(Matches(DrawLines(camera), expected, kExact));
}

/// Every n-th number of a range, the last one included.
template<typename Number>
std::vector<Number> Steps(Number first, Number step, Number last) {
    std::vector<Number> steps;
    for (Number value = first; value <= last; value += step)
        steps.push_back(value);
    return steps;
}

} // namespace

TEST_P(CoordinateGridTest, LinesAreAtTheirColumnsAndRowsAndTheOnesAtZeroAreLeftOut) {
    m_style.gridMargins = {1000.0f, 1000.0f};
    CheckColumnsAndRows(PlanCamera(0.0, 0.0, 5.0), {12, 32, 52, 72, 92, 132, 152, 172, 192, 212},
                        {0, 20, 40, 60, 100, 120, 140});
    m_style.gridSpacing = {150.0f, 60.0f}; // from -1150 and -1120 on
    CheckColumnsAndRows(PlanCamera(0.0, 0.0, 5.0), Steps(2, 30, 212), Steps(0, 12, 156));
}

TEST_P(CoordinateGridTest, TheDefaultDashesAreFourPixelsOffAndFourOn) {
    m_style = {};
    m_style.lineColor = kColor;
    m_style.gridSpacing = {100.0f, 100.0f};
    m_style.gridMargins = {1000.0f, 1000.0f};
    QImage expected = Canvas();
    // Lines of constant x begin at y = 1150, 150 pixels above the picture; the others at x = -1250, 138
    // pixels to the left.
    for (int const column : {12, 32, 52, 72, 92, 132, 152, 172, 192, 212}) {
        for (int y = 0; y < 160; ++y) {
            if ((y + 150) % 8 >= 4)
                expected.setPixelColor(column, y, kColor);
        }
    }
    for (int const row : {0, 20, 40, 60, 100, 120, 140}) {
        for (int x = 0; x < 224; ++x) {
            if ((x + 138) % 8 >= 4)
                expected.setPixelColor(x, row, kColor);
        }
    }
    EXPECT_TRUE(Matches(DrawLines(PlanCamera(0.0, 0.0, 5.0)), expected, kExact));
}

TEST_P(CoordinateGridTest, LinesBeginAndEndInTheMargins) {
    SoftwareCamera const camera = PlanCamera(0.0, 0.0, 5.0);
    CheckLines(camera, {-300, -200, -100, 100, 200, 300}, {250, -250}, {200, 100, -100, -200}, {-350, 350});
    // High ends take the y margin.
    m_style.gridMargins = {10.0f, 20.0f};
    CheckLines(camera, {-210, -110, -10, 90, 190}, {160, -170}, {120, 20, -80}, {-260, 270});
}

TEST_P(CoordinateGridTest, LinesHaveTheirWidthStippleAndColor) {
    m_style.lineColor = QColor(90, 60, 255);
    for (float const width : {1.0f, 3.0f, 4.0f}) {
        for (zx3D::LineStipplePattern const& stipple :
             {zx3D::LineStipplePattern{0xF0F0, 1}, zx3D::LineStipplePattern{0x1C47, 3}}) {
            m_style.lineWidth = width;
            m_style.lineStipplePattern = stipple;
            // Away from the centres and the borders of pixels, which suits every width.
            SoftwareCamera camera = PlanCamera(0.0, 0.0, 5.0);
            camera.place.x += 1.3;
            camera.target.x += 1.3;
            camera.place.y += 0.9;
            camera.target.y += 0.9;
            CheckLines(camera, {-300, -200, -100, 100, 200, 300}, {250, -250}, {200, 100, -100, -200},
                       {-350, 350});
        }
    }
}

TEST_P(CoordinateGridTest, OnlyEnabledAxesHaveLines) {
    m_style.gridMargins = {1000.0f, 1000.0f};
    m_style.enabledAxes = {zx3DQt::X};
    CheckColumnsAndRows(PlanCamera(0.0, 0.0, 5.0), {12, 32, 52, 72, 92, 132, 152, 172, 192, 212}, {});
    m_style.enabledAxes = {zx3DQt::Y};
    CheckColumnsAndRows(PlanCamera(0.0, 0.0, 5.0), {}, {0, 20, 40, 60, 100, 120, 140});
    m_style.enabledAxes = {};
    CheckColumnsAndRows(PlanCamera(0.0, 0.0, 5.0), {}, {});
}

TEST_P(CoordinateGridTest, InPerspectiveLinesConverge) {
    m_rect = QRectF(-5.0, -3.0, 10.0, 6.0);
    m_style.gridSpacing = {1.0f, 1.0f};
    m_style.gridMargins = {1.5f, 0.75f};
    std::vector<double> const xs = Steps(-6.5, 1.0, 5.5);
    std::vector<double> const ys = Steps(-3.25, 1.0, 3.75);
    for (zx3D::LineStipplePattern const& stipple : {kSolid, zx3D::LineStipplePattern{0xF0F0, 1}}) {
        for (float const width : {1.0f, 3.0f}) {
            m_style.lineStipplePattern = stipple;
            m_style.lineWidth = width;
            CheckLines(kPerspectiveCamera, xs, {4.5, -3.75}, ys, {-6.5, 5.75});
        }
    }
}

TEST_P(CoordinateGridTest, TickLabelsAreBesideTheirLines) {
    constexpr int fontSize = 10;
    zx3DQt::CoordinateGridFrameTickLabelStyle labels;
    labels.font = zx3D::LoadDefaultFont(fontSize).value();
    labels.color = QColor(90, 200, 255);
    m_style.frameTickLabels = labels;
    m_rect = QRectF(-5.0, -3.0, 10.0, 6.0);
    m_style.gridSpacing = {2.0f, 2.0f};
    m_style.gridMargins = {0.2f, 0.4f};
    // Oblique: labels are a little off the plane.
    SoftwareCamera const camera{.place = {1.0, -6.0, -9.0}, .target = {0.1, 0.0, 0.0}, .halfHeight = 4.0};
    StartFrame();
    zx3DQt::BGFXViewContext const sceneView = View(camera);
    zx3DQt::BGFXViewContext const labelView = PixelView(m_target.GetViewport(), Qt::black, 1);
    labelView.Submit(m_target.GetFrameBuffer()); // clears the scene's view
    bgfx::touch(labelView);
    DrawCoordinateGridFrameTickLabels(m_renderer, sceneView, labelView, m_rect, m_style);
    QImage expected = Canvas();
    auto const paint = [&](double x, double y, std::string const& text) {
        ReferenceLine const line = ShapeReferenceLine(DEFAULT_FONT_FILE, fontSize, text);
        QPointF const corner = camera.ToPixels({x + 1.0, y, 0.1}, kSceneSize) - QPointF(0.0, fontSize);
        for (double const coordinate : {corner.x(), corner.y()})
            ASSERT_GT(std::abs(coordinate - std::floor(coordinate) - 0.5), 0.01) << text;
        Paint(expected, line, corner.toPoint().x(), corner.toPoint().y() + line.ascender, labels.color);
    };
    for (double const x : {-4.2, -2.2, -0.2, 1.8, 3.8})
        paint(x, -3.0, QString::number(x).toStdString());
    for (double const y : {2.4, 0.4, -1.6})
        paint(-5.0, y, QString::number(y).toStdString());
    EXPECT_TRUE(Matches(Present(), expected));
    zx3D::DestroyFont(labels.font);
}

TEST_P(CoordinateGridTest, AWholeIsItsParts) {
    zx3DQt::CoordinateGridFrameTickLabelStyle labels;
    labels.font = zx3D::LoadDefaultFont(10).value();
    labels.color = Qt::white;
    m_style.frameTickLabels = labels;
    auto const draw = [&](auto const& drawParts) {
        StartFrame();
        zx3DQt::BGFXViewContext const sceneView = View(PlanCamera(0.0, 0.0, 5.0));
        drawParts(sceneView, View(PlanCamera(0.0, 0.0, 1.0), 1));
        return Present();
    };
    QImage const whole = draw([&](auto const& sceneView, auto const& labelView) {
        DrawCoordinateGrid(m_renderer, sceneView, labelView, m_rect, m_style);
    });
    QImage const parts = draw([&](auto const& sceneView, auto const& labelView) {
        DrawCoordinateGridLines(m_renderer, sceneView, m_rect, m_style);
        DrawCoordinateGridFrameTickLabels(m_renderer, sceneView, labelView, m_rect, m_style);
    });
    EXPECT_TRUE(Matches(whole, parts, kExact));
    EXPECT_NE(whole, DrawLines(PlanCamera(0.0, 0.0, 5.0)));
    zx3D::DestroyFont(labels.font);
}

TEST_P(CoordinateGridTest, TenThousandLinesAreAllThere) {
    // 5,000 each way: at 4, 8, ... 20,000.
    m_rect = QRectF(4.0, 4.0, 20'000.0, 20'000.0);
    m_style.gridSpacing = {4.0f, 4.0f};
    m_style.gridMargins = {};
    for (float const width : {1.0f, 2.0f}) {
        m_style.lineWidth = width;
        for (double const place : {20.0, 10'000.0, 19'980.0}) {
            SCOPED_TRACE(place);
            SoftwareCamera camera = PlanCamera(place, -place, 1.0);
            if (width == 2.0f) { // lines cover whole pixels
                camera.place = camera.place + Vector3{0.5, -0.5, 0.0};
                camera.target = camera.target + Vector3{0.5, -0.5, 0.0};
            }
            CheckLines(camera, Steps(4.0, 4.0, 20'000.0), {-4.0, -20'004.0}, Steps(-20'000.0, 4.0, -4.0),
                       {4.0, 20'004.0}, 5000);
        }
    }
}

TEST_P(CoordinateGridTest, LinesOfSeveralDrawCallsAreAllThere) {
    // 40,000; bgfx gets 32,768 at once. Short ones: Mesa 25's lavapipe errs beyond 32,768 pixels.
    m_style.enabledAxes = {zx3DQt::X};
    m_rect = QRectF(4.0, 4.0, 160'000.0, 200.0);
    m_style.gridSpacing = {4.0f, 4.0f};
    m_style.gridMargins = {};
    for (double const place : {4.0 * 32'768, 159'990.0}) {
        SCOPED_TRACE(place);
        CheckLines(PlanCamera(place, -100.0, 1.0), Steps(4.0, 4.0, 160'000.0), {-4.0, -204.0}, {}, {}, 4000);
    }
}

TEST_P(CoordinateGridTest, ADenseGridIsAPlane) {
    m_rect = QRectF(-5.0, -5.0, 10.0, 10.0);
    m_style.gridSpacing = {0.002f, 0.002f}; // 10,000 lines, several to a pixel
    m_style.gridMargins = {};
    QImage const image = DrawLines(kPerspectiveCamera);
    auto const isCovered = [&](QPointF pixel) {
        Ray const ray = kPerspectiveCamera.RayThrough(pixel, kSceneSize);
        double const t = -ray.origin.z / ray.direction.z;
        Vector3 const place = ray.origin + t * ray.direction;
        return t > 0.0 && std::abs(place.x) < 5.0 && std::abs(place.y) < 5.0;
    };
    // Within a pixel of the border both is right.
    ReferencePicture reference(kSceneSize, Qt::black);
    reference.Draw(m_target.GetViewport(), kColor, [&](QPointF pixel) {
        int covered = 0;
        for (double const dx : {-1.0, 0.0, 1.0}) {
            for (double const dy : {-1.0, 0.0, 1.0})
                covered += isCovered(pixel + QPointF(dx, dy));
        }
        return covered == 9 ? Coverage::Inside : covered == 0 ? Coverage::Outside : Coverage::Edge;
    });
    EXPECT_GT(reference.CountDrawn(), 10'000);
    EXPECT_LT(reference.CountEdges(), 1500);
    EXPECT_TRUE(Matches(image, reference.Nearest(image), kExact));
}

TEST_P(CoordinateGridTest, EverySpacingEndsAndTheNextFrameIsRight) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float smallest = std::numeric_limits<float>::denorm_min();
    for (float const width : {1.0f, 3.0f}) {
        m_style.lineWidth = width;
        for (float const spacing :
             {0.0f, -0.0f, nan, infinity, -infinity, -100.0f, -smallest, smallest, 1e-20f}) {
            SCOPED_TRACE(spacing);
            m_style.gridSpacing = {spacing, spacing};
            DrawLines(PlanCamera(0.0, 0.0, 5.0));
        }
    }
    m_style.lineWidth = 1.0f;
    m_style.gridSpacing = {1e-4f, 100.0f}; // would be millions of lines, more than bgfx has space for
    DrawLines(PlanCamera(0.0, 0.0, 5.0));
    EXPECT_FALSE(TakeWarnings("draw.no-transient-space").empty());
    TakeWarnings("grid.cut-short"); // comes once in a process
    m_style.gridSpacing = {100.0f, 100.0f};
    m_style.gridMargins = {1000.0f, 1000.0f};
    CheckColumnsAndRows(PlanCamera(0.0, 0.0, 5.0), {12, 32, 52, 72, 92, 132, 152, 172, 192, 212},
                        {0, 20, 40, 60, 100, 120, 140});
}

TEST_P(CoordinateGridTest, WithRoomForAllAGapChangesNothing) {
    zx3DQt::CoordinateGridFrameTickLabelStyle labels;
    labels.font = zx3D::LoadDefaultFont(10).value();
    labels.color = QColor(90, 200, 255);
    m_rect = QRectF(-5.0, -3.0, 10.0, 6.0);
    m_style.gridSpacing = {2.0f, 2.0f};
    m_style.gridMargins = {0.2f, 0.4f};
    SoftwareCamera const camera{.place = {1.0, -6.0, -9.0}, .target = {0.1, 0.0, 0.0}, .halfHeight = 4.0};
    auto const draw = [&](std::optional<float> gap) {
        labels.minimumGap = gap;
        m_style.frameTickLabels = labels;
        StartFrame();
        DrawCoordinateGrid(m_renderer, View(camera), View(camera, 1), m_rect, m_style);
        return Present();
    };
    QImage const all = draw(std::nullopt);
    EXPECT_TRUE(Matches(draw(0.0f), all, kExact));
    QImage const few = draw(20.0f);
    EXPECT_GT(CountDifferences(few, all), 20);
    m_style.frameTickLabels.reset();
    zx3D::DestroyFont(labels.font);
}

ZX3D_INSTANTIATE_BACKENDS(CoordinateGridTest);
