// SPDX-License-Identifier: MIT
#include "station/publisher.h"

namespace morsehost {

bool ReceiverFacts::operator==(const ReceiverFacts& other) const
{
    return name == other.name && decoder == other.decoder && state == other.state &&
           problem == other.problem && bytesLost == other.bytesLost &&
           frequency_Hz == other.frequency_Hz;
}

Publisher::~Publisher() = default;

} // namespace morsehost
