// SPDX-License-Identifier: MIT
// From Morse code back to text, for calls that look up many codes at once.
// No API: used inside the library only.
#pragma once

#include <QHash>
#include <QMap>
#include <QString>
#include <QStringView>

#include <array>

/// The reverse of an alphabet, which must outlive it unchanged. Costs about one step per entry to
/// build and one per symbol to ask.
class CodeIndex
{
public:
    explicit CodeIndex(const QMap<QString, QString>& codes);

    /// The text that `code` stands for: the first in ascending order when several share it, null
    /// when there is none.
    const QString* find(QStringView code) const;

private:
    // Codes of at most this many dots and dashes, which is nearly all of them, have a place of
    // their own: their binary digits behind a leading one.
    static constexpr int MAX_SHORT_SYMBOLS = 8;
    static unsigned place(QStringView code);

    std::array<const QString*, 2u << MAX_SHORT_SYMBOLS> m_short{};
    QHash<QStringView, const QString*> m_other;
};
