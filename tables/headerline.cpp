// SPDX-License-Identifier: MIT
#include "tables/headerline.h"

#include <QString>

namespace {

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c.isMark() || c == QLatin1Char('_');
}

bool isSpace(QChar c)
{
    return c.isSpace();
}

/// Cuts off and returns the longest beginning of `text` that holds only such characters.
template <typename Is>
QStringView takeWhile(QStringView& text, Is is)
{
    qsizetype length = 0;
    while (length < text.size() && is(text[length]))
        ++length;
    const QStringView taken = text.left(length);
    text = text.mid(length);
    return taken;
}

} // namespace

bool HeaderLine::declaresRightToLeft() const
{
    return name == QLatin1String("TextDirection") && value == QLatin1String("RL");
}

std::optional<HeaderLine> matchHeaderLine(QStringView line)
{
    if (!line.startsWith(QLatin1Char('@')))
        return std::nullopt;
    QStringView rest = line.mid(1);
    // Blanks and word characters share no character, so each run can only be taken whole.
    takeWhile(rest, isSpace);
    const QStringView name = takeWhile(rest, isWordCharacter);
    const QStringView gap = takeWhile(rest, isSpace);
    const QStringView value = takeWhile(rest, isWordCharacter);
    if (name.isEmpty() || gap.isEmpty() || value.isEmpty())
        return std::nullopt;
    return HeaderLine{name, value};
}
