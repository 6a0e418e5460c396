// SPDX-License-Identifier: MIT
#include "app/options/soundoptions.h"

#include "app/console/complain.h"

#include <unistd.h>

namespace morsehost {

namespace {

constexpr int DEFAULT_RATE_HZ = 8000;

} // namespace

std::vector<OptionRow> soundOptionRows()
{
    return {
        {"channel", "N", "take channel N of the file, counted from 1, not the mean of all"},
        {"rate", "HZ", "samples a second of standard input; 8000 without this"},
        {"tone", "HZ", "look for the tone within 50 Hz of this"},
        {"wpm", "N", "words a minute, within 20 percent, instead of any speed"},
    };
}

SoundOptions readSoundOptions(Arguments& arguments)
{
    SoundOptions options;
    options.name = arguments.operands().value(0);
    options.isPipe = options.name == QLatin1String("-");
    if (options.isPipe)
        options.name = QStringLiteral("standard input");
    options.channel = arguments.wholeNumber("channel", 1, 1024);
    options.rate_Hz = arguments.wholeNumber("rate", 4000, 768000);
    options.demodulator.tone_Hz = arguments.number("tone", 100, 20000);
    options.demodulator.speed_wpm = arguments.number("wpm", 5, 100);
    if (options.isPipe && options.channel)
        arguments.fail(QStringLiteral("--channel is for files; a pipe carries one channel"));
    if (!options.isPipe && options.rate_Hz)
        arguments.fail(QStringLiteral("--rate is for pipes; a file knows its own"));
    return options;
}

std::unique_ptr<SampleSource> openSound(SoundOptions& options)
{
    OpenedSource opened;
    if (!options.isPipe)
        opened = openRecording(options.name, options.channel);
    else if (isatty(STDIN_FILENO) != 0)
        opened.error = QStringLiteral("is a terminal; raw samples are expected from a pipe");
    else
        opened.source = openRawPipe(STDIN_FILENO, options.rate_Hz.value_or(DEFAULT_RATE_HZ));
    if (!opened.source) {
        complain(options.name, opened.error);
        return nullptr;
    }
    demodulator::Settings& settings = options.demodulator;
    settings.sampleRate_Hz = opened.source->sampleRate_Hz();
    if (settings.tone_Hz && *settings.tone_Hz >= settings.sampleRate_Hz / 2) {
        complain(options.name, QStringLiteral("a tone of %1 Hz needs more than %2 samples a second")
                                   .arg(*settings.tone_Hz)
                                   .arg(settings.sampleRate_Hz));
        return nullptr;
    }
    return std::move(opened.source);
}

} // namespace morsehost
