// SPDX-License-Identifier: MIT
// The last values of a series as a piece of memory with the newest first, as tables of lengths lie:
// what is so many steps back stands at that index, and loops run over both forwards.
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

    /// Keeps more from now on; what would have been there is taken to be `before`.
    void keepMore(std::size_t kept, Value before)
    {
        if (kept <= m_kept)
            return;
        Recent more(kept, before);
        std::copy_n(data(), m_kept, more.data());
        *this = std::move(more);
    }

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

} // namespace demodulator
