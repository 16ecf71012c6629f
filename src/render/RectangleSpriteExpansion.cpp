// The lines are expanded in blocks whose values lie by component, one array for each, so that every loop
// below becomes a few wide instructions. Each value is computed by the same operations in the same order as
// for a single line, so the result does not depend on the block's size.
#include "RectangleSpriteExpansion.h"

#include <algorithm>
#include <cmath>

namespace zarvex::zx3DQt::RectangleSprite {

namespace {

constexpr int kBlockSize = 16;

/// One value for each line of a block.
using Values = float[kBlockSize];

/// A line shorter than this, in pixels, has no direction.
constexpr float kShortestLength = 1.1920929e-5f;

struct Projection {
    float const* matrix; ///< column-major
    float width;         ///< of the viewport, pixels
    float height;
};

/// One end of each line.
struct Ends {
    Values x, y, z;        ///< as given
    Values pixelX, pixelY; ///< y down
    Values depth;          ///< NDC z
};

/// A corner of each line's rectangle, NDC.
struct Corners {
    Values x, y;
};

/// Lines beyond the block's count stay zero.
void Load(zx3D::Line const* lines, int count, Ends& starts, Ends& ends) {
    for (int i = 0; i < count; ++i) {
        starts.x[i] = lines[i].start.x;
        starts.y[i] = lines[i].start.y;
        starts.z[i] = lines[i].start.z;
        ends.x[i] = lines[i].end.x;
        ends.y[i] = lines[i].end.y;
        ends.z[i] = lines[i].end.z;
    }
}

void Project(Projection const& projection, Ends& ends) {
    float const* const m = projection.matrix;
    for (int i = 0; i < kBlockSize; ++i) {
        float const x = ends.x[i];
        float const y = ends.y[i];
        float const z = ends.z[i];
        float const clipX = m[0] * x + m[4] * y + m[8] * z + m[12];
        float const clipY = m[1] * x + m[5] * y + m[9] * z + m[13];
        float const clipZ = m[2] * x + m[6] * y + m[10] * z + m[14];
        float const clipW = m[3] * x + m[7] * y + m[11] * z + m[15];
        ends.pixelX[i] = (clipX / clipW + 1.0f) * 0.5f * projection.width;
        ends.pixelY[i] = (1.0f - clipY / clipW) * 0.5f * projection.height;
        ends.depth[i] = clipZ / clipW;
    }
}

/// Half the width to the side of each line, pixels. `length` receives the lines' lengths.
void ComputeOffsets(Ends const& starts, Ends const& ends, float halfWidth, Values& length, Values& offsetX,
                    Values& offsetY) {
    for (int i = 0; i < kBlockSize; ++i) {
        float const x = ends.pixelX[i] - starts.pixelX[i];
        float const y = ends.pixelY[i] - starts.pixelY[i];
        // As std::hypot does it: in doubles, where the squares of floats neither overflow nor vanish.
        length[i] = static_cast<float>(std::sqrt(static_cast<double>(x) * static_cast<double>(x) +
                                                 static_cast<double>(y) * static_cast<double>(y)));
        offsetX[i] = -(y / length[i]) * halfWidth;
        offsetY[i] = x / length[i] * halfWidth;
    }
}

/// Moves the ends by `side` (1 or −1) times the offset.
void ComputeCorners(Projection const& projection, Ends const& ends, Values const& offsetX,
                    Values const& offsetY, float side, Values const& length, Corners& corners) {
    for (int i = 0; i < kBlockSize; ++i) {
        float const x = 2.0f * (ends.pixelX[i] + side * offsetX[i]) / projection.width - 1.0f;
        float const y = -(2.0f * (ends.pixelY[i] + side * offsetY[i]) / projection.height - 1.0f);
        corners.x[i] = length[i] < kShortestLength ? 0.0f : x;
        corners.y[i] = length[i] < kShortestLength ? 0.0f : y;
    }
}

/// Everything about a block that its vertices are made of.
struct Block {
    Ends starts{}, ends{};
    Values length;
    Corners startLeft, endLeft, endRight, startRight; ///< left is where the offset is subtracted

    void Compute(Projection const& projection, float halfWidth) {
        Project(projection, starts);
        Project(projection, ends);
        Values offsetX, offsetY;
        ComputeOffsets(starts, ends, halfWidth, length, offsetX, offsetY);
        ComputeCorners(projection, starts, offsetX, offsetY, -1.0f, length, startLeft);
        ComputeCorners(projection, ends, offsetX, offsetY, -1.0f, length, endLeft);
        ComputeCorners(projection, ends, offsetX, offsetY, 1.0f, length, endRight);
        ComputeCorners(projection, starts, offsetX, offsetY, 1.0f, length, startRight);
    }

    void Write(int i, zx3D::Color const& lineColor, DummyVertexT* vertices) const {
        bool const isCollapsed = length[i] < kShortestLength;
        float const startDepth = isCollapsed ? 0.0f : starts.depth[i];
        float const endDepth = isCollapsed ? 0.0f : ends.depth[i];
        float const w = isCollapsed ? 0.0f : 1.0f;
        Float4 const color = ToFloat4(lineColor);
        Float4 const start{starts.pixelX[i], starts.pixelY[i], starts.depth[i], 1.0f};
        Float4 const end{ends.pixelX[i], ends.pixelY[i], ends.depth[i], 1.0f};
        Float4 const corners[] = {{startLeft.x[i], startLeft.y[i], startDepth, w},
                                  {endLeft.x[i], endLeft.y[i], endDepth, w},
                                  {endRight.x[i], endRight.y[i], endDepth, w},
                                  {startRight.x[i], startRight.y[i], startDepth, w}};
        vertices[0] = {corners[0], color, start, end};
        vertices[1] = {corners[1], color, start, end};
        vertices[2] = {corners[2], color, start, end};
        vertices[3] = {corners[2], color, start, end};
        vertices[4] = {corners[3], color, start, end};
        vertices[5] = {corners[0], color, start, end};
    }
};

} // namespace

void Expand(zx3D::DataSpan<zx3D::Line const> lines, QMatrix4x4 const& modelViewProjection, QSize viewport,
            float width, DummyVertexT* vertices) {
    Projection const projection{modelViewProjection.constData(), static_cast<float>(viewport.width()),
                                static_cast<float>(viewport.height())};
    for (std::uint64_t first = 0; first < lines.count; first += kBlockSize) {
        zx3D::Line const* const blockLines = lines.data + first;
        int const count = static_cast<int>(std::min<std::uint64_t>(lines.count - first, kBlockSize));
        Block block;
        Load(blockLines, count, block.starts, block.ends);
        block.Compute(projection, width * 0.5f);
        for (int i = 0; i < count; ++i, vertices += kVerticesPerLine)
            block.Write(i, blockLines[i].color, vertices);
    }
}

} // namespace zarvex::zx3DQt::RectangleSprite
