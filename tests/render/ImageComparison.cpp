// Comparing channel by channel, and what is left behind for a person to look at.
#include "ImageComparison.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zarvex::testing {

namespace {

constexpr int kChannels = 4;

/// Applies a function to each pair of bytes of two images of one size and of Format_RGBA8888.
template<typename Function>
void ForEachChannel(QImage const& first, QImage const& second, Function function) {
    for (int y = 0; y < first.height(); ++y) {
        uchar const* const a = first.constScanLine(y);
        uchar const* const b = second.constScanLine(y);
        for (int i = 0; i < first.width() * kChannels; ++i)
            function(i, y, a[i], b[i]);
    }
}

QImage ToRgba(QImage const& image) {
    return image.convertToFormat(QImage::Format_RGBA8888);
}

/// Differences of red, green and blue as colour, a difference of alpha added to all three; stretched, so that
/// a single step is visible.
QImage DifferenceImage(QImage const& actual, QImage const& expected) {
    constexpr int visibleStep = 64;
    QImage image = FilledImage(actual.size(), Qt::black);
    ForEachChannel(ToRgba(actual), ToRgba(expected), [&](int i, int y, int a, int b) {
        uchar* const pixel = image.scanLine(y) + i / kChannels * kChannels;
        int const step = std::min(std::abs(a - b) * visibleStep, 255);
        bool const isAlpha = i % kChannels == kChannels - 1;
        for (int channel = 0; channel < kChannels - 1; ++channel) {
            if (isAlpha || channel == i % kChannels)
                pixel[channel] = static_cast<uchar>(std::max<int>(pixel[channel], step));
        }
    });
    return image;
}

QString CurrentTestName() {
    ::testing::TestInfo const& test = *::testing::UnitTest::GetInstance()->current_test_info();
    return QString("%1.%2").arg(test.test_suite_name(), test.name()).replace('/', '-');
}

/// Writes one of the images of a mismatch; returns its path.
std::string Write(QImage const& image, char const* kind) {
    QDir folder = QDir::current();
    folder.mkpath("image-mismatches");
    QString const path = folder.filePath(QString("image-mismatches/%1-%2.png").arg(CurrentTestName(), kind));
    return image.save(path) ? path.toStdString() : "(cannot write " + path.toStdString() + ")";
}

} // namespace

ImageDifference Compare(QImage const& actual, QImage const& expected) {
    ImageDifference difference;
    double sum = 0.0;
    ForEachChannel(ToRgba(actual), ToRgba(expected), [&](int, int, int a, int b) {
        difference.maximum = std::max(difference.maximum, std::abs(a - b));
        sum += std::abs(a - b);
    });
    difference.mean = sum / std::max(actual.width() * actual.height() * kChannels, 1);
    return difference;
}

int ColorDistance(QColor const& a, QColor const& b) {
    return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue()) +
           std::abs(a.alpha() - b.alpha());
}

int CountDifferences(QImage const& actual, QImage const& expected) {
    int count = 0;
    for (int y = 0; y < actual.height(); ++y) {
        for (int x = 0; x < actual.width(); ++x)
            count += actual.pixel(x, y) != expected.pixel(x, y) ? 1 : 0;
    }
    return count;
}

::testing::AssertionResult Matches(QImage const& actual, QImage const& expected, Tolerance tolerance) {
    if (actual.size() != expected.size()) {
        return ::testing::AssertionFailure()
               << "the image has " << actual.width() << " x " << actual.height() << " pixels instead of "
               << expected.width() << " x " << expected.height();
    }
    ImageDifference const difference = Compare(actual, expected);
    if (difference.maximum <= tolerance.maximum && std::lround(difference.mean) <= tolerance.mean)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "the images differ by at most " << difference.maximum << " (allowed " << tolerance.maximum
           << ") and on average by " << difference.mean << " (allowed " << tolerance.mean << "); see\n  "
           << Write(actual, "actual") << "\n  " << Write(expected, "expected") << "\n  "
           << Write(DifferenceImage(actual, expected), "difference");
}

QImage FilledImage(QSize size, QColor const& color) {
    QImage image(size, QImage::Format_RGBA8888);
    image.fill(color);
    return image;
}

void Fill(QImage& image, QRect const& rect, QColor const& color) {
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x)
            image.setPixelColor(x, y, color);
    }
}

} // namespace zarvex::testing
