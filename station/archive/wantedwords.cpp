// SPDX-License-Identifier: MIT
#include "station/archive/wantedwords.h"

#include <QSet>

#include <algorithm>

namespace morsehost {

std::vector<WantedWord> wantedWords(const QStringList& words)
{
    std::vector<WantedWord> wanted;
    for (const QString& word : words) {
        const QStringList parts = archiveWords(word);
        for (const QString& part : parts)
            wanted.push_back({part, false});
        if (!parts.isEmpty() && word.endsWith(QLatin1Char('*')))
            wanted.back().isPrefix = true;
    }
    return wanted;
}

bool contains(const ArchiveRecord& record, const std::vector<WantedWord>& wanted)
{
    const QStringList words = archiveWords(record);
    const QSet<QString> whole(words.begin(), words.end());
    return std::all_of(wanted.begin(), wanted.end(), [&](const WantedWord& one) {
        return whole.contains(one.word) ||
               (one.isPrefix && std::any_of(words.begin(), words.end(), [&](const QString& word) {
                    return word.startsWith(one.word);
                }));
    });
}

} // namespace morsehost
