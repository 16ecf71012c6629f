// A scene in a widget: in either of the library's.
#pragma once

#include "ScenePainter.h"

#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>
#include <zx3DQt/CameraController.h>

#include <QElapsedTimer>
#include <QSignalBlocker>

#include <algorithm>
#include <chrono>
#include <vector>

namespace viewer {

/// What the rest of the viewer wants of a view, whichever widget it is.
class AnySceneView {
public:
    virtual ~AnySceneView() = default;

    virtual QWidget& AsWidget() = 0;

    /// A picture in another size than the widget's, pixels; null with a warning where the GPU cannot. Lines
    /// and text are as large as they would be in a view of a thousand lines.
    virtual QImage TakePicture(QSize size) = 0;
};

/// `Target`: `BGFXNativeWidget` or `BGFXOffscreenWidget`. The difference for an application is one line.
template<typename Target>
class SceneView final : public Target, public AnySceneView {
public:
    explicit SceneView(Scene& scene, QWidget* parent = nullptr) : Target(parent), m_scene(scene) {
        Target::setFocusPolicy(Qt::StrongFocus);
        Target::setMinimumSize(160, 120);
        Target::SetDepthFormat(bgfx::TextureFormat::D32F);
        QObject::connect(&scene, &Scene::Changed, this, [this] {
            FollowCamera();
            Target::update();
        });
        QObject::connect(&scene, &Scene::Fitted, this, &SceneView::FollowCamera);
        PrepareController();
    }

    QWidget& AsWidget() override { return *this; }

    QImage TakePicture(QSize size) override {
        return Target::RenderPicture({.size = size,
                                      .pixelRatio = std::max(1.0, size.height() / kLinesOfAView),
                                      .sampleCount = m_scene.GetPictureSampleCount()});
    }

protected:
    void mouseDoubleClickEvent(QMouseEvent*) override { m_scene.Fit(); }

    void paintEvent(QPaintEvent* event) override {
        Target::paintEvent(event);
        QElapsedTimer clock;
        clock.start();
        if (event != nullptr)
            Target::SetSampleCount(m_scene.GetNextSampleCount());
        if (!PaintScene(m_scene, Target::GetRenderer(), Target::GetFrameBuffer(),
                        static_cast<float>(Target::GetPixelRatio()),
                        event != nullptr ? Purpose::Frame : Purpose::Picture))
            return;
        if (event == nullptr) // a picture is taken
            return;
        Show();
        m_scene.ReportFrame(1e-6 * static_cast<double>(clock.nsecsElapsed()));
    }

private:
    static constexpr double kLinesOfAView = 1000.0;

    void Show() {
        if constexpr (requires { Target::Flush(); }) {
            // All of the widget is drawn, also where Qt asks for a part.
            Target::SetViewport(
                QRect(0, 0, Target::GetFrameBuffer().GetWidth(), Target::GetFrameBuffer().GetHeight()));
            Target::Flush();
        } else {
            Target::GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        }
    }

    void PrepareController() {
        zarvex::zx3DQt::CameraBindings bindings;
        bindings.doubleClick.reset();                          // the scene knows what is to be seen
        std::erase_if(bindings.keys, [](auto const& binding) { // the menus have them
            return binding.command >= zarvex::zx3DQt::CameraCommand::Fit;
        });
        m_controller.SetBindings(bindings);
        FollowCamera();
        QObject::connect(&m_controller, &zarvex::zx3DQt::CameraController::cameraChanged, this,
                         [this] { m_scene.MoveCamera(std::get<OrbitCamera>(m_controller.GetCamera())); });
    }

    /// All views share the scene's camera.
    void FollowCamera() {
        QSignalBlocker const blocker(m_controller);
        m_controller.SetCamera(m_scene.GetCamera());
    }

    Scene& m_scene;
    zarvex::zx3DQt::CameraController m_controller{this};
};

using NativeSceneView = SceneView<zarvex::zx3DQt::BGFXNativeWidget>;
using OffscreenSceneView = SceneView<zarvex::zx3DQt::BGFXOffscreenWidget>;

} // namespace viewer
