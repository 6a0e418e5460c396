// SPDX-License-Identifier: MIT
// One reception from first to last code: the options that govern it, the station that decodes it
// and the reporter that shows it.
#pragma once

#include "app/options/arguments.h"
#include "app/reporter.h"
#include "station/io/output.h"
#include "station/morsestation.h"

#include <memory>

namespace morsehost {

struct ReceptionOptions
{
    StationSettings station;
    ReportForm form = ReportForm::Text;
    unsigned long long start_us = 0; ///< time of the first sample
    bool trace = false;
};

/// The rows of the options that `decode` and `symbols` share, followed by `more`.
std::vector<OptionRow> receptionOptionRows(std::vector<OptionRow> more);
/// Errors are left in `arguments`.
ReceptionOptions readReceptionOptions(Arguments& arguments);

class Reception
{
public:
    /// Hears of text before it is written: whether it ends within a line.
    using TextListener = std::function<void(bool lineStaysOpen)>;

    explicit Reception(const ReceptionOptions& options, TextListener listener = {});

    /// False, and said on standard error, when it cannot begin.
    bool start();

    // Times count from the first sample.
    void beginTransmission(long long sinceStart_us);
    void time(long long sinceStart_us);
    void symbol(int code);
    /// The transmission is over: what was received of it is saved.
    void endTransmission();
    /// The input is over. Returns the exit status as far as the output decides it.
    int finish();

    /// The output takes no more, so there is no use in going on.
    bool isOutputGone() const { return m_output.hasFailed(); }

private:
    ReceptionOptions m_options;
    TextListener m_listener;
    Output m_output;
    std::unique_ptr<Reporter> m_reporter;
    MorseStation m_station;
    qint64 m_lastDocument_s = 0; ///< second of the clock that named the last document
};

} // namespace morsehost
