#pragma once

#include <cstdint>
#include <random>

namespace demo {

// Small differences without a pattern, the same in every session with the same seed. One thread.
class Noise {
public:
    explicit Noise(uint32_t seed) : mGenerator(seed) {}

    // `value` give or take up to `spread`, a fraction of it. The standard distributions give other
    // numbers with another library, so this takes none of them.
    template <typename T>
    T around(double value, double spread) {
        const double turn = 2 * (static_cast<double>(mGenerator()) / std::mt19937::max()) - 1;
        return static_cast<T>(value * (1 + spread * turn));
    }

private:
    std::mt19937 mGenerator;
};

}  // namespace demo
