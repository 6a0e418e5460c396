// SPDX-License-Identifier: MIT
#include "signal/teleprinter/synchronous.h"

#include "signal/logarithms.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace teleprinter {

using demodulator::logBesselI0;

namespace {

constexpr std::size_t MARKS = 4; // of each word

std::size_t place(int node, int element)
{
    return static_cast<std::size_t>(node) + static_cast<std::size_t>(element) * NODES;
}

float logMean(const float* logs, std::size_t count)
{
    const float most = *std::max_element(logs, logs + count);
    float sum = 0.0F;
    for (std::size_t i = 0; i < count; ++i)
        sum += std::exp(logs[i] - most);
    return most + std::log(sum / static_cast<float>(count));
}

// Of each node: what either tone says in the mean, and the share that mark has in it.
struct ElementShares
{
    std::vector<float> either;
    std::vector<double> mark;
};

ElementShares sharesOf(const Evidence& evidence)
{
    const std::size_t count = evidence.likelihoods[MARK].size();
    ElementShares shares;
    shares.either.reserve(count);
    shares.mark.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        shares.either.push_back(eitherTone(evidence, i));
        const auto margin = static_cast<double>(evidence.likelihoods[SPACE][i]) -
                            static_cast<double>(evidence.likelihoods[MARK][i]);
        shares.mark.push_back(1.0 / (1.0 + std::exp(margin)));
    }
    return shares;
}

// Logarithm of how much likelier the seven elements from a node are as any word of the code than as
// any elements: the probability that four of them are marks, over that of elements that are drawn.
float formOf(const ElementShares& shares, int node)
{
    constexpr std::size_t COUNTS = MARKS + 1;
    std::array<double, COUNTS> probabilities = {1.0}; // of so many marks so far
    for (int element = 0; element < WORD_ELEMENTS; ++element) {
        const double mark = shares.mark[place(node, element)];
        for (std::size_t marks = MARKS; marks > 0; --marks)
            probabilities[marks] =
                probabilities[marks] * (1.0 - mark) + probabilities[marks - 1] * mark;
        probabilities[0] *= 1.0 - mark;
    }
    // The share of all combinations that are words.
    constexpr double DRAWN = static_cast<double>(CCIR476_WORDS) / (1U << WORD_ELEMENTS);
    return static_cast<float>(
        std::log(std::max(probabilities[MARKS], std::numeric_limits<double>::min()) / DRAWN));
}

} // namespace

WordLikelihoods weighWords(const Evidence& evidence, int node)
{
    float spaces = 0.0F;
    std::array<float, WORD_ELEMENTS> margins = {};
    for (int element = 0; element < WORD_ELEMENTS; ++element) {
        const float space = evidence.likelihoods[SPACE][place(node, element)];
        spaces += space;
        margins[static_cast<std::size_t>(element)] =
            evidence.likelihoods[MARK][place(node, element)] - space;
    }
    WordLikelihoods words;
    for (std::size_t i = 0; i < CCIR476_WORDS; ++i) {
        words[i] = spaces;
        for (std::size_t element = 0; element < margins.size(); ++element) {
            if ((ccir476Elements()[i] >> element & 1U) != 0)
                words[i] += margins[element];
        }
    }
    return words;
}

WordLikelihoods weighWords(const Evidence& evidence, int node, double turn)
{
    std::array<std::complex<float>, WORD_ELEMENTS> turns;
    for (std::size_t n = 0; n < turns.size(); ++n)
        turns[n] = std::polar(1.0F, static_cast<float>(turn * static_cast<double>(n)));
    WordLikelihoods words;
    for (std::size_t i = 0; i < CCIR476_WORDS; ++i) {
        ByTone<std::complex<float>> sums = {0.0F, 0.0F};
        ByTone<std::size_t> elements = {0, 0};
        float cost = 0.0F;
        for (int element = 0; element < WORD_ELEMENTS; ++element) {
            const bool isMark = (ccir476Elements()[i] >> element & 1U) != 0;
            const std::size_t tone = isMark ? MARK : SPACE;
            const std::complex<float>& ahead = turns[elements[1 - tone]];
            sums[tone] +=
                evidence.sums[tone][place(node, element)] * (isMark ? ahead : std::conj(ahead));
            cost += evidence.strengths[tone][place(node, element)];
            ++elements[tone];
        }
        words[i] = logBesselI0(std::abs(sums[MARK])) + logBesselI0(std::abs(sums[SPACE])) - cost;
    }
    return words;
}

WordPhase findWordPhase(const Evidence& evidence)
{
    const ElementShares shares = sharesOf(evidence);
    WordPhase best;
    for (int node = 0; node < WORD_NODES; ++node) {
        WordPhase phase;
        phase.node = node;
        for (int at = node; at + WORD_NODES <= evidence.grid.count; at += WORD_NODES) {
            float any = 0.0F;
            for (int element = 0; element < WORD_ELEMENTS; ++element)
                any += shares.either[place(at, element)];
            // What comes before the signal has no form and is left out.
            if (phase.form < 0.0F)
                phase = {at, 0, 0.0F, 0.0F};
            const float word = any + formOf(shares, at);
            phase.score += word;
            phase.form += word - any;
            ++phase.words;
        }
        if (node == 0 || phase.score > best.score)
            best = phase;
    }
    return best;
}

Chosen choose(const WordLikelihoods& words)
{
    Chosen chosen;
    for (unsigned word = 1; word < CCIR476_WORDS; ++word) {
        if (words[word] > words[chosen.word])
            chosen.word = word;
    }
    float others = 0.0F;
    for (unsigned word = 0; word < CCIR476_WORDS; ++word) {
        if (word != chosen.word)
            others += std::exp(words[word] - words[chosen.word]);
    }
    chosen.margin = -std::log(std::max(others, 1e-30F));
    return chosen;
}

WordLikelihoods combine(const WordLikelihoods& direct, const WordLikelihoods& repeated)
{
    WordLikelihoods both;
    for (std::size_t word = 0; word < CCIR476_WORDS; ++word)
        both[word] = direct[word] + repeated[word];
    both[PHASING_2] = direct[PHASING_2] + repeated[PHASING_1];
    return both;
}

float meanOf(const WordLikelihoods& words)
{
    return logMean(words.data(), words.size());
}

} // namespace teleprinter
