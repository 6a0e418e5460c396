// SPDX-License-Identifier: MIT
// What a receiver for a band remembers of signals that it does not follow any more: who sent where,
// up to when that was emitted, and what was no signal.
#pragma once

#include "signal/band/parameters.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace demodulator {

/// Numbers of stations, each with its tone.
class StationNumbers
{
public:
    explicit StationNumbers(const AdmissionParameters& parameters);

    /// Of the station nearest to a tone whose number is not in use; 0 when nobody sent there.
    int find(double tone_Hz, const std::function<bool(int)>& isInUse) const;
    /// Gives a new one.
    int add(double tone_Hz, std::int64_t step);
    void heard(int number, double tone_Hz, std::int64_t step);
    /// Forgets those last heard at that step or before, and returns their numbers.
    std::vector<int> forget(std::int64_t step);
    /// Forgets all of them.
    std::vector<int> clear();

private:
    struct Station
    {
        int number;
        double tone_Hz;
        std::int64_t lastHeard_step;
    };

    AdmissionParameters m_parameters;
    std::vector<Station> m_stations; // in order of their numbers
    int m_numbers = 0;
};

/// Tones that need not be looked at, or not again.
class ToneMemory
{
public:
    explicit ToneMemory(const AttentionParameters& parameters);

    /// What was sent at a tone has been emitted up to a step.
    void close(double tone_Hz, std::int64_t until_step);
    /// A tone of that level is not a signal, until a step.
    void refuse(double tone_Hz, double level, std::int64_t until_step);

    /// The last step emitted of what was sent near a tone, or 0.
    std::int64_t heardUntil(double tone_Hz) const;
    bool isRefused(double tone_Hz, double level) const;

    /// Forgets what was emitted up to a step that is no longer kept, and what was refused until
    /// now.
    void forget(std::int64_t oldest_step, std::int64_t now_step);

private:
    struct Closed
    {
        double tone_Hz;
        std::int64_t until_step;
    };
    struct Refused
    {
        double tone_Hz;
        double level;
        std::int64_t until_step;
    };

    AttentionParameters m_parameters;
    std::vector<Closed> m_closed;
    std::vector<Refused> m_refused;
};

} // namespace demodulator
