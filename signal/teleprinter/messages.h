// SPDX-License-Identifier: MIT
// Where transmissions begin and end within one signal: at its own begin and end, and, where ships'
// safety messages follow each other, at ZCZC and NNNN.
#pragma once

#include "signal/teleprinter/teleprinterreceiver.h"

#include <string>
#include <vector>

namespace teleprinter {

/// The sink outlives it.
class Messages
{
public:
    explicit Messages(TextSink& sink)
        : m_sink(sink)
    {
    }

    /// A signal begins; `split`: its messages are transmissions of their own.
    void begin(bool split);
    /// The next character; the line is the signal's as it is known by now.
    void character(char character, std::int64_t begin_us, std::int64_t end_us, const Line& line);
    /// The signal is over.
    void end();

private:
    struct Waiting
    {
        char character;
        std::int64_t begin_us;
        std::int64_t end_us;
    };

    void put(const Waiting& next);
    void stop();

    TextSink& m_sink;
    Line m_line;
    bool m_isSplit = false;
    bool m_isOpen = false;
    std::int64_t m_end_us = 0;
    std::string m_last;             // of the transmission, as many as NNNN has
    std::vector<Waiting> m_waiting; // what may become ZCZC
};

} // namespace teleprinter
