// SPDX-License-Identifier: MIT
// Stage: follow one tone. The tone is mixed to 0 Hz and averaged over short steps; the sum of steps
// is then the matched filter for a mark of any length.
#pragma once

#include "signal/samples/samples.h"

#include <complex>
#include <cstdint>
#include <vector>

namespace demodulator {

/// Length of a step. Steps of 4 ms resolve the dots of 60 words a minute (20 ms) five times.
constexpr double STEP_s = 0.004;

class Baseband
{
public:
    Baseband(double rate_Hz, double tone_Hz);

    /// Samples between two steps; step n is centred on sample n * stepSamples().
    int stepSamples() const { return m_stepSamples; }
    /// Sample after the last that step n needs.
    std::int64_t neededEnd(std::int64_t step) const;

    double tone_Hz() const { return m_tone_Hz; }
    /// Takes effect from the next step on; the phase goes on without a jump.
    void setTone(double tone_Hz) { m_tone_Hz = tone_Hz; }

    /// Half the tone's amplitude and its phase at one step. Steps are asked for in order.
    std::complex<double> step(const SampleHistory& history, std::int64_t step);

    /// Mean power of everything but the tone in the last step, as variance of one sample.
    double rest() const { return m_rest; }

private:
    double m_rate_Hz;
    double m_tone_Hz;
    int m_stepSamples;
    std::vector<float> m_window;
    std::vector<float> m_samples;
    double m_phase = 0.0;
    double m_rest = 0.0;
};

} // namespace demodulator
