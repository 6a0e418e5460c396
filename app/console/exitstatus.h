// SPDX-License-Identifier: MIT
// How the program ends.
#pragma once

namespace morsehost {

constexpr int EXIT_DONE = 0;
constexpr int EXIT_BAD_INPUT = 1; ///< said in one line on standard error
constexpr int EXIT_BAD_USAGE = 2;

} // namespace morsehost
