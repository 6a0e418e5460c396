// SPDX-License-Identifier: MIT
#include "tables/tabletext.h"

#include <QTextCodec>

namespace {

QString decode(const QByteArray& bytes)
{
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    const bool isValid = state.invalidChars == 0 && state.remainingChars == 0;
    return isValid ? text : QString::fromLatin1(bytes.constData(), bytes.size());
}

} // namespace

TableText::TableText(const QByteArray& bytes)
    : m_text(decode(bytes))
{
}

QStringView TableText::ReadLine()
{
    const int lineFeed = m_text.indexOf(QLatin1Char('\n'), m_position);
    const int end = lineFeed < 0 ? m_text.size() : lineFeed;
    QStringView line = QStringView(m_text).mid(m_position, end - m_position);
    m_position = lineFeed < 0 ? end : end + 1;
    if (lineFeed >= 0 && line.endsWith(QLatin1Char('\r')))
        line.chop(1);
    return line;
}

std::optional<int> numberIn(QStringView text, int base)
{
    bool isNumber = false;
    const int number =
        QString::fromRawData(text.data(), static_cast<int>(text.size())).toInt(&isNumber, base);
    return isNumber ? std::optional<int>(number) : std::nullopt;
}

signed char byteOf(QChar character)
{
    return character.unicode() > 0xFF ? 0 : static_cast<signed char>(character.unicode());
}
