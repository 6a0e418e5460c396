// SPDX-License-Identifier: MIT
#include "band/score.h"

#include "support/morsecode.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

namespace bands {

namespace {

// The frequency that a tone belongs to, or as many as there are.
std::size_t nearest(const Band& band, double tone_Hz)
{
    std::size_t best = band.frequencies.size();
    double least_Hz = NEAR_Hz;
    for (std::size_t i = 0; i < band.frequencies.size(); ++i) {
        const double distance_Hz = std::fabs(band.frequencies[i].tone_Hz - tone_Hz);
        if (distance_Hz <= least_Hz) {
            least_Hz = distance_Hz;
            best = i;
        }
    }
    return best;
}

std::size_t characters(const std::string& text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return c > ' '; }));
}

double errorOf(const Frequency& frequency, const std::string& text)
{
    return std::min(1.0, testsupport::characterErrorRate(frequency.sent(), text));
}

std::vector<Received> inOrder(std::vector<Received> received)
{
    std::stable_sort(received.begin(), received.end(),
                     [](const Received& a, const Received& b) { return a.begin_s < b.begin_s; });
    return received;
}

} // namespace

double Score::meanError() const
{
    return std::accumulate(errors.begin(), errors.end(), 0.0) / static_cast<double>(errors.size());
}

double Score::straysPerMinute() const
{
    return 60.0 * static_cast<double>(strays) / duration_s;
}

Score score(const Band& band, const std::vector<Received>& received)
{
    Score result;
    result.duration_s = band.duration_s;
    std::vector<std::string> texts(band.frequencies.size());
    for (const Received& one : inOrder(received)) {
        const std::size_t at = nearest(band, one.tone_Hz);
        if (at == texts.size())
            result.strays += characters(one.text);
        else
            texts[at] += one.text + " ";
    }
    for (std::size_t i = 0; i < texts.size(); ++i)
        result.errors.push_back(errorOf(band.frequencies[i], texts[i]));
    return result;
}

Score scoreBestBin(const Band& band, const std::vector<Received>& received)
{
    Score result;
    result.duration_s = band.duration_s;
    std::map<double, std::string> bins;
    for (const Received& one : inOrder(received)) {
        bins[one.tone_Hz] += one.text;
        if (nearest(band, one.tone_Hz) == band.frequencies.size())
            result.strays += characters(one.text);
    }
    for (const Frequency& frequency : band.frequencies) {
        double best = 1.0;
        for (const auto& [tone_Hz, text] : bins) {
            if (std::fabs(tone_Hz - frequency.tone_Hz) <= 2.0 * NEAR_Hz)
                best = std::min(best, errorOf(frequency, text));
        }
        result.errors.push_back(best);
    }
    return result;
}

} // namespace bands
