// SPDX-License-Identifier: MIT
// morsehost translate: a filter from a decoder's characters to readable text, and back.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/options/tableoptions.h"
#include "app/translate/filter.h"

#include <unistd.h>

namespace morsehost {

namespace {

int run(Arguments& arguments)
{
    if (arguments.text("map").isEmpty())
        arguments.fail(QStringLiteral("--map NAME is missing"));
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    if (!configureDecoderModules(arguments))
        return EXIT_BAD_INPUT;
    return statusAfter(
        translate::runTranslate({directoryOption(arguments, "maps", "maps"), arguments.text("map"),
                                 arguments.text("decoder"), arguments.isSet("back")},
                                STDIN_FILENO, STDOUT_FILENO));
}

} // namespace

Command translateCommand()
{
    return {{"translate",
             "",
             0,
             0,
             "Translates a decoder's 8-bit characters to UTF-8: from standard input to standard\n"
             "output.",
             {mapsOption(),
              {"map", "NAME", "the map, as 'morsehost maps' lists it"},
              {"decoder", "NAME", "decides between an ITA2 and an ASCII map of one name"},
              decoderModulesOption(),
              {"back", nullptr, "the other way: UTF-8 text to 8-bit characters"}},
             "  morsehost translate --map 'Greek - ASCII' <received.bin\n"},
            run};
}

} // namespace morsehost
