// SPDX-License-Identifier: MIT
// The part of `morsehost inspect` that draws a teleprinter.
#pragma once

#include "app/commands/inspectstretch.h"
#include "app/commands/picturefile.h"
#include "app/options/teleprinteroptions.h"

namespace morsehost {

/// Of a sound that has been opened; the request's decoder is a teleprinter's. Returns the exit
/// status; what went wrong has been said on standard error.
int inspectTeleprinter(SampleSource& source, const SoundRequest& sound,
                       const StretchChoice& stretch, const TeleprinterChoice& choice,
                       PictureFile& file);

} // namespace morsehost
