// Lit triangles when the application has set up neither a material nor a light: the viewer carries a lamp.
#include "RenderTest.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using Vertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;

namespace {

constexpr zx3D::Color kColor{0.8f, 0.4f, 0.2f, 1.0f};

/// Positions, cosines and colours are computed in 32 bits on the GPU.
constexpr Tolerance kTolerance{2, 0};

/// A surface's colour where its normal and the direction to the viewer enclose an angle.
QColor LitColor(double cosine, zx3D::Color const& color = kColor) {
    double const light = 0.3 + 0.7 * std::max(cosine, 0.0);
    auto const channel = [light](float value) {
        return static_cast<int>(std::lround(255.0 * light * value));
    };
    return QColor(channel(color.red), channel(color.green), channel(color.blue));
}

float Radians(float degrees) {
    return degrees * 0.017453293f;
}

/// For its lifetime the viewer of the lighting program is at a place, afterwards again where the view has its
/// camera: bgfx keeps the values of uniforms as long as it runs.
class ViewPosition {
public:
    ViewPosition(zx3DQt::BGFXRenderer& renderer, QVector3D const& position) : m_renderer(renderer) {
        renderer.UpdateViewPositionUniform(position);
    }

    ~ViewPosition() {
        bgfx::UniformHandle const uniform = bgfx::createUniform("u_viewPosition", bgfx::UniformType::Vec4);
        float const none[4] = {};
        bgfx::setUniform(uniform, none);
        TakeOverUniforms(m_renderer);
        bgfx::destroy(uniform);
    }

    ViewPosition(ViewPosition const&) = delete;
    ViewPosition& operator=(ViewPosition const&) = delete;

private:
    zx3DQt::BGFXRenderer& m_renderer;
};

class LightingTest : public RenderTest {
protected:
    void DrawRect(zx3DQt::BGFXViewContext const& view, QRectF const& rect, bx::Vec3 const& normal,
                  zx3D::Color const& color = kColor,
                  std::optional<zx3DQt::ModelTransformCacheId> modelTransform = std::nullopt) {
        DrawRect(view, rect, normal, {color, color, color, color}, {0, 1, 2, 2, 1, 3}, modelTransform);
    }

    /// Colours of the top left, top right, bottom left and bottom right corner.
    void DrawRect(zx3DQt::BGFXViewContext const& view, QRectF const& rect, bx::Vec3 const& normal,
                  std::array<zx3D::Color, 4> const& colors, std::array<std::uint16_t, 6> const& indices,
                  std::optional<zx3DQt::ModelTransformCacheId> modelTransform = std::nullopt) {
        auto const corner = [&](QPointF point, zx3D::Color const& color) {
            bx::Vec3 const position(static_cast<float>(point.x()), static_cast<float>(point.y()), 0.5f);
            return Vertex(position, normal, color);
        };
        Vertex const vertices[] = {corner(rect.topLeft(), colors[0]), corner(rect.topRight(), colors[1]),
                                   corner(rect.bottomLeft(), colors[2]),
                                   corner(rect.bottomRight(), colors[3])};
        m_renderer.DrawTriangles(view, vertices, indices, modelTransform);
    }
};

} // namespace

TEST_P(LightingTest, ASurfaceThatFacesTheViewerShowsItsColors) {
    StartFrame();
    DrawRect(SubmitPixelView(), QRectF(m_target.GetViewport()), {0.0f, 0.0f, -1.0f});
    EXPECT_TRUE(Matches(Present(), Canvas(LitColor(1.0)), kTolerance));
}

TEST_P(LightingTest, ItDarkensWithTheAngle) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    QImage expected = Canvas();
    for (int i = 0; i < 16; ++i) {
        QRect const rect(4 * i, 0, 4, 48);
        float const angle = Radians(6.0f * static_cast<float>(i));
        DrawRect(view, rect, {std::sin(angle), 0.0f, -std::cos(angle)});
        Fill(expected, rect, LitColor(std::cos(angle)));
    }
    EXPECT_TRUE(Matches(Present(), expected, kTolerance));
}

TEST_P(LightingTest, NormalsOfAnyLengthAreRight) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    DrawRect(view, QRectF(0, 0, 16, 48), {30.0f, 0.0f, -40.0f});
    DrawRect(view, QRectF(16, 0, 16, 48), {0.0f, 3e-4f, -4e-4f});
    DrawRect(view, QRectF(32, 0, 32, 48), {0.0f, 0.0f, 0.0f}); // faces the viewer
    QImage expected = Canvas(LitColor(0.8));
    Fill(expected, QRect(32, 0, 32, 48), LitColor(1.0));
    EXPECT_TRUE(Matches(Present(), expected, kTolerance));
}

TEST_P(LightingTest, BothSidesAreLitAlike) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    std::array<std::uint16_t, 6> const windings[] = {{0, 1, 2, 2, 1, 3}, {0, 2, 1, 2, 3, 1}};
    for (int i = 0; i < 4; ++i) {
        float const side = i % 2 == 0 ? 1.0f : -1.0f;
        DrawRect(view, QRectF(16 * i, 0, 16, 48), {0.6f * side, 0.0f, 0.8f * side},
                 {kColor, kColor, kColor, kColor}, windings[i / 2]);
    }
    EXPECT_TRUE(Matches(Present(), Canvas(LitColor(0.8)), kTolerance));
}

TEST_P(LightingTest, ColorsBlendOverTheSurface) {
    zx3D::Color const left{0.9f, 0.1f, 0.5f, 1.0f};
    zx3D::Color const right{0.1f, 0.8f, 0.5f, 1.0f};
    StartFrame();
    DrawRect(SubmitPixelView(), QRectF(m_target.GetViewport()), {0.6f, 0.0f, -0.8f},
             {left, right, left, right}, {0, 1, 2, 2, 1, 3});
    QImage expected = Canvas();
    for (int x = 0; x < 64; ++x) {
        float const t = (static_cast<float>(x) + 0.5f) / 64.0f;
        auto const mixed = [t](float a, float b) { return a + (b - a) * t; };
        zx3D::Color const color{mixed(left.red, right.red), mixed(left.green, right.green),
                                mixed(left.blue, right.blue), 1.0f};
        Fill(expected, QRect(x, 0, 1, 48), LitColor(0.8, color));
    }
    EXPECT_TRUE(Matches(Present(), expected, kTolerance));
}

TEST_P(LightingTest, TheModelTransformTurnsTheSurface) {
    // A plane through y, turned by 60 degrees, and one that is half as steep after it is squeezed.
    QMatrix4x4 turned;
    turned.rotate(60.0f, 0.0f, 1.0f, 0.0f);
    QMatrix4x4 squeezed;
    squeezed.translate(32.0f, 0.0f, 0.0f);
    squeezed.scale(0.5f, 1.0f, 1.0f);
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    view.SetOrthoProjectionFromRect(QRectF(0.0, 0.0, 64.0, 48.0), -100.0f, 100.0f, 0.0f);
    view.Submit(m_target.GetFrameBuffer());
    zx3DQt::ModelTransformCacheId const turn = m_renderer.SetModelTransform(turned);
    m_renderer.SetModelTransform(squeezed);
    DrawRect(view, QRectF(-1.0, 0.0, 65.0, 48.0), {0.0f, 0.0f, -1.0f}, kColor,
             turn); // half as wide on the screen
    DrawRect(view, QRectF(0.0, 0.0, 64.0, 48.0), {1.0f, 0.0f, -1.0f});
    QImage expected = Canvas(LitColor(0.5));
    // The normal of a surface is squeezed the other way: (1, 0, -1) becomes (2, 0, -1).
    Fill(expected, QRect(32, 0, 32, 48), LitColor(1.0 / std::sqrt(5.0)));
    EXPECT_TRUE(Matches(Present(), expected, kTolerance));
}

TEST_P(LightingTest, InPerspectiveTheViewerIsAtAPlace) {
    QMatrix4x4 projection;
    bx::mtxProj(projection.data(), 90.0f, 64.0f / 48.0f, 0.1f, 100.0f, bgfx::getCaps()->homogeneousDepth);
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    view.SetProjectionMatrix(projection);
    QMatrix4x4 viewMatrix;
    viewMatrix.translate(-7.0f, 3.0f, 2.0f); // the viewer is at (7, -3, -2)
    view.SetViewMatrix(viewMatrix);
    StartFrame();
    view.Submit(m_target.GetFrameBuffer());
    DrawRect(view, QRectF(-93.0, -103.0, 200.0, 200.0), {0.0f, 0.0f, -1.0f}); // 2.5 before the viewer
    QImage expected = Canvas();
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            double const right = ((x + 0.5) / 32.0 - 1.0) * 64.0 / 48.0;
            double const up = 1.0 - (y + 0.5) / 24.0;
            expected.setPixelColor(x, y, LitColor(1.0 / std::sqrt(1.0 + right * right + up * up)));
        }
    }
    EXPECT_TRUE(Matches(Present(), expected, kTolerance));
}

TEST_P(LightingTest, TheViewPositionCanBeGiven) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    ViewPosition const position(m_renderer, QVector3D(20.0f, 10.0f, -29.5f)); // 30 before the surface
    DrawRect(view, QRectF(m_target.GetViewport()), {0.0f, 0.0f, -1.0f});
    QImage expected = Canvas();
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            double const right = x + 0.5 - 20.0;
            double const down = y + 0.5 - 10.0;
            expected.setPixelColor(x, y, LitColor(30.0 / std::sqrt(900.0 + right * right + down * down)));
        }
    }
    EXPECT_TRUE(Matches(Present(), expected, kTolerance));
}

TEST_P(LightingTest, ASphereIsRound) {
    constexpr int slices = 128;
    constexpr int stacks = 64;
    constexpr float radius = 22.0f;
    QPointF const center(32.0, 24.0);
    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
    for (int stack = 0; stack <= stacks; ++stack) {
        float const polar = Radians(180.0f * static_cast<float>(stack) / stacks);
        for (int slice = 0; slice <= slices; ++slice) {
            float const azimuth = Radians(360.0f * static_cast<float>(slice) / slices);
            bx::Vec3 const normal(std::sin(polar) * std::cos(azimuth), std::cos(polar),
                                  std::sin(polar) * std::sin(azimuth));
            bx::Vec3 const center3(static_cast<float>(center.x()), static_cast<float>(center.y()), 50.0f);
            vertices.emplace_back(bx::add(center3, bx::mul(normal, radius)), normal, kColor);
            if (stack == stacks || slice == slices)
                continue;
            int const first = stack * (slices + 1) + slice;
            for (int const offset : {0, 1, slices + 1, slices + 1, 1, slices + 2})
                indices.push_back(static_cast<std::uint16_t>(first + offset));
        }
    }
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    view.SetOrthoProjectionFromRect(QRectF(0.0, 0.0, 64.0, 48.0), 0.0f, 100.0f, 0.0f);
    view.Submit(m_target.GetFrameBuffer());
    m_renderer.DrawTriangles(view, vertices, indices);
    QImage const image = Present();
    // At the outline the angle changes too fast for a polyhedron to follow.
    QImage expected = image;
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            double const distance = std::hypot(x + 0.5 - center.x(), y + 0.5 - center.y()) / radius;
            if (distance < 0.95)
                expected.setPixelColor(x, y, LitColor(std::sqrt(1.0 - distance * distance)));
            else if (distance > 1.05)
                expected.setPixelColor(x, y, Qt::black);
        }
    }
    EXPECT_TRUE(Matches(image, expected, kTolerance));
}

TEST_P(LightingTest, TransparencyBlendsWithWhatIsBehind) {
    zx3D::Color color = kColor;
    color.alpha = 0.25f;
    StartFrame();
    DrawRect(SubmitPixelView(QColor(100, 200, 40)), QRectF(m_target.GetViewport()), {0.6f, 0.0f, -0.8f},
             color);
    auto const blended = [](int above, int below) {
        return static_cast<int>(std::lround(0.25 * above + 0.75 * below));
    };
    QColor const lit = LitColor(0.8);
    QColor const expected(blended(lit.red(), 100), blended(lit.green(), 200), blended(lit.blue(), 40),
                          blended(64, 255));
    EXPECT_TRUE(Matches(Present(), Canvas(expected), kTolerance));
}

TEST_P(LightingTest, AnotherStateAndProgramCanBeGiven) {
    zx3D::Color const transparent{0.8f, 0.4f, 0.2f, 0.25f};
    bx::Vec3 const oblique(0.6f, 0.0f, -0.8f);
    Vertex const vertices[] = {{{0.0f, 0.0f, 0.5f}, oblique, transparent},
                               {{128.0f, 0.0f, 0.5f}, oblique, transparent},
                               {{0.0f, 96.0f, 0.5f}, oblique, transparent}};
    std::uint16_t const indices[] = {0, 1, 2};
    auto const opaque = zx3DQt::BGFXRenderer::STATE_OPAQUE;
    QColor const lit = LitColor(0.8, transparent);
    StartFrame();
    m_renderer.DrawTriangles(SubmitPixelView(), vertices, indices, std::nullopt, opaque);
    EXPECT_TRUE(Matches(Present(), Canvas(QColor(lit.red(), lit.green(), lit.blue(), 64)), kTolerance));
    StartFrame();
    m_renderer.DrawTriangles(SubmitPixelView(), vertices, indices, std::nullopt, opaque,
                             m_renderer.GetBasicProgram());
    EXPECT_TRUE(Matches(Present(), Canvas(QColor(204, 102, 51, 64)), kTolerance));
}

ZX3D_INSTANTIATE_BACKENDS(LightingTest);
