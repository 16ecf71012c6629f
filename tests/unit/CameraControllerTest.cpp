// The controller, driven by events as Qt delivers them.
#include <zx3DQt/CameraController.h>

#include <CameraReference.h>
#include <Fixtures.h>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPointer>
#include <QPointingDevice>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <QWidget>
#include <QWindow>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

using namespace camera_reference;

namespace {

WorldBox const kBox = BoxAt({});

/// A widget that writes down what comes through to it.
class Target : public QWidget {
public:
    Target() {
        resize(800, 500);
        setMouseTracking(true); // or Qt delivers no moves without a button
    }

    std::vector<QEvent::Type> heard;

    bool event(QEvent* event) override {
        if (dynamic_cast<QInputEvent*>(event) != nullptr && event->type() != QEvent::ShortcutOverride)
            heard.push_back(event->type());
        return QWidget::event(event);
    }
};

/// Sends input to a window or a widget.
class Hand {
public:
    explicit Hand(QObject& target) : m_target(target) {}

    bool Send(QEvent::Type type, QPointF place, Qt::MouseButton button, Qt::MouseButtons buttons,
              Qt::KeyboardModifiers modifiers = {}) {
        QMouseEvent event(type, place, place, place, button, buttons, modifiers);
        return QCoreApplication::sendEvent(&m_target, &event);
    }

    void Drag(QPointF from, QPointF to, Qt::MouseButton button, Qt::KeyboardModifiers modifiers = {}) {
        Send(QEvent::MouseButtonPress, from, button, button, modifiers);
        Send(QEvent::MouseMove, 0.5 * (from + to), Qt::NoButton, button, modifiers);
        Send(QEvent::MouseMove, to, Qt::NoButton, button, modifiers);
        Send(QEvent::MouseButtonRelease, to, button, Qt::NoButton, modifiers);
    }

    bool Wheel(QPointF place, QPoint angle, QPoint pixels = {}, Qt::KeyboardModifiers modifiers = {}) {
        QWheelEvent event(place, place, pixels, angle, Qt::NoButton, modifiers,
                          pixels.isNull() ? Qt::NoScrollPhase : Qt::ScrollUpdate, false);
        return QCoreApplication::sendEvent(&m_target, &event);
    }

    bool Press(int key, Qt::KeyboardModifiers modifiers = {}, bool isRepeated = false) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, QString(), isRepeated);
        event.ignore();
        QCoreApplication::sendEvent(&m_target, &event);
        return event.isAccepted();
    }

    bool Gesture(Qt::NativeGestureType type, QPointF place, double value, QPointF delta = {}) {
        QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, place, place, place,
                                  value, delta);
        return QCoreApplication::sendEvent(&m_target, &event);
    }

private:
    QObject& m_target;
};

bool HasTimer(QObject& object) {
    return !QAbstractEventDispatcher::instance()->registeredTimers(&object).isEmpty();
}

} // namespace

class CameraControllerTest : public ContextFixture {
protected:
    CameraControllerTest() {
        m_target.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&m_target));
        m_controller.SetSceneBox(kBox);
        m_controller.SetTransitionTime(std::chrono::milliseconds(0));
        m_controller.Fit();
        m_target.heard.clear();
        m_changes.clear();
    }

    QRectF Viewport() const { return m_controller.GetViewport(); }
    OrbitCamera const& GetOrbit() const { return std::get<OrbitCamera>(m_controller.GetCamera()); }
    PlanarCamera const& GetPlanar() const { return std::get<PlanarCamera>(m_controller.GetCamera()); }
    FlyCamera const& GetFly() const { return std::get<FlyCamera>(m_controller.GetCamera()); }

    Target m_target;
    CameraController m_controller{&m_target};
    QSignalSpy m_changes{&m_controller, &CameraController::cameraChanged};
    Hand m_hand{m_target};
};

// ---- The mouse.

TEST_F(CameraControllerTest, DraggingWithTheLeftButtonOrbits) {
    OrbitCamera expected = GetOrbit();
    expected.Orbit(0.4 * 100.0, -0.4 * 20.0);
    m_hand.Drag({300, 200}, {400, 220}, Qt::LeftButton);
    EXPECT_NEAR(GetOrbit().GetAzimuth(), expected.GetAzimuth(), 1e-9);
    EXPECT_NEAR(GetOrbit().GetElevation(), expected.GetElevation(), 1e-9);
    EXPECT_EQ(GetOrbit().GetTarget(), expected.GetTarget());
    EXPECT_EQ(m_changes.count(), 2);
}

TEST_F(CameraControllerTest, OtherButtonsAndShiftPan) {
    std::pair<Qt::MouseButton, Qt::KeyboardModifier> const rows[] = {{Qt::RightButton, Qt::NoModifier},
                                                                     {Qt::MiddleButton, Qt::NoModifier},
                                                                     {Qt::LeftButton, Qt::ShiftModifier}};
    for (auto const& [button, modifier] : rows) {
        WorldPosition const grabbed = GetOrbit().ComputeWorldPosition({300, 200}, Viewport());
        m_hand.Drag({300, 200}, {410, 170}, button, modifier);
        ExpectNear(GetOrbit().ComputeWorldPosition({410, 170}, Viewport()) - grabbed, {}, 1e-9);
    }
}

TEST_F(CameraControllerTest, DraggingWithCtrlZoomsAboutWhereItBegan) {
    double const distance = GetOrbit().GetDistance();
    WorldPosition const grabbed = GetOrbit().ComputeWorldPosition({300, 200}, Viewport());
    m_hand.Drag({300, 200}, {300, 160}, Qt::LeftButton, Qt::ControlModifier); // two steps
    EXPECT_NEAR(GetOrbit().GetDistance(), distance / (1.15 * 1.15), 1e-9);
    ExpectNear(GetOrbit().ComputeWorldPosition({300, 200}, Viewport()) - grabbed, {}, 1e-9);
}

TEST_F(CameraControllerTest, DraggingWithCtrlAndShiftRollsAboutTheMiddle) {
    // From above the middle to the right of it: a quarter, clockwise.
    m_hand.Drag({400, 150}, {500, 250}, Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NEAR(GetOrbit().GetRoll(), 90.0, 1e-9);
}

TEST_F(CameraControllerTest, PressesMovesAndReleasesReachTheTarget) {
    m_hand.Drag({300, 200}, {400, 220}, Qt::LeftButton);
    EXPECT_THAT(m_target.heard, testing::ElementsAre(QEvent::MouseButtonPress, QEvent::MouseMove,
                                                     QEvent::MouseMove, QEvent::MouseButtonRelease));
}

TEST_F(CameraControllerTest, AMoveWithoutTheButtonEndsADragWhoseReleaseWentElsewhere) {
    m_hand.Send(QEvent::MouseButtonPress, {300, 200}, Qt::LeftButton, Qt::LeftButton);
    m_hand.Send(QEvent::MouseMove, {310, 200}, Qt::NoButton, Qt::NoButton);
    m_hand.Send(QEvent::MouseMove, {320, 200}, Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(m_changes.count(), 0);
}

TEST_F(CameraControllerTest, ADoubleClickFits) {
    OrbitCamera const fitted = GetOrbit();
    m_hand.Drag({300, 200}, {400, 220}, Qt::RightButton);
    EXPECT_NE(GetOrbit(), fitted);
    EXPECT_TRUE(m_hand.Send(QEvent::MouseButtonDblClick, {300, 200}, Qt::LeftButton, Qt::LeftButton));
    EXPECT_EQ(GetOrbit(), fitted);
}

// ---- The wheel and the trackpad.

TEST_F(CameraControllerTest, TheWheelZoomsAboutThePointer) {
    double const distance = GetOrbit().GetDistance();
    WorldPosition const grabbed = GetOrbit().ComputeWorldPosition({123, 45}, Viewport());
    EXPECT_TRUE(m_hand.Wheel({123, 45}, {0, 120}));
    EXPECT_TRUE(m_hand.Wheel({123, 45}, {0, 60})); // half a notch
    EXPECT_NEAR(GetOrbit().GetDistance(), distance / std::pow(1.15, 1.5), 1e-9);
    ExpectNear(GetOrbit().ComputeWorldPosition({123, 45}, Viewport()) - grabbed, {}, 1e-9);
    EXPECT_THAT(m_target.heard, testing::IsEmpty());
}

TEST_F(CameraControllerTest, ScrollingByPixelsPansOrZooms) {
    WorldPosition const grabbed = GetOrbit().ComputeWorldPosition({123, 45}, Viewport());
    m_hand.Wheel({123, 45}, {60, -40}, {30, -20});
    ExpectNear(GetOrbit().ComputeWorldPosition({153, 25}, Viewport()) - grabbed, {}, 1e-9);
    double const distance = GetOrbit().GetDistance();
    m_hand.Wheel({123, 45}, {0, 120}, {0, 30}, Qt::ControlModifier);
    EXPECT_NEAR(GetOrbit().GetDistance(), distance / 1.15, 1e-9);
}

TEST_F(CameraControllerTest, TrackpadGesturesZoomPanAndRoll) {
    double const distance = GetOrbit().GetDistance();
    WorldPosition const grabbed = GetOrbit().ComputeWorldPosition({123, 45}, Viewport());
    m_hand.Gesture(Qt::ZoomNativeGesture, {123, 45}, 0.25);
    EXPECT_NEAR(GetOrbit().GetDistance(), distance / 1.25, 1e-9);
    ExpectNear(GetOrbit().ComputeWorldPosition({123, 45}, Viewport()) - grabbed, {}, 1e-9);
    m_hand.Gesture(Qt::PanNativeGesture, {123, 45}, 0.0, {10, 20});
    ExpectNear(GetOrbit().ComputeWorldPosition({133, 65}, Viewport()) - grabbed, {}, 1e-9);
    m_hand.Gesture(Qt::RotateNativeGesture, {123, 45}, 15.0);
    EXPECT_EQ(GetOrbit().GetRoll(), 0.0) << "unless it is asked for";
    CameraBindings bindings = m_controller.GetBindings();
    bindings.twistRolls = true;
    m_controller.SetBindings(bindings);
    m_hand.Gesture(Qt::RotateNativeGesture, {123, 45}, 15.0);
    EXPECT_NEAR(GetOrbit().GetRoll(), 15.0, 1e-9);
    m_hand.Gesture(Qt::SmartZoomNativeGesture, {123, 45}, 1.0);
    OrbitCamera fitted = GetOrbit();
    fitted.Fit(kBox, Viewport().width() / Viewport().height());
    EXPECT_EQ(GetOrbit(), fitted);
}

// ---- Fingers, as the window system tells of them.

class CameraTouchTest : public CameraControllerTest {
protected:
    std::unique_ptr<QPointingDevice> const m_screen{QTest::createTouchDevice()}; // nobody else owns it
};

TEST_F(CameraTouchTest, OneFingerOrbits) {
    double const azimuth = GetOrbit().GetAzimuth();
    QTest::touchEvent(&m_target, m_screen.get()).press(0, {300, 200});
    QTest::touchEvent(&m_target, m_screen.get()).move(0, {350, 200});
    QTest::touchEvent(&m_target, m_screen.get()).release(0, {350, 200});
    EXPECT_NEAR(GetOrbit().GetAzimuth(), azimuth - 20.0, 1e-9);
    QTest::touchEvent(&m_target, m_screen.get()).press(0, {100, 100});
    QTest::touchEvent(&m_target, m_screen.get()).release(0, {100, 100});
    EXPECT_EQ(m_changes.count(), 1);
    EXPECT_THAT(m_target.heard, testing::IsEmpty()); // no mouse is made of it
}

TEST_F(CameraTouchTest, WhatIsUnderTwoFingersStaysUnderThem) {
    CameraBindings bindings = m_controller.GetBindings();
    bindings.twistRolls = true;
    m_controller.SetBindings(bindings);
    WorldPosition const first = GetOrbit().ComputeWorldPosition({300, 200}, Viewport());
    WorldPosition const second = GetOrbit().ComputeWorldPosition({400, 220}, Viewport());
    QTest::touchEvent(&m_target, m_screen.get()).press(0, {300, 200}).press(1, {400, 220});
    QTest::touchEvent(&m_target, m_screen.get()).move(0, {290, 190}).move(1, {480, 250});
    QTest::touchEvent(&m_target, m_screen.get()).move(0, {310, 120}).move(1, {380, 300});
    ExpectNear(GetOrbit().ComputeWorldPosition({310, 120}, Viewport()) - first, {}, 1e-9);
    ExpectNear(GetOrbit().ComputeWorldPosition({380, 300}, Viewport()) - second, {}, 1e-9);
    OrbitCamera const pinched = GetOrbit();
    QTest::touchEvent(&m_target, m_screen.get()).release(0, {310, 120}).stationary(1);
    QTest::touchEvent(&m_target, m_screen.get()).release(1, {380, 300});
    EXPECT_EQ(GetOrbit(), pinched);
}

// ---- Keys.

TEST_F(CameraControllerTest, ArrowsOrbitAndWithShiftPan) {
    OrbitCamera const start = GetOrbit();
    EXPECT_TRUE(m_hand.Press(Qt::Key_Left));
    EXPECT_NEAR(GetOrbit().GetAzimuth(), start.GetAzimuth() + 7.5, 1e-9);
    EXPECT_TRUE(m_hand.Press(Qt::Key_Up, Qt::KeypadModifier));
    EXPECT_NEAR(GetOrbit().GetElevation(), start.GetElevation() - 7.5, 1e-9);
    WorldPosition const middle = GetOrbit().GetTarget();
    EXPECT_TRUE(m_hand.Press(Qt::Key_Right, Qt::ShiftModifier));
    QPointF const moved = Viewport().center() + QPointF(0.05 * Viewport().height(), 0.0);
    ExpectNear(GetOrbit().ComputeWorldPosition(moved, Viewport()) - middle, {}, 1e-9);
    EXPECT_TRUE(m_hand.Press(Qt::Key_Plus));
    EXPECT_NEAR(GetOrbit().GetDistance(), start.GetDistance() / 1.15, 1e-9);
    EXPECT_TRUE(m_hand.Press(Qt::Key_Right, Qt::ControlModifier));
    EXPECT_NEAR(GetOrbit().GetRoll(), 7.5, 1e-9);
    EXPECT_THAT(m_target.heard, testing::IsEmpty());
}

TEST_F(CameraControllerTest, KeysShowStandardViewsAndTheOtherProjection) {
    m_hand.Press(Qt::Key_5);
    EXPECT_EQ(GetOrbit().ComputeAxes().towardsViewer, (WorldVector{0.0, 0.0, 1.0}));
    m_hand.Press(Qt::Key_P);
    EXPECT_EQ(GetOrbit().GetProjection(), Projection::Parallel);
    m_hand.Press(Qt::Key_P);
    EXPECT_EQ(GetOrbit().GetProjection(), Projection::Perspective);
}

TEST_F(CameraControllerTest, WhatIsNotBoundGoesOnToTheTarget) {
    EXPECT_FALSE(m_hand.Press(Qt::Key_X));
    m_hand.Wheel({10, 10}, {0, 120}, {}, Qt::AltModifier);
    EXPECT_THAT(m_target.heard, testing::ElementsAre(QEvent::KeyPress, QEvent::Wheel));
    EXPECT_EQ(m_changes.count(), 0);
}

TEST_F(CameraControllerTest, BindingsAreATableToChange) {
    CameraBindings bindings;
    bindings.mouse = {{Qt::MiddleButton, Qt::AltModifier, CameraMovement::Orbit}};
    bindings.keys = {{Qt::Key_K, Qt::ControlModifier, CameraCommand::ZoomOut}};
    bindings.doubleClick.reset();
    m_controller.SetBindings(bindings);
    double const distance = GetOrbit().GetDistance();
    m_hand.Drag({300, 200}, {400, 220}, Qt::LeftButton);
    m_hand.Press(Qt::Key_Left);
    m_hand.Send(QEvent::MouseButtonDblClick, {300, 200}, Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(m_changes.count(), 0);
    m_hand.Drag({300, 200}, {400, 220}, Qt::MiddleButton, Qt::AltModifier);
    EXPECT_EQ(m_changes.count(), 2);
    m_hand.Press(Qt::Key_K, Qt::ControlModifier);
    EXPECT_NEAR(GetOrbit().GetDistance(), 1.15 * distance, 1e-9);
}

// ---- Other cameras.

TEST_F(CameraControllerTest, APlanarCameraPansWhereOthersOrbit) {
    PlanarCamera camera;
    camera.Fit(kBox);
    m_controller.SetCamera(camera);
    WorldPosition const grabbed = camera.ComputeWorldPosition({300, 200}, Viewport());
    m_hand.Drag({300, 200}, {400, 220}, Qt::LeftButton);
    ExpectNear(GetPlanar().ComputeWorldPosition({400, 220}, Viewport()) - grabbed, {}, 1e-9);
    m_hand.Wheel({400, 220}, {0, 240});
    EXPECT_NEAR(GetPlanar().GetHeight(), camera.GetHeight() / (1.15 * 1.15), 1e-9);
    ExpectNear(GetPlanar().ComputeWorldPosition({400, 220}, Viewport()) - grabbed, {}, 1e-9);
    m_hand.Press(Qt::Key_5); // it has but one view
    m_hand.Press(Qt::Key_Home);
    EXPECT_EQ(GetPlanar(), camera);
}

TEST_F(CameraControllerTest, AFlyCameraLooksAroundAndGoes) {
    m_controller.SetCamera(FlyCamera());
    // The scene follows the pointer: half of the picture's height is half of the field of view.
    m_hand.Drag({400, 125}, {400, 375}, Qt::LeftButton);
    EXPECT_NEAR(GetFly().GetPitch(), 25.0, 1e-9);
    EXPECT_EQ(GetFly().GetPosition(), WorldPosition());
    m_hand.Press(Qt::Key_Left);
    EXPECT_NEAR(GetFly().GetHeading(), -7.5, 1e-9);
    WorldPosition const ahead = GetFly().ComputeWorldPosition({123, 45}, Viewport());
    WorldVector const way = ahead - GetFly().GetPosition();
    m_hand.Wheel({123, 45}, {0, 120});
    ExpectNear(GetFly().GetPosition() - WorldPosition(), GetFly().GetStepLength() / LengthOf(way) * way,
               1e-9);
    WorldPosition const before = GetFly().GetPosition();
    m_hand.Press(Qt::Key_Right, Qt::ShiftModifier);
    ExpectNear(GetFly().GetPosition() - before, GetFly().GetStepLength() * GetFly().ComputeAxes().right,
               1e-9);
}

// ---- Where the picture is.

TEST_F(CameraControllerTest, ItStaysFittedUntilItIsMoved) {
    m_target.resize(300, 500);
    QCoreApplication::processEvents();
    OrbitCamera expected = GetOrbit();
    expected.Fit(kBox, 300.0 / 500.0);
    EXPECT_EQ(GetOrbit(), expected);
    m_hand.Wheel({100, 100}, {0, 120});
    OrbitCamera const moved = GetOrbit();
    m_target.resize(600, 500);
    QCoreApplication::processEvents();
    EXPECT_EQ(GetOrbit(), moved);
}

TEST_F(CameraControllerTest, AViewportIsAllThatItLooksAt) {
    m_controller.SetViewport(QRectF(400, 0, 400, 500));
    m_changes.clear();
    m_hand.Drag({100, 200}, {700, 220}, Qt::LeftButton);
    m_hand.Wheel({100, 200}, {0, 120});
    m_hand.Gesture(Qt::ZoomNativeGesture, {100, 200}, 0.25);
    m_hand.Send(QEvent::MouseButtonDblClick, {100, 200}, Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(m_changes.count(), 0);
    m_hand.Drag({500, 200}, {100, 220}, Qt::LeftButton); // may end elsewhere
    EXPECT_EQ(m_changes.count(), 2);
}

TEST_F(CameraControllerTest, AppliesTheSceneBox) {
    BGFXViewContext view = MakeView();
    m_controller.Apply(view, ViewOrigin::Focus);
    BGFXViewContext expected = MakeView();
    GetOrbit().Apply(expected, kBox, ViewOrigin::Focus);
    EXPECT_EQ(view.GetViewMatrix(), expected.GetViewMatrix());
    EXPECT_EQ(view.GetProjectionMatrix(), expected.GetProjectionMatrix());
    EXPECT_EQ(view.GetOrigin(), GetOrbit().GetTarget());
}

TEST_F(CameraControllerTest, WorksOnWindowsAndGoesWithThem) {
    QPointer<CameraController> controller;
    {
        QWindow window;
        window.resize(800, 500);
        controller = new CameraController(&window);
        Hand hand(window);
        double const distance = std::get<OrbitCamera>(controller->GetCamera()).GetDistance();
        hand.Wheel({123, 45}, {0, 120});
        EXPECT_NEAR(std::get<OrbitCamera>(controller->GetCamera()).GetDistance(), distance / 1.15, 1e-9);
    }
    EXPECT_TRUE(controller.isNull());
    QObject other; // without a size, nothing moves
    CameraController lost(&other);
    Hand(other).Drag({1, 1}, {2, 2}, Qt::LeftButton);
    lost.SetSceneBox(kBox);
    lost.Fit();
    EXPECT_EQ(lost.GetCamera(), Camera(OrbitCamera()));
}

// ---- Transitions.

class CameraTransitionTest : public CameraControllerTest {
protected:
    CameraTransitionTest() {
        m_controller.SetTransitionTime(std::chrono::milliseconds(100));
        m_goal = GetOrbit();
        m_goal.Orbit(40.0, 0.0);
        m_goal.SetDistance(3.0 * m_goal.GetDistance());
    }

    OrbitCamera m_goal;
};

TEST_F(CameraTransitionTest, ArrivesExactlyByWayOfWhatLiesBetween) {
    EXPECT_FALSE(HasTimer(m_controller));
    OrbitCamera const start = GetOrbit();
    bool isBetween = false;
    QObject::connect(&m_controller, &CameraController::cameraChanged, [&] {
        double const distance = GetOrbit().GetDistance();
        EXPECT_GE(distance, start.GetDistance());
        EXPECT_LE(distance, m_goal.GetDistance() * (1.0 + 1e-12));
        isBetween = isBetween || (distance > start.GetDistance() && distance < m_goal.GetDistance());
    });
    m_controller.MoveTo(m_goal);
    EXPECT_TRUE(m_controller.IsInTransition());
    EXPECT_EQ(GetOrbit(), start);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !m_controller.IsInTransition(); }));
    EXPECT_EQ(GetOrbit(), m_goal);
    EXPECT_TRUE(isBetween);
    EXPECT_FALSE(HasTimer(m_controller)) << "something runs while nothing moves";
}

TEST_F(CameraTransitionTest, AnyKeyButtonWheelOrGestureEndsItWhereItIs) {
    std::vector<std::function<void()>> const interventions = {
        [this] { m_hand.Press(Qt::Key_X); },
        [this] { m_hand.Send(QEvent::MouseButtonPress, {9, 9}, Qt::BackButton, Qt::BackButton); },
        [this] { m_hand.Wheel({9, 9}, {0, 120}, {}, Qt::AltModifier); },
        [this] { m_hand.Gesture(Qt::BeginNativeGesture, {9, 9}, 0.0); },
    };
    for (auto const& intervene : interventions) {
        m_controller.SetTransitionTime(std::chrono::seconds(10));
        m_controller.MoveTo(m_goal);
        ASSERT_TRUE(m_controller.IsInTransition());
        OrbitCamera const before = GetOrbit();
        ASSERT_TRUE(QTest::qWaitFor([&] { return GetOrbit() != before; }));
        OrbitCamera const there = GetOrbit();
        intervene();
        EXPECT_FALSE(m_controller.IsInTransition());
        EXPECT_FALSE(HasTimer(m_controller));
        EXPECT_EQ(GetOrbit(), there);
        EXPECT_NE(GetOrbit(), m_goal);
    }
}

TEST_F(CameraTransitionTest, WhereItWasEndedItStaysWhenTheSizeChanges) {
    m_hand.Drag({300, 200}, {400, 220}, Qt::RightButton);
    m_controller.Fit();
    ASSERT_TRUE(m_controller.IsInTransition());
    m_hand.Press(Qt::Key_X);
    OrbitCamera const there = GetOrbit();
    m_target.resize(300, 500);
    QCoreApplication::processEvents();
    EXPECT_EQ(GetOrbit(), there);
}

TEST_F(CameraTransitionTest, AKeyThatIsHeldDoesNotBeginItAgain) {
    m_hand.Drag({300, 200}, {400, 220}, Qt::RightButton);
    m_hand.Press(Qt::Key_F);
    ASSERT_TRUE(m_controller.IsInTransition());
    EXPECT_TRUE(QTest::qWaitFor([this] {
        m_hand.Press(Qt::Key_F, {}, true);
        return !m_controller.IsInTransition();
    }));
}

TEST_F(CameraTransitionTest, AnEqualCameraChangesNothingAndAnotherEndsIt) {
    m_controller.MoveTo(m_goal);
    m_controller.SetCamera(m_controller.GetCamera());
    EXPECT_TRUE(m_controller.IsInTransition());
    m_controller.SetCamera(FlyCamera());
    EXPECT_FALSE(m_controller.IsInTransition());
    EXPECT_EQ(m_controller.GetCamera(), Camera(FlyCamera()));
}

TEST_F(CameraTransitionTest, IsAtOnceWhereNobodySeesIt) {
    m_target.hide();
    m_controller.MoveTo(m_goal);
    EXPECT_FALSE(m_controller.IsInTransition());
    EXPECT_EQ(GetOrbit(), m_goal);
}
