// SPDX-License-Identifier: MIT
#include "app/commands/inspectstretch.h"

#include "app/console/complain.h"
#include "station/io/interrupt.h"

#include <algorithm>
#include <cmath>

namespace morsehost {

namespace {

constexpr std::size_t PIECE_SAMPLES = 4096;

// With --quick, for a signal to be found and followed before the stretch.
constexpr double BEFORE_s = 60;

// What is heard so long after a stretch changes nothing in it any more: the longest silence that
// ends a transmission, the beginning that is heard out first, what is heard again with what came
// after, and some to spare.
constexpr double AFTERWARDS_s = 60;

} // namespace

std::int64_t microseconds(double time_s)
{
    return std::llround(1e6 * time_s);
}

StretchReader::StretchReader(SampleSource& source, const SoundRequest& sound,
                             const StretchChoice& choice)
    : m_source(source)
    , m_name(sound.name)
    , m_choice(choice)
    , m_rate_Hz(sound.demodulator.sampleRate_Hz)
    , m_samples(PIECE_SAMPLES)
{
    if (choice.isQuick)
        m_done = source.skip(std::llround(std::max(0.0, choice.from_s - BEFORE_s) * m_rate_Hz));
    m_begin_us = end_us();
}

inspect::Stretch StretchReader::stretch() const
{
    return {microseconds(m_choice.from_s), microseconds(m_choice.from_s + m_choice.length_s)};
}

std::int64_t StretchReader::end_us() const
{
    return microseconds(static_cast<double>(m_done) / m_rate_Hz);
}

bool StretchReader::read()
{
    const double end_s = m_choice.from_s + m_choice.length_s + AFTERWARDS_s;
    if (m_isOver || static_cast<double>(m_done) / m_rate_Hz >= end_s)
        return false;
    m_count = m_source.read(m_samples.data(), m_samples.size());
    m_done += static_cast<long long>(m_count);
    m_isOver = m_count == 0;
    const auto all = m_source.frameCount();
    const double all_s = all ? static_cast<double>(*all) / m_rate_Hz : end_s;
    m_progress.show(static_cast<double>(m_done) / m_rate_Hz / std::min(all_s, end_s));
    return !m_isOver;
}

bool StretchReader::canDraw(const QString& picture) const
{
    if (isInterrupted()) {
        complain(picture, QStringLiteral("interrupted, nothing was drawn"));
        return false;
    }
    if (!m_source.error().isEmpty())
        complain(m_name, m_source.error());
    const double done_s = static_cast<double>(m_done) / m_rate_Hz;
    if (done_s >= m_choice.from_s + SHORTEST_LENGTH_s)
        return true;
    if (m_source.error().isEmpty())
        complain(m_name, QStringLiteral("less than %1 s after %2 s: it ends after %3 s")
                             .arg(SHORTEST_LENGTH_s)
                             .arg(m_choice.from_s, 0, 'f', 3)
                             .arg(done_s, 0, 'f', 3));
    return false;
}

} // namespace morsehost
