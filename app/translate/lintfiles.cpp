// SPDX-License-Identifier: MIT
#include "app/translate/lintfiles.h"

#include "app/console/printable.h"
#include "station/io/systemtext.h"
#include "tables/lint/lint.h"
#include "tables/tableformat.h"

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

lint::Report noFile(const QString& name)
{
    lint::Report report;
    report.failure = morsehost::whyNoRegularFile(name);
    return report;
}

QStringList suffixes()
{
    QStringList suffixes;
    for (const TableFormat& format : TABLE_FORMATS)
        suffixes += format.suffix;
    return suffixes;
}

} // namespace

LintOutcome lintFiles(const QStringList& files, QTextStream& out)
{
    // Keys are written as they are, whatever the locale.
    out.setCodec("UTF-8");
    LintOutcome outcome;
    int checked = 0;
    for (const QString& file : files) {
        const bool isTable = lint::isTable(file);
        if (!isTable && QFileInfo(file).isFile())
            continue;
        ++checked;
        const lint::Report report = isTable ? lint::lintFile(file) : noFile(file);
        if (!report.failure.isEmpty())
            outcome.failures += QStringLiteral("%1: %2").arg(file, report.failure);
        for (const Fault& fault : report.faults)
            writeFault(out, file, fault);
        outcome.isClean = outcome.isClean && report.failure.isEmpty() && report.faults.isEmpty();
    }
    if (checked == 0) {
        outcome.isClean = false;
        outcome.failures +=
            QStringLiteral("no file to check: the name of a table ends in one of %1")
                .arg(suffixes().join(QLatin1String(", ")));
    }
    out.flush();
    return outcome;
}

} // namespace translate
