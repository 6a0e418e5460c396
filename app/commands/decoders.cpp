// SPDX-License-Identifier: MIT
// morsehost decoders: which decoders the decoder modules file names.
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
    return statusAfter(translate::listDecoders(decoderModulesFile(arguments), out));
}

} // namespace

Command decodersCommand()
{
    return {{"decoders",
             "",
             0,
             0,
             "Lists the decoders of the decoder modules file: name, base character set.",
             {decoderModulesOption()},
             "  morsehost decoders\n"},
            run};
}

} // namespace morsehost
