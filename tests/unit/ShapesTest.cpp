// Circles, rectangles and cones: their geometry and what is submitted.
#include <DrawFixture.h>

#include <zx3DQt/Shapes.h>

#include <QVector2D>
#include <QVector3D>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <tuple>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;

constexpr zx3D::Color kColor{0.1f, 0.2f, 0.3f, 0.4f};
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

class ShapesTest : public DrawFixture {
protected:
    /// The positions of the one draw, all of whose vertices have the colour.
    static std::vector<QVector3D> Positions() {
        std::vector<QVector3D> positions;
        for (Vertex const& vertex : TheDraw().VerticesAs<Vertex>()) {
            EXPECT_EQ(vertex.color, kColor);
            positions.emplace_back(vertex.position.x, vertex.position.y, vertex.position.z);
        }
        return positions;
    }

    static std::vector<std::uint16_t> DrawnIndices() { return TheDraw().IndicesAs<std::uint16_t>(); }

    static void ExpectAt(QVector3D const& position, QVector3D const& expected) {
        EXPECT_NEAR(position.x(), expected.x(), 1e-6);
        EXPECT_NEAR(position.y(), expected.y(), 1e-6);
        EXPECT_NEAR(position.z(), expected.z(), 1e-6);
    }
};

using DrawCircleTest = ShapesTest;
using DrawRectangleTest = ShapesTest;

class DrawConeTest : public ShapesTest {
protected:
    /// The first of the base's edge, seen from its centre, of a cone of radius 1.
    QVector3D FirstSpoke(QVector3D const& direction) {
        recorder::ClearCalls();
        DrawCone(*m_renderer, m_view, direction, {}, 1.0, 1.0, 4, kColor);
        std::vector<QVector3D> const positions = Positions();
        return positions.at(2) - positions.at(1);
    }
};

} // namespace

TEST_F(DrawCircleTest, ModelsHaveTheirDefaults) {
    BGFXCircleModel2D const model;
    EXPECT_EQ(model.center, QVector2D(0, 0));
    EXPECT_EQ(model.radius, 1.0f);
    EXPECT_EQ(model.color, zx3D::Color());
}

TEST_F(DrawCircleTest, CallsBgfxInOrder) {
    DrawCircle(*m_renderer, m_view, {1, 1}, 2.0f, kColor, 0.5f, BGFXRenderer::STATE_TRANSPARENT);
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("allocTransientBuffers(361, 28, 1080, false)", "setVertexBuffer(0, transient)",
                            "setIndexBuffer(transient)", "setState(0x400656502f, 0x0)",
                            "submit(5, " + Program("vs_basic", "fs_basic") + ", 0, 0xff)"));
    EXPECT_EQ(TheDraw().layout, "Position 3 Float, Color0 4 Float");
}

TEST_F(DrawCircleTest, HasItsCenterAndThenAPointForEachDegree) {
    DrawCircle(*m_renderer, m_view, {1, 1}, 2.0f, kColor, 0.5f, BGFXRenderer::STATE_OPAQUE);
    std::vector<QVector3D> const positions = Positions();
    ASSERT_THAT(positions, SizeIs(361));
    EXPECT_EQ(positions[0], QVector3D(1, 1, 0.5f));
    EXPECT_EQ(positions[1], QVector3D(3, 1, 0.5f));
    ExpectAt(positions[91], {1, 3, 0.5f});
    ExpectAt(positions[181], {-1, 1, 0.5f});
    ExpectAt(positions[271], {1, -1, 0.5f});
    for (int i = 0; i < 360; ++i) {
        float const angle = float(i) * 0.017453292f;
        ASSERT_EQ(positions[i + 1], QVector3D(1 + std::cos(angle) * 2.0f, 1 + std::sin(angle) * 2.0f, 0.5f));
    }
}

TEST_F(DrawCircleTest, TrianglesFanOutAndClose) {
    DrawCircle(*m_renderer, m_view, {}, 1.0f, kColor, 0.0f, BGFXRenderer::STATE_OPAQUE);
    std::vector<std::uint16_t> const indices = DrawnIndices();
    ASSERT_THAT(indices, SizeIs(1080));
    for (int i = 0; i < 360; ++i) {
        ASSERT_EQ(indices[3 * i], 0);
        ASSERT_EQ(indices[3 * i + 1], i + 1);
        ASSERT_EQ(indices[3 * i + 2], i < 359 ? i + 2 : 1);
    }
}

TEST_F(DrawCircleTest, AModelIsDrawnAsItsMembers) {
    DrawCircle(*m_renderer, m_view, {1, 2}, 3.0f, kColor, 4.0f, BGFXRenderer::STATE_MARKER_OVERLAY);
    recorder::Draw const expected = TheDraw();
    recorder::ClearCalls();
    DrawCircle(*m_renderer, m_view, BGFXCircleModel2D{{1, 2}, 3.0f, kColor}, 4.0f,
               BGFXRenderer::STATE_MARKER_OVERLAY);
    EXPECT_EQ(TheDraw().vertices, expected.vertices);
    EXPECT_EQ(TheDraw().state, expected.state);
}

TEST_F(DrawCircleTest, WithoutSpaceNothingIsDrawnAndLaterOnesAre) {
    RestartWithTransientSpace(361 * sizeof(Vertex), 3000);
    for (int i = 0; i < 2; ++i)
        DrawCircle(*m_renderer, m_view, {}, 1.0f, kColor, 0.0f, BGFXRenderer::STATE_OPAQUE);
    EXPECT_THAT(recorder::Draws(), SizeIs(1));
    EXPECT_EQ(recorder::CountCalls("setVertexBuffer"), 1u);
    bgfx::frame();
    DrawCircle(*m_renderer, m_view, {}, 1.0f, kColor, 0.0f, BGFXRenderer::STATE_OPAQUE);
    EXPECT_THAT(recorder::Draws(), SizeIs(2));
}

TEST_F(DrawRectangleTest, ModelsHaveTheirDefaults) {
    BGFXRectangleModel2D const model;
    EXPECT_EQ(model.center, QVector2D(0, 0));
    EXPECT_EQ(model.halfExtents, QVector2D(1, 1));
    EXPECT_EQ(model.color, zx3D::Color());
}

TEST_F(DrawRectangleTest, IsTwoTrianglesInTheCurrentTransform) {
    DrawRectangle(*m_renderer, m_view, {0, 0}, {1, 1}, kColor, 0.5f, BGFXRenderer::STATE_MARKER_OVERLAY);
    EXPECT_THAT(Positions(), ElementsAre(QVector3D(-1, -1, 0.5f), QVector3D(-1, 1, 0.5f),
                                         QVector3D(1, 1, 0.5f), QVector3D(1, -1, 0.5f)));
    EXPECT_THAT(DrawnIndices(), ElementsAre(0, 1, 2, 2, 3, 0));
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ(draw.view, 5);
    EXPECT_EQ(draw.program.idx, m_renderer->GetBasicProgram().idx);
    EXPECT_EQ(draw.state, std::uint64_t(BGFXRenderer::STATE_MARKER_OVERLAY));
    EXPECT_EQ(draw.transform, 0u);
}

TEST_F(DrawRectangleTest, ReachesTheHalfExtentsFromItsCenter) {
    DrawRectangle(*m_renderer, m_view, {10, 20}, {1, 2}, kColor, 0.0f, BGFXRenderer::STATE_OPAQUE);
    EXPECT_THAT(Positions(), ElementsAre(QVector3D(9, 18, 0), QVector3D(9, 22, 0), QVector3D(11, 22, 0),
                                         QVector3D(11, 18, 0)));
}

TEST_F(DrawRectangleTest, AModelIsDrawnAsItsMembers) {
    DrawRectangle(*m_renderer, m_view, BGFXRectangleModel2D{{10, 20}, {1, 2}, kColor}, 3.0f,
                  BGFXRenderer::STATE_TRANSPARENT);
    EXPECT_THAT(Positions(), ElementsAre(QVector3D(9, 18, 3), QVector3D(9, 22, 3), QVector3D(11, 22, 3),
                                         QVector3D(11, 18, 3)));
    EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT));
}

TEST_F(DrawConeTest, ModelsHaveTheirDefaults) {
    BGFXConeModel const model;
    EXPECT_EQ(QVector3D(model.direction.x, model.direction.y, model.direction.z), QVector3D());
    EXPECT_EQ(QVector3D(model.apex.x, model.apex.y, model.apex.z), QVector3D());
    EXPECT_EQ(model.height, 0.15f);
    EXPECT_EQ(model.radius, 0.05f);
    EXPECT_EQ(model.segments, 32);
    EXPECT_EQ(model.color, zx3D::Color());
}

TEST_F(DrawConeTest, HasItsApexItsBaseCenterAndThenTheEdge) {
    DrawCone(*m_renderer, m_view, {0, 0, 1}, {0, 0, 1}, 0.3, 0.5, 4, kColor);
    std::vector<QVector3D> const positions = Positions();
    ASSERT_THAT(positions, SizeIs(6));
    ExpectAt(positions[0], {0, 0, 1});
    ExpectAt(positions[1], {0, 0, 0.7f});
    ExpectAt(positions[2], {0, 0.5f, 0.7f});
    ExpectAt(positions[3], {0.5f, 0, 0.7f});
    ExpectAt(positions[4], {0, -0.5f, 0.7f});
    ExpectAt(positions[5], {-0.5f, 0, 0.7f});
}

TEST_F(DrawConeTest, ThreeSegmentsAreFiveVerticesAndSixTriangles) {
    DrawCone(*m_renderer, m_view, {0, 0, 1}, {}, 1.0, 1.0, 3, kColor);
    EXPECT_THAT(Positions(), SizeIs(5));
    EXPECT_THAT(DrawnIndices(), ElementsAre(2, 3, 0, 3, 4, 0, 4, 2, 0, 2, 1, 3, 3, 1, 4, 4, 1, 2));
}

TEST_F(DrawConeTest, IsOpaqueInTheCurrentTransform) {
    DrawCone(*m_renderer, m_view, {0, 0, 1}, {}, 1.0, 1.0, 3, kColor);
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ(draw.view, 5);
    EXPECT_EQ(draw.program.idx, m_renderer->GetBasicProgram().idx);
    EXPECT_EQ(draw.state, std::uint64_t(BGFXRenderer::STATE_OPAQUE));
    EXPECT_EQ(draw.transform, 0u);
}

TEST_F(DrawConeTest, TheEdgeStartsAcrossTheAxisThatTheDirectionHasLeastOf) {
    EXPECT_EQ(FirstSpoke({0.5f, 1, 2}), QVector3D(0, 2, -1)) << "x";
    EXPECT_EQ(FirstSpoke({2, -0.5f, 1}), QVector3D(-1, 0, 2)) << "y, by its absolute value";
    EXPECT_EQ(FirstSpoke({1, 2, 0.5f}), QVector3D(2, -1, 0)) << "z";
}

TEST_F(DrawConeTest, OfEqualAxesTheEarlierWins) {
    EXPECT_EQ(FirstSpoke({0, 0, 1}), QVector3D(0, 1, 0)) << "x before y";
    EXPECT_EQ(FirstSpoke({0, 1, 0}), QVector3D(0, 0, -1)) << "x before z";
    EXPECT_EQ(FirstSpoke({1, 0, 0}), QVector3D(0, 0, 1)) << "y before z";
    EXPECT_EQ(FirstSpoke({1, -1, 1}), QVector3D(0, 1, 1)) << "x before both";
}

TEST_F(DrawConeTest, ADirectionThatIsNoUnitVectorScalesHeightAndBase) {
    DrawCone(*m_renderer, m_view, {0, 0, 2}, {}, 0.5, 0.25, 4, kColor);
    std::vector<QVector3D> const positions = Positions();
    ASSERT_THAT(positions, SizeIs(6));
    ExpectAt(positions[1], {0, 0, -1});
    ExpectAt(positions[2], {0, 0.5f, -1});
    ExpectAt(positions[3], {1, 0, -1});
}

TEST_F(DrawConeTest, WithoutSizeNothingIsDrawn) {
    for (int const segments : {0, -1, std::numeric_limits<int>::min()})
        DrawCone(*m_renderer, m_view, {0, 0, 1}, {}, 1.0, 1.0, segments, kColor);
    for (double const radius : {0.0, -0.0, 1.19e-7, -1.19e-7, double(kNaN)})
        DrawCone(*m_renderer, m_view, {0, 0, 1}, {}, 1.0, radius, 3, kColor);
    DrawCone(*m_renderer, m_view, {0, 0, 1}, {}, double(kNaN), 1.0, 3, kColor);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(DrawConeTest, WhatHasSomeSizeIsDrawn) {
    DrawCone(*m_renderer, m_view, {0, 0, 1}, {}, 1.0, 1.1920928955078125e-7, 3, kColor);
    DrawCone(*m_renderer, m_view, {0, 0, 1}, {}, 1.0, -1.0, 3, kColor);
    DrawCone(*m_renderer, m_view, {0, 0, 1}, {}, 0.0, 1.0, 3, kColor);
    DrawCone(*m_renderer, m_view, {0, 0, 1}, {}, -1.0, 1.0, 1, kColor);
    EXPECT_THAT(recorder::Draws(), SizeIs(4));
}

TEST_F(DrawConeTest, AModelIsDrawnAsItsMembers) {
    DrawCone(*m_renderer, m_view, {0, 0, 1}, {1, 2, 3}, double(0.3f), double(0.1f), 7, kColor);
    recorder::Draw const expected = TheDraw();
    recorder::ClearCalls();
    DrawCone(*m_renderer, m_view, BGFXConeModel{{0, 0, 1}, {1, 2, 3}, 0.3f, 0.1f, 7, kColor});
    EXPECT_EQ(TheDraw().vertices, expected.vertices);
    EXPECT_EQ(TheDraw().indices, expected.indices);
}

namespace {

/// A cone with light, and the lamp as it is meant: over the left shoulder of a viewer who looks along -z.
class LitConeTest : public DrawFixture {
protected:
    LitConeTest() {
        m_cone.direction = {0.0f, 0.0f, 1.0f};
        m_cone.apex = {1.0f, 2.0f, 3.0f};
        m_cone.height = 0.4f;
        m_cone.radius = 0.3f;
        m_cone.segments = 12;
        m_cone.color = {0.8f, 0.5f, 0.2f, 0.6f};
    }

    void SetUp() override {
        DrawFixture::SetUp();
        QMatrix4x4 projection;
        projection.ortho(-5, 5, -5, 5, -100, 100);
        m_view.SetProjectionMatrix(projection);
    }

    std::vector<Vertex> DrawnVertices() {
        recorder::ClearCalls();
        DrawCone(*m_renderer, m_view, m_cone, m_light);
        return TheDraw().VerticesAs<Vertex>();
    }

    /// What the test expects of a surface that faces somewhere.
    static float BrightnessOf(QVector3D const& normal, QVector3D const& toLamp, float ambient) {
        float const cosine = QVector3D::dotProduct(normal.normalized(), toLamp.normalized());
        return ambient + (1.0f - ambient) * std::max(cosine, 0.0f);
    }

    void ExpectColors(QVector3D const& toLamp, QMatrix4x4 const& model = {}) {
        std::vector<Vertex> const vertices = DrawnVertices();
        ASSERT_THAT(vertices, SizeIs(3 * m_cone.segments + 1));
        QVector3D const direction(m_cone.direction.x, m_cone.direction.y, m_cone.direction.z);
        QVector3D const apex(m_cone.apex.x, m_cone.apex.y, m_cone.apex.z);
        QVector3D const base = apex - m_cone.height * direction;
        auto const expect = [&](Vertex const& vertex, QVector3D const& position, QVector3D const& normal) {
            EXPECT_NEAR(
                (QVector3D(vertex.position.x, vertex.position.y, vertex.position.z) - position).length(),
                0.0f, 1e-5f);
            QVector3D const world = model.mapVector(normal); // of rotations
            float const brightness = BrightnessOf(world, toLamp, m_light.ambient);
            EXPECT_NEAR(vertex.color.red, brightness * m_cone.color.red, 1e-4f);
            EXPECT_NEAR(vertex.color.green, brightness * m_cone.color.green, 1e-4f);
            EXPECT_NEAR(vertex.color.blue, brightness * m_cone.color.blue, 1e-4f);
            EXPECT_EQ(vertex.color.alpha, m_cone.color.alpha);
        };
        // Corners are where those of a flat cone are, and a slope's normal leans as the slope does.
        recorder::ClearCalls();
        DrawCone(*m_renderer, m_view, m_cone);
        std::vector<Vertex> const flat = TheDraw().VerticesAs<Vertex>();
        for (std::size_t i = 0; i < static_cast<std::size_t>(m_cone.segments); ++i) {
            auto const cornerAt = [&](std::size_t k) {
                bx::Vec3 const& p = flat[2 + k % static_cast<std::size_t>(m_cone.segments)].position;
                return QVector3D(p.x, p.y, p.z);
            };
            QVector3D const outwards = (cornerAt(i) - base).normalized();
            QVector3D const middle = ((cornerAt(i) + cornerAt(i + 1)) / 2 - base).normalized();
            auto const slope = [&](QVector3D const& out) {
                return m_cone.height * out + m_cone.radius * direction;
            };
            expect(vertices[3 * i], cornerAt(i), slope(outwards));
            expect(vertices[3 * i + 1], apex, slope(middle));
            expect(vertices[3 * i + 2], cornerAt(i), -direction);
        }
        expect(vertices.back(), base, -direction);
    }

    BGFXConeModel m_cone;
    CameraLight m_light;
};

} // namespace

TEST_F(LitConeTest, ColorsAreThoseOfAMattSurface) {
    ExpectColors(QVector3D(-0.5f, 0.7f, 1.0f));
    m_light.ambient = 0.1f;
    ExpectColors(QVector3D(-0.5f, 0.7f, 1.0f));
    m_cone.direction = {0.6f, 0.0f, -0.8f};
    ExpectColors(QVector3D(-0.5f, 0.7f, 1.0f));
}

TEST_F(LitConeTest, TheLampGoesWithTheViewer) {
    // From +x, with z up: right is +y.
    QMatrix4x4 camera;
    camera.lookAt(QVector3D(50, 0, 0), QVector3D(), QVector3D(0, 0, 1));
    m_view.SetViewMatrix(camera);
    ExpectColors(QVector3D(1.0f, -0.5f, 0.7f));
    QMatrix4x4 perspective;
    perspective.perspective(40.0f, 2.0f, 0.1f, 100.0f);
    m_view.SetProjectionMatrix(perspective);
    ExpectColors(QVector3D(1.0f, -0.5f, 0.7f));
    // A left-handed projection looks along +z.
    QMatrix4x4 leftHanded;
    bx::mtxProj(leftHanded.data(), 40.0f, 2.0f, 0.1f, 100.0f, false, bx::Handedness::Left);
    m_view.SetProjectionMatrix(leftHanded);
    m_view.SetViewMatrix(QMatrix4x4());
    ExpectColors(QVector3D(-0.5f, 0.7f, -1.0f));
}

TEST_F(LitConeTest, TurnedConesAreLitFromTheSameSide) {
    QMatrix4x4 model;
    model.rotate(70.0f, 1.0f, 2.0f, 3.0f);
    m_renderer->SetModelTransform(model);
    EXPECT_EQ(m_renderer->GetModelTransform(), model);
    ExpectColors(QVector3D(-0.5f, 0.7f, 1.0f), model);
}

TEST_F(LitConeTest, TrianglesAreThoseOfTheFlatCone) {
    recorder::ClearCalls();
    DrawCone(*m_renderer, m_view, m_cone);
    recorder::Draw const flat = TheDraw();
    std::vector<Vertex> const flatVertices = flat.VerticesAs<Vertex>();
    std::vector<std::uint16_t> const flatIndices = flat.IndicesAs<std::uint16_t>();
    std::vector<Vertex> const vertices = DrawnVertices();
    std::vector<std::uint16_t> const indices = TheDraw().IndicesAs<std::uint16_t>();
    ASSERT_EQ(indices.size(), flatIndices.size());
    // In another order: side and base of a segment together.
    std::multiset<std::vector<float>> expected, actual;
    auto const triangle = [](std::vector<Vertex> const& from, std::uint16_t const* index) {
        std::vector<float> corners;
        for (int i = 0; i < 3; ++i) {
            bx::Vec3 const& p = from.at(index[i]).position;
            corners.insert(corners.end(), {p.x, p.y, p.z});
        }
        return corners;
    };
    for (std::size_t i = 0; i < indices.size(); i += 3) {
        expected.insert(triangle(flatVertices, &flatIndices[i]));
        actual.insert(triangle(vertices, &indices[i]));
    }
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(TheDraw().state, flat.state);
    EXPECT_EQ(TheDraw().program.idx, flat.program.idx);
}

TEST_F(LitConeTest, WhatIsNoConeIsNotDrawn) {
    recorder::ClearCalls();
    for (auto const& [height, radius, segments] : {std::tuple(0.3f, 0.0f, 12),
                                                   {kNaN, 0.1f, 12},
                                                   {0.3f, kNaN, 12},
                                                   {0.3f, 0.1f, 0},
                                                   {0.3f, 0.1f, -5}}) {
        m_cone.height = height;
        m_cone.radius = radius;
        m_cone.segments = segments;
        DrawCone(*m_renderer, m_view, m_cone, m_light);
    }
    EXPECT_THAT(recorder::Draws(), IsEmpty());
}

TEST_F(LitConeTest, SegmentsEndWhereIndicesDo) {
    m_cone.segments = std::numeric_limits<int>::max();
    EXPECT_THAT(DrawnVertices(), SizeIs(65536));
    EXPECT_THAT(TheDraw().IndicesAs<std::uint16_t>(), SizeIs(6 * 21845));
}

TEST_F(LitConeTest, ViewsWithoutDirectionsLeaveTheShade) {
    m_view.SetProjectionMatrix(QMatrix4x4() * 0.0f);
    for (Vertex const& vertex : DrawnVertices())
        EXPECT_NEAR(vertex.color.red, m_light.ambient * m_cone.color.red, 1e-6f);
}
