// Sets of colours, pixel by pixel.
#include "ReferencePicture.h"

#include "ImageComparison.h"

#include <algorithm>

namespace zarvex::testing {

ReferencePicture::ReferencePicture(QSize size, QColor const& background)
    : m_size(size),
      m_background(background),
      m_pixels(static_cast<std::size_t>(size.width() * size.height()), Colors{background}) {}

void ReferencePicture::Draw(QRect const& area, QColor const& color,
                            std::function<Coverage(QPointF)> const& coverage) {
    QRect const visible = area.intersected(QRect(QPoint(), m_size));
    for (int y = visible.top(); y <= visible.bottom(); ++y) {
        for (int x = visible.left(); x <= visible.right(); ++x) {
            Colors& colors = At(x, y);
            switch (coverage(QPointF(x + 0.5, y + 0.5))) {
            case Coverage::Outside:
                break;
            case Coverage::Edge:
                if (std::find(colors.begin(), colors.end(), color) == colors.end())
                    colors.push_back(color);
                break;
            case Coverage::Inside:
                colors.assign(1, color);
                break;
            }
        }
    }
}

QImage ReferencePicture::Nearest(QImage const& actual) const {
    QImage image(m_size, QImage::Format_RGBA8888);
    for (int y = 0; y < m_size.height(); ++y) {
        for (int x = 0; x < m_size.width(); ++x) {
            QColor const there = actual.pixelColor(x, y);
            auto const isNearer = [&there](QColor const& a, QColor const& b) {
                return ColorDistance(a, there) < ColorDistance(b, there);
            };
            Colors const& colors = At(x, y);
            image.setPixelColor(x, y, *std::min_element(colors.begin(), colors.end(), isNearer));
        }
    }
    return image;
}

QImage ReferencePicture::WithoutEdges(QImage image) const {
    for (int y = 0; y < m_size.height(); ++y) {
        for (int x = 0; x < m_size.width(); ++x) {
            if (At(x, y).size() > 1)
                image.setPixelColor(x, y, m_background);
        }
    }
    return image;
}

int ReferencePicture::CountEdges() const {
    auto const isEdge = [](Colors const& colors) { return colors.size() > 1; };
    return static_cast<int>(std::count_if(m_pixels.begin(), m_pixels.end(), isEdge));
}

int ReferencePicture::CountDrawn() const {
    auto const isDrawn = [this](Colors const& colors) {
        return colors.size() == 1 && colors[0] != m_background;
    };
    return static_cast<int>(std::count_if(m_pixels.begin(), m_pixels.end(), isDrawn));
}

} // namespace zarvex::testing
