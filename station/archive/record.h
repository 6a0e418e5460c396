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
    /// The same reception has the same key however often it is decoded and sent, so that it is
    /// archived once.
    QString key;
    QString station; ///< name of the machine that received it; empty where there is one only
    Transmission transmission;
};

/// The key of a transmission out of a recording or receiver: the same for the same station,
/// receiver, source, decoder, signal number, begin and text.
QString archiveKey(const QString& station, const Transmission& transmission);

/// The record of a transmission that a station received, its key included.
ArchiveRecord archiveRecordOf(const QString& station, const Transmission& transmission);

/// One line without a line end, for a spool. `archiveRecordOf` reads it back exactly.
QByteArray toLine(const ArchiveRecord& record);
/// Nothing for whatever is no such line.
std::optional<ArchiveRecord> archiveRecordOf(const QByteArray& line);

/// The words of a text as they are searched: runs of letters and digits, in upper case, each once.
QStringList archiveWords(const QString& text);
/// Those by which a record is found: of its text and of its raw text.
QStringList archiveWords(const ArchiveRecord& record);

} // namespace morsehost
