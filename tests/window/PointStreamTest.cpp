// How a window fares while a batch of points comes in, at once or as a stream.
// ZX3D_FULL_COUNTS=1 in the environment makes it ten million points, and a million a second for 20 s, and
// prints what was measured.
#include "FullCounts.h"
#include "LatencyMeter.h"

#include "harness/LibraryRun.h"
#include "harness/WaitUntil.h"

#include <zx3DQt/BGFXWindow.h>
#include <zx3DQt/FrameNotifier.h>
#include <zx3DQt/PointBatch.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

namespace zarvex::testing {

namespace {

using Points = std::vector<zx3DQt::ColoredPoint>;

Points MakePoints(std::size_t count) {
    Points points;
    points.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        float const angle = 0.001f * static_cast<float>(i);
        float const radius = static_cast<float>(i) / static_cast<float>(count);
        points.push_back({{radius * std::cos(angle), radius * std::sin(angle), 0.0f}, 0x38D4BFFF});
    }
    return points;
}

/// Draws the batch in each frame, and asks for the next one when a frame is finished.
class BatchWindow : public zx3DQt::BGFXWindow {
public:
    BatchWindow() {
        setGeometry(40, 60, 640, 480);
        connect(&zx3DQt::FrameNotifier::Get(), &zx3DQt::FrameNotifier::frameFinished, this, [this] {
            if (recorded > finished)
                ++finished;
            requestUpdate();
        });
    }

    bool event(QEvent* event) override {
        if (event->type() == QEvent::UpdateRequest)
            Draw();
        return BGFXWindow::event(event);
    }

    zx3DQt::PointBatch batch;
    int recorded = 0;
    int finished = 0; ///< of those recorded

private:
    void Draw() {
        zx3DQt::BGFXRenderer& renderer = GetRenderer();
        if (!renderer.StartFrame(GetFrameBuffer()))
            return;
        zx3DQt::BGFXViewContext view(
            1, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x171c26ff, 1.0f, 0});
        view.SetViewport(GetViewport());
        view.SetOrthoProjectionFromRect(QRectF(-1.0, -1.0, 2.0, 2.0), -1.0f, 1.0f, 0.0f);
        view.Submit(GetFrameBuffer());
        batch.Draw(renderer, view);
        renderer.PresentCurrentAndSubmitNextFrame(false);
        ++recorded;
    }
};

/// Handles events until it holds; false after a minute.
bool HandleEventsUntil(std::function<bool()> const& holds) {
    QElapsedTimer clock;
    clock.start();
    while (!holds() && clock.elapsed() < 60'000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    return holds();
}

/// Shown, and with its shaders compiled.
void Open(BatchWindow& window) {
    window.batch.Set(MakePoints(1));
    window.show();
    ASSERT_TRUE(WaitUntil([&] {
        window.requestUpdate();
        return window.finished > 3;
    }));
}

} // namespace

using PointStreamTest = BackendTest;

TEST_P(PointStreamTest, ManyPointsComeInWithoutStoppingTheWindow) {
    BatchWindow window;
    ASSERT_NO_FATAL_FAILURE(Open(window));
    Points const points = MakePoints(IsFull() ? 10'000'000 : 1'000'000);
    if (!IsFull()) // as many frames as ten million points take
        window.GetRenderer().SetUploadBudget(points.size() * sizeof(points[0]) / 10);
    QElapsedTimer clock;
    clock.start();
    window.batch.Set(points);
    double const handingOver = static_cast<double>(clock.nsecsElapsed()) / 1e6;
    LatencyMeter const meter;
    int const before = window.recorded;
    ASSERT_TRUE(HandleEventsUntil([&] { return window.finished > before; }));
    double const firstPicture = static_cast<double>(clock.nsecsElapsed()) / 1e6;
    EXPECT_LT(window.batch.GetUploadedCount(), points.size()) << "all at once would stop the window";
    ASSERT_TRUE(HandleEventsUntil([&] { return window.batch.IsUploaded(); }));
    int const last = window.recorded;
    ASSERT_TRUE(HandleEventsUntil([&] { return window.finished >= last; }));
    double const all = static_cast<double>(clock.nsecsElapsed()) / 1e6;
    std::vector<double> const latencies = meter.Sorted();
    clock.start();
    ASSERT_TRUE(HandleEventsUntil([&] { return window.finished >= last + 5; }));
    std::printf("%zu points: handed over in %.0f ms, first picture after %.0f, all after %.0f in %d frames, "
                "longest pause %.1f ms, then %.0f ms a frame\n",
                points.size(), handingOver, firstPicture, all, last - before, latencies.back(),
                static_cast<double>(clock.nsecsElapsed()) / 5e6);
    EXPECT_GE(last - before, 10);
    EXPECT_LT(Quantile(latencies, 0.9), 50.0);
}

TEST_P(PointStreamTest, AStreamOfPointsKeepsUp) {
    BatchWindow window;
    ASSERT_NO_FATAL_FAILURE(Open(window));
    std::size_t const count = IsFull() ? 1'000'000 : 50'000;
    int const rounds = IsFull() ? 20 : 10;
    Points const points = MakePoints(count);
    LatencyMeter const meter;
    QElapsedTimer clock;
    clock.start();
    for (int round = 0; round < rounds; ++round) {
        window.batch.Append(points);
        qint64 const next = (round + 1) * (IsFull() ? 1000 : 50);
        ASSERT_TRUE(HandleEventsUntil([&] { return clock.elapsed() >= next; }));
    }
    ASSERT_TRUE(HandleEventsUntil([&] { return window.batch.IsUploaded(); }));
    std::vector<double> const latencies = meter.Sorted();
    std::printf("%d times %zu points in %lld ms: 99 %% %.1f, longest pause %.1f ms, %d frames\n", rounds,
                count, static_cast<long long>(clock.elapsed()), Quantile(latencies, 0.99), latencies.back(),
                window.recorded);
    EXPECT_EQ(window.batch.GetCount(), 1 + rounds * count);
    EXPECT_LT(Quantile(latencies, 0.9), 50.0);
}

ZX3D_INSTANTIATE_BACKENDS(PointStreamTest);

} // namespace zarvex::testing
