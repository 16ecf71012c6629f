// Which labels of a view are shown.
#pragma once

#include "OverlapGrid.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zarvex::zx3DQt {

/// A label whose place is in the view.
struct LabelCandidate {
    std::uint32_t index = 0; ///< in the batch
    float priority = 0.0f;
    float placeX = 0.0f; ///< pixels of the target
    float placeY = 0.0f;
    float depth = 0.0f; ///< to compare with
    PictureBox box;
};

/// What a view remembers of each label from one frame to the next.
class LabelMemory {
public:
    void Resize(std::size_t count) { m_states.resize(count, 0); }
    void Clear() { m_states.clear(); }

    bool WasShown(std::uint32_t label) const { return (m_states[label] & Shown) != 0; }
    /// In the view, but hidden by others.
    bool WasHidden(std::uint32_t label) const { return (m_states[label] & (InView | Shown)) == InView; }

    /// Forgets which labels were in the view and shown, but not which way round they run.
    void ForgetChoice();
    void SetInView(std::uint32_t label) { m_states[label] |= InView; }
    void SetShown(std::uint32_t label) { m_states[label] |= Shown; }

    /// Whether a text along a direction is to run the other way to be upright. Near the vertical it runs as
    /// it did before.
    bool IsReversed(std::uint32_t label, double directionX, double directionY);

private:
    enum State : std::uint8_t { Shown = 1, InView = 2, HasDirection = 4, Reversed = 8 };

    std::vector<std::uint8_t> m_states;
};

/// How labels are chosen; see `LabelStyle`.
struct LabelRules {
    float gap = 0.0f;
    float priorityLead = 0.0f;
};

/// Chooses among candidates; keeps its memory between frames.
class LabelChooser {
public:
    /// The candidates that are shown, those that had the first claim first, and remembers them. `candidates`
    /// are in descending order of priority. Good until the next call.
    std::span<LabelCandidate const> Choose(std::span<LabelCandidate const> candidates, QRect const& viewport,
                                           LabelRules const& rules, LabelMemory& memory);

private:
    OverlapGrid m_grid;
    std::vector<LabelCandidate const*> m_shownBefore;
    std::vector<LabelCandidate const*> m_others;
    std::vector<LabelCandidate> m_chosen;
};

} // namespace zarvex::zx3DQt
