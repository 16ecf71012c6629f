// Mouse and keyboard over the embedded window of a native widget, from the X server to the widget's own
// handlers.
#include "CornerPicture.h"
#include "CornerWidget.h"

#include "harness/InputDevice.h"
#include "render/SharedRun.h"

#include <zx3DQt/BGFXNativeWidget.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QWheelEvent>

#include <X11/keysym.h>

#include <gmock/gmock.h>

#include <vector>

namespace zarvex::testing {

namespace {

using ::testing::ElementsAre;

std::string TextOf(QPoint place) {
    return std::to_string(place.x()) + "," + std::to_string(place.y());
}

std::string TextOf(char const* what, QMouseEvent const& event) {
    return std::string(what) + " " + std::to_string(event.button()) + " at " + TextOf(event.pos());
}

/// Writes down what its handlers are called with.
class InputWidget : public zx3DQt::BGFXNativeWidget {
public:
    std::vector<std::string> TakeLog() { return std::exchange(m_log, {}); }
    bool HasLog() const { return !m_log.empty(); }
    bool HasPainted() const { return m_hasPainted; } ///< and so its embedded window is there

    void paintEvent(QPaintEvent* event) override {
        BGFXNativeWidget::paintEvent(event);
        if (RecordCornerPicture(GetRenderer(), GetFrameBuffer(), GetViewport(), Qt::darkGreen, 1))
            GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        m_hasPainted = true;
    }

    void mousePressEvent(QMouseEvent* event) override { m_log.push_back(TextOf("press", *event)); }
    void mouseReleaseEvent(QMouseEvent* event) override { m_log.push_back(TextOf("release", *event)); }
    void mouseMoveEvent(QMouseEvent* event) override { m_log.push_back("move to " + TextOf(event->pos())); }
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        m_log.push_back(TextOf("double click", *event));
    }
    void wheelEvent(QWheelEvent* event) override {
        m_log.push_back("wheel " + TextOf(event->angleDelta()) + " at " +
                        TextOf(event->position().toPoint()));
    }
    void keyPressEvent(QKeyEvent* event) override { m_log.push_back("key " + event->text().toStdString()); }
    void keyReleaseEvent(QKeyEvent* event) override {
        m_log.push_back("key released " + event->text().toStdString());
    }
    void contextMenuEvent(QContextMenuEvent* event) override {
        m_log.push_back("context menu at " + TextOf(event->pos()));
    }

private:
    std::vector<std::string> m_log;
    bool m_hasPainted = false;
};

} // namespace

class WidgetInputTest : public SharedRunTest {
protected:
    WidgetInputTest() {
        auto* const layout = new QHBoxLayout(&m_window);
        for (QWidget* const widget : {static_cast<QWidget*>(m_before), static_cast<QWidget*>(m_widget),
                                      static_cast<QWidget*>(m_after)})
            layout->addWidget(widget);
        m_widget->setMinimumSize(200, 150);
        m_window.setGeometry(100, 100, 500, 200);
        m_input.MoveTo(QPoint(1500, 1100));
        ShowAndWait(m_window);
        EXPECT_TRUE(WaitUntil([this] { return m_window.isActiveWindow() && m_widget->HasPainted(); }));
    }

    /// Pixels from the widget's top left corner.
    void MoveTo(QPoint place) { m_input.MoveTo(m_widget->mapToGlobal(place)); }

    /// What the widget hears until nothing is left to come.
    std::vector<std::string> WaitForLog() {
        EXPECT_TRUE(WaitUntil([this] { return m_widget->HasLog(); })) << "the widget hears nothing";
        HandlePendingEvents();
        HandlePendingEvents(); // what the first round has led to
        return m_widget->TakeLog();
    }

    /// Moves the pointer to (50, 60) of the widget. By way of other places: entering may not count as a move,
    /// and Qt takes a move to where it saw the pointer last, in an earlier test, for none.
    void PlaceMouse() {
        MoveTo(QPoint(40, 50));
        MoveTo(QPoint(45, 55));
        WaitForMoveTo("45,55");
        MoveTo(QPoint(50, 60));
        WaitForMoveTo("50,60");
    }

    void WaitForMoveTo(std::string const& place) {
        EXPECT_TRUE(WaitUntil([this, &place] {
            std::vector<std::string> const log = m_widget->TakeLog();
            return !log.empty() && log.back() == "move to " + place;
        })) << "the pointer does not arrive at "
            << place;
    }

    void ExpectFocusOn(QWidget* widget) {
        EXPECT_TRUE(WaitUntil([widget] { return QApplication::focusWidget() == widget; }))
            << "the focus is on " << QApplication::focusWidget();
    }

    QWidget m_window;
    QLineEdit* m_before = new QLineEdit;
    InputWidget* m_widget = new InputWidget;
    QLineEdit* m_after = new QLineEdit;
    InputDevice m_input;
};

TEST_P(WidgetInputTest, PressMoveAndReleaseArriveOnceInWidgetCoordinates) {
    PlaceMouse();
    m_input.Press(InputDevice::Left);
    EXPECT_THAT(WaitForLog(), ElementsAre("press 1 at 50,60"));
    MoveTo(QPoint(70, 90));
    EXPECT_THAT(WaitForLog(), ElementsAre("move to 70,90"));
    m_input.Release(InputDevice::Left);
    EXPECT_THAT(WaitForLog(), ElementsAre("release 1 at 70,90"));
}

TEST_P(WidgetInputTest, ADoubleClickArrivesOnce) {
    PlaceMouse();
    // Two clicks with nothing between them, as no hand makes them, the window manager may pass on as one.
    QApplication::setDoubleClickInterval(60000);
    std::vector<std::string> log;
    auto const count = [&log](char const* what) { return std::count(log.begin(), log.end(), what); };
    for (int clicks = 1; clicks <= 2; ++clicks) {
        m_input.Click(InputDevice::Left);
        EXPECT_TRUE(WaitUntil([&] {
            for (std::string const& entry : m_widget->TakeLog())
                log.push_back(entry);
            return count("release 1 at 50,60") == clicks;
        })) << ::testing::PrintToString(log);
    }
    EXPECT_EQ(count("double click 1 at 50,60"), 1) << ::testing::PrintToString(log);
}

TEST_P(WidgetInputTest, AWheelStepArrivesOnce) {
    PlaceMouse();
    m_input.Click(InputDevice::WheelUp);
    EXPECT_THAT(WaitForLog(), ElementsAre("wheel 0,120 at 50,60"));
    m_input.Click(InputDevice::WheelDown);
    EXPECT_THAT(WaitForLog(), ElementsAre("wheel 0,-120 at 50,60"));
}

TEST_P(WidgetInputTest, AClickTakesTheFocusAndKeysArriveOnce) {
    m_before->setFocus();
    PlaceMouse();
    m_input.Click(InputDevice::Left);
    ExpectFocusOn(m_widget);
    m_widget->TakeLog();
    m_input.Type(XK_a);
    EXPECT_THAT(WaitForLog(), ElementsAre("key a", "key released a"));
    EXPECT_TRUE(m_before->text().isEmpty());
}

TEST_P(WidgetInputTest, AClickActivatesTheWindow) {
    QLineEdit other;
    other.setGeometry(700, 500, 200, 50);
    ShowAndWait(other);
    other.activateWindow();
    ASSERT_TRUE(WaitUntil([&other] { return other.isActiveWindow(); }));
    PlaceMouse();
    m_input.Click(InputDevice::Left);
    EXPECT_TRUE(WaitUntil([this] { return m_window.isActiveWindow(); }));
    ExpectFocusOn(m_widget);
    m_widget->TakeLog();
    m_input.Type(XK_b);
    EXPECT_THAT(WaitForLog(), ElementsAre("key b", "key released b"));
}

TEST_P(WidgetInputTest, TabAndShiftTabEnterAndLeave) {
    m_before->setFocus();
    ExpectFocusOn(m_before);
    m_input.Type(XK_Tab);
    ExpectFocusOn(m_widget);
    m_input.Type(XK_Tab);
    ExpectFocusOn(m_after);
    m_input.TypeShifted(XK_Tab);
    ExpectFocusOn(m_widget);
    m_input.TypeShifted(XK_Tab);
    ExpectFocusOn(m_before);
}

TEST_P(WidgetInputTest, TabLeavesAlsoAfterAClick) {
    PlaceMouse();
    m_input.Click(InputDevice::Left);
    ExpectFocusOn(m_widget);
    m_input.Type(XK_Tab);
    ExpectFocusOn(m_after);
    m_input.Type(XK_c);
    EXPECT_TRUE(WaitUntil([this] { return m_after->text() == "c"; }));
}

TEST_P(WidgetInputTest, ARightClickAsksForAContextMenuOnce) {
    PlaceMouse();
    m_input.Click(InputDevice::Right);
    std::vector<std::string> log;
    EXPECT_TRUE(WaitUntil([&] {
        for (std::string const& entry : m_widget->TakeLog())
            log.push_back(entry);
        return log.size() >= 3;
    }));
    HandlePendingEvents();
    EXPECT_FALSE(m_widget->HasLog());
    EXPECT_THAT(log, ::testing::UnorderedElementsAre("press 2 at 50,60", "release 2 at 50,60",
                                                     "context menu at 50,60"));
    EXPECT_EQ(log.front(), "press 2 at 50,60");
}

TEST_P(WidgetInputTest, InputArrivesAfterReparenting) {
    QWidget other;
    auto* const layout = new QHBoxLayout(&other);
    other.setGeometry(700, 100, 400, 300);
    layout->addWidget(m_widget);
    ShowAndWait(other);
    PlaceMouse();
    m_input.Click(InputDevice::Left);
    ExpectFocusOn(m_widget);
    EXPECT_THAT(WaitForLog(), ElementsAre("press 1 at 50,60", "release 1 at 50,60"));
    m_input.Type(XK_a);
    EXPECT_THAT(WaitForLog(), ElementsAre("key a", "key released a"));
}

ZX3D_INSTANTIATE_BACKENDS(WidgetInputTest);

} // namespace zarvex::testing
