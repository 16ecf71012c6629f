// Grids that disappear with distance: every pixel against the distance of what it shows.
#include "RenderTest.h"
#include "Scene.h"
#include "SoftwareCamera.h"
#include "WithoutCompute.h"

#include <zx3DQt/CoordinateGrid.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>
#include <utility>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr QColor kColor(250, 180, 80);
constexpr QColor kBackground(20, 30, 60);

using Distance = std::function<double(Vector3 const& place)>;

class FadingLinesTest : public RenderTest {
protected:
    FadingLinesTest() : RenderTest(kSceneSize) {
        m_style.gridSpacing = {1.0f, 1.0f};
        m_style.gridMargins = {};
        m_style.lineColor = kColor;
        m_style.lineStipplePattern = {0xFFFF, 1};
        // Crossings would be blended twice.
        m_style.enabledAxes = {zx3DQt::X};
    }

    QImage DrawLines(SoftwareCamera const& camera) {
        StartFrame();
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport(), kBackground);
        camera.SetUp(view);
        view.Submit(m_target.GetFrameBuffer());
        bgfx::touch(view);
        DrawCoordinateGridLines(m_renderer, view, m_rect, m_style);
        return Present();
    }

    /// Expects of every pixel that the grid covers without a fade what is left at its distance.
    void CheckFade(SoftwareCamera const& camera, Distance const& distance, int leastFading);

    /// Whether lines are so near to each other there that they are blended over each other.
    bool IsCrowded(SoftwareCamera const& camera, QPointF pixel) const;

    QRectF m_rect{-50.0, -50.0, 100.0, 100.0};
    zx3DQt::CoordinateGridStyle m_style;
};

/// What is left of a colour at a distance.
double Rest(zx3DQt::DistanceFade const& fade, double distance) {
    double const t = std::clamp((distance - fade.begin) / (fade.end - fade.begin), 0.0, 1.0);
    return 1.0 - t * t * (3.0 - 2.0 * t);
}

/// Where a pixel sees the plane of the grid; empty above the horizon.
std::optional<Vector3> PlaceAt(SoftwareCamera const& camera, QPointF pixel) {
    Ray const ray = camera.RayThrough(pixel, kSceneSize);
    double const t = -ray.origin.z / ray.direction.z;
    return t > 0.0 ? std::optional(ray.origin + t * ray.direction) : std::nullopt;
}

bool FadingLinesTest::IsCrowded(SoftwareCamera const& camera, QPointF pixel) const {
    auto const here = PlaceAt(camera, pixel);
    auto const right = PlaceAt(camera, pixel + QPointF(1.0, 0.0));
    auto const below = PlaceAt(camera, pixel + QPointF(0.0, 1.0));
    if (!here || !right || !below)
        return true;
    double const unitsPerPixel = std::hypot(right->x - here->x, below->x - here->x);
    return m_style.gridSpacing.x() < (m_style.lineWidth + 2.0) * unitsPerPixel;
}

void FadingLinesTest::CheckFade(SoftwareCamera const& camera, Distance const& distance, int leastFading) {
    std::optional<zx3DQt::DistanceFade> const fade = std::exchange(m_style.fade, std::nullopt);
    QImage const whole = DrawLines(camera);
    m_style.fade = fade;
    QImage const faded = DrawLines(camera);
    // A line's middle may be half its width and a pixel away from a pixel that it covers.
    double const reach = 0.5 * m_style.lineWidth + 0.5;
    int fading = 0;
    for (int y = 0; y < faded.height(); ++y) {
        for (int x = 0; x < faded.width(); ++x) {
            QColor const color = faded.pixelColor(x, y);
            ASSERT_EQ(color.alpha(), 255) << x << ", " << y;
            if (whole.pixelColor(x, y) == kBackground) {
                ASSERT_EQ(color, kBackground) << x << ", " << y;
                continue;
            }
            double most = 0.0;
            double least = 1.0;
            for (double const dx : {-reach, 0.0, reach}) {
                for (double const dy : {-reach, 0.0, reach}) {
                    auto const place = PlaceAt(camera, QPointF(x + 0.5 + dx, y + 0.5 + dy));
                    double const rest = place ? Rest(*fade, distance(*place)) : 0.0;
                    most = std::max(most, rest);
                    least = std::min(least, rest);
                }
            }
            // Red tells most.
            double const range = kColor.red() - kBackground.red();
            ASSERT_GE(color.red(), kBackground.red() + least * range - 2.0) << x << ", " << y;
            if (IsCrowded(camera, QPointF(x + 0.5, y + 0.5)))
                continue;
            ASSERT_LE(color.red(), kBackground.red() + most * range + 2.0) << x << ", " << y;
            fading += most < 0.98 && least > 0.02 && most - least < 0.3;
        }
    }
    EXPECT_GT(fading, leastFading);
}

SoftwareCamera const kHorizonCamera{
    .place = {0.3, -20.0, -2.0}, .target = {0.7, 10.0, 0.0}, .angle = 60.0, .up = {0.0, 0.0, -1.0}};

double Length(Vector3 const& a) {
    return std::sqrt(Dot(a, a));
}

} // namespace

TEST_P(FadingLinesTest, InPerspectiveLinesFadeTowardsTheHorizon) {
    m_style.fade = zx3DQt::DistanceFade{4.0f, 25.0f, std::nullopt};
    for (float const width : {1.0f, 3.0f}) {
        for (zx3D::LineStipplePattern const& stipple :
             {zx3D::LineStipplePattern{0xFFFF, 1}, zx3D::LineStipplePattern{0x0F0F, 2}}) {
            m_style.lineWidth = width;
            m_style.lineStipplePattern = stipple;
            CheckFade(
                kHorizonCamera, [](Vector3 const& place) { return Length(place - kHorizonCamera.place); },
                300);
        }
    }
}

TEST_P(FadingLinesTest, WithoutComputeTheyFadeAlike) {
    WithoutCompute const withoutCompute;
    m_style.lineWidth = 3.0f;
    m_style.fade = zx3DQt::DistanceFade{4.0f, 25.0f, std::nullopt};
    CheckFade(kHorizonCamera, [](Vector3 const& place) { return Length(place - kHorizonCamera.place); }, 300);
}

TEST_P(FadingLinesTest, InParallelTheyFadeAroundTheMiddleOfThePicture) {
    SoftwareCamera const camera{
        .place = {3.0, -7.0, -9.0}, .target = {0.3, 0.2, 0.0}, .halfHeight = 5.0, .up = {0.2, 1.0, 0.1}};
    Vector3 const sight = Normalized(camera.target - camera.place);
    auto const fromSight = [&](Vector3 const& place) {
        Vector3 const offset = place - camera.place;
        return Length(offset - Dot(offset, sight) * sight);
    };
    m_style.fade = zx3DQt::DistanceFade{1.0f, 5.0f, std::nullopt};
    for (float const width : {1.0f, 2.0f}) {
        m_style.lineWidth = width;
        CheckFade(camera, fromSight, 300);
    }
}

TEST_P(FadingLinesTest, FromACenterTheyFadeAroundIt) {
    m_style.fade = zx3DQt::DistanceFade{1.0f, 8.0f, QVector3D(2.0f, -12.0f, 1.0f)};
    auto const fromCenter = [](Vector3 const& place) { return Length(place - Vector3{2.0, -12.0, 1.0}); };
    SoftwareCamera const parallel{
        .place = {3.0, -17.0, -9.0}, .target = {2.3, -12.2, 0.0}, .halfHeight = 8.0, .up = {0.2, 1.0, 0.1}};
    for (float const width : {1.0f, 3.0f}) {
        m_style.lineWidth = width;
        CheckFade(kHorizonCamera, fromCenter, 150);
        CheckFade(parallel, fromCenter, 300);
    }
}

TEST_P(FadingLinesTest, WhatIsBehindThemIsSeenThroughWhatHasFaded) {
    // A grid in front of a red plane that is drawn first, and of a blue one that is drawn after it, further
    // away: no depth of faded lines is in its way.
    m_style.enabledAxes = {zx3DQt::X, zx3DQt::Y};
    m_style.lineWidth = 2.0f;
    m_style.gridSpacing = {0.1f, 0.1f};
    m_style.fade = zx3DQt::DistanceFade{0.0f, 0.001f, QVector3D(100.0f, 0.0f, 0.0f)}; // gone everywhere
    SoftwareCamera const camera{.place = {0.0, 0.0, -9.0}, .target = {}, .halfHeight = 5.0};
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport(), kBackground);
    camera.SetUp(view);
    view.Submit(m_target.GetFrameBuffer());
    bgfx::touch(view);
    DrawCoordinateGridLines(m_renderer, view, m_rect, m_style);
    DrawRect(view, QRectF(-100.0, -100.0, 200.0, 200.0), Qt::blue, 5.0f);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::blue), kExact));
}

TEST_P(FadingLinesTest, EdgeOnAndInTheMillionsTheyAreStillDrawn) {
    // In the plane of the grid: one row of pixels, fading to both sides of the eye's foot where it is seen.
    SoftwareCamera const edgeOn{
        .place = {0.5, -20.0, 0.0}, .target = {0.5, 0.0, 0.0}, .halfHeight = 8.0, .up = {0.0, 0.0, -1.0}};
    m_style.fade = zx3DQt::DistanceFade{0.0f, 6.0f, QVector3D(0.5f, 0.0f, 0.0f)};
    m_style.enabledAxes = {zx3DQt::Y};
    for (float const width : {1.0f, 3.0f}) {
        m_style.lineWidth = width;
        QImage const image = DrawLines(edgeOn);
        int const row = kSceneSize.height() / 2;
        auto const red = [&](int x) {
            return std::max(image.pixelColor(x, row).red(), image.pixelColor(x, row - 1).red());
        };
        EXPECT_GT(red(112), 200);
        EXPECT_EQ(red(5), kBackground.red());
        EXPECT_GT(red(90), red(60));
    }
    // Far from the origin.
    m_rect = QRectF(2'000'000.0, -1'000'050.0, 100.0, 100.0);
    m_style.enabledAxes = {zx3DQt::X};
    m_style.gridSpacing = {4.0f, 4.0f};
    SoftwareCamera const far{.place = {2'000'050.0, 1'000'000.0, -20.0},
                             .target = {2'000'050.0, 1'000'000.0, 0.0},
                             .halfHeight = 32.0};
    m_style.fade = zx3DQt::DistanceFade{5.0f, 30.0f, std::nullopt};
    QImage const image = DrawLines(far);
    // Lines are 10 pixels apart: of those at both sides of the middle most is left.
    EXPECT_GT(image.pixelColor(107, 80).red(), 240);
    EXPECT_GT(image.pixelColor(117, 80).red(), 240);
    for (int y = 0; y < image.height(); ++y)
        ASSERT_EQ(image.pixelColor(2, y), kBackground);
}

TEST_P(FadingLinesTest, StrangeFadesAndViewsEndAndTheNextFrameIsRight) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    QImage const before = DrawLines(kHorizonCamera);
    for (float const begin : {0.0f, -5.0f, infinity, nan, 1e30f}) {
        for (float const end : {0.0f, -5.0f, infinity, nan, 1e30f}) {
            for (auto const& center :
                 {std::optional<QVector3D>(), std::optional(QVector3D(nan, 0.0f, infinity))}) {
                m_style.fade = zx3DQt::DistanceFade{begin, end, center};
                for (float const width : {1.0f, 3.0f}) {
                    m_style.lineWidth = width;
                    DrawLines(kHorizonCamera);
                    DrawLines({.place = {1.0, 1.0, 0.0},
                               .target = {2.0, 3.0, 0.0},
                               .angle = 90.0,
                               .up = {0.0, 0.0, 1.0}});
                }
            }
        }
    }
    m_style.lineWidth = 1.0f;
    m_style.fade = zx3DQt::DistanceFade{0.0f, infinity, std::nullopt}; // nothing fades
    EXPECT_TRUE(Matches(DrawLines(kHorizonCamera), before));
    m_style.fade.reset();
    EXPECT_TRUE(Matches(DrawLines(kHorizonCamera), before, kExact));
}

ZX3D_INSTANTIATE_BACKENDS(FadingLinesTest);
