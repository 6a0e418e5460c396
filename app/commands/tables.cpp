// SPDX-License-Identifier: MIT
// morsehost alphabets, maps, decoders, translate and lint: the tables that decoders' output goes
// through.
#include "app/commands/commands.h"

#include "app/console/exitstatus.h"
#include "app/options/tableoptions.h"
#include "app/translate/filter.h"
#include "app/translate/listing.h"
#include "tables/lint/lint.h"

#include <QTextStream>

#include <cstdio>
#include <limits>
#include <unistd.h>

namespace morsehost {

namespace {

int runAlphabets(Arguments& arguments)
{
    const QString directory = directoryOption(arguments, "alphabets", "alphabets");
    QTextStream out(stdout);
    QTextStream err(stderr);
    return translate::listAlphabets(directory, out, err);
}

int runMaps(Arguments& arguments)
{
    const QString directory = directoryOption(arguments, "maps", "maps");
    if (!configureDecoderModules(arguments))
        return EXIT_BAD_INPUT;
    QTextStream out(stdout);
    QTextStream err(stderr);
    return translate::listMaps(directory, arguments.text("decoder"), out, err);
}

int runDecoders(Arguments& arguments)
{
    if (!configureDecoderModules(arguments))
        return EXIT_BAD_INPUT;
    QTextStream out(stdout);
    QTextStream err(stderr);
    return translate::listDecoders(decoderModulesFile(arguments), out, err);
}

int runTranslate(Arguments& arguments)
{
    const QString directory = directoryOption(arguments, "maps", "maps");
    if (arguments.text("map").isEmpty())
        arguments.fail(QStringLiteral("--map NAME is missing"));
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    if (!configureDecoderModules(arguments))
        return EXIT_BAD_INPUT;
    QTextStream err(stderr);
    return translate::runTranslate(
        {directory, arguments.text("map"), arguments.text("decoder"), arguments.isSet("back")},
        STDIN_FILENO, STDOUT_FILENO, err);
}

int runLint(Arguments& arguments)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    return lint::runLint(arguments.operands(), out, err);
}

} // namespace

Command alphabetsCommand()
{
    return {{"alphabets",
             "",
             0,
             0,
             "Lists the Morse alphabets: name, file, direction of the text, number of entries.",
             {{"alphabets", "DIR", "where they lie; those that ship without this"}},
             "  morsehost alphabets\n"},
            runAlphabets};
}

Command mapsCommand()
{
    return {{"maps",
             "",
             0,
             0,
             "Lists the codec and map files: name, file, direction of the text, number of entries.",
             {{"maps", "DIR", "where they lie; those that ship without this"},
              {"decoder", "NAME", "only those that fit the decoder"},
              decoderModulesOption()},
             "  morsehost maps --decoder 'ASCII RTTY'\n"},
            runMaps};
}

Command decodersCommand()
{
    return {{"decoders",
             "",
             0,
             0,
             "Lists the decoders of the decoder modules file: name, base character set.",
             {decoderModulesOption()},
             "  morsehost decoders\n"},
            runDecoders};
}

Command translateCommand()
{
    return {{"translate",
             "",
             0,
             0,
             "Translates a decoder's 8-bit characters on standard input to UTF-8 text.",
             {{"maps", "DIR", "where the maps lie; those that ship without this"},
              {"map", "NAME", "the map, as 'morsehost maps' lists it"},
              {"decoder", "NAME", "decides between an ITA2 and an ASCII map of one name"},
              decoderModulesOption(),
              {"back", nullptr, "the other way: UTF-8 text to 8-bit characters"}},
             "  morsehost translate --map 'Greek - ASCII' <received.bin\n"},
            runTranslate};
}

Command lintCommand()
{
    return {{"lint",
             "FILE…",
             1,
             std::numeric_limits<int>::max(),
             "Checks alphabet, codec and map files for what their formats swallow in silence.",
             {},
             "  morsehost lint data/alphabets/*.mal\n"},
            runLint};
}

} // namespace morsehost
