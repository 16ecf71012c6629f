// A camera moved by mouse, wheel, keys and gestures over a window and both kinds of widgets: points of the
// scene land where the camera's definition says.
#include "CornerWidget.h"

#include "harness/InputDevice.h"
#include "render/SharedRun.h"

#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>
#include <zx3DQt/BGFXWindow.h>
#include <zx3DQt/CameraController.h>

#include <QApplication>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QScreen>
#include <QVBoxLayout>

#include <X11/keysym.h>

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

namespace zarvex::testing {

namespace {

using zx3DQt::CameraController;
using zx3DQt::OrbitCamera;
using zx3DQt::WorldPosition;
using zx3DQt::WorldVector;

/// Where a float of the world's coordinates is off by half a unit.
constexpr WorldPosition kPlace{500'000.0, 5'400'000.0, 100.0};

zx3DQt::WorldBox const kBox{kPlace, kPlace + WorldVector{4.0, 3.0, 2.0}};

struct Mark {
    WorldVector fromPlace;
    QRgb color;
};

/// Corners of the box.
std::array<Mark, 4> const kMarks{{{{0.0, 0.0, 0.0}, qRgb(255, 0, 0)},
                                  {{4.0, 0.0, 0.0}, qRgb(0, 255, 0)},
                                  {{0.0, 3.0, 0.0}, qRgb(0, 0, 255)},
                                  {{4.0, 3.0, 2.0}, qRgb(255, 255, 255)}}};

constexpr std::uint16_t kMarkExtent = 9; // pixels

/// Draws the marks as the camera sees them.
bool RecordMarks(zx3DQt::BGFXRenderer& renderer, zx3D::FrameBuffer& frameBuffer, QRect const& viewport,
                 CameraController const& controller) {
    if (!renderer.StartFrame(frameBuffer))
        return false;
    zx3DQt::BGFXViewClearOptions const clear{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x000000ff, 1.0f, 0};
    zx3DQt::BGFXViewContext view(1, clear, bgfx::ViewMode::Sequential);
    view.SetViewport(viewport);
    controller.Apply(view, zx3DQt::ViewOrigin::Focus);
    view.Submit(frameBuffer);
    bgfx::touch(view);
    renderer.SetModelTransform(QMatrix4x4());
    for (Mark const& mark : kMarks) {
        WorldVector const place = kPlace + mark.fromPlace - view.GetOrigin();
        zx3D::Vertex::Pos3fColorRGBA const point[] = {
            {{static_cast<float>(place.x), static_cast<float>(place.y), static_cast<float>(place.z)},
             {static_cast<float>(qRed(mark.color)) / 255.0f, static_cast<float>(qGreen(mark.color)) / 255.0f,
              static_cast<float>(qBlue(mark.color)) / 255.0f, 1.0f}}};
        renderer.DrawPoints(view, point, kMarkExtent);
    }
    return true;
}

/// Something that shows the marks, whatever it is.
class Target {
public:
    virtual ~Target() = default;

    virtual void Update() = 0;
    virtual QPoint ToGlobal(QPoint place) = 0;
    virtual QSize Size() = 0;
    virtual QImage Grab() = 0;
    virtual QObject& ReceiverOfGestures() = 0;
    virtual CameraController& Controller() = 0;
};

class MarkWindow final : public zx3DQt::BGFXWindow, public Target {
public:
    MarkWindow() {
        setGeometry(120, 140, 400, 300);
        show();
        EXPECT_TRUE(WaitUntil([this] { return isExposed() && isActive(); }));
    }

    void Update() override { requestUpdate(); }
    QPoint ToGlobal(QPoint place) override { return mapToGlobal(place); }
    QSize Size() override { return size(); }
    QImage Grab() override {
        return screen()->grabWindow(winId()).toImage().convertToFormat(QImage::Format_RGB32);
    }
    QObject& ReceiverOfGestures() override { return *this; }
    CameraController& Controller() override { return m_controller; }

    bool event(QEvent* event) override {
        if (event->type() == QEvent::UpdateRequest &&
            RecordMarks(GetRenderer(), GetFrameBuffer(), GetViewport(), m_controller))
            GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        return BGFXWindow::event(event);
    }

private:
    CameraController m_controller{this};
};

template<typename Base>
class MarkWidget final : public Base, public Target {
public:
    /// Fills the host, which owns it.
    explicit MarkWidget(QWidget& host) {
        auto* const layout = new QVBoxLayout(&host);
        layout->addWidget(this);
        host.setGeometry(120, 140, 420, 330);
        ShowAndWait(host);
        EXPECT_TRUE(WaitUntil([&] { return host.isActiveWindow() && m_paints > 0; }));
        Base::setFocus();
    }

    void Update() override { Base::update(); }
    QPoint ToGlobal(QPoint place) override { return Base::mapToGlobal(place); }
    QSize Size() override { return Base::size(); }
    QImage Grab() override { return GrabFromScreen(*this); }
    QObject& ReceiverOfGestures() override {
        if constexpr (requires { Base::GetWindow(); })
            return Base::GetWindow(); // to which the window system sends them
        else
            return *this;
    }
    CameraController& Controller() override { return m_controller; }

    void paintEvent(QPaintEvent* event) override {
        Base::paintEvent(event);
        ++m_paints;
        if (!RecordMarks(Base::GetRenderer(), Base::GetFrameBuffer(), Base::GetViewport(), m_controller))
            return;
        if constexpr (requires { Base::Flush(); })
            Base::Flush();
        else
            Base::GetRenderer().PresentCurrentAndSubmitNextFrame(false);
    }

private:
    CameraController m_controller{this};
    int m_paints = 0;
};

/// From the camera's definition: target, distance, angle from bottom to top.
QPointF Project(OrbitCamera const& camera, WorldPosition const& position, QSize size) {
    zx3DQt::ViewAxes const axes = camera.ComputeAxes();
    WorldVector const way = position - (camera.GetTarget() + camera.GetDistance() * axes.towardsViewer);
    double const tangent = std::tan(0.5 * camera.GetFieldOfView() * 3.14159265358979323846 / 180.0);
    double const pixels = 0.5 * size.height() / (tangent * -Dot(way, axes.towardsViewer));
    return QPointF(0.5 * size.width(), 0.5 * size.height()) +
           pixels * QPointF(Dot(way, axes.right), -Dot(way, axes.up));
}

/// The middle of the pixels of a colour; far away without any.
QPointF FindMark(QImage const& image, QRgb color) {
    QPointF sum;
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) == color) {
                sum += QPointF(x + 0.5, y + 0.5);
                ++count;
            }
        }
    }
    return count > 0 ? sum / count : QPointF(1e6, 1e6);
}

} // namespace

class CameraTest : public SharedRunTest {
protected:
    void Check(Target& target);
    void ExpectMarks(Target& target, char const* after);
    void ExpectCamera(OrbitCamera const& expected, char const* after);
    void Drag(Target& target, QPoint from, QPoint to, InputDevice::Button button);

    OrbitCamera const& Camera() const { return std::get<OrbitCamera>(m_controller->GetCamera()); }

    CameraController* m_controller = nullptr;
    InputDevice m_input;
};

void CameraTest::ExpectMarks(Target& target, char const* after) {
    double worst = 0.0;
    EXPECT_TRUE(WaitUntil([&] {
        target.Update();
        HandlePendingEvents();
        QImage const image = target.Grab();
        worst = 0.0;
        for (Mark const& mark : kMarks) {
            QPointF const way = FindMark(image, mark.color | 0xff000000) -
                                Project(Camera(), kPlace + mark.fromPlace, target.Size());
            worst = std::max(worst, std::hypot(way.x(), way.y()));
        }
        return worst < 0.75; // pixels have middles
    })) << after
        << ": a mark is " << worst << " pixels from where it should be";
}

void CameraTest::ExpectCamera(OrbitCamera const& expected, char const* after) {
    auto const isThere = [&] {
        WorldVector const way = Camera().GetTarget() - expected.GetTarget();
        return std::sqrt(Dot(way, way)) < 1e-6 &&
               std::abs(Camera().GetAzimuth() - expected.GetAzimuth()) < 1e-6 &&
               std::abs(Camera().GetElevation() - expected.GetElevation()) < 1e-6 &&
               std::abs(Camera().GetDistance() - expected.GetDistance()) < 1e-6;
    };
    EXPECT_TRUE(WaitUntil(isThere)) << after;
}

void CameraTest::Drag(Target& target, QPoint from, QPoint to, InputDevice::Button button) {
    m_input.MoveTo(target.ToGlobal(from) - QPoint(3, 3));
    m_input.MoveTo(target.ToGlobal(from));
    HandlePendingEvents();
    m_input.Press(button);
    HandlePendingEvents();
    m_input.MoveTo(target.ToGlobal((from + to) / 2));
    HandlePendingEvents();
    m_input.MoveTo(target.ToGlobal(to));
    m_input.Release(button);
    HandlePendingEvents();
}

void CameraTest::Check(Target& target) {
    m_controller = &target.Controller();
    m_controller->SetTransitionTime(std::chrono::milliseconds(0));
    m_controller->SetSceneBox(kBox);
    m_controller->LookFrom(zx3DQt::StandardView::Isometric);
    QRectF const viewport(QPointF(), QSizeF(target.Size()));
    ExpectMarks(target, "at first");

    OrbitCamera expected = Camera();
    expected.Orbit(0.4 * 60.0, -0.4 * 30.0);
    Drag(target, {100, 80}, {160, 110}, InputDevice::Left);
    ExpectCamera(expected, "after orbiting");
    ExpectMarks(target, "after orbiting");

    expected.Pan({150, 120}, {170, 110}, viewport);
    Drag(target, {150, 120}, {170, 110}, InputDevice::Middle);
    ExpectCamera(expected, "after panning");

    expected.Zoom(1.15, {170, 110}, viewport); // where the pointer is
    m_input.Click(InputDevice::WheelUp);
    ExpectCamera(expected, "after a notch of the wheel");
    ExpectMarks(target, "after a notch of the wheel");

    expected.Orbit(-7.5, 0.0);
    m_input.Type(XK_Left);
    ExpectCamera(expected, "after a key");

    expected.Zoom(0.8, {120, 90}, viewport);
    QPointF const global(target.ToGlobal({120, 90}));
    QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2, {120, 90},
                              {120, 90}, global, -0.2, {});
    QCoreApplication::sendEvent(&target.ReceiverOfGestures(), &pinch);
    ExpectCamera(expected, "after a pinch");
    ExpectMarks(target, "after all");
}

TEST_P(CameraTest, AWindowShowsWhatTheCameraSees) {
    MarkWindow window;
    Check(window);
    window.close(); // and its frame buffer with it
}

TEST_P(CameraTest, ANativeWidgetShowsWhatTheCameraSees) {
    QWidget host;
    Check(*new MarkWidget<zx3DQt::BGFXNativeWidget>(host));
}

TEST_P(CameraTest, AnOffscreenWidgetShowsWhatTheCameraSees) {
    QWidget host;
    Check(*new MarkWidget<zx3DQt::BGFXOffscreenWidget>(host));
}

ZX3D_INSTANTIATE_BACKENDS(CameraTest);

} // namespace zarvex::testing
