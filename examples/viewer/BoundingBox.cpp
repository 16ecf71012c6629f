// Twelve edges and two labels.
#include "BoundingBox.h"

#include "TickSteps.h"

#include <array>
#include <cmath>
#include <vector>

namespace viewer {

using namespace zarvex;

namespace {

constexpr zx3D::Color kEdgeColor{0.98f, 0.80f, 0.42f, 0.75f};
constexpr zx3D::LineStipplePattern kStipple{0x3333, 2};
QColor const kLabelColor(250, 214, 140);
constexpr float kLabelSize = 11.5f;

QString CornerText(QVector3D const& corner) {
    return QString("(%1, %2, %3)")
        .arg(NumberText(corner.x()), NumberText(corner.y()), NumberText(corner.z()));
}

/// Moves the end of a text that is written towards the left or the right of it, so that all of it is seen.
double KeepInView(double end, QString const& text, bool isWrittenToTheLeft, Canvas const& canvas) {
    constexpr double widthOfACharacter = 0.62; // of the text's size, at most
    double const width =
        widthOfACharacter * double{kLabelSize} * static_cast<double>(text.size()) * canvas.pixelRatio;
    double const low = isWrittenToTheLeft ? width : 0.0;
    return std::clamp(end, low, std::max(low, low + canvas.size.width() - width));
}

/// A mark at the corner, and the text away from the box; above the corner, since the ground's numbers are
/// below.
void DrawCorner(Canvas const& canvas, Box const& box, QVector3D const& corner) {
    auto const place = canvas.Project(corner);
    auto const center = canvas.Project(box.Center());
    if (!place || !center)
        return;
    zx3D::Vertex::Pos3fColorRGBA const mark[] = {
        {{corner.x(), corner.y(), corner.z()}, {0.98f, 0.80f, 0.42f, 1.0f}}};
    canvas.renderer.DrawPoints(canvas.onSurfaces, mark,
                               static_cast<std::uint16_t>(std::lround(5.0f * canvas.pixelRatio)),
                               std::nullopt, Canvas::kSolid);
    bool const isLeft = place->x() < center->x();
    QString const text = CornerText(corner);
    QPointF label = *place + QPointF(isLeft ? -8.0 : 8.0, -4.0) * canvas.pixelRatio;
    label.setX(KeepInView(label.x(), text, isLeft, canvas));
    canvas.DrawLabel(label, text, kLabelColor, kLabelSize,
                     (isLeft ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignBottom);
}

/// The corner whose opposite one appears farthest from it: labels there are out of the mesh's way.
std::size_t FindWidestDiagonal(Canvas const& canvas, std::array<QVector3D, 8> const& corners) {
    std::size_t widest = 0;
    double largest = -1.0;
    for (std::size_t i = 0; i < 4; ++i) {
        auto const from = canvas.Project(corners[i]);
        auto const to = canvas.Project(corners[i ^ 7]);
        // Across, since that is how text runs.
        double const width = from && to ? std::abs(to->x() - from->x()) : -1.0;
        if (width > 1.001 * largest) {
            largest = width;
            widest = i;
        }
    }
    return widest;
}

} // namespace

void DrawBoundingBox(Canvas const& canvas, Box const& box) {
    std::array<QVector3D, 8> const corners = box.Corners();
    std::vector<zx3D::Line> edges;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        for (std::size_t const bit : {1, 2, 4}) {
            if (i & bit)
                continue;
            QVector3D const& from = corners[i];
            QVector3D const& to = corners[i | bit];
            edges.push_back({{from.x(), from.y(), from.z()}, {to.x(), to.y(), to.z()}, kEdgeColor});
        }
    }
    canvas.DrawLines(canvas.onSurfaces, edges, 1.0f, kStipple);
    std::size_t const first = FindWidestDiagonal(canvas, corners);
    DrawCorner(canvas, box, corners[first]);
    DrawCorner(canvas, box, corners[first ^ 7]);
}

} // namespace viewer
