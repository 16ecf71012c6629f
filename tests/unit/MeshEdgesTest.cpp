// The edges of meshes.
#include <zx3DQt/MeshEdges.h>

#include <gmock/gmock.h>

#include <limits>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Corner = std::tuple<float, float, float>;

Corner CornerOf(LineVertex const& vertex) {
    return {vertex.position.x, vertex.position.y, vertex.position.z};
}

/// Both ends in order, so that an edge is the same in either direction.
std::set<std::pair<Corner, Corner>> EndsOf(std::vector<LineSegment> const& edges) {
    std::set<std::pair<Corner, Corner>> ends;
    for (LineSegment const& edge : edges)
        ends.insert(std::minmax(CornerOf(edge.start), CornerOf(edge.end)));
    EXPECT_EQ(ends.size(), edges.size()) << "each once";
    return ends;
}

/// The cube from (0, 0, 0) to (1, 1, 1): corner i has the bits of i as x, y and z.
std::vector<bx::Vec3> CubeCorners() {
    std::vector<bx::Vec3> corners;
    for (int i = 0; i < 8; ++i)
        corners.push_back(
            {static_cast<float>(i & 1), static_cast<float>(i >> 1 & 1), static_cast<float>(i >> 2)});
    return corners;
}

std::vector<std::uint32_t> CubeTriangles() {
    return {0, 2, 1, 1, 2, 3, 4, 5, 6, 6, 5, 7, 0, 1, 4, 4, 1, 5,
            2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 5, 3, 7};
}

/// Those along the axes.
std::set<std::pair<Corner, Corner>> CubeEdges() {
    std::vector<bx::Vec3> const corners = CubeCorners();
    std::vector<LineSegment> edges;
    for (int i = 0; i < 8; ++i) {
        for (int const bit : {1, 2, 4}) {
            if ((i & bit) == 0)
                edges.push_back({{corners[i]}, {corners[i | bit]}});
        }
    }
    return EndsOf(edges);
}

} // namespace

TEST(MeshEdgesTest, ThoseOfACubeAreWhereItBends) {
    std::vector<bx::Vec3> const corners = CubeCorners();
    std::vector<std::uint32_t> const triangles = CubeTriangles();
    for (float const degrees : {1.0f, 30.0f, 89.0f})
        EXPECT_EQ(EndsOf(FindMeshEdges({.positions = corners}, triangles, degrees)), CubeEdges());
    EXPECT_THAT(FindMeshEdges({.positions = corners}, triangles, 91.0f), IsEmpty());
    EXPECT_THAT(EndsOf(FindMeshEdges({.positions = corners}, triangles, 0.0f)), SizeIs(18)) << "all";
    EXPECT_EQ(FindMeshEdges({.positions = corners}, triangles, 30.0f, 0x12345678)[3].end.rgba, 0x12345678u);
}

TEST(MeshEdgesTest, NeitherVerticesOfTheirOwnNorWindingMatter) {
    std::vector<bx::Vec3> corners;
    std::vector<std::uint32_t> triangles;
    for (std::uint32_t const index : CubeTriangles()) {
        triangles.push_back(static_cast<std::uint32_t>(corners.size()));
        corners.push_back(CubeCorners()[index]);
    }
    EXPECT_EQ(EndsOf(FindMeshEdges({.positions = corners}, triangles, 30.0f)), CubeEdges());
    std::swap(triangles[0], triangles[1]);
    std::swap(triangles[13], triangles[14]);
    EXPECT_EQ(EndsOf(FindMeshEdges({.positions = corners}, triangles, 30.0f)), CubeEdges());
}

TEST(MeshEdgesTest, SidesOfOneTriangleOrOfThreeAreEdges) {
    std::vector<bx::Vec3> const corners = CubeCorners();
    std::vector<std::uint32_t> const square = {0, 1, 2, 2, 1, 3};
    EXPECT_THAT(EndsOf(FindMeshEdges({.positions = corners}, square, 30.0f)), SizeIs(4)) << "the border";
    std::vector<std::uint32_t> const fan = {0, 1, 2, 2, 1, 3, 1, 2, 7};
    EXPECT_THAT(EndsOf(FindMeshEdges({.positions = corners}, fan, 179.0f)), SizeIs(7));
}

TEST(MeshEdgesTest, TrianglesThatAreNotDrawnHaveNone) {
    std::vector<bx::Vec3> corners = CubeCorners();
    corners[7].y = std::numeric_limits<float>::quiet_NaN();
    std::vector<std::uint32_t> const triangles = {0, 1, 2, 0, 1, 8, 7, 1, 2, 3, 3, 5, 0, 1};
    EXPECT_THAT(EndsOf(FindMeshEdges({.positions = corners}, triangles, 30.0f)), SizeIs(4))
        << "a triangle, and one that is a line";
    EXPECT_THAT(FindMeshEdges({}, triangles, 30.0f), IsEmpty());
    EXPECT_THAT(FindMeshEdges({.positions = corners}, {}, 30.0f), IsEmpty());
}
