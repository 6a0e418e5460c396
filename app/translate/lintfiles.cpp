// SPDX-License-Identifier: MIT
#include "app/translate/lintfiles.h"

#include "app/console/printable.h"
#include "tables/lint/lint.h"

#include <QFileInfo>

namespace translate {

namespace {

void writeFault(QTextStream& out, const QString& file, const Fault& fault)
{
    out << morsehost::printableLine(file) << ':';
    if (fault.line > 0)
        out << fault.line << ':';
    out << (fault.severity == Fault::Severity::Warning ? " warning: " : " ") << fault.text << '\n';
}

} // namespace

LintOutcome lintFiles(const QStringList& files, QTextStream& out)
{
    // Keys are written as they are, whatever the locale.
    out.setCodec("UTF-8");
    LintOutcome outcome;
    int checked = 0;
    for (const QString& file : files) {
        const auto kind = lint::kindOf(QFileInfo(file).fileName());
        if (!kind)
            continue;
        ++checked;
        const lint::Report report = lint::lintFile(*kind, file);
        if (!report.failure.isEmpty())
            outcome.failures += QStringLiteral("%1: %2").arg(file, report.failure);
        for (const Fault& fault : report.faults)
            writeFault(out, file, fault);
        outcome.isClean = outcome.isClean && report.failure.isEmpty() && report.faults.isEmpty();
    }
    if (checked == 0) {
        outcome.isClean = false;
        outcome.failures +=
            QStringLiteral("no file to check: the names of alphabets end in .mal, of codec files "
                           "in .codec, of maps in .ita2.map or .ascii.map, of decoder modules "
                           "files in .txt");
    }
    out.flush();
    return outcome;
}

} // namespace translate
