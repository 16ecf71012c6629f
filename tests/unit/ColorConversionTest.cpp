// From QColor to the renderer's colours.
#include <ColorConversion.h>

#include <gtest/gtest.h>

using namespace zarvex;
using zx3DQt::QColorToClearColor;
using zx3DQt::QColorToColor;

TEST(ColorConversionTest, WhiteIs255Times0Point003921569InEachChannel) {
    zx3D::Color const white = QColorToColor(QColor(255, 255, 255, 255));
    float const expected = 255.0f * 0.003921569f;
    EXPECT_EQ(white.red, expected);
    EXPECT_EQ(white.green, expected);
    EXPECT_EQ(white.blue, expected);
    EXPECT_EQ(white.alpha, expected);
}

TEST(ColorConversionTest, EveryChannelIsMultipliedAndNotDivided) {
    for (int channel = 0; channel < 256; ++channel) {
        zx3D::Color const color = QColorToColor(QColor(channel, 255 - channel, 0, channel));
        EXPECT_EQ(color.red, float(channel) * 0.003921569f);
        EXPECT_EQ(color.green, float(255 - channel) * 0.003921569f);
        EXPECT_EQ(color.blue, 0.0f);
        EXPECT_EQ(color.alpha, float(channel) * 0.003921569f);
    }
}

TEST(ColorConversionTest, TheClearColourHasRedInTheMostSignificantByte) {
    EXPECT_EQ(QColorToClearColor(QColor(255, 0, 0, 128)), 0xFF000080u);
    EXPECT_EQ(QColorToClearColor(QColor(1, 2, 3, 4)), 0x01020304u);
}
