// SPDX-License-Identifier: MIT
#include "app/translate/listing.h"

#include "app/console/printable.h"
#include "app/options/alphabetoptions.h"
#include "app/translate/mapfiles.h"
#include "charmap/codechandler.h"
#include "charmap/decodermodulescenter.h"
#include "morse/simplemorsehandler.h"
#include "tables/alphabetfile.h"
#include "tables/hostpath.h"
#include "tables/lint/lint.h"

namespace translate {

namespace {

using morsehost::printableLine;

QString noSuchFolder(const QDir& folder)
{
    return QStringLiteral("%1: no such folder").arg(folder.path());
}

/// One line; `isChosen` tells whether the name leads to this file.
void writeLine(QTextStream& out, const QString& name, const QString& path, bool isChosen)
{
    out << printableLine(name) << '\t' << printableLine(path) << '\t';
    if (!isChosen) {
        out << "cannot be chosen\n";
        return;
    }
    const lint::Report content = lint::lintFile(path);
    if (!content.failure.isEmpty()) {
        out << "not counted: " << content.failure << '\n';
        return;
    }
    const int count = content.alphabet.size() + content.characters.size();
    out << (content.rightToLeft ? "right to left" : "left to right") << '\t' << count
        << (count == 1 ? " entry\n" : " entries\n");
}

/// The file that the name of a map leads to: a map file before the codec file.
QString fileBehind(const QDir& folder, const MapFile& file)
{
    const QString charset = file.name.section(QLatin1String(" - "), -1);
    QString found =
        findIgnoringCase(folder, file.base + QLatin1Char('.') + charset + QLatin1String(".map"));
    if (found.isEmpty())
        found = findIgnoringCase(folder, file.base + QLatin1String(".codec"));
    return folder.filePath(found);
}

bool isNone(const QString& name)
{
    return name.compare(QLatin1String("None"), Qt::CaseInsensitive) == 0;
}

QString setName(char charset)
{
    switch (charset) {
    case 'I':
        return QStringLiteral("ITA2");
    case 'A':
        return QStringLiteral("ASCII");
    case 'B':
        return QStringLiteral("ITA2 and ASCII");
    default:
        return QStringLiteral("no character set");
    }
}

} // namespace

QString listAlphabets(const QString& directory, QTextStream& out)
{
    const QDir folder(directory);
    if (!folder.exists())
        return noSuchFolder(folder);
    out.setCodec("UTF-8"); // whatever the locale
    const QLatin1String builtIn(morsehost::BUILT_IN_ALPHABET);
    out << builtIn << "\t(built in)\tleft to right\t" << defaultAlphabet().size() << " entries\n";
    SimpleMorseHandler handler;
    handler.SetAlphabetsDir(directory);
    const QStringList files = folder.entryList(QDir::Files, QDir::Name | QDir::IgnoreCase);
    for (const QString& file : files) {
        if (lint::kindOf(file) != lint::Kind::Alphabet)
            continue;
        const QString name = file.section(QLatin1Char('.'), 0, 0);
        const bool isReserved = isNone(name) || name.compare(builtIn, Qt::CaseInsensitive) == 0;
        const bool isChosen = !isReserved && handler.SetAlphabet(name) &&
                              findIgnoringCase(folder, name + QLatin1String(".mal")) == file;
        writeLine(out, name, folder.filePath(file), isChosen);
    }
    out.flush();
    return {};
}

QString listMaps(const QString& directory, const QString& decoder, QTextStream& out)
{
    const QDir folder(directory);
    if (!folder.exists())
        return noSuchFolder(folder);
    out.setCodec("UTF-8");
    CodecHandler handler;
    handler.SetAlphabetsDir(directory);
    handler.SetDecoder(decoder);
    if (!decoder.isEmpty() && handler.CharsetForDecoder(decoder) == eCHARSET_NONE)
        return QStringLiteral("%1: the decoder modules file has no base character set for this "
                              "decoder (see 'morsehost decoders')")
            .arg(decoder);
    const QStringList fitting = handler.AvailableAlphabets();
    const QVector<MapFile> files = mapFilesIn(folder);
    for (const MapFile& file : files) {
        if (!decoder.isEmpty() && !fitting.contains(file.name))
            continue;
        const bool isChosen =
            handler.SetAlphabet(file.name) && fileBehind(folder, file) == file.path;
        writeLine(out, file.name, file.path, isChosen);
    }
    out.flush();
    return {};
}

QString listDecoders(const QString& modulesFile, QTextStream& out)
{
    out.setCodec("UTF-8");
    std::vector<Quillon::DecoderModule> modules;
    Quillon::DecoderModulesCenter(modulesFile).GetModules(modules, false);
    if (modules.empty())
        return QStringLiteral("%1: names no decoder").arg(modulesFile);
    for (const Quillon::DecoderModule& module : modules)
        out << printableLine(module.name) << '\t' << setName(module.charset) << '\n';
    out.flush();
    return {};
}

} // namespace translate
