// SPDX-License-Identifier: MIT
#include "tables/lint/lint.h"

#include "tables/alphabetfile.h"
#include "tables/decodermodulesfile.h"
#include "tables/displayname.h"
#include "tables/hostpath.h"
#include "tables/lint/rules.h"
#include "tables/tableformat.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>

namespace lint {

namespace {

constexpr qint64 LARGEST_FILE_bytes = qint64(4) * 1024 * 1024;
constexpr QLatin1String NO_TABLE = literal("not a table: its ending is unknown");

/// "a name that ends in" which of the suffixes that go with the ending of `format`.
QString suffixesOf(const TableFormat& format)
{
    QStringList suffixes;
    for (const TableFormat& other : TABLE_FORMATS) {
        if (other.ending == format.ending)
            suffixes += QLatin1Char('"') + other.suffix + QLatin1Char('"');
    }
    return suffixes.join(QLatin1String(" or "));
}

/// The name of a file that can be chosen by `base`, for a decoder of this character set.
QString choosableFile(const QString& base, eBASE_CHARSET charset)
{
    const auto* const format =
        std::find_if(TABLE_FORMATS.begin(), TABLE_FORMATS.end(), [&](const TableFormat& row) {
            return row.charset == charset && row.onlyBase.isEmpty();
        });
    return format == TABLE_FORMATS.end() ? QString() : base + format->suffix;
}

/// Names decide whether and as what a file is offered; a good content does not help there.
void checkName(const TableFormat& meant, const QString& fileName, Faults& faults)
{
    if (meant.kind == TableKind::DecoderModules)
        return;
    const TableFormat* const format = formatOfFile(fileName);
    if (!format) {
        faults.Error(0, "the file is only found under a name that ends in %1",
                     QLatin1String(suffixesOf(meant).toLatin1()));
        return;
    }
    const QString base = baseNameOf(fileName);
    if (base.isEmpty() || base.size() + format->suffix.size() != fileName.size()) {
        faults.Error(0, "the name is cut at its first dot, so %1 is offered and not found again",
                     base);
    }
    if (isNoAlphabet(base))
        faults.Error(0, "the name \"None\" stands for no alphabet and is never looked up");
    if (format->kind == TableKind::Alphabet)
        return;
    if (isDefaultMap(base))
        faults.Error(0, "a name that begins with \"Default\" stands for no translation");
    if (base.contains(nameSeparator())) {
        faults.Error(0, "\" - \" in the name is taken for the separator before the character set");
    }
    if (!format->onlyBase.isEmpty() && base != format->onlyBase) {
        faults.Warning(0, "only %1 can be chosen by name among such files; a file %2 can too",
                       QString(format->onlyBase + format->ending),
                       choosableFile(base, format->charset));
    }
}

void checkContent(const TableFormat& format, const QByteArray& bytes, Report& report,
                  Faults& faults)
{
    switch (format.kind) {
    case TableKind::Alphabet: {
        const MorseAlphabet alphabet = readAlphabetFile(bytes, faults);
        checkAlphabet(alphabet, faults);
        report.rightToLeft = alphabet.rightToLeft;
        report.entryCount = alphabet.codes.size();
        break;
    }
    case TableKind::Characters: {
        const CharacterTable table = format.readCharacters(bytes, faults);
        checkCharacters(table, faults);
        report.rightToLeft = table.rightToLeft;
        report.entryCount = table.characters.size();
        break;
    }
    case TableKind::DecoderModules:
        report.entryCount = static_cast<int>(Quillon::readDecoderModulesFile(bytes, faults).size());
        break;
    }
}

Report failed(const QString& reason)
{
    Report report;
    report.failure = reason;
    return report;
}

} // namespace

bool isTable(const QString& fileName)
{
    return formatMeantBy(fileName) != nullptr;
}

Report lintBytes(const QString& fileName, const QByteArray& bytes)
{
    const TableFormat* const format = formatMeantBy(fileName);
    if (!format)
        return failed(NO_TABLE);
    Report report;
    Faults faults;
    checkContent(*format, bytes, report, faults);
    report.faults = faults.Take();
    return report;
}

Report lintFile(const QString& path)
{
    const QFileInfo info(path);
    const TableFormat* const format = formatMeantBy(info.fileName());
    if (!format)
        return failed(NO_TABLE);
    if (info.exists() && !info.isFile())
        return failed(QStringLiteral("not a regular file"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failed(file.errorString());
    if (file.size() > LARGEST_FILE_bytes)
        return failed(QStringLiteral("larger than 4 MiB, which no table is"));
    const QByteArray bytes = file.read(LARGEST_FILE_bytes);
    if (file.error() != QFileDevice::NoError)
        return failed(file.errorString());
    Report report;
    Faults faults;
    checkName(*format, info.fileName(), faults);
    checkContent(*format, bytes, report, faults);
    report.faults = faults.Take();
    return report;
}

} // namespace lint
