// SPDX-License-Identifier: MIT
#include "signal/teleprinter/evidence.h"

#include "signal/logarithms.h"

#include <algorithm>
#include <cmath>

namespace teleprinter {

using demodulator::logBesselI0;

namespace {

// Levels are followed at every fourth node, looking ahead as far as back: they change little within
// an element.
constexpr int STRIDE = 4;
// Each round knows from the last how strong the tones are, and so which one was on.
constexpr int ROUNDS = 3;

// Both ways, so that nothing is late: a weighted sum over the neighbourhood of each place.
void smoothen(std::vector<float>& values, float keep)
{
    std::vector<float> back(values.size());
    float sum = 0.0F;
    for (std::size_t i = values.size(); i-- > 0;) {
        sum *= keep;
        back[i] = sum; // without the value itself, which the way forward brings
        sum += values[i];
    }
    sum = 0.0F;
    for (std::size_t i = 0; i < values.size(); ++i) {
        sum = sum * keep + values[i];
        values[i] = sum + back[i];
    }
}

float likelihoodOf(float strength, float energy)
{
    return logBesselI0(2.0F * std::sqrt(strength * energy)) - strength;
}

// Strength of both tones at every STRIDE-th node, from the energy in either filter (1: noise
// alone).
ByTone<std::vector<float>> followLevels(const ByTone<std::vector<float>>& energies, float keep,
                                        const EvidenceParameters& own)
{
    const std::size_t count = energies[MARK].size();
    ByTone<std::vector<float>> strengths;
    ByTone<float> steady = {0.0F, 0.0F};
    for (const std::size_t tone : {SPACE, MARK}) {
        float mean = 0.0F;
        for (const float energy : energies[tone])
            mean += energy;
        mean /= static_cast<float>(std::max<std::size_t>(1, count));
        // A tone that is on half of the time
        steady[tone] = std::max(own.leastStrength, 2.0F * (mean - 1.0F));
        strengths[tone].assign(count, steady[tone]);
    }
    std::vector<float> shares(count);
    std::vector<float> weights;
    std::vector<float> excess;
    for (int round = 0; round < ROUNDS; ++round) {
        for (std::size_t i = 0; i < count; ++i) {
            const float margin = likelihoodOf(strengths[MARK][i], energies[MARK][i]) -
                                 likelihoodOf(strengths[SPACE][i], energies[SPACE][i]);
            shares[i] = 1.0F / (1.0F + std::exp(std::clamp(-margin, -60.0F, 60.0F)));
        }
        for (const std::size_t tone : {SPACE, MARK}) {
            weights.resize(count);
            excess.resize(count);
            float allWeights = 1e-3F;
            float allExcess = 0.0F;
            for (std::size_t i = 0; i < count; ++i) {
                weights[i] = tone == MARK ? shares[i] : 1.0F - shares[i];
                excess[i] = weights[i] * (energies[tone][i] - 1.0F);
                allWeights += weights[i];
                allExcess += excess[i];
            }
            steady[tone] = std::max(own.leastStrength, allExcess / allWeights);
            smoothen(weights, keep);
            smoothen(excess, keep);
            const float steadyWeight = own.steady_bits * NODES / STRIDE;
            for (std::size_t i = 0; i < count; ++i)
                strengths[tone][i] =
                    std::max(own.leastStrength, (excess[i] + steadyWeight * steady[tone]) /
                                                    (weights[i] + steadyWeight));
        }
    }
    return strengths;
}

} // namespace

float phaseGain(float strength)
{
    // Noise turns what is summed up; so much of the gain is only that the magnitude follows it.
    constexpr float FOLLOWED_NOISE = 0.6F;
    const float expected = 2.0F * strength;
    return std::max(0.0F, expected - logBesselI0(expected) - FOLLOWED_NOISE);
}

float eitherTone(const Evidence& evidence, std::size_t node)
{
    const float mark = evidence.likelihoods[MARK][node];
    const float space = evidence.likelihoods[SPACE][node];
    return std::max(mark, space) + std::log1p(std::exp(-std::fabs(mark - space))) - LOG_2;
}

Evidence weigh(const TonePair& tones, const Grid& grid, double rate_Hz, double noise,
               const EvidenceParameters& own)
{
    Evidence evidence;
    evidence.grid = grid;
    const auto count = static_cast<std::size_t>(std::max(0, grid.count));
    const auto scale = static_cast<float>(1.0 / std::sqrt(std::max(noise, 1e-12) * grid.bit));
    ByTone<std::vector<float>> energies;
    std::vector<std::complex<double>> upTo; // of the tones, up to each node
    upTo.reserve(count + NODES);
    for (const std::size_t tone : {SPACE, MARK}) {
        auto& sums = evidence.sums[tone];
        sums.resize(count);
        upTo.clear();
        for (std::size_t i = 0; i < count + NODES; ++i)
            upTo.push_back(tones.upTo(tone, grid.at(static_cast<int>(i))));
        for (std::size_t i = 0; i < count; ++i) {
            sums[i] = std::complex<float>(upTo[i + NODES] - upTo[i]) * scale;
            if (i % STRIDE == 0)
                energies[tone].push_back(std::norm(sums[i]));
        }
    }
    const double stride_s = grid.bit * STRIDE / NODES / rate_Hz;
    const auto most = static_cast<float>(own.mostStrength_per_s * grid.bit / rate_Hz);
    const ByTone<std::vector<float>> levels =
        followLevels(energies, static_cast<float>(std::exp(-stride_s / own.followed_s)), own);
    ByTone<std::vector<float>> gains;
    for (std::size_t place = 0; place < levels[MARK].size(); ++place) {
        const float noisier =
            std::max(1.0F, std::max(levels[SPACE][place], levels[MARK][place]) / most);
        for (const std::size_t tone : {SPACE, MARK})
            gains[tone].push_back(phaseGain(levels[tone][place] / noisier));
    }
    for (const std::size_t tone : {SPACE, MARK}) {
        evidence.strengths[tone].resize(count);
        evidence.likelihoods[tone].resize(count);
        evidence.phaseGains[tone].resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t place = i / STRIDE;
            const float strongest = std::max(levels[SPACE][place], levels[MARK][place]);
            const float noisier = std::max(1.0F, strongest / most);
            const float strength = levels[tone][place] / noisier;
            std::complex<float>& sum = evidence.sums[tone][i];
            sum *= 2.0F * std::sqrt(strength / noisier);
            evidence.strengths[tone][i] = strength;
            evidence.phaseGains[tone][i] = gains[tone][place];
            evidence.likelihoods[tone][i] = logBesselI0(std::sqrt(std::norm(sum))) - strength;
        }
    }
    return evidence;
}

} // namespace teleprinter
