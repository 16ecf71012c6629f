// What a picture may look like where GPUs are free to choose.
#pragma once

#include "Coverage.h"

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QRect>
#include <QSize>

#include <functional>
#include <vector>

namespace zarvex::testing {

/// A picture that knows for each pixel all the colours that are right there.
class ReferencePicture {
public:
    ReferencePicture(QSize size, QColor const& background);

    /// Draws a shape over what is there. `coverage` is asked for the centres of the pixels of `area`, which
    /// may reach beyond the picture.
    void Draw(QRect const& area, QColor const& color, std::function<Coverage(QPointF)> const& coverage);

    /// The right picture that is nearest to `actual`.
    QImage Nearest(QImage const& actual) const;

    /// The image without the pixels where several colours are right.
    QImage WithoutEdges(QImage image) const;

    /// How many pixels have several right colours.
    int CountEdges() const;

    /// How many pixels have one right colour that is not the background's.
    int CountDrawn() const;

private:
    using Colors = std::vector<QColor>;

    Colors& At(int x, int y) { return m_pixels[static_cast<std::size_t>(y * m_size.width() + x)]; }
    Colors const& At(int x, int y) const {
        return m_pixels[static_cast<std::size_t>(y * m_size.width() + x)];
    }

    QSize m_size;
    QColor m_background;
    std::vector<Colors> m_pixels;
};

} // namespace zarvex::testing
