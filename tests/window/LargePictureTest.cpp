// Pictures as large as those that are printed. They take seconds and gigabytes.
#include "CornerPicture.h"
#include "CornerWindow.h"

#include "render/SharedRun.h"

#include <QElapsedTimer>

namespace zarvex::testing {

using LargePictureTest = SharedRunTest;

TEST_P(LargePictureTest, HasFourSamplesAndIsRightEverywhere) {
    for (QSize const size : {QSize(4096, 4096), QSize(6851, 4792)}) {
        CornerWindow window(Qt::darkCyan);
        QElapsedTimer clock;
        clock.start();
        QImage const picture = window.RenderPicture({.size = size, .sampleCount = 4}, [&](double) {
            ASSERT_TRUE(window.RecordFrame());
            EXPECT_EQ(window.GetFrameBuffer().GetSampleCount(), 4u);
        });
        RecordProperty("milliseconds" + std::to_string(size.width()), static_cast<int>(clock.elapsed()));
        EXPECT_EQ(FindDifference(picture, size, window.GetColor()), "");
    }
}

ZX3D_INSTANTIATE_BACKENDS(LargePictureTest);

} // namespace zarvex::testing
