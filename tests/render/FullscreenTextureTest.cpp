// A texture over a whole view: upright, pixel by pixel, with one triangle that is kept.
#include "RenderTest.h"

#include <vector>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr bgfx::ViewId kSourceView = 0; // drawn before the one that shows it
constexpr bgfx::ViewId kView = 1;

class FullscreenTextureTest : public RenderTest {
protected:
    /// Draws a picture on a frame buffer, a point for each pixel that is not of the background's colour.
    void DrawPicture(OffscreenTarget& source, QImage const& picture, QColor const& background = Qt::black);

    /// Covers a part of the target with the frame buffer's colours.
    void Cover(OffscreenTarget& source, QRect const& viewport);

    QRect GetWholeTarget() const { return m_target.GetViewport(); }
};

bgfx::TextureHandle ColorsOf(OffscreenTarget& target) {
    return bgfx::getTexture(target.GetFrameBuffer().GetHandle());
}

void FullscreenTextureTest::DrawPicture(OffscreenTarget& source, QImage const& picture,
                                        QColor const& background) {
    std::vector<zx3D::Vertex::Pos3fColorRGBA> points;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            bx::Vec3 const center(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f, 0.5f);
            if (QColor const color = picture.pixelColor(x, y); color != background)
                points.emplace_back(center, ToColor(color));
        }
    }
    source.GetFrameBuffer().SubmitOnDemand();
    zx3DQt::BGFXViewContext const view = PixelView(source.GetViewport(), background, kSourceView);
    view.Submit(source.GetFrameBuffer());
    m_renderer.DrawPoints(view, points);
}

void FullscreenTextureTest::Cover(OffscreenTarget& source, QRect const& viewport) {
    PixelView(viewport, Qt::magenta, kView).Submit(m_target.GetFrameBuffer());
    m_renderer.DrawFullscreenTexture(kView, ColorsOf(source));
}

/// No two corners and no two edges are alike.
QImage AsymmetricPicture(QSize size, QColor const& background) {
    QImage picture = FilledImage(size, background);
    Fill(picture, QRect(0, 0, 20, 9), Qt::red);
    Fill(picture, QRect(size.width() - 7, 0, 7, 15), Qt::green);
    Fill(picture, QRect(0, size.height() - 4, 11, 4), Qt::blue);
    Fill(picture, QRect(30, 20, 1, 1), Qt::white);
    return picture;
}

/// Single pixels, each bright one with a colour of its own.
QImage Checkerboard(QSize size) {
    QImage picture = FilledImage(size, Qt::black);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = y % 2; x < size.width(); x += 2)
            picture.setPixelColor(x, y, QColor(255 - 3 * x, 255 - 5 * y, 100));
    }
    return picture;
}

} // namespace

TEST_P(FullscreenTextureTest, AFrameBuffersColorsAppearUpright) {
    OffscreenTarget source(GetWholeTarget().size());
    QColor const background(40, 70, 90, 128); // opacity is copied too
    QImage const picture = AsymmetricPicture(GetWholeTarget().size(), background);
    StartFrame();
    DrawPicture(source, picture, background);
    Cover(source, GetWholeTarget());
    EXPECT_TRUE(Matches(Present(), picture, kExact));
}

TEST_P(FullscreenTextureTest, ACheckerboardIsExactToThePixel) {
    OffscreenTarget source(GetWholeTarget().size());
    QImage const picture = Checkerboard(GetWholeTarget().size());
    StartFrame();
    DrawPicture(source, picture);
    Cover(source, GetWholeTarget());
    EXPECT_TRUE(Matches(Present(), picture, kExact));
}

TEST_P(FullscreenTextureTest, AViewOfAPartOfTheTargetIsCoveredAndNothingElse) {
    QRect const part(13, 5, 31, 22);
    OffscreenTarget source(part.size());
    QImage const picture = Checkerboard(part.size());
    StartFrame();
    DrawPicture(source, picture);
    Cover(source, part);
    QImage const actual = Present();
    EXPECT_TRUE(Matches(actual.copy(part), picture, kExact));
    StartFrame();
    PixelView(part, Qt::magenta, kView).Submit(m_target.GetFrameBuffer());
    bgfx::touch(kView);
    QImage const withoutTexture = Present();
    QImage cleared = actual;
    Fill(cleared, part, Qt::magenta);
    EXPECT_TRUE(Matches(withoutTexture, cleared, kExact));
}

TEST_P(FullscreenTextureTest, NothingThatIsNearerHidesIt) {
    OffscreenTarget source(GetWholeTarget().size());
    QImage const picture = Checkerboard(GetWholeTarget().size());
    StartFrame();
    DrawPicture(source, picture);
    zx3DQt::BGFXViewContext const view = PixelView(GetWholeTarget(), Qt::magenta, kView);
    view.Submit(m_target.GetFrameBuffer());
    DrawRect(view, QRectF(GetWholeTarget()), Qt::yellow, 0.0f);
    m_renderer.DrawFullscreenTexture(kView, ColorsOf(source));
    EXPECT_TRUE(Matches(Present(), picture, kExact));
}

TEST_P(FullscreenTextureTest, ASecondCallCreatesNoBuffers) {
    auto const countBuffers = [] {
        bgfx::frame(); // so that what was created and destroyed counts
        bgfx::Stats const& stats = *bgfx::getStats();
        return std::pair<int, int>(stats.numVertexBuffers, stats.numIndexBuffers);
    };
    OffscreenTarget source(GetWholeTarget().size());
    QImage const picture = Checkerboard(GetWholeTarget().size());
    auto const [vertexBuffers, indexBuffers] = countBuffers();
    for (int frame = 0; frame < 3; ++frame) {
        StartFrame();
        DrawPicture(source, picture);
        Cover(source, GetWholeTarget());
        EXPECT_TRUE(Matches(Present(), picture, kExact)) << "frame " << frame;
        EXPECT_EQ(countBuffers(), std::pair(vertexBuffers + 1, indexBuffers + 1)) << "frame " << frame;
    }
}

ZX3D_INSTANTIATE_BACKENDS(FullscreenTextureTest);
