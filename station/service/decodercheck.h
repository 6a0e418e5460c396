// SPDX-License-Identifier: MIT
// What a station's file asks of decoders, shown to the decoders themselves before it is used.
#pragma once

#include "station/service/stationfile.h"

#include <QString>

#include <vector>

namespace morsehost {

/// What decoders do not take, and recordings that are none: at the lines of their keys. Runs the
/// decoder of each receiver without any sound and waits for it; `program` is the path of this
/// program.
std::vector<ConfigurationFault> decoderFaults(const StationConfiguration& configuration,
                                              const QString& program);

} // namespace morsehost
