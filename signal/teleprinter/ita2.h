// SPDX-License-Identifier: MIT
// Combinations of five elements to characters, as ITU-T S.1 numbers them: the international
// alphabet no. 2. What is free for national use (figures F, G and H) is shown as machines of the
// United States show it.
#pragma once

#include <cstdint>

namespace teleprinter {

/// Element sent first is bit 0; mark is 1.
constexpr unsigned ITA2_FIGURES = 0x1B;
constexpr unsigned ITA2_LETTERS = 0x1F;
constexpr unsigned ITA2_BLANK = 0x04;

/// 0 for the shifts and for the combination without elements.
std::uint8_t ita2Character(unsigned combination, bool figures);

} // namespace teleprinter
