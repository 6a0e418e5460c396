// SPDX-License-Identifier: MIT
#include "signal/morse/classifier.h"

#include <algorithm>

namespace demodulator {

namespace {

enum Code {
    DOT = 0,
    DASH = 1,
    END_OF_CHARACTER = 3,
    END_OF_WORD = 4,
    DOT_TOO_SHORT = 64,
    DASH_TOO_LONG = 65,
    PAUSE_TOO_SHORT = 66,
};

constexpr double SHORTEST_DOT_units = 0.5;
constexpr double SHORTEST_PAUSE_units = 0.4;
constexpr double LONGEST_DASH_units = 5.0;
constexpr double ENDING_SILENCE_units = 45.0;
constexpr double ENDING_SILENCE_us = 3e6;

} // namespace

SymbolSink::~SymbolSink() = default;

void Classifier::mark(Kind kind, std::int64_t begin_us, std::int64_t end_us, double unit_us)
{
    if (m_witness)
        m_witness->mark(begin_us, end_us, unit_us);
    if (!m_active) {
        m_active = true;
        m_sink.transmissionStarted(begin_us);
    } else if (m_characterOpen &&
               static_cast<double>(begin_us - m_markEnd_us) < SHORTEST_PAUSE_units * unit_us) {
        // A mark that was found late may reach back into the one that was given before.
        m_sink.symbol(PAUSE_TOO_SHORT, std::max(begin_us, m_markEnd_us));
    }
    m_markEnd_us = end_us;
    const double length_units = static_cast<double>(end_us - begin_us) / unit_us;
    if (kind == Kind::Carrier) {
        m_sink.symbol(DASH_TOO_LONG, end_us);
        return;
    }
    m_characterOpen = true;
    m_wordOpen = true;
    m_sink.symbol(kind == Kind::Dash ? DASH : DOT, end_us);
    if (length_units < SHORTEST_DOT_units)
        m_sink.symbol(DOT_TOO_SHORT, end_us);
    else if (length_units > LONGEST_DASH_units)
        m_sink.symbol(DASH_TOO_LONG, end_us);
}

void Classifier::gap(Kind kind)
{
    if (kind == Kind::ElementGap)
        return;
    if (m_characterOpen) {
        m_characterOpen = false;
        m_sink.symbol(END_OF_CHARACTER, m_markEnd_us);
    }
    if (m_wordOpen && kind != Kind::CharacterGap) {
        m_wordOpen = false;
        m_sink.symbol(END_OF_WORD, m_markEnd_us);
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
    m_sink.transmissionStopped(m_markEnd_us);
}

double Classifier::endingSilence_us(double unit_us)
{
    return std::max(ENDING_SILENCE_us, ENDING_SILENCE_units * unit_us);
}

} // namespace demodulator
