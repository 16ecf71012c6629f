// Boxes against the planes of a picture.
#include "PieceBounds.h"

#include <QVector4D>

#include <cmath>

namespace zarvex::zx3DQt {

ViewVolume::ViewVolume(QMatrix4x4 const& toClip, float marginX, float marginY, float reach) : m_reach(reach) {
    QVector4D const x = toClip.row(0);
    QVector4D const y = toClip.row(1);
    QVector4D const z = toClip.row(2);
    QVector4D const w = toClip.row(3);
    m_planes = {w * (1.0f + marginX) + x, w * (1.0f + marginX) - x, w * (1.0f + marginY) + y,
                w * (1.0f + marginY) - y, w - z};
}

bool ViewVolume::MayShow(Bounds const& bounds) const {
    if (bounds.IsEmpty())
        return false;
    QVector3D const centre = (bounds.minimum + bounds.maximum) * 0.5f;
    QVector3D const half = (bounds.maximum - bounds.minimum) * 0.5f + QVector3D(m_reach, m_reach, m_reach);
    for (QVector4D const& plane : m_planes) {
        float const ofCentre = QVector3D::dotProduct(plane.toVector3D(), centre) + plane.w();
        float const ofCorner =
            std::abs(plane.x()) * half.x() + std::abs(plane.y()) * half.y() + std::abs(plane.z()) * half.z();
        // Also false where there is no number to compare: then it is drawn.
        if (ofCentre + ofCorner < 0.0f)
            return false;
    }
    return true;
}

Bounds PieceBounds::Total() const {
    Bounds total;
    for (Bounds const& piece : m_pieces) {
        if (piece.IsEmpty())
            continue;
        total.Add(piece.minimum.x(), piece.minimum.y(), piece.minimum.z());
        total.Add(piece.maximum.x(), piece.maximum.y(), piece.maximum.z());
    }
    return total;
}

} // namespace zarvex::zx3DQt
