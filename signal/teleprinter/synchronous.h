// SPDX-License-Identifier: MIT
// Stage: words without start and stop, of seven elements of which four are marks, one after the
// other. Where they begin is what makes most of them words of the code; of each, all 35 are
// weighed.
#pragma once

#include "signal/teleprinter/ccir476.h"
#include "signal/teleprinter/evidence.h"

#include <array>

namespace teleprinter {

/// Of CCIR 476, in which four of them are marks.
constexpr int WORD_ELEMENTS = 7;
constexpr int WORD_NODES = WORD_ELEMENTS * NODES;

/// A character comes again so many words after it was sent directly.
constexpr int REPEATED_AFTER = 5;

/// Logarithm of the likelihood of each word of the code against noise alone.
using WordLikelihoods = std::array<float, CCIR476_WORDS>;

/// Of the word that begins at a node; its elements keep their phase where `turn` is known (radians
/// that the mark tone is ahead in one element).
WordLikelihoods weighWords(const Evidence& evidence, int node);
WordLikelihoods weighWords(const Evidence& evidence, int node, double turn);

struct WordPhase
{
    int node = 0;       ///< where the first word begins
    int words = 0;      ///< that follow each other from there
    float score = 0.0F; ///< logarithm of the likelihood of all of them against noise alone
    float form = 0.0F;  ///< part of it that they owe to being words of the code
};

/// The likeliest of all places within the first word.
WordPhase findWordPhase(const Evidence& evidence);

/// The word that is likeliest, and how much likelier than all others together.
struct Chosen
{
    unsigned word = 0;
    float margin = 0.0F;
};
Chosen choose(const WordLikelihoods& words);

/// Both times that a character was sent as one. Phasing signals differ from one to the other.
WordLikelihoods combine(const WordLikelihoods& direct, const WordLikelihoods& repeated);

/// Logarithm of the mean likelihood.
float meanOf(const WordLikelihoods& words);

} // namespace teleprinter
