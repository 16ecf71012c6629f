// How much may be drawn: many shapes in a call, many calls in a frame, more than there is room for.
#include "RenderTest.h"
#include "Scene.h"
#include "WithoutCompute.h"

#include <harness/Trouble.h>
#include <zx3D/BgfxVersion.h>

#include <array>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr int kWidth = 1000;
constexpr int kHeight = 1000;
constexpr int kPixels = kWidth * kHeight;

class DrawLimitsTest : public RenderTest {
protected:
    DrawLimitsTest() : RenderTest(QSize(kWidth, kHeight)) {}

    void CheckAMillionLargePoints();
    void CheckManyWideLines();
    void CheckFramesOfManyCalls(int calls);
};

/// A colour for the n-th of a million shapes, that of the next ones another.
QColor ColorOf(int n) {
    return QColor(n % 251, n / 251 % 251, 1 + n / (251 * 251));
}

/// Gives the pixels from a first to before a last one their colours, row by row.
void Paint(QImage& image, int first, int last) {
    for (int i = first; i < last; ++i) {
        QColor const color = ColorOf(i);
        uchar* const pixel = image.scanLine(i / kWidth) + i % kWidth * 4;
        pixel[0] = static_cast<uchar>(color.red());
        pixel[1] = static_cast<uchar>(color.green());
        pixel[2] = static_cast<uchar>(color.blue());
    }
}

/// The picture with only the first pixels painted.
QImage PixelsOf(int count) {
    QImage image = FilledImage(QSize(kWidth, kHeight), Qt::black);
    Paint(image, 0, count);
    return image;
}

/// A point at a place within each of the first pixels.
ScenePoints PointsOnPixels(int count, float place) {
    ScenePoints points;
    points.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        bx::Vec3 const position(static_cast<float>(i % kWidth) + place,
                                static_cast<float>(i / kWidth) + place, 0.5f);
        points.emplace_back(position, ToColor(ColorOf(i)));
    }
    return points;
}

/// A mesh of as many vertices as 16-bit indices address, nearly: squares of one colour each, that cover a
/// band of the target from left to right.
struct Band {
    static constexpr int kSquareSize = 2;
    static constexpr int kColumns = kWidth / kSquareSize;
    static constexpr int kRows = 32;
    static constexpr int kHeight = kRows * kSquareSize;
    static constexpr int kVertices = 4 * kColumns * kRows;

    explicit Band(int index) {
        for (int row = index * kRows; row < (index + 1) * kRows; ++row) {
            for (int column = 0; column < kColumns; ++column)
                AppendSquare(column, row);
        }
    }

    void AppendSquare(int column, int row) {
        auto const first = static_cast<std::uint16_t>(vertices.size());
        for (auto const& [right, down] : {std::pair(0, 0), {1, 0}, {0, 1}, {1, 1}}) {
            bx::Vec3 const corner(static_cast<float>((column + right) * kSquareSize),
                                  static_cast<float>((row + down) * kSquareSize), 0.5f);
            vertices.emplace_back(corner, ToColor(ColorOf(row * kColumns + column)));
        }
        for (int const offset : {0, 1, 2, 2, 1, 3})
            indices.push_back(static_cast<std::uint16_t>(first + offset));
    }

    ScenePoints vertices;
    std::vector<std::uint16_t> indices;
};

/// What bands from a first to before a last one cover.
QImage PictureOfBands(int first, int last) {
    QImage image = FilledImage(QSize(kWidth, kHeight), Qt::black);
    for (int y = first * Band::kHeight; y < last * Band::kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x)
            image.setPixelColor(x, y,
                                ColorOf(y / Band::kSquareSize * Band::kColumns + x / Band::kSquareSize));
    }
    return image;
}

/// A thin line on each of the first pixels. It leaves its pixel, but comes to the centre of no other.
SceneLines LinesOnPixels(int count) {
    SceneLines lines;
    lines.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        auto const x = static_cast<float>(i % kWidth);
        float const y = static_cast<float>(i / kWidth) + 0.5f;
        lines.push_back({{x + 0.3f, y, 0.5f}, {x + 1.2f, y, 0.5f}, ToColor(ColorOf(i))});
    }
    return lines;
}

} // namespace

TEST_P(DrawLimitsTest, AMillionPointsInOneCall) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    m_renderer.DrawPoints(view, PointsOnPixels(kPixels, 0.5f));
    EXPECT_TRUE(Matches(Present(), PixelsOf(kPixels), kExact));
}

void DrawLimitsTest::CheckAMillionLargePoints() {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    // Each covers four pixels, three of which are covered again by later ones.
    m_renderer.DrawPoints(view, PointsOnPixels(kPixels, 0.0f), 2);
    QImage const image = Present();
    constexpr QRect neverCoveredAgain(0, 0, kWidth - 1, kHeight - 1);
    QImage const expected = PixelsOf(kPixels).copy(neverCoveredAgain.translated(1, 1));
    EXPECT_TRUE(Matches(image.copy(neverCoveredAgain), expected, kExact));
}

TEST_P(DrawLimitsTest, AMillionLargePointsInOneCall) {
    CheckAMillionLargePoints();
}

TEST_P(DrawLimitsTest, AMillionLargePointsInOneCallWithoutCompute) {
    WithoutCompute const withoutCompute;
    CheckAMillionLargePoints();
}

TEST_P(DrawLimitsTest, ThinLinesBeyondSixteenBits) {
    constexpr int count = 70000;
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    m_renderer.DrawLines(view, LinesOnPixels(count));
    EXPECT_TRUE(Matches(Present(), PixelsOf(count), kExact));
}

void DrawLimitsTest::CheckManyWideLines() {
    constexpr int count = 2000;
    constexpr int columns = 50;
    std::array<OffscreenTarget, 4> targets{
        OffscreenTarget(QSize(1000, 400)), OffscreenTarget(QSize(1000, 400)),
        OffscreenTarget(QSize(1000, 400)), OffscreenTarget(QSize(1000, 400))};
    std::array<QImage, 4> expected;
    for (std::size_t frame = 0; frame < targets.size(); ++frame) {
        expected[frame] = FilledImage(QSize(1000, 400), Qt::black);
        ASSERT_TRUE(m_renderer.StartFrame(targets[frame].GetFrameBuffer()));
        m_renderer.SetModelTransform(QMatrix4x4());
        zx3DQt::BGFXViewContext const view = PixelView(targets[frame].GetViewport());
        view.Submit(targets[frame].GetFrameBuffer());
        for (int i = 0; i < count; ++i) {
            QRect const rect(i % columns * 20, i / columns * 10, 4 + i % 13, 2 + static_cast<int>(frame) * 2);
            QColor const color = ColorOf(i * 7 + static_cast<int>(frame));
            float const y = static_cast<float>(rect.y()) + 0.5f * static_cast<float>(rect.height());
            zx3D::Line const line[] = {{{static_cast<float>(rect.x()), y, 0.5f},
                                        {static_cast<float>(rect.x() + rect.width()), y, 0.5f},
                                        ToColor(color)}};
            m_renderer.DrawLines(view, line, static_cast<float>(rect.height()));
            Fill(expected[frame], rect, color);
        }
        m_renderer.PresentCurrentAndSubmitNextFrame(false);
    }
    for (std::size_t frame = 0; frame < targets.size(); ++frame)
        EXPECT_TRUE(Matches(ReadBack(targets[frame].GetFrameBuffer()), expected[frame], kExact)) << frame;
}

/// More calls than there are buffers for, frame after frame: each gives the same picture and the same counts.
void DrawLimitsTest::CheckFramesOfManyCalls(int calls) {
    ExpectWarning("draw.shared-buffer");
    QImage expected = FilledImage(QSize(kWidth, kHeight), Qt::black);
    for (int i = 0; i < calls; ++i)
        Fill(expected, QRect(i % 100 * 10, i / 100 * 10, 4, 2), ColorOf(i * 7));
    zx3DQt::FrameStatistics first;
    for (int frame = 0; frame < 4; ++frame) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        for (int i = 0; i < calls; ++i) {
            auto const x = static_cast<float>(i % 100 * 10);
            float const y = static_cast<float>(i / 100 * 10) + 1.0f;
            zx3D::Line const line[] = {{{x, y, 0.5f}, {x + 4.0f, y, 0.5f}, ToColor(ColorOf(i * 7))}};
            m_renderer.DrawLines(view, line, 2.0f);
        }
        EXPECT_TRUE(Matches(Present(), expected, kExact)) << "frame " << frame;
        zx3DQt::FrameStatistics const statistics = m_renderer.GetFrameStatistics();
        EXPECT_EQ(statistics.primitives, static_cast<std::uint64_t>(calls));
        EXPECT_EQ(statistics.CountLeftOut(), 0u);
        if (frame == 0)
            first = statistics;
        EXPECT_EQ(statistics.withoutOwnBuffers, first.withoutOwnBuffers) << "frame " << frame;
    }
}

TEST_P(DrawLimitsTest, FiveThousandWideLineCallsDrawTheSameInEveryFrame) {
    CheckFramesOfManyCalls(5000);
}

TEST_P(DrawLimitsTest, NineThousandWideLineCallsDrawTheSameInEveryFrame) {
    CheckFramesOfManyCalls(9000);
}

TEST_P(DrawLimitsTest, NineThousandWideLineCallsDrawTheSameInEveryFrameWithoutCompute) {
    WithoutCompute const withoutCompute;
    CheckFramesOfManyCalls(9000);
}

TEST_P(DrawLimitsTest, ThousandsOfWideLineCallsInEachFrame) {
    CheckManyWideLines();
}

TEST_P(DrawLimitsTest, ThousandsOfWideLineCallsInEachFrameWithoutCompute) {
    WithoutCompute const withoutCompute;
    CheckManyWideLines();
}

TEST_P(DrawLimitsTest, LinesThatNoLongerFitAreLeftOut) {
    ExpectWarning("draw.no-transient-space");
    // A call is drawn in chunks, of which the last and smaller one finds room after others have found none.
    constexpr int linesOfAChunk = 32768;
    int const bytesOfALine = 2 * zx3D::Vertex::Pos3fColorRGBA::Layout().getStride();
    auto const room = static_cast<int>(bgfx::getCaps()->limits.*zx3D::kTransientVbSize<bgfx::Caps::Limits>);
    int const fitting = (room / bytesOfALine - 1) / linesOfAChunk * linesOfAChunk;
    constexpr int lastChunk = kPixels / linesOfAChunk * linesOfAChunk;
    ASSERT_LT(fitting + linesOfAChunk, lastChunk);
    ASSERT_LT((fitting + 1 + kPixels - lastChunk) * bytesOfALine, room);
    QImage expected = PixelsOf(fitting);
    Paint(expected, lastChunk, kPixels);

    SceneLines const lines = LinesOnPixels(kPixels);
    for (int frame = 0; frame < 2; ++frame) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        m_renderer.DrawLines(view, zx3D::DataSpan<zx3D::Line const>(lines.data(), 1));
        m_renderer.DrawLines(view, lines);
        EXPECT_TRUE(Matches(Present(), expected, kExact));
    }
    StartFrame();
    m_renderer.DrawLines(SubmitPixelView(), zx3D::DataSpan<zx3D::Line const>(lines.data(), fitting));
    EXPECT_TRUE(Matches(Present(), PixelsOf(fitting), kExact));
}

TEST_P(DrawLimitsTest, MeshesThatNoLongerFitAreLeftOut) {
    ExpectWarning("draw.no-transient-space");
    constexpr int count = 15;
    int const bytesOfABand = Band::kVertices * zx3D::Vertex::Pos3fColorRGBA::Layout().getStride();
    int const fitting =
        static_cast<int>(bgfx::getCaps()->limits.*zx3D::kTransientVbSize<bgfx::Caps::Limits> / 2) /
        bytesOfABand;
    ASSERT_LT(fitting, count);
    QRect const small(10, 970, 20, 7);

    StartFrame();
    zx3DQt::BGFXViewContext view = SubmitPixelView();
    for (int i = 0; i < count; ++i) {
        Band const band(i);
        m_renderer.DrawTriangles(view, band.vertices, band.indices);
        m_renderer.DrawTriangles(view, band.vertices, band.indices);
    }
    DrawRect(view, small, Qt::red);
    QImage expected = PictureOfBands(0, fitting);
    Fill(expected, small, Qt::red);
    EXPECT_TRUE(Matches(Present(), expected, kExact));

    StartFrame();
    view = SubmitPixelView();
    for (int i = fitting; i < count; ++i) {
        Band const band(i);
        m_renderer.DrawTriangles(view, band.vertices, band.indices);
    }
    EXPECT_TRUE(Matches(Present(), PictureOfBands(fitting, count), kExact));
}

ZX3D_INSTANTIATE_BACKENDS(DrawLimitsTest);
