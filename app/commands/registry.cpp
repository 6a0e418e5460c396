// SPDX-License-Identifier: MIT
#include "app/commands/registry.h"

#include <QRegularExpression>

namespace morsehost {

const std::vector<Command>& commands()
{
    // clang-format off
    static const std::vector<Command> rows = {
        decodeCommand(),
        bandCommand(),
        inspectCommand(),
        symbolsCommand(),
        alphabetsCommand(),
        mapsCommand(),
        decodersCommand(),
        translateCommand(),
        mapCommand(),
        lintCommand(),
        searchCommand(),
        stationCommand(),
        passwordCommand(),
    };
    // clang-format on
    return rows;
}

const std::vector<OptionRow>& programOptions()
{
    static const std::vector<OptionRow> rows = {
        {"help", nullptr, "show this help; 'morsehost help COMMAND' shows that of a command"},
        {"version", nullptr, "show the version"},
    };
    return rows;
}

QString shortSummary(const Command& command)
{
    static const QRegularExpression end(QStringLiteral("[.:](\\s|$)"));
    const QString summary = QString::fromUtf8(command.syntax.summary);
    return summary.left(summary.indexOf(end)).simplified();
}

} // namespace morsehost
