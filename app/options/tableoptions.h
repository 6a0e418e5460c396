// SPDX-License-Identifier: MIT
// Options that the commands for tables share.
#pragma once

#include "app/options/arguments.h"

namespace morsehost {

/// The folder that the option names, else the shipped one.
QString directoryOption(const Arguments& arguments, const char* option, const char* shipped);

/// --maps DIR
OptionRow mapsOption();
/// --decoders FILE
OptionRow decoderModulesOption();
/// What the option names, else the shipped one.
QString decoderModulesFile(const Arguments& arguments);
/// Makes the file known to the library, which asks the host's configuration for it, once. False,
/// and said on standard error, when it cannot be read.
bool configureDecoderModules(const Arguments& arguments);

} // namespace morsehost
