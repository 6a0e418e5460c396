// SPDX-License-Identifier: MIT
#include "app/console/complain.h"

#include <algorithm>
#include <cstdio>

namespace morsehost {

void complain(const QString& subject, const QString& reason)
{
    complain(subject + QStringLiteral(": ") + reason);
}

void complain(const QString& reason)
{
    // One line, whatever a file name or a library's message holds, and no order to the terminal.
    QString line = reason.simplified();
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return c.category() == QChar::Other_Control; },
        QChar(QChar::ReplacementCharacter));
    std::fprintf(stderr, "morsehost: %s\n", line.toUtf8().constData());
}

} // namespace morsehost
