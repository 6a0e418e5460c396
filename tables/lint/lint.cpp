// SPDX-License-Identifier: MIT
#include "tables/lint/lint.h"

#include "tables/lint/rules.h"

#include <QFile>
#include <QFileInfo>

namespace lint {

namespace {

constexpr qint64 largestFile_bytes = qint64(4) * 1024 * 1024;

QString baseName(const QString& fileName)
{
    return fileName.section(QLatin1Char('.'), 0, 0);
}

/// Names decide whether and as what a file is offered; a good content does not help there.
void checkName(Kind kind, const QString& fileName, Notes& notes)
{
    const QString base = baseName(fileName);
    const QString rest = fileName.mid(base.size()).toLower();
    const bool isMap =
        rest.endsWith(QLatin1String(".ita2.map")) || rest.endsWith(QLatin1String(".ascii.map"));
    if (kind == Kind::Map && !isMap) {
        notes.add(
            0, Severity::Error,
            QStringLiteral("a map file is only found under a name that ends in \".ita2.map\" or "
                           "\".ascii.map\""));
        return;
    }
    const int dots = kind == Kind::Map ? 2 : 1;
    if (base.isEmpty() || fileName.count(QLatin1Char('.')) > dots) {
        notes.add(
            0, Severity::Error,
            QStringLiteral("the name is cut at its first dot, so \"%1\" is offered and not found "
                           "again")
                .arg(base));
    }
    if (base.compare(QLatin1String("None"), Qt::CaseInsensitive) == 0) {
        notes.add(
            0, Severity::Error,
            QStringLiteral("the name \"None\" stands for no alphabet and is never looked up"));
    }
    if (kind == Kind::Alphabet)
        return;
    if (base.startsWith(QLatin1String("Default"))) {
        notes.add(0, Severity::Error,
                  QStringLiteral("a name that begins with \"Default\" stands for no translation"));
    }
    if (base.contains(QLatin1String(" - "))) {
        notes.add(
            0, Severity::Error,
            QStringLiteral("\" - \" in the name is taken for the separator before the character "
                           "set"));
    }
    if (kind == Kind::Codec && base != QLatin1String("ITA2")) {
        notes.add(0, Severity::Warning,
                  QStringLiteral("only the codec file ITA2.codec can be chosen by name; a map file "
                                 "\"%1.ita2.map\" can too")
                      .arg(base));
    }
}

Report failed(const QString& reason)
{
    Report report;
    report.failure = reason;
    return report;
}

} // namespace

Kind kindOf(const QString& fileName)
{
    if (fileName.endsWith(QLatin1String(".mal"), Qt::CaseInsensitive))
        return Kind::Alphabet;
    if (fileName.endsWith(QLatin1String(".codec"), Qt::CaseInsensitive))
        return Kind::Codec;
    if (fileName.endsWith(QLatin1String(".map"), Qt::CaseInsensitive))
        return Kind::Map;
    return Kind::Unknown;
}

namespace {

Report lintContent(Kind kind, const QByteArray& bytes, Notes& notes)
{
    Report report;
    switch (kind) {
    case Kind::Alphabet:
        lintAlphabet(bytes, report, notes);
        break;
    case Kind::Codec:
        lintCodec(bytes, report, notes);
        break;
    case Kind::Map:
        lintMap(bytes, report, notes);
        break;
    case Kind::Unknown:
        report.failure = QStringLiteral("not the name of an alphabet (.mal), codec (.codec) or "
                                        "map file (.ita2.map, .ascii.map)");
        break;
    }
    return report;
}

} // namespace

Report lintBytes(Kind kind, const QByteArray& bytes)
{
    Notes notes;
    Report report = lintContent(kind, bytes, notes);
    report.findings = notes.take();
    return report;
}

Report lintFile(const QString& path)
{
    const QFileInfo info(path);
    const Kind kind = kindOf(info.fileName());
    if (kind == Kind::Unknown)
        return lintBytes(kind, {});
    if (info.exists() && !info.isFile())
        return failed(QStringLiteral("not a regular file"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failed(file.errorString());
    if (file.size() > largestFile_bytes)
        return failed(QStringLiteral("larger than 4 MiB, which no table is"));
    const QByteArray bytes = file.read(largestFile_bytes);
    if (file.error() != QFileDevice::NoError)
        return failed(file.errorString());
    Notes notes;
    checkName(kind, info.fileName(), notes);
    Report report = lintContent(kind, bytes, notes);
    report.findings = notes.take();
    return report;
}

int runLint(const QStringList& files, QTextStream& out, QTextStream& err)
{
    // Keys are written as they are, whatever the locale.
    out.setCodec("UTF-8");
    err.setCodec("UTF-8");
    int status = 0;
    for (const QString& file : files) {
        const Report report = lintFile(file);
        if (!report.failure.isEmpty()) {
            err << "morsehost: " << file << ": " << report.failure << '\n';
            status = 1;
            continue;
        }
        for (const Finding& finding : report.findings) {
            out << file << ':';
            if (finding.line > 0)
                out << finding.line << ':';
            out << ' ' << (finding.severity == Severity::Error ? "" : "warning: ")
                << finding.message << '\n';
            status = 1;
        }
    }
    out.flush();
    err.flush();
    return status;
}

} // namespace lint
