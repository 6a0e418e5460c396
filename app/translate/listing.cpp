// SPDX-License-Identifier: MIT
#include "app/translate/listing.h"

#include "app/console/printable.h"
#include "app/options/alphabetoptions.h"
#include "app/translate/mapfiles.h"
#include "charmap/codechandler.h"
#include "station/io/systemtext.h"
#include "tables/alphabetfile.h"
#include "tables/basecharset.h"
#include "tables/decodermodulesfile.h"
#include "tables/displayname.h"
#include "tables/hostpath.h"
#include "tables/lint/lint.h"
#include "tables/regularfile.h"
#include "tables/tableformat.h"

#include <QFile>

namespace translate {

namespace {

using morsehost::printableLine;

/// One line; `isChosen` says whether the name leads to this file.
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
    out << (content.rightToLeft ? "right to left" : "left to right") << '\t'
        << morsehost::counted(content.entryCount, "entry", "entries") << '\n';
}

/// The first of the files that the folder has, whatever the letter case.
QString firstOf(const QStringList& files, const FolderNames& names)
{
    for (const QString& file : files) {
        QString found = names.Find(file);
        if (!found.isEmpty())
            return found;
    }
    return {};
}

QString setName(char letter)
{
    const eBASE_CHARSET charset = baseCharsetOfLetter(letter);
    if (charset == eCHARSET_BOTH)
        return baseCharsetName(eCHARSET_ITA2) + QLatin1String(" and ") +
               baseCharsetName(eCHARSET_ASCII);
    return charset == eCHARSET_NONE ? QStringLiteral("no character set") : baseCharsetName(charset);
}

} // namespace

QString listAlphabets(const QString& directory, QTextStream& out)
{
    const QDir folder(directory);
    if (const QString why = morsehost::whyNoFolder(directory); !why.isEmpty())
        return directory + QStringLiteral(": ") + why;
    out.setCodec("UTF-8"); // whatever the locale
    const QLatin1String builtIn(morsehost::BUILT_IN_ALPHABET);
    out << builtIn << "\t(built in)\tleft to right\t" << defaultAlphabet().size() << " entries\n";
    const FolderNames names(folder);
    QStringList files = filesIn(folder);
    sortIgnoringCase(files);
    for (const QString& file : qAsConst(files)) {
        const TableFormat* const format = formatOfFile(file);
        if (!format || format->kind != TableKind::Alphabet)
            continue;
        const QString name = baseNameOf(file);
        const bool isReserved =
            isNoAlphabet(name) || name.compare(builtIn, Qt::CaseInsensitive) == 0;
        const bool isChosen = !isReserved && names.Find(name + format->suffix) == file;
        writeLine(out, name, folder.filePath(file), isChosen);
    }
    out.flush();
    return {};
}

QString listMaps(const QString& directory, const QString& decoder, QTextStream& out)
{
    const QDir folder(directory);
    if (const QString why = morsehost::whyNoFolder(directory); !why.isEmpty())
        return directory + QStringLiteral(": ") + why;
    out.setCodec("UTF-8");
    const eBASE_CHARSET charset = CodecHandler().CharsetForDecoder(decoder);
    if (!decoder.isEmpty() && charset == eCHARSET_NONE)
        return QStringLiteral("%1: the decoder modules file has no base character set for this "
                              "decoder (see 'morsehost decoders')")
            .arg(decoder);
    const FolderNames names(folder);
    const QVector<MapFile> files = mapFilesIn(folder);
    for (const MapFile& file : files) {
        if (!decoder.isEmpty() && charset != eCHARSET_BOTH && charset != file.charset)
            continue;
        const bool isChosen = firstOf(filesOfFullName(file.name), names) == file.file;
        writeLine(out, file.name, folder.filePath(file.file), isChosen);
    }
    out.flush();
    return {};
}

QString listDecoders(const QString& modulesFile, QTextStream& out)
{
    out.setCodec("UTF-8");
    QFile file(localPath(modulesFile));
    const std::vector<Quillon::DecoderModule> modules =
        openRegularFile(file) ? Quillon::readDecoderModulesFile(file.readAll())
                              : std::vector<Quillon::DecoderModule>();
    if (modules.empty())
        return QStringLiteral("%1: names no decoder").arg(modulesFile);
    for (const Quillon::DecoderModule& module : modules)
        out << printableLine(module.name) << '\t' << setName(module.charset) << '\n';
    out.flush();
    return {};
}

} // namespace translate
