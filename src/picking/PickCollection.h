// The elements of batches in a rectangle, whatever stands in front of them.
#pragma once

#include "PictureMap.h"

#include <zx3DQt/PickHit.h>
#include <zx3DQt/SizeUnit.h>

#include "../batch/TexelStore.h"

#include <QMatrix4x4>
#include <QRectF>

#include <bit>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace zarvex::zx3DQt {

inline bx::Vec3 PlaceOf(Texel const& texel) {
    return {std::bit_cast<float>(texel[0]), std::bit_cast<float>(texel[1]), std::bit_cast<float>(texel[2])};
}

/// Searches through what batches keep in memory, one addition to a scene after the other.
class PickCollection {
public:
    /// `rect` is in pixels of the viewport.
    PickCollection(BGFXViewContext const& view, QRectF const& rect) : m_view(view), m_rect(rect) {}

    /// What follows is of this batch: of elements of a size, or of lines of a width.
    void Begin(void const* batch, WorldPosition const& origin, QMatrix4x4 const& transform, double size,
               SizeUnit sizeUnit) {
        m_map.emplace(m_view, origin, transform);
        m_addition = {.batch = batch, .addition = m_additions++};
        m_size = size;
        m_sizeUnit = sizeUnit;
    }
    /// As `Begin`, of a batch that keeps nothing.
    void Skip() {
        ++m_additions;
        m_hasSkipped = true;
    }
    bool HasSkipped() const { return m_hasSkipped; }

    /// Whether any part of it is in the rectangle. Places that are not finite are not.
    /// @{
    bool HasPoint(bx::Vec3 const& point) const { return m_map->Touches(m_rect, point, MarginAt(point)); }
    bool HasLine(bx::Vec3 const& start, bx::Vec3 const& end) const {
        return m_map->Touches(m_rect, start, end, std::max(MarginAt(start), MarginAt(end)));
    }
    bool HasTriangle(std::array<bx::Vec3, 3> const& corners) const { return m_map->Touches(m_rect, corners); }
    /// @}

    /// An element of the batch, whose index is to be filled in.
    PickElement const& GetAddition() const { return m_addition; }
    void Add(PickElement const& element) { m_elements.push_back(element); }

    std::vector<PickElement> const& GetElements() const { return m_elements; }

private:
    double MarginAt(bx::Vec3 const& place) const {
        double const size =
            m_sizeUnit == SizeUnit::World ? m_map->PixelsOf(m_size, m_map->ToClip(place).w) : m_size;
        return size > 1.0 ? 0.5 * size : 0.5; // what is not a number, too
    }

    BGFXViewContext m_view;
    QRectF m_rect;
    std::optional<PictureMap> m_map;
    PickElement m_addition;
    std::uint32_t m_additions = 0;
    double m_size = 1.0;
    SizeUnit m_sizeUnit = SizeUnit::Pixels;
    bool m_hasSkipped = false;
    std::vector<PickElement> m_elements;
};

} // namespace zarvex::zx3DQt
