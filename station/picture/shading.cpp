// SPDX-License-Identifier: MIT
#include "station/picture/shading.h"

#include "station/picture/png.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace inspect {

namespace {

constexpr double DEEPEST_dB = 45.0; // darkest under brightest
constexpr double FLATTEST_dB = 15.0;
constexpr double BRIGHTEST_SHARE = 0.998;

// Dark blue over grey to yellow: brightness grows all the way, also for the colour-blind.
constexpr Colour SHADES[] = {
    {0, 24, 64}, {52, 70, 112}, {122, 122, 122}, {196, 178, 98}, {255, 236, 90}};

Palette shades()
{
    Palette palette = {};
    constexpr std::size_t last = std::size(SHADES) - 1;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const double place = static_cast<double>(i * last) / (COLOURS - 1);
        const std::size_t below = std::min(last - 1, static_cast<std::size_t>(place));
        const double share = place - static_cast<double>(below);
        const auto mix = [share](std::uint8_t a, std::uint8_t b) {
            return static_cast<std::uint8_t>(std::lround(a + share * (b - a)));
        };
        const Colour& a = SHADES[below];
        const Colour& b = SHADES[below + 1];
        palette[i] = {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
    }
    return palette;
}

} // namespace

Shading Shading::of(std::vector<float> powers_dB)
{
    Shading shading;
    if (powers_dB.empty())
        return shading;
    const auto at = [&powers_dB](double share) {
        const auto place =
            powers_dB.begin() +
            static_cast<std::ptrdiff_t>(share * static_cast<double>(powers_dB.size() - 1));
        std::nth_element(powers_dB.begin(), place, powers_dB.end());
        return static_cast<double>(*place);
    };
    shading.darkest_dB = at(0.5);
    shading.brightest_dB = std::max(at(BRIGHTEST_SHARE), shading.darkest_dB + FLATTEST_dB);
    shading.darkest_dB = std::max(shading.darkest_dB, shading.brightest_dB - DEEPEST_dB);
    return shading;
}

QByteArray Shading::png(const std::vector<float>& powers_dB, int columns) const
{
    std::vector<std::uint8_t> shade;
    shade.reserve(powers_dB.size());
    for (const float power_dB : powers_dB) {
        const double share =
            (static_cast<double>(power_dB) - darkest_dB) / (brightest_dB - darkest_dB);
        shade.push_back(
            static_cast<std::uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * (COLOURS - 1))));
    }
    return inspect::png(shade, columns, shades());
}

} // namespace inspect
