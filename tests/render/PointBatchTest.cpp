// Points that stay on the GPU: against pictures that are computed in double precision.
#include "RenderTest.h"

#include <harness/Trouble.h>

#include <zx3DQt/PointBatch.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using zx3DQt::ColoredPoint;
using zx3DQt::PointBatch;
using zx3DQt::PointShape;
using zx3DQt::PointStyle;
using zx3DQt::ScalarPoint;
using zx3DQt::SizeUnit;

namespace {

/// Distances in pixels to where a pixel's centre changes sides; nearer ones may fall on either side.
constexpr double kRounding = 0.02;

class PointBatchTest : public RenderTest {
protected:
    PointBatchTest() : RenderTest(QSize(128, 96)) {}

    QImage Draw(PointBatch& batch, PointStyle const& style, QMatrix4x4 const& transform = {}) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        DrawRect(view, QRectF(0, 0, 1, 1), Qt::black, 0.99f); // bgfx clears views that are drawn into
        batch.Draw(m_renderer, view, style, transform);
        return Present();
    }

    /// Checks each pixel against a colour for its centre; where there is none, any will do.
    template<typename ColorAt>
    void ExpectPixels(QImage const& image, ColorAt colorAt, int tolerance = 1) {
        QImage expected = image;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (std::optional<QColor> const color = colorAt(x + 0.5, y + 0.5))
                    expected.setPixelColor(x, y, *color);
            }
        }
        EXPECT_TRUE(Matches(image, expected, {tolerance, 0}));
    }
};

std::uint32_t Rgba(QColor const& color) {
    return ToColor(color).ToRGBA();
}

/// Points on no pixel's edge for the sizes in use.
std::vector<ColoredPoint> ScatteredPoints() {
    return {{{20.3f, 20.8f, 0.5f}, Rgba(Qt::red)},
            {{60.6f, 30.2f, 0.4f}, Rgba(QColor(10, 200, 30))},
            {{66.1f, 36.7f, 0.6f}, Rgba(Qt::blue)},      // partly behind the one before
            {{-1.3f, 50.4f, 0.5f}, Rgba(Qt::yellow)},    // beyond the left edge, and reaches in
            {{100.2f, 97.9f, 0.5f}, Rgba(Qt::magenta)}}; // and beyond the lower one
}

/// The colour of the nearest of the points that cover a place, of the last one where several are, or black;
/// nothing when that is not certain. `distance` is from a point's centre, as its shape counts it.
template<typename Distance>
std::optional<QColor> NearestColor(std::vector<ColoredPoint> const& points, double radius, double x, double y,
                                   Distance distance) {
    ColoredPoint const* nearest = nullptr;
    for (ColoredPoint const& point : points) {
        double const beyond = distance(x - point.position.x, y - point.position.y) - radius;
        if (std::abs(beyond) < kRounding)
            return std::nullopt;
        if (beyond < 0.0 && (nearest == nullptr || point.position.z <= nearest->position.z))
            nearest = &point;
    }
    if (nearest == nullptr)
        return QColor(Qt::black);
    std::uint32_t const rgba = nearest->rgba;
    return QColor(rgba >> 24, rgba >> 16 & 255, rgba >> 8 & 255, rgba & 255);
}

} // namespace

TEST_P(PointBatchTest, SinglePixelsHaveTheirPlacesAndColors) {
    std::vector<ColoredPoint> points;
    QImage expected = Canvas();
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = y % 3; x < expected.width(); x += 3) {
            QColor const color(2 * x, 2 * y, (x * 7 + y) % 256);
            points.push_back({{x + 0.5f, y + 0.5f, 0.5f}, Rgba(color)});
            expected.setPixelColor(x, y, color);
        }
    }
    PointBatch batch;
    batch.Set(points);
    EXPECT_TRUE(Matches(Draw(batch, {}), expected, kExact));
    EXPECT_TRUE(batch.IsUploaded());
    EXPECT_TRUE(Matches(Draw(batch, {}), expected, kExact)) << "in the second frame";
}

TEST_P(PointBatchTest, SquaresCoverWhatTheirSizeSays) {
    std::vector<ColoredPoint> const points = ScatteredPoints();
    PointBatch batch;
    batch.Set(points);
    for (float const size : {2.0f, 3.0f, 17.0f}) {
        ExpectPixels(Draw(batch, {.size = size}), [&](double x, double y) {
            return NearestColor(points, size / 2, x, y,
                                [](double dx, double dy) { return std::max(std::abs(dx), std::abs(dy)); });
        });
    }
}

TEST_P(PointBatchTest, DiscsAreRound) {
    std::vector<ColoredPoint> const points = ScatteredPoints();
    PointBatch batch;
    batch.Set(points);
    for (float const size : {3.0f, 9.0f, 50.0f}) {
        ExpectPixels(Draw(batch, {.shape = PointShape::Disc, .size = size}), [&](double x, double y) {
            return NearestColor(points, size / 2, x, y,
                                [](double dx, double dy) { return std::hypot(dx, dy); });
        });
    }
}

TEST_P(PointBatchTest, BallsAreShadedAndCutIntoEachOther) {
    // In units of a view that is 200 deep, so that the balls' radii count there.
    constexpr double depth = 200.0;
    constexpr double radius = 15.0;
    std::vector<ColoredPoint> const points = {{{40.3f, 40.2f, 100.0f}, Rgba(Qt::red)},
                                              {{52.1f, 45.7f, 108.0f}, Rgba(Qt::green)},
                                              {{45.2f, 55.1f, 96.0f}, Rgba(Qt::blue)}};
    PointBatch batch;
    batch.Set(points);
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    view.SetOrthoProjectionFromViewport(0.0f, depth, 0.0f);
    view.Submit(m_target.GetFrameBuffer());
    batch.Draw(m_renderer, view,
               {.shape = PointShape::Ball, .size = 2 * radius, .sizeUnit = SizeUnit::World});
    QImage const image = Present();

    int certain = 0;
    ExpectPixels(
        image,
        [&](double x, double y) -> std::optional<QColor> {
            double nearest = depth;
            QColor color = Qt::black;
            for (ColoredPoint const& point : points) {
                double const distance = std::hypot(x - point.position.x, y - point.position.y);
                if (std::abs(distance - radius) < 0.1)
                    return std::nullopt;
                if (distance > radius)
                    continue;
                double const height = std::sqrt(1.0 - distance * distance / (radius * radius));
                double const surface = point.position.z - height * radius;
                if (std::abs(surface - nearest) < 0.05) // of 16 bits of depth
                    return std::nullopt;
                if (surface > nearest)
                    continue;
                nearest = surface;
                double const shade = 0.3 + 0.7 * height;
                auto const channel = [&](int shift) {
                    return static_cast<int>(std::lround((point.rgba >> shift & 255) * shade));
                };
                color = QColor(channel(24), channel(16), channel(8));
            }
            ++certain;
            return color;
        },
        2);
    EXPECT_GT(certain, 11'000) << "of 12,288 pixels";
}

TEST_P(PointBatchTest, WorldSizesShrinkWithDistance) {
    QMatrix4x4 projection;
    float const aspect = 128.0f / 96.0f;
    bx::mtxProj(projection.data(), 60.0f, aspect, 0.1f, 100.0f, bgfx::getCaps()->homogeneousDepth);
    std::vector<ColoredPoint> const points = {{{-1.0f, 0.3f, 4.0f}, Rgba(Qt::red)},
                                              {{1.5f, -0.2f, 9.0f}, Rgba(Qt::green)},
                                              {{0.0f, 0.0f, -3.0f}, Rgba(Qt::white)}}; // behind the camera
    constexpr double diameter = 1.2;
    PointBatch batch;
    batch.Set(points);
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    view.SetProjectionMatrix(projection);
    view.Submit(m_target.GetFrameBuffer());
    batch.Draw(m_renderer, view, {.shape = PointShape::Disc, .size = diameter, .sizeUnit = SizeUnit::World});
    ExpectPixels(Present(), [&](double x, double y) -> std::optional<QColor> {
        double const pixelsPerUnit = 48.0 / std::tan(std::numbers::pi / 6.0);
        for (ColoredPoint const& point : {points[0], points[1]}) {
            double const scale = pixelsPerUnit / point.position.z;
            double const beyond =
                std::hypot(x - 64.0 - point.position.x * scale, y - 48.0 + point.position.y * scale) -
                diameter / 2 * scale;
            if (std::abs(beyond) < 0.05)
                return std::nullopt;
            if (beyond < 0.0)
                return point.position.z < 5.0f ? QColor(Qt::red) : QColor(Qt::green);
        }
        return QColor(Qt::black);
    });
}

TEST_P(PointBatchTest, NumbersHaveTheColorsOfTheMap) {
    std::vector<ScalarPoint> points;
    for (int x = 0; x < 128; ++x)
        points.push_back({{x + 0.5f, 10.5f, 0.5f}, -3.0f + 0.1f * static_cast<float>(x)});
    points[5].value = std::numeric_limits<float>::quiet_NaN();
    points[6].value = -std::numeric_limits<float>::infinity();
    points[7].value = std::numeric_limits<float>::infinity();
    PointBatch batch;
    batch.Set(points);
    QColor const colors[] = {Qt::darkBlue, Qt::green, Qt::yellow, QColor(255, 0, 0, 128)};
    for (zx3DQt::ColorMap const& map : {zx3DQt::ColorMap(colors), zx3DQt::ColorMap(std::span(colors, 2))}) {
        PointStyle const style{.colorMap = map, .leastValue = -2.0f, .greatestValue = 8.0f};
        QImage const image = Draw(batch, style);
        for (int x = 0; x < 128; ++x) {
            double const share = (static_cast<double>(points[x].value) + 2.0) / 10.0;
            EXPECT_LE(ColorDistance(image.pixelColor(x, 10), map.At(share)), 9) << "at " << x; // 1/256 beside
        }
        EXPECT_EQ(image.pixelColor(5, 10), map.At(0.0));
        EXPECT_EQ(image.pixelColor(6, 10), map.At(0.0));
        EXPECT_EQ(image.pixelColor(7, 10), map.At(1.0));
    }
}

TEST_P(PointBatchTest, PositionsThatAreNotFiniteAreRefusedAndCounted) {
    ExpectWarning("point-batch.not-finite");
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    std::vector<ColoredPoint> const points = {{{10.5f, 10.5f, 0.5f}, Rgba(Qt::red)},
                                              {{notANumber, 20.5f, 0.5f}, Rgba(Qt::white)},
                                              {{30.5f, infinity, 0.5f}, Rgba(Qt::white)},
                                              {{30.5f, 20.5f, -infinity}, Rgba(Qt::white)},
                                              {{40.5f, 40.5f, 0.5f}, Rgba(Qt::blue)}};
    PointBatch batch;
    batch.Set(points);
    EXPECT_EQ(batch.GetCount(), 5u);
    QImage expected = Canvas();
    expected.setPixelColor(10, 10, Qt::red);
    expected.setPixelColor(40, 40, Qt::blue);
    EXPECT_TRUE(Matches(Draw(batch, {}), expected, kExact));
    QImage const squares = Draw(batch, {.size = 3.0f});
    EXPECT_EQ(CountDifferences(squares, Canvas()), 18);
}

TEST_P(PointBatchTest, WhatIsAppendedAndUpdatedLandsWhereItBelongs) {
    // A point for each pixel, in pieces that begin and end anywhere in the rows of textures; drawn between
    // them, so that they are on the GPU when the next ones come.
    OffscreenTarget target(QSize(256, 256));
    auto const pointAt = [](int index, int salt) {
        QColor const color(index % 256, index / 256, (index * 37 + salt) % 256);
        return ColoredPoint{{index % 256 + 0.5f, index / 256 + 0.5f, 0.5f}, Rgba(color)};
    };
    auto const draw = [&](PointBatch& batch) {
        m_renderer.StartFrame(target.GetFrameBuffer());
        zx3DQt::BGFXViewContext const view = PixelView(target.GetViewport());
        view.Submit(target.GetFrameBuffer());
        batch.Draw(m_renderer, view);
        return ReadBack(target.GetFrameBuffer());
    };
    std::vector<ColoredPoint> points;
    PointBatch batch;
    for (int const size : {1, 7, 300, 5000, 4096, 20'000, 3, 36'129}) {
        std::vector<ColoredPoint> piece;
        for (int i = 0; i < size; ++i)
            piece.push_back(pointAt(static_cast<int>(points.size()) + i, 0));
        batch.Append(piece);
        points.insert(points.end(), piece.begin(), piece.end());
        draw(batch);
    }
    ASSERT_EQ(points.size(), 65'536u);
    for (auto const& [first, size] :
         {std::pair{0, 1}, {5, 4000}, {9000, 30'000}, {65'535, 1}, {60'000, 5536}}) {
        std::vector<ColoredPoint> piece;
        for (int i = 0; i < size; ++i)
            piece.push_back(points[first + i] = pointAt(first + i, first + 1));
        batch.Update(first, piece);
    }
    QImage const image = draw(batch);
    QImage expected(256, 256, image.format());
    for (int i = 0; i < 65'536; ++i)
        expected.setPixelColor(
            i % 256, i / 256,
            QColor(points[i].rgba >> 24, points[i].rgba >> 16 & 255, points[i].rgba >> 8 & 255));
    EXPECT_TRUE(Matches(image, expected, kExact));
}

TEST_P(PointBatchTest, ALargeBatchComesInPiecesOfTheFrameBudget) {
    constexpr int count = 3 * 4096;
    std::vector<ColoredPoint> points;
    for (int i = 0; i < count; ++i)
        points.push_back({{i % 128 + 0.5f, i / 128 + 0.5f, 0.5f}, Rgba(Qt::white)});
    PointBatch batch;
    batch.Set(points);
    m_renderer.SetUploadBudget(4096 * 16);
    for (int frame = 1; frame <= 3; ++frame) {
        EXPECT_FALSE(batch.IsUploaded());
        QImage const image = Draw(batch, {});
        EXPECT_EQ(batch.GetUploadedCount(), 4096u * frame);
        EXPECT_EQ(CountDifferences(image, Canvas()), 4096 * frame);
    }
    EXPECT_TRUE(batch.IsUploaded());
}

TEST_P(PointBatchTest, FarFromTheWorldsOriginAMillimetreIsAMillimetre) {
    // A cube of 10 mm, 500 km east and 5,400 km north, turns; 1,000 pixels are 20 mm.
    constexpr zx3DQt::WorldPosition place{500'000.0, 5'400'000.0, 100.0};
    OffscreenTarget target(QSize(1000, 1000));
    PointBatch batch;
    std::vector<ColoredPoint> corners;
    for (int i = 0; i < 8; ++i)
        corners.push_back({{i & 1 ? 0.005f : -0.005f, i & 2 ? 0.005f : -0.005f, i & 4 ? 0.005f : -0.005f},
                           Rgba(QColor(40 + 20 * i, 255, 255))});
    batch.Set(corners);
    batch.SetOrigin(place);
    for (int degrees = 0; degrees < 360; degrees += 17) {
        m_renderer.StartFrame(target.GetFrameBuffer());
        zx3DQt::BGFXViewContext view = PixelView(target.GetViewport());
        view.SetOrigin({place.x - 0.25, place.y + 0.125, place.z});
        view.SetProjectionMatrix(zx3DQt::BGFXViewContext::ComputeOrthoProjection(
            QRectF(0.24, -0.135, 0.02, 0.02), -1.0f, 1.0f, 0.0f));
        view.Submit(target.GetFrameBuffer());
        QMatrix4x4 turn;
        turn.rotate(static_cast<float>(degrees), 0.0f, 0.0f, 1.0f);
        batch.Draw(m_renderer, view, {}, turn);
        QImage const image = ReadBack(target.GetFrameBuffer());
        double const angle = degrees * std::numbers::pi / 180.0;
        int found = 0;
        for (ColoredPoint const& corner : corners) {
            double const x = corner.position.x * std::cos(angle) - corner.position.y * std::sin(angle);
            double const y = corner.position.x * std::sin(angle) + corner.position.y * std::cos(angle);
            double const column = (x + 0.01) / 0.02 * 1000.0;
            double const row = (y + 0.01) / 0.02 * 1000.0;
            // In the pixel where it belongs, or in one that is no more than a tenth of a pixel away.
            bool isThere = false;
            for (double const dx : {-0.1, 0.1}) {
                for (double const dy : {-0.1, 0.1})
                    isThere |= image.pixelColor(static_cast<int>(column + dx), static_cast<int>(row + dy)) !=
                               QColor(Qt::black);
            }
            EXPECT_TRUE(isThere) << "at " << degrees << " degrees, pixel " << column << ", " << row;
            found += isThere;
        }
        EXPECT_EQ(found, 8);
        EXPECT_LE(CountDifferences(image, FilledImage(image.size(), Qt::black)), 8);
    }
}

ZX3D_INSTANTIATE_BACKENDS(PointBatchTest);
