// A workload that draws a frame on the stage.
#pragma once

#include "runner/Stage.h"
#include "runner/Workload.h"

#include <zx3DQt/BGFXRenderer.h>

#include <cstdint>
#include <optional>

namespace zarvex::benchmarks {

/// A frame is begun, drawn and waited for: with the library through its renderer, by hand with bgfx's calls.
class Scene : public Workload {
public:
    void RunLibrary() override;
    void RunFloor() override;
    FrameResult InspectLibrary() override;
    FrameResult InspectFloor() override;

    /// Scenes made from now on draw both sides with the library: the library's with so many samples for each
    /// pixel, and the floor's with one.
    static void CompareSamples(std::uint32_t sampleCount) { comparedSamples = sampleCount; }

protected:
    explicit Scene(bx::Vec3 const& eye = {0.0f, 0.0f, 5.0f});

    /// Draws into the frame that the library has begun.
    virtual void DrawWithLibrary(zx3DQt::BGFXRenderer const& renderer,
                                 zx3DQt::BGFXViewContext const& view) = 0;
    /// Draws the same into the view, which is set up.
    virtual void DrawByHand(bgfx::ViewId view) = 0;

    Stage m_stage;

private:
    void RecordWithLibrary(Stage& stage);
    void RecordFloor();
    Stage& GetLibraryStage() { return m_smoothStage ? *m_smoothStage : m_stage; }

    inline static std::uint32_t comparedSamples = 1;

    std::optional<Stage> m_smoothStage;
    zx3DQt::BGFXRenderer m_renderer;
};

} // namespace zarvex::benchmarks
