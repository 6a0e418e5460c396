// SPDX-License-Identifier: MIT
// The bands by which the receiver of many signals is judged: who sends where, when and what, and
// the sound or I/Q of all of them together. Everything is made from a band's name and a seed.
#pragma once

#include "support/keyer.h"
#include "support/teleprinterkeyer.h"

#include <complex>
#include <optional>
#include <string>
#include <vector>

namespace bands {

/// A machine that keys two tones in place of a hand that keys one.
struct Teleprinter
{
    testsupport::Machine machine;
    double shift_Hz;
};

/// One station sends, once.
struct Over
{
    double begin_s;
    double end_s;
    double tone_Hz;  ///< of a teleprinter midway between its tones
    double level_dB; ///< key-down power over noise power in 500 Hz
    std::string text;
    testsupport::Hand hand;
    std::optional<Teleprinter> teleprinter = {};
};

/// A frequency and all that is sent on it, in order of time.
struct Frequency
{
    double tone_Hz;
    std::vector<Over> overs;

    /// The texts of all its overs, a blank between two.
    std::string sent() const;
};

struct Band
{
    std::string name; ///< band and seed, joined by a dot
    double rate_Hz;
    bool isComplex; ///< I/Q: frequencies go from minus to plus half the rate
    double duration_s;
    std::vector<Frequency> frequencies;
};

/// A row of the table.
struct Kind
{
    const char* name;
    const char* title;
    std::size_t frequencies;
    double lowest_Hz, highest_Hz;
    double spacing_Hz; ///< two frequencies are at least so far apart
    double rate_Hz;
    bool isComplex;
    double duration_s;
    double weakest_dB, strongest_dB;
    double slowest_wpm, fastest_wpm;
    enum class Traffic {
        Steady, ///< one station a frequency, all the time
        Pauses, ///< one station a frequency, overs of some ten words and pauses of seconds
        Mixed, ///< as steady, every third is a teleprinter: Baudot of two kinds and Sitor-B in turn
        Contest ///< short overs: one station calls, others answer, each at its own level, speed and
                ///< up to 40 Hz beside
    } traffic;
};

const std::vector<Kind>& kinds();
/// Null where there is none of that name.
const Kind* kindOf(const std::string& name);

Band plan(const Kind& kind, const std::string& seed);

/// The samples of a band, their imaginary part 0 for sound. Full scale is 1.
std::vector<std::complex<float>> samplesOf(const Band& band);

/// 16 bits, one channel or two (I and Q).
void writeWave(const std::string& path, const Band& band,
               const std::vector<std::complex<float>>& samples);

} // namespace bands
