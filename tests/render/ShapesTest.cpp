// Circles, rectangles and cones: which pixels they fill.
#include "ReferencePicture.h"
#include "RenderTest.h"
#include "SoftwareCone.h"

#include <zx3DQt/Shapes.h>

#include <cmath>
#include <functional>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr QColor kColor(200, 120, 40);
constexpr auto kOpaque = zx3DQt::BGFXRenderer::STATE_OPAQUE;

class ShapesTest : public RenderTest {
protected:
    ShapesTest() : RenderTest(QSize(160, 120)) {}

    /// A view in which a world unit is a pixel, y down.
    zx3DQt::BGFXViewContext StartPicture() {
        StartFrame();
        return SubmitPixelView();
    }

    zx3DQt::BGFXViewContext StartPicture(SoftwareCamera const& camera) {
        StartFrame();
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
        camera.SetUp(view);
        view.Submit(m_target.GetFrameBuffer());
        return view;
    }

    QSize Size() const { return m_target.GetViewport().size(); }

    /// Expects the shape in `kColor` and nothing else, its border as good as GPUs place it.
    void CheckPicture(std::function<Coverage(QPointF)> const& coverage, int maxEdges) {
        ReferencePicture reference(Size(), Qt::black);
        reference.Draw(m_target.GetViewport(), kColor, coverage);
        QImage const image = Present();
        EXPECT_TRUE(Matches(image, reference.Nearest(image), kExact));
        EXPECT_LE(reference.CountEdges(), maxEdges);
    }

    void CheckCone(SoftwareCone const& cone, SoftwareCamera const& camera);
};

void ShapesTest::CheckCone(SoftwareCone const& cone, SoftwareCamera const& camera) {
    DrawCone(m_renderer, StartPicture(camera), ModelOf(cone, kColor));
    ConeOutline const outline(cone, camera, Size());
    EXPECT_GT(outline.Area().width() * outline.Area().height(), 500);
    CheckPicture([&](QPointF pixel) { return outline.At(pixel); }, 30);
}

} // namespace

TEST_P(ShapesTest, CirclesAreRound) {
    struct Circle {
        float x, y, radius;
    };
    for (Circle const& circle :
         {Circle{80.0f, 60.0f, 50.3f}, Circle{80.2f, 60.4f, 3.7f}, Circle{10.0f, 20.0f, 40.0f},
          Circle{80.0f, 60.0f, 500.0f}, Circle{80.5f, 60.5f, 0.3f}}) {
        SCOPED_TRACE(circle.radius);
        zx3DQt::BGFXCircleModel2D const model{{circle.x, circle.y}, circle.radius, ToColor(kColor)};
        DrawCircle(m_renderer, StartPicture(), model, 0.5f, kOpaque);
        // 360 corners: the middles of the sides are that much nearer to the centre.
        double const sagitta = circle.radius * (1.0 - std::cos(0.5 * 0.017453292));
        CheckPicture(
            [&](QPointF pixel) {
                double const inwards = circle.radius - std::hypot(pixel.x() - circle.x, pixel.y() - circle.y);
                bool const isAtEdge = inwards > -kEdgeWidth && inwards < kEdgeWidth + sagitta;
                return isAtEdge ? Coverage::Edge : CoverageAtDistance(inwards);
            },
            20);
    }
}

TEST_P(ShapesTest, ACircleIsInItsPlaneWhereverTheCameraIs) {
    SoftwareCamera const camera{.place = {2.0, 1.5, -3.0}, .target = {0.3, 0.2, 1.0}, .angle = 40.0};
    DrawCircle(m_renderer, StartPicture(camera), QVector2D(0.3f, 0.1f), 0.9f, ToColor(kColor), 1.0f, kOpaque);
    auto const isCovered = [&](QPointF pixel) {
        Ray const ray = camera.RayThrough(pixel, Size());
        Vector3 const place = ray.origin + (1.0 - ray.origin.z) / ray.direction.z * ray.direction;
        return std::hypot(place.x - 0.3, place.y - 0.1) < 0.9;
    };
    CheckPicture([&](QPointF pixel) { return SampledCoverage(pixel, isCovered); }, 20);
}

TEST_P(ShapesTest, TheModelTransformMovesRectanglesAndNotCircles) {
    zx3DQt::BGFXViewContext const view = StartPicture();
    QMatrix4x4 moved;
    moved.translate(50.0f, 20.0f);
    m_renderer.SetModelTransform(moved);
    DrawRectangle(m_renderer, view, QVector2D(30.0f, 30.0f), QVector2D(10.0f, 5.0f), ToColor(Qt::red), 0.5f,
                  kOpaque);
    DrawCircle(m_renderer, view, QVector2D(30.0f, 30.0f), 10.0f, ToColor(Qt::green), 0.5f, kOpaque);
    QImage const image = Present();
    EXPECT_EQ(image.pixelColor(30, 30), QColor(Qt::green));
    EXPECT_EQ(image.pixelColor(80, 50), QColor(Qt::red));
}

TEST_P(ShapesTest, RectanglesReachTheirHalfExtents) {
    zx3DQt::BGFXViewContext const view = StartPicture();
    zx3DQt::BGFXRectangleModel2D const model{{50.0f, 40.0f}, {30.0f, 15.0f}, ToColor(kColor)};
    DrawRectangle(m_renderer, view, model, 0.5f, kOpaque);
    DrawRectangle(m_renderer, view, QVector2D(120.5f, 80.0f), QVector2D(0.5f, 40.0f), ToColor(Qt::green),
                  0.5f, kOpaque);
    DrawRectangle(m_renderer, view, QVector2D(0.0f, 120.0f), QVector2D(-20.0f, -10.0f), ToColor(Qt::blue),
                  0.5f, kOpaque);
    QImage expected = Canvas();
    Fill(expected, QRect(20, 25, 60, 30), kColor);
    Fill(expected, QRect(120, 40, 1, 80), Qt::green);
    Fill(expected, QRect(0, 110, 20, 10), Qt::blue);
    EXPECT_TRUE(Matches(Present(), expected, kExact));
}

TEST_P(ShapesTest, ARectangleTurnsWithTheModelTransform) {
    zx3DQt::BGFXViewContext const view = StartPicture();
    QMatrix4x4 turned;
    turned.translate(80.0f, 60.0f);
    turned.rotate(30.0f, 0.0f, 0.0f, 1.0f);
    m_renderer.SetModelTransform(turned);
    DrawRectangle(m_renderer, view, QVector2D(5.0f, -3.0f), QVector2D(40.0f, 20.0f), ToColor(kColor), 0.5f,
                  kOpaque);
    double const cosine = std::cos(30.0 * 0.017453292519943295);
    CheckPicture(
        [&](QPointF pixel) {
            QPointF const from = pixel - QPointF(80.0, 60.0);
            double const x = from.x() * cosine + from.y() * 0.5 - 5.0;
            double const y = from.y() * cosine - from.x() * 0.5 + 3.0;
            return CoverageAtDistance(std::min(40.0 - std::abs(x), 20.0 - std::abs(y)));
        },
        20);
}

TEST_P(ShapesTest, TheNearerShapeIsInFrontAndTheStateCounts) {
    zx3DQt::BGFXViewContext const view = StartPicture();
    zx3D::Color translucent = ToColor(Qt::red);
    translucent.alpha = 0.5f;
    DrawRectangle(m_renderer, view, QVector2D(50.0f, 60.0f), QVector2D(30.0f, 30.0f), ToColor(Qt::green),
                  0.3f, kOpaque);
    DrawCircle(m_renderer, view, QVector2D(50.0f, 60.0f), 50.0f, ToColor(Qt::blue), 0.6f, kOpaque);
    auto const transparent = zx3DQt::BGFXRenderer::STATE_TRANSPARENT;
    DrawCircle(m_renderer, view, QVector2D(40.0f, 60.0f), 10.0f, translucent, 0.1f, transparent);
    DrawRectangle(m_renderer, view, QVector2D(65.0f, 60.0f), QVector2D(5.0f, 5.0f), translucent, 0.1f,
                  transparent);
    QImage const image = Present();
    EXPECT_EQ(image.pixelColor(25, 60), QColor(Qt::green));
    EXPECT_EQ(image.pixelColor(15, 60), QColor(Qt::blue));
    EXPECT_LE(ColorDistance(image.pixelColor(40, 60), QColor(128, 128, 0, 192)), 4);
    EXPECT_LE(ColorDistance(image.pixelColor(65, 60), QColor(128, 128, 0, 192)), 4);
}

TEST_P(ShapesTest, ConesHaveTheOutlineOfTheirCorners) {
    SoftwareCamera const parallel{.place = {3.0, 2.0, -5.0}, .target = {}, .halfHeight = 1.2};
    SoftwareCamera const perspective{.place = {-1.5, 1.0, -2.5}, .target = {}, .angle = 45.0};
    SoftwareCamera const behind{.place = {-4.0, 0.5, -0.3}, .target = {}, .angle = 30.0};
    Vector3 const x{1.0, 0.0, 0.0};
    Vector3 const y{0.0, 1.0, 0.0};
    Vector3 const z{0.0, 0.0, 1.0};
    for (SoftwareCamera const& camera : {parallel, perspective, behind}) {
        for (int const segments : {3, 7, 32, 200}) {
            SCOPED_TRACE(segments);
            // Corners start at direction × the axis that the direction has least of.
            CheckCone({{0.8, 0.1, 0.0}, x, 1.5, 0.6, segments, Cross(x, y)}, camera);
            CheckCone({{0.0, -0.8, 0.1}, -1.0 * y, 1.2, 0.5, segments, Cross(-1.0 * y, x)}, camera);
            CheckCone({{0.1, 0.0, 0.9}, z, 1.6, 0.7, segments, Cross(z, x)}, camera);
        }
    }
}

TEST_P(ShapesTest, AnObliqueConePointsWhereItIsTold) {
    SoftwareCamera const camera{.place = {0.5, 0.3, -4.0}, .target = {}, .angle = 35.0};
    Vector3 const direction = Normalized({2.0, 1.0, -3.0});
    // Of length sqrt(13 / 14), as is the other axis of the base.
    Vector3 const corner = Cross(direction, {0.0, 1.0, 0.0});
    CheckCone({{0.5, 0.3, -0.6}, direction, 1.4, 0.6, 40, corner}, camera);
}

TEST_P(ShapesTest, AConeIsClosed) {
    Vector3 const z{0.0, 0.0, 1.0};
    SoftwareCone const cone{{0.0, 0.0, 0.8}, z, 1.6, 0.7, 32, Cross(z, {1.0, 0.0, 0.0})};
    for (Vector3 const& place : {Vector3{0.4, 0.3, -4.0}, {0.4, 0.3, 4.0}, {4.0, 0.3, 0.4}}) {
        SoftwareCamera const camera{.place = place, .target = {}, .angle = 35.0};
        zx3DQt::BGFXViewContext const view = StartPicture(camera);
        DrawCircle(m_renderer, view, QVector2D(), 0.4f, ToColor(Qt::red), -0.4f, kOpaque); // within
        DrawCone(m_renderer, view, ModelOf(cone, kColor));
        ConeOutline const outline(cone, camera, Size());
        CheckPicture([&](QPointF pixel) { return outline.At(pixel); }, 30);
    }
}

ZX3D_INSTANTIATE_BACKENDS(ShapesTest);
