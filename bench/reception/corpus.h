// SPDX-License-Identifier: MIT
// The corpus by which reception is judged: conditions and texts, each recording made from its name
// alone.
#pragma once

#include "support/keyer.h"
#include "support/random.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace reception {

constexpr double RATE_Hz = 8000.0;

/// A second station answers, at its own speed, pitch and strength: overs of so many characters, to
/// the end of a word, how far its tone is off, and by how much it may be weaker.
struct Answers
{
    std::size_t leastOver = 100;
    std::size_t mostOver = 100;
    double leastOffset_Hz = 30.0;
    double mostOffset_Hz = 200.0;
    double mostWeaker_dB = 10.0;
};

/// One row of the table.
struct Condition
{
    std::string name;  ///< short, for file names
    std::string title; ///< as in the table
    testsupport::Hand hand;
    testsupport::Path path;
    /// What is drawn for every recording beside its tone; may be empty.
    std::function<void(testsupport::Hand&, testsupport::Path&, testsupport::Random&)> draw;
    bool keyDown = false; ///< all the while, for as long as the text takes
    std::optional<Answers> answers;
};

const std::vector<Condition>& conditions();

/// The first `count` seeds of a set. Texts, keying and noise of two seeds differ in everything.
std::vector<std::string> seeds(const std::string& set, std::size_t count);

/// Kinds of text: "prose", "contact", "groups".
const std::vector<std::string>& kinds();

constexpr std::size_t TEXT_LENGTH = 600;

std::string text(const std::string& kind, const std::string& seed,
                 std::size_t length = TEXT_LENGTH);

struct Recording
{
    std::string name; ///< condition, kind and seed, joined by dots
    std::string sent;
    std::vector<float> samples;
    double tone_Hz;
    double speed_wpm;
};

Recording record(const Condition& condition, const std::string& kind, const std::string& seed,
                 std::size_t length = TEXT_LENGTH);

/// Sounds without Morse, in which nothing should be found.
struct Silence
{
    std::string title;
    std::function<std::vector<float>(double duration_s, const std::string& seed)> make;
};

const std::vector<Silence>& silences();

} // namespace reception
