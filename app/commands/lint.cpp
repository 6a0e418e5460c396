// SPDX-License-Identifier: MIT
// morsehost lint: what is wrong with a table.
#include "app/commands/commands.h"

#include "tables/lint/lint.h"

#include <QTextStream>

#include <cstdio>
#include <limits>

namespace morsehost {

namespace {

int run(Arguments& arguments)
{
    QTextStream out(stdout);
    QTextStream err(stderr);
    return lint::runLint(arguments.operands(), out, err);
}

} // namespace

Command lintCommand()
{
    return {{"lint",
             "FILE…",
             1,
             std::numeric_limits<int>::max(),
             "Checks alphabet, codec and map files for what the library would ignore silently.",
             {},
             "  morsehost lint data/alphabets/*.mal\n"},
            run};
}

} // namespace morsehost
