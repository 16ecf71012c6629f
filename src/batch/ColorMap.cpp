// The tables of colours.
#include "ColorMapTable.h"

#include <algorithm>
#include <cmath>

namespace zarvex::zx3DQt {

namespace {

constexpr QRgb kGray[] = {0xFF000000, 0xFFFFFFFF};

constexpr QRgb kViridis[] = {0xFF440154, 0xFF472D7B, 0xFF3B528B, 0xFF2C728E, 0xFF21908C,
                             0xFF27AD81, 0xFF5DC863, 0xFFAADC32, 0xFFFDE725};

constexpr QRgb kCoolWarm[] = {0xFF3B4CC0, 0xFF6788EE, 0xFF9ABBFF, 0xFFC9D7F0,
                              0xFFEDD1C2, 0xFFF7A889, 0xFFE26952, 0xFFB40426};

template<std::size_t N>
ColorMap MapOf(QRgb const (&stops)[N]) {
    std::array<QColor, N> colors;
    std::transform(std::begin(stops), std::end(stops), colors.begin(),
                   [](QRgb stop) { return QColor::fromRgba(stop); });
    return ColorMap(colors);
}

/// A channel between two colours.
std::uint8_t Mix(int left, int right, double share) {
    return static_cast<std::uint8_t>(std::lround(left * (1.0 - share) + right * share));
}

} // namespace

bgfx::TextureHandle ColorMap::Table::GetTexture() {
    if (!m_texture)
        m_texture = zx3D::Owned(bgfx::createTexture2D(
            kSize, 1, false, 1, bgfx::TextureFormat::RGBA8, BGFX_SAMPLER_POINT | BGFX_SAMPLER_UVW_CLAMP,
            bgfx::copy(colors.data(), static_cast<std::uint32_t>(colors.size()))));
    return m_texture.Get();
}

ColorMap::ColorMap() {
    // Never destroyed: whatever draws at the very end of the process may have a copy.
    static ColorMap const& gray = *new ColorMap(MapOf(kGray));
    *this = gray;
}

ColorMap::ColorMap(std::span<QColor const> colors) {
    if (colors.empty()) {
        *this = ColorMap();
        return;
    }
    m_table = std::make_shared<Table>();
    for (std::size_t i = 0; i < Table::kSize; ++i) {
        double const place =
            static_cast<double>(i) / (Table::kSize - 1) * static_cast<double>(colors.size() - 1);
        QColor const& left = colors[static_cast<std::size_t>(place)];
        QColor const& right = colors[std::min(static_cast<std::size_t>(place) + 1, colors.size() - 1)];
        double const share = place - std::floor(place);
        std::uint8_t* const color = &m_table->colors[4 * i];
        color[0] = Mix(left.red(), right.red(), share);
        color[1] = Mix(left.green(), right.green(), share);
        color[2] = Mix(left.blue(), right.blue(), share);
        color[3] = Mix(left.alpha(), right.alpha(), share);
    }
}

ColorMap ColorMap::Viridis() {
    static ColorMap const& map = *new ColorMap(MapOf(kViridis));
    return map;
}

ColorMap ColorMap::CoolWarm() {
    static ColorMap const& map = *new ColorMap(MapOf(kCoolWarm));
    return map;
}

QColor ColorMap::At(double share) const {
    // In this order, a share that is not a number becomes 0.
    double const inside = std::min(std::max(0.0, share), 1.0);
    std::uint8_t const* const color =
        &m_table->colors[4 * static_cast<std::size_t>(std::lround(inside * (Table::kSize - 1)))];
    return QColor(color[0], color[1], color[2], color[3]);
}

} // namespace zarvex::zx3DQt
