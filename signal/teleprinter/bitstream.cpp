// SPDX-License-Identifier: MIT
#include "signal/teleprinter/bitstream.h"

#include <algorithm>
#include <array>

namespace teleprinter {

float bitStreamScore(const Evidence& evidence, const BitStreamParameters& own)
{
    constexpr int MOST_OFF = 1; // nodes by which an element may be shorter or longer
    const int last = evidence.grid.count;
    // Best score of all that ends between two elements at a node; nothing before it scores 0.
    std::vector<float> ends(static_cast<std::size_t>(std::max(0, last)) + 1, 0.0F);
    ByTone<float> rests = {0.0F, 0.0F}; // the same, while one tone goes on
    float best = 0.0F;
    for (int node = 0; node <= last; ++node) {
        float score = 0.0F;
        for (int off = -MOST_OFF; off <= MOST_OFF; ++off) {
            const int begin = node - NODES - off;
            if (begin < 0)
                continue;
            // A shorter element has less to say, a longer one no more than what is seen of it.
            const float seen = std::min(1.0F, static_cast<float>(NODES + off) / NODES);
            const auto at = static_cast<std::size_t>(begin);
            score = std::max(score, ends[at] + seen * eitherTone(evidence, at) +
                                        (off == 0 ? 0.0F : own.costOfOtherLength));
        }
        // The element that has its middle here shows which tone it is.
        const auto middle = static_cast<std::size_t>(std::max(0, node - NODES / 2));
        for (const std::size_t tone : {SPACE, MARK}) {
            score = std::max(score, rests[tone] + own.costOfRest);
            if (node < last)
                rests[tone] = std::max(rests[tone], score + own.costOfRest) +
                              evidence.likelihoods[tone][middle] / NODES;
        }
        ends[static_cast<std::size_t>(node)] = score;
        best = std::max(best, score);
    }
    return best;
}

} // namespace teleprinter
