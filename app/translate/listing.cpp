// SPDX-License-Identifier: MIT
#include "app/translate/listing.h"

#include "app/lint/lint.h"
#include "app/translate/mapfiles.h"
#include "charmap/codechandler.h"
#include "morse/simplemorsehandler.h"

namespace translate {

namespace {

/// Names are written as they are, whatever the locale.
bool begin(const QDir& folder, QTextStream& out, QTextStream& err)
{
    out.setCodec("UTF-8");
    err.setCodec("UTF-8");
    if (folder.exists())
        return true;
    err << "morsehost: " << folder.path() << ": no such folder\n";
    err.flush();
    return false;
}

/// `handler` has been told to load `name`, with the outcome `loaded`.
void writeLine(QTextStream& out, const QString& name, const QString& path, bool loaded,
               IAlphabetHandler& handler)
{
    out << name << '\t' << path << '\t';
    if (!loaded) {
        out << "cannot be chosen\n";
        return;
    }
    const lint::Report content = lint::lintFile(path);
    out << (handler.TextDirectionRTL() ? "right to left" : "left to right") << '\t'
        << content.alphabet.size() + content.characters.size() << " entries\n";
}

} // namespace

int listAlphabets(const QString& directory, QTextStream& out, QTextStream& err)
{
    const QDir folder(directory);
    if (!begin(folder, out, err))
        return 1;
    SimpleMorseHandler handler;
    handler.SetAlphabetsDir(directory);
    const QStringList files = folder.entryList(QDir::Files, QDir::Name | QDir::IgnoreCase);
    for (const QString& file : files) {
        if (lint::kindOf(file) != lint::Kind::Alphabet)
            continue;
        const QString name = file.section(QLatin1Char('.'), 0, 0);
        writeLine(out, name, folder.filePath(file), handler.SetAlphabet(name), handler);
    }
    out.flush();
    return 0;
}

int listMaps(const QString& directory, const QString& decoder, QTextStream& out, QTextStream& err)
{
    const QDir folder(directory);
    if (!begin(folder, out, err))
        return 1;
    CodecHandler handler;
    handler.SetAlphabetsDir(directory);
    handler.SetDecoder(decoder);
    if (!decoder.isEmpty() && handler.CharsetForDecoder(decoder) == eCHARSET_NONE) {
        err << "morsehost: the decoder modules file has no base character set for the decoder \""
            << decoder << "\"\n";
        err.flush();
        return 1;
    }
    const QStringList fitting = handler.AvailableAlphabets();
    for (const MapFile& file : mapFilesIn(folder)) {
        if (decoder.isEmpty() || fitting.contains(file.name))
            writeLine(out, file.name, file.path, handler.SetAlphabet(file.name), handler);
    }
    out.flush();
    return 0;
}

} // namespace translate
