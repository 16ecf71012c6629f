// Unlit triangles: their colours, their indices, and nothing else.
#include "RenderTest.h"
#include "SoftwareTriangle.h"

#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using Vertex = zx3D::Vertex::Pos3fColorRGBA;

namespace {

class DrawTrianglesTest : public RenderTest {
protected:
    /// Draws the triangle whose world coordinates are `positions`, with a matrix that maps them to clip
    /// space, over gray; compares with the triangle computed by hand.
    void CheckTriangle(QMatrix4x4 const& worldToClip, std::array<QVector3D, 3> const& positions);
};

constexpr zx3D::Color kCornerColors[] = {
    {1.0f, 0.2f, 0.1f, 1.0f}, {0.0f, 0.9f, 0.3f, 0.5f}, {0.15f, 0.25f, 1.0f, 0.0f}};

void DrawTrianglesTest::CheckTriangle(QMatrix4x4 const& worldToClip,
                                      std::array<QVector3D, 3> const& positions) {
    QColor const background(90, 90, 90);
    StartFrame();
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport(), background);
    view.SetProjectionMatrix(worldToClip);
    view.Submit(m_target.GetFrameBuffer());
    Vertex vertices[3];
    std::array<ClipVertex, 3> clipVertices;
    for (int i = 0; i < 3; ++i) {
        zx3D::Color const& color = kCornerColors[i];
        vertices[i] = Vertex({positions[i].x(), positions[i].y(), positions[i].z()}, color);
        clipVertices[i] = {worldToClip * QVector4D(positions[i], 1.0f),
                           QVector4D(color.red, color.green, color.blue, color.alpha)};
    }
    std::uint16_t const indices[] = {0, 1, 2};
    m_renderer.DrawTriangles(view, vertices, indices);
    QImage const image = Present();
    SoftwareTriangle const triangle(clipVertices, image.size());
    EXPECT_TRUE(Matches(image, triangle.Draw(background, image)));
}

QMatrix4x4 PerspectiveMatrix(float verticalAngle, float aspectRatio, float near, float far) {
    QMatrix4x4 matrix;
    bx::mtxProj(matrix.data(), verticalAngle, aspectRatio, near, far, bgfx::getCaps()->homogeneousDepth);
    return matrix;
}

} // namespace

TEST_P(DrawTrianglesTest, QuadOverTheViewportHasExactlyItsColor) {
    for (QColor const& color : {QColor(255, 255, 255, 255), QColor(17, 130, 201, 77), QColor(1, 2, 254, 0)}) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        DrawRect(view, QRectF(m_target.GetViewport()), color);
        EXPECT_TRUE(Matches(Present(), Canvas(color), kExact));
    }
}

TEST_P(DrawTrianglesTest, ColorsOutsideTheirRangeAreClamped) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    zx3D::Color const color{1.5f, -0.5f, 0.0f, 2.0f};
    Vertex const vertices[] = {{{0.0f, 0.0f, 0.5f}, color},
                               {{64.0f, 0.0f, 0.5f}, color},
                               {{0.0f, 48.0f, 0.5f}, color},
                               {{64.0f, 48.0f, 0.5f}, color}};
    std::uint16_t const indices[] = {0, 1, 2, 2, 1, 3};
    m_renderer.DrawTriangles(view, vertices, indices);
    EXPECT_TRUE(Matches(Present(), Canvas(QColor(255, 0, 0, 255)), kExact));
}

TEST_P(DrawTrianglesTest, CornerColorsBlendOverTheTriangle) {
    QMatrix4x4 const identity;
    CheckTriangle(identity, {{{-0.9f, 0.8f, 0.5f}, {0.85f, 0.55f, 0.5f}, {-0.3f, -0.95f, 0.5f}}});
}

TEST_P(DrawTrianglesTest, TriangleReachingBeyondTheViewportIsCut) {
    QMatrix4x4 const identity;
    CheckTriangle(identity, {{{-3.0f, 0.1f, 0.5f}, {0.7f, 2.5f, 0.5f}, {1.9f, -1.7f, 0.5f}}});
}

TEST_P(DrawTrianglesTest, CornerColorsBlendInPerspective) {
    CheckTriangle(PerspectiveMatrix(60.0f, 64.0f / 48.0f, 0.1f, 100.0f),
                  {{{-1.0f, -0.6f, 2.0f}, {6.0f, -1.0f, 12.0f}, {-0.2f, 0.9f, 2.5f}}});
}

TEST_P(DrawTrianglesTest, BothWindingsAreDrawn) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    zx3D::Color const white{1.0f, 1.0f, 1.0f, 1.0f};
    Vertex const vertices[] = {{{0.0f, 0.0f, 0.5f}, white},
                               {{64.0f, 0.0f, 0.5f}, white},
                               {{0.0f, 48.0f, 0.5f}, white},
                               {{64.0f, 48.0f, 0.5f}, white}};
    std::uint16_t const clockwiseThenCounterclockwise[] = {0, 1, 2, 1, 2, 3};
    m_renderer.DrawTriangles(view, vertices, clockwiseThenCounterclockwise);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::white), kExact));
}

TEST_P(DrawTrianglesTest, DataAreCopiedByTheCall) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView();
    zx3D::Color const white{1.0f, 1.0f, 1.0f, 1.0f};
    std::vector<Vertex> vertices = {
        {{0.0f, 0.0f, 0.5f}, white}, {{128.0f, 0.0f, 0.5f}, white}, {{0.0f, 96.0f, 0.5f}, white}};
    std::vector<std::uint16_t> indices = {0, 1, 2};
    m_renderer.DrawTriangles(view, vertices, indices);
    vertices.assign(vertices.size(), Vertex());
    indices.assign(indices.size(), 0);
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::white), kExact));
}

TEST_P(DrawTrianglesTest, EmptySpansDrawNothing) {
    StartFrame();
    zx3DQt::BGFXViewContext const view = SubmitPixelView(Qt::darkGreen);
    DrawRect(view, QRectF(m_target.GetViewport()), Qt::darkGreen);
    Vertex const vertices[3];
    std::uint16_t const indices[] = {0, 1, 2};
    m_renderer.DrawTriangles(view, vertices, zx3D::DataSpan<std::uint16_t const>());
    m_renderer.DrawTriangles(view, zx3D::DataSpan<Vertex const>(), indices);
    m_renderer.DrawTriangles(view, zx3D::DataSpan<Vertex const>(nullptr, 3), indices);
    m_renderer.DrawTriangles(view, vertices, zx3D::DataSpan<std::uint16_t const>(indices, 0));
    EXPECT_TRUE(Matches(Present(), Canvas(Qt::darkGreen), kExact));
}

TEST_P(DrawTrianglesTest, IndicesReachTheLastVertexThatTheyCanAddress) {
    // 128 x 128 quads of four vertices each are all 65,536. Each covers a pixel in a colour of its own.
    constexpr int cells = 128;
    OffscreenTarget target(QSize(cells, cells));
    std::vector<Vertex> vertices;
    std::vector<std::uint16_t> indices;
    QImage expected = FilledImage(QSize(cells, cells), Qt::black);
    for (int y = 0; y < cells; ++y) {
        for (int x = 0; x < cells; ++x) {
            QColor const color(2 * x, 2 * y, (x * 31 + y * 17) % 256);
            expected.setPixelColor(x, y, color);
            auto const first = static_cast<std::uint16_t>(vertices.size());
            for (auto const& [right, down] : {std::pair(0, 0), {1, 0}, {0, 1}, {1, 1}}) {
                bx::Vec3 const corner(static_cast<float>(x + right), static_cast<float>(y + down), 0.5f);
                vertices.emplace_back(corner, ToColor(color));
            }
            for (int const offset : {0, 1, 2, 2, 1, 3})
                indices.push_back(static_cast<std::uint16_t>(first + offset));
        }
    }
    ASSERT_TRUE(m_renderer.StartFrame(target.GetFrameBuffer()));
    m_renderer.SetModelTransform(QMatrix4x4());
    zx3DQt::BGFXViewContext const view = PixelView(target.GetViewport());
    view.Submit(target.GetFrameBuffer());
    m_renderer.DrawTriangles(view, vertices, indices);
    EXPECT_TRUE(Matches(ReadBack(target.GetFrameBuffer()), expected, kExact));
}

ZX3D_INSTANTIATE_BACKENDS(DrawTrianglesTest);
