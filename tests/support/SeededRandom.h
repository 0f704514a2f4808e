#pragma once

#include <cmath>
#include <random>

/// Random numbers that are the same for the same seed on every platform, as the distributions of
/// the standard library are not.
class SeededRandom {
public:
    explicit SeededRandom(unsigned seed) : generator_(seed) {}

    /// From `low` to `high` inclusive.
    int between(int low, int high)
    {
        return low + static_cast<int>(generator_() % static_cast<unsigned>(high - low + 1));
    }

    /// From `low` to below `high`.
    double between(double low, double high)
    {
        return low + (high - low) * static_cast<double>(generator_()) / 4294967296.0;
    }

    /// From `low` to below `high`, every order of magnitude as likely as any other.
    double magnitude(double low, double high)
    {
        return std::exp(between(std::log(low), std::log(high)));
    }

    /// True once in `times`, on average.
    bool oneIn(int times) { return between(1, times) == 1; }

    template <typename List>
    auto pick(const List& list)
    {
        return list[between(0, static_cast<int>(list.size()) - 1)];
    }

private:
    std::mt19937 generator_;
};
