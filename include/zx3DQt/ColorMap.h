// Colours for numbers.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <QColor>

#include <memory>
#include <span>

namespace zarvex::zx3DQt {

/// A table of 256 colours from the least to the greatest of a range of numbers. A value; copies share the
/// table, also on the GPU.
class ZX3DQT_EXPORT ColorMap {
public:
    /// From black to white.
    ColorMap();

    /// Evenly spaced colours, the first for the least number, with straight transitions between them. One
    /// colour is the colour of all numbers; none makes the map from black to white.
    explicit ColorMap(std::span<QColor const> colors);

    /// From dark blue over green to yellow, of evenly growing lightness, also for the colour-blind: for
    /// measured quantities. "viridis" of Smith and van der Walt, 2015.
    static ColorMap Viridis();

    /// From blue over white to red: for deviations to both sides of a target. Moreland, "Diverging Color Maps
    /// for Scientific Visualization", 2009.
    static ColorMap CoolWarm();

    /// The colour of a share of the range, 0 to 1; shares beyond have the colour of the nearer end, and one
    /// that is not a number has that of the least.
    QColor At(double share) const;

private:
    friend class ColorMapTexture; // the table on the GPU

    class Table;
    std::shared_ptr<Table> m_table;
};

} // namespace zarvex::zx3DQt
