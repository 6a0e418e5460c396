// SPDX-License-Identifier: MIT
#include "signal/band/teleprinterlistener.h"

#include "signal/band/survey.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace demodulator {

namespace {

// So much beside the tones shows how strong the noise is, and lets them drift.
constexpr double BESIDE_Hz = 400.0;
// Elements of faster ones are shorter than the bank's windows, and their noise would be measured
// farther out.
constexpr double MOST_BAUD = 110.0;

} // namespace

TeleprinterListener::TeleprinterListener(const StepBank& bank, double lower_Hz, double upper_Hz,
                                         std::int64_t begin_step)
    : m_sound(bank, lower_Hz - BESIDE_Hz, upper_Hz + BESIDE_Hz, begin_step)
    , m_lower_Hz(lower_Hz)
    , m_upper_Hz(upper_Hz)
{
    teleprinter::Settings settings;
    settings.sampleRate_Hz = m_sound.rate_Hz();
    settings.known.mostBaud = MOST_BAUD;
    settings.known.shift_Hz = upper_Hz - lower_Hz;
    settings.known.centre_Hz = 0.5 * (lower_Hz + upper_Hz) - m_sound.base_Hz();
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
    return std::min(std::fabs(tone_Hz - m_lower_Hz), std::fabs(tone_Hz - m_upper_Hz));
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
