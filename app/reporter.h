// SPDX-License-Identifier: MIT
// What the person at the program sees of a reception.
#pragma once

#include "station/io/output.h"

#include <QString>

#include <memory>
#include <optional>

namespace morsehost {

/// Told of everything that passes between demodulator, host and library, in order.
class Reporter
{
public:
    explicit Reporter(Output& output)
        : m_output(output)
    {
    }
    virtual ~Reporter() = default;

    /// A code that the demodulator writes; before its text.
    virtual void symbol(int code);
    /// A time stamp that the host sends.
    virtual void time(unsigned long long time_us);
    /// What the library writes into the text value.
    virtual void text(const QString& text);
    /// The input has ended.
    virtual void end();

    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;

protected:
    Output& m_output;
};

enum class ReportForm {
    Text,  ///< the text as it comes
    Codes, ///< the symbol codes, a word a line
    Json,  ///< an object a line per event
};

std::unique_ptr<Reporter> makeReporter(ReportForm form, Output& output);

} // namespace morsehost
