// SPDX-License-Identifier: MIT
// An alphabet file: the input is the file.
#include "fuzz/tablechecks.h"

#include "morse/codeindex.h"
#include "morse/morsetranslator.h"
#include "tables/alphabetfile.h"

using fuzzing::require;

namespace {

/// Whether it survives the way through UTF-8.
bool isUtf8Text(const QString& text)
{
    return QString::fromUtf8(text.toUtf8()) == text;
}

void requirePlainEntries(const MorseAlphabet& alphabet, int fileBytes)
{
    int characters = 0;
    for (auto entry = alphabet.codes.cbegin(); entry != alphabet.codes.cend(); ++entry) {
        require(!entry.key().isEmpty(), "no entry without a key");
        for (const QString& text : {entry.key(), entry.value()}) {
            require(!text.contains('\n') && !text.contains('\t'),
                    "keys and codes hold no line end and no tab");
            characters += text.size();
        }
    }
    require(characters <= fileBytes, "no more characters than bytes");
}

void requireSameRewritten(const MorseAlphabet& alphabet)
{
    // The empty line ends the header, the last one is the spare line.
    QByteArray file = alphabet.rightToLeft ? "@ TextDirection RL\n\n" : "\n";
    for (auto entry = alphabet.codes.cbegin(); entry != alphabet.codes.cend(); ++entry) {
        if (!isUtf8Text(entry.key()) || !isUtf8Text(entry.value()))
            return;
        file += entry.key().toUtf8() + '\t' + entry.value().toUtf8() + "\t\n";
    }
    const MorseAlphabet again = readAlphabetFile(file + '\n');
    require(again.codes == alphabet.codes && again.rightToLeft == alphabet.rightToLeft,
            "an alphabet that is written reads back the same");
}

void requireSameLookUps(const MorseAlphabet& alphabet, MorseTranslator& translator)
{
    const CodeIndex index(alphabet.codes, 1000);
    QString symbols;
    QString texts;
    for (const QString& code : alphabet.codes) {
        const QString* const text = findText(alphabet.codes, code);
        require(text != nullptr, "every code is found");
        require(translator.DecodeMorse(code) == *text,
                "a translator that loads the file knows the same codes");
        CodeBuffer buffer;
        for (const QChar symbol : code)
            buffer.Add(symbol);
        require(index.Find(buffer) == text, "the index finds what a search finds");
        if (code.contains('c') || code.contains('w'))
            continue;
        symbols += code + 'w';
        texts += *text + ' ';
    }
    require(translator.Translate(symbols) == texts, "a translation is the sum of its codes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = fuzzing::bytesOf(data, size);
    const MorseAlphabet alphabet = readAlphabetFile(bytes);
    require(alphabet.codes.size() <= bytes.size(), "no more entries than bytes");
    if (!fuzzing::isChecked(data, size))
        return 0;

    static const fuzzing::Folder folder;
    requirePlainEntries(alphabet, bytes.size());
    requireSameRewritten(alphabet);
    MorseTranslator translator;
    require(translator.SetMorseAlphabet(folder.write("input.mal", bytes)), "a file can be loaded");
    require(translator.isTextDirectionRTL() == alphabet.rightToLeft,
            "a translator that loads the file knows its direction");
    // Quadratic, since every code is searched for.
    if (alphabet.codes.size() < 500)
        requireSameLookUps(alphabet, translator);

    Faults faults;
    const MorseAlphabet withFaults = readAlphabetFile(bytes, faults);
    require(withFaults.codes == alphabet.codes, "faults change nothing in the table");
    require(withFaults.lines.size() == alphabet.codes.size(), "every entry has its line");
    const lint::Report report = fuzzing::requireReport("input.mal", bytes);
    require(report.entryCount == alphabet.codes.size() &&
                report.rightToLeft == alphabet.rightToLeft,
            "the check reads what a reader reads that nobody asks for faults");
    return 0;
}
