// Which plane, which part of it, in which steps.
#include "Ground.h"

#include "TickSteps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace viewer {

using namespace zarvex;

namespace {

constexpr float kPixelsPerStep = 40.0f;
constexpr float kLabelSize = 11.0f;
constexpr float kLabelGap = 14.0f; // pixels between the grid's edge and the middle of its numbers
/// Seen from lower, a floor would be a line; a wall behind the mesh takes its place.
constexpr float kLowestSight = 0.06f;

constexpr zx3D::Color kMinor{0.80f, 0.87f, 1.0f, 0.11f};
constexpr zx3D::Color kMajor{0.80f, 0.87f, 1.0f, 0.26f};
constexpr std::array<zx3D::Color, 3> kAxisColors{zx3D::Color{0.93f, 0.33f, 0.36f, 0.85f},
                                                 zx3D::Color{0.46f, 0.80f, 0.36f, 0.85f},
                                                 zx3D::Color{0.33f, 0.58f, 0.98f, 0.85f}};
QColor const kLabelColor(176, 186, 202);

/// A range along an axis.
struct Span {
    double low = 0.0;
    double high = 0.0;
};

/// A rectangle of ticks in a plane across an axis.
struct Grid {
    int across = 2;       ///< the axis: 0, 1 or 2
    float height = 0.0f;  ///< of the plane along it
    int axes[2] = {0, 1}; ///< along the rectangle's sides
    Span spans[2];
    double step = 1.0;
};

QVector3D PlaceOn(Grid const& grid, double first, double second) {
    QVector3D place;
    place[grid.across] = grid.height;
    place[grid.axes[0]] = static_cast<float>(first);
    place[grid.axes[1]] = static_cast<float>(second);
    return place;
}

/// From below the floor is a ceiling, and looked through: it stays at the mesh's lower side.
void ChoosePlane(Grid& grid, OrbitCamera const& camera, Box const& box) {
    QVector3D const sight = TowardsViewer(camera);
    grid.across = camera.GetUpAxis() == UpAxis::Z ? 2 : 1;
    grid.height = box.min[grid.across];
    if (std::abs(sight[grid.across]) < kLowestSight) {
        int const other = grid.across == 2 ? 1 : 2;
        grid.across = std::abs(sight[0]) > std::abs(sight[other]) ? 0 : other;
        grid.height = sight[grid.across] > 0.0f ? box.min[grid.across] : box.max[grid.across];
    }
    grid.axes[0] = grid.across == 0 ? 1 : 0;
    grid.axes[1] = grid.across == 2 ? 1 : 2;
}

/// What is beneath the mesh and near enough to the camera's target, in whole steps.
Span ChooseSpan(double low, double high, double target, double reach, double step) {
    double const margin = 0.02 * (high - low);
    low = std::max(low - margin, target - reach);
    high = std::min(high + margin, target + reach);
    if (high < low) // the camera looks elsewhere
        low = high = std::clamp(target, std::min(low, high), std::max(low, high));
    return {std::floor(low / step) * step, std::ceil(high / step) * step};
}

Grid ChooseGrid(Canvas const& canvas, Box const& box) {
    Grid grid;
    ChoosePlane(grid, canvas.camera, box);
    grid.step = RoundStep(double{canvas.WorldPerPixel()} * kPixelsPerStep);
    double const reach = 1.1 * canvas.camera.ComputeHalfHeight() * std::max(1.0f, canvas.AspectRatio());
    QVector3D const target = ToVector(canvas.camera.GetTarget());
    for (int i = 0; i < 2; ++i) {
        int const axis = grid.axes[i];
        grid.spans[i] = ChooseSpan(box.min[axis], box.max[axis], target[axis], reach, grid.step);
    }
    return grid;
}

/// Lines of constant `axes[i]`: fine ones, every fifth stronger, and the other axis where they are 0.
void AppendLines(std::vector<zx3D::Line>& lines, Grid const& grid, int i) {
    Span const& along = grid.spans[1 - i];
    for (double const tick : Ticks(grid.spans[i].low, grid.spans[i].high, grid.step)) {
        auto const count = std::llround(tick / grid.step);
        QVector3D const from = i == 0 ? PlaceOn(grid, tick, along.low) : PlaceOn(grid, along.low, tick);
        QVector3D const to = i == 0 ? PlaceOn(grid, tick, along.high) : PlaceOn(grid, along.high, tick);
        zx3D::Color const color = count == 0       ? kAxisColors[grid.axes[1 - i]]
                                  : count % 5 == 0 ? kMajor
                                                   : kMinor;
        lines.push_back({{from.x(), from.y(), from.z()}, {to.x(), to.y(), to.z()}, color});
    }
}

/// Whether a text here would lie over another one of about its length there.
bool Touch(QPointF const& here, QPointF const& there, QString const& text, Canvas const& canvas) {
    double const width = (10.0 + 7.0 * static_cast<double>(text.size())) * canvas.pixelRatio;
    double const height = 16.0 * canvas.pixelRatio;
    return std::abs(here.x() - there.x()) < width && std::abs(here.y() - there.y()) < height;
}

/// Numbers along the edge of the rectangle that is nearer to the viewer, and beyond it. Where they would
/// touch, as on edges that point away from the viewer, some are left out.
void DrawNumbers(Canvas const& canvas, Grid const& grid, int i, std::vector<QPointF>& taken) {
    int const otherAxis = grid.axes[1 - i];
    Span const& other = grid.spans[1 - i];
    // On a wall the lower and the left edge are nearest to where they are looked for.
    QVector3D nearer = TowardsViewer(canvas.camera) - ScreenUp(canvas.camera);
    if (i == 1)
        nearer -= 0.5f * ScreenRight(canvas.camera);
    double const edge = nearer[otherAxis] >= 0.0f ? other.high : other.low;
    double const inside = nearer[otherAxis] >= 0.0f ? edge - grid.step : edge + grid.step;
    for (double const tick : Ticks(grid.spans[i].low, grid.spans[i].high, grid.step)) {
        auto const place = canvas.Project(i == 0 ? PlaceOn(grid, tick, edge) : PlaceOn(grid, edge, tick));
        auto const inner = canvas.Project(i == 0 ? PlaceOn(grid, tick, inside) : PlaceOn(grid, inside, tick));
        if (!place || !inner)
            continue;
        QPointF const outwards = *place - *inner;
        double const length = std::hypot(outwards.x(), outwards.y());
        QPointF const label =
            *place + (length > 0.0 ? outwards / length : QPointF(0.0, 1.0)) * kLabelGap * canvas.pixelRatio;
        QString const text = TickText(tick, grid.step);
        if (std::ranges::any_of(taken,
                                [&](QPointF const& other) { return Touch(label, other, text, canvas); }))
            continue;
        canvas.DrawLabel(label, text, kLabelColor, kLabelSize, Qt::AlignCenter);
        taken.push_back(label);
    }
}

} // namespace

void DrawGround(Canvas const& canvas, Box const& box) {
    Grid const grid = ChooseGrid(canvas, box);
    std::vector<zx3D::Line> lines;
    AppendLines(lines, grid, 0);
    AppendLines(lines, grid, 1);
    canvas.DrawLines(canvas.surfaces, lines, 1.0f);
    std::vector<QPointF> taken; // by numbers
    DrawNumbers(canvas, grid, 0, taken);
    DrawNumbers(canvas, grid, 1, taken);
}

} // namespace viewer
