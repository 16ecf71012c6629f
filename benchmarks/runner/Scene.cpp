// The frame around what a scene draws, in both ways.
#include "runner/Scene.h"

namespace zarvex::benchmarks {

Scene::Scene(bx::Vec3 const& eye) : m_stage(eye) {
    if (comparedSamples > 1)
        m_smoothStage.emplace(eye, comparedSamples);
    m_renderer.Initialize();
}

void Scene::RecordWithLibrary(Stage& stage) {
    m_renderer.StartFrame(stage.GetFrameBuffer());
    stage.GetView().Submit(stage.GetFrameBuffer());
    DrawWithLibrary(m_renderer, stage.GetView());
}

void Scene::RecordFloor() {
    if (m_smoothStage)
        return RecordWithLibrary(m_stage);
    m_stage.SetUpView();
    DrawByHand(m_stage.GetView());
}

void Scene::RunLibrary() {
    RecordWithLibrary(GetLibraryStage());
    std::uint32_t const ready = GetLibraryStage().RequestPixel();
    WaitForFrame(ready, m_renderer.PresentCurrentAndSubmitNextFrame(false));
}

void Scene::RunFloor() {
    RecordFloor();
    std::uint32_t const ready = m_stage.RequestPixel();
    WaitForFrame(ready, bgfx::frame());
}

FrameResult Scene::InspectLibrary() {
    RecordWithLibrary(GetLibraryStage());
    return GetLibraryStage().Inspect();
}

FrameResult Scene::InspectFloor() {
    RecordFloor();
    return m_stage.Inspect();
}

} // namespace zarvex::benchmarks
