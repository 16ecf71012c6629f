// Arguments of draw operations, from ordinary ones to those that nobody should pass.
#pragma once

#include "Random.h"

#include <zx3DQt/WorldPosition.h>

#include <zx3D/Color.h>
#include <zx3D/DataSpan.h>
#include <zx3D/Line.h>
#include <zx3D/Vertex.h>

#include <bx/math.h>

#include <QColor>
#include <QMatrix4x4>
#include <QString>
#include <QVector3D>

#include <cstdint>
#include <optional>
#include <vector>

namespace zarvex::fuzz {

/// Mostly within -2 and 2; now and then NaN, infinite, huge, or next to nothing.
float Number(Random& random);

bx::Vec3 Position(Random& random);
zx3DQt::WorldPosition Place(Random& random);
QVector3D QPosition(Random& random);
zx3D::Color Color(Random& random);
QColor RgbColor(Random& random);
QMatrix4x4 Matrix(Random& random);
std::optional<zx3D::LineStipplePattern> Stipple(Random& random);

/// Mostly a few pixels; now and then none, negative, not a number, or more than there are.
std::optional<float> Width(Random& random);

/// How many elements: mostly some, sometimes none, seldom tens of thousands.
std::size_t Count(Random& random);

std::vector<zx3D::Line> Lines(Random& random);
std::vector<zx3D::Vertex::Pos3fColorRGBA> ColoredVertices(Random& random);
std::vector<zx3D::Vertex::Pos3fNormal3fColorRGBA> LitVertices(Random& random);

/// Any number of indices below `vertexCount`; none when that is 0.
std::vector<std::uint16_t> IndicesBelow(Random& random, std::size_t vertexCount);

/// Texts in several scripts, very long ones, control characters, and halves of surrogate pairs.
QString Text(Random& random);

/// The elements; now and then what is as good as none: a null pointer with a count, or a count of 0.
template<typename T>
zx3D::DataSpan<T const> Span(Random& random, std::vector<T> const& elements) {
    switch (random.Below(16)) {
    case 0:
        return {nullptr, random.NewSeed()};
    case 1:
        return {elements.data(), 0};
    default:
        return elements;
    }
}

} // namespace zarvex::fuzz
