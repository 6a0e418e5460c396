// SPDX-License-Identifier: MIT
// Which decoder a recording is for, as it sounds.
#pragma once

#include "station/audio/sound.h"

#include <QString>

#include <functional>

namespace morsehost {

/// In place of a decoder's name: what is found in the recording.
constexpr char DECODER_AS_FOUND[] = "auto";

struct FoundDecoder
{
    QString decoder; ///< a teleprinter's, or Morse where there is none
    QString remark;  ///< what was found, in one line
    QString error;   ///< why it cannot be heard; empty when it can
};

/// Hears it up to the first teleprinter, or to its end, unless `isStopped` before.
FoundDecoder findDecoder(SoundRequest request, const std::function<bool()>& isStopped);

} // namespace morsehost
