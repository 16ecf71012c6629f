// Labels that do not lie over each other.
#pragma once

#include <zx3D/Text.h>

#include <QRectF>
#include <QSizeF>
#include <QString>

#include <cmath>
#include <vector>

namespace zarvex::zx3DQt {

/// The size of a text's block, pixels.
inline QSizeF MeasureText(zx3D::FontHandle font, QString const& text) {
    zx3D::TextSize const size = zx3D::MeasureText(font, text.toUtf8().constData());
    return QSizeF(size.width, size.height);
}

/// The whole pixels that a block is drawn on.
inline QRectF DrawnRect(QPointF const& topLeft, QSizeF const& size) {
    return {QPointF(std::floor(topLeft.x() + 0.5), std::floor(topLeft.y() + 0.5)), size};
}

/// Hands out room in a picture: first come, first served.
class LabelRoom {
public:
    /// Pixels that two labels keep apart, to the side or up and down.
    explicit LabelRoom(double gap) : m_gap(gap) {}

    /// True when nothing is in the way; the room is taken then.
    bool Take(QRectF const& rect) {
        for (QRectF const& taken : m_taken) {
            if (IsNear(rect, taken))
                return false;
        }
        m_taken.push_back(rect);
        return true;
    }

private:
    bool IsNear(QRectF const& a, QRectF const& b) const {
        return a.left() < b.right() + m_gap && b.left() < a.right() + m_gap && a.top() < b.bottom() + m_gap &&
               b.top() < a.bottom() + m_gap;
    }

    double m_gap;
    std::vector<QRectF> m_taken;
};

} // namespace zarvex::zx3DQt
