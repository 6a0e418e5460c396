// SPDX-License-Identifier: MIT
// morsehost maps: which codec and map files there are.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/options/tableoptions.h"
#include "app/translate/listing.h"

#include <cstdio>

namespace morsehost {

namespace {

int run(Arguments& arguments)
{
    if (!configureDecoderModules(arguments))
        return EXIT_BAD_INPUT;
    QTextStream out(stdout);
    return statusAfter(translate::listMaps(directoryOption(arguments, "maps", "maps"),
                                           arguments.text("decoder"), out));
}

} // namespace

Command mapsCommand()
{
    return {{"maps",
             "",
             0,
             0,
             "Lists the codec and map files: name, file, direction of the text, number of entries.",
             {mapsOption(),
              {"decoder", "NAME", "only those that fit this decoder"},
              decoderModulesOption()},
             "  morsehost maps --decoder 'ASCII RTTY'\n"},
            run};
}

} // namespace morsehost
