// SPDX-License-Identifier: MIT
// Options that the commands which decode share: how, since when, what is kept and what is shown.
#pragma once

#include "app/options/alphabetoptions.h"
#include "app/options/arguments.h"
#include "app/reporter.h"
#include "station/audio/sound.h"

#include <QString>

#include <optional>

namespace morsehost {

/// How the time of the first sample is known.
enum class StartRule {
    Unsaid,    ///< the clock for standard input, 1970 for a file
    Given,     ///< `start_us`
    Clock,     ///< when the first sample is read
    Recording, ///< from the recording's name, or from what it holds about itself
};

struct ReceptionOptions
{
    AlphabetChoice alphabet;
    QString saveDirectory; ///< empty when nothing is saved
    QString archive;       ///< URL; empty when nothing is archived
    std::optional<double> frequency_Hz;
    ReportForm form = ReportForm::Text;
    StartRule startRule = StartRule::Unsaid;
    unsigned long long start_us = 0;
    bool trace = false;
    bool hasPictures = false; ///< one of each transmission is saved
};

/// Microseconds since 1970-01-01 00:00 UTC at which the first sample of `sound` was taken, which
/// arrived at `arrived_us`, and of which the recording itself says `recorded_us`. Nothing when the
/// recording was asked and does not know; `noStartTime` says so.
std::optional<unsigned long long> startTime(const ReceptionOptions& options,
                                            const SoundRequest& sound,
                                            std::optional<unsigned long long> recorded_us,
                                            unsigned long long arrived_us);
QString noStartTime();

/// Which words --start takes.
enum class StartWords { Time, TimeNowAuto };

/// Rows and words are one table: the rows of `more` come first.
std::vector<OptionRow> receptionOptionRows(std::vector<OptionRow> more, StartWords words);
/// Errors are left in `arguments`.
ReceptionOptions readReceptionOptions(Arguments& arguments, StartWords words);

} // namespace morsehost
