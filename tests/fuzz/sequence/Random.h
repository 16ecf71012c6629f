// Numbers that a seed decides, the same with every standard library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace zarvex::fuzz {

/// A stream of random decisions.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_engine(seed) {}

    /// 0 to `end` - 1; `end` is at least 1.
    std::uint64_t Below(std::uint64_t end) { return m_engine() % end; }

    /// True once in `n` times.
    bool OneIn(std::uint64_t n) { return Below(n) == 0; }

    /// `smallest` to `largest`.
    int Between(int smallest, int largest) {
        return smallest + static_cast<int>(Below(static_cast<std::uint64_t>(largest - smallest) + 1));
    }

    /// From -1 to 1.
    float Unit() { return static_cast<float>(Below(2001)) / 1000.0f - 1.0f; }

    template<typename T, std::size_t N>
    T const& PickFrom(T const (&values)[N]) {
        return values[Below(N)];
    }

    /// For decisions that must not change those that follow here.
    std::uint64_t NewSeed() { return m_engine(); }

private:
    std::mt19937_64 m_engine;
};

} // namespace zarvex::fuzz
