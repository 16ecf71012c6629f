// Pieces that 16-bit indices reach, and together are the mesh.
#include <SplitMesh.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <set>

namespace viewer {

namespace {

using Place = std::array<float, 3>;

MeshVertex VertexAt(float x, float y, float z) {
    return MeshVertex({x, y, z}, {0.0f, 0.0f, 1.0f}, {1.0f, 1.0f, 1.0f, 1.0f});
}

std::vector<MeshVertex> RandomVertices(std::size_t count) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-10.0f, 10.0f);
    std::vector<MeshVertex> vertices;
    for (std::size_t i = 0; i < count; ++i)
        vertices.push_back(VertexAt(place(random), place(random), place(random)));
    return vertices;
}

std::vector<std::uint32_t> RandomIndices(std::size_t count, std::size_t vertexCount) {
    std::mt19937 random(11);
    std::uniform_int_distribution<std::uint32_t> index(0, static_cast<std::uint32_t>(vertexCount - 1));
    std::vector<std::uint32_t> indices(count);
    std::ranges::generate(indices, [&] { return index(random); });
    return indices;
}

/// The places of all corners in their order.
std::vector<Place> Corners(std::vector<MeshPiece> const& pieces) {
    std::vector<Place> corners;
    for (MeshPiece const& piece : pieces) {
        for (std::uint16_t const index : piece.indices) {
            bx::Vec3 const& place = piece.vertices.at(index).position;
            corners.push_back({place.x, place.y, place.z});
        }
    }
    return corners;
}

} // namespace

class SplitMeshTest : public ::testing::TestWithParam<std::size_t> {}; // vertices in a piece

TEST_P(SplitMeshTest, PiecesAreSmallEnoughAndTogetherTheMeshInItsOrder) {
    std::vector<MeshVertex> const vertices = RandomVertices(5000);
    std::vector<std::uint32_t> const indices = RandomIndices(30000, vertices.size());
    for (std::size_t const cornerCount : {1, 2, 3}) {
        std::vector<MeshPiece> const pieces = SplitMesh(vertices, indices, cornerCount, GetParam());
        std::vector<Place> expected;
        for (std::uint32_t const index : indices)
            expected.push_back(
                {vertices[index].position.x, vertices[index].position.y, vertices[index].position.z});
        EXPECT_EQ(Corners(pieces), expected);
        for (MeshPiece const& piece : pieces) {
            EXPECT_LE(piece.vertices.size(), GetParam());
            EXPECT_EQ(static_cast<std::size_t>(piece.primitive), cornerCount);
            EXPECT_EQ(piece.indices.size() % cornerCount, 0u);
        }
    }
}

TEST_P(SplitMeshTest, BoxesEncloseTheirPiecesExactly) {
    std::vector<MeshVertex> const vertices = RandomVertices(2000);
    std::vector<std::uint32_t> const indices = RandomIndices(9000, vertices.size());
    for (MeshPiece const& piece : SplitMesh(vertices, indices, 3, GetParam())) {
        Box expected;
        for (MeshVertex const& vertex : piece.vertices)
            expected.Extend(QVector3D(vertex.position.x, vertex.position.y, vertex.position.z));
        EXPECT_EQ(piece.box.min, expected.min);
        EXPECT_EQ(piece.box.max, expected.max);
    }
}

INSTANTIATE_TEST_SUITE_P(Limits, SplitMeshTest, ::testing::Values(3, 4, 100, kMaxPieceVertices));

TEST(SplitMeshLimitsTest, MoreVerticesThanSixteenBitsCountMakeSeveralPieces) {
    std::vector<MeshVertex> const vertices(200'001, VertexAt(1.0f, 2.0f, 3.0f));
    std::vector<std::uint32_t> indices(vertices.size());
    for (std::size_t i = 0; i < indices.size(); ++i)
        indices[i] = static_cast<std::uint32_t>(i);
    std::vector<MeshPiece> const pieces = SplitMesh(vertices, indices, 3);
    ASSERT_EQ(pieces.size(), 4u);
    EXPECT_EQ(pieces[0].vertices.size(), 65535u);
    EXPECT_EQ(*std::ranges::max_element(pieces[0].indices), 65534);
    EXPECT_EQ(Corners(pieces).size(), indices.size());
}

TEST(SplitMeshLimitsTest, PrimitivesWithCornersNowhereAreLeftOut) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const infinity = std::numeric_limits<float>::infinity();
    std::vector<MeshVertex> const vertices{VertexAt(0, 0, 0),         VertexAt(1, 0, 0),
                                           VertexAt(0, 1, 0),         VertexAt(nan, 0, 0),
                                           VertexAt(0, -infinity, 0), VertexAt(0, 0, 1e30f)};
    std::vector<std::uint32_t> const indices{0, 1, 3, 0, 4, 2, 0, 1, 2, 1, 2, 6, 2, 1, 4'000'000'000u,
                                             0, 1, 5};
    std::vector<MeshPiece> const pieces = SplitMesh(vertices, indices, 3);
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(pieces[0].indices, (std::vector<std::uint16_t>{0, 1, 2}));
    EXPECT_EQ(pieces[0].box.max, QVector3D(1, 1, 0));
}

TEST(SplitMeshLimitsTest, NothingMakesNoPiece) {
    EXPECT_TRUE(SplitMesh({}, {}, 3).empty());
    std::vector<std::uint32_t> const incomplete{0, 1};
    EXPECT_TRUE(SplitMesh(RandomVertices(5), incomplete, 3).empty());
}

TEST(FindEdgesTest, EdgesThatTrianglesShareAppearOnce) {
    std::vector<std::uint16_t> const quad{0, 1, 2, 2, 1, 3};
    std::vector<std::uint16_t> const edges = FindEdges(quad);
    std::set<std::pair<int, int>> pairs;
    for (std::size_t i = 0; i < edges.size(); i += 2)
        pairs.emplace(edges[i], edges[i + 1]);
    EXPECT_EQ(edges.size(), 10u);
    EXPECT_EQ(pairs, (std::set<std::pair<int, int>>{{0, 1}, {0, 2}, {1, 2}, {1, 3}, {2, 3}}));
}

} // namespace viewer
