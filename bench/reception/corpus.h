// SPDX-License-Identifier: MIT
// The corpus by which reception is judged: conditions and texts, each recording made from its name
// alone.
#pragma once

#include "support/keyer.h"

#include <string>
#include <vector>

namespace reception {

constexpr double RATE_Hz = 8000.0;

/// One row of the table.
struct Condition
{
    std::string name;  ///< short, for file names
    std::string title; ///< as in the table
    testsupport::Hand hand;
    testsupport::Path path;
    bool twoStations = false; ///< a second one answers, at its own speed, pitch and strength
};

const std::vector<Condition>& conditions();

/// Seeds of a set: texts and keying of two sets, one to tune on and one to report on, differ in
/// everything.
std::vector<std::string> seeds(const std::string& set);

/// Kinds of text: "prose", "contact", "groups".
const std::vector<std::string>& kinds();

/// About 600 characters.
std::string text(const std::string& kind, const std::string& seed);

struct Recording
{
    std::string name; ///< condition, kind and seed, joined by dots
    std::string sent;
    std::vector<float> samples;
    double tone_Hz;
    double speed_wpm;
};

Recording record(const Condition& condition, const std::string& kind, const std::string& seed);

} // namespace reception
