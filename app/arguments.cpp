// SPDX-License-Identifier: MIT
#include "app/arguments.h"

#include <QDateTime>

#include <cmath>
#include <limits>

namespace morsehost {

namespace {

// Documents hold whole seconds in 32 bits.
constexpr qint64 MAX_TIME_S = std::numeric_limits<quint32>::max();

QString optionName(const char* option)
{
    const QLatin1String name(option);
    return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
}

QString plain(double number)
{
    return QString::number(number, 'g', 10);
}

} // namespace

Arguments::Arguments(const CommandSyntax& syntax, const QStringList& words)
    : m_syntax(syntax)
{
    for (const OptionRow& row : syntax.options) {
        QCommandLineOption option(QLatin1String(row.name), QString::fromUtf8(row.help));
        if (row.valueName)
            option.setValueName(QLatin1String(row.valueName));
        m_parser.addOption(option);
    }
    m_parser.addOption(
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")});
    const bool parsed = m_parser.parse(QStringList(QLatin1String(syntax.name)) + words);
    if (wantsHelp())
        return;
    const int count = operands().size();
    if (!parsed)
        fail(m_parser.errorText());
    else if (count < syntax.minOperands)
        fail(QStringLiteral("%1 is missing").arg(QString::fromUtf8(syntax.operands)));
    else if (count > syntax.maxOperands)
        fail(
            QStringLiteral("'%1' is one argument too many").arg(operands().at(syntax.maxOperands)));
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
             .arg(optionName(option), plain(min), plain(max), text(option)));
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
             .arg(optionName(option), QString::number(min), QString::number(max), text(option)));
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
             .arg(optionName(option), text(option)));
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
    QString help = QStringLiteral("Usage: morsehost %1 [OPTION…] %2\n%3\n\nOptions:\n")
                       .arg(QLatin1String(m_syntax.name), QString::fromUtf8(m_syntax.operands),
                            QString::fromUtf8(m_syntax.summary));
    const auto row = [&help](const QString& words, const char* meaning) {
        help += QStringLiteral("  %1 %2\n").arg(words, -18).arg(QString::fromUtf8(meaning));
    };
    for (const OptionRow& option : m_syntax.options)
        row(optionName(option.name) +
                (option.valueName ? QLatin1Char(' ') + QLatin1String(option.valueName) : QString()),
            option.help);
    row(QStringLiteral("--help"), "show this help");
    if (m_syntax.examples)
        help += QStringLiteral("\nExamples:\n") + QString::fromUtf8(m_syntax.examples);
    return help;
}

} // namespace morsehost
