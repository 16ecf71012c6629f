// Which of an axis' numbers are drawn where there is not room for all.
#pragma once

#include <zx3DQt/CoordinateAxes.h>

#include <zx3D/TextHandles.h>

#include <QPointF>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace zarvex::zx3DQt {

/// A line's end, where a number may stand.
struct Tick {
    float position;               ///< along the axis
    std::optional<QPointF> place; ///< of the number's top left, pixels; empty: none is drawn
};

/// The ticks of an axis, in order.
struct TickAxis {
    CoordinateAxisId id;
    std::int64_t firstCount; ///< steps from 0 to the first tick
    std::vector<Tick> ticks;
};

/// The text of a number, by axis and position along it.
using TickText = std::function<QString(CoordinateAxisId, float)>;

/// A number that is drawn.
struct TickNumber {
    CoordinateAxisId axis = X;
    float position = 0.0f; ///< along the axis
    QPointF place;         ///< of its top left, pixels
    QString text;
};

/// The numbers, of those with a text that touch `picture`, that are at least `gap` pixels apart, to the side
/// or up and down. At each tick the step is the smallest of 1, 2, 5, 10, 20, 50, ... ticks, counted from 0,
/// at which neighbours are, if they are as wide as the widest that is seen; so it is the same wherever ticks
/// are at the same distance. Where steps meet, and where axes do, the rounder number stays: the multiple of
/// the larger step.
///
/// It asks for the texts of those ticks only that are so far apart that they might have room.
std::vector<TickNumber> ChooseTickNumbers(std::span<TickAxis const> axes, TickText const& textAt,
                                          zx3D::FontHandle font, double gap, QRectF const& picture);

} // namespace zarvex::zx3DQt
