// SPDX-License-Identifier: MIT
// Stage: follow one tone. The tone is mixed to 0 Hz and averaged over short steps; the sum of steps
// is then the matched filter for a mark of any length.
#pragma once

#include "signal/morse/step.h"
#include "signal/samples/samples.h"
#include "signal/timing.h"

#include <cstdint>
#include <vector>

namespace demodulator {

class Baseband
{
public:
    Baseband(double rate_Hz, double tone_Hz);

    /// Samples between two steps at a rate.
    static int stepSamplesAt(double rate_Hz);
    /// The same of this one; step n is centred on sample n * stepSamples().
    int stepSamples() const { return m_stepSamples; }
    /// Sample after the last that step n needs.
    std::int64_t neededEnd(std::int64_t step) const;

    double tone_Hz() const { return m_tone_Hz; }
    /// Takes effect from the next step on; the phase goes on without a jump.
    void setTone(double tone_Hz) { m_tone_Hz = tone_Hz; }

    /// Steps are asked for in order.
    Step step(const SampleHistory& history, std::int64_t step);

private:
    double m_rate_Hz;
    double m_tone_Hz;
    int m_stepSamples;
    std::vector<float> m_window;
    std::vector<float> m_samples;
    double m_phase = 0.0;
};

} // namespace demodulator
