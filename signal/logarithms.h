// SPDX-License-Identifier: MIT
// Logarithms for loops that take the time: arithmetic alone, of which a compiler makes vector
// instructions.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace demodulator {

/// Natural logarithm of a number greater than 0, within 1e-6.
inline __attribute__((always_inline)) float quickLog(float x)
{
    // x = 2^exponent * m with m between sqrt(1/2) and sqrt(2).
    std::uint32_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    constexpr std::uint32_t ROOT_HALF = 0x3f3504f3; // the bits of sqrt(1/2)
    const std::uint32_t shifted = bits - ROOT_HALF;
    const auto exponent = static_cast<float>(static_cast<std::int32_t>(shifted) >> 23);
    const std::uint32_t mantissa = (shifted & 0x007fffffU) + ROOT_HALF;
    float m = 0.0F;
    std::memcpy(&m, &mantissa, sizeof m);
    // log m = 2 artanh s, a series that is short because |s| < 0.172.
    const float s = (m - 1.0F) / (m + 1.0F);
    const float q = s * s;
    return exponent * 0.69314718F +
           2.0F * s * (1.0F + q * (1.0F / 3 + q * (1.0F / 5 + q * (1.0F / 7))));
}

/// Logarithm of the modified Bessel function I0 for x >= 0, within 0.0003 of its value and a
/// millionth of x.
inline __attribute__((always_inline)) float logBesselI0(float x)
{
    // I0(x) = exp(x) / sqrt(h(x)), and h is close to a straight line: a quotient of two polynomials
    // fits it everywhere, exactly for x = 0 and for large x. Coefficients fitted to the power
    // series.
    const float y = std::min(x, 1e9F); // beyond, x is all that counts, and powers of it overflow
    const float above =
        1.0F + y * (2.3862853F + y * (2.7215620F + y * (1.0936038F + y * 1.2474274F)));
    const float below = 1.0F + y * (0.40508493F + y * (0.22969026F + y * 0.19853422F));
    return x - 0.5F * quickLog(above / below);
}

} // namespace demodulator
