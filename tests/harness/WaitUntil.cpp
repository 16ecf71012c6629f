// The event loop, for as long as it takes.
#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>

#include <chrono>
#include <thread>

namespace zarvex::testing {

namespace {

constexpr int kPatienceSeconds = 20;

} // namespace

bool WaitUntil(std::function<bool()> const& condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > kPatienceSeconds * 1000)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

void HandlePendingEvents() {
    QGuiApplication::sync(); // a round trip: what the server sent before has arrived
    QCoreApplication::processEvents();
}

} // namespace zarvex::testing
