// SPDX-License-Identifier: MIT
// Takes notes of what a demodulator sees and decides in a stretch of a recording.
#pragma once

#include "signal/morse/observer.h"
#include "signal/morse/symbolsink.h"
#include "station/picture/sound.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace inspect {

enum class MarkKind : std::uint8_t { Dot, Dash, Carrier };
enum class GapKind : std::uint8_t { Inner, Character, Word };

struct Mark
{
    std::int64_t begin_us;
    std::int64_t end_us;
    double unit_us;
    MarkKind kind = MarkKind::Carrier;
    bool tooShort = false; ///< code 64
    bool tooLong = false;  ///< code 65
    bool tooSoon = false;  ///< code 66: after too short a pause
};

struct Gap
{
    std::int64_t begin_us;
    std::int64_t end_us; ///< of an open gap as long as its kind usually is
    GapKind kind = GapKind::Inner;
    bool open = false; ///< the transmission ended in it
};

struct Character
{
    std::int64_t begin_us;
    std::int64_t end_us;
    QString elements; ///< '.' and '-'
    QString text;     ///< empty where the elements have no meaning
};

/// Everything that touches the stretch, in order of time.
struct Seen : Sound
{
    Stretch stretch;
    std::vector<demodulator::FollowedStep> steps;
    std::vector<Mark> marks;
    std::vector<Gap> gaps;
    std::vector<Character> characters;
    std::vector<Transmission> transmissions;
};

/// Sink and observer of a demodulator. Memory grows with the stretch, not with the recording.
class Notes : public demodulator::SymbolSink, public demodulator::Observer
{
public:
    /// The first sample that is heard lies `begin_us` after the beginning of the recording.
    explicit Notes(const Stretch& stretch, std::int64_t begin_us = 0);

    const Seen& seen() const { return m_seen; }
    /// The stretch begins then, or where it did if that is later.
    void forgetBefore(std::int64_t time_us);

    void transmissionStarted(std::int64_t time_us) override;
    void symbol(int code, std::int64_t time_us) override;
    void transmissionStopped(std::int64_t time_us,
                             const demodulator::SignalReport& report) override;
    /// What the last code was decoded to; white space is none.
    void text(const QString& text);

    void sound(const float* samples, std::size_t count, double rate_Hz) override;
    void step(const demodulator::FollowedStep& step) override;
    void mark(std::int64_t begin_us, std::int64_t end_us, double unit_us) override;

private:
    void flushMark();
    void flushGap(std::int64_t end_us);
    void flushCharacter();

    Seen m_seen;
    std::int64_t m_begin_us;
    SoundKeeper m_sound;
    std::optional<Mark> m_mark;           // its codes may still come
    std::optional<Gap> m_gap;             // after the last mark
    std::optional<Character> m_character; // its end has not come
    std::optional<Character> m_ended;     // waits for its text
};

} // namespace inspect
