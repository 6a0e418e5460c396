// SPDX-License-Identifier: MIT
#include "signal/band/shadows.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace demodulator {

namespace {

// Where else a signal is to be found: at so many times its frequency, folded at the rate.
struct Ghost
{
    int multiple;
    double power; // of the signal's, at most
    double reach_Hz;
};
constexpr Ghost COMPLEX_GHOSTS[] = {{-1, 0.01, 30.0},  // I and Q that are not balanced
                                    {-3, 0.05, 90.0},  // clipped
                                    {5, 0.02, 150.0}}; // clipped
constexpr Ghost SOUND_GHOSTS[] = {
    {2, 0.03, 60.0}, {3, 0.05, 90.0}, {5, 0.02, 150.0}}; // overdriven, clipped

} // namespace

// Power that a signal may give at some frequency beside its own, as a share.
double Shadows::ghostAt(double tone_Hz, double frequency_Hz) const
{
    double share = 0.0;
    const auto add = [&](const Ghost& ghost) {
        const double from_Hz =
            std::remainder(frequency_Hz - ghost.multiple * tone_Hz, m_format.rate_Hz);
        if (std::fabs(from_Hz) < ghost.reach_Hz)
            share = std::max(share, ghost.power);
    };
    if (m_format.isComplex)
        std::for_each(std::begin(COMPLEX_GHOSTS), std::end(COMPLEX_GHOSTS), add);
    else
        std::for_each(std::begin(SOUND_GHOSTS), std::end(SOUND_GHOSTS), add);
    return share;
}

// At most so much are a signal's clicks at one side: what is to be seen as far to its other side.
double Shadows::mirrored(std::int64_t frame, double mirror_Hz, double noise) const
{
    const std::int64_t last = m_survey.end() - 1;
    const std::int64_t first = std::max<std::int64_t>(0, last - m_parameters.compared_frames + 1);
    double power = 0.0;
    for (std::int64_t near = std::max(frame - 1, first); near <= std::min(frame + 1, last); ++near)
        power = std::max(power, m_survey.power(near, mirror_Hz));
    return m_parameters.margin * std::max(0.0, power - noise);
}

bool Shadows::standsOut(const SignalGuess& tone, const std::vector<const Listener*>& others) const
{
    struct Shadow
    {
        const Listener* of;
        double clicks;    // share of its power, at most
        double ghost;     // likewise
        double mirror_Hz; // where its clicks are to be seen, too
        double least;     // power of the other one, below which it is silent
    };
    const double edge_Hz = 0.5 * m_format.rate_Hz;
    const double lowest_Hz = m_format.isComplex ? -edge_Hz : 0.0;
    std::vector<Shadow> shadows;
    const double noise = m_survey.noisePower(tone.noise);
    for (const Listener* const other : others) {
        const double level = other->heard().signal;
        const double offset_Hz = tone.tone_Hz - other->tone_Hz();
        const double clicks = std::fabs(offset_Hz) < m_parameters.clicksReach_Hz
                                  ? m_parameters.margin * Survey::leak(offset_Hz)
                                  : 0.0;
        const double ghost = m_parameters.margin * ghostAt(other->tone_Hz(), tone.tone_Hz);
        if (level > m_parameters.stronger * tone.signal &&
            (clicks + ghost) * level > m_parameters.negligible * noise)
            shadows.push_back(
                {other, clicks, ghost, other->tone_Hz() - offset_Hz, m_parameters.keyDown * level});
    }
    if (shadows.empty())
        return true;
    const std::int64_t end = m_survey.end();
    const std::int64_t count = std::min<std::int64_t>(m_parameters.compared_frames, end);
    double sum = 0.0;
    for (std::int64_t frame = end - count; frame < end; ++frame) {
        double explained = 0.0;
        for (const Shadow& shadow : shadows) {
            // What is left while it is silent may be this tone itself, heard at that of the other.
            const auto power = static_cast<double>(shadow.of->powerAround(frame));
            if (power < shadow.least)
                continue;
            double clicks = shadow.clicks * power;
            if (shadow.mirror_Hz > lowest_Hz && shadow.mirror_Hz < edge_Hz)
                clicks = std::min(clicks, mirrored(frame, shadow.mirror_Hz, noise));
            explained += std::max(clicks, shadow.ghost * power);
        }
        sum += std::max(0.0, m_survey.power(frame, tone.tone_Hz) - explained);
    }
    return sum > m_parameters.leastExcess * noise * static_cast<double>(count);
}

} // namespace demodulator
