// A workload that draws a frame on the stage.
#pragma once

#include "runner/Stage.h"
#include "runner/Workload.h"

#include <zx3DQt/BGFXRenderer.h>

namespace zarvex::benchmarks {

/// A frame is begun, drawn and waited for: with the library through its renderer, by hand with bgfx's calls.
class Scene : public Workload {
public:
    void RunLibrary() override;
    void RunFloor() override;
    FrameResult InspectLibrary() override;
    FrameResult InspectFloor() override;

protected:
    Scene() { m_renderer.Initialize(); }
    explicit Scene(bx::Vec3 const& eye) : m_stage(eye) { m_renderer.Initialize(); }

    /// Draws into the frame that the library has begun.
    virtual void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer,
                                 zx3DQt::BGFXViewContext const& view) = 0;
    /// Draws the same into the view, which is set up.
    virtual void DrawByHand(bgfx::ViewId view) = 0;

    Stage m_stage;

private:
    void RecordWithLibrary();
    void RecordByHand();

    zx3DQt::BGFXRenderer m_renderer;
};

} // namespace zarvex::benchmarks
