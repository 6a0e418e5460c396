// SPDX-License-Identifier: MIT
#include "signal/band/teleprinterlistener.h"

#include "signal/band/survey.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace demodulator {

namespace {

// So much beside the tones shows how strong the noise is, even that beside the fastest, and lets
// the tones drift. It is less where they are so far apart that the sound would be too wide.
constexpr double MOST_BESIDE_Hz = 700.0;

// So far a pair's tones may be off before its line is known: half the spacing of the bank's
// filters.
constexpr double UNKNOWN_BY_Hz = 31.0;

double besideOf(const ShiftedPair& pair)
{
    return std::min(MOST_BESIDE_Hz, 0.5 * (MOST_NARROW_Hz - (pair.upper_Hz - pair.lower_Hz)));
}

} // namespace

TeleprinterListener::TeleprinterListener(const StepBank& bank, const ShiftedPair& pair,
                                         teleprinter::Unshift unshift, std::int64_t begin_step)
    : m_sound(bank, pair.lower_Hz - besideOf(pair), pair.upper_Hz + besideOf(pair), begin_step)
    , m_lower_Hz(pair.lower_Hz)
    , m_upper_Hz(pair.upper_Hz)
{
    teleprinter::Settings settings;
    settings.unshift = unshift;
    settings.sampleRate_Hz = m_sound.rate_Hz();
    const teleprinter::SpectrumParameters& spectrum = settings.parameters.spectrum;
    settings.known.mostBaud = (besideOf(pair) - spectrum.noiseReach_Hz) / spectrum.noiseDistance;
    settings.known.centre_Hz = 0.5 * (m_lower_Hz + m_upper_Hz) - m_sound.base_Hz();
    m_receiver.emplace(settings, static_cast<teleprinter::TextSink&>(*this));
}

TeleprinterListener::~TeleprinterListener() = default;

void TeleprinterListener::process(std::int64_t end_step)
{
    m_samples.clear();
    m_sound.read(end_step, m_samples);
    m_receiver->push(m_samples.data(), m_samples.size());
}

void TeleprinterListener::finish()
{
    m_receiver->finish();
}

std::vector<TeleprinterEvent> TeleprinterListener::takeEvents()
{
    return std::exchange(m_events, {});
}

double TeleprinterListener::offset_Hz(double tone_Hz) const
{
    const double offset_Hz =
        std::min(std::fabs(tone_Hz - m_lower_Hz), std::fabs(tone_Hz - m_upper_Hz));
    return std::max(0.0, offset_Hz - (m_isKnown ? 0.0 : UNKNOWN_BY_Hz));
}

bool TeleprinterListener::isBetween(double tone_Hz, double within_Hz) const
{
    return tone_Hz > m_lower_Hz && tone_Hz < m_upper_Hz && tone_Hz < m_lower_Hz + within_Hz &&
           tone_Hz > m_upper_Hz - within_Hz;
}

double TeleprinterListener::leak(double tone_Hz) const
{
    const double amplitude = std::sqrt(Survey::leak(tone_Hz - m_lower_Hz)) +
                             std::sqrt(Survey::leak(tone_Hz - m_upper_Hz));
    return amplitude * amplitude;
}

void TeleprinterListener::transmissionStarted(const teleprinter::Line& line, std::int64_t time_us)
{
    m_isReceiving = true;
    std::tie(m_lower_Hz, m_upper_Hz) =
        std::minmax(m_sound.base_Hz() + line.mark_Hz, m_sound.base_Hz() + line.space_Hz);
    m_isKnown = true;
    note(TeleprinterEvent::Kind::Started, 0, time_us, line);
}

void TeleprinterListener::character(std::uint8_t character, std::int64_t time_us)
{
    note(TeleprinterEvent::Kind::Character, character, time_us, {});
}

void TeleprinterListener::transmissionStopped(const teleprinter::Line& line, std::int64_t time_us)
{
    m_isReceiving = false;
    note(TeleprinterEvent::Kind::Stopped, 0, time_us, line);
}

void TeleprinterListener::note(TeleprinterEvent::Kind kind, std::uint8_t character,
                               std::int64_t time_us, const teleprinter::Line& line)
{
    TeleprinterEvent event = {kind, character, time_us, line};
    event.time_us = std::max<std::int64_t>(0, time_us + std::llround(1e6 * m_sound.begin_s()));
    event.line.mark_Hz += m_sound.base_Hz();
    event.line.space_Hz += m_sound.base_Hz();
    m_events.push_back(event);
}

} // namespace demodulator
