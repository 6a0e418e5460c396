// SPDX-License-Identifier: MIT
// What the person at the program sees of a reception.
#pragma once

#include "station/io/output.h"
#include "station/stationlistener.h"

#include <QString>

#include <functional>
#include <memory>

namespace morsehost {

/// Listens to one station after another.
class Reporter : public StationListener
{
public:
    explicit Reporter(Output& output)
        : m_output(output)
    {
    }
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;

    /// What follows comes from this recording. Only where there are several.
    virtual void source(const QString& name);
    /// The station is stopped.
    virtual void end();

    /// On standard error.
    void saving(const QString& message) override;

protected:
    Output& m_output;
};

enum class ReportForm {
    Text,  ///< the text as it comes
    Codes, ///< the symbol codes, a word a line
    Json,  ///< an object a line per event
};

/// Called before text is written: whether it ends within a line.
using LineListener = std::function<void(bool lineStaysOpen)>;

/// A terminal gets control characters as U+FFFD, since they would be orders to it; a file or a pipe
/// gets every character.
std::unique_ptr<Reporter> makeReporter(ReportForm form, Output& output, LineListener listener);

} // namespace morsehost
