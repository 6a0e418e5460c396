// SPDX-License-Identifier: MIT
// The corpus by which the reception of teleprinters is judged: conditions, texts, and what is no
// teleprinter; each recording made from its name alone.
#pragma once

#include "support/teleprinterkeyer.h"

#include <functional>
#include <string>
#include <vector>

namespace teleprinterbench {

constexpr double RATE_Hz = 8000.0;
constexpr std::size_t TEXT_LENGTH = 600;

/// One row of the table.
struct Condition
{
    std::string name;  ///< short, for file names
    std::string title; ///< as in the table
    testsupport::Machine machine;
    testsupport::TonePath path;
};

const std::vector<Condition>& conditions();

struct Recording
{
    std::string name; ///< condition, kind of text and seed, joined by dots
    std::string sent;
    std::vector<float> samples;
    testsupport::TonePath path; ///< as it was drawn
};

Recording record(const Condition& condition, const std::string& kind, const std::string& seed,
                 std::size_t length = TEXT_LENGTH);

/// The same with a text of one's own.
Recording record(const Condition& condition, const std::string& text);

/// Insertions, deletions and replacements over characters sent; runs of blanks and line ends count
/// as one blank.
double errorRate(const std::string& sent, const std::string& received);

/// What may be heard where no teleprinter sends.
struct Other
{
    std::string title;
    std::function<std::vector<float>(double duration_s, const std::string& seed)> make;
};

const std::vector<Other>& others();

} // namespace teleprinterbench
