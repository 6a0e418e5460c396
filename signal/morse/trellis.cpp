// SPDX-License-Identifier: MIT
#include "signal/morse/trellis.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

constexpr float IMPOSSIBLE = -1e9F;
constexpr float BEAM = 40.0F;   // paths so far behind the best are given up
constexpr float START = -8.0F;  // log probability that a signal begins at some step
constexpr float RESUME = -6.0F; // that it goes on after a silence
constexpr float SPEED_CHANGE[] = {0.0F, -3.0F, -6.0F}; // to speeds so far away, at any gap
constexpr float SPEED_JUMP = -30.0F; // to any other speed, beside that speed's own prior
constexpr double OTHER_SPEED =
    0.45; // change of its logarithm that makes other elements of the same lengths
constexpr float CARRIER = -15.0F; // that a mark becomes a steady tone
constexpr double LEAST_CARRIER_units = 8.0;
constexpr float CARRIER_GOES_ON = 2.5F; // phase and amplitude of a block are known from the last
constexpr double WEAK_DOT = 12.0; // energy of a dot over noise density: -4 dB at 20 words a minute
constexpr float CARRIER_ENDS_WITHIN = -8.0F; // a block: of many places where it could
constexpr std::int64_t CARRIER_BLOCK = 32;   // steps
constexpr std::int64_t RENORMALISE_STEPS = 512;

} // namespace

Trellis::Trellis(const TimingModel& timing, const MarkLikelihood& likelihood)
    : m_timing(timing)
    , m_likelihood(likelihood)
    , m_mark(timing.speeds() * KEPT_STEPS, IMPOSSIBLE)
    , m_gap(timing.speeds() * KEPT_STEPS, IMPOSSIBLE)
    , m_markBack(timing.speeds() * KEPT_STEPS)
    , m_gapBack(timing.speeds() * KEPT_STEPS)
    , m_lastMark(timing.speeds(), -KEPT_STEPS)
    , m_lastGap(timing.speeds(), -KEPT_STEPS)
    , m_idle(KEPT_STEPS)
    , m_bestGap(KEPT_STEPS)
    , m_carrier(KEPT_STEPS / CARRIER_BLOCK)
    , m_entering(timing.speeds())
    , m_enteringLength(timing.speeds())
{
    for (Carrier& carrier : m_carrier)
        carrier.score = IMPOSSIBLE;
    for (Entry& entry : m_bestGap)
        entry.score = IMPOSSIBLE;
}

void Trellis::computeRatios(std::int64_t now)
{
    // Only the lengths that some speed with a live path asks for.
    std::int64_t longest = 0;
    m_finest = 0;
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed) {
        const DurationTable& table = m_timing.table(speed);
        const auto length = static_cast<std::int64_t>(table.mark.size()) * table.stride;
        if (now % table.stride != 0 || now - m_lastGap[speed] > length)
            continue;
        longest = std::max(longest, length);
        if (table.stride == 1)
            m_finest = std::max(m_finest, length);
    }
    m_ratios.resize(static_cast<std::size_t>(longest) + 1);
    for (std::int64_t length = 1; length <= longest; ++length) {
        if (length <= m_finest || length % 2 == 0)
            m_ratios[static_cast<std::size_t>(length)] = m_likelihood.ratio(length);
    }
}

float Trellis::ratio(std::int64_t length) const
{
    const bool known = length < static_cast<std::int64_t>(m_ratios.size()) &&
                       (length <= m_finest || length % 2 == 0);
    return known ? m_ratios[static_cast<std::size_t>(length)] : m_likelihood.ratio(length);
}

void Trellis::advance()
{
    const std::int64_t now = m_likelihood.end();
    m_now = now;
    const std::size_t speeds = m_timing.speeds();
    computeRatios(now);

    Idle idle = m_idle[slot(now - 1)];
    float best = idle.score;

    // A steady tone, whichever the speed, in blocks; it may end within one.
    const auto block = static_cast<std::size_t>(now / CARRIER_BLOCK) % m_carrier.size();
    const std::int64_t sinceBlock = now % CARRIER_BLOCK;
    if (sinceBlock == 0) {
        Carrier carrier = m_carrier[(block + m_carrier.size() - 1) % m_carrier.size()];
        // In a weak signal keying looks like a carrier of half its power, and would be swallowed.
        const Level& level = m_likelihood.level();
        const bool weak = level.signal * level.dot_steps < WEAK_DOT * level.noise;
        carrier.score += m_likelihood.ratio(CARRIER_BLOCK) + (weak ? 0.0F : CARRIER_GOES_ON);
        for (std::int64_t length = CARRIER_BLOCK; length < 2 * CARRIER_BLOCK; ++length) {
            const Entry& entry = m_bestGap[slot(now - length)];
            if (entry.score <= IMPOSSIBLE || weak)
                continue;
            const float score = entry.score + CARRIER + m_likelihood.ratio(length);
            if (score > carrier.score)
                carrier = {
                    score, entry.speed, now - length,
                    m_gapBack[cell(static_cast<std::size_t>(entry.speed), now - length)].length >
                        0};
        }
        carrier.score = std::max(IMPOSSIBLE, carrier.score);
        if (now - carrier.begin > KEPT_STEPS / 2)
            carrier.begin = now - KEPT_STEPS / 2;
        m_carrier[block] = carrier;
        best = std::max(best, carrier.score);
    }
    const Carrier& carrier = m_carrier[block];
    const float steady =
        carrier.score +
        (sinceBlock > 0 ? m_likelihood.ratio(sinceBlock) + CARRIER_ENDS_WITHIN : 0.0F);

    for (std::size_t speed = 0; speed < speeds; ++speed) {
        const DurationTable& table = m_timing.table(speed);
        m_entering[speed] = IMPOSSIBLE;
        if (now % table.stride != 0)
            continue;
        float& mark = m_mark[cell(speed, now)];
        MarkBack& markBack = m_markBack[cell(speed, now)];
        mark = IMPOSSIBLE;
        const auto stride = static_cast<std::int64_t>(table.stride);
        const auto marks = static_cast<std::int64_t>(table.mark.size());
        if (now - m_lastGap[speed] < marks * stride) {
            const float* from = &m_gap[speed * static_cast<std::size_t>(KEPT_STEPS)];
            for (std::int64_t i = table.firstMark; i < marks; ++i) {
                const std::int64_t length = i * stride;
                const float score = from[slot(now - length)] +
                                    m_ratios[static_cast<std::size_t>(length)] +
                                    table.mark[static_cast<std::size_t>(i)];
                if (score > mark) {
                    mark = score;
                    markBack = {static_cast<std::int16_t>(length),
                                table.markKind[static_cast<std::size_t>(i)]};
                }
            }
        }
        if (carrier.speed == static_cast<std::int16_t>(speed) && steady > mark &&
            (carrier.afterMark || sinceBlock == 0) &&
            static_cast<double>(now - carrier.begin) > LEAST_CARRIER_units * table.unit_steps) {
            mark = steady;
            markBack = {static_cast<std::int16_t>(now - carrier.begin), Kind::Carrier};
        }
        best = std::max(best, mark);

        const auto gaps = static_cast<std::int64_t>(table.gap.size());
        if (now - m_lastMark[speed] < gaps * stride) {
            const float* from = &m_mark[speed * static_cast<std::size_t>(KEPT_STEPS)];
            float entering = IMPOSSIBLE;
            for (std::int64_t i = table.firstGap; i < gaps; ++i) {
                const std::int64_t length = i * stride;
                const float score =
                    from[slot(now - length)] + table.gap[static_cast<std::size_t>(i)];
                if (score > entering) {
                    entering = score;
                    m_enteringLength[speed] = static_cast<std::int16_t>(length);
                }
            }
            m_entering[speed] = entering;
            best = std::max(best, entering);
            const std::int64_t longest = (gaps - 1) * stride;
            const float silent = from[slot(now - longest)] + table.gapSurvival.back();
            if (silent > idle.score)
                idle = {silent, static_cast<std::int16_t>(speed), now - longest};
        }
    }
    m_idle[slot(now)] = idle;
    best = std::max(best, idle.score);

    Entry bestGap = {IMPOSSIBLE, 0};
    Entry bestEntering = {IMPOSSIBLE, 0};
    for (std::size_t speed = 0; speed < speeds; ++speed) {
        if (m_entering[speed] > bestEntering.score)
            bestEntering = {m_entering[speed], static_cast<std::int16_t>(speed)};
    }
    for (std::size_t speed = 0; speed < speeds; ++speed) {
        const DurationTable& table = m_timing.table(speed);
        if (now % table.stride != 0)
            continue;
        if (m_mark[cell(speed, now)] < best - BEAM)
            m_mark[cell(speed, now)] = IMPOSSIBLE;
        else
            m_lastMark[speed] = now;

        float& gap = m_gap[cell(speed, now)];
        GapBack& back = m_gapBack[cell(speed, now)];
        const float fresh = START + static_cast<float>(m_timing.prior(speed));
        gap = idle.score + fresh;
        back = {0, -1, Kind::Silence};
        if (idle.speed >= 0) {
            const auto change = std::abs(idle.speed - static_cast<int>(speed));
            const float resumed =
                idle.score + std::max(fresh, RESUME - 2.0F * static_cast<float>(change));
            if (resumed > gap) {
                gap = resumed;
                back = {0, idle.speed, Kind::Silence};
            }
        }
        const auto enter = [&](std::size_t other, float change) {
            const float score = m_entering[other] + change;
            if (score <= gap)
                return;
            gap = score;
            const DurationTable& its = m_timing.table(other);
            const auto length = m_enteringLength[other];
            back = {length, static_cast<std::int16_t>(other),
                    its.gapKind[static_cast<std::size_t>(length / its.stride)]};
        };
        const std::size_t first = speed >= 2 ? speed - 2 : 0;
        const std::size_t last = std::min(speeds - 1, speed + 2);
        for (std::size_t other = first; other <= last; ++other)
            enter(other, SPEED_CHANGE[other > speed ? other - speed : speed - other]);
        if (bestEntering.score > IMPOSSIBLE) {
            enter(static_cast<std::size_t>(bestEntering.speed),
                  SPEED_JUMP + static_cast<float>(m_timing.prior(speed)));
        }
        if (gap < best - BEAM)
            gap = IMPOSSIBLE;
        else
            m_lastGap[speed] = now;
        if (gap > bestGap.score)
            bestGap = {gap, static_cast<std::int16_t>(speed)};
    }
    m_bestGap[slot(now)] = bestGap;
    if (now % RENORMALISE_STEPS == 0)
        renormalise();
}

void Trellis::renormalise()
{
    const float reference = m_idle[slot(m_now)].score;
    float best = reference;
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed) {
        for (std::int64_t age = 0; age < 8; ++age)
            best =
                std::max({best, m_mark[cell(speed, m_now - age)], m_gap[cell(speed, m_now - age)]});
    }
    const auto lower = [&](float& score) { score = std::max(IMPOSSIBLE, score - best); };
    std::for_each(m_mark.begin(), m_mark.end(), lower);
    std::for_each(m_gap.begin(), m_gap.end(), lower);
    for (Idle& idle : m_idle)
        lower(idle.score);
    for (Entry& entry : m_bestGap)
        lower(entry.score);
    for (Carrier& carrier : m_carrier)
        lower(carrier.score);
}

Path Trellis::path(std::int64_t since_step) const
{
    const std::int64_t horizon = std::max({since_step, m_now - KEPT_STEPS + 4, std::int64_t{0}});
    enum class State { Outside, AfterMark, AfterGap };

    // The best of: silence, a gap that goes on, a mark that goes on.
    const Idle& idle = m_idle[slot(m_now)];
    float best = idle.score;
    State state = State::Outside;
    std::size_t speed = 0;
    std::int64_t at = m_now;
    std::vector<float> bests(m_timing.speeds(), IMPOSSIBLE);
    for (std::size_t candidate = 0; candidate < m_timing.speeds(); ++candidate) {
        const DurationTable& table = m_timing.table(candidate);
        const auto stride = static_cast<std::int64_t>(table.stride);
        const std::int64_t last = m_now - m_now % stride;
        const std::int64_t firstGap = (last - m_lastMark[candidate]) / stride;
        const std::int64_t firstMark =
            std::max<std::int64_t>(1, (last - m_lastGap[candidate]) / stride);
        for (std::int64_t i = firstGap; i < static_cast<std::int64_t>(table.gap.size()); ++i) {
            const std::int64_t from = last - i * stride;
            if (from <= horizon)
                break;
            const float score =
                m_mark[cell(candidate, from)] + table.gapSurvival[static_cast<std::size_t>(i)];
            bests[candidate] = std::max(bests[candidate], score);
            if (score > best) {
                best = score;
                state = State::AfterMark;
                speed = candidate;
                at = from;
            }
        }
        for (std::int64_t i = firstMark; i < static_cast<std::int64_t>(table.mark.size()); ++i) {
            const std::int64_t from = last - i * stride;
            if (from <= horizon)
                break;
            if (m_gap[cell(candidate, from)] == IMPOSSIBLE)
                continue;
            const float score = m_gap[cell(candidate, from)] + ratio(m_now - from) +
                                table.markSurvival[static_cast<std::size_t>(i)];
            bests[candidate] = std::max(bests[candidate], score);
            if (score > best) {
                best = score;
                state = State::AfterGap;
                speed = candidate;
                at = from;
            }
        }
    }
    const Carrier& carrier =
        m_carrier[static_cast<std::size_t>(m_now / CARRIER_BLOCK) % m_carrier.size()];
    const std::int64_t sinceBlock = m_now % CARRIER_BLOCK;
    const float steady = carrier.score + (sinceBlock > 0 ? m_likelihood.ratio(sinceBlock) : 0.0F);
    Path path;
    const auto unit = [&](std::size_t index) { return m_timing.table(index).unit_steps; };
    if (state != State::Outside) {
        float rival = idle.score;
        for (std::size_t other = 0; other < bests.size(); ++other) {
            if (std::fabs(std::log(unit(other) / unit(speed))) > OTHER_SPEED)
                rival = std::max(rival, bests[other]);
        }
        path.margin = static_cast<double>(best - rival);
    }
    if (steady > best) {
        best = steady;
        state = State::AfterGap;
        speed = static_cast<std::size_t>(carrier.speed);
        at = carrier.begin;
        path.segments.push_back({Kind::Carrier, at, m_now, unit(speed)});
    } else if (state == State::AfterGap) {
        path.segments.push_back({Kind::Dash, at, m_now, unit(speed)});
    } else if (state == State::AfterMark) {
        path.segments.push_back({Kind::Silence, at, m_now, unit(speed)});
    } else if (idle.speed >= 0) {
        speed = static_cast<std::size_t>(idle.speed);
        at = idle.markEnd;
        state = State::AfterMark;
        path.segments.push_back({Kind::Silence, at, m_now, unit(speed)});
    }

    while (state != State::Outside && at > horizon) {
        if (state == State::AfterMark) {
            const MarkBack& back = m_markBack[cell(speed, at)];
            path.segments.push_back({back.kind, at - back.length, at, unit(speed)});
            at -= back.length;
            state = State::AfterGap;
            continue;
        }
        const GapBack& back = m_gapBack[cell(speed, at)];
        if (back.length > 0) {
            speed = static_cast<std::size_t>(back.speed);
            path.segments.push_back({back.kind, at - back.length, at, unit(speed)});
            at -= back.length;
            state = State::AfterMark;
        } else if (back.speed >= 0) {
            const Idle& silence = m_idle[slot(at)];
            speed = static_cast<std::size_t>(silence.speed);
            path.segments.push_back({Kind::Silence, silence.markEnd, at, unit(speed)});
            at = silence.markEnd;
            state = State::AfterMark;
        } else {
            path.gain = static_cast<double>(best - m_idle[slot(at)].score);
            path.complete = true;
            state = State::Outside;
        }
    }
    std::reverse(path.segments.begin(), path.segments.end());
    return path;
}

} // namespace demodulator
