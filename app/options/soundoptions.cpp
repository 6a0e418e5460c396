// SPDX-License-Identifier: MIT
#include "app/options/soundoptions.h"

namespace morsehost {

namespace {

// Of what libsndfile reads.
constexpr int MAX_CHANNELS = 1024;

std::string rounded(double number)
{
    return QString::number(number, 'f', 0).toStdString();
}

} // namespace

std::string range(double lowest, double highest)
{
    return rounded(lowest) + " to " + rounded(highest);
}

std::vector<OptionRow> soundOptionRows(const std::string& moreOfTone)
{
    using namespace demodulator;
    return {
        {"channel", "N", "take channel N of the file, counted from 1 (default: the mean of all)"},
        {"rate", "HZ",
         "sample rate of raw samples on standard input, " + range(LOWEST_RATE_Hz, HIGHEST_RATE_Hz) +
             " (default: 8000)"},
        {"tone", "HZ",
         "look for the tone within " + rounded(SET_TONE_TOLERANCE_Hz) + " Hz of this, " +
             range(LOWEST_SET_TONE_Hz, HIGHEST_SET_TONE_Hz) + moreOfTone + " (default: any from " +
             range(LOWEST_TONE_Hz, HIGHEST_TONE_Hz) + ")"},
        {"wpm", "N",
         "expect this speed in words per minute, within " +
             rounded(100 * (SET_SPEED_TOLERANCE - 1)) + " percent, " +
             range(LOWEST_SET_SPEED_wpm, HIGHEST_SET_SPEED_wpm) + " (default: any from " +
             range(LOWEST_SPEED_wpm, HIGHEST_SPEED_wpm) + ")"},
        {"live", nullptr,
         "decode a file in one pass, as a pipe (default: three passes, which read fading and weak "
         "Morse better and leave out what does not look like Morse)"},
    };
}

std::vector<SoundRequest> readSoundOptions(Arguments& arguments, const ToneRange& tones)
{
    SoundRequest common;
    using namespace demodulator;
    common.channel = arguments.wholeNumber("channel", 1, MAX_CHANNELS);
    common.rate_Hz = arguments.wholeNumber("rate", static_cast<int>(LOWEST_RATE_Hz),
                                           static_cast<int>(HIGHEST_RATE_Hz));
    common.demodulator.tone_Hz = arguments.number("tone", tones.lowest_Hz, tones.highest_Hz);
    common.demodulator.speed_wpm =
        arguments.number("wpm", LOWEST_SET_SPEED_wpm, HIGHEST_SET_SPEED_wpm);
    std::vector<SoundRequest> requests;
    int pipes = 0;
    for (const QString& name : arguments.operands()) {
        SoundRequest request = common;
        request.isPipe = name == QLatin1String("-");
        request.demodulator.isLive = request.isPipe || arguments.isSet("live");
        request.name = request.isPipe ? QStringLiteral("standard input") : name;
        pipes += request.isPipe ? 1 : 0;
        requests.push_back(request);
    }
    if (pipes > 1)
        arguments.fail(QStringLiteral("'-' can be given only once"));
    if (pipes == 0 && common.rate_Hz)
        arguments.fail(QStringLiteral("--rate is for standard input; a file has its own"));
    return requests;
}

} // namespace morsehost
