// SPDX-License-Identifier: MIT
// The words that a search looks for.
#pragma once

#include "station/archive/record.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace morsehost {

struct WantedWord
{
    QString word;  ///< letters and digits, in upper case
    bool isPrefix; ///< it may go on
};

/// The words of a query; see ArchiveQuery::words.
std::vector<WantedWord> wantedWords(const QStringList& words);

/// Whether each of them occurs in the text of a record.
bool contains(const ArchiveRecord& record, const std::vector<WantedWord>& wanted);

} // namespace morsehost
