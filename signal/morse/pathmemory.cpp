// SPDX-License-Identifier: MIT
#include "signal/morse/pathmemory.h"

#include <utility>

namespace demodulator {

namespace {

// How a way is packed.
constexpr std::uint16_t LENGTH_BITS = 0x7ff;
constexpr std::uint16_t CARRIER_BIT = 0x8000;
constexpr int ORIGIN_SHIFT = 11;
enum Origin : std::uint16_t {
    FROM_FIRST_NEIGHBOUR = 1, // and so on to the last one
    FROM_BEGINNING = FROM_FIRST_NEIGHBOUR + 2 * PathMemory::NEIGHBOURS + 1,
    FROM_SILENCE,
    FROM_WORD,
};

PathMemory::Way packed(int origin, int length_steps)
{
    return static_cast<PathMemory::Way>(origin << ORIGIN_SHIFT | length_steps);
}

} // namespace

PathMemory::Way PathMemory::ofMark(int length_steps)
{
    return static_cast<Way>(length_steps);
}

PathMemory::Way PathMemory::ofCarrier(int length_steps)
{
    return static_cast<Way>(CARRIER_BIT | length_steps);
}

PathMemory::Way PathMemory::ofGap(int speedOffset, int length_steps)
{
    return packed(FROM_FIRST_NEIGHBOUR + speedOffset + NEIGHBOURS, length_steps);
}

PathMemory::Way PathMemory::ofWord()
{
    return packed(FROM_WORD, 0);
}

PathMemory::Way PathMemory::ofSilence()
{
    return packed(FROM_SILENCE, 0);
}

PathMemory::Way PathMemory::ofBeginning()
{
    return packed(FROM_BEGINNING, 0);
}

PathMemory::PathMemory(const TimingModel& timing)
    : m_timing(timing)
    , m_marks(timing.speeds() * KEPT_WAYS)
    , m_gaps(timing.speeds() * KEPT_WAYS)
    , m_words(KEPT_WAYS)
    , m_idle(1)
{
}

void PathMemory::begin(std::int64_t step)
{
    m_now = step;
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed)
        at(m_marks, speed, step) = at(m_gaps, speed, step) = 0;
}

void PathMemory::endWord(Speed speed, int length_steps)
{
    m_words[indexOf(0, m_now)] = {speed, length_steps};
}

void PathMemory::rest(Idle idle)
{
    if (idle.score > m_idle.back().score) {
        idle.since_step = m_now;
        m_idle.push_back(idle);
    }
    while (m_idle.size() > 1 && m_idle[1].since_step < m_now - KEPT_STEPS)
        m_idle.pop_front();
}

const Idle& PathMemory::idleAt(std::int64_t step) const
{
    std::size_t i = m_idle.size() - 1;
    while (i > 0 && m_idle[i].since_step > step)
        --i;
    return m_idle[i];
}

void PathMemory::renewTrunk(const std::vector<Place>& places)
{
    // What is younger can still be asked of the ways when this is done the next time.
    const std::int64_t youngest = m_now - (static_cast<std::int64_t>(KEPT_WAYS) - TRUNK_STEPS - 2);
    std::set<Piece, ByEnd> trunk;
    for (Place place : places) {
        while (place.step > m_now - KEPT_STEPS) {
            const std::optional<Piece> piece = before(place);
            if (!piece || (place.step <= youngest && !trunk.insert(*piece).second) || piece->first)
                break;
            place = piece->begin;
        }
    }
    m_trunk = std::move(trunk);
}

// The segment that ends at a place. None where it is forgotten.
std::optional<Piece> PathMemory::before(const Place& place) const
{
    const auto speed = static_cast<std::size_t>(place.speed);
    if (m_now - place.step >= static_cast<std::int64_t>(KEPT_WAYS) - 1) {
        const auto found = m_trunk.find(place);
        return found == m_trunk.end() ? std::nullopt : std::optional<Piece>(*found);
    }
    const Way way = (place.mark ? m_marks : m_gaps)[indexOf(speed, place.step)];
    if (way == 0)
        return {};
    Piece piece;
    piece.end = place;
    const std::int64_t length = way & LENGTH_BITS;
    const int origin = way >> ORIGIN_SHIFT;
    if (place.mark) {
        piece.begin = {false, place.speed, place.step - length};
        piece.kind =
            (way & CARRIER_BIT) != 0 ? Kind::Carrier : m_timing.table(speed).markKind(length);
    } else if (origin == FROM_BEGINNING) {
        piece.begin = place;
        piece.first = true;
        piece.silence = idleAt(place.step).score;
    } else if (origin == FROM_SILENCE) {
        const Idle& idle = idleAt(place.step);
        piece.begin = {true, idle.speed, idle.markEnd};
    } else if (origin == FROM_WORD) {
        const Word& word = m_words[indexOf(0, place.step)];
        piece.begin = {true, word.speed, place.step - word.length_steps};
        piece.kind = Kind::WordGap;
    } else {
        const int from = place.speed + origin - FROM_FIRST_NEIGHBOUR - NEIGHBOURS;
        piece.begin = {true, static_cast<Speed>(from), place.step - length};
        piece.kind = m_timing.table(static_cast<std::size_t>(from)).gapKind(length);
    }
    return piece;
}

std::vector<Piece> PathMemory::trace(Place place, std::int64_t horizon) const
{
    std::vector<Piece> pieces;
    while (place.step > horizon) {
        const std::optional<Piece> piece = before(place);
        if (!piece)
            break;
        pieces.push_back(*piece);
        if (piece->first)
            break;
        place = piece->begin;
    }
    return pieces;
}

} // namespace demodulator
