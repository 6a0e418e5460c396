// SPDX-License-Identifier: MIT
#include "app/options/arguments.h"

#include <QDateTime>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>

namespace morsehost {

namespace {

// Documents hold whole seconds in 32 bits.
constexpr qint64 MAX_TIME_S = std::numeric_limits<quint32>::max();

QString plain(double number)
{
    return QString::number(number, 'g', 15);
}

// Where the help of an option begins, and where its lines end.
constexpr int HELP_COLUMN = 21;
constexpr int HELP_WIDTH = 80;

// Words in lines; those after the first are indented.
QString wrapped(const QString& text, int indent)
{
    QString lines;
    int column = indent;
    for (const QString& word : text.split(QLatin1Char(' '))) {
        if (column > indent && column + 1 + word.size() > HELP_WIDTH) {
            lines += QLatin1Char('\n') + QString(indent, QLatin1Char(' '));
            column = indent;
        } else if (column > indent) {
            lines += QLatin1Char(' ');
            ++column;
        }
        lines += word;
        column += word.size();
    }
    return lines + QLatin1Char('\n');
}

// The word that brought the unknown option, without its value.
QString wordOf(const QString& option, const QStringList& words)
{
    for (const QString& word : words) {
        QString name = word.section(QLatin1Char('='), 0, 0);
        const bool isLong = name.startsWith(QLatin1String("--"));
        if (isLong ? name.mid(2) == option
                   : name.startsWith(QLatin1Char('-')) && name.indexOf(option, 1) > 0)
            return name;
    }
    return option;
}

} // namespace

QString optionWord(const char* option)
{
    const QLatin1String name(option);
    return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
}

Arguments::Arguments(const CommandSyntax& syntax, const QStringList& words)
    : m_syntax(syntax)
{
    for (const OptionRow& row : syntax.options) {
        QCommandLineOption option(QLatin1String(row.name), QString::fromStdString(row.help));
        if (row.valueName)
            option.setValueName(QLatin1String(row.valueName));
        m_parser.addOption(option);
    }
    m_parser.addOption(
        QCommandLineOption(QStringList{QStringLiteral("h"), QLatin1String(HELP_OPTION.name)}));
    const bool parsed = m_parser.parse(QStringList(QLatin1String(syntax.name)) + words);
    if (wantsHelp())
        return;
    const int count = operands().size();
    if (!parsed)
        fail(parserError(words));
    else if (count < syntax.minOperands)
        fail(QStringLiteral("%1 is missing").arg(QString::fromUtf8(syntax.operands)));
    else if (count > syntax.maxOperands)
        fail(QStringLiteral("unexpected argument '%1'").arg(operands().at(syntax.maxOperands)));
    else if (operands().contains(QString()))
        fail(QStringLiteral("a file name is empty"));
    checkValues();
}

QString Arguments::parserError(const QStringList& words) const
{
    const QStringList unknown = m_parser.unknownOptionNames();
    if (unknown.isEmpty()) {
        QString error = m_parser.errorText(); // a sentence
        error.chop(1);
        error[0] = error.at(0).toLower();
        return error;
    }
    const QString word = wordOf(unknown.constFirst(), words);
    QString error = QStringLiteral("no option '%1'").arg(word);
    const auto isMeant = [&word](const OptionRow& row) {
        return optionWord(row.name) == QLatin1Char('-') + word;
    };
    if (std::any_of(m_syntax.options.begin(), m_syntax.options.end(), isMeant))
        return error + QStringLiteral("; write -%1").arg(word);
    return error;
}

// What is given twice was changed in one place and forgotten in the other.
void Arguments::checkValues()
{
    for (const OptionRow& row : m_syntax.options) {
        const int count = m_parser.values(QLatin1String(row.name)).size();
        if (!row.valueName || count == 0)
            continue;
        if (count > 1)
            fail(QStringLiteral("%1 is given %2")
                     .arg(optionWord(row.name), count == 2
                                                    ? QStringLiteral("twice")
                                                    : QStringLiteral("%1 times").arg(count)));
        else if (text(row.name).isEmpty())
            fail(QStringLiteral("the %1 of %2 is empty")
                     .arg(QLatin1String(row.valueName), optionWord(row.name)));
    }
}

bool Arguments::isSet(const char* option) const
{
    return m_parser.isSet(QLatin1String(option));
}

QString Arguments::text(const char* option) const
{
    return m_parser.value(QLatin1String(option));
}

std::optional<double> Arguments::number(const char* option, double min, double max)
{
    if (!isSet(option))
        return std::nullopt;
    bool ok = false;
    const double number = text(option).toDouble(&ok);
    if (ok && std::isfinite(number) && number >= min && number <= max)
        return number;
    fail(QStringLiteral("%1 takes a number from %2 to %3, not '%4'")
             .arg(optionWord(option), plain(min), plain(max), text(option)));
    return std::nullopt;
}

std::optional<int> Arguments::wholeNumber(const char* option, int min, int max)
{
    if (!isSet(option))
        return std::nullopt;
    bool ok = false;
    const int number = text(option).toInt(&ok);
    if (ok && number >= min && number <= max)
        return number;
    fail(QStringLiteral("%1 takes a whole number from %2 to %3, not '%4'")
             .arg(optionWord(option), QString::number(min), QString::number(max), text(option)));
    return std::nullopt;
}

std::optional<double> Arguments::position(const char* option, double max)
{
    if (!isSet(option))
        return std::nullopt;
    // Minutes and seconds behind a colon are below 60 and have their two digits.
    static const QRegularExpression form(
        QStringLiteral("^(?:(?:(\\d+):)?(\\d+):(?=[0-5]\\d(?:\\.|$)))?(\\d+(?:\\.\\d*)?)$"));
    const QRegularExpressionMatch match = form.match(text(option));
    const double minutes = match.captured(2).toDouble();
    const double seconds =
        3600 * match.captured(1).toDouble() + 60 * minutes + match.captured(3).toDouble();
    const bool isHour = match.capturedLength(1) > 0;
    if (match.hasMatch() && seconds <= max &&
        (!isHour || (minutes < 60 && match.capturedLength(2) == 2)))
        return seconds;
    fail(QStringLiteral("%1 takes seconds, or a position such as 1:30 or 1:02:03.5, not '%2'")
             .arg(optionWord(option), text(option)));
    return std::nullopt;
}

std::optional<unsigned long long> Arguments::time(const char* option)
{
    if (!isSet(option))
        return std::nullopt;
    QDateTime time = QDateTime::fromString(text(option), Qt::ISODateWithMs);
    if (time.timeSpec() == Qt::LocalTime)
        time.setTimeSpec(Qt::UTC);
    const qint64 milliseconds = time.isValid() ? time.toMSecsSinceEpoch() : -1;
    if (milliseconds >= 0 && milliseconds / 1000 <= MAX_TIME_S)
        return static_cast<unsigned long long>(milliseconds) * 1000;
    fail(QStringLiteral("%1 takes a time from 1970 to 2106 such as 2026-05-12T10:15:00.250Z, "
                        "not '%2'")
             .arg(optionWord(option), text(option)));
    return std::nullopt;
}

QStringList Arguments::operands() const
{
    return m_parser.positionalArguments();
}

void Arguments::fail(const QString& error)
{
    if (m_error.isEmpty())
        m_error = error;
}

QString Arguments::help() const
{
    const QString usage =
        QStringLiteral("Usage: morsehost %1 [OPTION…] %2")
            .arg(QLatin1String(m_syntax.name), QString::fromUtf8(m_syntax.operands))
            .trimmed();
    QString help =
        QStringLiteral("%1\n%2\n\nOptions:\n").arg(usage, QString::fromUtf8(m_syntax.summary));
    const auto row = [&help](const OptionRow& option) {
        const QString words =
            QStringLiteral("  ") + optionWord(option.name) +
            (option.valueName ? QLatin1Char(' ') + QLatin1String(option.valueName) : QString());
        help += words.size() < HELP_COLUMN
                    ? words.leftJustified(HELP_COLUMN)
                    : words + QLatin1Char('\n') + QString(HELP_COLUMN, QLatin1Char(' '));
        help += wrapped(QString::fromStdString(option.help), HELP_COLUMN);
    };
    for (const OptionRow& option : m_syntax.options)
        row(option);
    row(HELP_OPTION);
    if (m_syntax.examples)
        help += QStringLiteral("\nExamples:\n") + QString::fromUtf8(m_syntax.examples);
    return help;
}

} // namespace morsehost
