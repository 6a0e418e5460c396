// SPDX-License-Identifier: MIT
#include "morse/codeindex.h"

CodeIndex::CodeIndex(const QMap<QString, QString>& codes)
{
    for (auto entry = codes.cbegin(); entry != codes.cend(); ++entry) {
        const QString* const text = &entry.key();
        const QStringView code = entry.value();
        if (const unsigned at = place(code)) {
            if (!m_short[at])
                m_short[at] = text;
        } else if (!m_other.contains(code)) {
            m_other.insert(code, text);
        }
    }
}

const QString* CodeIndex::find(QStringView code) const
{
    if (const unsigned at = place(code))
        return m_short[at];
    return m_other.isEmpty() ? nullptr : m_other.value(code);
}

/// 0 for a code that has no place of its own.
unsigned CodeIndex::place(QStringView code)
{
    if (code.size() > MAX_SHORT_SYMBOLS)
        return 0;
    unsigned at = 1;
    for (const QChar symbol : code) {
        if (symbol == QLatin1Char('.'))
            at = at << 1;
        else if (symbol == QLatin1Char('-'))
            at = at << 1 | 1;
        else
            return 0;
    }
    return at;
}
