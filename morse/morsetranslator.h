// SPDX-License-Identifier: MIT
// Turns a string of dots and dashes with gap marks into text through a Morse alphabet.
#pragma once

#include "morsehandler_export.h"

#include <QMap>
#include <QString>

class QFile;

/// Morse code to text.
///
/// Its symbols are "." and "-", and the marks "c" (end of character), "w" (end of word) and "\n"
/// (end of line). The results of `DecodeMorse` and `Translate` live in strings that all translators
/// share: use all translators from one thread, and copy a result before the next call.
class MORSEHANDLER_EXPORT MorseTranslator
{
public:
    /// No alphabet: until `SetMorseAlphabet` is called, every code decodes to an empty text.
    MorseTranslator();
    /// A copy has its own alphabet, and shares the results as all translators do.
    MorseTranslator(const MorseTranslator& other);
    /// A translator that is assigned to itself loses its alphabet.
    MorseTranslator& operator=(const MorseTranslator& other);
    virtual ~MorseTranslator();

    /// Loads the alphabet file at `path`, a path as the host spells it; the name of the file is
    /// found in any letter case. An empty path and whatever cannot be read as a file load the
    /// default alphabet instead and return false; the text direction then stays as it was.
    bool SetMorseAlphabet(const QString& path);

    /// The character or word for one code of dots and dashes; empty when the alphabet has none.
    /// Where several share the code, the first in the order of UTF-16 code units.
    const QString& DecodeMorse(const QString& code);

    /// The symbol string of one code of the demodulator; empty for an unknown code, and then
    /// valid until the next call.
    const QString& DecodeSymbol(int symbol);

    /// The text of a whole string of symbols. A lone dash right after a digit is read as a cut
    /// zero at a character mark. What follows the last mark is decoded too. Anything that is no
    /// symbol spoils the code that it stands in, which then gives no text.
    const QString& Translate(const QString& symbols);

    /// Whether the alphabet file declared that its text runs from right to left. Text is never
    /// reordered here.
    bool isTextDirectionRTL() const;

private:
    void ReadAlphabetMapFromFile(QFile* file);
    void ReadDefaultAlphabetMap();

    // The order of the fields is binary interface.
    QMap<QString, QString> m_alphabetMap; ///< text to code
    QString m_unknownSymbol;
    bool m_textDirectionRTL = false;
};
