// SPDX-License-Identifier: MIT
// Sounds that are not Morse, made by arithmetic: what a receiver hears beside it or instead of it.
// Loud parts have an amplitude of 1. All that is said in them is drawn from the seed.
#pragma once

#include <string>
#include <vector>

namespace testsupport {

/// Frequency shift keying, 45.45 baud, 170 Hz, both tones around `centre_Hz`.
std::vector<float> teleprinter(double duration_s, double centre_Hz, double rate_Hz,
                               const std::string& seed);

/// Teleprinters of 45 to 100 baud and 85 to 850 Hz, another every 20 s, and SITOR.
std::vector<float> otherTeleprinters(double duration_s, double rate_Hz, const std::string& seed);

/// SITOR in mode A: frequency shift keying of 100 baud and 170 Hz, 210 ms of every 450 ms.
std::vector<float> teleprinterBursts(double duration_s, double rate_Hz, const std::string& seed);

/// Vowels of three formants over a gliding pitch, hisses, syllables and pauses.
std::vector<float> speech(double duration_s, double rate_Hz, const std::string& seed);

/// Pairs of dialling tones, 100 ms on, 60 to 160 ms off.
std::vector<float> dialling(double duration_s, double rate_Hz, const std::string& seed);

/// 1000 Hz for 100 ms at every second, a longer one at the minute.
std::vector<float> timePips(double duration_s, double rate_Hz, const std::string& seed);

/// A carrier that time codes key once a second: it falls, or rises, by 10 or 17 dB for 0.2, 0.5 or
/// 0.8 s; another such station every minute.
std::vector<float> timeCode(double duration_s, double rate_Hz, const std::string& seed);

/// Ringing and engaged tones of telephones of several countries, another every 20 s.
std::vector<float> ringing(double duration_s, double rate_Hz, const std::string& seed);

/// A tone that takes another of 16 pitches every 32 to 250 ms.
std::vector<float> hoppingTones(double duration_s, double rate_Hz, const std::string& seed);

/// Notes with harmonics that decay, two voices, at a beat.
std::vector<float> music(double duration_s, double rate_Hz, const std::string& seed);

/// Phase reversals at 31.25 baud.
std::vector<float> phaseKeying(double duration_s, double rate_Hz, const std::string& seed);

/// Pulses of a radar over the horizon, 10 to 50 a second and 2 to 15 ms long, plain or phase-coded;
/// rate, length and pitch change every 20 s. `isGated`: they come in bursts of 0.3 to 5 s.
std::vector<float> radar(double duration_s, bool isGated, double rate_Hz, const std::string& seed);

/// Carriers that sweep through a pass band of 300 to 2700 Hz, up or down, at a steady speed drawn
/// between the two for each, 0.2 to 3 s apart.
std::vector<float> sweeps(double duration_s, double slowest_Hz_per_s, double fastest_Hz_per_s,
                          double rate_Hz, const std::string& seed);

/// A carrier in the same pass band while the receiver's tuning is turned by hand: to somewhere
/// within 4 kHz in 0.3 to 4 s, where it rests for up to 2 s.
std::vector<float> tunedAcross(double duration_s, double rate_Hz, const std::string& seed);

/// White noise that falls every 15 s, `loud_s` after it rose, by `drop_dB`; infinite: to nothing.
std::vector<float> fallingNoise(double duration_s, double loud_s, double drop_dB, double rate_Hz,
                                const std::string& seed);

} // namespace testsupport
