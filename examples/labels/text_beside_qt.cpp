// Writes a picture that shows text as the library draws it beside the same text as QPainter draws it.
// Usage: text_beside_qt [--opengl] PICTURE
#include <zx3DQt/zx3DQt.h>

#include <QApplication>
#include <QImage>
#include <QLoggingCategory>
#include <QPainter>

#include <cmath>
#include <map>
#include <vector>

using namespace zarvex;

constexpr QColor kLight(250, 250, 250);
constexpr QColor kDark(23, 28, 38);

// One line of a sample: its baseline begins at `baseline`, pixels of the sample.
struct TextLine {
    QString text;
    int pixelSize;
    QPoint baseline;
};

// What is drawn twice.
constexpr QSize kSampleSize(400, 88);
struct Sample {
    QColor ground;
    QColor color;
    std::vector<TextLine> lines;
};

QFont QtFont(int pixelSize) {
    QFont font("DejaVu Sans");
    font.setPixelSize(pixelSize);
    return font;
}

QImage DrawWithQt(Sample const& sample) {
    QImage image(kSampleSize, QImage::Format_RGB32);
    image.fill(sample.ground);
    QPainter painter(&image);
    painter.setPen(sample.color);
    for (TextLine const& line : sample.lines) {
        painter.setFont(QtFont(line.pixelSize));
        painter.drawText(line.baseline, line.text);
    }
    return image;
}

// A widget that is never shown: only its pictures are taken.
class SampleView : public zx3DQt::BGFXOffscreenWidget {
public:
    explicit SampleView(Sample const& sample) : m_sample(sample) {}

    QImage Draw() { return RenderPixmap(kSampleSize).toImage().convertToFormat(QImage::Format_RGB32); }

protected:
    void paintEvent(QPaintEvent* event) override {
        BGFXOffscreenWidget::paintEvent(event);
        zx3DQt::BGFXRenderer& renderer = GetRenderer();
        if (!renderer.StartFrame(GetFrameBuffer()))
            return;
        std::uint32_t const ground = (m_sample.ground.rgb() << 8) | 0xff;
        zx3DQt::BGFXViewContext view(1, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR, ground, 1.0f, 0});
        view.SetViewport(GetViewport());
        view.Submit(GetFrameBuffer());
        for (TextLine const& line : m_sample.lines) {
            zx3D::FontHandle const font = FontOfSize(line.pixelSize);
            // The pen is at the top of the line: as far above the baseline as the font ascends.
            QPointF const pen = line.baseline - QPointF(0.0, std::round(zx3D::GetFontInfo(font).ascender));
            renderer.RenderText(view, pen, line.text, font, m_sample.color, Qt::AlignLeft | Qt::AlignTop);
        }
    }

private:
    static zx3D::FontHandle FontOfSize(int pixelSize) {
        static std::map<int, zx3D::FontHandle> fonts;
        auto const [font, isNew] = fonts.try_emplace(pixelSize);
        if (isNew)
            font->second = zx3D::LoadDefaultFont(pixelSize).value_or(zx3D::FontHandle());
        return font->second;
    }

    Sample m_sample;
};

// A line of each size. `kEnlargedPart` has all of them.
constexpr QRect kEnlargedPart(6, 4, 165, 80);

Sample MakeSample(QColor const& ground, QColor const& color) {
    Sample sample{ground, color, {}};
    int y = 0;
    for (int const size : {11, 12, 13, 14}) {
        y += 20;
        sample.lines.push_back(
            {QString("%1 px: Größe Δx = 0.25 mm, quick brown Расстояние").arg(size), size, {10, y}});
    }
    return sample;
}

// ---- The page: both pictures at their own size, and a part of each enlarged, on dark and on light ground.

constexpr int kGap = 16;
constexpr int kCaptionHeight = 20;
constexpr int kZoom = 4;
constexpr int kColumnWidth = kZoom * kEnlargedPart.width();
constexpr int kRowHeight =
    kCaptionHeight + kSampleSize.height() + kGap / 2 + kZoom * kEnlargedPart.height() + kGap;

// Draws the picture and below it the enlarged part.
void DrawCell(QPainter& painter, QPoint at, QString const& caption, QImage const& image) {
    painter.drawText(at + QPoint(0, kCaptionHeight - 7), caption);
    at.ry() += kCaptionHeight;
    painter.drawImage(at, image);
    at.ry() += image.height() + kGap / 2;
    QImage const part = image.copy(kEnlargedPart);
    painter.drawImage(at, part.scaled(kZoom * part.size(), Qt::KeepAspectRatio, Qt::FastTransformation));
}

QImage MakePage() {
    QImage page(2 * kColumnWidth + 3 * kGap, 2 * kRowHeight + kGap / 2, QImage::Format_RGB32);
    page.fill(QColor(206, 212, 220));
    QPainter painter(&page);
    painter.setFont(QtFont(12));
    int y = kGap / 2;
    for (Sample const& sample : {MakeSample(kDark, QColor(226, 233, 243)), MakeSample(kLight, Qt::black)}) {
        DrawCell(painter, {kGap, y}, "zx3DQt, and 4 times enlarged", SampleView(sample).Draw());
        DrawCell(painter, {2 * kGap + kColumnWidth, y}, "QPainter, and 4 times enlarged", DrawWithQt(sample));
        y += kRowHeight;
    }
    return page;
}

int main(int argc, char* argv[]) {
    QLoggingCategory::setFilterRules("zarvex.*.debug=false\nzarvex.*.info=false");
    QApplication application(argc, argv);
    bool const openGL = application.arguments().contains("--opengl");
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(false))
        qFatal("bgfx does not start; QT_LOGGING_RULES=\"zarvex.bgfx.info=true\" tells why");
    bool const isSaved = MakePage().save(application.arguments().last());
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
