// SPDX-License-Identifier: MIT
// The time grid that all stages share, and the length of a unit at a speed.
#pragma once

namespace demodulator {

/// Length of a step. Steps of 4 ms resolve the dots of 60 words a minute (20 ms) five times.
constexpr double STEP_s = 0.004;

/// Length of the Hann window that makes a step: three, one a step, add up to a flat sum.
constexpr int WINDOW_STEPS = 3;

/// Spectra in which tones are looked for: their length and the time between two. A spectrum holds
/// about one dot at 20 words a minute, so that its power swings with the keying.
constexpr double FRAME_s = 0.064;
constexpr double HOP_s = 0.032;

/// "PARIS " is 50 units long; so many of them a minute are the speed.
constexpr double PARIS_s = 1.2;

constexpr double unitOf_s(double speed_wpm)
{
    return PARIS_s / speed_wpm;
}

constexpr double speedOf_wpm(double unit_s)
{
    return PARIS_s / unit_s;
}

} // namespace demodulator
