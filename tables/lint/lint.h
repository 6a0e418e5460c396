// SPDX-License-Identifier: MIT
// Checks the files of those who write alphabets, maps and lists of decoders: what the readers
// noticed, and what no reader needs to know, such as letters that look alike, codes that hide each
// other, and names under which a file is never found.
#pragma once

#include "tables/fault.h"

#include <QByteArray>
#include <QString>
#include <QVector>

namespace lint {

/// Whether a file of that name is meant to be a table: it ends as those of a format do
/// (`formatMeantBy`).
bool isTable(const QString& fileName);

struct Report
{
    QString failure;       ///< why the file could not be read; empty when it could
    QVector<Fault> faults; ///< by ascending line
    bool rightToLeft = false;
    int entryCount = 0;
};

/// Checks the content of a file of that name, by the format that the name ends in. Of the name
/// itself nothing is reported. What is no table by its name is a failure, here and below.
Report lintBytes(const QString& fileName, const QByteArray& bytes);

/// Checks the file at `path`, its name included. Files above 4 MiB and what is no regular file are
/// not read.
Report lintFile(const QString& path);

} // namespace lint
