// SPDX-License-Identifier: MIT
#include "station/picture/notes.h"

#include "morse/symbolcodes.h"

namespace inspect {

namespace {

constexpr double CHARACTER_GAP_units = 3.0;
constexpr double WORD_GAP_units = 7.0;

} // namespace

Notes::Notes(const Stretch& stretch, std::int64_t begin_us)
    : m_begin_us(begin_us)
    , m_sound(stretch, begin_us)
{
    m_seen.stretch = stretch;
}

void Notes::sound(const float* samples, std::size_t count, double rate_Hz)
{
    m_sound.hear(samples, count, rate_Hz, m_seen);
}

void Notes::forgetBefore(std::int64_t time_us)
{
    if (time_us <= m_seen.stretch.from_us)
        return;
    m_seen.stretch.from_us = time_us;
    m_sound.forgetBefore(time_us, m_seen);
    const auto isOver = [time_us](const auto& thing) { return thing.end_us <= time_us; };
    forget(m_seen.steps, [time_us](const auto& step) { return step.time_us < time_us; });
    forget(m_seen.marks, isOver);
    forget(m_seen.gaps, isOver);
    forget(m_seen.characters, isOver);
    forget(m_seen.transmissions,
           [time_us](const Transmission& one) { return one.end_us && *one.end_us <= time_us; });
}

void Notes::step(const demodulator::FollowedStep& step)
{
    const std::int64_t time_us = m_begin_us + step.time_us;
    if (!m_seen.stretch.touches(time_us, time_us + 1))
        return;
    while (!m_seen.steps.empty() && m_seen.steps.back().time_us >= time_us)
        m_seen.steps.pop_back();
    m_seen.steps.push_back(step);
    m_seen.steps.back().time_us = time_us;
}

void Notes::transmissionStarted(std::int64_t time_us)
{
    m_seen.transmissions.push_back({m_begin_us + time_us, std::nullopt});
}

void Notes::mark(std::int64_t begin_us, std::int64_t end_us, double unit_us)
{
    const std::int64_t markEnd_us = m_begin_us + end_us;
    flushMark();
    flushGap(m_begin_us + begin_us);
    m_mark = Mark{m_begin_us + begin_us, markEnd_us, unit_us};
    m_gap = Gap{markEnd_us, markEnd_us};
}

void Notes::symbol(int code, std::int64_t /*time_us*/)
{
    if (!m_mark)
        return;
    switch (code) {
    case eSYMBOL_DOT:
    case eSYMBOL_DASH:
        m_mark->kind = code == eSYMBOL_DOT ? MarkKind::Dot : MarkKind::Dash;
        if (!m_character)
            m_character = Character{m_mark->begin_us, m_mark->end_us, {}, {}};
        m_character->end_us = m_mark->end_us;
        m_character->elements += QLatin1Char(code == eSYMBOL_DOT ? '.' : '-');
        break;
    case eSYMBOL_NEW_CHAR:
        m_gap->kind = GapKind::Character;
        flushCharacter();
        m_ended = m_character;
        m_character.reset();
        break;
    case eSYMBOL_NEW_WORD:
        m_gap->kind = GapKind::Word;
        flushCharacter();
        break;
    case eSYMBOL_DOT_TOO_SHORT:
        m_mark->tooShort = true;
        break;
    case eSYMBOL_DASH_TOO_LONG:
        m_mark->tooLong = true;
        break;
    case eSYMBOL_PAUSE_TOO_SHORT:
        m_mark->tooSoon = true;
        break;
    default:
        break;
    }
}

void Notes::text(const QString& text)
{
    if (m_ended)
        m_ended->text += text.trimmed();
}

void Notes::transmissionStopped(std::int64_t time_us, const demodulator::SignalReport&)
{
    const std::int64_t end_us = m_begin_us + time_us;
    m_seen.transmissions.back().end_us = end_us;
    if (m_mark && m_gap && m_gap->kind != GapKind::Inner) {
        const bool isWord = m_gap->kind == GapKind::Word;
        m_gap->open = true;
        flushGap(m_gap->begin_us +
                 static_cast<std::int64_t>((isWord ? WORD_GAP_units : CHARACTER_GAP_units) *
                                           m_mark->unit_us));
    }
    m_gap.reset();
    flushMark();
    flushCharacter();
    m_character.reset();
    if (end_us <= m_seen.stretch.from_us)
        m_seen.transmissions.pop_back();
}

void Notes::flushMark()
{
    if (m_mark && m_seen.stretch.touches(m_mark->begin_us, m_mark->end_us))
        m_seen.marks.push_back(*m_mark);
    m_mark.reset();
}

void Notes::flushGap(std::int64_t end_us)
{
    if (m_gap && m_seen.stretch.touches(m_gap->begin_us, end_us)) {
        m_gap->end_us = end_us;
        m_seen.gaps.push_back(*m_gap);
    }
    m_gap.reset();
}

void Notes::flushCharacter()
{
    if (m_ended && m_seen.stretch.touches(m_ended->begin_us, m_ended->end_us))
        m_seen.characters.push_back(*m_ended);
    m_ended.reset();
}

} // namespace inspect
