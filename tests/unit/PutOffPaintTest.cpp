// What is painted while a frame is in flight, and what waits until it is finished.
#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/FrameNotifier.h>
#include <zx3DQt/Library.h>

#include <zx3D/Context.h>

#include <Fixtures.h>
#include <TopLevels.h>

#include <QDeadlineTimer>
#include <QExposeEvent>
#include <QPainter>
#include <QPixmap>
#include <QSignalSpy>
#include <QThread>

#include <memory>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;

namespace {

class PutOffPaintTest : public LibraryFixture {
protected:
    void TearDown() override {
        Hold(false);
        LibraryFixture::TearDown();
    }

    static void Hold(bool holds) {
        Configure([holds](auto& settings) { settings.holdsFrames = holds; });
    }

    /// Submits a frame that stays in flight.
    static void PutFrameInFlight() {
        Hold(true);
        zx3D::Context::SubmitFrame();
        ASSERT_TRUE(zx3D::Context::IsFrameInFlight());
    }

    /// Lets it be finished and what waits for it happen.
    static void FinishFrames() {
        QSignalSpy const finished(&FrameNotifier::Get(), &FrameNotifier::frameFinished);
        Hold(false);
        QDeadlineTimer const patience(10'000);
        while ((finished.isEmpty() || zx3D::Context::IsFrameInFlight()) && !patience.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        ASSERT_FALSE(finished.isEmpty());
        Settle();
    }
};

/// Notes when the application would draw.
class Window : public BGFXWindow {
public:
    bool event(QEvent* event) override {
        updates += event->type() == QEvent::UpdateRequest ? 1 : 0;
        if (event->type() == QEvent::UpdateRequest && submits)
            zx3D::Context::SubmitFrame();
        return BGFXWindow::event(event);
    }

    void exposeEvent(QExposeEvent* event) override {
        BGFXWindow::exposeEvent(event);
        ++(isExposed() ? exposures : hidings);
    }

    int updates = 0;
    int exposures = 0;
    int hidings = 0;
    bool submits = false;
};

class Widget : public BGFXNativeWidget {
public:
    Widget() { resize(200, 100); }

    void paintEvent(QPaintEvent* event) override {
        BGFXNativeWidget::paintEvent(event);
        ++paints;
        if (submits)
            zx3D::Context::SubmitFrame();
    }

    int paints = 0;
    bool submits = false;
};

class PutOffWindowTest : public PutOffPaintTest {
protected:
    void SetUp() override {
        PutOffPaintTest::SetUp();
        m_window->resize(200, 100);
        m_window->show();
        Settle();
        ASSERT_TRUE(m_window->isExposed());
        Forget();
    }

    void TearDown() override {
        m_window.reset();
        PutOffPaintTest::TearDown();
    }

    void Forget() { m_window->updates = m_window->exposures = m_window->hidings = 0; }

    void Send(QEvent&& event) { QCoreApplication::sendEvent(m_window.get(), &event); }

    std::unique_ptr<Window> m_window = std::make_unique<Window>();
};

class PutOffWidgetTest : public PutOffPaintTest {
protected:
    void SetUp() override {
        PutOffPaintTest::SetUp();
        m_top->resize(300, 200);
        m_widget->setParent(m_top.get());
        m_top->show();
        Settle();
        m_widget->paints = 0;
    }

    void TearDown() override {
        m_top.reset();
        PutOffPaintTest::TearDown();
    }

    std::unique_ptr<QWidget> m_top = std::make_unique<QWidget>();
    Widget* m_widget = new Widget;
};

} // namespace

// The notice.

TEST_F(PutOffPaintTest, AFinishedFrameIsToldOnTheGuiThreadAndFromTheEventLoop) {
    std::vector<quint32> numbers;
    QObject const receiver;
    QObject::connect(&FrameNotifier::Get(), &FrameNotifier::frameFinished, &receiver, [&](quint32 number) {
        EXPECT_EQ(QThread::currentThread(), qApp->thread());
        numbers.push_back(number);
    });
    PutFrameInFlight();
    Settle();
    numbers.clear();
    std::uint32_t const last = zx3D::Context::SubmitFrame();
    Hold(false);
    while (zx3D::Context::IsFrameInFlight())
        QThread::msleep(1);
    QThread::msleep(20);
    EXPECT_THAT(numbers, ElementsAre()) << "not while the GUI thread is busy";
    Settle();
    EXPECT_THAT(numbers, ElementsAre(last)) << "both frames as one";
}

TEST_F(PutOffPaintTest, TheNoticeGoesOnInTheNextRun) {
    Shutdown();
    Settle();
    ASSERT_TRUE(Init(false));
    PutFrameInFlight();
    FinishFrames();
}

// The window.

TEST_F(PutOffWindowTest, WithoutAFrameInFlightEventsComeAtOnce) {
    Send(QExposeEvent(QRegion(0, 0, 9, 9)));
    Send(QEvent(QEvent::UpdateRequest));
    EXPECT_EQ(m_window->exposures, 1);
    EXPECT_EQ(m_window->updates, 1);
}

TEST_F(PutOffWindowTest, EventsComeOnceWhenTheFrameIsFinished) {
    PutFrameInFlight();
    for (int i = 0; i < 3; ++i) {
        Send(QExposeEvent(QRegion(0, 0, 9, 9)));
        Send(QEvent(QEvent::UpdateRequest));
    }
    Settle();
    EXPECT_EQ(m_window->exposures, 0);
    EXPECT_EQ(m_window->updates, 0);
    FinishFrames();
    EXPECT_EQ(m_window->exposures, 1);
    EXPECT_EQ(m_window->updates, 1);
}

TEST_F(PutOffWindowTest, APaintThatTheWindowDoesNotKnowComesAsAnExposure) {
    PutFrameInFlight();
    QPaintEvent paint(QRect(0, 0, 9, 9));
    QCoreApplication::sendEvent(m_window.get(), &paint);
    EXPECT_TRUE(paint.isAccepted()) << "or Qt would send an expose event at once";
    FinishFrames();
    EXPECT_EQ(m_window->exposures, 1);
}

TEST_F(PutOffWindowTest, ThatItIsHiddenIsNotPutOff) {
    PutFrameInFlight();
    Send(QExposeEvent(QRegion(0, 0, 9, 9)));
    m_window->hide();
    Settle();
    EXPECT_GE(m_window->hidings, 1);
    FinishFrames();
    EXPECT_EQ(m_window->exposures, 0) << "what was held is of no use any more";
}

TEST_F(PutOffWindowTest, AWindowThatGoesTakesItsEventsAlong) {
    PutFrameInFlight();
    Send(QEvent(QEvent::UpdateRequest));
    m_window.reset();
    FinishFrames();
}

TEST_F(PutOffWindowTest, WhatWaitsAtShutdownIsDelivered) {
    PutFrameInFlight();
    Send(QEvent(QEvent::UpdateRequest));
    Hold(false);
    Shutdown();
    Settle();
    EXPECT_EQ(m_window->updates, 1);
}

// The native widget.

TEST_F(PutOffWidgetTest, HoweverOftenItIsAskedItPaintsOnceWhenTheFrameIsFinished) {
    PutFrameInFlight();
    for (int i = 0; i < 3; ++i) {
        m_widget->update();
        Settle();
    }
    EXPECT_EQ(m_widget->paints, 0);
    FinishFrames();
    EXPECT_EQ(m_widget->paints, 1);
    m_widget->update();
    Settle();
    EXPECT_EQ(m_widget->paints, 2) << "and goes on as before";
}

TEST_F(PutOffWidgetTest, RepaintGrabRenderAndPicturesAreNotPutOff) {
    PutFrameInFlight();
    m_widget->repaint();
    EXPECT_EQ(m_widget->paints, 1);
    m_widget->grab();
    EXPECT_EQ(m_widget->paints, 2);
    QPixmap pixmap(m_widget->size());
    m_widget->render(&pixmap);
    EXPECT_EQ(m_widget->paints, 3);
    m_widget->RenderPixmap(8, 4);
    EXPECT_EQ(m_widget->paints, 4);
}

TEST_F(PutOffWidgetTest, RepaintIsNotPutOffWhileAnUpdateIs) {
    PutFrameInFlight();
    m_widget->update();
    Settle();
    m_widget->repaint();
    EXPECT_EQ(m_widget->paints, 1);
}

TEST_F(PutOffWidgetTest, AWidgetThatGoesTakesItsPaintAlong) {
    PutFrameInFlight();
    m_widget->update();
    Settle();
    delete m_widget;
    FinishFrames();
}

TEST_F(PutOffWidgetTest, AHiddenWidgetPaintsNothingWhenTheFrameIsFinished) {
    PutFrameInFlight();
    m_widget->update();
    Settle();
    m_widget->hide();
    FinishFrames();
    EXPECT_EQ(m_widget->paints, 0);
}

TEST_F(PutOffWidgetTest, AWindowAndTwoWidgetsThatAlwaysPaintTakeTurns) {
    auto* const second = new Widget;
    second->setParent(m_top.get());
    second->show();
    Window window;
    window.resize(200, 100);
    window.show();
    Settle();
    PutFrameInFlight();
    window.updates = m_widget->paints = second->paints = 0;
    window.submits = m_widget->submits = second->submits = true;
    for (int round = 1; round <= 3; ++round) {
        for (int turn = 0; turn < 3; ++turn) {
            QEvent request(QEvent::UpdateRequest);
            QCoreApplication::sendEvent(&window, &request);
            m_widget->update();
            second->update();
            Settle();
            // One frame is finished, and the next of the three puts one in flight.
            QSignalSpy const finished(&FrameNotifier::Get(), &FrameNotifier::frameFinished);
            int const before = window.updates + m_widget->paints + second->paints;
            Hold(false);
            while (zx3D::Context::IsFrameInFlight())
                QThread::msleep(1);
            Hold(true);
            QDeadlineTimer const patience(10'000);
            while (window.updates + m_widget->paints + second->paints == before && !patience.hasExpired())
                QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        EXPECT_EQ(window.updates, round);
        EXPECT_EQ(m_widget->paints, round);
        EXPECT_EQ(second->paints, round);
    }
    window.submits = m_widget->submits = second->submits = false;
    FinishFrames();
}
