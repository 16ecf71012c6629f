// Meshes that stay on the GPU: what bgfx is asked for, and what is refused.
#include <DrawFixture.h>
#include <Warnings.h>

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/MeshBatch.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>
#include <tuple>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::FloatNear;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pointwise;
using testing::SizeIs;

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

/// Position and colour as they lie on the GPU.
struct PackedVertex {
    float x, y, z;
    std::uint8_t red, green, blue, alpha;

    auto Key() const { return std::tuple(x, y, z, red, green, blue, alpha); }
    friend bool operator==(PackedVertex const& a, PackedVertex const& b) { return a.Key() == b.Key(); }
    friend bool operator<(PackedVertex const& a, PackedVertex const& b) { return a.Key() < b.Key(); }
};
static_assert(sizeof(PackedVertex) == 16);

struct Mesh {
    std::vector<bx::Vec3> positions;
    std::vector<bx::Vec3> normals;
    std::vector<std::uint32_t> colors;
    std::vector<QVector2D> textureCoordinates;
    std::vector<std::uint32_t> indices;

    MeshVertices Vertices() const { return {positions, normals, colors, textureCoordinates}; }

    PackedVertex At(std::uint32_t vertex) const {
        std::uint32_t const rgba = colors.empty() ? 0xFFFFFFFF : colors[vertex];
        auto const byte = [rgba](int shift) { return static_cast<std::uint8_t>(rgba >> shift); };
        return {positions[vertex].x,
                positions[vertex].y,
                positions[vertex].z,
                byte(24),
                byte(16),
                byte(8),
                byte(0)};
    }

    /// The corners of all triangles.
    std::vector<PackedVertex> Corners() const {
        std::vector<PackedVertex> corners;
        for (std::uint32_t const index : indices)
            corners.push_back(At(index));
        return corners;
    }
};

/// Squares of two triangles from (0, 0, 0) to (1, 1, 0), each vertex of a colour of its own.
Mesh Grid(std::uint32_t columns, std::uint32_t rows) {
    Mesh mesh;
    for (std::uint32_t row = 0; row <= rows; ++row) {
        for (std::uint32_t column = 0; column <= columns; ++column) {
            mesh.positions.push_back({static_cast<float>(column) / static_cast<float>(columns),
                                      static_cast<float>(row) / static_cast<float>(rows), 0.0f});
            mesh.colors.push_back(row << 16 | column);
        }
    }
    for (std::uint32_t row = 0; row < rows; ++row) {
        for (std::uint32_t column = 0; column < columns; ++column) {
            std::uint32_t const first = row * (columns + 1) + column;
            for (std::uint32_t const offset : {0u, 1u, columns + 1, columns + 1, 1u, columns + 2})
                mesh.indices.push_back(first + offset);
        }
    }
    return mesh;
}

class MeshBatchTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_view.SetViewport({10, 20, 100, 50});
        StartFrame();
        recorder::ClearCalls();
    }

    void Draw(MeshBatch& batch, MeshStyle const& style = {}) { batch.Draw(*m_renderer, m_view, style); }

    void NextFrame() {
        m_renderer->PresentCurrentAndSubmitNextFrame(false);
        StartFrame();
    }

    /// Frames in which the batch is drawn until it is uploaded.
    int CountFrames(MeshBatch& batch) {
        int frames = 0;
        while (!batch.IsUploaded()) {
            NextFrame();
            Draw(batch);
            ++frames;
        }
        return frames;
    }

    /// The corners of all triangles of positions and colours that a frame draws.
    std::vector<PackedVertex> DrawnCorners(MeshBatch& batch) {
        recorder::ClearCalls();
        Draw(batch);
        std::vector<PackedVertex> corners;
        for (recorder::Draw const& draw : recorder::Draws()) {
            EXPECT_EQ(draw.stride, sizeof(PackedVertex));
            auto const vertices = draw.VerticesAs<PackedVertex>();
            for (std::uint16_t const index : draw.IndicesAs<std::uint16_t>())
                corners.push_back(vertices.at(index));
        }
        return corners;
    }

    /// The texts of the programs that a style is drawn with.
    std::vector<std::string> Programs(MeshBatch& batch, MeshStyle const& style) {
        recorder::ClearCalls();
        Draw(batch, style);
        std::vector<std::string> programs;
        for (recorder::Draw const& draw : recorder::Draws())
            programs.push_back("program#" + std::to_string(draw.program.idx));
        return programs;
    }
};

/// A square whose normals are on the counter-clockwise side.
Mesh LitSquare() {
    Mesh mesh = Grid(1, 1);
    mesh.normals.assign(4, {0.0f, 0.0f, 2.0f});
    return mesh;
}

BGFXPointLightSource Light(int number, QVector4D const& position, QColor const& specular = Qt::black) {
    return {"u_light" + std::to_string(number), position, Qt::black, QColor(255, 51, 0), specular};
}

} // namespace

TEST_F(MeshBatchTest, DrawsForAFewCallsHoweverManyTrianglesThereAre) {
    for (std::uint32_t const size : {1u, 250u}) {
        Mesh const mesh = Grid(size, size);
        MeshBatch batch;
        batch.Set(mesh.Vertices(), mesh.indices);
        EXPECT_EQ(batch.GetTriangleCount(), 2 * size * size);
        MeshStyle const style{.shading = MeshShading::Unlit};
        Draw(batch, style);
        recorder::ClearCalls();
        Draw(batch, style);
        EXPECT_THAT(recorder::CallNames(),
                    ElementsAre("setTransform", "setTransform", "setState", "setVertexBuffer",
                                "setIndexBuffer", "setUniform", "setUniform", "submit"));
    }
}

TEST_F(MeshBatchTest, VerticesArePackedAndHandedOverOnce) {
    Mesh mesh = LitSquare();
    mesh.textureCoordinates = {{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}, {1.0f, 1.0f}};
    mesh.normals[1] = {0.0f, -3.0f, 4.0f};
    mesh.normals[2] = {0.0f, 0.0f, 0.0f};
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    Draw(batch);
    struct Packed {
        PackedVertex vertex;
        std::int16_t normal[4];
        float u, v;
    };
    EXPECT_EQ(TheDraw().stride, sizeof(Packed));
    EXPECT_EQ(TheDraw().layout, "Position 3 Float, Color0 4 Uint8 normalized, Normal 4 Int16 normalized, "
                                "TexCoord0 2 Float");
    auto const vertices = TheDraw().VerticesAs<Packed>();
    ASSERT_THAT(vertices, SizeIs(4));
    for (std::uint32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(vertices[i].vertex, mesh.At(i));
        EXPECT_EQ(QVector2D(vertices[i].u, vertices[i].v), mesh.textureCoordinates[i]);
    }
    EXPECT_THAT(vertices[0].normal, ElementsAre(0, 0, 32'767, 0));
    EXPECT_THAT(vertices[1].normal, ElementsAre(0, -19'660, 26'214, 0));
    EXPECT_THAT(vertices[2].normal, ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(TheDraw().IndicesAs<std::uint16_t>(), ElementsAreArray(mesh.indices));
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_EQ(recorder::CountCalls("update"), 0u);
    EXPECT_EQ(recorder::CountCalls("submit"), 1u);
}

TEST_F(MeshBatchTest, ALargeMeshIsInPiecesThatDrawTheSameTriangles) {
    Mesh const mesh = Grid(299, 299);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    CountFrames(batch);
    EXPECT_EQ(DrawnCorners(batch), mesh.Corners());
    EXPECT_EQ(recorder::CountCalls("submit"), 2u);
    std::size_t vertices = 0;
    for (recorder::Draw const& draw : recorder::Draws())
        vertices += draw.vertices.size() / sizeof(PackedVertex);
    EXPECT_LE(vertices, mesh.positions.size() + 301u) << "a row at the border";
}

TEST_F(MeshBatchTest, TrianglesInAnyOrderAreDrawnAsWell) {
    Mesh const grid = Grid(299, 299);
    std::vector<std::uint32_t> order(grid.indices.size() / 3);
    std::iota(order.begin(), order.end(), 0u);
    std::shuffle(order.begin(), order.end(), std::minstd_rand(7));
    Mesh mesh = grid;
    for (std::size_t i = 0; i < order.size(); ++i)
        std::copy_n(grid.indices.begin() + 3 * std::ptrdiff_t{order[i]}, 3,
                    mesh.indices.begin() + 3 * static_cast<std::ptrdiff_t>(i));
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    CountFrames(batch);
    EXPECT_EQ(DrawnCorners(batch), mesh.Corners());
}

TEST_F(MeshBatchTest, IndicesBeyondTheVerticesAreRefusedAndCounted) {
    Mesh mesh = Grid(2, 1);
    std::vector<PackedVertex> expected = mesh.Corners();
    expected.erase(expected.begin() + 3, expected.begin() + 9);
    mesh.indices[4] = 6;
    mesh.indices[8] = 0xFFFFFFFF;
    mesh.indices.push_back(0); // no triangle
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    EXPECT_THAT(TakeWarnings("mesh-batch.indices"), ElementsAre(HasSubstr("3 of 5 triangles")));
    EXPECT_EQ(batch.GetTriangleCount(), 2u);
    EXPECT_EQ(DrawnCorners(batch), expected);
}

TEST_F(MeshBatchTest, PositionsThatAreNotFiniteAreRefusedAndCounted) {
    Mesh mesh = Grid(2, 1); // 0 1 2 above, 3 4 5 below
    std::vector<PackedVertex> const all = mesh.Corners();
    mesh.positions[0].x = kNotANumber;
    mesh.positions[5].z = -kInfinity;
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    EXPECT_THAT(TakeWarnings("mesh-batch.not-finite"), ElementsAre(HasSubstr("2 of 4 triangles")));
    EXPECT_EQ(DrawnCorners(batch), std::vector(all.begin() + 3, all.begin() + 9));
    EXPECT_EQ(batch.GetBoundingBox(), (WorldBox{{0.0, 0.0, 0.0}, {1.0, 1.0, 0.0}}));
    mesh.positions.assign(6, {0.0f, kInfinity, 0.0f});
    batch.Set(mesh.Vertices(), mesh.indices);
    EXPECT_THAT(TakeWarnings("mesh-batch.not-finite"), ElementsAre(HasSubstr("4 of 4 triangles")));
    EXPECT_THAT(DrawnCorners(batch), IsEmpty());
    EXPECT_FALSE(batch.GetBoundingBox());
}

TEST_F(MeshBatchTest, AttributesOfAnotherLengthAreRefusedAsAWhole) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    Mesh wrong = Grid(2, 1);
    wrong.normals.assign(5, {0.0f, 0.0f, 1.0f});
    batch.Set(wrong.Vertices(), wrong.indices);
    batch.Append(wrong.Vertices(), wrong.indices);
    wrong.positions.clear();
    batch.Update(0, wrong.Vertices());
    EXPECT_THAT(TakeWarnings("mesh-batch.lengths"), SizeIs(3));
    EXPECT_EQ(DrawnCorners(batch), mesh.Corners());
}

TEST_F(MeshBatchTest, OtherAttributesThanTheBatchHasAreRefused) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    Mesh const lit = LitSquare();
    batch.Append(lit.Vertices(), lit.indices);
    batch.Update(0, lit.Vertices());
    EXPECT_THAT(TakeWarnings("mesh-batch.attributes"), SizeIs(2));
    EXPECT_EQ(DrawnCorners(batch), mesh.Corners());
    batch.Set(lit.Vertices(), lit.indices);
    EXPECT_EQ(batch.GetTriangleCount(), 2u);
}

TEST_F(MeshBatchTest, WhatTheBudgetOfAFrameHasNoRoomForFollows) {
    Mesh const mesh = Grid(249, 249); // 62,500 vertices of 16 bytes, 372,006 indices of 2
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    m_renderer->SetUploadBudget(300'000);
    int frames = 0;
    for (; !batch.IsUploaded(); ++frames) {
        NextFrame();
        Draw(batch);
        EXPECT_LE(m_renderer->GetFrameStatistics().bytes, 300'000u);
        std::vector<PackedVertex> const corners = DrawnCorners(batch);
        EXPECT_TRUE(std::equal(corners.begin(), corners.end(), mesh.Corners().begin())) << "what is there";
    }
    EXPECT_EQ(frames, 6) << "for 1,744,012 bytes";
    EXPECT_EQ(DrawnCorners(batch), mesh.Corners());
}

TEST_F(MeshBatchTest, AStreamOfSmallMeshesGetsFewPieces) {
    Mesh const mesh = Grid(3, 3);
    std::vector<PackedVertex> expected;
    MeshBatch batch;
    for (int i = 0; i < 900; ++i) {
        batch.Append(mesh.Vertices(), mesh.indices);
        std::ranges::copy(mesh.Corners(), std::back_inserter(expected));
        if (i % 3 == 0)
            Draw(batch);
    }
    Draw(batch);
    EXPECT_EQ(batch.GetVertexCount(), 14'400u);
    EXPECT_EQ(DrawnCorners(batch), expected);
    EXPECT_LE(recorder::CountCalls("submit"), 10u);
}

TEST_F(MeshBatchTest, UpdatesReachEveryPieceThatHasTheVertices) {
    for (bool const isUploaded : {false, true}) {
        Mesh mesh = Grid(299, 239); // 72,000 vertices in two pieces
        MeshBatch batch(MeshBatch::KeepData::Yes);
        batch.Set(mesh.Vertices(), mesh.indices);
        if (isUploaded)
            CountFrames(batch);
        for (auto const& [first, count] : {std::pair{0u, 1u}, {299u, 2u}, {60'000u, 9000u}, {71'999u, 1u}}) {
            Mesh part;
            for (std::uint32_t i = first; i < first + count; ++i) {
                mesh.positions[i].z += 0.5f;
                mesh.colors[i] = ~mesh.colors[i];
                part.positions.push_back(mesh.positions[i]);
                part.colors.push_back(mesh.colors[i]);
            }
            recorder::ClearCalls();
            batch.Update(first, part.Vertices());
            EXPECT_LE(recorder::CountCalls("update"), 2u) << "one for each piece";
        }
        CountFrames(batch);
        EXPECT_EQ(DrawnCorners(batch), mesh.Corners());
        EXPECT_EQ(batch.GetBoundingBox()->maximum.z, 0.5);
        TearDown();
        SetUp();
        CountFrames(batch);
        EXPECT_EQ(DrawnCorners(batch), mesh.Corners()) << "what was kept is up to date, too";
    }
}

TEST_F(MeshBatchTest, UpdatesThatAreNotFiniteLeaveTheVertexAsItWas) {
    Mesh mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    Draw(batch);
    Mesh part = mesh;
    for (bx::Vec3& position : part.positions)
        position.z = 1.0f;
    part.positions[1].y = kNotANumber;
    batch.Update(0, part.Vertices());
    EXPECT_THAT(TakeWarnings("mesh-batch.not-finite"), ElementsAre(HasSubstr("1 of 4 vertices")));
    for (std::size_t const i : {0, 2, 3})
        mesh.positions[i].z = 1.0f;
    EXPECT_EQ(DrawnCorners(batch), mesh.Corners());
}

TEST_F(MeshBatchTest, UpdatesBeyondTheEndAreRefusedAsAWhole) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    Draw(batch);
    for (std::uint64_t const first :
         {std::uint64_t{1}, std::uint64_t{5}, std::numeric_limits<std::uint64_t>::max()}) {
        batch.Update(first, mesh.Vertices());
        EXPECT_THAT(TakeWarnings("mesh-batch.range"), ElementsAre(HasSubstr("the batch has 4"))) << first;
    }
    EXPECT_EQ(DrawnCorners(batch), mesh.Corners());
}

TEST_F(MeshBatchTest, PiecesOutsideThePictureAreNotSubmitted) {
    Mesh mesh = Grid(249, 999); // a row of pieces along y
    for (bx::Vec3& position : mesh.positions)
        position.y = 12.0f * position.y - 6.0f;
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    CountFrames(batch);
    std::size_t const all = std::size_t{2} * 249 * 999;
    auto const count = [&] {
        NextFrame();
        Draw(batch);
        return m_renderer->GetFrameStatistics().primitives;
    };
    std::uint64_t const shown = count();
    EXPECT_GT(shown, all / 6);
    EXPECT_LT(shown, all * 5 / 8);
    m_view.SetOrigin({0.0, -8.0, 0.0});
    EXPECT_EQ(count(), 0u);
    m_view.SetOrigin({0.0, 0.0, 0.0});
    m_view.GetProjectionMatrix().scale(0.1f);
    EXPECT_EQ(count(), all);
}

TEST_F(MeshBatchTest, OriginsAreSubtractedInDoublePrecision) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    batch.SetOrigin({500'000.001, 5'400'000.0, -7.0});
    EXPECT_EQ(batch.GetBoundingBox(),
              (WorldBox{{500'000.001, 5'400'000.0, -7.0}, {500'001.001, 5'400'001.0, -7.0}}));
    m_view.SetOrigin({500'000.0, 5'399'999.998, -7.0});
    QMatrix4x4 transform;
    transform.scale(0.5f);
    batch.Draw(*m_renderer, m_view, {}, transform);
    QMatrix4x4 const expected = Translation(static_cast<float>(500'000.001 - 500'000.0),
                                            static_cast<float>(5'400'000.0 - 5'399'999.998), 0.0f) *
                                transform;
    EXPECT_EQ(TheDraw().matrix, Floats(expected));
}

TEST_F(MeshBatchTest, APieceHasTheProgramOfItsLights) {
    Mesh const mesh = LitSquare();
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    CountFrames(batch);
    QVector4D const lamp(1.0f, 2.0f, 3.0f, 1.0f);
    for (auto const& [count, program] : {std::pair{1, "fs_mesh_lit_1"},
                                         {2, "fs_mesh_lit_2"},
                                         {3, "fs_mesh_lit_4"},
                                         {4, "fs_mesh_lit_4"},
                                         {5, "fs_mesh_lit_8"},
                                         {8, "fs_mesh_lit_8"}}) {
        BGFXLightingContext lights;
        for (int i = 0; i < count; ++i)
            lights.Add(Light(i, lamp));
        lights.Add(BGFXPointLightSource("u_light9")); // not the lighting program's
        EXPECT_THAT(Programs(batch, {.lights = &lights}), ElementsAre(Program("vs_mesh_lit", program)));
    }
    EXPECT_THAT(Programs(batch, {.shading = MeshShading::Unlit}),
                ElementsAre(Program("vs_mesh_unlit", "fs_mesh_unlit")));
}

TEST_F(MeshBatchTest, OneDirectionWithoutHighlightsIsTheCheapestLight) {
    Mesh const mesh = LitSquare();
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    CountFrames(batch);
    BGFXLightingContext lights;
    lights.Add(BGFXPointLightSource("u_light0")); // does not shine
    lights.Add(Light(3, {0.0f, 3.0f, 4.0f, 0.0f}, Qt::white));
    std::string const diffuse = Program("vs_mesh_diffuse", "fs_mesh_diffuse");
    std::string const lit = Program("vs_mesh_lit", "fs_mesh_lit_1");
    EXPECT_THAT(Programs(batch, {.lights = &lights}), ElementsAre(diffuse)) << "without a material";
    EXPECT_THAT(TheDraw().uniforms.at("u_meshLights"),
                Pointwise(FloatNear(1e-6f),
                          {0.0f, 0.6f, 0.8f, 0.0f, 1.0f, 0.2f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f}));
    BGFXMaterial const dull("u_material", Qt::white, Qt::white, Qt::black, Qt::black, 8.0f);
    EXPECT_THAT(Programs(batch, {.lights = &lights, .material = &dull}), ElementsAre(diffuse));
    BGFXMaterial const steel("u_material", Qt::white, Qt::white, Qt::white, Qt::black, 8.0f);
    EXPECT_THAT(Programs(batch, {.lights = &lights, .material = &steel}), ElementsAre(lit));
    EXPECT_THAT(Programs(batch, {.backColor = Qt::red, .lights = &lights}), ElementsAre(lit));
    EXPECT_THAT(Programs(batch, {.shading = MeshShading::Flat, .lights = &lights}), ElementsAre(lit));
    EXPECT_THAT(Programs(batch, {}), ElementsAre(diffuse)) << "the viewer's of a parallel projection";
}

TEST_F(MeshBatchTest, NormalsOnBothSidesNeedTheGeneralProgram) {
    std::string const diffuse = Program("vs_mesh_diffuse", "fs_mesh_diffuse");
    std::string const lit = Program("vs_mesh_lit", "fs_mesh_lit_1");
    Mesh mesh = LitSquare();
    auto const programs = [&](Mesh const& of) {
        MeshBatch batch;
        batch.Set(of.Vertices(), of.indices);
        return Programs(batch, {});
    };
    EXPECT_THAT(programs(mesh), ElementsAre(diffuse));
    for (bx::Vec3& normal : mesh.normals)
        normal.z = -1.0f;
    EXPECT_THAT(programs(mesh), ElementsAre(diffuse));
    std::swap(mesh.indices[0], mesh.indices[1]);
    EXPECT_THAT(programs(mesh), ElementsAre(lit));
    mesh = LitSquare();
    mesh.normals[0] = {0.0f, 0.0f, 0.0f};
    EXPECT_THAT(programs(mesh), ElementsAre(lit));
    MeshBatch batch;
    mesh = LitSquare();
    batch.Set(mesh.Vertices(), mesh.indices);
    batch.Update(0, mesh.Vertices());
    EXPECT_THAT(Programs(batch, {}), ElementsAre(lit)) << "after an update nobody knows";
}

TEST_F(MeshBatchTest, ATextureNeedsCoordinates) {
    bgfx::TextureHandle const texture = bgfx::createTexture2D(1, 1, false, 1, bgfx::TextureFormat::RGBA8);
    Mesh mesh = LitSquare();
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    MeshStyle const style{.shading = MeshShading::Unlit, .texture = texture};
    Draw(batch, style);
    EXPECT_THAT(Programs(batch, style), ElementsAre(Program("vs_mesh_unlit", "fs_mesh_unlit")));
    EXPECT_THAT(TakeWarnings("mesh-batch.no-texture-coordinates"), SizeIs(1));
    mesh.textureCoordinates.resize(4);
    batch.Set(mesh.Vertices(), mesh.indices);
    EXPECT_THAT(Programs(batch, style), ElementsAre(Program("vs_mesh_lit", "fs_mesh_unlit_textured")));
    EXPECT_EQ(TheDraw().textures.at(1).idx, texture.idx);
    EXPECT_THAT(Programs(batch, {.texture = texture}),
                ElementsAre(Program("vs_mesh_lit", "fs_mesh_lit_1_textured")));
    bgfx::destroy(texture);
}

TEST_F(MeshBatchTest, InstancesAreTexelsThatAreHandedOverOnce) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    QMatrix4x4 transform = Translation(0.25f, -0.5f, 0.75f);
    transform.scale(0.1f, 0.2f, 0.3f);
    MeshInstance const instances[] = {MeshInstance(transform, 0x11223344), MeshInstance()};
    batch.SetInstances(instances);
    EXPECT_EQ(batch.GetInstanceCount(), 2u);
    EXPECT_FALSE(batch.IsUploaded());
    Draw(batch);
    EXPECT_TRUE(batch.IsUploaded());
    std::vector<recorder::Call> const updates = recorder::CallsNamed("updateTexture2D");
    ASSERT_THAT(updates, SizeIs(1));
    auto const floats = updates[0].PayloadAs<float>();
    ASSERT_THAT(floats, SizeIs(32));
    EXPECT_THAT(std::vector(floats.begin(), floats.begin() + 12),
                ElementsAre(0.1f, 0.0f, 0.0f, 0.25f, 0.0f, 0.2f, 0.0f, -0.5f, 0.0f, 0.0f, 0.3f, 0.75f));
    EXPECT_EQ(updates[0].PayloadAs<std::uint32_t>()[12], 0x11223344u);
    EXPECT_EQ(TheDraw().instances, 2u);
    EXPECT_EQ(m_renderer->GetFrameStatistics().primitives, 4u);
    EXPECT_THAT(Programs(batch, {.shading = MeshShading::Unlit}),
                ElementsAre(Program("vs_mesh_unlit_instances", "fs_mesh_unlit")));
    EXPECT_EQ(recorder::CountCalls("updateTexture2D"), 0u);
    batch.SetInstances({});
    EXPECT_THAT(Programs(batch, {.shading = MeshShading::Unlit}),
                ElementsAre(Program("vs_mesh_unlit", "fs_mesh_unlit")));
    EXPECT_EQ(TheDraw().instances, 1u);
}

TEST_F(MeshBatchTest, InstancesOutsideThePictureAreNotSubmitted) {
    Mesh mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    std::vector<MeshInstance> instances;
    for (int i = 0; i < 5 * 1024; ++i)
        instances.emplace_back(Translation(i / 1024 == 1 || i / 1024 == 2 ? 0.0f : 9.0f, 0.0f, 0.0f));
    batch.SetInstances(instances);
    CountFrames(batch);
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_EQ(TheDraw().instances, 2048u);
    EXPECT_THAT(TheDraw().uniforms.at("u_batchRange"), ElementsAre(4096.0f, 4096.0f, 0.0f, 0.0f));
    MeshInstance const moved[] = {MeshInstance()};
    batch.UpdateInstances(5 * 1024 - 1, moved);
    recorder::ClearCalls();
    Draw(batch);
    EXPECT_THAT(recorder::Draws(), SizeIs(2));
    batch.UpdateInstances(5 * 1024, moved);
    EXPECT_THAT(TakeWarnings("mesh-batch.range"), ElementsAre(HasSubstr("the batch has 5120")));
}

TEST_F(MeshBatchTest, TheBoxHasRoomForAllInstances) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    QMatrix4x4 far = Translation(100.0f, 0.0f, 0.0f);
    far.rotate(90.0f, 0.0f, 0.0f, 1.0f);
    far.scale(2.0f);
    MeshInstance const instances[] = {MeshInstance(), MeshInstance(far)};
    batch.SetInstances(instances);
    WorldBox const box = *batch.GetBoundingBox(); // of (0, 0) to (1, 1), and (98, 0) to (100, 2)
    EXPECT_LE(box.minimum.x, 0.0);
    EXPECT_GE(box.maximum.x, 100.0);
    EXPECT_GE(box.maximum.y, 2.0);
    EXPECT_GT(box.minimum.x, -6.0);
    EXPECT_LT(box.maximum.x, 106.0);
}

TEST_F(MeshBatchTest, InstancesThatAreNotFiniteAreRefusedAndCounted) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    std::vector<MeshInstance> instances(3);
    instances[1].rows[7] = kInfinity;
    batch.SetInstances(instances);
    EXPECT_THAT(TakeWarnings("mesh-batch.instances-not-finite"), ElementsAre(HasSubstr("1 of 3 instances")));
    Draw(batch);
    auto const floats = recorder::CallsNamed("updateTexture2D").at(0).PayloadAs<float>();
    EXPECT_THAT(std::vector(floats.begin() + 16, floats.begin() + 28), Each(0.0f));
    EXPECT_TRUE(batch.GetBoundingBox());
}

TEST_F(MeshBatchTest, WhereBuffersRanOutItIsCountedAndTriedAgain) {
    bgfx::VertexLayout layout;
    layout.begin().add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float).end();
    std::vector<bgfx::DynamicVertexBufferHandle> buffers;
    while (buffers.empty() || bgfx::isValid(buffers.back()))
        buffers.push_back(bgfx::createDynamicVertexBuffer(1, layout));
    buffers.pop_back();
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    recorder::ClearCalls();
    for (int frame = 0; frame < 3; ++frame) {
        StartFrame();
        Draw(batch);
        EXPECT_EQ(m_renderer->GetFrameStatistics().CountLeftOut(LeftOutReason::NoBuffer), 1u);
    }
    EXPECT_THAT(TakeWarnings("draw.no-buffer"), SizeIs(1));
    EXPECT_EQ(recorder::CountCalls("submit"), 0u);
    for (bgfx::DynamicVertexBufferHandle const buffer : buffers)
        bgfx::destroy(buffer);
    EXPECT_EQ(CountFrames(batch), 1);
    EXPECT_EQ(DrawnCorners(batch), mesh.Corners()) << "nothing is lost";
}

TEST_F(MeshBatchTest, WithoutItsDataItIsEmptyAfterTheContextAndSaysSo) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch uploaded;
    uploaded.Set(mesh.Vertices(), mesh.indices);
    uploaded.SetInstances(std::vector<MeshInstance>(3));
    CountFrames(uploaded);
    MeshBatch waiting;
    waiting.Set(mesh.Vertices(), mesh.indices);
    MeshBatch kept(MeshBatch::KeepData::Yes);
    kept.Set(mesh.Vertices(), mesh.indices);
    kept.SetInstances(std::vector<MeshInstance>(3));
    CountFrames(kept);
    TearDown();
    SetUp();
    Draw(uploaded);
    Draw(uploaded);
    EXPECT_THAT(TakeWarnings("mesh-batch.lost"), SizeIs(1));
    EXPECT_EQ(uploaded.GetTriangleCount(), 0u);
    EXPECT_FALSE(uploaded.GetBoundingBox());
    EXPECT_EQ(DrawnCorners(waiting), mesh.Corners()) << "what was never handed over is not lost";
    EXPECT_EQ(DrawnCorners(kept), mesh.Corners());
    EXPECT_EQ(TheDraw().instances, 3u);
}

TEST_F(MeshBatchTest, AnEmptyBatchDrawsNothing) {
    MeshBatch batch;
    Draw(batch);
    batch.SetInstances(std::vector<MeshInstance>(3));
    batch.Set({}, {});
    batch.Update(0, {});
    Draw(batch);
    Mesh const mesh = Grid(1, 1);
    batch.Set(mesh.Vertices(), {});
    Draw(batch);
    EXPECT_THAT(recorder::CallNames(), IsEmpty());
    EXPECT_EQ(batch.GetVertexCount(), 4u);
}

TEST_F(MeshBatchTest, MovesWithWhatItHas) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    Draw(batch);
    MeshBatch moved(std::move(batch));
    EXPECT_EQ(DrawnCorners(moved), mesh.Corners());
    EXPECT_EQ(recorder::CountCalls("update"), 0u);
}

TEST_F(MeshBatchTest, WithoutAContextNothingIsDrawnAndNothingIsLost) {
    Mesh const mesh = Grid(1, 1);
    MeshBatch batch;
    batch.Set(mesh.Vertices(), mesh.indices);
    TearDown();
    BGFXRenderer renderer;
    batch.Draw(renderer, m_view);
    EXPECT_EQ(batch.GetTriangleCount(), 2u);
    SetUp();
}
