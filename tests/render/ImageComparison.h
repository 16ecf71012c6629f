// Comparing pictures.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>

#include <gtest/gtest.h>

namespace zarvex::testing {

/// How far two images differ, in steps of the 8-bit channels, alpha included.
struct ImageDifference {
    int maximum = 0;
    double mean = 0.0;
};

/// The difference of two images of the same size.
ImageDifference Compare(QImage const& actual, QImage const& expected);

/// The sum of the differences of all channels.
int ColorDistance(QColor const& a, QColor const& b);

/// How many pixels of two images of the same size differ.
int CountDifferences(QImage const& actual, QImage const& expected);

/// What difference is let pass. The default suits colours that a GPU interpolates or blends; values that
/// nothing is computed from must be met exactly. A caller with a larger one names the driver that needs it,
/// and why.
struct Tolerance {
    int maximum = 1;
    int mean = 0; ///< compared with the mean difference rounded to whole steps
};

constexpr Tolerance kExact{0, 0};

/// Success when the images have one size and differ by no more than the tolerance. Otherwise writes the
/// actual, the expected and a difference image (black where equal) as PNG files named after the running test
/// into the folder "image-mismatches" of the working directory, and says so in the failure.
::testing::AssertionResult Matches(QImage const& actual, QImage const& expected, Tolerance tolerance = {});

/// An image of one colour.
QImage FilledImage(QSize size, QColor const& color);

/// Sets every pixel of a rectangle.
void Fill(QImage& image, QRect const& rect, QColor const& color);

} // namespace zarvex::testing
