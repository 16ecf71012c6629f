// The vertices that the compute shaders write are those that the processor computes.
#include "BufferReadBack.h"
#include "RenderTest.h"

#include <unit/harness/DrawingOf.h>

#include <zx3D/Owned.h>
#include <zx3D/ProgramFactory.h>

#include <zx3d_render_tests_shaders.h>

#include "PointSpriteExpansion.h"
#include "RectangleSpriteExpansion.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <utility>

using namespace zarvex;
using namespace zarvex::testing;
using zx3DQt::Float4;
using zx3DQt::FrameResource;

namespace {

using Points = std::vector<zx3D::Vertex::Pos3fColorRGBA>;
using Lines = std::vector<zx3D::Line>;

constexpr int kCounts[] = {1, 63, 64, 65, 1000};

/// Of a vec4 as a whole: where a small component is the difference of large terms, its own digits mean
/// nothing.
constexpr float kRelativeError = 1e-5f;

float Magnitude(Float4 const& v) {
    return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z), std::abs(v.w)});
}

bool IsFinite(Float4 const& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z) && std::isfinite(v.w);
}

/// A division by zero gives infinities or no numbers, and which of them is up to the GPU.
bool IsNear(Float4 const& actual, Float4 const& expected) {
    if (!IsFinite(expected))
        return !IsFinite(actual);
    Float4 const difference{actual.x - expected.x, actual.y - expected.y, actual.z - expected.z,
                            actual.w - expected.w};
    return Magnitude(difference) <= kRelativeError * Magnitude(expected);
}

std::string ToString(Float4 const& v) {
    std::ostringstream text;
    text << '(' << v.x << ", " << v.y << ", " << v.z << ", " << v.w << ')';
    return text.str();
}

/// Positions in a range, the same in every run.
class Positions {
public:
    Positions(bx::Vec3 from, bx::Vec3 to) : m_from(from), m_to(to) {}

    bx::Vec3 Next() {
        return {Between(m_from.x, m_to.x), Between(m_from.y, m_to.y), Between(m_from.z, m_to.z)};
    }

private:
    float Between(float from, float to) {
        return from + (to - from) * (static_cast<float>(m_random() % 65536) / 65536.0f);
    }

    bx::Vec3 m_from, m_to;
    std::mt19937 m_random{1};
};

zx3D::Color ColorOf(int i) {
    float const n = static_cast<float>(i);
    return {0.125f * n, 1.0f / (n + 1.0f), 0.5f, 1.0f - 0.001f * n};
}

Points PointsIn(Positions positions, int count) {
    Points points;
    for (int i = 0; i < count; ++i)
        points.emplace_back(positions.Next(), ColorOf(i));
    return points;
}

Lines LinesIn(Positions positions, int count) {
    Lines lines;
    for (int i = 0; i < count; ++i) {
        bx::Vec3 const start = positions.Next();
        lines.push_back({start, positions.Next(), ColorOf(i)});
    }
    return lines;
}

/// What a camera at the origin that looks along z sees, and does not see.
Positions InFront() {
    return {{-2.0f, -2.0f, 1.0f}, {2.0f, 2.0f, 9.0f}};
}

Positions Behind() {
    return {{-2.0f, -2.0f, -9.0f}, {2.0f, 2.0f, -1.0f}};
}

QRect const kViewport(5, 9, 51, 33);

zx3DQt::BGFXViewContext PerspectiveView() {
    QMatrix4x4 projection;
    bx::mtxProj(projection.data(), 60.0f, 51.0f / 33.0f, 0.1f, 100.0f, bgfx::getCaps()->homogeneousDepth);
    zx3DQt::BGFXViewContext view = PixelView(kViewport);
    view.SetProjectionMatrix(projection);
    return view;
}

/// A camera at (0.3, -0.2, 0.1) that looks aside.
zx3DQt::BGFXViewContext ViewFromInside(float near) {
    zx3DQt::BGFXViewContext view = PixelView(QRect(0, 0, 1280, 720));
    bx::mtxLookAt(view.GetViewMatrix().data(), {0.3f, -0.2f, 0.1f}, {2.0f, 1.0f, 5.0f});
    bx::mtxProj(view.GetProjectionMatrix().data(), 60.0f, 16.0f / 9.0f, near, 1e6f,
                bgfx::getCaps()->homogeneousDepth);
    return view;
}

float ClipW(QMatrix4x4 const& matrix, bx::Vec3 const& p) {
    QVector4D const row = matrix.row(3);
    return row.x() * p.x + row.y() * p.y + row.z() * p.z + row.w();
}

/// Also close before it, where rounding decides.
bool ReachesBehindCamera(zx3D::Line const& line, QMatrix4x4 const& matrix) {
    return ClipW(matrix, line.start) < 1e-4f || ClipW(matrix, line.end) < 1e-4f;
}

class SpriteExpansionTest : public RenderTest {
protected:
    SpriteExpansionTest() { EXPECT_TRUE(bgfx::getCaps()->supported & BGFX_CAPS_COMPUTE); }

    void Check(zx3DQt::BGFXViewContext const& view, Points const& points,
               QMatrix4x4 const& model = QMatrix4x4());
    void Check(zx3DQt::BGFXViewContext const& view, Lines const& lines,
               QMatrix4x4 const& model = QMatrix4x4());

    /// Expects of lines with both ends in front of the camera the bits of a formula that knows no other ones.
    /// Returns how many of the lines are.
    std::size_t CheckBits(zx3DQt::BGFXViewContext view, Lines const& lines);

private:
    /// What the compute shader of the library writes in the recorded frame.
    template<typename Vertex>
    bgfx::DynamicVertexBufferHandle Buffer(FrameResource kind);

    /// Compares with what the compute shader writes in the recorded frame.
    template<typename Vertex>
    void CheckVertices(FrameResource kind, std::vector<Vertex> const& expected);
};

void SpriteExpansionTest::Check(zx3DQt::BGFXViewContext const& view, Points const& points,
                                QMatrix4x4 const& model) {
    constexpr std::uint16_t size = 7;
    StartFrame();
    view.Submit(m_target.GetFrameBuffer());
    m_renderer.SetModelTransform(model);
    m_renderer.DrawPoints(view, points, size);
    std::vector<zx3DQt::PointSprite::DummyVertexT> expected(points.size() *
                                                            zx3DQt::PointSprite::kVerticesPerPoint);
    zx3DQt::PointSprite::Expand(points, view.GetProjectionMatrix() * view.GetViewMatrix() * model,
                                view.GetViewport().size(), size, expected.data());
    CheckVertices(FrameResource::SpriteVertices, expected);
}

void SpriteExpansionTest::Check(zx3DQt::BGFXViewContext const& view, Lines const& lines,
                                QMatrix4x4 const& model) {
    constexpr std::uint16_t width = 5;
    StartFrame();
    view.Submit(m_target.GetFrameBuffer());
    m_renderer.SetModelTransform(model);
    m_renderer.DrawLines(view, lines, width);
    std::vector<zx3DQt::RectangleSprite::DummyVertexT> expected(lines.size() *
                                                                zx3DQt::RectangleSprite::kVerticesPerLine);
    zx3DQt::RectangleSprite::Expand(lines, view.GetProjectionMatrix() * view.GetViewMatrix() * model,
                                    view.GetViewport().size(), width, expected.data());
    CheckVertices(FrameResource::RectangleSpriteOutput, expected);
}

template<typename Vertex>
bgfx::DynamicVertexBufferHandle SpriteExpansionTest::Buffer(FrameResource kind) {
    auto const& resources = FrameResourcesOf(m_renderer).at(static_cast<std::uint8_t>(kind));
    EXPECT_EQ(resources.size(), 1u);
    return std::any_cast<std::shared_ptr<zx3DQt::DynamicBufferResource<Vertex>>>(resources.front())
        ->vertexBuffer.Get();
}

template<typename Vertex>
void SpriteExpansionTest::CheckVertices(FrameResource kind, std::vector<Vertex> const& expected) {
    constexpr std::size_t vectorsPerVertex = sizeof(Vertex) / sizeof(Float4);
    std::size_t const count = expected.size() * vectorsPerVertex;
    std::vector<QVector4D> const values =
        ReadBack(Buffer<Vertex>(kind), static_cast<std::uint32_t>(count), 1);
    for (std::size_t i = 0; i < count; ++i) {
        Float4 actualVector, expectedVector;
        std::memcpy(&actualVector, &values[i], sizeof(Float4));
        std::memcpy(&expectedVector, reinterpret_cast<char const*>(expected.data()) + i * sizeof(Float4),
                    sizeof(Float4));
        if (!IsNear(actualVector, expectedVector)) {
            FAIL() << "vec4 " << i % vectorsPerVertex << " of vertex " << i / vectorsPerVertex << " of "
                   << expected.size() << " is " << ToString(actualVector) << " instead of "
                   << ToString(expectedVector);
        }
    }
}

std::size_t SpriteExpansionTest::CheckBits(zx3DQt::BGFXViewContext view, Lines const& lines) {
    using namespace zx3DQt::RectangleSprite;
    constexpr std::uint32_t vectorsPerLine = kVerticesPerLine * sizeof(DummyVertexT) / sizeof(Float4);
    constexpr std::uint16_t width = 4;
    auto const count = static_cast<std::uint32_t>(lines.size());
    StartFrame();
    view.Submit(m_target.GetFrameBuffer());
    m_renderer.DrawLines(view, lines, width);

    // The same input through the formula.
    bgfx::DynamicVertexBufferHandle const output = Buffer<DummyVertexT>(FrameResource::RectangleSpriteOutput);
    zx3D::Owned const formulaOutput(bgfx::createDynamicVertexBuffer(
        kVerticesPerLine * count,
        zx3DQt::LayoutOfFloat4s({bgfx::Attrib::TexCoord0, bgfx::Attrib::Color0, bgfx::Attrib::TexCoord1,
                                 bgfx::Attrib::TexCoord2}),
        BGFX_BUFFER_COMPUTE_WRITE));
    view.SetViewId(1);
    view.Submit(m_target.GetFrameBuffer());
    zx3DQt::Drawing const& drawing = DrawingOf(m_renderer);
    m_renderer.SetModelTransform(QMatrix4x4());
    drawing.UpdateViewportUniform(view);
    drawing.UpdateRectangleSpriteUniform(count, width);
    bgfx::setBuffer(0, Buffer<ComputeStageInputVertexData>(FrameResource::RectangleSpriteInput),
                    bgfx::Access::Read);
    bgfx::setBuffer(1, formulaOutput.Get(), bgfx::Access::Write);
    bgfx::dispatch(view,
                   zx3D::ProgramFactory::Get()
                       .CreateProgram(zx3d_render_tests_shaders::cs_rectangle_sprite_in_front)
                       .value(),
                   (count + 63) / 64);
    std::vector<QVector4D> const actual = ReadBack(output, vectorsPerLine * count, 2);
    std::vector<QVector4D> const expected = ReadBack(formulaOutput.Get(), vectorsPerLine * count, 2);

    QMatrix4x4 const matrix = view.GetProjectionMatrix() * view.GetViewMatrix();
    std::size_t inFront = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (ReachesBehindCamera(lines[i], matrix))
            continue;
        ++inFront;
        if (std::memcmp(&actual[i * vectorsPerLine], &expected[i * vectorsPerLine],
                        vectorsPerLine * sizeof(Float4)) != 0) {
            ADD_FAILURE() << "line " << i << " differs";
            break;
        }
    }
    return inFront;
}

} // namespace

TEST_P(SpriteExpansionTest, AnyNumberIsExpanded) {
    for (int const count : kCounts) {
        SCOPED_TRACE(count);
        Check(PerspectiveView(), PointsIn(InFront(), count));
        Check(PerspectiveView(), LinesIn(InFront(), count));
    }
}

TEST_P(SpriteExpansionTest, ModelViewAndProjectionApply) {
    QMatrix4x4 model;
    model.translate(0.3f, -0.2f, 4.0f);
    model.rotate(37.0f, 1.0f, 2.0f, 3.0f);
    model.scale(0.7f, 1.3f, 0.4f);
    zx3DQt::BGFXViewContext view = PerspectiveView();
    view.SetViewMatrix(QQuaternion::fromAxisAndAngle(0.0f, 1.0f, 0.2f, 11.0f));
    Positions const positions({-1.0f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f});
    Check(view, PointsIn(positions, 100), model);
    Check(view, LinesIn(positions, 100), model);

    zx3DQt::BGFXViewContext const pixelView = PixelView(kViewport);
    QMatrix4x4 turned;
    turned.rotate(15.0f, 0.0f, 0.0f, 1.0f);
    Positions const pixels({-20.0f, -20.0f, 0.0f}, {70.0f, 50.0f, 1.0f});
    Check(pixelView, PointsIn(pixels, 100), turned);
    Check(pixelView, LinesIn(pixels, 100), turned);
}

TEST_P(SpriteExpansionTest, LinesFromBehindAreCutAlike) {
    for (auto const& [near, extent] :
         {std::pair(0.1f, 1.0f), std::pair(0.1f, 100.0f), std::pair(0.001f, 100.0f), std::pair(1.0f, 1e6f)}) {
        SCOPED_TRACE(extent);
        zx3DQt::BGFXViewContext const view = ViewFromInside(near);
        QMatrix4x4 const matrix = view.GetProjectionMatrix() * view.GetViewMatrix();
        Lines lines;
        for (zx3D::Line const& line :
             LinesIn(Positions({-extent, -extent, -extent}, {extent, extent, extent}), 8000)) {
            // The end in front is far enough in front for floats of whatever order of additions.
            auto const [behind, inFront] = std::minmax({ClipW(matrix, line.start), ClipW(matrix, line.end)});
            if (behind < -1e-3f * extent && inFront > 0.2f * extent)
                lines.push_back(line);
        }
        EXPECT_GT(lines.size(), 1000u);
        Check(view, lines);
    }
}

TEST_P(SpriteExpansionTest, LinesInFrontHaveTheBitsOfTheFormulaWhateverIsBesideThem) {
    zx3DQt::BGFXViewContext const perspective = ViewFromInside(0.1f);
    zx3DQt::BGFXViewContext parallel = perspective;
    bx::mtxOrtho(parallel.GetProjectionMatrix().data(), -5.0f, 5.0f, -3.0f, 3.0f, 0.1f, 10.0f, 0.0f,
                 bgfx::getCaps()->homogeneousDepth);
    Lines const lines = LinesIn(Positions({-9.0f, -9.0f, -1.0f}, {9.0f, 9.0f, 9.0f}), 50'000 * 13);
    std::size_t inFront = 0;
    for (std::size_t first = 0; first < lines.size(); first += 50'000) {
        auto const from = lines.begin() + static_cast<std::ptrdiff_t>(first);
        Lines const some(from, from + 50'000);
        inFront += CheckBits(perspective, some) + CheckBits(parallel, some);
    }
    EXPECT_GT(inFront, 1'000'000u);
}

TEST_P(SpriteExpansionTest, WhatIsBehindTheCameraIsExpandedToo) {
    Check(PerspectiveView(), PointsIn(Behind(), 100));
    Check(PerspectiveView(), LinesIn(Behind(), 100));
    Lines crossing = LinesIn(InFront(), 100);
    Lines const behind = LinesIn(Behind(), 100);
    for (std::size_t i = 0; i < crossing.size(); ++i)
        (i % 2 == 0 ? crossing[i].start : crossing[i].end) = behind[i].start;
    Check(PerspectiveView(), crossing);
}

TEST_P(SpriteExpansionTest, TheCamerasOwnPlaneHarmsNothingElse) {
    // There clip w is 0. Every other one is in front of the camera.
    Points points = PointsIn(InFront(), 100);
    Lines lines = LinesIn(InFront(), 100);
    for (std::size_t i = 0; i < points.size(); i += 2) {
        points[i].position.z = 0.0f;
        (i % 4 == 0 ? lines[i].start : lines[i].end).z = 0.0f;
    }
    points[0].position = lines[0].start = bx::Vec3(0.0f, 0.0f, 0.0f);
    lines[4].end.z = 0.0f;
    Check(PerspectiveView(), points);
    Check(PerspectiveView(), lines);
}

TEST_P(SpriteExpansionTest, LinesWithoutALengthCollapse) {
    Lines lines = LinesIn(InFront(), 100);
    for (std::size_t i = 0; i < lines.size(); i += 2) {
        float const distance = i % 4 == 0 ? 1.0f : 2.0f; // the same place, or one behind the other
        lines[i].end = bx::mul(lines[i].start, distance);
    }
    Check(PerspectiveView(), lines);
}

ZX3D_INSTANTIATE_BACKENDS(SpriteExpansionTest);
