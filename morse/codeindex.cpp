// SPDX-License-Identifier: MIT
#include "morse/codeindex.h"

namespace {

/// Two or three codes.
constexpr qsizetype FEW_SYMBOLS = 8;

} // namespace

const QString* findText(const QMap<QString, QString>& codes, QStringView code)
{
    for (auto entry = codes.cbegin(); entry != codes.cend(); ++entry) {
        if (entry.value() == code)
            return &entry.key();
    }
    return nullptr;
}

CodeIndex::CodeIndex(const QMap<QString, QString>& codes, qsizetype symbolCount)
    : m_codes(codes)
{
    if (symbolCount > FEW_SYMBOLS)
        Build();
}

const QString* CodeIndex::Find(const CodeBuffer& code) const
{
    if (!m_isBuilt)
        return findText(m_codes, code.Symbols());
    if (code.Place() < CodeBuffer::PLACES)
        return m_byPlace[code.Place()];
    return m_others.isEmpty() ? nullptr : m_others.value(code.Symbols());
}

void CodeIndex::Build()
{
    m_isBuilt = true;
    m_byPlace.fill(nullptr);
    CodeBuffer code;
    for (auto entry = m_codes.cbegin(); entry != m_codes.cend(); ++entry) {
        code.Clear();
        for (const QChar symbol : entry.value())
            code.Add(symbol);
        const QString* const text = &entry.key();
        if (code.Place() < CodeBuffer::PLACES) {
            if (!m_byPlace[code.Place()])
                m_byPlace[code.Place()] = text;
        } else if (!m_others.contains(entry.value())) {
            m_others.insert(entry.value(), text);
        }
    }
}
