// Steps of 1, 2, 5, and their text.
#include "TickSteps.h"

#include <algorithm>
#include <cmath>

namespace viewer {

namespace {

/// Rounding must not lose a tick that lies at an end.
constexpr double kTolerance = 1e-6;

constexpr double kLargestPlain = 1e6;
constexpr double kSmallestPlain = 1e-4;

/// The typographic minus is as wide as the digits.
QString WithMinusSign(QString text) {
    return text.replace('-', QChar(0x2212));
}

} // namespace

double RoundStep(double atLeast) {
    if (!(atLeast > 0.0) || !std::isfinite(atLeast))
        return 1.0;
    double const power = std::pow(10.0, std::floor(std::log10(atLeast)));
    for (double const factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= atLeast * (1.0 - kTolerance))
            return factor * power;
    }
    return 10.0 * power;
}

std::vector<double> Ticks(double low, double high, double step, int maxCount) {
    std::vector<double> ticks;
    if (!(step > 0.0) || !std::isfinite(low) || !std::isfinite(high))
        return ticks;
    double const first = std::ceil(low / step - kTolerance);
    double const last = std::floor(high / step + kTolerance);
    auto const count = static_cast<int>(std::clamp(last - first + 1.0, 0.0, static_cast<double>(maxCount)));
    for (int i = 0; i < count; ++i)
        ticks.push_back((first + i) * step);
    return ticks;
}

QString TickText(double value, double step) {
    if (std::abs(value) < 0.5 * step)
        return "0";
    bool const isPlain = std::abs(value) < kLargestPlain && step >= kSmallestPlain;
    if (!isPlain)
        return WithMinusSign(QString::number(value, 'g', 6));
    int const decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + kTolerance)));
    return WithMinusSign(QString::number(value, 'f', decimals));
}

QString NumberText(double value) {
    return WithMinusSign(QString::number(value, 'g', 4));
}

} // namespace viewer
