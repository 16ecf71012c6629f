// The numbers behind the arguments.
#include "HostileData.h"

#include <algorithm>
#include <limits>

namespace zarvex::fuzz {

namespace {

template<typename T, typename Make>
std::vector<T> Elements(Random& random, Make make) {
    std::vector<T> elements;
    std::size_t const count = Count(random);
    elements.reserve(count);
    while (elements.size() < count)
        elements.push_back(make());
    return elements;
}

} // namespace

float Number(Random& random) {
    using Limits = std::numeric_limits<float>;
    constexpr float kHostile[] = {Limits::quiet_NaN(),
                                  Limits::infinity(),
                                  -Limits::infinity(),
                                  Limits::max(),
                                  Limits::lowest(),
                                  Limits::min(),
                                  Limits::denorm_min(),
                                  0.0f,
                                  -0.0f,
                                  1e9f,
                                  -65536.0f,
                                  2147483648.0f};
    return random.OneIn(64) ? random.PickFrom(kHostile) : 2.0f * random.Unit();
}

bx::Vec3 Position(Random& random) {
    float const x = Number(random);
    float const y = Number(random);
    return {x, y, Number(random)};
}

zx3DQt::WorldPosition Place(Random& random) {
    constexpr double kDistances[] = {1.0, 5.4e6, 1e300};
    double const distance = random.PickFrom(kDistances);
    bx::Vec3 const position = Position(random);
    return {distance * position.x, distance * position.y, distance * position.z};
}

QVector3D QPosition(Random& random) {
    bx::Vec3 const position = Position(random);
    return {position.x, position.y, position.z};
}

zx3D::Color Color(Random& random) {
    float const red = Number(random);
    float const green = Number(random);
    float const blue = Number(random);
    return {red, green, blue, Number(random)};
}

QColor RgbColor(Random& random) {
    return random.OneIn(16) ? QColor() : QColor::fromRgba(static_cast<QRgb>(random.NewSeed()));
}

QMatrix4x4 Matrix(Random& random) {
    QMatrix4x4 matrix;
    if (random.OneIn(4)) {
        for (int element = 0; element < 16; ++element)
            matrix(element / 4, element % 4) = Number(random);
    } else {
        matrix.translate(QPosition(random));
    }
    return matrix;
}

std::optional<zx3D::LineStipplePattern> Stipple(Random& random) {
    if (random.OneIn(2))
        return std::nullopt;
    zx3D::LineStipplePattern stipple;
    stipple.pattern = static_cast<std::uint16_t>(random.Below(65536));
    stipple.factor = static_cast<decltype(stipple.factor)>(random.Below(300));
    return stipple;
}

std::optional<float> Width(Random& random) {
    switch (random.Below(8)) {
    case 0:
        return std::nullopt;
    case 1:
        return 1000.0f * Number(random);
    case 2:
        return 65535.0f;
    default:
        return static_cast<float>(random.Between(0, 12)) / 2.0f;
    }
}

std::size_t Count(Random& random) {
    if (random.OneIn(400))
        return random.Below(80000);
    return random.OneIn(10) ? 0 : random.Below(40);
}

std::vector<zx3D::Line> Lines(Random& random) {
    return Elements<zx3D::Line>(random, [&] {
        zx3D::Line line;
        line.start = Position(random);
        line.end = Position(random);
        line.color = Color(random);
        return line;
    });
}

std::vector<zx3D::Vertex::Pos3fColorRGBA> ColoredVertices(Random& random) {
    using Vertex = zx3D::Vertex::Pos3fColorRGBA;
    return Elements<Vertex>(random, [&] {
        bx::Vec3 const position = Position(random);
        return Vertex(position, Color(random));
    });
}

std::vector<zx3D::Vertex::Pos3fNormal3fColorRGBA> LitVertices(Random& random) {
    using Vertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;
    return Elements<Vertex>(random, [&] {
        bx::Vec3 const position = Position(random);
        bx::Vec3 const normal = Position(random);
        return Vertex(position, normal, Color(random));
    });
}

std::vector<std::uint16_t> IndicesBelow(Random& random, std::size_t vertexCount) {
    if (vertexCount == 0)
        return {};
    std::size_t const end = std::min<std::size_t>(vertexCount, 65536);
    return Elements<std::uint16_t>(random, [&] { return static_cast<std::uint16_t>(random.Below(end)); });
}

QString Text(Random& random) {
    static QString const kTexts[] = {
        QString(),
        QStringLiteral("Δx = 0.25 mm"),
        QStringLiteral("one\ntwo\tthree\u2028four"),
        QStringLiteral("שלום مرحبا नमस्ते"),
        QString(QChar(0xd800)) + "a" + QChar(0xdc00),
        QString::fromLatin1("\0\x01\x7f", 3),
        QString(3000, u'W'),
        QStringLiteral("e\u0301\u0301\u0301\u0301\u200d\u202e"),
    };
    return random.PickFrom(kTexts) + QString::number(random.Below(10));
}

} // namespace zarvex::fuzz
