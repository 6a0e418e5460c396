// SPDX-License-Identifier: MIT
#include "morse/morsetranslator.h"

#include "files/hostpath.h"
#include "files/regularfile.h"
#include "host/trace.h"
#include "morse/alphabetfile.h"
#include "morse/codeindex.h"
#include "morse/cutzero.h"
#include "morse/symbolcodes.h"

#include <optional>

namespace {

const QString DOT = QStringLiteral(".");
const QString DASH = QStringLiteral("-");
const QString NEW_CHAR = QStringLiteral("c");
const QString NEW_WORD = QStringLiteral("w");
const QString NEW_LINE = QStringLiteral("\n");
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
    // The argument may be the result of the last call.
    QString text;
    for (auto entry = m_alphabetMap.cbegin(); entry != m_alphabetMap.cend(); ++entry) {
        if (entry.value() == code) {
            text = entry.key();
            break;
        }
    }
    result = text;
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
    // A short text is not worth an index.
    std::optional<CodeIndex> index;
    if (symbols.size() > m_alphabetMap.size())
        index.emplace(m_alphabetMap);
    const auto decode = [&](QStringView code) {
        if (!index)
            return DecodeMorse(code.toString());
        const QString* const known = index->find(code);
        return known ? *known : QString();
    };

    QString text; // not the result yet: the argument may be the result of the last call
    text.reserve(symbols.size() / 2);
    // Everything between two marks is one code.
    const QStringView all = symbols;
    qsizetype codeStart = 0;
    bool lastWasDigit = false;
    for (qsizetype i = 0; i < all.size(); ++i) {
        const QStringView code = all.mid(codeStart, i - codeStart);
        if (all[i] == NEW_WORD[0]) {
            text += decode(code);
            text += QLatin1Char(' ');
        } else if (all[i] == NEW_CHAR[0]) {
            text += decodeWithCutZero(code, lastWasDigit, decode);
        } else if (all[i] == NEW_LINE[0]) {
            text += decode(code);
            text += NEW_LINE;
        } else {
            continue;
        }
        codeStart = i + 1;
    }
    if (codeStart < all.size())
        text += decode(all.mid(codeStart));
    result = text;
    return result;
}

bool MorseTranslator::isTextDirectionRTL() const
{
    return m_textDirectionRTL;
}

void MorseTranslator::ReadAlphabetMapFromFile(QFile* file)
{
    const MorseAlphabet alphabet = readAlphabetFile(*file);
    m_alphabetMap = alphabet.codes;
    m_textDirectionRTL = alphabet.rightToLeft;
}

void MorseTranslator::ReadDefaultAlphabetMap()
{
    m_alphabetMap = defaultAlphabet();
}
