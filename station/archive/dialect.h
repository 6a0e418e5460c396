// SPDX-License-Identifier: MIT
// The kinds of databases that an archive can be in, and all in which they differ.
#pragma once

#include "station/archive/wantedwords.h"

#include <QString>
#include <QVariantList>

#include <vector>

class QSqlDatabase;

namespace morsehost {

struct ArchiveDialect
{
    const char* driver;
    /// As archiveUrlFault; null where there is none to be found.
    QString (*urlFault)(const QString& url);
    /// Of the connection, before it is opened.
    void (*setUp)(QSqlDatabase& database, const QString& url);
    /// A query: not 0 where there are tables, but none of an archive; null where others may be
    /// there as well.
    const char* isForeign;
    std::vector<const char*> onOpening;
    const char* begin;   ///< of a transaction that keeps others from making the tables
    const char* version; ///< a query
    /// What makes an archive of version 1 of an empty database, of version 2 of that, and so on.
    std::vector<std::vector<const char*>> schema;
    const char* beforeAdding; ///< within its transaction; null for nothing
    const char* insertInto;   ///< before the table
    const char* insertBehind; ///< the values, for rows whose key is there already to be left alone
    /// The column of words and its value, for what wordsValue makes of the words of a text; null
    /// where a trigger fills it.
    const char* wordsColumn;
    const char* wordsPlace;
    QString (*wordsValue)(const QStringList& words);
    const char* join;      ///< of the index of words
    const char* condition; ///< that the words are there
    QString (*match)(const std::vector<WantedWord>&);
    const char* idOfFound; ///< by the words: the id, as the index has it
    /// Chooses by how many rows there are; where it does not, a search counts them.
    bool plansItself;
    /// A query that gives the rows with words that begin so, and its values.
    const char* rowsOfBeginning;
    QVariantList (*beginning)(const WantedWord& word);
    /// Of so many such rows, an index costs more than comparing row after row until there are
    /// enough.
    int commonRows;
    const char* compared; ///< as `condition`, without the index; null where it is not in SQL
    const char* size;     ///< a query: bytes in use
    /// The first step of giving back what removed words take, and each further one; null where the
    /// database does that by itself.
    const char* tidyFirst;
    const char* tidyOn;
    const char* changes; ///< a query: rows that this connection has changed
};

/// That of a URL; see Archive::open.
const ArchiveDialect& archiveDialect(const QString& url);

} // namespace morsehost
