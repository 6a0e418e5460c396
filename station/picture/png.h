// SPDX-License-Identifier: MIT
// Pictures of few colours as PNG files, with nothing but Qt Core.
#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>
#include <vector>

namespace inspect {

constexpr int COLOURS = 16;

struct Colour
{
    std::uint8_t red, green, blue;
};

using Palette = std::array<Colour, COLOURS>;

/// `pixels` holds `width` colour numbers a line, the top line first; its size must be a multiple of
/// `width`, and neither may be 0.
QByteArray png(const std::vector<std::uint8_t>& pixels, int width, const Palette& palette);

} // namespace inspect
