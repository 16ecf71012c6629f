// How long the event loop is kept from a timer.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <vector>

namespace zarvex::testing {

/// Notes by how much each tick of a timer of 5 ms comes too late, from its construction on.
class LatencyMeter {
public:
    LatencyMeter() {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            double const late = static_cast<double>(m_sinceLast.nsecsElapsed()) / 1e6 - kInterval;
            m_latencies.push_back(std::max(0.0, late));
            m_sinceLast.start();
        });
        m_sinceLast.start();
        m_timer.start(kInterval);
    }

    /// Milliseconds, in order of size.
    std::vector<double> Sorted() const {
        std::vector<double> sorted = m_latencies;
        std::ranges::sort(sorted);
        return sorted;
    }

private:
    static constexpr int kInterval = 5;

    QTimer m_timer;
    QElapsedTimer m_sinceLast;
    std::vector<double> m_latencies;
};

/// The value below which `part` of the values lie.
inline double Quantile(std::vector<double> const& sorted, double part) {
    return sorted.at(static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1)));
}

} // namespace zarvex::testing
