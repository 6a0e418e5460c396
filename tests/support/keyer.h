// SPDX-License-Identifier: MIT
// Morse signals made by arithmetic, the same on every machine: text to keying, keying to sound,
// and what a radio path does to it. Level figures are key-down tone power over noise power in
// 500 Hz.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace testsupport {

/// How a hand or machine keys.
struct Hand
{
    double speed_wpm = 20.0;
    double endSpeed_wpm = 0.0;   ///< speed reached at the end of the text; 0: constant
    double speedSwing_wpm = 0.0; ///< slow swing to both sides, period 40 s, its phase drawn
    double jitter_units = 0.0;   ///< deviation of every mark and space
    double dash_units = 3.0;     ///< length of a dash
    double heavier_units = 0.0;  ///< added to every mark, taken from every space
    double characterGap_units = 3.0;
    double wordGap_units = 7.0;
    double gapSpread = 0.0;   ///< deviation of the logarithm of gaps between characters and words
    double speedSpread = 0.0; ///< deviation of the logarithm of each character's speed
    double dashJitter_units = 0; ///< deviation of dashes beside that of all marks
    double otherSpeed_wpm = 0.0; ///< taken every few words, and given up again; 0: none
    double leastJump_wpm = 0.0;  ///< every few words another speed is drawn between these; 0: none
    double mostJump_wpm = 0.0;
    double tuning_s = 0.0;      ///< the key is held down so long before the text; 0: not at all
    double afterTuning_s = 0.0; ///< and up so long after that
};

/// Another keyed signal beside ours: text that says nothing, drawn.
struct Neighbour
{
    double offset_Hz; ///< above our tone
    double level_dB;  ///< over ours
    double speed_wpm;
};

/// What the transmitter and the path do to the tone, and what is received beside it.
struct Path
{
    double tone_Hz = 700.0;
    std::optional<double> snr_dB; ///< none: no noise at all
    double rise_ms = 5.0;         ///< raised cosine edges of the keying
    double wander_Hz = 0.0;       ///< tone swings by this to both sides, from a phase drawn
    double wanderPeriod_s = 60.0;
    double chirp_Hz = 0.0;          ///< the tone of every mark starts so much off
    double chirpSettling_ms = 10.0; ///< and comes to its place with this time constant
    double shift_Hz = 0.0;          ///< the tone goes so much lower in the spaces, instead of off
    bool samePhase = false;         ///< every mark begins at the same phase of the tone
    double echo_ms = 0.0;           ///< a second path, so late; 0: none
    double echo_dB = 0.0;           ///< and so strong beside the first
    double fading_dB = 0.0; ///< depth of a regular fade below the nominal level, its phase drawn
    double fading_Hz = 0.0;
    double scatter_Hz =
        0.0; ///< many paths (Rayleigh fading), spread by this; mean power as nominal
    std::vector<Neighbour> neighbours;
    double clicks_per_s = 0.0; ///< 2 ms bursts, up to 10 dB over the tone
    double static_per_s = 0.0; ///< decaying crashes of noise, 10 to 80 ms, up to 20 dB over
    double hum_dB =
        0.0; ///< mains hum: 100 Hz by this over the tone, its harmonics up to 4 kHz
             ///< falling as 1 / number, those of 50 Hz between them 10 dB lower; 0: none
    double secondPath_ms = 0.0;           ///< with scatter_Hz: a second path, as strong, so late
    std::optional<double> teleprinter_dB; ///< a teleprinter 400 Hz up, over ours
    std::optional<double> speech_dB;      ///< speech in the same band, its loud parts over ours
    double agc_s =
        0.0; ///< gain falls at once by what is loud, and recovers with this time; 0: none
    double holes_per_s = 0.0; ///< so often 20 ms are lost
    double filter_Hz = 0.0;   ///< receiver filter around the tone, for signal and noise
    double before_s = 1.0;    ///< time before the first mark
    double after_s = 2.0;     ///< and after the last
};

/// One mark or the space after it.
struct Piece
{
    bool mark;
    double duration_s;
};

/// The keying of a text, with nothing before its first mark and after its last.
std::vector<Piece> keying(const std::string& text, const Hand& hand, const std::string& seed);

/// The sound of some keying, level set so that the loudest sample is 0.9.
std::vector<float> sound(const std::vector<Piece>& pieces, const Path& path, double rate_Hz,
                         const std::string& seed);

/// Both in one.
std::vector<float> sound(const std::string& text, const Hand& hand, const Path& path,
                         double rate_Hz, const std::string& seed);

/// Adds white noise to a recording of a keyed tone whose key-down amplitude is `amplitude`.
void addNoise(std::vector<float>& samples, double rate_Hz, double amplitude, double snr_dB,
              const std::string& seed);

/// White noise alone.
std::vector<float> noise(double duration_s, double deviation, double rate_Hz,
                         const std::string& seed);

} // namespace testsupport
