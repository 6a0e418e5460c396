// SPDX-License-Identifier: MIT
// Options that the commands for sound share: which sound, and what is known of the signal in it.
#pragma once

#include "app/options/arguments.h"
#include "signal/limits.h"
#include "station/audio/sound.h"

#include <string>
#include <vector>

namespace morsehost {

/// What --tone takes.
struct ToneRange
{
    double lowest_Hz = demodulator::LOWEST_SET_TONE_Hz;
    double highest_Hz = demodulator::HIGHEST_SET_TONE_Hz;
};

/// As a help shows it, in whole numbers: "40 to 300".
std::string range(double lowest, double highest);

/// --channel, --rate, --tone, --wpm. `moreOfTone` is added to the help of --tone.
std::vector<OptionRow> soundOptionRows(const std::string& moreOfTone = {});
/// One for each operand; "-" is standard input. Errors are left in `arguments`.
std::vector<SoundRequest> readSoundOptions(Arguments& arguments, const ToneRange& tones = {});

} // namespace morsehost
