// SPDX-License-Identifier: MIT
// Checks the files of those who write tables, and prints what it finds as compilers do.
#pragma once

#include <QStringList>
#include <QTextStream>

namespace translate {

struct LintOutcome
{
    bool isClean = true;  ///< every file was read, and nothing was found
    QStringList failures; ///< one for each file that could not be read
};

/// Writes "file:line: message" for each finding, "file: message" where it concerns the whole file.
/// Files whose names are those of no table are passed over, unless there is no other.
LintOutcome lintFiles(const QStringList& files, QTextStream& out);

} // namespace translate
