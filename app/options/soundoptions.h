// SPDX-License-Identifier: MIT
// Options that the commands for sound share: which sound, and what is known of the signal in it.
#pragma once

#include "app/options/arguments.h"
#include "signal/morse/demodulator.h"
#include "station/audio/samplesource.h"

#include <memory>

namespace morsehost {

struct SoundOptions
{
    QString name; ///< of the input, for messages
    bool isPipe = false;
    std::optional<int> channel;
    std::optional<int> rate_Hz;
    demodulator::Settings demodulator;
};

/// --channel, --rate, --tone, --wpm
std::vector<OptionRow> soundOptionRows();
/// The first operand names the sound, "-" is standard input. Errors are left in `arguments`.
SoundOptions readSoundOptions(Arguments& arguments);
/// Tells the demodulator's settings the rate. Null, and said on standard error, when the sound
/// cannot be used.
std::unique_ptr<SampleSource> openSound(SoundOptions& options);

} // namespace morsehost
