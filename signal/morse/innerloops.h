// SPDX-License-Identifier: MIT
// The loops that take the time, written so that a compiler makes vector instructions of them, for
// several generations of processors at once. Results are the same to the last bit on all of them.
#pragma once

#include "signal/morse/score.h"

#include <cstddef>
#include <cstdint>

namespace demodulator {

/// The largest of a series and the index where it stands first.
struct Peak
{
    int score = NEVER;
    std::size_t index = 0;
};

/// Series of which sums are made, and a bit for each group of LANES that counts.
struct SummedRow
{
    const Score* a;
    const Score* c;
    std::uint64_t groups;
};

/// Of each row, a[i] + b[i] + c[i] where a[i] is more than NEVER: no path came to the others, and
/// no evidence, however strong, makes one of that. What is not more than NEVER has no peak.
void peaksOfSums(const SummedRow* rows, std::size_t count, const Score* b, Peak* peaks);

/// What brings scores of earlier steps to a common reference, in groups of LANES: offsets[i] =
/// references[i] - reference + additions[i], bounded by NEVER and MOST_SCORE; references and their
/// differences may run over the end of 32 bits. `additions` may be null. Only groups whose bit of
/// `groups` is set, all others get NEVER, as do steps whose `best` is NEVER: no path came there,
/// and no evidence, however strong, makes one of that. The result has the bits of those groups in
/// which some offsets[i] + best[i] is at least `least`.
std::uint64_t weighGroups(std::uint64_t groups, std::size_t count, std::uint32_t reference,
                          const std::uint32_t* references, const std::int32_t* additions,
                          const Score* best, Score least, Score* offsets);

/// What gaps at a speed and at those beside it make of the marks that follow: best[s] becomes the
/// most of itself and of gaps[s + step] + changes[|step|] for all steps up to `neighbours` to both
/// sides, as far as gaps[s + step] is more than NEVER; from[s] becomes the first step that gives
/// it, and stays where none gives more. `gaps` can be read `neighbours` beyond both ends.
void raiseFromNeighbours(const std::int32_t* gaps, const std::int32_t* changes, int neighbours,
                         std::size_t speeds, std::int32_t* best, std::int32_t* from);

/// Natural logarithms of numbers greater than 0, within 1e-6.
void logarithms(const float* x, float* out, std::size_t count);

/// Of an amplitude that a mark may have, relative to the one expected.
struct AmplitudeChoice
{
    float factor;
    float logProbability;
};

/// What marks that end now are weighed with.
struct MarkWeighing
{
    static constexpr std::size_t CHOICES = 4;
    AmplitudeChoice choices[CHOICES];
    // What is known of the phase: the concentration of a von Mises distribution, and the logarithm
    // of I0 of it; of a phase that is not the one expected, a log probability.
    float concentration;
    float concentrationCost;
    float otherPhase;
    bool mayDrift;   // its phase may drift from one part to the next,
    float driftCost; // each at this cost
    std::size_t part_steps;
};

/// Sums over all steps up to one, newest first: of the steps, weighted by amplitude over noise, as
/// they came and turned by the phase that was expected; and of the energy expected, over noise.
struct StepSums
{
    const float* re;
    const float* im;
    const float* turnedRe;
    const float* turnedIm;
    const float* energy;
};

/// out[i]: log likelihood ratio of a mark of first + i steps that ends now, in units of a Score, of
/// magnitude MOST_EVIDENCE at most.
void weighMarks(const MarkWeighing& weighing, const StepSums& sums, std::size_t first,
                std::size_t count, std::int32_t* out);

/// Far beyond any beam, and with a Score beside it within 32 bits.
constexpr std::int32_t MOST_EVIDENCE = 20000 * SCORES_PER_NAT;

/// Sum of a[i] times the conjugate of b[i], both complex.
struct ComplexSum
{
    float re, im;
};
ComplexSum correlate(const float* aRe, const float* aIm, const float* bRe, const float* bIm,
                     std::size_t count);

/// How probable lengths of one kind are: Student's t with 5 degrees of freedom, its right side
/// stretched. Like a normal distribution, but one odd length is no catastrophe.
struct LengthDensity
{
    float mean;
    float deviation;
    float rightTail;
    float share; ///< of all lengths
};
constexpr double STUDENT_DEGREES = 5.0;
constexpr double STUDENT_NORM = 2.634; ///< of the distribution: its integral over a deviation of 1

/// p[i] = the greater of p[i] and the density at i * spacing.
void raiseToDensity(const LengthDensity& density, float spacing, float* p, std::size_t count);

} // namespace demodulator
