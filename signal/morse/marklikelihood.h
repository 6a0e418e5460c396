// SPDX-License-Identifier: MIT
// Stage: marks and spaces, undecided. How much better the last steps are explained by a mark than
// by noise, for every length at once.
#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace demodulator {

/// What is known of a signal and its surroundings.
struct Level
{
    double signal = 0.0;     ///< square of half the key-down amplitude
    double noise = 0.0;      ///< variance that one step adds to a sum of steps
    double dot_steps = 15.0; ///< length of a dot, roughly
};

class MarkLikelihood
{
public:
    MarkLikelihood();

    /// Steps are kept for this long.
    static constexpr std::int64_t KEPT_STEPS = 4096;
    /// So many amplitudes a single mark may have.
    static constexpr std::size_t AMPLITUDE_COUNT = 4;

    /// The level expected of the steps that follow.
    void setLevel(const Level& level);
    const Level& level() const { return m_level; }

    /// The phase expected of the steps that follow, and how well that of a mark is known: the
    /// concentration of a von Mises distribution, 0 where nothing is known.
    void setPhase(double phase, double concentration);
    void forgetPhase() { m_concentration = 0.0; }

    /// `noise` counts where it is more than that of the level.
    void push(std::complex<double> step, double noise = 0.0);
    /// Steps heard so far; lengths are counted back from here.
    std::int64_t end() const { return m_end; }

    /// Sum over steps [begin, end).
    std::complex<double> sum(std::int64_t begin, std::int64_t end) const;
    /// Sum of step n times the conjugate of step n - lag, both within [begin, end): its angle is
    /// the advance of phase in `lag` steps.
    std::complex<double> advance(std::int64_t begin, std::int64_t end, std::int64_t lag) const;

    /// Natural logarithm of the likelihood ratio of a mark of `length` steps that ends here, its
    /// phase unknown, its amplitude known roughly.
    float ratio(std::int64_t length) const;

private:
    // Sums over all steps before one. Each step is weighted with the level expected when it came,
    // so that all ways to cut the steps into marks are judged by the same evidence.
    struct Sums
    {
        std::complex<double> plain;
        std::complex<double> weighted; // by amplitude over noise, turned back by the phase expected
        double energy = 0.0;           // of the expected amplitude, over noise
    };
    const Sums& sums(std::int64_t step) const
    {
        return m_sums[static_cast<std::size_t>(step % (KEPT_STEPS + 1))];
    }

    std::vector<std::complex<double>> m_steps; // ring
    std::vector<Sums> m_sums;                  // ring
    std::int64_t m_end = 0;
    Level m_level;
    std::array<double, AMPLITUDE_COUNT> m_logProbabilities{}; // of the amplitudes
    std::complex<double> m_turn = 1.0;                        // takes the phase expected away
    double m_concentration = 0.0;
    double m_concentrationCost = 0.0; // log I0 of it
};

/// Mean magnitude of the steps over a dot's length at which a mark and no mark are equally likely,
/// lengths and phase left out.
double evenMagnitude(const Level& level);

/// Logarithm of the modified Bessel function I0.
double logBesselI0(double x);

} // namespace demodulator
