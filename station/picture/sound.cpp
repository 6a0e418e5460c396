// SPDX-License-Identifier: MIT
#include "station/picture/sound.h"

#include <algorithm>

namespace inspect {

namespace {

constexpr double AROUND_s = 0.1; // kept on both sides, for windows that reach over the edge

} // namespace

void SoundKeeper::hear(const float* samples, std::size_t count, double rate_Hz, Sound& sound)
{
    const auto index = [rate_Hz](std::int64_t time_us, double around_s) {
        return static_cast<std::int64_t>((static_cast<double>(time_us) / 1e6 + around_s) * rate_Hz);
    };
    const std::int64_t first = std::max<std::int64_t>(0, index(m_stretch.from_us, -AROUND_s));
    const std::int64_t last = index(m_stretch.to_us, AROUND_s);
    if (!m_nextSample)
        m_nextSample = index(m_begin_us, 0.0);
    const auto wanted = [&](std::int64_t sample) {
        return std::clamp<std::int64_t>(sample - *m_nextSample, 0,
                                        static_cast<std::int64_t>(count));
    };
    sound.rate_Hz = rate_Hz;
    if (sound.samples.empty())
        sound.firstSample = std::max(first, *m_nextSample);
    sound.samples.insert(sound.samples.end(), samples + wanted(first),
                         samples + std::max(wanted(first), wanted(last)));
    *m_nextSample += static_cast<std::int64_t>(count);
}

void SoundKeeper::forgetBefore(std::int64_t time_us, Sound& sound)
{
    m_stretch.from_us = time_us;
    const auto first =
        static_cast<std::int64_t>((static_cast<double>(time_us) / 1e6 - AROUND_s) * sound.rate_Hz);
    const auto forgotten = std::clamp<std::int64_t>(
        first - sound.firstSample, 0, static_cast<std::int64_t>(sound.samples.size()));
    sound.samples.erase(sound.samples.begin(), sound.samples.begin() + forgotten);
    sound.firstSample += forgotten;
}

} // namespace inspect
