// From device-independent pixels to physical ones.
#pragma once

#include <QRect>
#include <QScreen>
#include <QSize>
#include <QWidget>

#include <algorithm>

namespace zarvex::zx3DQt {

/// The pixel ratio of the widget's screen or, without one, of the widget; at least 1.
inline double PixelRatioOf(QWidget const& widget) {
    QScreen const* const screen = widget.screen();
    return std::max(screen != nullptr ? screen->devicePixelRatio() : widget.devicePixelRatioF(), 1.0);
}

/// Each component times the ratio, rounded half away from zero.
inline QSize ToPhysical(QSize size, qreal ratio) {
    return {qRound(size.width() * ratio), qRound(size.height() * ratio)};
}

inline QPoint ToPhysical(QPoint point, qreal ratio) {
    return {qRound(point.x() * ratio), qRound(point.y() * ratio)};
}

inline QRect ToPhysical(QRect const& rect, qreal ratio) {
    return {ToPhysical(rect.topLeft(), ratio), ToPhysical(rect.size(), ratio)};
}

} // namespace zarvex::zx3DQt
