// SPDX-License-Identifier: MIT
#include "station/audio/sound.h"

#include "signal/limits.h"

#include <cmath>
#include <unistd.h>

namespace morsehost {

namespace {

OpenedSource openByKind(const SoundRequest& request)
{
    if (!request.isPipe)
        return openRecording(request.name, request.channel);
    if (isatty(STDIN_FILENO) != 0)
        return {nullptr, QStringLiteral("is a terminal; sound is expected from a pipe")};
    return openPipe(STDIN_FILENO, request.rate_Hz, request.channel);
}

} // namespace

OpenedSource openSound(SoundRequest& request)
{
    OpenedSource opened = openByKind(request);
    if (!opened.source)
        return opened;
    demodulator::Settings& settings = request.demodulator;
    settings.sampleRate_Hz = opened.source->sampleRate_Hz();
    request.teleprinter.sampleRate_Hz = settings.sampleRate_Hz;
    const double highest_Hz = demodulator::HIGHEST_TONE_SHARE * settings.sampleRate_Hz;
    if (settings.tone_Hz && *settings.tone_Hz > highest_Hz)
        return {nullptr, QStringLiteral("a tone of %1 Hz cannot be heard at %2 samples a second, "
                                        "where the highest is %3 Hz")
                             .arg(*settings.tone_Hz)
                             .arg(settings.sampleRate_Hz)
                             .arg(std::floor(highest_Hz))};
    return opened;
}

} // namespace morsehost
