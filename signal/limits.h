// SPDX-License-Identifier: MIT
// What the demodulators accept and look for. Options, help texts and documents take the limits
// from here.
#pragma once

namespace demodulator {

/// Sample rates that are read: a step of the lowest has 16 samples, and sound is seldom faster than
/// the highest.
constexpr double LOWEST_RATE_Hz = 4000.0;
constexpr double HIGHEST_RATE_Hz = 768000.0;

/// Sample rates of a band: from that of sound to 2.4 MHz, as wide as cheap receivers give it
/// without losses.
constexpr double LOWEST_BAND_RATE_Hz = 4000.0;
constexpr double HIGHEST_BAND_RATE_Hz = 2.4e6;

/// Signals of a band that may be followed at once.
constexpr int MOST_BAND_SIGNALS = 5000;

/// Tones that are found when none is set.
constexpr double LOWEST_TONE_Hz = 150.0;
constexpr double HIGHEST_TONE_Hz = 3500.0;

/// Share of the sample rate up to which a tone is found.
constexpr double HIGHEST_TONE_SHARE = 0.47;

/// Tones that can be set, and how far from it the signal may be.
constexpr double LOWEST_SET_TONE_Hz = 50.0;
constexpr double HIGHEST_SET_TONE_Hz = HIGHEST_TONE_Hz;
constexpr double SET_TONE_TOLERANCE_Hz = 50.0;

/// Speeds that are found when none is set.
constexpr double LOWEST_SPEED_wpm = 5.0;
constexpr double HIGHEST_SPEED_wpm = 60.0;

/// Speeds that can be set, and by which factor the signal may be faster or slower.
constexpr double LOWEST_SET_SPEED_wpm = 4.0;
constexpr double HIGHEST_SET_SPEED_wpm = 80.0;
constexpr double SET_SPEED_TOLERANCE = 1.2;

} // namespace demodulator
