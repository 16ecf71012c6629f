// The image comparison itself: a test that compares pictures is worth what this is worth.
#include "ImageComparison.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest-spi.h>

using namespace zarvex::testing;

namespace {

QImage GrayImage(int level) {
    return FilledImage(QSize(4, 4), QColor(level, level, level));
}

QString MismatchFile(char const* kind) {
    return QDir::current().filePath(
        QString("image-mismatches/ImageComparisonTest.%1-%2.png")
            .arg(::testing::UnitTest::GetInstance()->current_test_info()->name(), kind));
}

} // namespace

TEST(ImageComparisonTest, EqualImagesDifferByNothing) {
    ImageDifference const difference = Compare(GrayImage(100), GrayImage(100));
    EXPECT_EQ(difference.maximum, 0);
    EXPECT_EQ(difference.mean, 0.0);
    EXPECT_TRUE(Matches(GrayImage(100), GrayImage(100), kExact));
}

TEST(ImageComparisonTest, MeasuresOneChannelOfOnePixel) {
    for (QColor const& color : {QColor(103, 100, 100), QColor(100, 97, 100), QColor(100, 100, 100, 252)}) {
        QImage image = GrayImage(100);
        image.setPixelColor(2, 1, color);
        ImageDifference const difference = Compare(image, GrayImage(100));
        EXPECT_EQ(difference.maximum, 3);
        EXPECT_DOUBLE_EQ(difference.mean, 3.0 / 64.0);
        EXPECT_TRUE(Matches(image, GrayImage(100), Tolerance{3, 0}));
    }
}

TEST(ImageComparisonTest, OneStepEverywhereIsBeyondTheMean) {
    EXPECT_DOUBLE_EQ(Compare(GrayImage(101), GrayImage(100)).mean, 0.75);
    EXPECT_FALSE(Matches(GrayImage(101), GrayImage(100)));
    EXPECT_TRUE(Matches(GrayImage(101), GrayImage(100), Tolerance{1, 1}));
}

TEST(ImageComparisonTest, ImagesOfOtherSizeNeverMatch) {
    EXPECT_FALSE(Matches(GrayImage(100), FilledImage(QSize(4, 5), QColor(100, 100, 100))));
}

TEST(ImageComparisonTest, MismatchLeavesActualExpectedAndDifferenceBehind) {
    QImage actual = GrayImage(100);
    actual.setPixelColor(1, 2, QColor(100, 102, 100));
    ::testing::AssertionResult const result = Matches(actual, GrayImage(100));
    EXPECT_FALSE(result);
    for (char const* const kind : {"actual", "expected", "difference"}) {
        EXPECT_NE(std::string(result.message()).find(MismatchFile(kind).toStdString()), std::string::npos);
        EXPECT_FALSE(QImage(MismatchFile(kind)).isNull());
    }
    EXPECT_EQ(QImage(MismatchFile("actual")).pixelColor(1, 2), QColor(100, 102, 100));
    EXPECT_EQ(QImage(MismatchFile("expected")).pixelColor(1, 2), QColor(100, 100, 100));
    EXPECT_EQ(QImage(MismatchFile("difference")).pixelColor(1, 2), QColor(0, 128, 0));
    EXPECT_EQ(QImage(MismatchFile("difference")).pixelColor(0, 0), QColor(0, 0, 0));
    for (char const* const kind : {"actual", "expected", "difference"})
        QFile::remove(MismatchFile(kind));
}
