// SPDX-License-Identifier: MIT
// What a teleprinter signal is known by: its decoder, speed, tones and polarity.
#pragma once

#include "signal/limits.h"
#include "signal/teleprinter/parameters.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace teleprinter {

/// What the elements mean.
enum class Code {
    Ita2,    ///< start-stop, five data elements
    Ascii,   ///< start-stop, seven or eight data elements, with or without parity
    Ccir476, ///< synchronous, seven elements, each character twice
};

/// One way in which a line may run.
struct LineKind
{
    Code code;
    double baud;
    int dataBits; ///< between start and stop, parity included
};

/// The last data element of ASCII: such that so many of them all are marks.
enum class Parity { None, Even, Odd };

/// Whether the marks of a word are as many as the parity wants.
bool hasParity(unsigned word, Parity parity);

/// All that are looked for.
const std::vector<LineKind>& lineKinds();

/// A signal that was found.
struct Line
{
    LineKind kind = {Code::Ita2, 45.45, 5};
    double mark_Hz = 0.0;
    double space_Hz = 0.0;
    double baud = 0.0; ///< as the sender's clock has it
    /// Of one that is followed, over all its characters so far: power of the signal over that of
    /// the noise in 500 Hz.
    std::optional<double> snr_dB = {};

    double shift_Hz() const { return mark_Hz > space_Hz ? mark_Hz - space_Hz : space_Hz - mark_Hz; }
    double centre_Hz() const { return 0.5 * (mark_Hz + space_Hz); }
    /// Mark is the lower tone.
    bool isReversed() const { return mark_Hz < space_Hz; }
};

/// The tones are a little off at most, all else is equal.
bool isSameLine(const Line& a, const Line& b);

/// Limits of what can be known and found: the lines in use, from 45.45 to 300 Bd and from 85 to
/// 850 Hz, with room for those that are off. Tones are those that a receiver lets through.
constexpr double LOWEST_BAUD = 40.0;
constexpr double HIGHEST_BAUD = 300.0;
constexpr double LEAST_SHIFT_Hz = 70.0;
constexpr double MOST_SHIFT_Hz = 1100.0;
constexpr double LOWEST_TONE_Hz = 200.0;
constexpr double HIGHEST_TONE_Hz = 3600.0;
/// Midway between the tones, as it can be set.
constexpr double LOWEST_SET_TONE_Hz = LOWEST_TONE_Hz;
constexpr double HIGHEST_SET_TONE_Hz = demodulator::HIGHEST_SET_TONE_Hz;

/// What is known of a signal beforehand; the rest is found.
struct Known
{
    std::vector<Code> codes; ///< those to look for; all without any
    std::optional<double> baud;
    std::optional<double> mostBaud; ///< faster ones are not looked for
    std::optional<double> shift_Hz;
    std::optional<double> centre_Hz; ///< midway between the tones, within 50 Hz
    std::optional<bool> reversed;
    std::optional<Parity> parity; ///< of ASCII
};

/// Whether a speed is the one that was known, as far as a clock may be off; any is where none was.
bool isKnownSpeed(double baud, const Known& known, const LineParameters& parameters = {});

/// The rows of lineKinds() that fit what was known; a speed of no row brings rows of its own. Usual
/// speeds near one that was known are tried too: one of them may be meant, or be what is there.
std::vector<LineKind> kindsToTry(const Known& known, const LineParameters& parameters = {});

} // namespace teleprinter
