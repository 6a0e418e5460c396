// SPDX-License-Identifier: MIT
// Symbol text through an alphabet handler, whole and in pieces. The input: a byte that chooses the
// alphabet, one that says how to cut, then the text, of which "#" stands for the error mark.
#include "fuzz/fuzzing.h"
#include "morse/morsetranslator.h"
#include "morse/simplemorsehandler.h"

#include <array>

using fuzzing::require;

namespace {

struct Alphabet
{
    SimpleMorseHandler handler;
    MorseTranslator translator;
};

const Alphabet& alphabetAt(std::uint8_t number)
{
    static const std::array<Alphabet, 4> ALPHABETS = [] {
        constexpr std::array<const char*, 4> NAMES = {"International", "Greek", "Japanese",
                                                      "German"};
        std::array<Alphabet, 4> alphabets;
        for (std::size_t i = 0; i < NAMES.size(); ++i) {
            const QString folder(PROJECT_DATA_DIR "/alphabets");
            alphabets[i].handler.SetAlphabetsDir(folder);
            require(alphabets[i].handler.SetAlphabet(NAMES[i]) &&
                        alphabets[i].translator.SetMorseAlphabet(folder + '/' + NAMES[i] + ".mal"),
                    "a shipped alphabet can be loaded");
        }
        return alphabets;
    }();
    return ALPHABETS[number % ALPHABETS.size()];
}

bool isGap(QChar c)
{
    return c == ' ' || c == '\t' || c == '\n';
}

/// What text without error marks gives: code by code, the last one waiting.
QString expected(MorseTranslator& translator, const QString& symbols)
{
    QString text;
    QString code;
    bool lastWasDigit = false;
    for (const QChar symbol : symbols) {
        if (symbol == '.' || symbol == '-')
            code += symbol;
        if (!isGap(symbol))
            continue;
        if (!code.isEmpty()) {
            const QString character =
                lastWasDigit && code == "-" ? QString("0") : translator.DecodeMorse(code);
            lastWasDigit = character.size() == 1 && character[0] >= '0' && character[0] <= '9';
            text += character;
        }
        if (symbol == '\t')
            text += ' ';
        if (symbol == '\n')
            text += '\n';
        code.clear();
    }
    return text;
}

/// Cuts behind about every `distance` characters, behind gaps alone where `gapsOnly`.
QString inPieces(SimpleMorseHandler handler, const QString& symbols, int distance, bool gapsOnly)
{
    IAlphabetHandler& translating = handler;
    QString text;
    int begin = 0;
    for (int at = 1; at <= symbols.size(); ++at) {
        const bool isFar = at - begin >= distance && (!gapsOnly || isGap(symbols[at - 1]));
        if (!isFar && at < symbols.size())
            continue;
        text += translating.Translate(symbols.mid(begin, at - begin));
        begin = at;
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzzing::Bytes bytes(data, size);
    const Alphabet& alphabet = alphabetAt(bytes.byte());
    const int distance = 1 + bytes.byte() % 40;
    const QByteArray rest = bytes.rest();
    QString symbols = QString::fromLatin1(rest.constData(), rest.size());
    symbols.replace('#', SimpleMorseHandler::PAUSE_TOO_SHORT);

    SimpleMorseHandler handler = alphabet.handler;
    const QString whole = handler.Translate(symbols);
    handler.ResetInternalState();
    require(handler.Translate(symbols) == whole,
            "a handler that was reset starts from the beginning");
    // No text of these alphabets is longer than "(prosign)" or so.
    require(whole.size() <= 16 * symbols.size(), "the text grows with the symbols");

    // A mark that ends a piece takes the symbols before it along, so marks are left whole.
    require(inPieces(alphabet.handler, symbols, distance, true) == whole,
            "pieces that end in gaps give what the whole gives");
    if (!symbols.contains('[')) {
        require(inPieces(alphabet.handler, symbols, distance, false) == whole,
                "pieces give what the whole gives");
        MorseTranslator translator = alphabet.translator;
        require(expected(translator, symbols) == whole, "codes are decoded one by one");
    }

    QVector<MorseSymbolCode> codes;
    QString strings;
    for (const char byte : rest) {
        codes += byte;
        strings += SimpleMorseHandler::ConvertSymbol(byte);
    }
    require(SimpleMorseHandler::ConvertSymbols(codes) == strings, "codes are converted one by one");
    handler.ResetInternalState();
    require(handler.Translate(strings).size() <= 16 * codes.size(),
            "the text grows with the codes");
    return 0;
}
