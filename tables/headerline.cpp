// SPDX-License-Identifier: MIT
#include "tables/headerline.h"

#include "tables/literal.h"

#include <QString>

#include <utility>

namespace {

constexpr QLatin1String DIRECTION = literal("TextDirection");
constexpr QLatin1String RIGHT_TO_LEFT = literal("RL");
constexpr QLatin1String LEFT_TO_RIGHT = literal("LR");

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
    return name == DIRECTION && value == RIGHT_TO_LEFT;
}

bool HeaderLine::concernsDirection() const
{
    return name.compare(DIRECTION, Qt::CaseInsensitive) == 0;
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

bool readHeader(TableText& text, Faults& faults)
{
    bool isRightToLeft = false;
    int declaredIn = 0; // the line that did
    for (; const auto header = matchHeaderLine(text.Line()); text.Next()) {
        const bool wasRightToLeft = std::exchange(isRightToLeft, header->declaresRightToLeft());
        if (isRightToLeft) {
            declaredIn = text.Number();
            continue;
        }
        if (wasRightToLeft) {
            faults.Error(declaredIn,
                         "right-to-left is switched off again by the header line %1: only the "
                         "last header line counts",
                         text.Number());
        }
        if (header->concernsDirection() &&
            (header->name != DIRECTION || header->value != LEFT_TO_RIGHT)) {
            faults.Error(text.Number(),
                         "this is not a right-to-left header: write \"@ TextDirection RL\", "
                         "in these letter cases");
        }
    }
    return isRightToLeft;
}
