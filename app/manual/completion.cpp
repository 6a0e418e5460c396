// SPDX-License-Identifier: MIT
#include "app/manual/completion.h"

#include "app/commands/registry.h"

#include <QMap>
#include <QStringList>

#include <algorithm>

namespace morsehost {

namespace {

enum class Values { None, Folders, Files, Pictures, Listed };

QString words(const std::vector<OptionRow>& options)
{
    QStringList list;
    for (const OptionRow& option : options)
        list += optionWord(option.name);
    return list.join(QLatin1Char(' '));
}

bool isCommand(const std::vector<Command>& commands, const QString& name)
{
    return std::any_of(commands.begin(), commands.end(), [&name](const Command& command) {
        return name == QLatin1String(command.syntax.name);
    });
}

Values valuesOf(const OptionRow& option, const std::vector<Command>& commands)
{
    const QString valueName = QLatin1String(option.valueName);
    if (valueName == QLatin1String("DIR"))
        return Values::Folders;
    if (valueName == QLatin1String("FILE"))
        return Values::Files;
    if (valueName == QLatin1String("PICTURE"))
        return Values::Pictures;
    if (valueName == QLatin1String("NAME") &&
        isCommand(commands, QLatin1String(option.name) + QLatin1Char('s')))
        return Values::Listed;
    return Values::None;
}

QString bashAction(const OptionRow& option, Values values)
{
    switch (values) {
    case Values::Folders:
        return QStringLiteral("_morsehost_paths -d");
    case Values::Files:
        return QStringLiteral("_morsehost_paths -f");
    case Values::Pictures:
        return QStringLiteral("_morsehost_paths -f -X '!*.[sSpP][vVnN][gG]' -o plusdirs");
    case Values::Listed:
        return QStringLiteral("_morsehost_listed %1s").arg(QLatin1String(option.name));
    case Values::None:
        break;
    }
    return QStringLiteral(":");
}

QString zshAction(const OptionRow& option, Values values)
{
    switch (values) {
    case Values::Folders:
        return QStringLiteral("_files -/");
    case Values::Files:
        return QStringLiteral("_files");
    case Values::Pictures:
        return QStringLiteral("_files -g \"(#i)*.(svg|png)\"");
    case Values::Listed:
        return QStringLiteral("_morsehost_listed %1s").arg(QLatin1String(option.name));
    case Values::None:
        break;
    }
    return QStringLiteral("( )");
}

QString fishAction(const OptionRow& option, Values values)
{
    switch (values) {
    case Values::Folders:
        return QStringLiteral("-x -a '(__fish_complete_directories)'");
    case Values::Files:
        return QStringLiteral("-r -F");
    case Values::Pictures:
        return QStringLiteral("-x -a '(__morsehost_pictures)'");
    case Values::Listed:
        return QStringLiteral("-x -a '(__morsehost_listed %1s)'").arg(QLatin1String(option.name));
    case Values::None:
        break;
    }
    return QStringLiteral("-x");
}

std::vector<OptionRow> optionsOf(const Command& command)
{
    std::vector<OptionRow> options = command.syntax.options;
    options.push_back(HELP_OPTION);
    return options;
}

bool takesFiles(const Command& command)
{
    return QString::fromUtf8(command.syntax.operands).contains(QLatin1String("FILE"));
}

// Within single quotes; zsh reads the description up to a bracket or colon.
QString zshText(QString text)
{
    for (const char* const character : {"\\", "[", "]", ":"})
        text.replace(QLatin1String(character), QLatin1Char('\\') + QLatin1String(character));
    return text.replace(QLatin1Char('\''), QLatin1String("'\\''"));
}

QString fishText(QString text)
{
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    return text.replace(QLatin1Char('\''), QLatin1String("\\'"));
}

QString fishOption(const OptionRow& option)
{
    const QLatin1String name(option.name);
    return (name.size() == 1 ? QStringLiteral("-s ") : QStringLiteral("-l ")) + name;
}

} // namespace

QString bashCompletion(const std::vector<Command>& commands,
                       const std::vector<OptionRow>& programOptions)
{
    QStringList names;
    QString commandCases;
    QMap<QString, QString> valueCases; // the same option means the same in every command
    for (const Command& command : commands) {
        const CommandSyntax& syntax = command.syntax;
        names += QLatin1String(syntax.name);
        const std::vector<OptionRow> options = optionsOf(command);
        commandCases += QStringLiteral("        %1) options='%2' operands=%3 ;;\n")
                            .arg(names.constLast(), words(options))
                            .arg(takesFiles(command) ? 1 : 0);
        for (const OptionRow& option : options) {
            if (option.valueName)
                valueCases[optionWord(option.name)] =
                    bashAction(option, valuesOf(option, commands));
        }
    }
    QString valueLines;
    for (auto row = valueCases.cbegin(); row != valueCases.cend(); ++row)
        valueLines += QStringLiteral("        %1) %2; return ;;\n").arg(row.key(), row.value());

    return QStringLiteral(R"bash(# bash completion for morsehost
# Written from the tables of the program; changes made here are lost.

_morsehost_paths()
{
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen "$@" -- "$current")
}

# Names come from the folder or file that the line names. They may hold blanks, and are quoted as the
# shell needs them.
_morsehost_listed()
{
    local typed=${current//[\\\"\']/} name place list=("$1")
    for ((place = 2; place < COMP_CWORD - 1; ++place)); do
        [ "${COMP_WORDS[place]}" = "--$1" ] || continue
        name=${COMP_WORDS[place + 1]}
        [ "$name" = = ] && name=${COMP_WORDS[place + 2]}
        list+=("--$1" "${name//[\\\"\']/}")
    done
    while IFS=$'\t' read -r name _; do
        [[ $name == "$typed"* ]] && COMPREPLY+=("$(printf %q "$name")")
    done < <("${COMP_WORDS[0]}" "${list[@]}" 2>/dev/null)
}

_morsehost()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local options operands
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W '%1' -- "$current")
        return
    fi
    # "--option=value" comes in three words.
    [ "$current" = = ] && current=
    [ "$previous" = = ] && previous=${COMP_WORDS[COMP_CWORD - 2]}
    case $previous in
%3    esac
    case ${COMP_WORDS[1]} in
        help | --help) [ "$COMP_CWORD" -gt 2 ] ||
            mapfile -t COMPREPLY < <(compgen -W '%4' -- "$current"); return ;;
%2        *) return ;;
    esac
    case $current in
        -*) mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current") ;;
        *) [ "$operands" -eq 1 ] && _morsehost_paths -f ;;
    esac
}

complete -F _morsehost morsehost
)bash")
        .arg(names.join(QLatin1Char(' ')) + QLatin1String(" help ") + words(programOptions),
             commandCases, valueLines, names.join(QLatin1Char(' ')));
}

QString zshCompletion(const std::vector<Command>& commands,
                      const std::vector<OptionRow>& programOptions)
{
    QString names;
    QString cases;
    for (const Command& command : commands) {
        const QLatin1String name(command.syntax.name);
        names += QStringLiteral("            '%1:%2'\n").arg(name, zshText(shortSummary(command)));
        cases += QStringLiteral("        %1) _arguments").arg(name);
        for (const OptionRow& option : optionsOf(command)) {
            cases +=
                QStringLiteral(" \\\n            '%1[%2]")
                    .arg(optionWord(option.name), zshText(QString::fromStdString(option.help)));
            if (option.valueName)
                cases += QStringLiteral(":%1:%2").arg(
                    QLatin1String(option.valueName), zshAction(option, valuesOf(option, commands)));
            cases += QLatin1Char('\'');
        }
        if (takesFiles(command))
            cases += QStringLiteral(" \\\n            '*:file:_files'");
        cases += QStringLiteral(" ;;\n");
    }
    for (const OptionRow& option : programOptions)
        names += QStringLiteral("            '%1:%2'\n")
                     .arg(optionWord(option.name), zshText(QString::fromStdString(option.help)));
    return QStringLiteral(R"zsh(#compdef morsehost
# zsh completion for morsehost
# Written from the tables of the program; changes made here are lost.

# Names come from the folder or file that the line names. What precedes the list is for compadd.
_morsehost_listed()
{
    local list=$argv[-1]
    local -a names place
    (( $+opt_args[--$list] )) && place=(--$list ${(Q)opt_args[--$list]})
    names=(${(f)"$($program $list $place 2>/dev/null | cut -f 1)"})
    compadd "${(@)argv[1,-2]}" -a names
}

_morsehost()
{
    local program=$words[1]
    local -A opt_args
    if (( CURRENT == 2 )); then
        local -a commands
        commands=(
%1        )
        _describe command commands
        return
    fi
    shift words
    (( CURRENT-- ))
    case $words[1] in
%2    esac
}

_morsehost "$@"
)zsh")
        .arg(names, cases);
}

QString fishCompletion(const std::vector<Command>& commands,
                       const std::vector<OptionRow>& programOptions)
{
    QString lines = QStringLiteral(R"fish(# fish completion for morsehost
# Written from the tables of the program; changes made here are lost.

# Names come from the folder or file that the line names.
function __morsehost_listed
    set -l words (commandline -opc)
    set -l place
    if set -l at (contains -i -- --$argv[1] $words)
        set place --$argv[1] $words[(math $at + 1)]
    end
    $words[1] $argv[1] $place 2>/dev/null | cut -f 1
end

function __morsehost_pictures
    complete -C "__fish_command_without_completions "(commandline -ct) |
        string match -ir '.*(?:/|\.svg|\.png)$'
end

)fish");
    for (const OptionRow& option : programOptions)
        lines += QStringLiteral("complete -c morsehost -n __fish_use_subcommand %1 -f -d '%2'\n")
                     .arg(fishOption(option), fishText(QString::fromStdString(option.help)));
    for (const Command& command : commands) {
        const QLatin1String name(command.syntax.name);
        const QString within =
            QStringLiteral("complete -c morsehost -n '__fish_seen_subcommand_from %1' ").arg(name);
        lines += QStringLiteral("complete -c morsehost -n __fish_use_subcommand -f -a %1 -d '%2'\n")
                     .arg(name, fishText(shortSummary(command)));
        if (!takesFiles(command))
            lines += within + QStringLiteral("-f\n");
        for (const OptionRow& option : optionsOf(command)) {
            lines += within + fishOption(option);
            if (option.valueName)
                lines += QLatin1Char(' ') + fishAction(option, valuesOf(option, commands));
            lines +=
                QStringLiteral(" -d '%1'\n").arg(fishText(QString::fromStdString(option.help)));
        }
    }
    return lines;
}

} // namespace morsehost
