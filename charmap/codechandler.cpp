// SPDX-License-Identifier: MIT
#include "charmap/codechandler.h"

#include "charmap/decodercharsets.h"
#include "tables/charactertable.h"
#include "tables/codecfile.h"
#include "tables/displayname.h"
#include "tables/hostpath.h"
#include "tables/mapfile.h"
#include "tables/regularfile.h"
#include "tables/tableformat.h"

#include <algorithm>

namespace {

constexpr QLatin1String EVERY_DECODER = literal("All");

QStringList sortedBehindNone(QStringList names)
{
    names.removeDuplicates();
    names.sort();
    names.prepend(baseCharsetName(eCHARSET_NONE));
    return names;
}

/// False, and nothing is changed, when the file cannot be read.
bool load(const QDir& folder, const QString& name, decltype(TableFormat::readCharacters) read,
          CharacterMapping& characters, bool& isRightToLeft)
{
    QFile file(localFolder(folder).filePath(findIgnoringCase(folder, name)));
    if (!openRegularFile(file))
        return false;
    Faults ignored(0);
    const CharacterTable table = read(file.readAll(), ignored);
    characters = table.characters;
    isRightToLeft = table.rightToLeft;
    return true;
}

} // namespace

CodecHandler::CodecHandler()
    : m_decoderCharsets(readDecoderCharsets())
    , m_alphabetsDir(QString())
    , m_alphabet(baseCharsetName(eCHARSET_NONE))
{
}

CodecHandler::CodecHandler(const CodecHandler& other) = default;

CodecHandler& CodecHandler::operator=(const CodecHandler& other) = default;

CodecHandler::~CodecHandler() = default;

void CodecHandler::SetAlphabetsDir(const QString& dir)
{
    m_charsetFiles.clear();
    m_alphabetsDir.setPath(dir);
    const QStringList files = filesIn(m_alphabetsDir);
    for (const QString& file : files) {
        const TableFormat* const format = formatOfFile(file);
        if (format && format->charset != eCHARSET_NONE)
            m_charsetFiles[format->charset] += file;
    }
}

bool CodecHandler::SetAlphabet(const QString& name)
{
    m_alphabet = name;
    m_textDirectionRTL = false;
    m_charMap.clear();
    if (isNoAlphabet(m_alphabet)) {
        m_alphabet = baseCharsetName(eCHARSET_NONE);
        return true;
    }
    if (!m_alphabet.contains(nameSeparator())) {
        const eBASE_CHARSET charset = m_decoderCharsets.value(m_decoder, eCHARSET_NONE);
        if (charset == eCHARSET_BOTH)
            m_alphabet = fullName(m_alphabet, eCHARSET_ASCII);
        else if (charset != eCHARSET_NONE)
            m_alphabet = fullName(m_alphabet, charset);
    }
    const QString file = codecNameToFile(m_alphabet);
    const TableFormat* const format = formatReadFrom(file);
    return format && format->readCharacters &&
           load(m_alphabetsDir, file, format->readCharacters, m_charMap, m_textDirectionRTL);
}

void CodecHandler::SetDecoder(const QString& decoder)
{
    m_decoder = decoder;
}

QString CodecHandler::Alphabet()
{
    return m_alphabet;
}

QStringList CodecHandler::AvailableAlphabets()
{
    if (m_decoder.compare(EVERY_DECODER, Qt::CaseInsensitive) == 0)
        return allCodecs();
    return possibleCodecsForDecoder(m_decoder);
}

bool CodecHandler::TextDirectionRTL()
{
    return m_textDirectionRTL;
}

void CodecHandler::ResetInternalState() {}

QString CodecHandler::Translate(const QString& input)
{
    return m_charMap.isEmpty() ? input : translateForward(m_charMap, input);
}

QString CodecHandler::Backtranslate(const QString& input)
{
    return m_charMap.isEmpty() ? input : translateBack(m_charMap, input);
}

CodecHandler::eBASE_CHARSET CodecHandler::CharsetForDecoder(const QString& decoder)
{
    return m_decoderCharsets.value(decoder, eCHARSET_NONE);
}

QStringList CodecHandler::allCodecs()
{
    QStringList names;
    for (const QStringList& files : qAsConst(m_charsetFiles)) {
        for (const QString& file : files)
            names += fileToCodecName(file).section(nameSeparator(), 0, 0);
    }
    return sortedBehindNone(names);
}

QStringList CodecHandler::possibleCodecsForDecoder(const QString& decoder)
{
    const eBASE_CHARSET charset = CharsetForDecoder(decoder);
    QStringList names;
    for (const eBASE_CHARSET one : {eCHARSET_ITA2, eCHARSET_ASCII}) {
        if (charset != one && charset != eCHARSET_BOTH)
            continue;
        const QStringList files = m_charsetFiles.value(one);
        for (const QString& file : files)
            names += fileToCodecName(file);
    }
    return sortedBehindNone(names);
}

QString CodecHandler::codecNameToFile(const QString& name)
{
    const QStringList files = filesOfFullName(name);
    const auto found = std::find_if(files.begin(), files.end(), [this](const QString& file) {
        return !findIgnoringCase(m_alphabetsDir, file).isEmpty();
    });
    return found == files.end() ? QString() : *found;
}

QString CodecHandler::fileToCodecName(const QString& file)
{
    const TableFormat* const format = formatOfFile(file);
    if (!format || format->charset == eCHARSET_NONE)
        return {};
    return fullName(baseNameOf(file), format->charset);
}

// These two are exported; SetAlphabet finds the reader of a format in the table of formats.

bool CodecHandler::readCodecFile(const QString& file)
{
    return load(m_alphabetsDir, file, ::readCodecFile, m_charMap, m_textDirectionRTL);
}

bool CodecHandler::readMapFile(const QString& file)
{
    return load(m_alphabetsDir, file, ::readMapFile, m_charMap, m_textDirectionRTL);
}
