// Lines that stay on the GPU: against pictures that are computed in double precision.
#include "ExactCoverage.h"
#include "RenderTest.h"
#include "SmoothTriangle.h"
#include "SoftwareCamera.h"
#include "SoftwareStroke.h"

#include <harness/Trouble.h>

#include <zx3DQt/LineBatch.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using zx3DQt::LineBatch;
using zx3DQt::LineCap;
using zx3DQt::LineJoin;
using zx3DQt::LineSegment;
using zx3DQt::LineStyle;
using zx3DQt::LineVertex;
using zx3DQt::Polyline;
using zx3DQt::PolylineEnds;
using zx3DQt::SizeUnit;

namespace {

/// Distances in pixels from an edge, within which a pixel's centre may fall on either side.
constexpr double kRounding = 0.03;

constexpr float kDepth = 0.5f;

std::uint32_t Rgba(QColor const& color) {
    return ToColor(color).ToRGBA();
}

LineVertex VertexAt(QPointF place, QColor const& color = Qt::white) {
    return {{static_cast<float>(place.x()), static_cast<float>(place.y()), kDepth}, Rgba(color)};
}

std::vector<LineVertex> VerticesAt(std::vector<QPointF> const& places, QColor const& color = Qt::white) {
    std::vector<LineVertex> vertices;
    for (QPointF const place : places)
        vertices.push_back(VertexAt(place, color));
    return vertices;
}

/// Each pair of neighbours as a segment of its own.
std::vector<LineSegment> SegmentsAt(std::vector<QPointF> const& places, QColor const& color = Qt::white) {
    std::vector<LineSegment> segments;
    for (std::size_t i = 0; i + 1 < places.size(); ++i)
        segments.push_back({VertexAt(places[i], color), VertexAt(places[i + 1], color)});
    return segments;
}

LineBatch BatchOf(std::vector<LineSegment> const& segments) {
    LineBatch batch;
    batch.Set(segments);
    return batch;
}

LineBatch BatchOf(std::vector<LineVertex> const& vertices, PolylineEnds ends = PolylineEnds::Open) {
    LineBatch batch;
    Polyline const polylines[] = {{vertices, ends}};
    batch.Set(polylines);
    return batch;
}

class LineBatchTest : public RenderTest {
protected:
    LineBatchTest() : RenderTest(QSize(128, 96)) {}

    QImage Draw(LineBatch& batch, LineStyle const& style, QMatrix4x4 const& transform = {}) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        DrawRect(view, QRectF(0, 0, 1, 1), Qt::black, 0.99f); // bgfx clears views that are drawn into
        batch.Draw(m_renderer, view, style, transform);
        return Present();
    }

    /// With a camera.
    QImage Draw(LineBatch& batch, LineStyle const& style, SoftwareCamera const& camera) {
        StartFrame();
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
        camera.SetUp(view);
        view.Submit(m_target.GetFrameBuffer());
        bgfx::touch(view);
        batch.Draw(m_renderer, view, style);
        return Present();
    }

    /// Checks each pixel against whether its centre is covered in white, on black. The pixels that were told
    /// for certain.
    template<typename Outside>
    int ExpectCovered(QImage const& image, Outside outside) {
        QImage expected = image;
        int certain = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                double const distance = outside(QPointF(x + 0.5, y + 0.5));
                if (std::abs(distance) < kRounding)
                    continue;
                expected.setPixelColor(x, y, distance < 0.0 ? Qt::white : Qt::black);
                ++certain;
            }
        }
        EXPECT_TRUE(Matches(image, expected, kExact));
        return certain;
    }

    void ExpectStroke(std::vector<QPointF> const& places, PolylineEnds ends, LineStyle const& style) {
        SoftwareStroke const stroke(places, ends, style.width, style);
        LineBatch batch = BatchOf(VerticesAt(places), ends);
        int const certain =
            ExpectCovered(Draw(batch, style), [&](QPointF place) { return stroke.Outside(place); });
        EXPECT_GT(certain, 128 * 96 * 9 / 10);
    }
};

/// Right, obtuse and acute angles, to both sides, and a gentle bend.
std::vector<QPointF> const kBends = {{12.3, 20.7},  {40.1, 14.2}, {63.8, 40.6}, {70.3, 13.9},
                                     {104.6, 22.1}, {88.2, 55.3}, {56.4, 61.7}, {20.9, 80.4}};

} // namespace

TEST_P(LineBatchTest, ThinLinesAreThoseOfDrawLines) {
    std::vector<zx3D::Line> lines;
    std::vector<LineSegment> segments;
    for (int i = 0; i < 40; ++i) {
        QPointF const start(64.3 + 60.0 * std::cos(0.3 * i), 48.2 + 44.0 * std::sin(0.7 * i));
        QPointF const end(64.1 - 55.0 * std::sin(0.4 * i), 47.6 + 40.0 * std::cos(1.1 * i));
        QColor const color(5 * i, 255 - 6 * i, 40 + 3 * i);
        segments.push_back({VertexAt(start, color), VertexAt(end, color)});
        lines.push_back({segments.back().start.position, segments.back().end.position, ToColor(color)});
    }
    StartFrame();
    m_renderer.DrawLines(SubmitPixelView(), lines);
    QImage const expected = Present();
    LineBatch batch = BatchOf(segments);
    EXPECT_TRUE(Matches(Draw(batch, {}), expected, kExact));
    EXPECT_TRUE(batch.IsUploaded());
    EXPECT_TRUE(Matches(Draw(batch, {}), expected, kExact)) << "in the second frame";
}

TEST_P(LineBatchTest, ThinPolylinesAreTheirSegments) {
    LineBatch segments = BatchOf(SegmentsAt(kBends));
    LineBatch polyline = BatchOf(VerticesAt(kBends));
    EXPECT_TRUE(Matches(Draw(polyline, {}), Draw(segments, {}), kExact));
    std::vector<QPointF> closed = kBends;
    closed.push_back(kBends.front());
    segments = BatchOf(SegmentsAt(closed));
    polyline = BatchOf(VerticesAt(kBends), PolylineEnds::Closed);
    EXPECT_TRUE(Matches(Draw(polyline, {}), Draw(segments, {}), kExact));
}

TEST_P(LineBatchTest, SegmentsHaveTheirWidthsAndCaps) {
    std::vector<QPointF> const places = {{30.3, 30.8}, {95.6, 61.2}};
    LineBatch batch = BatchOf(SegmentsAt(places));
    for (float const width : {1.5f, 3.0f, 17.0f, 50.0f}) {
        for (LineCap const cap : {LineCap::Butt, LineCap::Square, LineCap::Round}) {
            LineStyle const style{.width = width, .cap = cap};
            SoftwareStroke const stroke(places, PolylineEnds::Open, width, style);
            ExpectCovered(Draw(batch, style), [&](QPointF place) { return stroke.Outside(place); });
        }
    }
}

TEST_P(LineBatchTest, PolylinesHaveTheirJoinsAndCaps) {
    for (float const width : {3.0f, 17.0f, 50.0f}) {
        for (LineJoin const join : {LineJoin::Miter, LineJoin::Round, LineJoin::Bevel}) {
            auto const cap = static_cast<LineCap>(join); // each with another one
            // Of 50 pixels, only corners that are farther from each other.
            std::vector<QPointF> const places =
                width < 50.0f ? kBends : std::vector<QPointF>{{30.3, 70.2}, {64.7, 25.1}, {101.2, 74.9}};
            ExpectStroke(places, PolylineEnds::Open, {.width = width, .join = join, .cap = cap});
        }
    }
}

TEST_P(LineBatchTest, ClosedPolylinesAreJoinedWhereTheyClose) {
    std::vector<QPointF> const triangle = {{20.3, 75.8}, {66.1, 18.4}, {108.7, 70.2}};
    for (LineJoin const join : {LineJoin::Miter, LineJoin::Round, LineJoin::Bevel})
        ExpectStroke(triangle, PolylineEnds::Closed, {.width = 9.0f, .join = join, .cap = LineCap::Square});
}

TEST_P(LineBatchTest, AcuteAnglesAndHooksLeaveNothingOut) {
    std::vector<std::vector<QPointF>> const shapes = {
        {{10.3, 50.7}, {110.6, 44.2}, {14.8, 36.1}}, // 8 degrees
        {{10.3, 50.7}, {90.6, 44.2}, {87.1, 41.9}},  // a hook that is shorter than the line is wide
        {{10.3, 50.7},
         {90.6, 44.2},
         {94.1, 45.9},
         {118.2, 80.4}}, // and a short segment between two long ones
    };
    for (std::vector<QPointF> const& shape : shapes) {
        for (LineJoin const join : {LineJoin::Miter, LineJoin::Bevel})
            ExpectStroke(shape, PolylineEnds::Open, {.width = 15.0f, .join = join});
    }
}

TEST_P(LineBatchTest, TheMiterLimitDecidesBetweenPointedAndCutOff) {
    std::vector<QPointF> const places = {{20.3, 60.2}, {90.7, 50.4}, {22.1, 36.8}}; // 28 degrees: 4.1 widths
    for (float const limit : {4.0f, 4.3f, 0.0f, -1.0f})
        ExpectStroke(places, PolylineEnds::Open, {.width = 8.0f, .miterLimit = limit});
}

TEST_P(LineBatchTest, RepeatedVerticesAndDots) {
    std::vector<QPointF> const places = {{20.3, 60.2}, {64.1, 30.4}, {64.1, 30.4}, {100.9, 66.6}};
    ExpectStroke(places, PolylineEnds::Open, {.width = 12.0f});
    for (LineCap const cap : {LineCap::Square, LineCap::Round}) {
        LineStyle const style{.width = 12.0f, .cap = cap};
        std::vector<QPointF> const dot = {{40.3, 40.2}, {40.3, 40.2}};
        ExpectStroke(dot, PolylineEnds::Open, style);
        SoftwareStroke const stroke(dot, PolylineEnds::Open, 12.0, style);
        LineBatch segment = BatchOf(SegmentsAt(dot));
        ExpectCovered(Draw(segment, style), [&](QPointF place) { return stroke.Outside(place); });
    }
    LineBatch withoutCaps = BatchOf(SegmentsAt({{40.3, 40.2}, {40.3, 40.2}}));
    EXPECT_EQ(CountDifferences(Draw(withoutCaps, {.width = 12.0f}), Canvas()), 0);
}

TEST_P(LineBatchTest, TranslucentCornersAreNoDarker) {
    LineBatch batch = BatchOf(VerticesAt(kBends, QColor(255, 255, 255, 128)));
    for (bool const isSmooth : {false, true}) {
        for (LineJoin const join : {LineJoin::Miter, LineJoin::Round, LineJoin::Bevel}) {
            LineStyle style{.width = 11.0f, .join = join, .cap = LineCap::Round, .smoothEdges = isSmooth};
            if (!isSmooth)
                style.state = zx3DQt::BGFXRenderer::STATE_TRANSPARENT;
            QImage const image = Draw(batch, style);
            int brightest = 0;
            int covered = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    brightest = std::max(brightest, qRed(image.pixel(x, y)));
                    covered += qRed(image.pixel(x, y)) >= 127;
                }
            }
            EXPECT_LE(brightest, 129);
            EXPECT_GT(covered, 2000);
        }
    }
}

TEST_P(LineBatchTest, SmoothSegmentsThatMeetLeaveNoGap) {
    std::vector<QPointF> circle;
    for (int i = 0; i <= 60; ++i) {
        double const angle = i * std::numbers::pi / 30.0;
        circle.push_back({64.2 + 40.0 * std::cos(angle), 48.3 + 40.0 * std::sin(angle)});
    }
    std::vector<LineSegment> segments = SegmentsAt(circle);
    for (LineSegment& segment : segments) { // as on a leaning surface
        for (LineVertex* const end : {&segment.start, &segment.end})
            end->position.z += 0.001f * end->position.x;
    }
    LineBatch batch = BatchOf(segments);
    QImage const image = Draw(batch, {.width = 3.0f, .cap = LineCap::Round, .smoothEdges = true});
    for (int i = 0; i < 720; ++i) {
        double const angle = i * std::numbers::pi / 360.0;
        QPointF const place(64.2 + 39.97 * std::cos(angle), 48.3 + 39.97 * std::sin(angle));
        EXPECT_GT(qRed(image.pixel(static_cast<int>(place.x()), static_cast<int>(place.y()))), 200) << i;
    }
}

TEST_P(LineBatchTest, SmoothEdgesAreCoverage) {
    QPointF const start(20.3, 30.8);
    QPointF const end(95.6, 61.2);
    QPointF const along = (end - start) / std::hypot(end.x() - start.x(), end.y() - start.y());
    LineBatch batch = BatchOf(SegmentsAt({start, end}));
    for (float const width : {0.4f, 1.0f, 6.0f}) {
        // Without alpha, which bgfx multiplies by itself.
        QImage const image =
            Draw(batch, {.width = width, .smoothEdges = true}).convertToFormat(QImage::Format_RGB32);
        QImage expected = image;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                QPointF const place = QPointF(x + 0.5, y + 0.5) - start;
                double const before = QPointF::dotProduct(place, along);
                double const after = -QPointF::dotProduct(place - (end - start), along);
                double const side = std::abs(along.x() * place.y() - along.y() * place.x());
                double const outside = std::max({side - std::max<double>(width, 1.0) / 2.0, -before, -after});
                double const coverage = std::clamp(0.5 - outside, 0.0, 1.0) * std::min<double>(width, 1.0);
                int const white = static_cast<int>(std::lround(255.0 * coverage));
                expected.setPixelColor(x, y, QColor(white, white, white));
            }
        }
        EXPECT_TRUE(Matches(image, expected, {3, 0})) << width; // pixels are 1/256 off their centres
    }
}

TEST_P(LineBatchTest, SmoothPolylinesHaveTheirShapes) {
    LineBatch batch = BatchOf(VerticesAt(kBends), PolylineEnds::Closed);
    for (LineJoin const join : {LineJoin::Miter, LineJoin::Round, LineJoin::Bevel}) {
        LineStyle const style{.width = 7.0f, .join = join, .smoothEdges = true};
        SoftwareStroke const stroke(kBends, PolylineEnds::Closed, 7.0, style);
        QImage const image = Draw(batch, style);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                double const outside = stroke.Outside(QPointF(x + 0.5, y + 0.5));
                int const white = qRed(image.pixel(x, y));
                if (std::abs(outside) > 0.75) {
                    EXPECT_EQ(white, outside < 0.0 ? 255 : 0) << x << ", " << y;
                }
            }
        }
    }
}

TEST_P(LineBatchTest, ColorsBlendEvenlyInTheWorld) {
    SoftwareCamera const camera{.place = {0.0, 0.0, -5.0}, .target = {0.0, 0.0, 0.0}, .angle = 60.0};
    bx::Vec3 const start{-1.5f, -1.0f, -3.0f};
    bx::Vec3 const end{3.5f, 2.5f, 4.0f};
    LineBatch batch = BatchOf(std::vector<LineSegment>{{{start, Rgba(Qt::red)}, {end, Rgba(Qt::blue)}}});
    for (LineStyle const& style :
         {LineStyle{}, LineStyle{.width = 5.0f}, LineStyle{.width = 5.0f, .cap = LineCap::Round}}) {
        QImage const image = Draw(batch, style, camera);
        for (double part = 0.05; part < 1.0; part += 0.05) {
            auto const between = [part](float a, float b) { return a + part * (double(b) - double(a)); };
            QPointF const place = camera.ToPixels(
                {between(start.x, end.x), between(start.y, end.y), between(start.z, end.z)}, image.size());
            if (!QRectF(image.rect()).contains(place))
                continue;
            // Beside it, a thin line's pixel may be empty; of a wide one it is another part.
            QColor const color =
                image.pixelColor(place.toPoint() - QPoint(place.x() - std::floor(place.x()) >= 0.5,
                                                          place.y() - std::floor(place.y()) >= 0.5));
            if (color == QColor(Qt::black) && style.width <= 1.0f)
                continue;
            EXPECT_NEAR(color.blue(), 255.0 * part, 8.0) << part;
            EXPECT_NEAR(color.red(), 255.0 * (1.0 - part), 8.0) << part;
        }
    }
}

TEST_P(LineBatchTest, LinesBehindTheCameraAreCutAsThoseOfDrawLines) {
    SoftwareCamera const camera{.place = {0.0, 0.5, -2.0}, .target = {0.0, 0.0, 0.0}, .angle = 60.0};
    std::vector<zx3D::Line> lines;
    std::vector<LineSegment> segments;
    for (int i = 0; i < 9; ++i) {
        float const x = 0.4f * static_cast<float>(i - 4);
        zx3D::Line const line{{x, -0.3f, 6.0f}, {1.7f * x, -0.2f, -9.0f}, ToColor(Qt::white)};
        lines.push_back(line);
        segments.push_back({{line.start, 0xFFFFFFFF}, {line.end, 0xFFFFFFFF}});
    }
    LineBatch batch = BatchOf(segments);
    for (LineStyle const& style :
         {LineStyle{.width = 4.0f}, LineStyle{.width = 4.0f, .cap = LineCap::Round}, LineStyle{}}) {
        StartFrame();
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
        camera.SetUp(view);
        view.Submit(m_target.GetFrameBuffer());
        m_renderer.DrawLines(view, lines, style.width);
        QImage const expected = Present();
        EXPECT_GT(CountDifferences(expected, Canvas()), 300);
        // Edges are computed in other ways, and round caps are more at the far ends.
        int const allowed = style.cap == LineCap::Round ? 60 : 12;
        EXPECT_LE(CountDifferences(Draw(batch, style, camera), expected), allowed);
    }
}

TEST_P(LineBatchTest, WorldWidthsShrinkWithDistance) {
    SoftwareCamera const camera{.place = {0.0, 0.0, -4.0}, .target = {0.0, 0.0, 0.0}, .angle = 60.0};
    // Along the picture, and away from the viewer.
    std::vector<LineSegment> const segments = {{{{-1.0f, 1.0f, 0.0f}}, {{1.0f, 1.0f, 0.0f}}},
                                               {{{-1.0f, -0.8f, 0.0f}}, {{1.5f, -0.8f, 6.0f}}}};
    LineBatch batch = BatchOf(segments);
    constexpr double width = 0.5;
    for (LineCap const cap : {LineCap::Butt, LineCap::Round}) {
        QImage const image = Draw(batch, {.width = width, .widthUnit = SizeUnit::World, .cap = cap}, camera);
        for (LineSegment const& segment : segments) {
            for (double const part : {0.25, 0.5, 0.75}) {
                auto const between = [part](float a, float b) { return a + part * (double(b) - double(a)); };
                double const z = between(segment.start.position.z, segment.end.position.z);
                QPointF const place =
                    camera.ToPixels({between(segment.start.position.x, segment.end.position.x),
                                     between(segment.start.position.y, segment.end.position.y), z},
                                    image.size());
                int covered = 0;
                for (int y = 0; y < image.height(); ++y)
                    covered += qRed(image.pixel(static_cast<int>(place.x()), y)) > 0 &&
                               std::abs(y + 0.5 - place.y()) < 12.0;
                // Both run along the picture's x, seen from straight ahead or from a little above.
                QPointF const start = camera.ToPixels(
                    {segment.start.position.x, segment.start.position.y, segment.start.position.z},
                    image.size());
                QPointF const end = camera.ToPixels(
                    {segment.end.position.x, segment.end.position.y, segment.end.position.z}, image.size());
                QPointF const along = (end - start) / std::hypot(end.x() - start.x(), end.y() - start.y());
                double const pixels = width * 48.0 / std::tan(std::numbers::pi / 6.0) / (z + 4.0);
                EXPECT_NEAR(covered, pixels / std::abs(along.x()), 1.2);
            }
        }
    }
}

TEST_P(LineBatchTest, LinesOnASurfaceAreNotCutByIt) {
    // A square that leans away from the viewer, and its diagonals.
    SoftwareCamera const camera{.place = {0.0, 3.0, -4.0}, .target = {0.0, 0.0, 0.0}, .angle = 40.0};
    bx::Vec3 const corners[] = {
        {-1.3f, 0.0f, -1.3f}, {1.3f, 0.0f, -1.3f}, {1.3f, 0.2f, 1.3f}, {-1.3f, 0.2f, 1.3f}};
    std::vector<zx3D::Vertex::Pos3fColorRGBA> vertices;
    for (bx::Vec3 const& corner : corners)
        vertices.push_back({corner, ToColor(Qt::blue)});
    std::uint16_t const indices[] = {0, 1, 2, 0, 2, 3};
    LineBatch batch = BatchOf(std::vector<LineSegment>{
        {{corners[0]}, {corners[2]}}, {{corners[0]}, {corners[3]}}, {{corners[1]}, {corners[2]}}});
    auto const countWhite = [&](LineStyle const& style, bool hasSurface) {
        StartFrame();
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
        camera.SetUp(view);
        view.Submit(m_target.GetFrameBuffer());
        bgfx::touch(view);
        if (hasSurface)
            m_renderer.DrawTriangles(view, vertices, indices);
        batch.Draw(m_renderer, view, style);
        QImage const image = Present();
        int white = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                white += qRed(image.pixel(x, y)) > 200;
        }
        return white;
    };
    for (LineStyle style :
         {LineStyle{}, LineStyle{.width = 3.0f}, LineStyle{.width = 3.0f, .cap = LineCap::Round}}) {
        int const all = countWhite(style, false);
        EXPECT_LT(countWhite(style, true), all) << "of width " << style.width;
        style.depthOffset = 2.0f;
        EXPECT_EQ(countWhite(style, true), all) << "of width " << style.width;
        style.depthOffset = -8.0f;
        EXPECT_LT(countWhite(style, true), all / 2) << "of width " << style.width;
    }
}

TEST_P(LineBatchTest, MultisampledTargetsAreSmooth) {
    OffscreenTarget target(QSize(128, 96), {.sampleCount = 4});
    std::vector<QPointF> const places = {{20.3, 30.8}, {95.6, 61.2}};
    LineBatch segments = BatchOf(SegmentsAt(places));
    LineBatch polyline = BatchOf(VerticesAt(places));
    for (LineBatch* const batch : {&segments, &polyline}) {
        m_renderer.StartFrame(target.GetFrameBuffer());
        zx3DQt::BGFXViewContext const view = PixelView(target.GetViewport());
        view.Submit(target.GetFrameBuffer());
        bgfx::touch(view);
        batch->Draw(m_renderer, view, {.width = 9.0f});
        QImage const image = ReadBack(target.GetFrameBuffer());
        CoverageError const error = CompareCoverage(image, {AroundLine(places[0], places[1], 9.0)});
        EXPECT_GT(error.edges, 40);
        EXPECT_LE(error.meanOnEdges, kLargestError);
        EXPECT_EQ(error.wrongElsewhere, 0);
    }
}

TEST_P(LineBatchTest, WhatIsAppendedAndUpdatedIsWhereItBelongs) {
    // A spiral in polylines of all lengths, drawn between them so that they are on the GPU in several
    // textures.
    std::vector<std::vector<LineVertex>> lines;
    std::size_t total = 0;
    for (int const size : {2, 1, 3, 50, 180, 700, 5, 1500, 3100}) {
        std::vector<LineVertex> line;
        for (int i = 0; i < size; ++i, ++total) {
            double const turn = 0.05 * static_cast<double>(total);
            double const radius = 4.0 + 0.0075 * static_cast<double>(total);
            line.push_back(VertexAt({64.0 + radius * std::cos(turn), 48.0 + radius * std::sin(turn)},
                                    QColor(255, static_cast<int>(total % 251), 80)));
        }
        lines.push_back(line);
    }
    LineStyle const style{.width = 3.0f, .cap = LineCap::Round};
    auto const append = [&](LineBatch& batch, std::vector<LineVertex> const& line) {
        Polyline const polylines[] = {{line, line.size() % 2 ? PolylineEnds::Closed : PolylineEnds::Open}};
        batch.Append(polylines);
    };
    LineBatch streamed;
    LineBatch whole;
    for (std::vector<LineVertex> const& line : lines) {
        append(streamed, line);
        Draw(streamed, style);
    }
    lines[3][49] = VertexAt({100.0, 90.0}, Qt::green);
    lines[6] = VerticesAt({{5.0, 5.0}, {30.0, 8.0}, {33.0, 20.0}, {18.0, 30.0}, {4.0, 22.0}}, Qt::cyan);
    lines[7][600] = VertexAt({120.0, 4.0}, Qt::green);
    streamed.Update(3, 49, std::span(&lines[3][49], 1));
    for (std::size_t i = 0; i < 5; ++i) // a closed one, whose ends are elsewhere, too
        streamed.Update(6, i, std::span(&lines[6][i], 1));
    streamed.Update(7, 600, std::span(&lines[7][600], 1));
    for (std::vector<LineVertex> const& line : lines)
        append(whole, line);
    EXPECT_TRUE(Matches(Draw(streamed, style), Draw(whole, style), kExact));
    EXPECT_EQ(streamed.GetCount(), lines.size());
}

TEST_P(LineBatchTest, PositionsThatAreNotFiniteInterruptTheLine) {
    ExpectWarning("line-batch.not-finite");
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::vector<LineVertex> vertices =
        VerticesAt({{10.5, 20.5}, {30.5, 20.5}, {50.5, 20.5}, {70.5, 20.5}, {90.5, 20.5}});
    vertices[2].position.y = infinity;
    LineBatch polyline = BatchOf(vertices);
    QImage expected = Canvas();
    Fill(expected, QRect(11, 19, 20, 3), Qt::white);
    Fill(expected, QRect(71, 19, 20, 3), Qt::white);
    QImage const image = Draw(polyline, {.width = 3.0f});
    EXPECT_LE(CountDifferences(image, expected), 12) << "pixels at the ends";
    EXPECT_EQ(image.pixelColor(50, 20), QColor(Qt::black));
    EXPECT_EQ(CountDifferences(Draw(polyline, {}), Canvas()), 40);

    std::vector<LineSegment> segments = SegmentsAt({{10.5, 20.5}, {30.5, 20.5}, {50.5, 20.5}});
    segments[1].end.position.x = std::numeric_limits<float>::quiet_NaN();
    LineBatch batch = BatchOf(segments);
    EXPECT_EQ(CountDifferences(Draw(batch, {}), Canvas()), 20);
    EXPECT_LE(CountDifferences(Draw(batch, {.width = 3.0f}), Canvas()), 63);
}

TEST_P(LineBatchTest, StipplesAreCountedFromEachSegmentsStart) {
    // Level, at pixels' centres: each pixel is a whole distance from the start.
    LineBatch batch = BatchOf(SegmentsAt({{10.5, 20.5}, {110.5, 20.5}}));
    zx3D::LineStipplePattern const stipple{0x1C5F, 2};
    for (float const width : {1.0f, 5.0f}) {
        for (LineBatch* const lines : {&batch}) {
            QImage const image = Draw(*lines, {.width = width, .stipple = stipple});
            for (int x = 12; x < 109; ++x) {
                bool const isDrawn = (stipple.pattern >> ((x - 10) / 2 % 16) & 1) != 0;
                EXPECT_EQ(qRed(image.pixel(x, 20)), isDrawn ? 255 : 0) << x;
            }
        }
    }
}

TEST_P(LineBatchTest, StipplesRunOnAlongPolylines) {
    // A zigzag of short pieces, another one behind it, and so many vertices that they are in several blocks.
    zx3D::LineStipplePattern const stipple{0x0F3F, 2};
    std::vector<LineVertex> vertices;
    std::vector<double> distances;
    double distance = 0.0;
    constexpr int count = 900;
    for (int i = 0; i < count; ++i) {
        double const turn = 0.09 * i;
        QPointF const place(64.0 + (5.0 + 0.045 * i) * std::cos(turn),
                            48.0 + (5.0 + 0.045 * i) * std::sin(turn));
        if (i > 0)
            distance +=
                std::hypot(place.x() - vertices.back().position.x, place.y() - vertices.back().position.y);
        vertices.push_back(VertexAt(place));
        distances.push_back(distance);
    }
    LineBatch batch;
    std::vector<LineVertex> const first = VerticesAt({{2.0, 2.0}, {9.3, 2.0}, {17.6, 2.0}});
    Polyline const polylines[] = {{first}, {vertices}};
    batch.Set(polylines);
    auto const isDrawn = [&](double at) {
        return (stipple.pattern >> static_cast<int>(at / stipple.factor) % 16 & 1) != 0;
    };
    for (float const width : {2.0f, 3.0f}) {
        QImage const image = Draw(batch, {.width = width, .stipple = stipple});
        int certain = 0;
        for (int i = 1; i < count; i += 3) {
            QPointF const place(vertices[i].position.x, vertices[i].position.y);
            if (!QRectF(image.rect()).adjusted(1, 1, -1, -1).contains(place))
                continue;
            if (isDrawn(distances[i] - 1.2) != isDrawn(distances[i] + 1.2) ||
                isDrawn(distances[i]) != isDrawn(distances[i] + 1.2))
                continue; // near the end of a dash
            ++certain;
            int const white = qRed(image.pixel(static_cast<int>(place.x()), static_cast<int>(place.y())));
            EXPECT_EQ(white, isDrawn(distances[i]) ? 255 : 0) << i;
        }
        EXPECT_GT(certain, 100);
    }
}

TEST_P(LineBatchTest, EachCallHasItsOwnStipple) {
    // Twice in one view, at two scales: what is measured for the one is not what the other is drawn with.
    LineBatch batch = BatchOf(VerticesAt({{4.0, 10.5}, {15.0, 10.5}, {26.0, 10.5}, {40.0, 10.5}}));
    LineStyle const style{.width = 3.0f, .stipple = {0x00FF, 1}};
    QMatrix4x4 wide;
    wide.translate(0.0f, 40.0f);
    wide.scale(2.0f, 1.0f);
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    bgfx::touch(view);
    batch.Draw(m_renderer, view, style);
    batch.Draw(m_renderer, view, style, wide);
    QImage const image = Present();
    for (int x = 5; x < 39; ++x)
        EXPECT_EQ(qRed(image.pixel(x, 10)), (x - 4) % 16 < 8 ? 255 : 0) << x;
    for (int x = 9; x < 79; ++x)
        EXPECT_EQ(qRed(image.pixel(x, 50)), (x - 8) % 16 < 8 ? 255 : 0) << x;
}

ZX3D_INSTANTIATE_BACKENDS(LineBatchTest);
