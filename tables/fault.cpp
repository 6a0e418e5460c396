// SPDX-License-Identifier: MIT
#include "tables/fault.h"

#include <algorithm>
#include <utility>

namespace {

QString hexadecimal(uint number, int digits)
{
    return QString::number(number, 16).toUpper().rightJustified(digits, QLatin1Char('0'));
}

} // namespace

QString shown(QStringView text)
{
    if (text.size() == 1)
        return shown(text[0]);
    constexpr int LONGEST = 40;
    QString clean;
    for (const QChar character : text.left(LONGEST))
        clean += character.isPrint() ? character : QChar(QChar::ReplacementCharacter);
    if (text.size() > LONGEST)
        clean += QLatin1String("...");
    return QLatin1Char('"') + clean + QLatin1Char('"');
}

QString shown(QChar character)
{
    const QString point = QLatin1String("U+") + hexadecimal(character.unicode(), 4);
    if (!character.isPrint() || character.isMark() || character.isSurrogate())
        return point;
    return QLatin1Char('"') + QString(character) + QLatin1String("\" (") + point + QLatin1Char(')');
}

QString shown(uchar byte)
{
    const QString hex = QLatin1String("0x") + hexadecimal(byte, 2);
    if (byte <= 0x20 || byte >= 0x7F)
        return hex;
    return hex + QLatin1String(" (\"") + QLatin1Char(static_cast<char>(byte)) +
           QLatin1String("\")");
}

QString shown(int number)
{
    return QString::number(number);
}

QString shown(QLatin1String word)
{
    return word;
}

QVector<Fault> Faults::Take()
{
    std::stable_sort(m_kept.begin(), m_kept.end(),
                     [](const Fault& a, const Fault& b) { return a.line < b.line; });
    if (m_omitted > 0 && !m_kept.isEmpty()) {
        m_kept.append({m_kept.last().line, Fault::Severity::Error,
                       QStringLiteral("and %1 more findings").arg(m_omitted)});
    }
    m_omitted = 0;
    return std::exchange(m_kept, {});
}
