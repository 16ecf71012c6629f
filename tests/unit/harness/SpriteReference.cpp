// A loop over the sprites, with every value named and computed on its own.
#include "SpriteReference.h"

#include <array>
#include <cmath>
#include <limits>

using namespace zarvex;

namespace {

struct Vec4 {
    float x, y, z, w;
};

struct Pixel {
    float x, y;
};

float Row(QMatrix4x4 const& m, int row, bx::Vec3 const& p) {
    return m(row, 0) * p.x + m(row, 1) * p.y + m(row, 2) * p.z + m(row, 3);
}

Vec4 Product(QMatrix4x4 const& m, bx::Vec3 const& p) {
    return {Row(m, 0, p), Row(m, 1, p), Row(m, 2, p), Row(m, 3, p)};
}

void Append(std::vector<float>& floats, Vec4 const& v) {
    floats.insert(floats.end(), {v.x, v.y, v.z, v.w});
}

Vec4 ToVec4(zx3D::Color const& color) {
    return {color.red, color.green, color.blue, color.alpha};
}

/// In viewport pixels, y down, and NDC z.
struct Place {
    float x, y, depth;
};

Place ToPlace(Vec4 const& clip, QSize viewport) {
    return {(clip.x / clip.w + 1.0f) * 0.5f * float(viewport.width()),
            (1.0f - clip.y / clip.w) * 0.5f * float(viewport.height()), clip.z / clip.w};
}

void AppendRectangle(std::vector<float>& floats, Place const& a, Place const& b, zx3D::Color const& color,
                     QSize viewport, float width) {
    auto const toNdc = [&](float pixelX, float pixelY, float depth) {
        return Vec4{2.0f * pixelX / float(viewport.width()) - 1.0f,
                    -(2.0f * pixelY / float(viewport.height()) - 1.0f), depth, 1.0f};
    };
    float const length = std::hypot(b.x - a.x, b.y - a.y);
    std::array<Vec4, 4> corners{};
    if (!(length < 1.1920929e-5f)) {
        Pixel const u{(b.x - a.x) / length, (b.y - a.y) / length};
        Pixel const o{-u.y * (width * 0.5f), u.x * (width * 0.5f)};
        corners[0] = toNdc(a.x - o.x, a.y - o.y, a.depth);
        corners[1] = toNdc(b.x - o.x, b.y - o.y, b.depth);
        corners[2] = toNdc(b.x + o.x, b.y + o.y, b.depth);
        corners[3] = toNdc(a.x + o.x, a.y + o.y, a.depth);
    }
    for (std::size_t const corner : {0, 1, 2, 2, 3, 0}) {
        Append(floats, corners[corner]);
        Append(floats, ToVec4(color));
        Append(floats, {a.x, a.y, a.depth, 1.0f});
        Append(floats, {b.x, b.y, b.depth, 1.0f});
    }
}

} // namespace

std::vector<float> ExpandedPoints(zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> points,
                                  QMatrix4x4 const& modelViewProjection, QSize viewport, float size) {
    constexpr std::array<Pixel, 6> corners{{{-1, -1}, {1, -1}, {1, 1}, {-1, -1}, {1, 1}, {-1, 1}}};
    auto const viewportWidth = float(viewport.width());
    auto const viewportHeight = float(viewport.height());
    std::vector<float> floats;
    for (std::uint64_t i = 0; i < points.count; ++i) {
        Vec4 const clip = Product(modelViewProjection, points.data[i].position);
        Vec4 center{0, 0, 0, size * 0.5f};
        if (clip.w != 0.0f)
            center = {clip.x / clip.w, clip.y / clip.w, clip.z / clip.w, size * 0.5f};
        for (Pixel const& corner : corners) {
            Append(floats, {clip.x + clip.w * corner.x * size / viewportWidth,
                            clip.y + clip.w * corner.y * size / viewportHeight, clip.z, clip.w});
            Append(floats, ToVec4(points.data[i].color));
            Append(floats, center);
        }
    }
    return floats;
}

std::vector<float> ExpandedLines(zx3D::DataSpan<zx3D::Line const> lines,
                                 QMatrix4x4 const& modelViewProjection, QSize viewport, float width) {
    std::vector<float> floats;
    for (std::uint64_t i = 0; i < lines.count; ++i) {
        zx3D::Line const& line = lines.data[i];
        AppendRectangle(floats, ToPlace(Product(modelViewProjection, line.start), viewport),
                        ToPlace(Product(modelViewProjection, line.end), viewport), line.color, viewport,
                        width);
    }
    return floats;
}

bool ReachesBehindCamera(zx3D::Line const& line, QMatrix4x4 const& modelViewProjection) {
    return Product(modelViewProjection, line.start).w <= 0.0f ||
           Product(modelViewProjection, line.end).w <= 0.0f;
}

std::optional<std::vector<float>> ExpandedCutLine(zx3D::Line const& line,
                                                  QMatrix4x4 const& modelViewProjection, QSize viewport,
                                                  float width, bool hasHomogeneousDepth) {
    bool const isStartBehind = Product(modelViewProjection, line.start).w <= 0.0f;
    bx::Vec3 const& front = isStartBehind ? line.end : line.start;
    bx::Vec3 const& behind = isStartBehind ? line.start : line.end;
    auto const clipAt = [&](double part) {
        std::array<double, 4> clip{};
        for (int row = 0; row < 4; ++row) {
            auto const at = [&](bx::Vec3 const& p) {
                QMatrix4x4 const& m = modelViewProjection;
                return double(m(row, 0)) * p.x + double(m(row, 1)) * p.y + double(m(row, 2)) * p.z +
                       double(m(row, 3));
            };
            clip[std::size_t(row)] = (1.0 - part) * at(front) + part * at(behind);
        }
        return clip;
    };
    auto const isDrawn = [&](double part) {
        auto const [x, y, z, w] = clipAt(part);
        return w > 0.0 && z >= (hasHomogeneousDepth ? -w : 0.0) && z <= w;
    };
    double drawn = 0.0;
    double notDrawn = 1.0;
    if (!isDrawn(drawn))
        return std::nullopt;
    for (int i = 0; i < 100; ++i) {
        double const middle = 0.5 * (drawn + notDrawn);
        (isDrawn(middle) ? drawn : notDrawn) = middle;
    }
    auto const [x, y, z, w] = clipAt(drawn);
    Place const cut{float((x / w + 1.0) * 0.5 * viewport.width()),
                    float((1.0 - y / w) * 0.5 * viewport.height()), float(z / w)};
    Place const inFront = ToPlace(Product(modelViewProjection, front), viewport);
    std::vector<float> floats;
    AppendRectangle(floats, isStartBehind ? cut : inFront, isStartBehind ? inFront : cut, line.color,
                    viewport, width);
    return floats;
}

float RandomGeometry::Float(float least, float most) {
    return std::uniform_real_distribution<float>(least, most)(m_engine);
}

int RandomGeometry::Int(int least, int most) {
    return std::uniform_int_distribution<int>(least, most)(m_engine);
}

float RandomGeometry::Coordinate(bool unusual) {
    using Limits = std::numeric_limits<float>;
    constexpr std::array<float, 10> rare{0.0f,
                                         -0.0f,
                                         Limits::infinity(),
                                         -Limits::infinity(),
                                         Limits::quiet_NaN(),
                                         Limits::max(),
                                         Limits::min(),
                                         1e20f,
                                         -1e-20f,
                                         Limits::denorm_min()};
    if (unusual && Int(0, 3) == 0)
        return rare[std::size_t(Int(0, int(rare.size()) - 1))];
    return Float(-10.0f, 10.0f);
}

bx::Vec3 RandomGeometry::Position() {
    float const x = Coordinate(false);
    float const y = Coordinate(false);
    return {x, y, Coordinate(false)};
}

bx::Vec3 RandomGeometry::UnusualPosition() {
    float const x = Coordinate(true);
    float const y = Coordinate(true);
    return {x, y, Coordinate(true)};
}

zx3D::Color RandomGeometry::Color() {
    float const red = Float(0.0f, 1.0f);
    float const green = Float(0.0f, 1.0f);
    float const blue = Float(0.0f, 1.0f);
    return {red, green, blue, Float(0.0f, 1.0f)};
}

QMatrix4x4 RandomGeometry::Matrix() {
    QMatrix4x4 matrix;
    matrix.translate(Float(-1.0f, 1.0f), Float(-1.0f, 1.0f), Float(-1.0f, 1.0f));
    matrix.rotate(Float(0.0f, 360.0f), 1.0f, 2.0f, 3.0f);
    matrix.scale(Float(0.1f, 2.0f), Float(0.1f, 2.0f), Float(0.1f, 2.0f));
    return matrix;
}
