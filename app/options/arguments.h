// SPDX-License-Identifier: MIT
// The words of a command line, checked and typed.
#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <optional>
#include <string>
#include <vector>

namespace morsehost {

/// An option as a row: what it is called (a single letter follows a single dash), the name of its
/// value (null for a switch), and the line of the help that explains it.
struct OptionRow
{
    const char* name;
    const char* valueName;
    std::string help;
};

/// What a command accepts, for parsing and for its help.
struct CommandSyntax
{
    const char* name;
    const char* operands; ///< as the synopsis shows them
    int minOperands;
    int maxOperands;
    const char* summary;
    std::vector<OptionRow> options;
    const char* examples; ///< indented lines
};

/// As it is typed: "--rate", or "-o" where the name is one letter.
QString optionWord(const char* option);

/// The option that every command has.
inline const OptionRow HELP_OPTION = {"help", nullptr, "show this help"};

/// Parsed words. The first value that cannot be used is remembered; the command asks for
/// `error()` once it has fetched everything.
class Arguments
{
public:
    Arguments(const CommandSyntax& syntax, const QStringList& words);

    bool isSet(const char* option) const;
    QString text(const char* option) const;
    /// Absent without the option, or when its value is not a number of that range.
    std::optional<double> number(const char* option, double min, double max);
    std::optional<int> wholeNumber(const char* option, int min, int max);
    /// Seconds of a position such as "90", "1:30" or "1:02:03.5"; likewise.
    std::optional<double> position(const char* option, double max);
    /// Microseconds since 1970-01-01 00:00 UTC from an ISO 8601 time; UTC where it names no zone.
    std::optional<unsigned long long> time(const char* option);
    QStringList operands() const;

    /// Remembers an error of the command's own.
    void fail(const QString& error);
    /// Empty when all is well.
    const QString& error() const { return m_error; }
    bool wantsHelp() const { return isSet(HELP_OPTION.name); }
    QString help() const;

private:
    QString parserError(const QStringList& words) const;
    void checkValues();

    const CommandSyntax& m_syntax;
    QCommandLineParser m_parser;
    QString m_error;
};

} // namespace morsehost
