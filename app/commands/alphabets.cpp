// SPDX-License-Identifier: MIT
// morsehost alphabets: which Morse alphabets there are.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/options/tableoptions.h"
#include "app/translate/listing.h"

#include <cstdio>

namespace morsehost {

namespace {

int run(Arguments& arguments)
{
    QTextStream out(stdout);
    return statusAfter(
        translate::listAlphabets(directoryOption(arguments, "alphabets", "alphabets"), out));
}

} // namespace

Command alphabetsCommand()
{
    return {{"alphabets",
             "",
             0,
             0,
             "Lists the Morse alphabets: name, file, direction of the text, number of entries.",
             {{"alphabets", "DIR", "folder of the alphabet files (default: those installed)"}},
             "  morsehost alphabets\n"},
            run};
}

} // namespace morsehost
