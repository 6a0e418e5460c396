// SPDX-License-Identifier: MIT
#include "charmap/codechandler.h"

#include "charmap/decodercharsets.h"
#include "tables/charactertable.h"
#include "tables/codecfile.h"
#include "tables/hostpath.h"
#include "tables/mapfile.h"
#include "tables/regularfile.h"

#include <optional>

namespace {

const QString NAME_SEPARATOR = QStringLiteral(" - ");
const QString CODEC_SUFFIX = QStringLiteral(".codec");
const QString MAP_SUFFIX = QStringLiteral(".map");
const QString ITA2_MAP_SUFFIX = QStringLiteral(".ita2.map");
const QString ASCII_MAP_SUFFIX = QStringLiteral(".ascii.map");
const QString EVERY_DECODER = QStringLiteral("All");

/// None for a file that is neither a codec file nor a map file.
eBASE_CHARSET charsetOfFile(const QString& file)
{
    const auto endsWith = [&](const QString& suffix) {
        return file.endsWith(suffix, Qt::CaseInsensitive);
    };
    if (endsWith(CODEC_SUFFIX) || endsWith(ITA2_MAP_SUFFIX))
        return eCHARSET_ITA2;
    if (endsWith(ASCII_MAP_SUFFIX))
        return eCHARSET_ASCII;
    return eCHARSET_NONE;
}

QString fullName(const QString& base, eBASE_CHARSET charset)
{
    return base + NAME_SEPARATOR + baseCharsetName(charset);
}

QStringList sortedBehindNone(QStringList names)
{
    names.removeDuplicates();
    names.sort();
    names.prepend(baseCharsetName(eCHARSET_NONE));
    return names;
}

/// Nothing when there is no such file.
std::optional<QByteArray> contentOf(const QDir& folder, const QString& name)
{
    QFile file(QDir(localPath(folder.path())).filePath(findIgnoringCase(folder, name)));
    if (!openRegularFile(file))
        return std::nullopt;
    return file.readAll();
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
    const QDir folder(localPath(dir));
    const QStringList files = folder.entryList(QDir::Files, QDir::Name);
    for (const QString& file : files) {
        const eBASE_CHARSET charset = charsetOfFile(file);
        if (charset != eCHARSET_NONE)
            m_charsetFiles[charset] += file;
    }
}

bool CodecHandler::SetAlphabet(const QString& name)
{
    m_alphabet = name;
    m_textDirectionRTL = false;
    m_charMap.clear();
    const QString& none = baseCharsetName(eCHARSET_NONE);
    if (m_alphabet.compare(none, Qt::CaseInsensitive) == 0) {
        m_alphabet = none;
        return true;
    }
    if (!m_alphabet.contains(NAME_SEPARATOR)) {
        const eBASE_CHARSET charset = m_decoderCharsets.value(m_decoder, eCHARSET_NONE);
        if (charset == eCHARSET_BOTH)
            m_alphabet = fullName(m_alphabet, eCHARSET_ASCII);
        else if (charset != eCHARSET_NONE)
            m_alphabet = fullName(m_alphabet, charset);
    }
    const QString file = codecNameToFile(m_alphabet);
    if (file.endsWith(MAP_SUFFIX))
        return readMapFile(file);
    if (file.endsWith(CODEC_SUFFIX))
        return readCodecFile(file);
    return false;
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
            names += fileToCodecName(file).section(NAME_SEPARATOR, 0, 0);
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
    if (!name.contains(NAME_SEPARATOR))
        return {};
    const QString base = name.section(NAME_SEPARATOR, 0, 0);
    const QString charset = name.section(NAME_SEPARATOR, 1, 1);
    QString mapFile = base + QLatin1Char('.') + charset + MAP_SUFFIX;
    if (!findIgnoringCase(m_alphabetsDir, mapFile).isEmpty())
        return mapFile;
    // Of the codec files only this one can be loaded by its name.
    QString codecFile = base + CODEC_SUFFIX;
    if (base == baseCharsetName(eCHARSET_ITA2) &&
        !findIgnoringCase(m_alphabetsDir, codecFile).isEmpty())
        return codecFile;
    return {};
}

QString CodecHandler::fileToCodecName(const QString& file)
{
    const eBASE_CHARSET charset = charsetOfFile(file);
    if (charset == eCHARSET_NONE)
        return {};
    return fullName(file.section(QLatin1Char('.'), 0, 0), charset);
}

bool CodecHandler::readCodecFile(const QString& file)
{
    const std::optional<QByteArray> content = contentOf(m_alphabetsDir, file);
    if (!content)
        return false;
    const CharacterTable table = ::readCodecFile(*content);
    m_charMap = table.characters;
    m_textDirectionRTL = table.rightToLeft;
    return true;
}

bool CodecHandler::readMapFile(const QString& file)
{
    const std::optional<QByteArray> content = contentOf(m_alphabetsDir, file);
    if (!content)
        return false;
    const CharacterTable table = ::readMapFile(*content);
    m_charMap = table.characters;
    m_textDirectionRTL = table.rightToLeft;
    return true;
}
