// SPDX-License-Identifier: MIT
#include "signal/band/bandteleprinters.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace demodulator {

BandTeleprinters::BandTeleprinters(const BandSettings& settings, const StepBank& bank,
                                   const ShiftedPairs& pairs, StationNumbers& numbers,
                                   ToneMemory& memory, BandSink& sink)
    : m_settings(settings)
    , m_bank(bank)
    , m_pairs(pairs)
    , m_numbers(numbers)
    , m_memory(memory)
    , m_sink(sink)
{
}

std::int64_t BandTeleprinters::stepsIn(double duration_s) const
{
    return static_cast<std::int64_t>(duration_s / m_bank.step_s());
}

void BandTeleprinters::process(std::size_t index, std::int64_t end_step)
{
    m_teleprinters[index].listener->process(end_step);
}

void BandTeleprinters::finish(std::size_t index, std::int64_t end_step)
{
    m_teleprinters[index].listener->process(end_step);
    m_teleprinters[index].listener->finish();
}

void BandTeleprinters::handOn(std::int64_t end_step,
                              const std::function<void(const IsOf&)>& endMorse)
{
    for (Teleprinter& one : m_teleprinters)
        give(one, end_step, endMorse);
}

void BandTeleprinters::give(Teleprinter& one, std::int64_t end_step,
                            const std::function<void(const IsOf&)>& endMorse)
{
    for (const TeleprinterEvent& event : one.listener->takeEvents()) {
        switch (event.kind) {
        case TeleprinterEvent::Kind::Started:
            one.line = event.line;
            if (!one.number) {
                one.number = m_numbers.add(event.line.centre_Hz(), end_step);
                m_sink.teleprinterFound(one.number, event.line, one.snr_dB);
            }
            endMorse(isOf(one));
            m_sink.teleprinterStarted(one.number, event.line, event.time_us);
            break;
        case TeleprinterEvent::Kind::Character:
            m_sink.teleprinterCharacter(one.number, event.character, event.time_us);
            break;
        case TeleprinterEvent::Kind::Stopped:
            one.line = event.line;
            m_sink.teleprinterStopped(one.number, event.line, event.time_us);
            break;
        }
    }
    const bool wasFollowed = std::exchange(one.isFollowed, one.listener->isFollowing());
    if (one.number && wasFollowed && !one.isFollowed) {
        // What it sent before, between and after its texts is no Morse either.
        endMorse(isOf(one));
        for (const double tone_Hz : {one.line.mark_Hz, one.line.space_Hz})
            m_memory.close(tone_Hz, end_step);
    }
    if (!one.listener->isReceiving())
        return;
    one.lastReceived = end_step;
    m_numbers.heard(one.number, one.line.centre_Hz(), end_step);
}

// A tone of it, or what the edges of its elements leave beside them.
BandTeleprinters::IsOf BandTeleprinters::isOf(const Teleprinter& one) const
{
    return [this, &one](double tone_Hz, double level) {
        return one.listener->offset_Hz(tone_Hz) < parameters().own_Hz ||
               one.listener->isBetween(tone_Hz, parameters().between_Hz) ||
               level <
                   m_settings.parameters.shadow.margin * one.listener->leak(tone_Hz) * one.level;
    };
}

void BandTeleprinters::forget(std::int64_t end_step)
{
    m_tried.erase(std::remove_if(m_tried.begin(), m_tried.end(),
                                 [end_step](const Tried& tried) { return tried.until < end_step; }),
                  m_tried.end());
    const auto isOver = [&](const Teleprinter& one) {
        return one.number ? end_step - one.lastReceived >=
                                stepsIn(m_settings.parameters.admission.remembered_s)
                          : end_step - one.noticed > stepsIn(parameters().within_s);
    };
    m_teleprinters.erase(std::remove_if(m_teleprinters.begin(), m_teleprinters.end(), isOver),
                         m_teleprinters.end());
}

// Also between two transmissions: it hears the next one itself.
bool BandTeleprinters::isFollowed(double tone_Hz) const
{
    return std::any_of(m_teleprinters.begin(), m_teleprinters.end(), [&](const Teleprinter& one) {
        return one.listener->offset_Hz(tone_Hz) < parameters().own_Hz;
    });
}

bool BandTeleprinters::mayBegin(double tone_Hz, double level) const
{
    return m_teleprinters.size() < parameters().most && tone_Hz >= m_settings.lowest_Hz &&
           tone_Hz <= m_settings.highest_Hz && !isOwn(tone_Hz, level) && !isFollowed(tone_Hz) &&
           !isTried(tone_Hz);
}

bool BandTeleprinters::isTried(double tone_Hz) const
{
    return std::any_of(m_tried.begin(), m_tried.end(), [&](const Tried& tried) {
        return std::fabs(tried.tone_Hz - tone_Hz) < parameters().own_Hz;
    });
}

void BandTeleprinters::notice(double tone_Hz, const std::vector<KeyedTone>& tones,
                              std::int64_t end_step, std::int64_t oldest_step)
{
    const auto pair = m_pairs.find(tone_Hz, end_step);
    if (!pair || !pair->isSure)
        return;
    for (const double own_Hz : {pair->lower_Hz, pair->upper_Hz}) {
        if (isFollowed(own_Hz) || isTried(own_Hz))
            return;
    }
    const std::int64_t until = end_step + stepsIn(parameters().within_s + parameters().notAgain_s);
    m_tried.push_back({pair->lower_Hz, until});
    m_tried.push_back({pair->upper_Hz, until});
    const Strength strength = strengthOf(*pair, end_step, oldest_step);
    Teleprinter one;
    one.listener = std::make_unique<TeleprinterListener>(m_bank, *pair, tones, parameters(),
                                                         m_settings.unshift, oldest_step);
    one.level = strength.level;
    one.snr_dB = strength.snr_dB;
    one.noticed = end_step;
    m_teleprinters.push_back(std::move(one));
}

// Of the tone that is on. Moments between two elements have less power, so the upper quarter
// counts.
BandTeleprinters::Strength BandTeleprinters::strengthOf(const ShiftedPair& pair,
                                                        std::int64_t end_step,
                                                        std::int64_t oldest_step) const
{
    std::vector<double> powers;
    double noise = 0.0; // a teleprinter leaves no gaps in which it could be measured
    for (std::int64_t step = std::max(oldest_step, end_step - stepsIn(parameters().heard_s));
         step < end_step; ++step) {
        powers.push_back(std::max(std::norm(m_bank.value(step, pair.lower_Hz)),
                                  std::norm(m_bank.value(step, pair.upper_Hz))));
        noise += m_bank.rest(step, 0.5 * (pair.lower_Hz + pair.upper_Hz));
    }
    if (powers.empty())
        return {0.0, 0.0};
    noise /= static_cast<double>(powers.size());
    const auto quarter = powers.begin() + static_cast<std::ptrdiff_t>(powers.size() * 3 / 4);
    std::nth_element(powers.begin(), quarter, powers.end());
    const double ratio = *quarter / (noise * m_bank.step_s() * 500.0);
    return {*quarter, 10.0 * std::log10(std::max(1e-3, ratio))};
}

bool BandTeleprinters::isOwn(double tone_Hz, double level) const
{
    return std::any_of(m_teleprinters.begin(), m_teleprinters.end(), [&](const Teleprinter& one) {
        return isOf(one)(tone_Hz, level) && (!one.number || one.listener->isFollowing());
    });
}

bool BandTeleprinters::hasNumber(int number) const
{
    return std::any_of(m_teleprinters.begin(), m_teleprinters.end(),
                       [number](const Teleprinter& one) { return one.number == number; });
}

std::vector<BandSignal> BandTeleprinters::signals() const
{
    std::vector<BandSignal> list;
    for (const Teleprinter& one : m_teleprinters) {
        if (one.listener->isReceiving())
            list.push_back({one.number, one.line.centre_Hz(), 0.0, one.snr_dB, one.line.kind.baud});
    }
    return list;
}

} // namespace demodulator
