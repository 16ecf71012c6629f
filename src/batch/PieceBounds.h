// Where a batch's pieces are, and which of them a view shows.
#pragma once

#include <bx/math.h>

#include <QMatrix4x4>
#include <QVector3D>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace zarvex::zx3DQt {

inline bool IsFinite(bx::Vec3 const& position) {
    return std::isfinite(position.x) && std::isfinite(position.y) && std::isfinite(position.z);
}

/// The box around positions. Empty at first.
struct Bounds {
    static constexpr float kFar = std::numeric_limits<float>::infinity();

    QVector3D minimum{kFar, kFar, kFar};
    QVector3D maximum{-kFar, -kFar, -kFar};

    bool IsEmpty() const { return minimum.x() > maximum.x(); }
    void Add(float x, float y, float z) {
        minimum = {std::min(minimum.x(), x), std::min(minimum.y(), y), std::min(minimum.z(), z)};
        maximum = {std::max(maximum.x(), x), std::max(maximum.y(), y), std::max(maximum.z(), z)};
    }
    void Add(Bounds const& other) {
        if (other.IsEmpty())
            return;
        Add(other.minimum.x(), other.minimum.y(), other.minimum.z());
        Add(other.maximum.x(), other.maximum.y(), other.maximum.z());
    }
};

/// The half spaces that a picture shows: left, right, bottom, top and far, of clip coordinates. The near
/// plane is not among them, since renderers have it in different places.
class ViewVolume {
public:
    /// `toClip` leads from the boxes' coordinates to clip space. `margin` is how far, in NDC, what is drawn
    /// may reach beyond its position; `reach` the same in the boxes' units.
    ViewVolume(QMatrix4x4 const& toClip, float marginX, float marginY, float reach);

    bool MayShow(Bounds const& bounds) const;

    /// Whether all positions in the box are in front of the camera: their clip w is positive.
    bool IsInFront(Bounds const& bounds) const;

private:
    std::array<QVector4D, 5> m_planes; ///< inside where positive
    QVector4D m_camera;                ///< in front where positive
    float m_reach;
};

/// The boxes of pieces of equal numbers of things.
class PieceBounds {
public:
    /// Things in a piece: few enough that a piece outside the picture is worth leaving out, and so many that
    /// asking for ten million costs little.
    static constexpr std::uint64_t kPieceSize = 262'144;

    explicit PieceBounds(std::uint64_t pieceSize = kPieceSize) : m_pieceSize(pieceSize) {}

    void Clear() { m_pieces.clear(); }

    /// The box of the piece that has this thing.
    Bounds& At(std::uint64_t index) {
        std::size_t const piece = index / m_pieceSize;
        if (piece >= m_pieces.size())
            m_pieces.resize(piece + 1);
        return m_pieces[piece];
    }

    /// Around all pieces.
    Bounds Total() const;

    /// Whether all that the volume may show is in front of the camera.
    bool IsInFront(ViewVolume const& volume) const {
        return std::all_of(m_pieces.begin(), m_pieces.end(), [&](Bounds const& piece) {
            return volume.IsInFront(piece) || !volume.MayShow(piece);
        });
    }

    /// Calls `draw(first, count)` for each run of things, of `total`, in pieces that the volume may show.
    template<typename Draw>
    void ForEachVisible(ViewVolume const& volume, std::uint64_t total, Draw draw) const {
        std::uint64_t first = 0;
        std::uint64_t end = 0;
        for (std::size_t piece = 0; piece < m_pieces.size() && piece * m_pieceSize < total; ++piece) {
            if (!volume.MayShow(m_pieces[piece]))
                continue;
            if (end != piece * m_pieceSize) {
                if (first < end)
                    draw(first, end - first);
                first = piece * m_pieceSize;
            }
            end = std::min((piece + 1) * m_pieceSize, total);
        }
        if (first < end)
            draw(first, end - first);
    }

private:
    std::uint64_t m_pieceSize;
    std::vector<Bounds> m_pieces;
};

} // namespace zarvex::zx3DQt
