// SPDX-License-Identifier: MIT
#include "signal/morse/classifier.h"

#include "morse/symbolcodes.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

// What a hand does not make of a dot, of a gap within a character and of a dash: codes 64 to 66.
constexpr double SHORTEST_DOT_units = 0.5;
constexpr double SHORTEST_PAUSE_units = 0.4;
constexpr double LONGEST_DASH_units = 5.0;
// A transmission ends after so long: six word gaps, but no sooner than a pause for thought.
constexpr double ENDING_SILENCE_units = 45.0;
constexpr double ENDING_SILENCE_us = 3e6;
// Without any noise a ratio says nothing.
constexpr double LOWEST_SNR_dB = -30.0;
constexpr double HIGHEST_SNR_dB = 99.0;

} // namespace

void Classifier::mark(const DecidedMark& mark)
{
    if (m_observer)
        m_observer->mark(mark.begin_us, mark.end_us, mark.unit_us);
    if (!m_active) {
        m_active = true;
        m_sums = {};
        m_sink.transmissionStarted(mark.begin_us);
    } else if (m_characterOpen && static_cast<double>(mark.begin_us - m_markEnd_us) <
                                      SHORTEST_PAUSE_units * mark.unit_us) {
        // A mark that was found late may reach back into the one that was emitted before.
        m_sink.symbol(eSYMBOL_PAUSE_TOO_SHORT, std::max(mark.begin_us, m_markEnd_us));
    }
    m_markEnd_us = mark.end_us;
    const auto length_us = static_cast<double>(mark.end_us - mark.begin_us);
    m_sums.length_us += length_us;
    m_sums.unit_us += length_us * mark.unit_us;
    m_sums.tone_Hz += length_us * mark.tone_Hz;
    m_sums.snr += length_us * mark.snr;
    if (mark.kind == Kind::Carrier) {
        m_sink.symbol(eSYMBOL_DASH_TOO_LONG, mark.end_us);
        return;
    }
    m_characterOpen = true;
    m_wordOpen = true;
    m_sink.symbol(mark.kind == Kind::Dash ? eSYMBOL_DASH : eSYMBOL_DOT, mark.end_us);
    const double length_units = length_us / mark.unit_us;
    if (length_units < SHORTEST_DOT_units)
        m_sink.symbol(eSYMBOL_DOT_TOO_SHORT, mark.end_us);
    else if (length_units > LONGEST_DASH_units)
        m_sink.symbol(eSYMBOL_DASH_TOO_LONG, mark.end_us);
}

SignalReport Classifier::report() const
{
    if (!(m_sums.length_us > 0.0))
        return {};
    SignalReport report;
    report.tone_Hz = m_sums.tone_Hz / m_sums.length_us;
    report.speed_wpm = speedOf_wpm(m_sums.unit_us / m_sums.length_us / 1e6);
    const double snr = m_sums.snr / m_sums.length_us;
    report.snr_dB = snr > 0.0 ? std::clamp(10.0 * std::log10(snr), LOWEST_SNR_dB, HIGHEST_SNR_dB)
                              : LOWEST_SNR_dB;
    return report;
}

void Classifier::gap(Kind kind)
{
    if (kind == Kind::ElementGap)
        return;
    if (m_characterOpen) {
        m_characterOpen = false;
        m_sink.symbol(eSYMBOL_NEW_CHAR, m_markEnd_us);
    }
    if (m_wordOpen && kind != Kind::CharacterGap) {
        m_wordOpen = false;
        m_sink.symbol(eSYMBOL_NEW_WORD, m_markEnd_us);
    }
}

void Classifier::gapSoFar(double length_us, double unit_us, double characterThreshold,
                          double wordThreshold)
{
    if (!m_active)
        return;
    if (length_us > characterThreshold * unit_us)
        gap(Kind::CharacterGap);
    if (length_us > wordThreshold * unit_us)
        gap(Kind::WordGap);
    if (length_us > endingSilence_us(unit_us))
        stop();
}

void Classifier::stop()
{
    if (!m_active)
        return;
    gap(Kind::CharacterGap);
    m_active = false;
    m_wordOpen = false;
    m_sink.transmissionStopped(m_markEnd_us, report());
}

double Classifier::endingSilence_us(double unit_us)
{
    return std::max(ENDING_SILENCE_us, ENDING_SILENCE_units * unit_us);
}

} // namespace demodulator
