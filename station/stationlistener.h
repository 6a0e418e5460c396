// SPDX-License-Identifier: MIT
// What a Morse station has to report while it receives.
#pragma once

#include "station/transmission.h"

#include <QString>

namespace morsehost {

/// Hears everything in the order in which it happens, on the station's thread.
class StationListener
{
public:
    virtual ~StationListener();

    /// A time stamp, before what it belongs to. Microseconds since 1970-01-01 00:00 UTC.
    virtual void time(unsigned long long time_us);
    /// A code that the demodulator wrote, before its text.
    virtual void symbol(int code);
    /// What the library wrote into the text value: a character, a blank, a line feed.
    virtual void text(const QString& text);
    /// A character that the alphabet does not have, as dots and dashes.
    virtual void unknownCode(const QString& elements);
    /// A transmission is over. Its files and its document are written before.
    virtual void transmission(const Transmission& transmission);
    /// In one line: something cannot be saved any more, or can be again.
    virtual void saving(const QString& message);
};

} // namespace morsehost
