// SPDX-License-Identifier: MIT
#include "signal/band/bandmemory.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace demodulator {

namespace {

// Far more signals than end within the seconds that are kept.
constexpr std::size_t MOST_CLOSED = 4096;

template <typename Entry>
void dropUntil(std::vector<Entry>& list, std::int64_t step)
{
    list.erase(std::remove_if(list.begin(), list.end(),
                              [&](const Entry& entry) { return entry.until_step < step; }),
               list.end());
}

} // namespace

StationNumbers::StationNumbers(const AdmissionParameters& parameters)
    : m_parameters(parameters)
{
}

int StationNumbers::find(double tone_Hz, const std::function<bool(int)>& isInUse) const
{
    const Station* nearest = nullptr;
    for (const Station& station : m_stations) {
        const double distance_Hz = std::fabs(station.tone_Hz - tone_Hz);
        if (distance_Hz > m_parameters.comesBack_Hz || isInUse(station.number))
            continue;
        if (!nearest || distance_Hz < std::fabs(nearest->tone_Hz - tone_Hz))
            nearest = &station;
    }
    return nearest ? nearest->number : 0;
}

int StationNumbers::add(double tone_Hz, std::int64_t step)
{
    m_stations.push_back({++m_numbers, tone_Hz, step});
    return m_numbers;
}

void StationNumbers::heard(int number, double tone_Hz, std::int64_t step)
{
    for (Station& station : m_stations) {
        if (station.number == number)
            station = {number, tone_Hz, step};
    }
}

std::vector<int> StationNumbers::forget(std::int64_t step)
{
    std::vector<int> numbers;
    for (const Station& station : m_stations) {
        if (station.lastHeard_step <= step)
            numbers.push_back(station.number);
    }
    m_stations.erase(
        std::remove_if(m_stations.begin(), m_stations.end(),
                       [&](const Station& station) { return station.lastHeard_step <= step; }),
        m_stations.end());
    return numbers;
}

std::vector<int> StationNumbers::clear()
{
    return forget(INT64_MAX);
}

ToneMemory::ToneMemory(const AttentionParameters& parameters)
    : m_parameters(parameters)
{
}

void ToneMemory::close(double tone_Hz, std::int64_t until_step)
{
    if (m_closed.size() == MOST_CLOSED)
        m_closed.erase(m_closed.begin());
    m_closed.push_back({tone_Hz, until_step});
}

void ToneMemory::refuse(double tone_Hz, double level, std::int64_t until_step)
{
    m_refused.push_back({tone_Hz, level, until_step});
}

std::int64_t ToneMemory::heardUntil(double tone_Hz) const
{
    std::int64_t until_step = 0;
    for (const Closed& closed : m_closed) {
        if (std::fabs(closed.tone_Hz - tone_Hz) < m_parameters.otherTone_Hz)
            until_step = std::max(until_step, closed.until_step);
    }
    return until_step;
}

bool ToneMemory::isRefused(double tone_Hz, double level) const
{
    return std::any_of(m_refused.begin(), m_refused.end(), [&](const Refused& refused) {
        return std::fabs(refused.tone_Hz - tone_Hz) < m_parameters.sameTone_Hz &&
               level < m_parameters.louderCandidate * refused.level;
    });
}

void ToneMemory::forget(std::int64_t oldest_step, std::int64_t now_step)
{
    dropUntil(m_closed, oldest_step);
    dropUntil(m_refused, now_step);
}

} // namespace demodulator
