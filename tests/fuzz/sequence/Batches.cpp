// Data and styles of any kind.
#include "Batches.h"

#include "HostileData.h"

#include <zx3DQt/BGFXRenderer.h>

#include <bit>
#include <limits>
#include <utility>

namespace zarvex::fuzz {

namespace {

using namespace zx3DQt;

/// Sizes of what is drawn; the larger, the slower where pixels are drawn in software.
float Size(Random& random) {
    return random.OneIn(16) ? Number(random) * 1000.0f : static_cast<float>(random.Between(-1, 12)) / 2.0f;
}

std::vector<ColoredPoint> ColoredPoints(Random& random) {
    std::vector<ColoredPoint> points(Count(random));
    for (ColoredPoint& point : points)
        point = {Position(random), static_cast<std::uint32_t>(random.NewSeed())};
    return points;
}

std::vector<ScalarPoint> ScalarPoints(Random& random) {
    std::vector<ScalarPoint> points(Count(random));
    for (ScalarPoint& point : points)
        point = {Position(random), std::bit_cast<float>(static_cast<std::uint32_t>(random.NewSeed()))};
    return points;
}

/// Mostly one of `count` things, or just beyond; now and then far beyond.
std::uint64_t Index(Random& random, std::uint64_t count) {
    return random.OneIn(8) ? std::numeric_limits<std::uint64_t>::max() - random.Below(50)
                           : random.Below(count + 3);
}

template<typename Batch, typename Element>
void HandOver(Random& random, Batch& batch, std::vector<Element> const& elements) {
    switch (random.Below(4)) {
    case 0:
        return batch.Set(Span(random, elements));
    case 1:
        return batch.Update(Index(random, batch.GetCount()), Span(random, elements));
    default:
        return batch.Append(Span(random, elements));
    }
}

/// Now and then several at one place.
std::vector<LineVertex> LineVertices(Random& random) {
    std::vector<LineVertex> vertices(Count(random));
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        bool const isRepeated = i > 0 && random.OneIn(8);
        vertices[i] = {isRepeated ? vertices[i - 1].position : Position(random),
                       static_cast<std::uint32_t>(random.NewSeed())};
    }
    return vertices;
}

std::vector<LineSegment> Segments(Random& random) {
    std::vector<LineVertex> const vertices = LineVertices(random);
    std::vector<LineSegment> segments;
    for (std::size_t i = 1; i < vertices.size(); i += 2)
        segments.push_back({vertices[i - 1], vertices[i]});
    return segments;
}

void HandOverPolylines(Random& random, LineBatch& batch) {
    std::vector<std::vector<LineVertex>> vertices(random.Below(6));
    std::vector<Polyline> polylines;
    for (std::vector<LineVertex>& ofOne : vertices) {
        ofOne = LineVertices(random);
        polylines.push_back(
            {Span(random, ofOne), random.OneIn(2) ? PolylineEnds::Closed : PolylineEnds::Open});
    }
    switch (random.Below(4)) {
    case 0:
        return batch.Set(Span(random, polylines));
    case 1: {
        std::vector<LineVertex> const replaced = LineVertices(random);
        return batch.Update(Index(random, batch.GetCount()), Index(random, 10), Span(random, replaced));
    }
    default:
        return batch.Append(Span(random, polylines));
    }
}

ColorMap Map(Random& random) {
    switch (random.Below(3)) {
    case 0:
        return ColorMap::Viridis();
    case 1:
        return ColorMap::CoolWarm();
    default:
        return {};
    }
}

PointStyle StyleOfPoints(Random& random) {
    PointStyle style;
    style.shape = static_cast<PointShape>(random.Below(3));
    style.size = Size(random);
    style.sizeUnit = random.OneIn(2) ? SizeUnit::World : SizeUnit::Pixels;
    style.colorMap = Map(random);
    style.leastValue = Number(random);
    style.greatestValue = Number(random);
    if (random.OneIn(4))
        style.state = BGFXRenderer::STATE_TRANSPARENT;
    return style;
}

LineStyle StyleOfLines(Random& random) {
    LineStyle style;
    style.width = Size(random);
    style.widthUnit = random.OneIn(2) ? SizeUnit::World : SizeUnit::Pixels;
    style.join = static_cast<LineJoin>(random.Below(3));
    style.miterLimit = 4.0f * Number(random);
    style.cap = static_cast<LineCap>(random.Below(3));
    style.stipple = Stipple(random).value_or(zx3D::LineStipplePattern());
    style.smoothEdges = random.OneIn(2);
    style.depthOffset = random.OneIn(2) ? Number(random) : 0.0f;
    if (random.OneIn(4))
        style.state = BGFXRenderer::STATE_TRANSPARENT;
    return style;
}

} // namespace

void Batches::Change(Random& random) {
    if (random.OneIn(2))
        ChangePoints(random);
    else
        ChangeLines(random);
}

void Batches::ChangeLines(Random& random) {
    LineBatch& batch = m_lines[random.Below(m_lines.size())];
    switch (random.Below(8)) {
    case 0:
        return batch.Clear();
    case 1:
        return batch.SetOrigin(Place(random));
    case 2:
        return std::swap(m_lines[0], m_lines[1]);
    case 3:
    case 4:
        return HandOver(random, batch, Segments(random));
    default:
        return HandOverPolylines(random, batch);
    }
}

void Batches::ChangePoints(Random& random) {
    PointBatch& batch = m_points[random.Below(m_points.size())];
    switch (random.Below(8)) {
    case 0:
        return batch.Clear();
    case 1:
        return batch.SetOrigin(Place(random));
    case 2:
        return std::swap(m_points[0], m_points[1]);
    case 3:
        return HandOver(random, batch, ScalarPoints(random));
    default:
        return HandOver(random, batch, ColoredPoints(random));
    }
}

void Batches::Draw(Random& random, BGFXRenderer const& renderer, BGFXViewContext const& view) {
    QMatrix4x4 const transform = random.OneIn(2) ? Matrix(random) : QMatrix4x4();
    if (random.OneIn(2)) {
        LineBatch& lines = m_lines[random.Below(m_lines.size())];
        lines.Draw(renderer, view, StyleOfLines(random), transform);
        static_cast<void>(lines.GetBoundingBox());
        static_cast<void>(lines.GetUploadedCount());
        return;
    }
    PointBatch& points = m_points[random.Below(m_points.size())];
    points.Draw(renderer, view, StyleOfPoints(random), transform);
    static_cast<void>(points.GetBoundingBox());
}

} // namespace zarvex::fuzz
