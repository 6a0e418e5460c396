// SPDX-License-Identifier: MIT
// The part of `morsehost decode` that reads teleprinters.
#pragma once

#include "app/options/arguments.h"
#include "app/options/receptionoptions.h"
#include "app/options/soundoptions.h"
#include "station/audio/sound.h"

#include <QStringList>

#include <functional>
#include <vector>

namespace morsehost {

/// --decoder, --map, --maps, --decoders, --baud, --shift, --reverse, --unshift-on-space
std::vector<OptionRow> teleprinterOptionRows();

/// What --tone takes of them: midway between the tones.
ToneRange teleprinterTones();

/// The decoders that there is a demodulator for, beside Morse.
QStringList teleprinterDecoders();

/// What decodes Morse, for sounds that turn out to be that.
using MorseDecoding = std::function<int(std::vector<SoundRequest>)>;

/// Whether a decoder other than Morse was asked for.
bool isTeleprinterAsked(const Arguments& arguments);

/// Where Morse is decoded, none of the options of teleprinters but --decoder has a use.
void refuseTeleprinterOptions(Arguments& arguments);

/// Returns the exit status. Errors of the options are left in `arguments`.
int decodeTeleprinters(Arguments& arguments, const ReceptionOptions& options,
                       const std::vector<SoundRequest>& sounds, const MorseDecoding& decodeMorse);

} // namespace morsehost
