// W8: a picture of 1920 x 1080 pixels, drawn off screen and read back: with a target that is kept, as a
// widget that repaints itself has, and with one that is made for the picture.
#include "runner/Floor.h"
#include "runner/Stage.h"
#include "workloads/Workloads.h"

#include <zx3DQt/BGFXOffscreenWidget.h>

#include <QPainter>

#include <array>

namespace zarvex::benchmarks {

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr std::uint16_t kClearFlags = BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH;
constexpr std::uint32_t kClearColor = 0x1a1a1aff;
constexpr bgfx::ViewId kView = 1;
constexpr bgfx::ViewId kBlitView = 254;

std::array<Vertex, 3> const kCorners{{{{-0.8f, -0.8f, 0.0f}, {1.0f, 0.0f, 0.0f, 1.0f}},
                                      {{0.8f, -0.8f, 0.0f}, {0.0f, 1.0f, 0.0f, 1.0f}},
                                      {{0.0f, 0.8f, 0.0f}, {0.0f, 0.0f, 1.0f, 1.0f}}}};
constexpr std::array<std::uint16_t, 3> kIndices{0, 1, 2};

class TriangleWidget : public zx3DQt::BGFXOffscreenWidget {
protected:
    void paintEvent(QPaintEvent* event) override {
        BGFXOffscreenWidget::paintEvent(event);
        if (!GetRenderer().StartFrame(GetFrameBuffer()))
            return;
        zx3DQt::BGFXViewContext view(kView, zx3DQt::BGFXViewClearOptions{kClearFlags, kClearColor, 1.0f, 0});
        view.SetViewport(GetViewport());
        view.Submit(GetFrameBuffer());
        GetRenderer().DrawTriangles(view, kCorners, kIndices);
        if (event != nullptr)
            Flush();
    }
};

/// What the picture is drawn into and read from, by hand.
class Target {
public:
    Target()
        : m_colors(
              bgfx::createTexture2D(kWidth, kHeight, false, 1, bgfx::TextureFormat::RGBA8, BGFX_TEXTURE_RT)),
          m_depths(bgfx::createTexture2D(kWidth, kHeight, false, 1, bgfx::TextureFormat::D16,
                                         BGFX_TEXTURE_RT_WRITE_ONLY)),
          m_copy(bgfx::createTexture2D(kWidth, kHeight, false, 1, bgfx::TextureFormat::RGBA8,
                                       BGFX_TEXTURE_BLIT_DST | BGFX_TEXTURE_READ_BACK)) {
        std::array<bgfx::TextureHandle, 2> const attachments{m_colors, m_depths};
        m_frameBuffer = bgfx::createFrameBuffer(2, attachments.data(), true);
    }
    ~Target() {
        bgfx::destroy(m_copy);
        bgfx::destroy(m_frameBuffer); // and its two textures
    }

    Target(Target const&) = delete;
    Target& operator=(Target const&) = delete;

    /// Draws the picture and waits for it. Top row first.
    QImage Capture(bgfx::ProgramHandle program) const {
        Draw(program);
        QImage image(kWidth, kHeight, QImage::Format_RGBA8888);
        bgfx::blit(kBlitView, m_copy, 0, 0, m_colors);
        std::uint32_t const ready = bgfx::readTexture(m_copy, image.bits());
        WaitForFrame(ready, bgfx::frame());
        if (bgfx::getCaps()->originBottomLeft)
            image.mirror();
        return image;
    }

private:
    void Draw(bgfx::ProgramHandle program) const {
        bgfx::setViewFrameBuffer(kView, m_frameBuffer);
        bgfx::setViewRect(kView, 0, 0, kWidth, kHeight);
        bgfx::setViewTransform(kView, QMatrix4x4().constData(), QMatrix4x4().constData());
        bgfx::setViewClear(kView, kClearFlags, kClearColor, 1.0f, 0);
        bgfx::TransientVertexBuffer vertices;
        bgfx::TransientIndexBuffer indices;
        bgfx::allocTransientBuffers(&vertices, Vertex::Layout(), 3, &indices, 3);
        std::copy(kCorners.begin(), kCorners.end(), reinterpret_cast<Vertex*>(vertices.data));
        std::copy(kIndices.begin(), kIndices.end(), reinterpret_cast<std::uint16_t*>(indices.data));
        bgfx::setState(zx3DQt::BGFXRenderer::STATE_OPAQUE);
        bgfx::setVertexBuffer(0, &vertices);
        bgfx::setIndexBuffer(&indices);
        bgfx::submit(kView, program);
    }

    bgfx::TextureHandle m_colors, m_depths, m_copy;
    bgfx::FrameBufferHandle m_frameBuffer = BGFX_INVALID_HANDLE;
};

class Captures : public Workload {
public:
    void RunLibrary() override { m_library = CaptureWithLibrary(); }
    void RunFloor() override { m_floor = CaptureByHand(); }
    FrameResult InspectLibrary() override { return {.picture = PictureOf(CaptureWithLibrary())}; }
    FrameResult InspectFloor() override { return {.picture = PictureOf(CaptureByHand())}; }

protected:
    virtual QImage CaptureWithLibrary() = 0;
    virtual QImage CaptureByHand() = 0;

    TriangleWidget m_widget;
    bgfx::ProgramHandle m_program = Program("vs_basic", "fs_basic");

private:
    static QImage PictureOf(QImage const& image) { return DrawsNothing() ? QImage() : image; }

    QImage m_library, m_floor;
};

/// A frame of a widget: drawn into its target, read back and painted as an opaque pixmap.
class KeptTarget : public Captures {
public:
    KeptTarget() { m_widget.resize(kWidth, kHeight); }

private:
    QImage CaptureWithLibrary() override {
        m_widget.render(&m_painted);
        return m_painted;
    }

    QImage CaptureByHand() override {
        QImage const picture = m_target.Capture(m_program);
        QPainter painter(&m_painted);
        painter.fillRect(m_painted.rect(), Qt::black);
        painter.drawPixmap(m_painted.rect(),
                           QPixmap::fromImage(picture.convertToFormat(QImage::Format_RGB32)));
        return m_painted;
    }

    Target m_target;
    QImage m_painted{kWidth, kHeight, QImage::Format_RGB32};
};

/// A picture of its own size.
class CreatedTarget : public Captures {
    QImage CaptureWithLibrary() override { return m_widget.RenderPixmap(kWidth, kHeight).toImage(); }
    QImage CaptureByHand() override { return QPixmap::fromImage(Target().Capture(m_program)).toImage(); }
};

} // namespace

WorkloadKind CapturedPictures() {
    return {.name = "W8",
            .title = "picture of 1920 x 1080",
            .variants = {"kept", "created"},
            .create = [](std::string const& variant) -> std::unique_ptr<Workload> {
                if (variant == "kept")
                    return std::make_unique<KeptTarget>();
                return std::make_unique<CreatedTarget>();
            }};
}

} // namespace zarvex::benchmarks
