// SPDX-License-Identifier: MIT
// Stage: marks and spaces, undecided. How much better the last steps are explained by a mark than
// by noise, for every length at once.
#pragma once

#include "signal/morse/innerloops.h"
#include "signal/morse/parameters.h"
#include "signal/morse/recent.h"

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>

namespace demodulator {

/// What is known of a signal and its surroundings.
struct Level
{
    double signal = 0.0;         ///< square of half the key-down amplitude
    double noise = 0.0;          ///< variance that one step adds to a sum of steps
    double dot_steps = 15.0;     ///< length of a dot, roughly
    double coherent_steps = 1e9; ///< over which an unsteady tone keeps its phase
    bool hasEcho = false;        ///< what is weaker than expected is no mark
};

class MarkLikelihood
{
public:
    explicit MarkLikelihood(const LikelihoodParameters& parameters = {});

    /// Steps are kept for this long.
    static constexpr std::int64_t KEPT_STEPS = 1024;
    /// The longest mark that can be weighed.
    static constexpr std::int64_t LONGEST_STEPS = 512;

    /// The level expected of the steps that follow.
    void setLevel(const Level& level);
    const Level& level() const { return m_level; }
    /// Power of a step so many before the last one, of those that are kept.
    float power(std::size_t before) const
    {
        return m_stepRe[before] * m_stepRe[before] + m_stepIm[before] * m_stepIm[before];
    }

    /// The phase expected of the steps that follow, and how well that of a mark is known: the
    /// concentration of a von Mises distribution, 0 where nothing is known.
    void setPhase(double phase, double concentration);
    void forgetPhase() { m_weighing.concentration = 0.0F; }

    /// `noise` counts where it is more than that of the level.
    void push(std::complex<double> step, double noise = 0.0);
    /// Steps heard so far; lengths are counted back from here.
    std::int64_t end() const { return m_end; }

    /// Sum over steps [begin, end), of those that are kept.
    std::complex<double> sum(std::int64_t begin, std::int64_t end) const;
    /// Sum of step n times the conjugate of step n - lag, both within [begin, end): its angle is
    /// the advance of phase in `lag` steps.
    std::complex<double> advance(std::int64_t begin, std::int64_t end, std::int64_t lag) const;

    /// Natural logarithm of the likelihood ratio of a mark of `length` steps that ends here, its
    /// phase unknown, its amplitude known roughly. Of more than was heard, or than LONGEST_STEPS,
    /// it is far below any other.
    float ratio(std::int64_t length) const;
    /// The same for the `count` lengths from `first` on, as scores; all of them at most
    /// LONGEST_STEPS. Steps before the first count as silence that was not heard.
    void ratios(std::int64_t first, std::int64_t count, std::int32_t* scores) const;

private:
    std::size_t age(std::int64_t step) const { return static_cast<std::size_t>(m_end - 1 - step); }
    void lowerSums();

    LikelihoodParameters m_parameters;
    Recent<float> m_stepRe, m_stepIm;
    // Sums over all steps up to one. Each step is weighted with the level expected when it came, so
    // that all ways to cut the steps into marks are judged by the same evidence.
    Recent<float> m_re, m_im;             // by amplitude over noise
    Recent<float> m_turnedRe, m_turnedIm; // the same, turned back by the phase expected
    Recent<float> m_energy;               // of the expected amplitude, over noise
    std::int64_t m_end = 0;
    Level m_level;
    MarkWeighing m_weighing = {};
    std::complex<double> m_turn = 1.0; // takes the phase expected away
};

/// Mean magnitude of the steps over a dot's length at which a mark and no mark are equally likely,
/// lengths and phase left out.
double evenMagnitude(const Level& level, const LikelihoodParameters& parameters = {});

} // namespace demodulator
