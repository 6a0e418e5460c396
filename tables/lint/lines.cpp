// SPDX-License-Identifier: MIT
#include "tables/lint/lines.h"

#include "tables/headerline.h"

#include <QTextCodec>

#include <algorithm>
#include <utility>

namespace lint {

namespace {

QVector<Line> linesOfText(const QString& text)
{
    QVector<Line> lines;
    int start = 0;
    while (start < text.size()) {
        int end = text.indexOf(QLatin1Char('\n'), start);
        const int next = end < 0 ? text.size() : end + 1;
        if (end < 0)
            end = text.size();
        else if (end > start && text.at(end - 1) == QLatin1Char('\r'))
            --end;
        lines.append({lines.size() + 1, text.mid(start, end - start), false});
        start = next;
    }
    return lines;
}

bool isUtf8(const QByteArray& bytes)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

/// Only asked for files that are not UTF-8 as a whole.
void markDamagedLines(const QByteArray& bytes, QVector<Line>& lines)
{
    int start = 0;
    for (Line& line : lines) {
        int end = bytes.indexOf('\n', start);
        if (end < 0)
            end = bytes.size();
        line.damaged = !isUtf8(bytes.mid(start, end - start));
        start = end + 1;
    }
}

} // namespace

void Notes::add(int line, Severity severity, const QString& message)
{
    constexpr int most = 1000;
    if (m_findings.size() < most)
        m_findings.append({line, severity, message});
    else
        ++m_omitted;
}

QVector<Finding> Notes::take()
{
    std::stable_sort(m_findings.begin(), m_findings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    if (m_omitted > 0) {
        m_findings.append({m_findings.last().line, Severity::Error,
                           QStringLiteral("and %1 more findings").arg(m_omitted)});
    }
    return std::move(m_findings);
}

QVector<Line> splitLines(const QByteArray& bytes, Damage damage, Notes& notes)
{
    QTextCodec* const utf8 = QTextCodec::codecForName("UTF-8");
    QVector<Line> lines;
    QTextCodec* const marked = QTextCodec::codecForUtfText(bytes, utf8);
    if (damage == Damage::Replaced && marked != utf8) {
        notes.add(1, Severity::Warning,
                  QStringLiteral("the file is %1; alphabet files are UTF-8")
                      .arg(QString::fromLatin1(marked->name())));
        lines = linesOfText(marked->toUnicode(bytes));
    } else if (isUtf8(bytes)) {
        lines = linesOfText(utf8->toUnicode(bytes));
    } else if (damage == Damage::Replaced) {
        // With a state, as the reader has it: a character that is cut off by the end is not read.
        QTextCodec::ConverterState state;
        lines = linesOfText(utf8->toUnicode(bytes.constData(), bytes.size(), &state));
        markDamagedLines(bytes, lines);
        for (const Line& line : qAsConst(lines)) {
            if (line.damaged)
                notes.add(line.number, Severity::Error,
                          QStringLiteral("invalid UTF-8: each bad byte is read as U+FFFD"));
        }
        if (state.remainingChars > 0) {
            notes.add(bytes.count('\n') + 1, Severity::Error,
                      QStringLiteral("the file ends within a UTF-8 character"));
        }
    } else {
        lines = linesOfText(QString::fromLatin1(bytes.constData(), bytes.size()));
        markDamagedLines(bytes, lines);
        for (const Line& line : qAsConst(lines)) {
            if (line.damaged) {
                notes.add(line.number, Severity::Warning,
                          QStringLiteral("invalid UTF-8: the whole file is read as Latin-1"));
                break;
            }
        }
    }
    for (const Line& line : qAsConst(lines)) {
        if (line.text.contains(QLatin1Char('\r'))) {
            notes.add(line.number, Severity::Error,
                      QStringLiteral("a lone carriage return does not end a line"));
        }
    }
    return lines;
}

int readHeader(const QVector<Line>& lines, bool& rightToLeft, Notes& notes)
{
    const QLatin1String directionName("TextDirection");
    rightToLeft = false;
    int index = 0;
    int rightToLeftLine = 0;
    for (; index < lines.size(); ++index) {
        const Line& line = lines.at(index);
        const auto header = matchHeaderLine(line.text);
        if (!header)
            break;
        const bool wanted = rightToLeft;
        rightToLeft = header->declaresRightToLeft();
        if (wanted && !rightToLeft) {
            notes.add(
                rightToLeftLine, Severity::Error,
                QStringLiteral("right-to-left is switched off again by the header line %1: only "
                               "the last header line counts")
                    .arg(line.number));
        }
        if (rightToLeft)
            rightToLeftLine = line.number;
        else if (header->name.compare(directionName, Qt::CaseInsensitive) == 0 &&
                 (header->name != directionName || header->value != QLatin1String("LR"))) {
            notes.add(line.number, Severity::Error,
                      QStringLiteral("this is no right-to-left header: it is written "
                                     "\"@ TextDirection RL\", in these letter cases"));
        }
    }
    return index;
}

QString shown(QChar character)
{
    QString point = QStringLiteral("U+%1").arg(
        QString::number(character.unicode(), 16).toUpper().rightJustified(4, QLatin1Char('0')));
    if (!character.isPrint() || character.isMark() || character.isSurrogate())
        return point;
    return QStringLiteral("\"%1\" (%2)").arg(character).arg(point);
}

QString shown(const QString& text)
{
    if (text.size() == 1)
        return shown(text.at(0));
    // Lines of any length come by here: a message shows the beginning.
    constexpr int longest = 40;
    const QString beginning = text.left(longest);
    QString clean;
    for (const QChar character : beginning)
        clean += character.isPrint() ? character : QChar(QChar::ReplacementCharacter);
    if (text.size() > longest)
        clean += QStringLiteral("...");
    return QStringLiteral("\"%1\"").arg(clean);
}

} // namespace lint
