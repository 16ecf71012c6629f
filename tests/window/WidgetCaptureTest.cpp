// Pictures of widgets, and that nothing is left of taking them.
#include "CornerPicture.h"
#include "CornerWidget.h"

#include "harness/Trouble.h"
#include "render/ImageComparison.h"
#include "render/SharedRun.h"

#include <zx3D/Context.h>

#include <QFile>

#include <cstdlib>
#include <utility>

#include <unistd.h>

namespace zarvex::testing {

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kFreedMemoryStays = true; // the sanitizer keeps it, to notice its use
#else
constexpr bool kFreedMemoryStays = false;
#endif

/// Bytes of memory that the process uses.
long long ResidentMemory() {
    QFile file("/proc/self/statm");
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

/// How the process's memory grew from reading to reading.
class MemoryGrowth {
public:
    void Read() {
        long long const now = ResidentMemory();
        long long const step = now - std::exchange(m_last, now);
        // OpenGL holds more or fewer of bgfx's transient vertex buffers, according to timing, and whole ones.
        if (std::abs(step) < zx3D::Context::GetOptions().transientVertexBufferSize / 2) {
            m_bytes += step;
        } else {
            m_transientBuffers += step > 0 ? 1 : -1;
        }
    }

    long long GetBytes() const { return m_bytes; }
    int CountTransientBuffers() const { return m_transientBuffers; }

private:
    long long m_last = ResidentMemory();
    long long m_bytes = 0;
    int m_transientBuffers = 0;
};

std::pair<int, int> CountHandles() {
    bgfx::frame();
    bgfx::frame(); // destructions wait for the frame that they were recorded in
    bgfx::Stats const& stats = *bgfx::getStats();
    return {stats.numTextures, stats.numFrameBuffers};
}

std::unique_ptr<CornerWidget> ShowWidget(WidgetKind kind) {
    auto widget = CornerWidget::Create(kind, Qt::darkCyan);
    widget->AsQWidget().move(40, 60);
    ShowAndWait(widget->AsQWidget());
    ExpectShown(*widget);
    return widget;
}

} // namespace

using WidgetCaptureTest = SharedRunTest;

TEST_P(WidgetCaptureTest, EqualsTheReferenceUprightAndOpaqueInEverySize) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = ShowWidget(kind);
        for (QSize const size : {QSize(1, 1), QSize(3, 2), QSize(320, 240), QSize(1001, 37), QSize(40, 2000),
                                 QSize(4096, 4096)}) {
            QPixmap const picture = widget->Capture(size.width(), size.height());
            EXPECT_TRUE(Matches(picture.toImage(), CornerPicture(size, widget->GetColor())));
        }
        ExpectShown(*widget);
    });
}

TEST_P(WidgetCaptureTest, AfterEachCaptureTheWidgetShowsItsOwnFrames) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = ShowWidget(kind);
        QRect const viewport = widget->GetTargetViewport();
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(widget->Capture(100 + i, 50).size(), QSize(100 + i, 50));
            EXPECT_EQ(widget->GetTargetViewport(), viewport);
            ExpectShown(*widget);
        }
        widget->Capture(500, 400);
        widget->AsQWidget().resize(250, 190);
        ExpectShown(*widget);
    });
}

TEST_P(WidgetCaptureTest, WorksBeforeTheWidgetIsShownAndWhileItIsHidden) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = CornerWidget::Create(kind, Qt::darkCyan);
        QSize const size(300, 200);
        QImage const expected = CornerPicture(size, widget->GetColor());
        EXPECT_TRUE(Matches(widget->Capture(300, 200).toImage(), expected));
        ShowAndWait(widget->AsQWidget());
        ExpectShown(*widget);
        widget->AsQWidget().hide();
        EXPECT_TRUE(Matches(widget->Capture(300, 200).toImage(), expected));
        ShowAndWait(widget->AsQWidget());
        ExpectShown(*widget);
    });
}

TEST_P(WidgetCaptureTest, ManyInARowLeaveMemoryAndHandlesWhereTheyWere) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = ShowWidget(kind);
        auto const capture = [&widget](int times) {
            for (int i = 0; i < times; ++i)
                ASSERT_EQ(widget->Capture(64, 48).size(), QSize(64, 48));
        };
        capture(100);
        auto const handlesBefore = CountHandles();
        MemoryGrowth growth;
        for (int i = 0; i < (kFreedMemoryStays ? 20 : 100); ++i) { // handles alone show as soon
            capture(10);
            growth.Read();
        }
        EXPECT_EQ(CountHandles(), handlesBefore);
        ExpectShown(*widget);
        if (!kFreedMemoryStays) {
            EXPECT_LT(growth.GetBytes(), 4LL << 20); // the pixels of all the pictures: 12 MB
            EXPECT_LE(growth.CountTransientBuffers(), 3);
        }
        ::testing::Test::RecordProperty(kind == WidgetKind::Native ? "native" : "offscreen",
                                        std::to_string(growth.GetBytes()));
    });
}

TEST_P(WidgetCaptureTest, AlternatingWithFramesOnTheScreenTheyLeaveHandlesWhereTheyWere) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = ShowWidget(kind);
        auto const handlesBefore = CountHandles();
        for (int i = 0; i < 30; ++i) {
            int const before = widget->CountPaints();
            widget->Capture(64, 48);
            ASSERT_TRUE(WaitUntil([&] {
                widget->AsQWidget().update();
                return widget->CountPaints() > before + 1;
            }));
        }
        ExpectShown(*widget);
        EXPECT_EQ(CountHandles(), handlesBefore);
    });
}

TEST_P(WidgetCaptureTest, ImpossibleSizesGiveNothingButAWarning) {
    ForEachKind([](WidgetKind kind) {
        auto const widget = ShowWidget(kind);
        auto const handlesBefore = CountHandles();
        int const paintsBefore = widget->CountPaints();
        for (QSize const size : {QSize(0, 10), QSize(10, 0), QSize(-1, 10), QSize(10, -1), QSize(20000, 10),
                                 QSize(10, 20000), QSize(70000, 10), QSize(65537, 65537)}) {
            EXPECT_TRUE(widget->Capture(size.width(), size.height()).isNull());
            std::vector<std::string> const troubles = Trouble::Take();
            ASSERT_EQ(troubles.size(), 1u);
            EXPECT_NE(troubles[0].find("cannot be rendered"), std::string::npos) << troubles[0];
        }
        EXPECT_EQ(widget->CountPaints(), paintsBefore);
        EXPECT_EQ(CountHandles(), handlesBefore);
        ExpectShown(*widget);
    });
}

ZX3D_INSTANTIATE_BACKENDS(WidgetCaptureTest);

} // namespace zarvex::testing
