// Round numbers along a scale.
#pragma once

#include <QString>

#include <vector>

namespace viewer {

/// The smallest of 1, 2, 5 times a power of ten that is not below `atLeast`. For what is no positive
/// number, 1.
double RoundStep(double atLeast);

/// The multiples of a step, from the first at or above `low` to the last at or below `high`; at most
/// `maxCount`.
std::vector<double> Ticks(double low, double high, double step, int maxCount = 200);

/// A multiple of `step` with as many decimals as tell it from its neighbours: "0.25", "-3", "4e+09".
QString TickText(double value, double step);

/// A measured number with four significant digits.
QString NumberText(double value);

} // namespace viewer
