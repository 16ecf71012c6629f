// The lines are expanded in blocks whose values lie by component, one array for each, so that every loop
// below becomes a few wide instructions. Each value is computed by the same operations in the same order as
// for a single line, so the result does not depend on the block's size.
#include "RectangleSpriteExpansion.h"

#include "NearPlaneCut.h"

#include <bgfx/bgfx.h>

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
    float matrix[16]; ///< column-major
    float width;      ///< of the viewport, pixels
    float height;
};

/// One end of each line.
struct Ends {
    Values x, y, z;        ///< as given
    Values pixelX, pixelY; ///< y down
    Values depth;          ///< NDC z
    Values w;              ///< of clip space: 0 or less is behind the camera
};

/// Lines beyond the block's count keep what they had, and are computed for nothing.
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

/// Takes the projection by value, as the functions below: for the compiler a reference might refer to what
/// the loop writes, and nothing would be vectorised.
///
/// True when some of the ends are behind the camera, where what is computed means nothing.
bool Project(Projection projection, Ends& ends) {
    float const* const m = projection.matrix;
    int isBehind = 0;
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
        ends.w[i] = clipW;
        isBehind |= clipW <= 0.0f;
    }
    return isBehind != 0;
}

/// Puts an end to a place in clip space.
void Place(Projection const& projection, ClipPosition const& clip, Ends& ends, int i) {
    ends.pixelX[i] = static_cast<float>((clip.x / clip.w + 1.0) * 0.5 * projection.width);
    ends.pixelY[i] = static_cast<float>((1.0 - clip.y / clip.w) * 0.5 * projection.height);
    ends.depth[i] = static_cast<float>(clip.z / clip.w);
}

/// Cuts the lines that reach behind the camera. Those of which nothing is left lose their length.
void CutAtNearPlane(Projection const& projection, zx3D::Line const* lines, int count, Ends& starts,
                    Ends& ends) {
    bool const hasHomogeneousDepth = bgfx::getCaps()->homogeneousDepth;
    for (int i = 0; i < count; ++i) {
        bool const isStartBehind = starts.w[i] <= 0.0f;
        bool const isEndBehind = ends.w[i] <= 0.0f;
        if (!isStartBehind && !isEndBehind)
            continue;
        ClipPosition start = ToClip(projection.matrix, lines[i].start);
        ClipPosition end = ToClip(projection.matrix, lines[i].end);
        bool const isSomeLeft = isStartBehind != isEndBehind &&
                                (isStartBehind ? zx3DQt::CutAtNearPlane(end, start, hasHomogeneousDepth)
                                               : zx3DQt::CutAtNearPlane(start, end, hasHomogeneousDepth));
        if (!isSomeLeft)
            start = end = {0.0, 0.0, 0.0, 1.0};
        if (!isSomeLeft || isStartBehind)
            Place(projection, start, starts, i);
        if (!isSomeLeft || isEndBehind)
            Place(projection, end, ends, i);
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

/// The same values for each line of a block, as they are written.
using Vectors = Float4[kBlockSize];

/// Everything about a block that its vertices are made of.
struct Block {
    Vectors start, end;
    Vectors startLeft, endLeft, endRight, startRight; ///< left is where the offset is subtracted
};

void StoreEnds(Ends const& ends, Vectors& vectors) {
    for (int i = 0; i < kBlockSize; ++i)
        vectors[i] = {ends.pixelX[i], ends.pixelY[i], ends.depth[i], 1.0f};
}

void StoreCorners(Projection projection, Ends const& ends, Values const& offsetX, Values const& offsetY,
                  float side, Values const& length, Vectors& corners) {
    for (int i = 0; i < kBlockSize; ++i) {
        float const x = 2.0f * (ends.pixelX[i] + side * offsetX[i]) / projection.width - 1.0f;
        float const y = -(2.0f * (ends.pixelY[i] + side * offsetY[i]) / projection.height - 1.0f);
        bool const isCollapsed = length[i] < kShortestLength;
        corners[i] = {isCollapsed ? 0.0f : x, isCollapsed ? 0.0f : y, isCollapsed ? 0.0f : ends.depth[i],
                      isCollapsed ? 0.0f : 1.0f};
    }
}

void Compute(Projection const& projection, float halfWidth, zx3D::Line const* lines, int count, Ends& starts,
             Ends& ends, Block& block) {
    bool const isStartBehind = Project(projection, starts);
    bool const isEndBehind = Project(projection, ends);
    if (isStartBehind || isEndBehind)
        CutAtNearPlane(projection, lines, count, starts, ends);
    Values length, offsetX, offsetY;
    ComputeOffsets(starts, ends, halfWidth, length, offsetX, offsetY);
    StoreEnds(starts, block.start);
    StoreEnds(ends, block.end);
    StoreCorners(projection, starts, offsetX, offsetY, -1.0f, length, block.startLeft);
    StoreCorners(projection, ends, offsetX, offsetY, -1.0f, length, block.endLeft);
    StoreCorners(projection, ends, offsetX, offsetY, 1.0f, length, block.endRight);
    StoreCorners(projection, starts, offsetX, offsetY, 1.0f, length, block.startRight);
}

void Write(Block const& block, zx3D::Line const* lines, int count, DummyVertexT* vertices) {
    for (int i = 0; i < count; ++i, vertices += kVerticesPerLine) {
        Float4 const color = ToFloat4(lines[i].color);
        Vectors const* const corners[] = {&block.startLeft, &block.endLeft,    &block.endRight,
                                          &block.endRight,  &block.startRight, &block.startLeft};
        for (int v = 0; v < 6; ++v) {
            vertices[v].corner = (*corners[v])[i];
            vertices[v].color = color;
            vertices[v].start = block.start[i];
            vertices[v].end = block.end[i];
        }
    }
}

} // namespace

void Expand(zx3D::DataSpan<zx3D::Line const> lines, QMatrix4x4 const& modelViewProjection, QSize viewport,
            float width, DummyVertexT* vertices) {
    Projection projection{{}, static_cast<float>(viewport.width()), static_cast<float>(viewport.height())};
    std::copy_n(modelViewProjection.constData(), 16, projection.matrix);
    Ends starts{}, ends{};
    Block block;
    for (std::uint64_t first = 0; first < lines.count; first += kBlockSize) {
        zx3D::Line const* const blockLines = lines.data + first;
        int const count = static_cast<int>(std::min<std::uint64_t>(lines.count - first, kBlockSize));
        Load(blockLines, count, starts, ends);
        Compute(projection, width * 0.5f, blockLines, count, starts, ends, block);
        Write(block, blockLines, count, vertices);
        vertices += count * kVerticesPerLine;
    }
}

} // namespace zarvex::zx3DQt::RectangleSprite
