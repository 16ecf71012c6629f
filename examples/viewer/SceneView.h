// A scene in a widget: in either of the library's.
#pragma once

#include "CameraControl.h"
#include "ScenePainter.h"

#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>

#include <QElapsedTimer>

#include <algorithm>

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
    explicit SceneView(Scene& scene, QWidget* parent = nullptr)
        : Target(parent),
          m_scene(scene),
          m_control(scene) {
        Target::setFocusPolicy(Qt::StrongFocus);
        Target::setMinimumSize(160, 120);
        Target::SetDepthFormat(bgfx::TextureFormat::D32F);
        QObject::connect(&scene, &Scene::Changed, this, [this] { Target::update(); });
    }

    QWidget& AsWidget() override { return *this; }

    QImage TakePicture(QSize size) override {
        return Target::RenderPicture({.size = size,
                                      .pixelRatio = std::max(1.0, size.height() / kLinesOfAView),
                                      .sampleCount = m_scene.GetPictureSampleCount()});
    }

    bool event(QEvent* event) override {
        if (m_control.Handle(*event, Target::size())) {
            event->accept();
            return true;
        }
        return Target::event(event);
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        Target::paintEvent(event);
        QElapsedTimer clock;
        clock.start();
        if (event != nullptr)
            Target::SetSampleCount(m_scene.GetNextSampleCount());
        if (!PaintScene(m_scene, Target::GetRenderer(), Target::GetFrameBuffer(),
                        static_cast<float>(Target::GetPixelRatio())))
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

    Scene& m_scene;
    CameraControl m_control;
};

using NativeSceneView = SceneView<zarvex::zx3DQt::BGFXNativeWidget>;
using OffscreenSceneView = SceneView<zarvex::zx3DQt::BGFXOffscreenWidget>;

} // namespace viewer
