// SPDX-License-Identifier: MIT
#include "tables/lint/lint.h"

#include "tables/codecfile.h"
#include "tables/decodermodulesfile.h"
#include "tables/displayname.h"
#include "tables/hostpath.h"
#include "tables/lint/rules.h"
#include "tables/mapfile.h"

#include <QFile>
#include <QFileInfo>

namespace lint {

namespace {

constexpr qint64 LARGEST_FILE_bytes = qint64(4) * 1024 * 1024;

/// Names decide whether and as what a file is offered; a good content does not help there.
void checkName(TableKind kind, const QString& fileName, Faults& faults)
{
    if (kind == TableKind::DecoderModules)
        return;
    const TableFormat* const format = formatOfFile(fileName);
    if (!format) {
        faults.Error(0, "a map file is only found under a name that ends in \".ita2.map\" or "
                        "\".ascii.map\"");
        return;
    }
    const QString base = baseNameOf(fileName);
    if (base.isEmpty() || base.size() + format->suffix.size() != fileName.size()) {
        faults.Error(0, "the name is cut at its first dot, so %1 is offered and not found again",
                     base);
    }
    if (isNoAlphabet(base))
        faults.Error(0, "the name \"None\" stands for no alphabet and is never looked up");
    if (kind == TableKind::Alphabet)
        return;
    if (isDefaultMap(base))
        faults.Error(0, "a name that begins with \"Default\" stands for no translation");
    if (base.contains(nameSeparator())) {
        faults.Error(0, "\" - \" in the name is taken for the separator before the character set");
    }
    if (kind == TableKind::Codec && base != baseCharsetName(eCHARSET_ITA2)) {
        faults.Warning(
            0, "only the codec file ITA2.codec can be chosen by name; a map file %1 can too",
            QString(base + QLatin1String(".ita2.map")));
    }
}

void checkContent(TableKind kind, const QByteArray& bytes, Report& report, Faults& faults)
{
    if (kind == TableKind::Alphabet) {
        const MorseAlphabet alphabet = readAlphabetFile(bytes, faults);
        checkAlphabet(alphabet, faults);
        report.rightToLeft = alphabet.rightToLeft;
        report.entryCount = alphabet.codes.size();
    } else if (kind == TableKind::DecoderModules) {
        report.entryCount = static_cast<int>(Quillon::readDecoderModulesFile(bytes, faults).size());
    } else {
        const CharacterTable table =
            kind == TableKind::Map ? readMapFile(bytes, faults) : readCodecFile(bytes, faults);
        checkCharacters(table, faults);
        report.rightToLeft = table.rightToLeft;
        report.entryCount = table.characters.size();
    }
}

Report failed(const QString& reason)
{
    Report report;
    report.failure = reason;
    return report;
}

struct Ending
{
    QLatin1String text;
    TableKind kind;
};

constexpr Ending ENDINGS[] = {
    {ALPHABET_ENDING, TableKind::Alphabet},
    {CODEC_ENDING, TableKind::Codec},
    {MAP_ENDING, TableKind::Map},
    {literal(".txt"), TableKind::DecoderModules},
};

} // namespace

std::optional<TableKind> kindOf(const QString& fileName)
{
    for (const Ending& ending : ENDINGS) {
        if (fileName.endsWith(ending.text, Qt::CaseInsensitive))
            return ending.kind;
    }
    return std::nullopt;
}

Report lintBytes(TableKind kind, const QByteArray& bytes)
{
    Report report;
    Faults faults;
    checkContent(kind, bytes, report, faults);
    report.faults = faults.Take();
    return report;
}

Report lintFile(TableKind kind, const QString& path)
{
    const QFileInfo info(path);
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
    checkName(kind, info.fileName(), faults);
    checkContent(kind, bytes, report, faults);
    report.faults = faults.Take();
    return report;
}

} // namespace lint
