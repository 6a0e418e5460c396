// SPDX-License-Identifier: MIT
// Options of the commands that read teleprinters: which decoder, and what is known of the signal.
#pragma once

#include "app/options/arguments.h"
#include "app/options/soundoptions.h"
#include "station/audio/sound.h"

#include <QString>

#include <initializer_list>
#include <vector>

namespace morsehost {

struct TeleprinterChoice
{
    QString decoder; ///< Morse, a teleprinter's, or DECODER_AS_FOUND
    QString mapsDirectory;
    QString map;

    bool hasMap() const; ///< one was asked for
};

/// Whether a blank brings back the letters: --unshift-on-space
OptionRow unshiftOption();
teleprinter::Unshift readUnshift(Arguments& arguments);

/// --decoder, --map, --maps, --decoders, --baud, --shift, --reverse, --parity, --unshift-on-space
std::vector<OptionRow> teleprinterOptionRows();

/// What --tone takes of a teleprinter, and what it takes with these arguments.
ToneRange teleprinterTones();
ToneRange tonesToSet(const Arguments& arguments);

/// Puts the decoder and what is known of its signal into the sounds, too. Errors are left in
/// `arguments`; where Morse is asked for, or not, options that are for the other are errors too.
/// `forMorse`: which of the command's are. Where the decoder is yet to be found, both are taken.
TeleprinterChoice readTeleprinterOptions(Arguments& arguments,
                                         std::initializer_list<const char*> forMorse,
                                         std::vector<SoundRequest>& sounds);

/// False, and said on standard error, when there is no demodulator for the decoder, or no table of
/// decoders, or no folder of maps. Always true of Morse.
bool canDecode(const Arguments& arguments, const TeleprinterChoice& choice);

} // namespace morsehost
