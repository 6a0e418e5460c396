// SPDX-License-Identifier: MIT
#include "station/picture/teleprinternotes.h"

#include <algorithm>

namespace inspect {

using teleprinter::SeenWord;

TeleprinterNotes::TeleprinterNotes(const Stretch& stretch, std::int64_t begin_us)
    : m_begin_us(begin_us)
    , m_sound(stretch, begin_us)
{
    m_seen.stretch = stretch;
}

void TeleprinterNotes::forgetBefore(std::int64_t time_us)
{
    if (time_us <= m_seen.stretch.from_us)
        return;
    m_seen.stretch.from_us = time_us;
    m_sound.forgetBefore(time_us, m_seen);
    forget(m_seen.words,
           [time_us](const TeleprinterWord& word) { return word.seen.end_us <= time_us; });
    forget(m_seen.transmissions,
           [time_us](const Transmission& one) { return one.end_us && *one.end_us <= time_us; });
}

void TeleprinterNotes::sound(const float* samples, std::size_t count, double rate_Hz)
{
    m_sound.hear(samples, count, rate_Hz, m_seen);
}

void TeleprinterNotes::word(const SeenWord& word)
{
    SeenWord own = word;
    own.begin_us += m_begin_us;
    own.end_us += m_begin_us;
    if (m_seen.stretch.touches(own.begin_us, own.end_us))
        m_seen.words.push_back({own, {}});
}

void TeleprinterNotes::transmissionStarted(const teleprinter::Line& line, std::int64_t time_us)
{
    m_seen.transmissions.push_back({m_begin_us + time_us, std::nullopt});
    if (m_begin_us + time_us < m_seen.stretch.to_us)
        m_seen.line = line;
}

void TeleprinterNotes::character(std::uint8_t /*character*/, std::int64_t time_us)
{
    m_character_us = m_begin_us + time_us;
}

void TeleprinterNotes::text(const QString& text)
{
    const auto word =
        std::find_if(m_seen.words.rbegin(), m_seen.words.rend(), [this](const TeleprinterWord& at) {
            return at.seen.kind == SeenWord::Kind::Character && at.seen.end_us == m_character_us;
        });
    if (word != m_seen.words.rend())
        word->text += text.trimmed();
}

void TeleprinterNotes::transmissionStopped(const teleprinter::Line& /*line*/, std::int64_t time_us)
{
    const std::int64_t end_us = m_begin_us + time_us;
    m_seen.transmissions.back().end_us = end_us;
    if (end_us <= m_seen.stretch.from_us) {
        m_seen.transmissions.pop_back();
        m_seen.line.reset();
    }
}

} // namespace inspect
