// SPDX-License-Identifier: MIT
// Checks the files of those who write alphabets, maps and lists of decoders: what the readers
// noticed, and what no reader needs to know, such as letters that look alike, codes that hide each
// other, and names under which a file is never found.
#pragma once

#include "tables/fault.h"
#include "tables/tableformat.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <optional>

namespace lint {

/// As what a file of that name is checked: ".mal", ".codec", ".map", and ".txt" for decoder
/// modules, in any letter case. Nothing for any other name.
std::optional<TableKind> kindOf(const QString& fileName);

struct Report
{
    QString failure;       ///< why the file could not be read; empty when it could
    QVector<Fault> faults; ///< by ascending line
    bool rightToLeft = false;
    int entryCount = 0;
};

/// Checks the content of a file.
Report lintBytes(TableKind kind, const QByteArray& bytes);

/// Checks the file at `path`, its name included. Files above 4 MiB and what is no regular file are
/// not read.
Report lintFile(TableKind kind, const QString& path);

} // namespace lint
