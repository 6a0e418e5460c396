// SPDX-License-Identifier: MIT
// Steps at which some path of a search was alive, so that loops over lengths can leave out the
// rest.
#pragma once

#include "signal/morse/score.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace demodulator {

/// A bit a step, the newest first.
class LiveSteps
{
public:
    /// Groups of LANES steps that are kept.
    static constexpr std::size_t GROUPS = 48;

    /// The next step, at which no path is alive yet.
    void push()
    {
        for (std::size_t i = m_words.size(); i-- > 1;)
            m_words[i] = m_words[i] << 1 | m_words[i - 1] >> 63;
        m_words[0] <<= 1;
    }
    void setNewest() { m_words[0] |= 1; }

    /// A bit for each of the first groups, set where a path is alive at one of its steps.
    std::uint64_t groups(std::size_t count) const
    {
        constexpr std::uint64_t LOW = 0x7fff7fff7fff7fffU; // of each group in a word
        std::uint64_t result = 0;
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            const std::uint64_t word = m_words[i];
            const std::uint64_t any =
                ((word & LOW) + LOW) | word; // highest bit of a group: not empty
            const std::uint64_t bits =
                (any >> 15 & 1) | (any >> 30 & 2) | (any >> 45 & 4) | (any >> 60 & 8);
            result |= bits << (4 * i);
        }
        return count < 64 ? result & ((std::uint64_t{1} << count) - 1) : result;
    }

private:
    static_assert(LANES == 16, "a word holds four groups");
    std::array<std::uint64_t, GROUPS / 4> m_words{};
};

/// The same of many series that go on together, to a group more or less each: a word a series.
class LiveRows
{
public:
    explicit LiveRows(std::size_t rows)
        : m_blocks(rows)
    {
    }

    /// The next step, at which no series is alive yet.
    void push()
    {
        if (++m_inBlock < LANES)
            return;
        m_inBlock = 0;
        for (std::uint64_t& blocks : m_blocks)
            blocks <<= 1;
    }
    void setNewest(std::size_t row) { m_blocks[row] |= 1; }

    /// A bit for each of the first 63 groups: clear where the series was not alive at any of its
    /// steps.
    std::uint64_t groups(std::size_t row) const
    {
        // A group lies in two blocks at most.
        return m_blocks[row] | m_blocks[row] >> 1;
    }

private:
    std::vector<std::uint64_t> m_blocks; // of LANES steps, the newest in the lowest bit
    std::size_t m_inBlock = 0;
};

} // namespace demodulator
