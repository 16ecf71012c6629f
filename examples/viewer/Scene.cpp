// Changes of the scene, and the order in which its parts are drawn.
#include "Scene.h"

#include "BoundingBox.h"
#include "Ground.h"

#include <zx3DQt/CapsReport.h>

#include <utility>

namespace viewer {

namespace {

constexpr int kMovementEnds = 200;   ///< after the last move, milliseconds
constexpr double kSlowFrame = 50.0;  // milliseconds
constexpr std::uint32_t kSmooth = 4; // samples for each pixel
constexpr double kMargin = 0.09; ///< share of the view that is free at each edge of what is fitted into it

} // namespace

Scene::Scene() {
    m_camera.LookFrom(StandardView::Isometric);
    m_movement.setSingleShot(true);
    m_movement.setInterval(kMovementEnds);
    connect(&m_movement, &QTimer::timeout, this, &Scene::Changed);
}

void Scene::SetMesh(std::shared_ptr<MeshFile const> file) {
    m_camera.SetUpAxis(file == nullptr || file->IsZUp() ? UpAxis::Z : UpAxis::Y);
    m_mesh = file != nullptr ? std::make_unique<Mesh>(std::move(file)) : nullptr;
    LookFrom(StandardView::Isometric);
}

Box Scene::GetBox() const {
    return m_mesh != nullptr ? m_mesh->GetBox() : DemoScene::GetBox();
}

void Scene::SetCamera(OrbitCamera const& camera) {
    m_camera = camera;
    emit Changed();
}

void Scene::MoveCamera(OrbitCamera const& camera) {
    m_movement.start();
    SetCamera(camera);
}

std::uint32_t Scene::GetSampleCount() const {
    return m_appearance.sampleCount.value_or(zarvex::zx3DQt::HasGpu(*bgfx::getCaps()) ? kSmooth : 1);
}

std::uint32_t Scene::GetNextSampleCount() const {
    bool const isInAHurry = m_movement.isActive() && m_smoothFrameTime > kSlowFrame;
    return isInAHurry ? 1 : GetSampleCount();
}

std::uint32_t Scene::GetPictureSampleCount() const {
    return m_appearance.sampleCount.value_or(kSmooth); // there is time for one frame
}

void Scene::ReportFrame(double milliseconds) {
    if (GetNextSampleCount() > 1)
        m_smoothFrameTime = milliseconds;
    emit FrameDrawn(milliseconds);
}

void Scene::Fit() {
    m_mustFit = true;
    emit Changed();
}

void Scene::LookFrom(StandardView view) {
    m_camera.LookFrom(view);
    Fit();
}

void Scene::SetAppearance(Appearance const& appearance) {
    m_appearance = appearance;
    emit Changed();
}

void Scene::PrepareCamera(float aspectRatio) {
    if (!std::exchange(m_mustFit, false))
        return;
    m_camera.Fit(ToWorldBox(GetBox()), double{aspectRatio}, kMargin);
    emit Fitted();
}

void Scene::Draw(Canvas const& canvas) {
    if (m_mesh == nullptr) {
        m_lights.Submit(m_camera);
        m_demo.Draw(canvas);
        return;
    }
    if (m_appearance.showsGround)
        DrawGround(canvas, m_mesh->GetBox());
    zarvex::zx3DQt::BGFXLightingContext lights;
    Lights::AddTo(lights, m_camera);
    m_mesh->Draw(canvas, lights, m_appearance.style);
    if (m_appearance.showsNormals)
        m_mesh->DrawNormals(canvas);
    if (m_appearance.showsBox)
        DrawBoundingBox(canvas, m_mesh->GetBox());
    if (!m_mesh->IsComplete())
        QTimer::singleShot(0, this, &Scene::Changed);
}

} // namespace viewer
