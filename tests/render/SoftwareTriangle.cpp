// Barycentric rasterisation in double precision, with perspective.
#include "SoftwareTriangle.h"

#include "ImageComparison.h"

#include <algorithm>
#include <cmath>

namespace zarvex::testing {

namespace {

double Cross(QPointF a, QPointF b) {
    return a.x() * b.y() - a.y() * b.x();
}

QPointF ToPixels(QVector4D const& clip, QSize size) {
    return {(static_cast<double>(clip.x()) / clip.w() + 1.0) * 0.5 * size.width(),
            (1.0 - static_cast<double>(clip.y()) / clip.w()) * 0.5 * size.height()};
}

int ToByte(double channel) {
    return static_cast<int>(std::lround(std::clamp(channel, 0.0, 1.0) * 255.0));
}

} // namespace

SoftwareTriangle::SoftwareTriangle(std::array<ClipVertex, 3> const& vertices, QSize targetSize)
    : m_vertices(vertices) {
    for (int i = 0; i < 3; ++i)
        m_corners[i] = ToPixels(vertices[i].position, targetSize);
    m_area = Cross(m_corners[1] - m_corners[0], m_corners[2] - m_corners[0]);
}

QImage SoftwareTriangle::Draw(QColor const& background, QImage const& actual) const {
    QImage image(actual.size(), QImage::Format_RGBA8888);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            QPointF const center(x + 0.5, y + 0.5);
            Coverage const coverage = CoverageOf(center);
            QColor const color = ColorAt(center);
            QColor const there = actual.pixelColor(x, y);
            bool const covered = coverage == Coverage::Edge
                                     ? ColorDistance(there, color) < ColorDistance(there, background)
                                     : coverage == Coverage::Inside;
            image.setPixelColor(x, y, covered ? color : background);
        }
    }
    return image;
}

Coverage SoftwareTriangle::CoverageOf(QPointF pixelCenter) const {
    double nearest = kEdgeWidth * 2.0;
    for (int edge = 0; edge < 3; ++edge) {
        QPointF const along = m_corners[(edge + 2) % 3] - m_corners[(edge + 1) % 3];
        double const inwards = SignedArea(edge, pixelCenter) * std::copysign(1.0, m_area);
        nearest = std::min(nearest, inwards / std::hypot(along.x(), along.y()));
    }
    return CoverageAtDistance(nearest);
}

QColor SoftwareTriangle::ColorAt(QPointF pixelCenter) const {
    // Quotients by w are linear on the screen: the colours' and that of 1.
    double sums[4] = {};
    double sumOfOnes = 0.0;
    for (int i = 0; i < 3; ++i) {
        double const weight = SignedArea(i, pixelCenter) / m_area / m_vertices[i].position.w();
        sumOfOnes += weight;
        for (int channel = 0; channel < 4; ++channel)
            sums[channel] += weight * m_vertices[i].color[channel];
    }
    return QColor(ToByte(sums[0] / sumOfOnes), ToByte(sums[1] / sumOfOnes), ToByte(sums[2] / sumOfOnes),
                  ToByte(sums[3] / sumOfOnes));
}

double SoftwareTriangle::SignedArea(int edge, QPointF point) const {
    QPointF const from = m_corners[(edge + 1) % 3];
    QPointF const to = m_corners[(edge + 2) % 3];
    return Cross(to - from, point - from);
}

} // namespace zarvex::testing
