// Candidates, the step at each, and room for the roundest first.
#include "TickNumbers.h"

#include "LabelRoom.h"

#include <zx3D/Text.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace zarvex::zx3DQt {

namespace {

/// How many ticks from one number to the next.
using Stride = std::int64_t;

/// Further than any grid's last tick is from the first: no tick has neighbours there.
constexpr Stride kLargestStride = 10'000'000;

/// 1, 2, 5, 10, 20, 50, ...
Stride NextStride(Stride stride) {
    Stride power = 1;
    while (10 * power <= stride)
        power *= 10;
    return stride == 2 * power ? 5 * power : 2 * stride;
}

/// The largest stride that meets a tick, counted from 0.
Stride RoundnessOf(std::int64_t count) {
    Stride power = 1;
    while (power < kLargestStride && count % (10 * power) == 0)
        power *= 10;
    return power * (count % (5 * power) == 0 ? 5 : count % (2 * power) == 0 ? 2 : 1);
}

/// A tick that may have a number.
struct Candidate {
    TickNumber number;
    QRectF rect;            ///< that it is drawn on
    std::int64_t index = 0; ///< among the axis' ticks
    std::int64_t count = 0; ///< of steps from 0
    Stride roundness = 1;
    Stride stride = 1; ///< no smaller one leaves room for any text
};

/// The numbers of one axis.
class AxisNumbers {
public:
    AxisNumbers(TickAxis const& axis, TickText const& textAt, zx3D::FontHandle font, QRectF const& picture);

    /// Appends those that keep a gap to others of the axis in regular steps.
    void AppendTo(std::vector<Candidate>& chosen, double gap) const;

private:
    bool IsInTheWay(std::int64_t other, QPointF const& place, QSizeF const& size) const {
        if (other < 0 || other >= std::ssize(m_axis.ticks))
            return false;
        std::optional<QPointF> const& taken = m_axis.ticks[static_cast<std::size_t>(other)].place;
        return taken && std::abs(taken->x() - place.x()) < size.width() &&
               std::abs(taken->y() - place.y()) < size.height();
    }

    /// Whether texts of a size have room at a tick and at those a stride on to both sides.
    bool HasRoom(std::int64_t index, Stride stride, QSizeF const& size) const {
        QPointF const& place = *m_axis.ticks[static_cast<std::size_t>(index)].place;
        return !IsInTheWay(index - stride, place, size) && !IsInTheWay(index + stride, place, size);
    }

    TickAxis const& m_axis;
    std::vector<Candidate> m_candidates;
    std::map<Stride, double> m_widest; ///< of the candidates at a stride, pixels
};

AxisNumbers::AxisNumbers(TickAxis const& axis, TickText const& textAt, zx3D::FontHandle font,
                         QRectF const& picture)
    : m_axis(axis) {
    // No text that is to be read is narrower, or lower: the texts of crowds are not asked for.
    double const least = std::max(1.0, 0.25 * zx3D::GetFontInfo(font).pixelSize);
    // Texts begin at their places, and may reach into the picture from the left and from above.
    QRectF const reach = picture.adjusted(-picture.width(), -picture.height(), 0.0, 0.0);
    for (std::int64_t i = 0; i < std::ssize(axis.ticks); ++i) {
        Tick const& tick = axis.ticks[static_cast<std::size_t>(i)];
        if (!tick.place || !reach.contains(*tick.place))
            continue;
        Candidate candidate;
        candidate.index = i;
        candidate.count = axis.firstCount + i;
        candidate.roundness = RoundnessOf(candidate.count);
        Stride& stride = candidate.stride;
        while (stride <= candidate.roundness && !HasRoom(i, stride, QSizeF(least, least)))
            stride = NextStride(stride);
        if (stride > candidate.roundness)
            continue;
        candidate.number = {axis.id, tick.position, *tick.place, textAt(axis.id, tick.position)};
        candidate.rect = DrawnRect(*tick.place, MeasureText(font, candidate.number.text));
        if (!candidate.rect.intersects(picture)) // as those without a text
            continue;
        for (Stride met = 1; met <= candidate.roundness; met = NextStride(met)) {
            if (candidate.count % met == 0)
                m_widest[met] = std::max(m_widest[met], candidate.rect.width());
        }
        m_candidates.push_back(std::move(candidate));
    }
}

void AxisNumbers::AppendTo(std::vector<Candidate>& chosen, double gap) const {
    // Places are rounded to whole pixels, which may bring two of them nearer by one.
    double const between = gap + 1.0;
    for (Candidate const& candidate : m_candidates) {
        for (Stride stride = candidate.stride; stride <= candidate.roundness; stride = NextStride(stride)) {
            auto const widest = m_widest.find(stride);
            double const width = widest != m_widest.end() ? widest->second : candidate.rect.width();
            if (!HasRoom(candidate.index, stride, QSizeF(width + between, candidate.rect.height() + between)))
                continue;
            if (candidate.count % stride == 0)
                chosen.push_back(candidate);
            break;
        }
    }
}

} // namespace

std::vector<TickNumber> ChooseTickNumbers(std::span<TickAxis const> axes, TickText const& textAt,
                                          zx3D::FontHandle font, double gap, QRectF const& picture) {
    std::vector<Candidate> chosen;
    for (TickAxis const& axis : axes)
        AxisNumbers(axis, textAt, font, picture).AppendTo(chosen, gap);
    std::ranges::stable_sort(chosen, std::ranges::greater(), &Candidate::roundness);
    LabelRoom room(gap);
    std::vector<TickNumber> numbers;
    for (Candidate& candidate : chosen) {
        if (room.Take(candidate.rect))
            numbers.push_back(std::move(candidate.number));
    }
    return numbers;
}

} // namespace zarvex::zx3DQt
