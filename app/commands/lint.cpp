// SPDX-License-Identifier: MIT
// morsehost lint: what is wrong with a table.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/translate/lintfiles.h"

#include <QTextStream>

#include <cstdio>
#include <limits>

namespace morsehost {

namespace {

int run(Arguments& arguments)
{
    QTextStream out(stdout);
    const translate::LintOutcome outcome = translate::lintFiles(arguments.operands(), out);
    for (const QString& failure : outcome.failures)
        complain(failure);
    return outcome.isClean ? EXIT_DONE : EXIT_BAD_INPUT;
}

} // namespace

Command lintCommand()
{
    return {{"lint",
             "FILE…",
             1,
             std::numeric_limits<int>::max(),
             "Checks alphabets, codecs, maps and decoder modules files: reports what the library\n"
             "would ignore silently.",
             {},
             "  morsehost lint data/alphabets/* data/maps/*\n"},
            run};
}

} // namespace morsehost
