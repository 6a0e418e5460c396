// SPDX-License-Identifier: MIT
#include "signal/teleprinter/messages.h"

#include <cctype>

namespace teleprinter {

namespace {

const std::string BEGINS = "ZCZC";
const std::string ENDS = "NNNN";

} // namespace

void Messages::begin(bool split)
{
    m_isSplit = split;
}

void Messages::character(char character, std::int64_t begin_us, std::int64_t end_us,
                         const Line& line)
{
    m_line = line;
    if (!m_isSplit) {
        put({character, begin_us, end_us});
        return;
    }
    m_waiting.push_back({character, begin_us, end_us});
    while (!m_waiting.empty()) {
        std::string text;
        for (const Waiting& waiting : m_waiting)
            text += waiting.character;
        if (text == BEGINS) {
            stop();
            for (const Waiting& waiting : m_waiting)
                put(waiting);
            m_waiting.clear();
        } else if (BEGINS.compare(0, text.size(), text) == 0) {
            break;
        } else {
            put(m_waiting.front());
            m_waiting.erase(m_waiting.begin());
        }
    }
}

void Messages::end()
{
    for (const Waiting& waiting : m_waiting)
        put(waiting);
    m_waiting.clear();
    stop();
}

void Messages::put(const Waiting& next)
{
    if (!m_isOpen) {
        // What feeds the paper between two messages belongs to neither.
        if (m_isSplit && std::isspace(static_cast<unsigned char>(next.character)) != 0)
            return;
        m_isOpen = true;
        m_last.clear();
        m_sink.transmissionStarted(m_line, next.begin_us);
    }
    m_end_us = next.end_us;
    m_sink.character(static_cast<std::uint8_t>(next.character), next.end_us);
    m_last += next.character;
    if (m_last.size() > ENDS.size())
        m_last.erase(0, 1);
    if (m_isSplit && m_last == ENDS)
        stop();
}

void Messages::stop()
{
    if (m_isOpen)
        m_sink.transmissionStopped(m_line, m_end_us);
    m_isOpen = false;
}

} // namespace teleprinter
