// Labels claim room one after the other; those that were shown before count as of greater priority.
#include "LabelChoice.h"

#include <cmath>

namespace zarvex::zx3DQt {

void LabelMemory::ForgetChoice() {
    for (std::uint8_t& state : m_states)
        state &= static_cast<std::uint8_t>(~(Shown | InView));
}

bool LabelMemory::IsReversed(std::uint32_t label, double directionX, double directionY) {
    constexpr double keeps = 0.05; // about three degrees to each side of the vertical
    constexpr double isVertical = 1e-6;
    std::uint8_t& state = m_states[label];
    bool isReversed = directionX < -isVertical || (directionX <= isVertical && directionY > 0.0);
    if ((state & HasDirection) != 0 && std::abs(directionX) < keeps) {
        // Upwards or downwards, whichever it did.
        isReversed = (state & Reversed) != 0;
    }
    state = static_cast<std::uint8_t>((state & ~Reversed) | HasDirection | (isReversed ? Reversed : 0));
    return isReversed;
}

std::span<LabelCandidate const> LabelChooser::Choose(std::span<LabelCandidate const> candidates,
                                                     QRect const& viewport, LabelRules const& rules,
                                                     LabelMemory& memory) {
    m_shownBefore.clear();
    m_others.clear();
    for (LabelCandidate const& candidate : candidates)
        (memory.WasShown(candidate.index) ? m_shownBefore : m_others).push_back(&candidate);

    m_grid.Start(viewport);
    m_chosen.clear();
    // Of each, as long as the memory is of the frame before.
    auto const claim = [&](LabelCandidate const& candidate) {
        float const gap = memory.WasHidden(candidate.index) ? rules.gap : 0.0f;
        if (m_grid.IsFree(candidate.box, gap)) {
            m_grid.Take(candidate.box);
            m_chosen.push_back(candidate);
        }
    };
    auto other = m_others.begin();
    for (LabelCandidate const* const shown : m_shownBefore) {
        for (; other != m_others.end() && (*other)->priority > shown->priority + rules.priorityLead; ++other)
            claim(**other);
        claim(*shown);
    }
    for (; other != m_others.end(); ++other)
        claim(**other);

    memory.ForgetChoice();
    for (LabelCandidate const& candidate : candidates)
        memory.SetInView(candidate.index);
    for (LabelCandidate const& chosen : m_chosen)
        memory.SetShown(chosen.index);
    return m_chosen;
}

} // namespace zarvex::zx3DQt
