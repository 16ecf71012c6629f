// The queue of paints.
#include "PaintTurn.h"

#include <zx3DQt/FrameNotifier.h>

#include <zx3D/Context.h>

#include <QScopedValueRollback>

#include <algorithm>
#include <deque>
#include <utility>

namespace zarvex::zx3DQt {

namespace {

using Queue = std::deque<std::pair<PaintTurn const*, std::function<void()>>>;

Queue& GetQueue() {
    // Never destroyed: targets of static storage duration may be destroyed later.
    static Queue& queue = *new Queue;
    return queue;
}

bool isGivingTurns = false;

void PaintWhileNothingIsInFlight() {
    Queue& queue = GetQueue();
    QScopedValueRollback const givingTurns(isGivingTurns, true);
    while (!queue.empty() && !zx3D::Context::IsFrameInFlight()) {
        auto const paint = std::move(queue.front().second);
        queue.pop_front();
        paint();
    }
}

} // namespace

PaintTurn::PaintTurn(std::function<void()> paint) : m_paint(std::move(paint)) {
    static auto const connection =
        QObject::connect(&FrameNotifier::Get(), &FrameNotifier::frameFinished, PaintWhileNothingIsInFlight);
}

PaintTurn::~PaintTurn() {
    std::erase_if(GetQueue(), [this](auto const& waiting) { return waiting.first == this; });
}

bool PaintTurn::PutOff() {
    // Nobody is served before those who wait, between the end of a frame and the notice of it.
    bool const isBehindOthers = !GetQueue().empty() && !isGivingTurns;
    if (!zx3D::Context::IsFrameInFlight() && !isBehindOthers)
        return false;
    bool const isWaiting =
        std::ranges::any_of(GetQueue(), [this](auto const& waiting) { return waiting.first == this; });
    if (!isWaiting)
        GetQueue().emplace_back(this, m_paint);
    return true;
}

} // namespace zarvex::zx3DQt
