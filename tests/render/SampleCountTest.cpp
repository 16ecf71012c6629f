// Frame buffers of several samples: edges against the part of each pixel that they cover.
#include "ExactCoverage.h"
#include "RenderTest.h"
#include "SmoothTriangle.h"
#include "SoftwareCone.h"
#include "TextPainting.h"

#include <harness/Trouble.h>

#include <zx3DQt/CoordinateGrid.h>
#include <zx3DQt/PointBatch.h>
#include <zx3DQt/Shapes.h>

#include <QtMath>

#include <cmath>
#include <functional>
#include <set>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr QSize kSize(96, 64);

class SampleCountTest : public RenderTest {
protected:
    using Record = std::function<void(zx3DQt::BGFXViewContext const&)>;

    /// What is drawn on a target, on black; with a camera, or where a world unit is a pixel.
    QImage DrawOn(zx3D::FrameBuffer& frameBuffer, Record const& record,
                  SoftwareCamera const* camera = nullptr) {
        EXPECT_TRUE(m_renderer.StartFrame(frameBuffer));
        m_renderer.SetModelTransform(QMatrix4x4());
        QRect const viewport(0, 0, frameBuffer.GetWidth(), frameBuffer.GetHeight());
        zx3DQt::BGFXViewContext view = PixelView(viewport);
        if (camera != nullptr)
            camera->SetUp(view);
        view.Submit(frameBuffer);
        record(view);
        return ReadBack(frameBuffer);
    }

    /// The same on a target of so many samples.
    QImage Draw(std::uint32_t sampleCount, Record const& record, SoftwareCamera const* camera = nullptr) {
        OffscreenTarget target(kSize, {.sampleCount = sampleCount});
        return DrawOn(target.GetFrameBuffer(), record, camera);
    }

    QImage DrawTriangleOn(zx3D::FrameBuffer& frameBuffer) {
        EXPECT_TRUE(RecordTriangle(m_renderer, frameBuffer));
        return ReadBack(frameBuffer);
    }

    /// White shapes are smooth with four samples and not with one.
    void ExpectSmooth(std::vector<ConvexPolygon> const& shapes, Record const& record,
                      SoftwareCamera const* camera = nullptr) {
        CoverageError const smooth = CompareCoverage(Draw(4, record, camera), shapes);
        EXPECT_GT(smooth.edges, 40);
        EXPECT_LE(smooth.meanOnEdges, kLargestError);
        EXPECT_EQ(smooth.wrongElsewhere, 0);
        EXPECT_GT(CompareCoverage(Draw(1, record, camera), shapes).meanOnEdges, kLargestError);
        RecordProperty("error", std::to_string(smooth.meanOnEdges));
    }
};

zx3D::Line LineOf(QPointF start, QPointF end) {
    return {{static_cast<float>(start.x()), static_cast<float>(start.y()), 0.5f},
            {static_cast<float>(end.x()), static_cast<float>(end.y()), 0.5f},
            ToColor(Qt::white)};
}

zx3D::Vertex::Pos3fColorRGBA VertexOf(QPointF point) {
    return {{static_cast<float>(point.x()), static_cast<float>(point.y()), 0.5f}, ToColor(Qt::white)};
}

int CountTranslucent(QImage const& image) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += qAlpha(image.pixel(x, y)) != 255;
    }
    return count;
}

/// Far enough from each other for points and short lines of some pixels, each at another place in its pixel.
std::vector<QPointF> ScatteredPlaces() {
    std::vector<QPointF> places;
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 8; ++column)
            places.emplace_back(6.13 + 11.0 * column + 0.17 * row, 6.29 + 12.0 * row + 0.11 * column);
    }
    return places;
}

} // namespace

TEST_P(SampleCountTest, TrianglesAreSmooth) {
    ConvexPolygon const corners = {{5.2, 58.7}, {88.4, 41.3}, {31.6, 3.9}};
    ExpectSmooth({corners}, [&](zx3DQt::BGFXViewContext const& view) {
        zx3D::Vertex::Pos3fColorRGBA const vertices[] = {VertexOf(corners[0]), VertexOf(corners[1]),
                                                         VertexOf(corners[2])};
        std::uint16_t const indices[] = {0, 1, 2};
        m_renderer.DrawTriangles(view, vertices, indices);
    });
}

TEST_P(SampleCountTest, WideLinesAreSmooth) {
    ExpectSmooth({AroundLine({8.3, 9.1}, {86.2, 27.4}, 5.0), AroundLine({10.6, 30.2}, {71.9, 54.8}, 3.0)},
                 [&](zx3DQt::BGFXViewContext const& view) {
                     m_renderer.DrawLines(view, std::vector{LineOf({8.3, 9.1}, {86.2, 27.4})}, 5.0f);
                     m_renderer.DrawLines(view, std::vector{LineOf({10.6, 30.2}, {71.9, 54.8})}, 3.0f);
                 });
}

TEST_P(SampleCountTest, ThinLinesAreSmooth) {
    ExpectSmooth({AroundLine({8.3, 9.1}, {86.2, 27.4}, 1.0), AroundLine({10.6, 20.2}, {41.9, 60.8}, 1.0)},
                 [&](zx3DQt::BGFXViewContext const& view) {
                     m_renderer.DrawLines(view, std::vector{LineOf({8.3, 9.1}, {86.2, 27.4}),
                                                            LineOf({10.6, 20.2}, {41.9, 60.8})});
                 });
}

TEST_P(SampleCountTest, LargePointsAreSmooth) {
    std::vector<ConvexPolygon> shapes;
    std::vector<zx3D::Vertex::Pos3fColorRGBA> points;
    for (QPointF const place : ScatteredPlaces()) {
        shapes.push_back(AroundPoint(place, 5.0));
        points.push_back(VertexOf(place));
    }
    ExpectSmooth(shapes, [&](zx3DQt::BGFXViewContext const& view) {
        m_renderer.DrawPoints(view, points, std::uint16_t{5});
    });
}

TEST_P(SampleCountTest, PointsOfOnePixelAreSmooth) {
    std::vector<ConvexPolygon> shapes;
    std::vector<zx3D::Vertex::Pos3fColorRGBA> points;
    for (QPointF const place : ScatteredPlaces()) {
        shapes.push_back(AroundPoint(place, 1.0));
        points.push_back(VertexOf(place));
    }
    ExpectSmooth(shapes, [&](zx3DQt::BGFXViewContext const& view) { m_renderer.DrawPoints(view, points); });
}

TEST_P(SampleCountTest, RoundPointsOfABatchAreSmooth) {
    std::vector<ConvexPolygon> shapes;
    std::vector<zx3DQt::ColoredPoint> points;
    for (QPointF const place : ScatteredPlaces()) {
        ConvexPolygon circle;
        for (int i = 0; i < 60; ++i)
            circle.push_back(place + 4.0 * QPointF(std::cos(qDegreesToRadians(6.0 * i)),
                                                   std::sin(qDegreesToRadians(6.0 * i))));
        shapes.push_back(circle);
        points.push_back({{static_cast<float>(place.x()), static_cast<float>(place.y()), 0.5f}, 0xFFFFFFFF});
    }
    zx3DQt::PointBatch batch;
    batch.Set(points);
    ExpectSmooth(shapes, [&](zx3DQt::BGFXViewContext const& view) {
        batch.Draw(m_renderer, view, {.shape = zx3DQt::PointShape::Disc, .size = 8.0f});
    });
    // Balls have the outlines of discs.
    auto const draw = [&](zx3DQt::PointShape shape) {
        QImage picture = Draw(4, [&](zx3DQt::BGFXViewContext const& view) {
            DrawRect(view, QRectF(QPointF(), kSize), Qt::black, 0.99f);
            batch.Draw(m_renderer, view, {.shape = shape, .size = 8.0f});
        });
        EXPECT_EQ(CountTranslucent(picture), 0);
        return picture;
    };
    QImage const discs = draw(zx3DQt::PointShape::Disc);
    QImage const balls = draw(zx3DQt::PointShape::Ball);
    for (int y = 0; y < kSize.height(); ++y) {
        for (int x = 0; x < kSize.width(); ++x) {
            int const ofDisc = qRed(discs.pixel(x, y));
            int const ofBall = qRed(balls.pixel(x, y));
            EXPECT_LE(ofBall, ofDisc) << x << ", " << y;
            EXPECT_GE(ofBall, ofDisc * 29 / 100) << x << ", " << y; // what the shade leaves at the outline
        }
    }
}

TEST_P(SampleCountTest, ConesAreSmooth) {
    SoftwareCamera const camera{.place = {-1.5, 1.0, -2.5}, .target = {}, .angle = 45.0};
    Vector3 const direction = Normalized({2.0, 1.0, -3.0});
    for (int const segments : {3, 32}) {
        SoftwareCone const cone{
            {0.5, 0.3, -0.6}, direction, 1.4, 0.6, segments, Cross(direction, {0.0, 1.0, 0.0})};
        ExpectSmooth(
            {ConeOutline(cone, camera, kSize).Corners()},
            [&](zx3DQt::BGFXViewContext const& view) {
                DrawCone(m_renderer, view, ModelOf(cone, Qt::white));
            },
            &camera);
    }
}

TEST_P(SampleCountTest, GridsAreSmooth) {
    SoftwareCamera const camera{
        .place = {0.7, -4.3, -3.1}, .target = {-0.1, 0.2, 0.0}, .angle = 55.0, .up = {0.0, 0.0, -1.0}};
    zx3DQt::CoordinateGridStyle style;
    style.gridSpacing = style.gridMargins = {1.0f, 1.0f};
    style.lineColor = Qt::white;
    style.lineStipplePattern = {0xFFFF, 1};
    for (int const width : {1, 3}) {
        style.lineWidth = static_cast<float>(width);
        std::vector<ConvexPolygon> shapes;
        auto const addLine = [&](Vector3 const& start, Vector3 const& end) {
            shapes.push_back(AroundLine(camera.ToPixels(start, kSize), camera.ToPixels(end, kSize), width));
        };
        for (double const place : {-2.0, -1.0, 1.0}) { // the lines at 0 are left to axes
            addLine({place, -2.0, 0.0}, {place, 2.0, 0.0});
            addLine({-2.0, -place, 0.0}, {2.0, -place, 0.0}); // a grid's y points down
        }
        ExpectSmooth(
            shapes,
            [&](zx3DQt::BGFXViewContext const& view) {
                DrawCoordinateGridLines(m_renderer, view, QRectF(-1.0, -1.0, 2.0, 2.0), style);
            },
            &camera);
    }
}

TEST_P(SampleCountTest, TextOnAFlatGroundIsTheSameToTheByte) {
    auto const write = [](zx3DQt::BGFXViewContext const& view) {
        int y = 3;
        for (int const size : {9, 12, 18}) {
            zarvex::testing::Draw(
                {.text = "Ag 0,25°", .x = 4, .y = static_cast<float>(y), .pixelSize = size});
            y += size + 4;
        }
        static_cast<void>(view);
    };
    QImage const sharp = Draw(1, write);
    EXPECT_GT(CompareCoverage(sharp, {}).wrongElsewhere, 100) << "nothing was written";
    for (std::uint32_t const count : {2u, 4u, 8u}) {
        TakeWarnings("surface.fewer-samples");
        EXPECT_TRUE(Matches(Draw(count, write), sharp, kExact)) << count;
    }
    TakeWarnings("surface.fewer-samples");
}

TEST_P(SampleCountTest, TheCountIsWhatTheGpuHasAndAWarningSaysIfItIsLess) {
    for (std::uint32_t const asked : {2u, 4u, 8u, 16u}) {
        OffscreenTarget target(kSize, {.sampleCount = asked});
        QImage const picture = DrawTriangleOn(target.GetFrameBuffer());
        std::set<int> levels;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                levels.insert(qRed(picture.pixel(x, y)));
        }
        std::uint32_t const had = target.GetFrameBuffer().GetSampleCount();
        // A driver may have more than bgfx asks it for.
        EXPECT_GE(levels.size(), had + 1) << asked;
        EXPECT_LE(had, asked);
        EXPECT_EQ(TakeWarnings("surface.fewer-samples").size(), had < asked ? 1u : 0u) << asked;
    }
}

TEST_P(SampleCountTest, TargetsOfOtherCountsAndAResizeInOneFrameEachHaveTheirPicture) {
    OffscreenTarget first(kSize, {.sampleCount = 4});
    OffscreenTarget second(QSize(70, 80), {.sampleCount = 8}); // or as many as there are
    OffscreenTarget third(QSize(80, 70));
    std::vector<OffscreenTarget*> const targets = {&first, &second, &third};
    for (int round = 0; round < 3; ++round) {
        second.GetFrameBuffer().RequestResize(static_cast<std::uint16_t>(70 + round), 80);
        for (OffscreenTarget* const target : targets)
            ASSERT_TRUE(m_renderer.StartFrame(target->GetFrameBuffer()));
        bgfx::ViewId view = 10;
        for (OffscreenTarget* const target : targets)
            ASSERT_TRUE(RecordTriangle(m_renderer, target->GetFrameBuffer(), view--));
        EXPECT_TRUE(IsSmooth(ReadBack(first.GetFrameBuffer())));
        EXPECT_TRUE(IsSmooth(ReadBack(second.GetFrameBuffer())));
        EXPECT_TRUE(IsStepped(ReadBack(third.GetFrameBuffer())));
    }
    TakeWarnings("surface.fewer-samples");
}

TEST_P(SampleCountTest, ChangingTheCountChangesThePictureAndLeavesNothingBehind) {
    OffscreenTarget target(kSize);
    zx3D::FrameBuffer& frameBuffer = target.GetFrameBuffer();
    QImage const plain = DrawTriangleOn(frameBuffer);
    auto const countTextures = [] {
        bgfx::frame();
        bgfx::frame();
        return bgfx::getStats()->numTextures;
    };
    auto const textures = countTextures();
    for (int i = 0; i < 3; ++i) {
        frameBuffer.SetOptions({.sampleCount = 4, .depthFormat = bgfx::TextureFormat::D32F});
        EXPECT_TRUE(IsSmooth(DrawTriangleOn(frameBuffer)));
        EXPECT_GT(countTextures(), textures);
        frameBuffer.SetOptions({});
        EXPECT_TRUE(Matches(DrawTriangleOn(frameBuffer), plain, kExact));
        EXPECT_EQ(countTextures(), textures);
    }
}

TEST_P(SampleCountTest, SizesFromNoneToTheLargest) {
    OffscreenTarget target(kSize, {.sampleCount = 4});
    zx3D::FrameBuffer& frameBuffer = target.GetFrameBuffer();
    auto const limit = static_cast<std::uint16_t>(bgfx::getCaps()->limits.maxTextureSize);
    for (QSize const size :
         {QSize(0, 0), QSize(1, 1), QSize(limit, 1), QSize(0, 7), QSize(1, limit), kSize}) {
        frameBuffer.RequestResize(static_cast<std::uint16_t>(size.width()),
                                  static_cast<std::uint16_t>(size.height()));
        frameBuffer.SubmitOnDemand();
        if (size.isEmpty())
            continue;
        EXPECT_EQ(frameBuffer.GetSampleCount(), 4u);
        QImage const red = DrawOn(frameBuffer, [&](zx3DQt::BGFXViewContext const& view) {
            DrawRect(view, QRectF(QPointF(), QSizeF(size)), Qt::red);
        });
        EXPECT_TRUE(Matches(red, FilledImage(size, Qt::red), kExact)) << size.width();
    }
    frameBuffer.RequestResize(65535, 2);
    frameBuffer.SubmitOnDemand();
    EXPECT_EQ(TakeWarnings("surface.too-large").size(), 1u);
    EXPECT_FALSE(bgfx::isValid(frameBuffer.GetHandle()));
}

TEST_P(SampleCountTest, FinerDepthsTellPlanesApartThatD16DoesNot) {
    // A column for each place of the plane in front, a kilometre away, and a row for each distance of the one
    // behind, which is drawn after it.
    constexpr double angle = 40.0;
    constexpr int columns = 48;
    std::vector<double> distances;
    for (double distance = 0.02; distance < 300.0; distance *= 1.1)
        distances.push_back(distance);
    auto const rows = static_cast<int>(distances.size());
    auto const drawPlanes = [&](zx3DQt::BGFXViewContext const& view, QColor const& color, bool isBehind) {
        std::vector<zx3D::Vertex::Pos3fColorRGBA> corners;
        std::vector<std::uint16_t> indices;
        for (int i = 0; i < columns * rows; ++i) {
            int const x = i % columns;
            int const y = i / columns;
            double const depth =
                1000.0 + 0.37 * x + (isBehind ? distances[static_cast<std::size_t>(y)] : 0.0);
            double const pixel = 2.0 * depth * std::tan(qDegreesToRadians(angle) / 2.0) / rows;
            for (int const corner : {0, 1, 2, 2, 1, 3}) {
                indices.push_back(static_cast<std::uint16_t>(corners.size()));
                corners.push_back(
                    {{static_cast<float>((x + corner % 2 - columns / 2.0) * pixel),
                      static_cast<float>((rows / 2.0 - y - corner / 2) * pixel), static_cast<float>(depth)},
                     ToColor(color)});
            }
        }
        m_renderer.DrawTriangles(view, corners, indices);
    };
    /// The least distance from which on the plane in front is seen everywhere.
    auto const separation = [&](bgfx::TextureFormat::Enum depthFormat, float nearPlane) {
        OffscreenTarget target(QSize(columns, rows), {.depthFormat = depthFormat});
        QImage const picture = DrawOn(target.GetFrameBuffer(), [&](zx3DQt::BGFXViewContext view) {
            bx::mtxProj(view.GetProjectionMatrix().data(), angle, float(columns) / float(rows), nearPlane,
                        2000.0f, bgfx::getCaps()->homogeneousDepth, bx::Handedness::Left);
            view.Submit(target.GetFrameBuffer());
            drawPlanes(view, Qt::green, false);
            drawPlanes(view, Qt::red, true);
        });
        double least = HUGE_VAL;
        for (int y = rows - 1; y >= 0; --y) {
            for (int x = 0; x < columns; ++x) {
                if (picture.pixelColor(x, y) != QColor(Qt::green))
                    return least;
            }
            least = distances[static_cast<std::size_t>(y)];
        }
        return least;
    };
    using Format = bgfx::TextureFormat;
    struct Case {
        char const* name;
        Format::Enum depthFormat;
        float nearPlane;
        double least, most; ///< metres
    };
    // Of those finer ones it is the floats of the projection that are the limit, more than the depth buffer.
    for (Case const& c : {Case{"D16 from 0.1 m", Format::D16, 0.1f, 100.0, 230.0},
                          Case{"D24S8 from 0.1 m", Format::D24S8, 0.1f, 0.5, 3.0},
                          Case{"D32F from 0.1 m", Format::D32F, 0.1f, 0.5, 3.0},
                          Case{"D16 from 1 m", Format::D16, 1.0f, 10.0, 23.0},
                          Case{"D32F from 1 m", Format::D32F, 1.0f, 0.05, 0.3}}) {
        double const measured = separation(c.depthFormat, c.nearPlane);
        RecordProperty(c.name, std::to_string(measured));
        EXPECT_GE(measured, c.least) << c.name;
        EXPECT_LE(measured, c.most) << c.name;
    }
}

ZX3D_INSTANTIATE_BACKENDS(SampleCountTest);
