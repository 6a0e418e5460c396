// SPDX-License-Identifier: MIT
// Notices when another station continues where one stopped: after a pause the marks have another
// tone or another strength.
#pragma once

#include "signal/band/parameters.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace demodulator {

/// A mark as it was heard at the tone of its chain.
struct StationMark
{
    std::int64_t begin_step;
    std::int64_t end_step;
    double tone_Hz;
    double signal;     ///< square of half the key-down amplitude
    double unit_steps; ///< length of a dot at the speed it was heard at
};

class StationChange
{
public:
    enum class Verdict {
        Same,    ///< the station goes on
        Waiting, ///< there was a pause, and too little has been heard since
        Other,   ///< another one has begun with others().front(), and is taken for the station now
    };

    explicit StationChange(double step_s, const ChangeParameters& parameters = {})
        : m_step_s(step_s)
        , m_parameters(parameters)
    {
    }

    Verdict add(const StationMark& mark);
    /// No more marks are to be waited for.
    Verdict decide();

    /// Marks since the last pause that are not judged yet; after Other, those of the new station.
    const std::vector<StationMark>& others() const { return m_others; }
    /// Of such marks: means, the longer ones counting more.
    template <typename Marks>
    static StationMark meanOf(const Marks& marks)
    {
        StationMark mean = {};
        double length = 0.0;
        for (const StationMark& mark : marks) {
            const auto weight = static_cast<double>(mark.end_step - mark.begin_step);
            length += weight;
            mean.tone_Hz += weight * mark.tone_Hz;
            mean.signal += weight * mark.signal;
            mean.unit_steps += weight * mark.unit_steps;
        }
        mean.tone_Hz /= length;
        mean.signal /= length;
        mean.unit_steps /= length;
        return mean;
    }

    /// The last marks before them.
    const std::deque<StationMark>& own() const { return m_own; }
    std::int64_t lastOwn_step() const { return m_lastOwn; }

private:
    bool areOther() const;

    double m_step_s;
    ChangeParameters m_parameters;
    std::deque<StationMark> m_own;
    std::vector<StationMark> m_others;
    std::int64_t m_lastOwn = 0;
};

} // namespace demodulator
