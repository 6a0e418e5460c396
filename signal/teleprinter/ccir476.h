// SPDX-License-Identifier: MIT
// The code of seven elements, four of them marks, that ships' teleprinters send by radio
// (CCIR Recommendation 476): ITA2 in another dress, and three signals of its own.
#pragma once

#include <array>

namespace teleprinter {

/// Beside the combinations of ITA2, 0 to 31.
constexpr unsigned PHASING_1 = 32;
constexpr unsigned PHASING_2 = 33;
constexpr unsigned SIGNAL_BETA = 34;
constexpr unsigned CCIR476_WORDS = 35;

/// The seven elements of each combination; the element sent first is bit 0, mark is 1.
const std::array<unsigned, CCIR476_WORDS>& ccir476Elements();

} // namespace teleprinter
