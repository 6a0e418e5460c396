// SPDX-License-Identifier: MIT
// Numbers that several parts of the signal chain need.
#pragma once

namespace demodulator {

constexpr double PI = 3.14159265358979323846;
constexpr double TWO_PI = 2.0 * PI;

} // namespace demodulator
