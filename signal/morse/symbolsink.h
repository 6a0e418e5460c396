// SPDX-License-Identifier: MIT
// What receives the symbol codes that a demodulator hears.
#pragma once

#include <cstdint>

namespace demodulator {

/// What is known of a transmission when it is over: means over its marks.
struct SignalReport
{
    double tone_Hz = 0.0;
    double speed_wpm = 0.0;
    double snr_dB = 0.0; ///< key-down power over noise power in 500 Hz; -30 to 99
};

/// Receives what is heard, in order of time. Times are microseconds of signal since the first
/// sample; the computer's clock plays no part. Called in the thread that pushes the sound.
///
/// Symbol codes as the host contract numbers them: 0 dot, 1 dash, 3 end of character, 4 end of
/// word, 64 dot too short, 65 dash too long, 66 pause too short.
/// - A timing mark follows the dot or dash it complains of (64: a dot under half a unit, 65: a dash
///   over 5 units), or stands before the mark that came too soon (66: a pause under 0.4 units). The
///   dot or dash is written all the same, so the text stays readable. A mark of over 8 units is no
///   keying any more: it is a 65 without a dash.
/// - The end of a word is code 3 and then code 4, so that the last character of a word is decoded
///   as every other and the blank comes by itself.
/// - 5, end of line, is written by the host at the next transmissionStarted(), not here.
///
/// Delay, heard live: a code is emitted at most 1 s after the mark that it reports on (a character
/// gap: after the end of its character, a word gap: after the gap is one). Only a transmission's
/// beginning can take longer: until it is surely keying, and its speed is sure or 2 s and 8 marks,
/// or 4.5 s, have come. What is heard again (Settings::isLive) comes 16 to 21 s late, the
/// first seconds of a transmission 28 s, and where it is not sure to be Morse at most 90 s.
class SymbolSink
{
public:
    virtual ~SymbolSink();

    /// Begin of the first mark.
    virtual void transmissionStarted(std::int64_t time_us) = 0;

    /// End of the mark for 0, 1, 64 and 65; end of the pause for 66; for the gaps 3 and 4 the end
    /// of the last mark before them.
    virtual void symbol(int code, std::int64_t time_us) = 0;

    /// End of its last mark; comes after the final gap codes, once there was silence for 3 s or 45
    /// units, whichever is longer, or the input has ended, or another signal has taken over.
    virtual void transmissionStopped(std::int64_t time_us, const SignalReport& report) = 0;
};

} // namespace demodulator
