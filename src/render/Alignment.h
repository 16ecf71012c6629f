// From Qt's alignments to parts of a text's size.
#pragma once

#include <QFlags>
#include <Qt>

namespace zarvex::zx3DQt {

/// Which part of the text lies before its place: of several, right wins over the centre.
inline float HorizontalFactor(QFlags<Qt::AlignmentFlag> alignment) {
    if (alignment & Qt::AlignRight)
        return 1.0f;
    return alignment & Qt::AlignHCenter ? 0.5f : 0.0f;
}

/// Which part lies above it: bottom wins over the centre.
inline float VerticalFactor(QFlags<Qt::AlignmentFlag> alignment) {
    if (alignment & Qt::AlignBottom)
        return 1.0f;
    return alignment & Qt::AlignVCenter ? 0.5f : 0.0f;
}

} // namespace zarvex::zx3DQt
