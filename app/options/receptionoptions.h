// SPDX-License-Identifier: MIT
// Options that the commands which decode share: how, since when, what is kept and what is shown.
#pragma once

#include "app/options/arguments.h"
#include "app/reporter.h"

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
    QString alphabet; ///< empty for the built-in one
    QString alphabetDirectory;
    QString saveDirectory; ///< empty when nothing is saved
    QString archive;       ///< URL; empty when nothing is archived
    std::optional<double> frequency_Hz;
    ReportForm form = ReportForm::Text;
    StartRule startRule = StartRule::Unsaid;
    unsigned long long start_us = 0;
    bool trace = false;
};

/// Which words --start takes.
enum class StartWords { Time, TimeNowAuto };

/// Rows and words are one table: the rows of `more` come first.
std::vector<OptionRow> receptionOptionRows(std::vector<OptionRow> more, StartWords words);
/// Errors are left in `arguments`.
ReceptionOptions readReceptionOptions(Arguments& arguments, StartWords words);

} // namespace morsehost
