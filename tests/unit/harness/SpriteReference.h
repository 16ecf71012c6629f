// Sprites expanded one by one, in the plainest way: what the library's expansion is compared with.
#pragma once

#include <zx3D/DataSpan.h>
#include <zx3D/Line.h>
#include <zx3D/Vertex.h>

#include <QMatrix4x4>
#include <QSize>

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <random>
#include <vector>

/// The floats of six vertices for each point: clip position, colour, centre.
std::vector<float> ExpandedPoints(zarvex::zx3D::DataSpan<zarvex::zx3D::Vertex::Pos3fColorRGBA const> points,
                                  QMatrix4x4 const& modelViewProjection, QSize viewport, float size);

/// The floats of six vertices for each line: corner, colour, start, end. For lines in front of the camera, as
/// a formula that knows nothing of what is behind it.
std::vector<float> ExpandedLines(zarvex::zx3D::DataSpan<zarvex::zx3D::Line const> lines,
                                 QMatrix4x4 const& modelViewProjection, QSize viewport, float width);

/// Whether the w in clip space of an end, or of both, is 0 or less.
bool ReachesBehindCamera(zarvex::zx3D::Line const& line, QMatrix4x4 const& modelViewProjection);

/// The same for a line with one end behind the camera: that one is put where the line leaves the depths that
/// are drawn, found by halving in double precision. Empty when the other end is not in them.
std::optional<std::vector<float>> ExpandedCutLine(zarvex::zx3D::Line const& line,
                                                  QMatrix4x4 const& modelViewProjection, QSize viewport,
                                                  float width, bool hasHomogeneousDepth);

/// Equally many floats of the same bits; one NaN is as good as another.
MATCHER_P(HasBitsOf, expected, "has the bits of the reference") {
    if (arg.size() != expected.size()) {
        *result_listener << arg.size() << " floats instead of " << expected.size();
        return false;
    }
    for (std::size_t i = 0; i < arg.size(); ++i) {
        bool const same = std::isnan(arg[i]) ? std::isnan(expected[i])
                                             : std::memcmp(&arg[i], &expected[i], sizeof(float)) == 0;
        if (!same) {
            *result_listener << "float " << i << " is " << arg[i] << " instead of " << expected[i];
            return false;
        }
    }
    return true;
}

/// Random geometry, the same in every run.
class RandomGeometry {
public:
    /// Coordinates of −10 to 10.
    [[nodiscard]] bx::Vec3 Position();
    /// Now and then with zeros of both signs, infinities, NaN, and numbers close to the ends of the range.
    [[nodiscard]] bx::Vec3 UnusualPosition();
    [[nodiscard]] zarvex::zx3D::Color Color();
    /// A number of `least` to `most`.
    [[nodiscard]] float Float(float least, float most);
    [[nodiscard]] int Int(int least, int most);
    /// A model matrix that turns, scales and moves.
    [[nodiscard]] QMatrix4x4 Matrix();

private:
    [[nodiscard]] float Coordinate(bool unusual);

    std::mt19937 m_engine{20231};
};
