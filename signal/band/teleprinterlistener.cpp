// SPDX-License-Identifier: MIT
#include "signal/band/teleprinterlistener.h"

#include "signal/band/survey.h"
#include "signal/numbers.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace demodulator {

namespace {

// The fastest of the usual speeds, Sitor-B and ASCII of 110 Bd, are looked for in any case.
constexpr double LEAST_MOST_BAUD = 110.0;

// What the listener's sound has beside the tones: less where they are so far apart that it would be
// too wide.
double besideOf(const StepBank& bank, const ShiftedPair& pair, const std::vector<KeyedTone>& tones,
                const TeleprinterParameters& own)
{
    double beside_Hz = own.mostBeside_Hz;
    for (const KeyedTone& tone : tones) {
        const double away_Hz = std::max(pair.lower_Hz - tone.tone_Hz, tone.tone_Hz - pair.upper_Hz);
        if (away_Hz > own.leastBeside_Hz)
            beside_Hz = std::min(beside_Hz,
                                 std::max(own.leastBeside_Hz, away_Hz - 2.0 * bank.spacing_Hz()));
    }
    return std::min(beside_Hz, 0.5 * (MOST_NARROW_Hz - (pair.upper_Hz - pair.lower_Hz)));
}

} // namespace

TeleprinterListener::TeleprinterListener(const StepBank& bank, const ShiftedPair& pair,
                                         const std::vector<KeyedTone>& tones,
                                         const TeleprinterParameters& parameters,
                                         teleprinter::Unshift unshift, std::int64_t begin_step)
    : TeleprinterListener(bank, pair, besideOf(bank, pair, tones, parameters), unshift, begin_step)
{
}

TeleprinterListener::TeleprinterListener(const StepBank& bank, const ShiftedPair& pair,
                                         double beside_Hz, teleprinter::Unshift unshift,
                                         std::int64_t begin_step)
    : m_unknownBy_Hz(0.5 * bank.spacing_Hz())
    , m_sound(bank, pair.lower_Hz - beside_Hz, pair.upper_Hz + beside_Hz, begin_step)
    , m_lower_Hz(pair.lower_Hz)
    , m_upper_Hz(pair.upper_Hz)
{
    teleprinter::Settings settings;
    settings.unshift = unshift;
    settings.sampleRate_Hz = m_sound.rate_Hz();
    const teleprinter::SpectrumParameters& spectrum = settings.parameters.spectrum;
    settings.known.mostBaud =
        std::max(LEAST_MOST_BAUD, (beside_Hz - spectrum.noiseReach_Hz) / spectrum.noiseDistance);
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
    return std::max(0.0, offset_Hz - (m_isKnown ? 0.0 : m_unknownBy_Hz));
}

bool TeleprinterListener::isBetween(double tone_Hz, double within_Hz) const
{
    return tone_Hz > m_lower_Hz && tone_Hz < m_upper_Hz && tone_Hz < m_lower_Hz + within_Hz &&
           tone_Hz > m_upper_Hz - within_Hz;
}

// What the changes from one tone to the other give at a tone: each is a step of both, and falls off
// with the distance from them.
double TeleprinterListener::edges(double tone_Hz) const
{
    constexpr double MEAN_WINDOW_s = 0.5 * WINDOW_STEPS * STEP_s; // a Hann window's mean is a half
    const double changes = std::max(1.0, m_baud * MEAN_WINDOW_s);
    const double distances_Hz2 = std::fabs(tone_Hz - m_lower_Hz) * std::fabs(tone_Hz - m_upper_Hz);
    const double amplitude =
        (m_upper_Hz - m_lower_Hz) / (TWO_PI * MEAN_WINDOW_s * std::max(1.0, distances_Hz2));
    return std::min(1.0, changes * amplitude * amplitude);
}

double TeleprinterListener::leak(double tone_Hz) const
{
    const double amplitude = std::sqrt(Survey::leak(tone_Hz - m_lower_Hz)) +
                             std::sqrt(Survey::leak(tone_Hz - m_upper_Hz));
    return std::max(amplitude * amplitude, m_isKnown ? edges(tone_Hz) : 0.0);
}

void TeleprinterListener::transmissionStarted(const teleprinter::Line& line, std::int64_t time_us)
{
    m_isReceiving = true;
    std::tie(m_lower_Hz, m_upper_Hz) =
        std::minmax(m_sound.base_Hz() + line.mark_Hz, m_sound.base_Hz() + line.space_Hz);
    m_baud = line.baud;
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
