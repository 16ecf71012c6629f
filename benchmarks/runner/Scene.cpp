// The frame around what a scene draws, in both ways.
#include "runner/Scene.h"

namespace zarvex::benchmarks {

void Scene::RecordWithLibrary() {
    m_renderer.StartFrame(m_stage.GetFrameBuffer());
    m_stage.GetView().Submit(m_stage.GetFrameBuffer());
    DrawWithLibrary(m_renderer, m_stage.GetView());
}

void Scene::RecordByHand() {
    m_stage.SetUpView();
    DrawByHand(m_stage.GetView());
}

void Scene::RunLibrary() {
    RecordWithLibrary();
    std::uint32_t const ready = m_stage.RequestPixel();
    WaitForFrame(ready, m_renderer.PresentCurrentAndSubmitNextFrame(false));
}

void Scene::RunFloor() {
    RecordByHand();
    std::uint32_t const ready = m_stage.RequestPixel();
    WaitForFrame(ready, bgfx::frame());
}

FrameResult Scene::InspectLibrary() {
    RecordWithLibrary();
    return m_stage.Inspect();
}

FrameResult Scene::InspectFloor() {
    RecordByHand();
    return m_stage.Inspect();
}

} // namespace zarvex::benchmarks
