// SPDX-License-Identifier: MIT
#include "app/commands/registry.h"

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
    };
    // clang-format on
    return rows;
}

const std::vector<OptionRow>& programOptions()
{
    static const std::vector<OptionRow> rows = {
        {"help", nullptr, "show this help; 'morsehost help COMMAND' tells more"},
        {"version", nullptr, "show the version"},
    };
    return rows;
}

QString shortSummary(const Command& command)
{
    return QString::fromUtf8(command.syntax.summary).section(QLatin1Char('.'), 0, 0).simplified();
}

} // namespace morsehost
