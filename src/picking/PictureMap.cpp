// Clipping, and the nearest places.
#include "PictureMap.h"

#include <bgfx/bgfx.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zarvex::zx3DQt {

namespace {

using Row = std::array<double, 4>;
using Matrix = std::array<Row, 4>;
using Polygon = std::vector<ClipPlace>;

/// Nearer than this, in clip w, nothing has a place in the picture.
constexpr double kLeastW = 1e-12;

Matrix ToDouble(QMatrix4x4 const& matrix) {
    Matrix result;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column)
            result[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] = matrix(row, column);
    }
    return result;
}

Matrix operator*(Matrix const& a, Matrix const& b) {
    Matrix result{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t i = 0; i < 4; ++i)
                result[row][column] += a[row][i] * b[i][column];
        }
    }
    return result;
}

Matrix Translation(WorldVector const& way) {
    return {Row{1, 0, 0, way.x}, Row{0, 1, 0, way.y}, Row{0, 0, 1, way.z}, Row{0, 0, 0, 1}};
}

bool IsFinite(ClipPlace const& clip) {
    return std::isfinite(clip.x) && std::isfinite(clip.y) && std::isfinite(clip.z) && std::isfinite(clip.w);
}

double Mixed(double a, double b, double part) {
    return a + part * (b - a);
}

ClipPlace Mixed(ClipPlace const& a, ClipPlace const& b, double part) {
    return {Mixed(a.x, b.x, part), Mixed(a.y, b.y, part), Mixed(a.z, b.z, part), Mixed(a.w, b.w, part)};
}

/// Positive on the side that is drawn: behind the near plane, before the far plane, in front of the viewer.
std::array<double, 3> DepthSides(ClipPlace const& clip, double nearestDepth) {
    return {clip.z - nearestDepth * clip.w, clip.w - clip.z, clip.w - kLeastW};
}

/// The parts of the way from a to b between which the linear `side` functions are positive.
struct Interval {
    double first = 0.0;
    double last = 1.0;

    void Cut(double sideA, double sideB) {
        if (sideA < 0.0 && sideB < 0.0)
            last = -1.0;
        else if (sideA < 0.0)
            first = std::max(first, sideA / (sideA - sideB));
        else if (sideB < 0.0)
            last = std::min(last, sideA / (sideA - sideB));
    }
    bool IsEmpty() const { return first > last; }
};

Interval CutInDepth(ClipPlace const& a, ClipPlace const& b, double nearestDepth) {
    Interval interval;
    std::array<double, 3> const sidesA = DepthSides(a, nearestDepth);
    std::array<double, 3> const sidesB = DepthSides(b, nearestDepth);
    for (std::size_t i = 0; i < sidesA.size(); ++i)
        interval.Cut(sidesA[i], sidesB[i]);
    return interval;
}

/// What is left of a convex polygon where `side` is not negative.
template<typename Side>
Polygon Cut(Polygon const& polygon, Side side) {
    Polygon result;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        ClipPlace const& a = polygon[i];
        ClipPlace const& b = polygon[(i + 1) % polygon.size()];
        double const sideA = side(a);
        double const sideB = side(b);
        if (sideA >= 0.0)
            result.push_back(a);
        if ((sideA < 0.0) != (sideB < 0.0))
            result.push_back(Mixed(a, b, sideA / (sideA - sideB)));
    }
    return result;
}

Polygon CutInDepth(std::array<ClipPlace, 3> const& corners, double nearestDepth) {
    Polygon polygon(corners.begin(), corners.end());
    for (std::size_t plane = 0; plane < 3; ++plane)
        polygon = Cut(polygon, [&](ClipPlace const& clip) { return DepthSides(clip, nearestDepth)[plane]; });
    return polygon;
}

/// How far along a to b, on the screen, a place is nearest.
double NearestPart(QPointF const& place, QPointF const& a, QPointF const& b) {
    QPointF const along = b - a;
    double const squaredLength = QPointF::dotProduct(along, along);
    return squaredLength > 0.0 ? std::clamp(QPointF::dotProduct(place - a, along) / squaredLength, 0.0, 1.0)
                               : 0.0;
}

double LengthOf(QPointF const& vector) {
    return std::hypot(vector.x(), vector.y());
}

/// Whether a place is in a convex polygon, however it turns.
bool IsInside(QPointF const& place, std::vector<QPointF> const& polygon) {
    bool isLeft = false;
    bool isRight = false;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        QPointF const edge = polygon[(i + 1) % polygon.size()] - polygon[i];
        QPointF const to = place - polygon[i];
        double const side = edge.x() * to.y() - edge.y() * to.x();
        isLeft = isLeft || side > 0.0;
        isRight = isRight || side < 0.0;
    }
    return !(isLeft && isRight);
}

} // namespace

PictureMap::PictureMap(BGFXViewContext const& view, WorldPosition const& origin, QMatrix4x4 const& transform)
    : m_viewport(view.GetViewport()),
      m_nearestDepth(bgfx::getCaps()->homogeneousDepth ? -1.0 : 0.0),
      m_pixelsPerUnit(0.5 * std::abs(double(view.GetProjectionMatrix()(1, 1))) * m_viewport.height()),
      m_toClip(ToDouble(view.GetProjectionMatrix()) * ToDouble(view.GetViewMatrix()) *
               Translation(origin - view.GetOrigin()) * ToDouble(transform)),
      m_origin(origin),
      m_transform(ToDouble(transform)) {}

ClipPlace PictureMap::ToClip(bx::Vec3 const& place) const {
    return {Product(m_toClip[0], place), Product(m_toClip[1], place), Product(m_toClip[2], place),
            Product(m_toClip[3], place)};
}

WorldPosition PictureMap::ToWorld(bx::Vec3 const& place) const {
    double const scale = 1.0 / Product(m_transform[3], place);
    return m_origin + scale * WorldVector{Product(m_transform[0], place), Product(m_transform[1], place),
                                          Product(m_transform[2], place)};
}

QPointF PictureMap::ToPixel(ClipPlace const& clip) const {
    return {m_viewport.x() + 0.5 * m_viewport.width() * (1.0 + clip.x / clip.w),
            m_viewport.y() + 0.5 * m_viewport.height() * (1.0 - clip.y / clip.w)};
}

double PictureMap::DepthOf(ClipPlace const& clip) const {
    return (clip.z / clip.w - m_nearestDepth) / (1.0 - m_nearestDepth);
}

bool PictureMap::IsInDepth(ClipPlace const& clip) const {
    std::array<double, 3> const sides = DepthSides(clip, m_nearestDepth);
    return sides[0] >= 0.0 && sides[1] >= 0.0 && sides[2] >= 0.0 && IsFinite(clip);
}

std::optional<NearPlace> PictureMap::FindNear(QPointF const& pixel, double limit,
                                              bx::Vec3 const& point) const {
    ClipPlace const clip = ToClip(point);
    if (!IsInDepth(clip))
        return std::nullopt;
    double const distance = LengthOf(ToPixel(clip) - pixel);
    if (!(distance <= limit))
        return std::nullopt;
    return NearPlace{distance, clip, ToWorld(point)};
}

std::optional<NearPlace> PictureMap::FindNear(QPointF const& pixel, double limit, bx::Vec3 const& start,
                                              bx::Vec3 const& end) const {
    ClipPlace const clipStart = ToClip(start);
    ClipPlace const clipEnd = ToClip(end);
    Interval const seen = CutInDepth(clipStart, clipEnd, m_nearestDepth);
    if (seen.IsEmpty() || !IsFinite(clipStart) || !IsFinite(clipEnd))
        return std::nullopt;
    ClipPlace const a = Mixed(clipStart, clipEnd, seen.first);
    ClipPlace const b = Mixed(clipStart, clipEnd, seen.last);
    QPointF const pixelA = ToPixel(a);
    QPointF const pixelB = ToPixel(b);
    double const onScreen = NearestPart(pixel, pixelA, pixelB);
    double const distance = LengthOf(pixelA + onScreen * (pixelB - pixelA) - pixel);
    if (!(distance <= limit))
        return std::nullopt;
    double const inSpace = onScreen * a.w / Mixed(b.w, a.w, onScreen); // evenly in the world
    WorldPosition const from = ToWorld(start);
    double const part = Mixed(seen.first, seen.last, inSpace);
    return NearPlace{distance, Mixed(a, b, inSpace), from + part * (ToWorld(end) - from)};
}

std::optional<NearPlace> PictureMap::FindNear(QPointF const& pixel, double limit,
                                              std::array<bx::Vec3, 3> const& corners) const {
    std::array<ClipPlace, 3> const clip{ToClip(corners[0]), ToClip(corners[1]), ToClip(corners[2])};
    Polygon const polygon = CutInDepth(clip, m_nearestDepth);
    if (polygon.size() < 3 || !std::all_of(polygon.begin(), polygon.end(), IsFinite))
        return std::nullopt;
    std::vector<QPointF> pixels;
    for (ClipPlace const& corner : polygon)
        pixels.push_back(ToPixel(corner));
    QPointF nearest = pixel;
    double distance = 0.0;
    if (!IsInside(pixel, pixels)) {
        distance = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            QPointF const& a = pixels[i];
            QPointF const& b = pixels[(i + 1) % pixels.size()];
            QPointF const place = a + NearestPart(pixel, a, b) * (b - a);
            if (LengthOf(place - pixel) < distance) {
                distance = LengthOf(place - pixel);
                nearest = place;
            }
        }
    }
    if (!(distance <= limit))
        return std::nullopt;
    // The weights of the corners: their sum has the place's x / w and y / w.
    double const x = 2.0 * (nearest.x() - m_viewport.x()) / m_viewport.width() - 1.0;
    double const y = 1.0 - 2.0 * (nearest.y() - m_viewport.y()) / m_viewport.height();
    auto const weights =
        Cross({clip[0].x - x * clip[0].w, clip[1].x - x * clip[1].w, clip[2].x - x * clip[2].w},
              {clip[0].y - y * clip[0].w, clip[1].y - y * clip[1].w, clip[2].y - y * clip[2].w});
    double const sum = weights.x + weights.y + weights.z;
    if (sum == 0.0 || !std::isfinite(1.0 / sum)) // seen edge on
        return std::nullopt;
    WorldVector const share = (1.0 / sum) * weights;
    auto const mixed = [&](double ClipPlace::* part) {
        return share.x * clip[0].*part + share.y * clip[1].*part + share.z * clip[2].*part;
    };
    WorldPosition const corner = ToWorld(corners[0]);
    return NearPlace{distance,
                     {mixed(&ClipPlace::x), mixed(&ClipPlace::y), mixed(&ClipPlace::z), mixed(&ClipPlace::w)},
                     corner + share.y * (ToWorld(corners[1]) - corner) +
                         share.z * (ToWorld(corners[2]) - corner)};
}

bool PictureMap::Touches(QRectF const& rect, bx::Vec3 const& point, double margin) const {
    ClipPlace const clip = ToClip(point);
    return IsInDepth(clip) && rect.adjusted(-margin, -margin, margin, margin).contains(ToPixel(clip));
}

bool PictureMap::Touches(QRectF const& rect, bx::Vec3 const& start, bx::Vec3 const& end,
                         double margin) const {
    ClipPlace const clipStart = ToClip(start);
    ClipPlace const clipEnd = ToClip(end);
    Interval const seen = CutInDepth(clipStart, clipEnd, m_nearestDepth);
    if (seen.IsEmpty() || !IsFinite(clipStart) || !IsFinite(clipEnd))
        return false;
    QPointF const a = ToPixel(Mixed(clipStart, clipEnd, seen.first));
    QPointF const b = ToPixel(Mixed(clipStart, clipEnd, seen.last));
    QRectF const wide = rect.adjusted(-margin, -margin, margin, margin);
    Interval inRect;
    inRect.Cut(a.x() - wide.left(), b.x() - wide.left());
    inRect.Cut(wide.right() - a.x(), wide.right() - b.x());
    inRect.Cut(a.y() - wide.top(), b.y() - wide.top());
    inRect.Cut(wide.bottom() - a.y(), wide.bottom() - b.y());
    return !inRect.IsEmpty();
}

bool PictureMap::Touches(QRectF const& rect, std::array<bx::Vec3, 3> const& corners) const {
    Polygon polygon =
        CutInDepth({ToClip(corners[0]), ToClip(corners[1]), ToClip(corners[2])}, m_nearestDepth);
    if (!std::all_of(polygon.begin(), polygon.end(), IsFinite))
        return false;
    // Scaled by w, they change evenly along edges.
    polygon = Cut(polygon, [&](ClipPlace const& clip) { return clip.w * (ToPixel(clip).x() - rect.left()); });
    polygon =
        Cut(polygon, [&](ClipPlace const& clip) { return clip.w * (rect.right() - ToPixel(clip).x()); });
    polygon = Cut(polygon, [&](ClipPlace const& clip) { return clip.w * (ToPixel(clip).y() - rect.top()); });
    polygon =
        Cut(polygon, [&](ClipPlace const& clip) { return clip.w * (rect.bottom() - ToPixel(clip).y()); });
    return !polygon.empty();
}

} // namespace zarvex::zx3DQt
