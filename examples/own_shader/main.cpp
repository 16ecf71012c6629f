// A textured, lit mesh that is drawn with a program of its own: vs_textured.vert and fs_textured.frag beside
// this file, which CMakeLists.txt embeds.
#include <zx3DQt/zx3DQt.h>

#include <own_shader_shaders.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QLoggingCategory>
#include <QPainter>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

using namespace zarvex;

constexpr float kTurn = 2.0f * std::numbers::pi_v<float>;

// What the vertex shader takes: a_position, a_normal and a_texcoord0.
struct Vertex {
    QVector3D position;
    QVector3D normal;
    QVector2D texcoord;
};

bgfx::VertexLayout VertexLayout() {
    bgfx::VertexLayout layout;
    layout.begin()
        .add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float)
        .add(bgfx::Attrib::Normal, 3, bgfx::AttribType::Float)
        .add(bgfx::Attrib::TexCoord0, 2, bgfx::AttribType::Float)
        .end();
    return layout;
}

template<typename T>
bgfx::Memory const* Copy(std::vector<T> const& values) {
    return bgfx::copy(values.data(), static_cast<std::uint32_t>(values.size() * sizeof(T)));
}

// A ring around the z axis. The texture goes six times around it, and once around the tube.
struct Ring {
    zx3D::Owned<bgfx::VertexBufferHandle> vertices;
    zx3D::Owned<bgfx::IndexBufferHandle> indices;
};

Ring MakeRing() {
    constexpr int columns = 160;
    constexpr int rows = 64;
    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
    for (int column = 0; column <= columns; ++column) {
        for (int row = 0; row <= rows; ++row) {
            float const u = static_cast<float>(column) / columns;
            float const v = static_cast<float>(row) / rows;
            QVector3D const outwards(std::cos(kTurn * u), std::sin(kTurn * u), 0.0f);
            QVector3D const normal =
                -std::cos(kTurn * v) * outwards + QVector3D(0.0f, 0.0f, std::sin(kTurn * v));
            vertices.push_back({outwards + 0.42f * normal, normal, QVector2D(6.0f * u, v)});
        }
    }
    for (int column = 0; column < columns; ++column) {
        for (int row = 0; row < rows; ++row) {
            int const a = column * (rows + 1) + row;
            int const b = a + rows + 1;
            for (int const index : {a, a + 1, b, a + 1, b + 1, b})
                indices.push_back(static_cast<std::uint16_t>(index));
        }
    }
    return {zx3D::Owned(bgfx::createVertexBuffer(Copy(vertices), VertexLayout())),
            zx3D::Owned(bgfx::createIndexBuffer(Copy(indices)))};
}

// What is painted on the ring, with Qt. The edges at the top and the bottom meet inside the ring.
QImage PaintLabel() {
    QImage image(512, 512, QImage::Format_RGBA8888);
    image.fill(QColor(232, 226, 212));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(0, 132, 512, 248, QColor(28, 92, 128));
    painter.fillRect(0, 120, 512, 6, QColor(214, 92, 60));
    painter.fillRect(0, 386, 512, 6, QColor(214, 92, 60));
    QFont font = painter.font();
    font.setPixelSize(118);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(QColor(250, 246, 236));
    painter.drawText(QRect(0, 132, 512, 160), Qt::AlignCenter, "zx3DQt"); // the ring is seen from above
    for (int x = 32; x < 512; x += 64) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(214, 92, 60));
        painter.drawEllipse(QPointF(x, 60.0), 16.0, 16.0);
        painter.drawEllipse(QPointF(x, 452.0), 16.0, 16.0);
    }
    return image;
}

// The image and its smaller copies, which are for surfaces that are far away or seen from the side.
zx3D::Owned<bgfx::TextureHandle> MakeTexture(QImage level) {
    auto const width = static_cast<std::uint16_t>(level.width());
    auto const height = static_cast<std::uint16_t>(level.height());
    std::vector<uchar> pixels(level.constBits(), level.constBits() + level.sizeInBytes());
    while (level.width() > 1 || level.height() > 1) {
        level = level.scaled(std::max(level.width() / 2, 1), std::max(level.height() / 2, 1),
                             Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        pixels.insert(pixels.end(), level.constBits(), level.constBits() + level.sizeInBytes());
    }
    constexpr bool hasMips = true;
    return zx3D::Owned(bgfx::createTexture2D(width, height, hasMips, 1, bgfx::TextureFormat::RGBA8,
                                             BGFX_SAMPLER_NONE, Copy(pixels)));
}

class Scene {
public:
    // Records a frame. False when there is nothing to draw into, or with.
    bool RecordFrame(zx3DQt::BGFXWindow& window, float seconds) const {
        zx3DQt::BGFXRenderer& renderer = window.GetRenderer();
        if (!m_program || !renderer.StartFrame(window.GetFrameBuffer()))
            return false; // said already, or the window has no area now
        zx3DQt::BGFXViewContext view(
            0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x161c26ff, 1.0f, 0});
        view.SetViewport(window.GetViewport());
        auto const aspectRatio = static_cast<float>(view.ComputeViewportAspectRatio());
        QVector3D const eye = QVector3D(0.0f, -3.1f, 1.7f) / std::min(aspectRatio, 1.0f);
        QMatrix4x4 camera;
        camera.lookAt(eye, QVector3D(), QVector3D(0.0f, 0.0f, 1.0f));
        view.SetViewMatrix(camera);
        // Depths from -1 to 1 or from 0 to 1, as the running renderer has them.
        bx::mtxProj(view.GetProjectionMatrix().data(), 44.0f, aspectRatio, 0.1f, 20.0f,
                    bgfx::getCaps()->homogeneousDepth, bx::Handedness::Right);
        view.Submit(window.GetFrameBuffer());

        QMatrix4x4 turn;
        turn.rotate(15.0f * seconds, 0.0f, 0.0f, 1.0f);
        bgfx::setTransform(turn.constData()); // becomes u_model
        bgfx::setVertexBuffer(0, m_ring.vertices.Get());
        bgfx::setIndexBuffer(m_ring.indices.Get());
        bgfx::setTexture(0, m_paintSampler.Get(), m_paint.Get());
        SetUniform(m_lamp, QVector4D(-2.0f, -4.0f, 4.0f, 1.0f));
        SetUniform(m_eye, QVector4D(eye, 1.0f));
        SetUniform(m_glow, QVector4D(0.35f, 0.65f, 0.95f, 3.0f));
        bgfx::setState(BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A | BGFX_STATE_WRITE_Z |
                       BGFX_STATE_DEPTH_TEST_LESS | BGFX_STATE_MSAA); // the last for smooth edges on OpenGL
        bgfx::submit(view.GetViewId(), *m_program);
        return true;
    }

private:
    using Uniform = zx3D::Owned<bgfx::UniformHandle>;

    static void SetUniform(Uniform const& uniform, QVector4D const& value) {
        float const values[] = {value.x(), value.y(), value.z(), value.w()};
        bgfx::setUniform(uniform.Get(), values);
    }

    std::optional<bgfx::ProgramHandle> m_program = zx3D::ProgramFactory::Get().CreateProgram(
        own_shader_shaders::vs_textured, own_shader_shaders::fs_textured);
    Ring m_ring = MakeRing();
    zx3D::Owned<bgfx::TextureHandle> m_paint = MakeTexture(PaintLabel());
    Uniform m_paintSampler{bgfx::createUniform("s_paint", bgfx::UniformType::Sampler)};
    Uniform m_lamp{bgfx::createUniform("u_lamp", bgfx::UniformType::Vec4)};
    Uniform m_eye{bgfx::createUniform("u_eye", bgfx::UniformType::Vec4)};
    Uniform m_glow{bgfx::createUniform("u_glow", bgfx::UniformType::Vec4)};
};

// Edges are smooth where a GPU draws; --samples=1, or another number, decides otherwise.
std::uint32_t ChooseSampleCount(QStringList const& arguments) {
    QString const asked = arguments.filter("--samples=").value(0).section('=', 1);
    if (!asked.isEmpty())
        return asked.toUInt();
    return zx3DQt::HasGpu(*bgfx::getCaps()) ? 4 : 1;
}

int main(int argc, char* argv[]) {
    QLoggingCategory::setFilterRules("zarvex.*.debug=false\nzarvex.*.info=false");
    QApplication application(argc, argv);
    bool const openGL = application.arguments().contains("--opengl");
    // The name of a picture as an argument: it is saved, with twice the pixels of the window.
    QString const picture = application.arguments().filter(".png").value(0);
    bool isSaved = true;
    zx3D::Context::PreferRenderer(openGL ? bgfx::RendererType::OpenGL : bgfx::RendererType::Vulkan);
    if (!zx3DQt::Init(true)) // wait for the display's refresh
        qFatal("bgfx does not start; QT_LOGGING_RULES=\"zarvex.bgfx.info=true\" tells why");
    {
        Scene const scene;
        zx3DQt::BGFXWindow window; // both go before Shutdown
        window.setTitle("zx3DQt: own shader");
        window.SetSampleCount(ChooseSampleCount(application.arguments()));
        window.SetDepthFormat(bgfx::TextureFormat::D32F);
        window.resize(800, 600);
        QElapsedTimer clock;
        clock.start();
        QTimer timer;
        timer.callOnTimeout(&window, [&] {
            if (scene.RecordFrame(window, 0.001f * clock.elapsed()))
                window.GetRenderer().PresentCurrentAndSubmitNextFrame(false);
        });
        timer.start(16);
        if (picture.isEmpty()) {
            window.show();
            application.exec();
        } else { // nothing is shown
            isSaved = window
                          .RenderPicture({.size = 2 * window.size(), .pixelRatio = 2.0},
                                         [&](double) { scene.RecordFrame(window, 0.0f); })
                          .save(picture);
        }
    }
    zx3DQt::Shutdown();
    return isSaved ? 0 : 1;
}
