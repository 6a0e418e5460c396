// SPDX-License-Identifier: MIT
// Options that the commands for bands share: how the input is written, and which part of it counts.
#pragma once

#include "app/options/arguments.h"
#include "station/audio/bandsource.h"

#include <vector>

namespace morsehost {

struct BandChoice
{
    BandRequest request;
    double center_Hz = 0.0;  ///< what 0 Hz of the input stands for
    double lowest_Hz = -2e6; ///< of the tones that count, in the sound or from the centre
    double highest_Hz = 2e6;
};

/// --iq, --format, --rate, -r, -i, -f, --center, --only
std::vector<OptionRow> bandOptionRows();
/// Of the first operand; "-" is standard input, which is read as `format` unless an option names
/// another. Errors are left in `arguments`.
BandChoice readBandOptions(Arguments& arguments, RawFormat format = RawFormat::S16);

/// Of the choice's frequencies, those that the input has.
struct BandLimits
{
    double lowest_Hz;
    double highest_Hz;
};
BandLimits limitsOf(const BandChoice& choice, const demodulator::BandFormat& format);
/// Why none is left; empty when some are.
QString limitsFault(const BandChoice& choice, const demodulator::BandFormat& format);

/// The value that a word stands for.
template <typename Value>
struct Word
{
    const char* word;
    Value value;
};

/// Leaves `value` alone without the option, and when it is none of the words, which is an error.
template <typename Words, typename Value>
void readWord(Arguments& arguments, const char* option, const Words& words, Value& value)
{
    if (!arguments.isSet(option))
        return;
    QStringList known;
    for (const auto& word : words) {
        if (arguments.text(option) == QLatin1String(word.word)) {
            value = word.value;
            return;
        }
        known += QLatin1String(word.word);
    }
    arguments.fail(QStringLiteral("--%1 takes one of %2")
                       .arg(QLatin1String(option), known.join(QStringLiteral(", "))));
}

} // namespace morsehost
