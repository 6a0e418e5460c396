// SPDX-License-Identifier: MIT
#include "app/console/printable.h"

#include <algorithm>

namespace morsehost {

namespace {

bool isControl(QChar c)
{
    return c.category() == QChar::Other_Control;
}

bool isOrder(QChar c)
{
    return isControl(c) && c != QLatin1Char('\n') && c != QLatin1Char('\t');
}

} // namespace

QString printable(QString text)
{
    std::replace_if(text.begin(), text.end(), isOrder, QChar(QChar::ReplacementCharacter));
    return text;
}

QString printableLine(QString text)
{
    std::replace_if(text.begin(), text.end(), isControl, QChar(QChar::ReplacementCharacter));
    return text;
}

QString onOneLine(const QString& text)
{
    return printableLine(text.simplified());
}

} // namespace morsehost
