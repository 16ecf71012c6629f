// Whose paint is next, when paints wait for the frame in flight.
#pragma once

#include <functional>

namespace zarvex::zx3DQt {

/// A target's place among those whose paint is put off while a frame is in flight, so that it does not wait
/// for that frame inside bgfx. First come, first served: each paint may submit the next frame, and the others
/// go on waiting for that one.
///
/// Thread: the GUI thread.
class PaintTurn {
public:
    /// `paint` may destroy the turn.
    explicit PaintTurn(std::function<void()> paint);
    ~PaintTurn();

    PaintTurn(PaintTurn const&) = delete;
    PaintTurn& operator=(PaintTurn const&) = delete;

    /// False when no frame is in flight: paint now. Otherwise true, and `paint` is called once, from the
    /// event loop, however often this was asked before.
    bool PutOff();

private:
    std::function<void()> m_paint;
};

} // namespace zarvex::zx3DQt
