// Circles, rectangles and cones: which pixels they fill.
#include "ReferencePicture.h"
#include "RenderTest.h"
#include "SoftwareCone.h"

#include <zx3DQt/Shapes.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>

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

namespace {

/// What a ray meets of a round cone.
struct ConeHit {
    bool isSide;
    Vector3 normal;
};

std::optional<ConeHit> Meet(SoftwareCone const& cone, Ray const& ray) {
    double const slope = cone.radius / cone.height;
    Vector3 const axis = -1.0 * cone.direction; // from the tip to the base
    Vector3 const fromTip = ray.origin - cone.apex;
    // Where the distance from the axis is the slope times the way along it.
    double const a0 = Dot(fromTip, axis);
    double const a1 = Dot(ray.direction, axis);
    double const k = 1.0 + slope * slope;
    double const a = Dot(ray.direction, ray.direction) - k * a1 * a1;
    double const b = Dot(fromTip, ray.direction) - k * a0 * a1;
    double const c = Dot(fromTip, fromTip) - k * a0 * a0;
    std::optional<ConeHit> hit;
    double nearest = 1e30;
    double const discriminant = b * b - a * c;
    for (double const sign : {-1.0, 1.0}) {
        double const t = (-b + sign * std::sqrt(discriminant)) / a;
        double const along = a0 + t * a1;
        if (discriminant >= 0.0 && t < nearest && along >= 0.0 && along <= cone.height) {
            nearest = t;
            Vector3 const outwards = Normalized(fromTip + t * ray.direction - along * axis);
            hit = {true, Normalized(cone.height * outwards + cone.radius * cone.direction)};
        }
    }
    double const t = (cone.height - a0) / a1;
    Vector3 const onBase = fromTip + t * ray.direction - cone.height * axis;
    if (t < nearest && Dot(onBase, onBase) <= cone.radius * cone.radius)
        hit = {false, axis};
    return hit;
}

} // namespace

TEST_P(ShapesTest, LitConesShineWhereTheyFaceTheLamp) {
    constexpr float ambient = 0.3f;
    Vector3 const direction = Normalized({0.4, 0.8, -0.45});
    Vector3 const corner = Cross(direction, {1.0, 0.0, 0.0}); // of less length than 1
    SoftwareCone const cone{.apex = 0.6 * direction,
                            .direction = direction,
                            .height = 1.2,
                            .radius = 0.6 * std::sqrt(Dot(corner, corner)),
                            .segments = 256, // shades are interpolated from segment to segment
                            .firstCorner = Normalized(corner)};
    zx3DQt::BGFXConeModel model = ModelOf(cone, kColor);
    model.radius = 0.6f;
    int darkest = 255;
    int brightest = 0;
    for (SoftwareCamera const& camera :
         {SoftwareCamera{.place = {0.3, 0.4, -9.0}, .target = {}, .halfHeight = 0.8},
          SoftwareCamera{.place = {-5.0, 2.0, 7.0}, .target = {}, .halfHeight = 0.8, .up = {0.3, 1.0, 0.0}},
          SoftwareCamera{.place = {-1.0, -8.0, 2.0}, .target = {}, .angle = 12.0, .up = {0.0, 0.0, 1.0}}}) {
        DrawCone(m_renderer, StartPicture(camera), model, zx3DQt::CameraLight{ambient});
        QImage const image = Present();
        Vector3 const forward = Normalized(camera.target - camera.place);
        Vector3 const right = Normalized(Cross(camera.up, forward));
        Vector3 const up = Cross(forward, right);
        Vector3 const toLamp = Normalized(-1.0 * forward - 0.5 * right + 0.7 * up);
        int compared = 0;
        for (int y = 1; y + 1 < image.height(); ++y) {
            for (int x = 1; x + 1 < image.width(); ++x) {
                auto const hitAt = [&](double dx, double dy) {
                    return Meet(cone, camera.RayThrough(QPointF(x + 0.5 + dx, y + 0.5 + dy), Size()));
                };
                std::optional<ConeHit> const hit = hitAt(0.0, 0.0);
                // Not at edges, where the cone of triangles has others, nor at the tip, where a pixel sees
                // many segments.
                bool isInside = hit.has_value();
                for (double const d : {-4.0, 4.0}) {
                    for (auto const& other : {hitAt(d, 0.0), hitAt(0.0, d)})
                        isInside = isInside && other && other->isSide == hit->isSide;
                }
                if (!isInside)
                    continue;
                double const brightness = ambient + (1.0 - ambient) * std::max(0.0, Dot(hit->normal, toLamp));
                int const red = image.pixelColor(x, y).red();
                ASSERT_NEAR(red, brightness * kColor.red(), 4.0) << x << ", " << y;
                ++compared;
                darkest = std::min(darkest, red);
                brightest = std::max(brightest, red);
            }
        }
        EXPECT_GT(compared, 1500);
    }
    EXPECT_GT(brightest - darkest, 100);
}

ZX3D_INSTANTIATE_BACKENDS(ShapesTest);
