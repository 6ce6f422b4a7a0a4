#pragma once

#include <QtGlobal>

#include <random>

namespace Simulator {

/// Random numbers that a seed gives again, whichever standard library the program is built with: the
/// distributions of the standard differ between its makers, the generator does not.
class RandomNumbers {
public:
    explicit RandomNumbers(quint64 seed)
        : m_generator(seed) {}

    /// 0 to below 1.
    double Uniform() { return static_cast<double>(m_generator() >> 11U) * 0x1p-53; }
    /// Around 0 with a standard deviation of 1, and no further than 6 from it.
    double Normal() {
        // The sum of twelve, in four pieces of 16 bits of three draws: normal enough, and quick.
        double sum = -6.0 + 12.0 * 0x1p-17;
        for (int i = 0; i < 3; ++i) {
            const quint64 drawn = m_generator();
            const quint64 pieces =
                (drawn & 0xffffU) + (drawn >> 16U & 0xffffU) + (drawn >> 32U & 0xffffU) + (drawn >> 48U);
            sum += static_cast<double>(pieces) * 0x1p-16;
        }
        return sum;
    }

private:
    std::mt19937_64 m_generator;
};

} // namespace Simulator
