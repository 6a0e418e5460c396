// SPDX-License-Identifier: MIT
#include "station/audio/sound.h"

#include <unistd.h>

namespace morsehost {

namespace {

constexpr int DEFAULT_RATE_HZ = 8000;

OpenedSource openByKind(const SoundRequest& request)
{
    if (!request.isPipe)
        return openRecording(request.name, request.channel);
    if (isatty(STDIN_FILENO) != 0)
        return {nullptr, QStringLiteral("is a terminal; sound is expected from a pipe")};
    if (request.channel.value_or(1) != 1)
        return {nullptr, QStringLiteral("raw samples have one channel")};
    return {openRawPipe(STDIN_FILENO, request.rate_Hz.value_or(DEFAULT_RATE_HZ)), {}};
}

} // namespace

OpenedSource openSound(SoundRequest& request)
{
    OpenedSource opened = openByKind(request);
    if (!opened.source)
        return opened;
    demodulator::Settings& settings = request.demodulator;
    settings.sampleRate_Hz = opened.source->sampleRate_Hz();
    if (settings.tone_Hz && *settings.tone_Hz >= settings.sampleRate_Hz / 2)
        return {nullptr, QStringLiteral("a tone of %1 Hz needs more than %2 samples a second")
                             .arg(*settings.tone_Hz)
                             .arg(settings.sampleRate_Hz)};
    return opened;
}

} // namespace morsehost
