// SPDX-License-Identifier: MIT
// Stage: turn each step to the tone that is expected, wherever the mixer was, and remember for a
// while what was expected: marks are measured against it.
#pragma once

#include "signal/morse/step.h"

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace demodulator {

class ExpectedTone
{
public:
    /// What was expected is remembered for the last `kept_steps` steps.
    ExpectedTone(double tone_Hz, double step_s, std::int64_t kept_steps);

    /// Of the steps that follow. It may wander from step to step, its phase never jumps.
    void set(double tone_Hz) { m_tone_Hz = tone_Hz; }
    double tone_Hz() const { return m_tone_Hz; }

    /// The value of the next step, its phase against the tone expected.
    std::complex<double> turn(const Step& step);

    /// The tone that was expected of one of the steps remembered; the first one turned is step 0.
    double toneAt(std::int64_t step) const { return static_cast<double>(m_tones[slot(step)]); }
    /// Its phase at that step, in cycles since the first.
    double cyclesAt(std::int64_t step) const { return m_cycles[slot(step)]; }
    /// The phase of the step that comes next.
    double nextCycles() const { return m_nextCycles; }

private:
    std::size_t slot(std::int64_t step) const
    {
        return static_cast<std::size_t>(step) % m_tones.size();
    }

    double m_tone_Hz;
    double m_step_s;
    std::int64_t m_end = 0;
    std::vector<float> m_tones;   // a ring, by step
    std::vector<double> m_cycles; // a ring, by step
    double m_nextCycles = 0.0;
    double m_mixedAside_cycles = 0.0; // by which the mixer's phase is ahead of what was expected
};

} // namespace demodulator
