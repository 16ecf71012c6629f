// Labels at points of a scene on screens of different densities, compared with what FreeType draws there.
#include "RenderTest.h"
#include "TextPainting.h"

#include <ReferenceText.h>

#include <zx3D/Text.h>

#include <QRegion>

#include <cmath>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

constexpr double kRatios[] = {1.0, 1.25, 1.5, 2.0};
constexpr QSizeF kLogicalSize(200, 100);
constexpr double kFontSize = 12.0; ///< logical pixels

/// A target of as many pixels as a widget of the logical size has at a ratio; world units are logical pixels.
class Screen {
public:
    explicit Screen(double ratio)
        : m_ratio(ratio),
          m_target((kLogicalSize * ratio).toSize()),
          m_font(zx3D::LoadDefaultFont(static_cast<std::uint16_t>(GetPixelSize())).value()) {}
    ~Screen() { zx3D::DestroyFont(m_font); }

    Screen(Screen const&) = delete;
    Screen& operator=(Screen const&) = delete;

    int GetPixelSize() const { return static_cast<int>(std::lround(kFontSize * m_ratio)); }

    ReferenceLine Shape(std::string const& text) const {
        return ShapeReferenceLine(DEFAULT_FONT_FILE, GetPixelSize(), text);
    }

    QImage Draw(zx3DQt::BGFXRenderer& renderer, std::string const& text, QPointF const& position,
                Qt::Alignment alignment) {
        EXPECT_TRUE(renderer.StartFrame(m_target.GetFrameBuffer()));
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
        view.SetOrthoProjectionFromRect(QRectF(QPointF(), kLogicalSize), 0.0f, 1.0f, 0.0f);
        view.Submit(m_target.GetFrameBuffer());
        bgfx::touch(view);
        bx::Vec3 const place(static_cast<float>(position.x()), static_cast<float>(position.y()), 0.5f);
        renderer.RenderText(view, place, QString::fromStdString(text), m_font, Qt::white, alignment);
        return ReadBack(m_target.GetFrameBuffer());
    }

    /// The same by FreeType, with the top left of the line at a pixel.
    QImage Paint(ReferenceLine const& line, QPoint const& topLeft) const {
        QImage image = FilledImage(m_target.GetViewport().size(), Qt::black);
        zarvex::testing::Paint(image, line, topLeft.x(), topLeft.y() + line.ascender, Qt::white);
        return image;
    }

private:
    double m_ratio;
    OffscreenTarget m_target;
    zx3D::FontHandle m_font;
};

class TextPixelRatioTest : public RenderTest {};

/// The smallest rectangle with everything that is not black.
QRect InkOf(QImage const& image) {
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != Qt::black)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

double FactorOf(Qt::Alignment alignment, Qt::AlignmentFlag center, Qt::AlignmentFlag end) {
    return alignment & end ? 1.0 : alignment & center ? 0.5 : 0.0;
}

} // namespace

TEST_P(TextPixelRatioTest, ALabelIsExactlyWhatFreeTypeDraws) {
    std::string const text = "AVAST (q) 0,25 mm";
    for (double const ratio : kRatios) {
        Screen screen(ratio);
        QPointF const position(11.3, 17.3);
        QPoint const pixel = (position * ratio).toPoint();
        EXPECT_TRUE(Matches(screen.Draw(m_renderer, text, position, Qt::AlignLeft | Qt::AlignTop),
                            screen.Paint(screen.Shape(text), pixel), kExact))
            << ratio;
    }
}

TEST_P(TextPixelRatioTest, EveryAlignmentIsWithinAPixelOfItsPlace) {
    std::string const text = "Label 12";
    QPointF const position(98.7, 51.4);
    for (double const ratio : kRatios) {
        Screen screen(ratio);
        ReferenceLine const line = screen.Shape(text);
        QSizeF const size(line.width, line.ascender - line.descender);
        QRect const inkAtOrigin = InkOf(screen.Paint(line, QPoint(10, 10))).translated(-10, -10);
        for (Qt::AlignmentFlag const horizontal : {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight}) {
            for (Qt::AlignmentFlag const vertical : {Qt::AlignTop, Qt::AlignVCenter, Qt::AlignBottom}) {
                Qt::Alignment const alignment = horizontal | vertical;
                QPointF const topLeft =
                    position * ratio -
                    QPointF(FactorOf(alignment, Qt::AlignHCenter, Qt::AlignRight) * size.width(),
                            FactorOf(alignment, Qt::AlignVCenter, Qt::AlignBottom) * size.height());
                QRect const ink = InkOf(screen.Draw(m_renderer, text, position, alignment));
                EXPECT_EQ(ink.size(), inkAtOrigin.size());
                EXPECT_NEAR(ink.left(), topLeft.x() + inkAtOrigin.left(), 1.0) << ratio << " " << alignment;
                EXPECT_NEAR(ink.top(), topLeft.y() + inkAtOrigin.top(), 1.0) << ratio << " " << alignment;
            }
        }
    }
}

ZX3D_INSTANTIATE_BACKENDS(TextPixelRatioTest);
