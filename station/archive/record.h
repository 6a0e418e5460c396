// SPDX-License-Identifier: MIT
// What the archive keeps of a transmission.
#pragma once

#include "station/transmission.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace morsehost {

struct ArchiveRecord
{
    QString key;     ///< what has one that is there already is not archived again
    QString station; ///< name of the machine that received it; empty where there is one only
    Transmission transmission;
};

/// The key of a transmission that is heard live. No other has it: numbers begin again with each
/// decoder, and times come again when the clock is set back.
QString keyOfHeard();
/// The key of a transmission out of a recording, whose place is that of RecordingKeys: the same
/// whenever that is decoded.
QString keyOfRecorded(const QString& place, const Transmission& transmission);

/// One line without a line end, for a spool. `archiveRecordOf` reads it back exactly.
QByteArray toLine(const ArchiveRecord& record);
/// Nothing for whatever is no such line.
std::optional<ArchiveRecord> archiveRecordOf(const QByteArray& line);

/// The words of a text as they are searched: runs of letters and digits, in upper case, each once.
QStringList archiveWords(const QString& text);
/// Those by which a record is found: of its text and of its raw text.
QStringList archiveWords(const ArchiveRecord& record);

} // namespace morsehost
