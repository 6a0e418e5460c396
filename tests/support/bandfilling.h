// SPDX-License-Identifier: MIT
// The filter bank and the search of a band's receiver, filled from a sound.
#pragma once

#include "signal/band/stepbank.h"
#include "signal/band/survey.h"

#include <complex>
#include <cstdint>
#include <vector>

namespace testsupport {

/// Gives both the steps from `begin` to the end of the samples, as far as these reach, and measures
/// the noise. Returns the step after the last one.
template <typename Sample>
std::int64_t fill(demodulator::StepBank& bank, demodulator::Survey& survey,
                  const std::vector<Sample>& samples, std::int64_t begin = 0)
{
    const auto windowAt = [&samples](std::size_t centre, std::size_t length) {
        std::vector<std::complex<float>> window(length);
        for (std::size_t i = 0; i < length; ++i) {
            const std::size_t at =
                centre + i - length / 2; // before the first it is beyond the end: silence
            window[i] = at < samples.size() ? samples[at] : Sample();
        }
        return window;
    };
    const auto end = static_cast<std::int64_t>(samples.size() / bank.stepSamples());
    for (std::int64_t step = begin; step < end; ++step) {
        const std::size_t centre = static_cast<std::size_t>(step) * bank.stepSamples();
        bank.compute(step, windowAt(centre, bank.windowSamples()).data());
        if (step % demodulator::Survey::HOP_STEPS == 0)
            survey.compute(step / demodulator::Survey::HOP_STEPS,
                           windowAt(centre, survey.windowSamples()).data());
    }
    survey.advanceTo(end / demodulator::Survey::HOP_STEPS);
    for (std::size_t piece = 0; piece < survey.pieces(); ++piece)
        survey.measureNoise(piece);
    return end;
}

} // namespace testsupport
