// The library's font in every size that is asked for.
#pragma once

#include <zx3D/Text.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>

namespace viewer {

/// Keeps the fonts that it has loaded, and frees them in the end.
class Fonts {
public:
    Fonts() = default;
    Fonts(Fonts const&) = delete;
    Fonts& operator=(Fonts const&) = delete;

    ~Fonts() {
        for (auto const& [size, font] : m_fonts)
            zarvex::zx3D::DestroyFont(font);
    }

    /// `size`: physical pixels.
    zarvex::zx3D::FontHandle Get(float size) {
        auto const pixelSize = static_cast<std::uint16_t>(std::clamp(std::round(size), 6.0f, 512.0f));
        auto const [entry, isNew] = m_fonts.try_emplace(pixelSize);
        if (isNew)
            entry->second = zarvex::zx3D::LoadDefaultFont(pixelSize).value_or(zarvex::zx3D::FontHandle());
        return entry->second;
    }

private:
    std::map<std::uint16_t, zarvex::zx3D::FontHandle> m_fonts;
};

} // namespace viewer
