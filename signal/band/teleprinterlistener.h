// SPDX-License-Identifier: MIT
// One teleprinter of a band: a receiver that hears the part of the band around two tones, and what
// it gave since it was last asked. Listeners share nothing that changes, so that each may work in a
// thread of its own.
#pragma once

#include "signal/band/narrowsound.h"
#include "signal/band/shiftedpairs.h"
#include "signal/teleprinter/teleprinterreceiver.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace demodulator {

/// What a receiver gave, kept until it can be handed on in order. Tones are those of the band.
struct TeleprinterEvent
{
    enum class Kind { Started, Character, Stopped } kind;
    std::uint8_t character;
    std::int64_t time_us;
    teleprinter::Line line; ///< of what has started or stopped
};

class TeleprinterListener : private teleprinter::TextSink
{
public:
    /// From a step on that the bank still has. Keyed `tones` that stand far enough from the pair
    /// are kept out of what it hears.
    TeleprinterListener(const StepBank& bank, const ShiftedPair& pair,
                        const std::vector<KeyedTone>& tones,
                        const TeleprinterParameters& parameters, teleprinter::Unshift unshift,
                        std::int64_t begin_step);
    ~TeleprinterListener() override;
    TeleprinterListener(const TeleprinterListener&) = delete;
    TeleprinterListener& operator=(const TeleprinterListener&) = delete;

    /// Goes on to `end_step`.
    void process(std::int64_t end_step);
    void finish();
    std::vector<TeleprinterEvent> takeEvents();

    /// A transmission goes on.
    bool isReceiving() const { return m_isReceiving; }
    /// A signal is there, also before, between and after its transmissions.
    bool isFollowing() const { return m_receiver->isFollowing(); }
    /// How far a tone is from the nearer of its own, at least.
    double offset_Hz(double tone_Hz) const;
    /// Whether a tone is between them, and so near to both.
    bool isBetween(double tone_Hz, double within_Hz) const;
    /// What both of them, each of power 1, give at a tone by being keyed, at most.
    double leak(double tone_Hz) const;

private:
    TeleprinterListener(const StepBank& bank, const ShiftedPair& pair, double beside_Hz,
                        teleprinter::Unshift unshift, std::int64_t begin_step);
    double edges(double tone_Hz) const;
    void transmissionStarted(const teleprinter::Line& line, std::int64_t time_us) override;
    void character(std::uint8_t character, std::int64_t time_us) override;
    void transmissionStopped(const teleprinter::Line& line, std::int64_t time_us) override;
    void note(TeleprinterEvent::Kind kind, std::uint8_t character, std::int64_t time_us,
              const teleprinter::Line& line);

    /// So far a pair's tones may be off before its line is known: as a filter shows them.
    double m_unknownBy_Hz;
    NarrowSound m_sound;
    double m_lower_Hz; ///< of the last transmission, or as the pair was found
    double m_upper_Hz;
    double m_baud = 0.0;    ///< of the last transmission
    bool m_isKnown = false; ///< there was one
    std::optional<teleprinter::Receiver> m_receiver;
    std::vector<float> m_samples;
    std::vector<TeleprinterEvent> m_events;
    bool m_isReceiving = false;
};

} // namespace demodulator
