// SPDX-License-Identifier: MIT
#include "morse/simplemorsehandler.h"

#include "morse/codeindex.h"
#include "morse/cutzero.h"
#include "tables/alphabetfile.h"
#include "tables/basecharset.h"
#include "tables/displayname.h"
#include "tables/hostpath.h"
#include "tables/regularfile.h"
#include "tables/tableformat.h"

namespace {

// The symbols that are one character long.
constexpr QLatin1Char DOT_CHARACTER('.');
constexpr QLatin1Char DASH_CHARACTER('-');
constexpr QLatin1Char NEW_CHAR_CHARACTER(' ');
constexpr QLatin1Char NEW_WORD_CHARACTER('\t');
constexpr QLatin1Char NEW_LINE_CHARACTER('\n');

bool isGap(QChar symbol)
{
    return symbol == NEW_CHAR_CHARACTER || symbol == NEW_WORD_CHARACTER ||
           symbol == NEW_LINE_CHARACTER;
}

bool isAlphabetFile(const QString& fileName)
{
    const TableFormat* const format = formatOfFile(fileName);
    return format && format->kind == TableKind::Alphabet;
}

} // namespace

const QString SimpleMorseHandler::DOT(DOT_CHARACTER);
const QString SimpleMorseHandler::DASH(DASH_CHARACTER);
const QString SimpleMorseHandler::NEW_CHAR(NEW_CHAR_CHARACTER);
const QString SimpleMorseHandler::NEW_WORD(NEW_WORD_CHARACTER);
const QString SimpleMorseHandler::NEW_LINE(NEW_LINE_CHARACTER);
const QString SimpleMorseHandler::DOT_TOO_SHORT = QStringLiteral("[PAUSE TO SHORT]");
const QString SimpleMorseHandler::DASH_TOO_LONG = QStringLiteral("[PAUSE TO SHORT]");
const QString SimpleMorseHandler::PAUSE_TOO_SHORT = QStringLiteral("[PAUSE TO SHORT]");
const QString SimpleMorseHandler::UNKNOWN = QStringLiteral("[UNKNOWN]");

QString SimpleMorseHandler::ConvertSymbol(MorseSymbolCode symbol)
{
    switch (symbol & MORSE_SYMBOL_MASK) {
    case eSYMBOL_DOT:
        return DOT;
    case eSYMBOL_DASH:
        return DASH;
    case eSYMBOL_NEW_CHAR:
        return NEW_CHAR;
    case eSYMBOL_NEW_WORD:
        return NEW_WORD;
    case eSYMBOL_NEW_LINE:
        return NEW_LINE;
    case eSYMBOL_DOT_TOO_SHORT:
        return DOT_TOO_SHORT;
    case eSYMBOL_DASH_TOO_LONG:
        return DASH_TOO_LONG;
    case eSYMBOL_PAUSE_TOO_SHORT:
        return PAUSE_TOO_SHORT;
    default:
        return {};
    }
}

QString SimpleMorseHandler::ConvertSymbols(QVector<MorseSymbolCode> symbols)
{
    QString strings;
    strings.reserve(symbols.size());
    for (const MorseSymbolCode symbol : qAsConst(symbols))
        strings += ConvertSymbol(symbol);
    return strings;
}

SimpleMorseHandler::SimpleMorseHandler()
    : m_alphabetsDir(QString())
    , m_alphabet(baseCharsetName(eCHARSET_NONE))
{
}

SimpleMorseHandler::SimpleMorseHandler(const SimpleMorseHandler& other) = default;

SimpleMorseHandler& SimpleMorseHandler::operator=(const SimpleMorseHandler& other) = default;

SimpleMorseHandler::~SimpleMorseHandler() = default;

void SimpleMorseHandler::SetAlphabetsDir(const QString& dir)
{
    m_alphabetsDir.setPath(dir);
}

bool SimpleMorseHandler::SetAlphabet(const QString& name)
{
    m_alphabet = name;
    m_textDirectionRTL = false;
    m_morseMap.clear();
    ResetInternalState();
    if (isNoAlphabet(m_alphabet)) {
        m_alphabet = baseCharsetName(eCHARSET_NONE);
        return true;
    }
    return readMalFile(codecNameToFile(m_alphabet));
}

void SimpleMorseHandler::SetDecoder(const QString&) {}

QString SimpleMorseHandler::Alphabet()
{
    return m_alphabet;
}

QStringList SimpleMorseHandler::AvailableAlphabets()
{
    QStringList names{baseCharsetName(eCHARSET_NONE)};
    QStringList files = filesIn(m_alphabetsDir);
    sortIgnoringCase(files);
    for (const QString& file : qAsConst(files)) {
        if (isAlphabetFile(file))
            names += fileToCodecName(file);
    }
    return names;
}

bool SimpleMorseHandler::TextDirectionRTL()
{
    return m_textDirectionRTL;
}

void SimpleMorseHandler::ResetInternalState()
{
    m_pendingSymbols.clear();
    m_lastWasDigit = false;
}

QString SimpleMorseHandler::Translate(const QString& symbols)
{
    if (m_morseMap.isEmpty())
        return symbols;

    const QString& errorMark = PAUSE_TOO_SHORT; // and that of the other two errors
    // What was pending holds no gap, or it would have been translated, unless an error mark was cut
    // off behind one of its own blanks. So only its end can hold one, and text that arrives in
    // single symbols is not searched again and again.
    const int searchStart = qMax(0, m_pendingSymbols.size() - errorMark.size());
    m_pendingSymbols += symbols;
    const QStringView pending = m_pendingSymbols;
    qsizetype gapsEnd = pending.size();
    while (gapsEnd > searchStart && !isGap(pending[gapsEnd - 1]))
        --gapsEnd;
    if (gapsEnd == searchStart)
        return {};

    const CodeIndex index(m_morseMap, gapsEnd);
    QString text;
    text.reserve(static_cast<int>(gapsEnd) / 2);
    CodeBuffer code;
    qsizetype codeStart = 0; // behind the last gap
    qsizetype at = 0;
    while (at < gapsEnd) {
        const QChar symbol = pending[at];
        if (symbol == DOT_CHARACTER || symbol == DASH_CHARACTER) {
            code.Add(symbol);
            ++at;
        } else if (isGap(symbol)) {
            if (!code.IsEmpty())
                text += decodeWithCutZero(index, code, m_lastWasDigit);
            if (symbol == NEW_WORD_CHARACTER)
                text += QLatin1Char(' ');
            else if (symbol == NEW_LINE_CHARACTER)
                text += NEW_LINE_CHARACTER;
            code.Clear();
            codeStart = ++at;
        } else if (pending.mid(at).startsWith(errorMark)) {
            at += errorMark.size();
        } else if (errorMark.startsWith(pending.mid(at))) {
            // The rest of the mark comes with the next call.
            at = codeStart;
            break;
        } else {
            // No symbol at all. To drop it is what keeps the loop from standing still.
            ++at;
        }
    }
    m_pendingSymbols = m_pendingSymbols.mid(static_cast<int>(at));
    return text;
}

QString SimpleMorseHandler::Backtranslate(const QString&)
{
    return {};
}

QString SimpleMorseHandler::ConvertOneChar(const QString& code)
{
    if (code.isEmpty())
        return {};
    CodeBuffer symbols;
    for (const QChar symbol : code)
        symbols.Add(symbol);
    return decodeWithCutZero(CodeIndex(m_morseMap, code.size()), symbols, m_lastWasDigit);
}

QString SimpleMorseHandler::codecNameToFile(const QString& name)
{
    const QString file = name + ALPHABET_ENDING;
    return findIgnoringCase(m_alphabetsDir, file).isEmpty() ? baseCharsetName(eCHARSET_NONE) : file;
}

QString SimpleMorseHandler::fileToCodecName(const QString& fileName)
{
    return isAlphabetFile(fileName) ? baseNameOf(fileName) : baseCharsetName(eCHARSET_NONE);
}

bool SimpleMorseHandler::readMalFile(const QString& fileName)
{
    const QString found = findIgnoringCase(m_alphabetsDir, fileName);
    QFile file(localFolder(m_alphabetsDir).filePath(found));
    if (found.isEmpty() || !openRegularFile(file))
        return false;
    const MorseAlphabet alphabet = readAlphabetFile(file.readAll());
    m_morseMap = alphabet.codes;
    m_textDirectionRTL = alphabet.rightToLeft;
    return true;
}

void SimpleMorseHandler::readDefaultAlphabet()
{
    m_morseMap = defaultAlphabet();
}
