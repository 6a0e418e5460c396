// SPDX-License-Identifier: MIT
// Teleprinter signals made by arithmetic, the same on every machine: text to elements, elements to
// sound, and what a radio path does to it. Level figures are tone power over noise power in 500 Hz.
#pragma once

#include "support/keyer.h"

#include <optional>
#include <string>
#include <vector>

namespace testsupport {

enum class TeleprinterCode {
    Ita2,
    Ascii7,     ///< seven bits, no parity
    Ascii7Even, ///< seven bits and even parity
    Ascii8,
    Ascii8Even, ///< eight bits and parity
    Ascii8Odd,
    SitorB, ///< CCIR 476, every character twice, after and before phasing signals
};

/// How the sending machine, or the hand at its keyboard, works.
struct Machine
{
    TeleprinterCode code = TeleprinterCode::Ita2;
    double baud = 45.45;
    double stop_bits = 1.5;
    double typedPause_bits = 0.0;  ///< mean pause before each key is struck, drawn exponentially
    double fasterClock = 0.0;      ///< share by which the clock is fast
    bool figuresAfterBlank = true; ///< a figure shift is sent again after a blank
    double idle_s = 0.5;           ///< mark before the first and after the last character
};

/// The elements of a text, marks and spaces, without equal neighbours joined. What has no code in
/// the machine's alphabet is left out.
std::vector<Piece> teleprinterElements(const std::string& text, const Machine& machine,
                                       const std::string& seed);

/// The text as the machine sends it: upper case where there is no other, without what has no code.
std::string teleprinterText(const std::string& text, TeleprinterCode code);

/// What the transmitter and the path do to the two tones, and what is received beside them.
struct TonePath
{
    double centre_Hz = 1500.0;
    double shift_Hz = 170.0;
    bool reversed = false;        ///< mark is the lower tone
    std::optional<double> snr_dB; ///< none: no noise at all
    double drift_Hz = 0.0;        ///< over the whole recording
    double fading_dB = 0.0;       ///< depth of a regular fade of both tones
    double selective_dB = 0.0;    ///< depth to which the tones fade in turn
    double fading_Hz = 0.2;       ///< of both of these
    double scatter_Hz = 0.0;      ///< Rayleigh fading of both tones as one, spread by this
    double echo_ms = 0.0;         ///< with scatter: a second path as strong, delayed by this
    double clicks_per_s = 0.0;
    std::optional<double> carrier_dB; ///< a keyed carrier beside it, level over ours
    double carrier_Hz = 350.0;        ///< above the centre
    double before_s = 1.0;
    double after_s = 2.0;
};

/// Continuous in phase; level set so that the loudest sample is 0.9.
std::vector<float> teleprinterSound(const std::vector<Piece>& elements, const TonePath& path,
                                    double rate_Hz, const std::string& seed);

} // namespace testsupport
