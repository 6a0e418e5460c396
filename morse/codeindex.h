// SPDX-License-Identifier: MIT
// From Morse code back to text, for calls that look up many codes at once.
// No API: used inside the library only.
#pragma once

#include <QHash>
#include <QMap>
#include <QString>
#include <QStringView>
#include <QVarLengthArray>

#include <array>

/// The symbols of one code as they come in.
class CodeBuffer
{
public:
    void Add(QChar symbol)
    {
        m_symbols.append(symbol);
        const bool isDash = symbol == QLatin1Char('-');
        const bool isSymbol = isDash || symbol == QLatin1Char('.');
        const unsigned place = m_place << 1 | unsigned(isDash);
        m_place = isSymbol && place < PLACES ? place : PLACES;
    }

    void Clear()
    {
        m_symbols.clear();
        m_place = 1;
    }

    bool IsEmpty() const { return m_symbols.isEmpty(); }
    QStringView Symbols() const { return {m_symbols.data(), m_symbols.size()}; }

    /// Codes of up to eight dots and dashes, which is nearly all of them, have a number of their
    /// own: their binary digits behind a leading one. All others have the number PLACES.
    unsigned Place() const { return m_place; }
    static constexpr unsigned PLACES = 1u << 9;

private:
    QVarLengthArray<QChar, 32> m_symbols;
    unsigned m_place = 1;
};

/// The first text in ascending order that has this code, null when there is none.
const QString* findText(const QMap<QString, QString>& codes, QStringView code);

/// The reverse of an alphabet, which must outlive it unchanged.
class CodeIndex
{
public:
    /// `symbolCount` is the length of the text whose codes will be looked up. For a few symbols the
    /// entries are searched one by one; for more, an index is built that costs about one step an
    /// entry.
    CodeIndex(const QMap<QString, QString>& codes, qsizetype symbolCount);

    /// As `findText`.
    const QString* Find(const CodeBuffer& code) const;

private:
    void Build();

    const QMap<QString, QString>& m_codes;
    bool m_isBuilt = false;
    std::array<const QString*, CodeBuffer::PLACES> m_byPlace;
    QHash<QStringView, const QString*> m_others;
};
