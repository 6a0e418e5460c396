// SPDX-License-Identifier: MIT
// What several stages of the teleprinter's receiver are tried with.
#pragma once

#include "signal/teleprinter/channel.h"
#include "signal/teleprinter/evidence.h"
#include "support/teleprinterkeyer.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace testsupport {

/// The evidence of a whole sound at the tones of its path, in elements of `baud`.
inline teleprinter::Evidence evidenceOf(const std::vector<float>& samples, const TonePath& path,
                                        double rate_Hz, double baud)
{
    demodulator::SampleHistory history(samples.size());
    history.push(samples.data(), samples.size());
    const auto end = static_cast<std::int64_t>(samples.size());
    const double half_Hz = 0.5 * path.shift_Hz;
    const teleprinter::TonePair tones(history, rate_Hz,
                                      {path.centre_Hz - half_Hz, path.centre_Hz + half_Hz}, 0, end);
    const double bit = rate_Hz / baud;
    const int nodes =
        static_cast<int>(static_cast<double>(end) / bit * teleprinter::NODES) - teleprinter::NODES;
    return teleprinter::weigh(tones, {0.0, bit, nodes}, rate_Hz, 1e-3);
}

/// Lets a channel hear a whole sound piece by piece. `make` opens it on its input; `read` takes the
/// words that it decides, the channel and how many samples it has heard.
template <typename Make, typename Read>
void hear(const std::vector<float>& samples, double rate_Hz, Make make, Read read)
{
    constexpr std::int64_t HOP = 512;
    demodulator::SampleHistory history(static_cast<std::size_t>(16.0 * rate_Hz));
    teleprinter::Spectrum spectrum(rate_Hz);
    const teleprinter::Parameters parameters;
    const auto channel = make(teleprinter::Input{history, spectrum, parameters, rate_Hz});
    const auto length = static_cast<std::int64_t>(spectrum.length());
    const auto size = static_cast<std::int64_t>(samples.size());
    std::int64_t frame = 0;
    for (std::int64_t at = 0; at < size; at += HOP) {
        const std::int64_t end = std::min(at + HOP, size);
        history.push(&samples[static_cast<std::size_t>(at)], static_cast<std::size_t>(end - at));
        for (; frame * spectrum.hop() + length <= end; ++frame)
            spectrum.push(&samples[static_cast<std::size_t>(frame * spectrum.hop())]);
        read(channel->advance(end, false), *channel, end);
    }
    read(channel->advance(size, true), *channel, size);
}

} // namespace testsupport
