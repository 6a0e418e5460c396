// SPDX-License-Identifier: MIT
// For looking at a receiver while it works, for instance to draw a picture of a doubtful passage.
// Nothing is computed for an observer, and it changes nothing.
#pragma once

#include <cstddef>
#include <cstdint>

namespace teleprinter {

/// A word as it was decided, with its line as it was known then.
struct SeenWord
{
    enum class Kind : std::uint8_t {
        Character,
        Letters, ///< the shift to letters, and that to figures
        Figures,
        Phasing, ///< keeps synchronous lines in step
        Repeat,  ///< of a word before it, in time diversity
    };

    Kind kind;
    std::int64_t begin_us; ///< of the first element
    std::int64_t end_us;   ///< as TextSink::character has it
    double element_us;
    unsigned elements; ///< all of them, start and stop included; the first is bit 0, mark is 1
    int count;
    bool isStartStop;
    double mark_Hz;
    double space_Hz;
};

/// Times count from the first sample, as those of a TextSink.
class Observer
{
public:
    virtual ~Observer();

    /// The sound as all stages get it, piece by piece from its beginning.
    virtual void sound(const float* samples, std::size_t count, double rate_Hz) = 0;

    /// Before the character that it gives, if it does. What came before a signal was noticed is
    /// heard again then, so that words may begin in the past.
    virtual void word(const SeenWord& word) = 0;
};

} // namespace teleprinter
