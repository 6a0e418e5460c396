// SPDX-License-Identifier: MIT
// A decoder with a map of one character, for stations that put an alphabet on what it gives.
#pragma once

#include "host/standin/configuration.h"
#include "support/decodermodules.h"
#include "support/files.h"

/// Makes the decoder "Baudot" the only one there is, and writes its map "Other", in which A is an
/// alef. Both are files of the folder.
inline void writeBaudotWithMap(const QString& folder)
{
    setConfigurationValue(QString(), "DecoderModulesFile",
                          writeFile(folder + "/modules.txt", moduleLine("Baudot", 'I')));
    writeFile(folder + "/Other.ita2.map", "0x41\t0x05D0\n\n");
}
