// SPDX-License-Identifier: MIT
// The last values of one or many series, each as a piece of memory with the newest first, as tables
// of lengths lie: what is so many steps back stands at that index, and loops run over both
// forwards.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace demodulator {

template <typename Value>
class Recent
{
public:
    Recent() = default;
    /// `before` is what the series was before its first value.
    Recent(std::size_t kept, Value before)
        : m_kept(kept)
        , m_values(kept + room(kept), before)
        , m_newest(room(kept))
    {
    }

    std::size_t kept() const { return m_kept; }

    void push(Value value)
    {
        if (m_newest == 0)
            slide();
        m_values[--m_newest] = value;
    }

    /// The newest value; kept() values may be read from here on.
    const Value* data() const { return m_values.data() + m_newest; }
    Value* data() { return m_values.data() + m_newest; }

    /// The value so many steps before the newest.
    const Value& operator[](std::size_t age) const { return m_values[m_newest + age]; }

private:
    // Values move once in so many pushes.
    static std::size_t room(std::size_t kept) { return kept / 4 + 16; }

    void slide()
    {
        m_newest = room(m_kept);
        std::copy_backward(m_values.begin(), m_values.begin() + static_cast<std::ptrdiff_t>(m_kept),
                           m_values.begin() + static_cast<std::ptrdiff_t>(m_newest + m_kept));
    }

    std::size_t m_kept = 0;
    std::vector<Value> m_values;
    std::size_t m_newest = 0;
};

/// Many series that go on together but are kept for different lengths.
template <typename Value>
class RecentRows
{
public:
    /// `before` is what every series was before its first value.
    RecentRows(std::size_t rows, Value before)
        : m_before(before)
        , m_rows(rows, std::vector<Value>(ROOM, before))
    {
    }

    /// Keeps at least so many of a row from now on; what was not kept is taken to be `before`.
    void keep(std::size_t row, std::size_t kept)
    {
        if (m_rows[row].size() < kept + ROOM)
            m_rows[row].resize(kept + ROOM, m_before);
    }

    /// Every row goes on, with the value that was before any.
    void push()
    {
        if (m_newest == 0)
            slide();
        --m_newest;
        for (std::vector<Value>& row : m_rows)
            row[m_newest] = m_before;
    }
    void setNewest(std::size_t row, Value value) { m_rows[row][m_newest] = value; }

    /// The newest value of a row; as many as are kept may be read from here on.
    const Value* row(std::size_t row) const { return m_rows[row].data() + m_newest; }

private:
    static constexpr std::size_t ROOM = 64; // values move once in so many pushes

    void slide()
    {
        for (std::vector<Value>& row : m_rows)
            std::copy_backward(row.begin(), row.end() - ROOM, row.end());
        m_newest = ROOM;
    }

    Value m_before;
    std::vector<std::vector<Value>> m_rows;
    std::size_t m_newest = ROOM;
};

} // namespace demodulator
