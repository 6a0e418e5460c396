// SPDX-License-Identifier: MIT
#include "morse/morsetranslator.h"

#include "host/trace.h"
#include "morse/codeindex.h"
#include "morse/cutzero.h"
#include "morse/symbolcodes.h"
#include "tables/alphabetfile.h"
#include "tables/hostpath.h"
#include "tables/regularfile.h"

namespace {

constexpr QLatin1Char NEW_CHAR_MARK('c');
constexpr QLatin1Char NEW_WORD_MARK('w');
constexpr QLatin1Char NEW_LINE_MARK('\n');

const QString DOT = QStringLiteral(".");
const QString DASH = QStringLiteral("-");
const QString NEW_CHAR(NEW_CHAR_MARK);
const QString NEW_WORD(NEW_WORD_MARK);
const QString NEW_LINE(NEW_LINE_MARK);
const QString DOT_TOO_SHORT = QStringLiteral("[DOT_TOO_SHORT]");
const QString DASH_TOO_LONG = QStringLiteral("[DASH_TOO_LONG]");
const QString PAUSE_TOO_SHORT = QStringLiteral("[PAUSE_TOO_SHORT]");

} // namespace

MorseTranslator::MorseTranslator() = default;

MorseTranslator::MorseTranslator(const MorseTranslator& other) = default;

MorseTranslator& MorseTranslator::operator=(const MorseTranslator& other)
{
    m_alphabetMap.clear();
    if (this != &other)
        m_alphabetMap = other.m_alphabetMap;
    m_unknownSymbol = other.m_unknownSymbol;
    m_textDirectionRTL = other.m_textDirectionRTL;
    return *this;
}

MorseTranslator::~MorseTranslator()
{
    try {
        m_alphabetMap.clear();
    } catch (...) {
        traceMessage(QStringLiteral("Exception caught in MorseTranslator::~MorseTranslator"),
                     QStringLiteral("tools\\morsehandler\\morsetranslator"), 63);
    }
}

bool MorseTranslator::SetMorseAlphabet(const QString& path)
{
    QFile file(findFile(path));
    if (!openRegularFile(file)) {
        ReadDefaultAlphabetMap();
        return false;
    }
    ReadAlphabetMapFromFile(&file);
    return true;
}

const QString& MorseTranslator::DecodeMorse(const QString& code)
{
    static QString result;
    const QString* const text = findText(m_alphabetMap, code);
    result = text ? *text : QString();
    return result;
}

const QString& MorseTranslator::DecodeSymbol(int symbol)
{
    m_unknownSymbol.clear();
    switch (symbol) {
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
        return m_unknownSymbol;
    }
}

const QString& MorseTranslator::Translate(const QString& symbols)
{
    static QString result;
    const CodeIndex index(m_alphabetMap, symbols.size());
    QString text; // not the result yet: the argument may be the result of the last call
    text.reserve(symbols.size() / 2);
    CodeBuffer code;
    const auto appendCode = [&] {
        if (const QString* const known = index.Find(code))
            text += *known;
    };
    bool lastWasDigit = false;
    for (const QChar symbol : symbols) {
        if (symbol == NEW_WORD_MARK) {
            appendCode();
            text += QLatin1Char(' ');
        } else if (symbol == NEW_CHAR_MARK) {
            text += decodeWithCutZero(index, code, lastWasDigit);
        } else if (symbol == NEW_LINE_MARK) {
            appendCode();
            text += NEW_LINE_MARK;
        } else {
            code.Add(symbol);
            continue;
        }
        code.Clear();
    }
    if (!code.IsEmpty())
        appendCode();
    result = text;
    return result;
}

bool MorseTranslator::isTextDirectionRTL() const
{
    return m_textDirectionRTL;
}

void MorseTranslator::ReadAlphabetMapFromFile(QFile* file)
{
    const MorseAlphabet alphabet = readAlphabetFile(file->readAll());
    m_alphabetMap = alphabet.codes;
    m_textDirectionRTL = alphabet.rightToLeft;
}

void MorseTranslator::ReadDefaultAlphabetMap()
{
    m_alphabetMap = defaultAlphabet();
}
