// SPDX-License-Identifier: MIT
#include "app/console/complain.h"

#include "app/console/exitstatus.h"
#include "app/console/printable.h"

#include <cstdio>

namespace morsehost {

void complain(const QString& subject, const QString& reason)
{
    complain(subject + QStringLiteral(": ") + reason);
}

void complain(const QString& reason)
{
    std::fprintf(stderr, "morsehost: %s\n", onOneLine(reason).toUtf8().constData());
}

int statusAfter(const QString& error)
{
    if (error.isEmpty())
        return EXIT_DONE;
    complain(error);
    return EXIT_BAD_INPUT;
}

} // namespace morsehost
