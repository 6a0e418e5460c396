// SPDX-License-Identifier: MIT
// Stage: what each element says. How strong both tones are is followed, each by itself since they
// fade apart; from that comes how much likelier a span is with a tone in it than with noise alone.
#pragma once

#include "signal/teleprinter/parameters.h"
#include "signal/teleprinter/tonepair.h"

#include <complex>
#include <vector>

namespace teleprinter {

/// Places in time at which an element may begin, per element.
constexpr int NODES = 16;

/// What it costs that an element may be either of two, as a logarithm.
constexpr float LOG_2 = 0.693147F;

/// Where the nodes lie, in samples of the input.
struct Grid
{
    double begin = 0.0;
    double bit = 1.0; ///< length of an element
    int count = 0;

    double at(int node) const { return begin + node * bit / NODES; }
};

/// At each node for the element that begins there, if it were the tone's.
struct Evidence
{
    Grid grid;
    /// Sum of the mixed tone, scaled so that its magnitude is the argument of the Bessel function;
    /// sums of elements that keep their phase may be added up.
    ByTone<std::vector<std::complex<float>>> sums;
    /// Signal energy over noise density; sums of elements cost the sum of theirs.
    ByTone<std::vector<float>> strengths;
    /// Logarithm of the likelihood against noise alone, phase unknown.
    ByTone<std::vector<float>> likelihoods;
    /// How much more it would be, had the phase been known beforehand, as it is within a pause.
    ByTone<std::vector<float>> phaseGains;
};

/// `noise`: variance of a sample, of the density of noise about the tones.
Evidence weigh(const TonePair& tones, const Grid& grid, double rate_Hz, double noise,
               const EvidenceParameters& parameters = {});

/// What a signal of some strength gains by a known phase.
float phaseGain(float strength);

/// Logarithm of the mean likelihood of both tones at a node.
float eitherTone(const Evidence& evidence, std::size_t node);

} // namespace teleprinter
