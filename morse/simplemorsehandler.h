// SPDX-License-Identifier: MIT
// The Morse member of the family of alphabet handlers.
#pragma once

#include "charmap/ialphabethandler.h"
#include "morse/symbolcodes.h"
#include "morsehandler_export.h"

#include <QDir>
#include <QMap>
#include <QString>
#include <QVector>

/// Translates a stream of Morse symbol strings, which may arrive in arbitrary pieces, through an
/// alphabet file of a folder: the alphabet "Greek" lies in "Greek.mal".
///
/// Use one handler from one thread at a time; the two converters may be used from any thread.
class MORSEHANDLER_EXPORT SimpleMorseHandler : public IAlphabetHandler
{
public:
    ///@{
    /// The symbol strings that `Translate` reads. All three timing errors share one text: they are
    /// dropped alike.
    static const QString DOT;
    static const QString DASH;
    static const QString NEW_CHAR;
    static const QString NEW_WORD;
    static const QString NEW_LINE;
    static const QString DOT_TOO_SHORT;
    static const QString DASH_TOO_LONG;
    static const QString PAUSE_TOO_SHORT;
    ///@}
    /// For callers; no converter gives it.
    static const QString UNKNOWN;

    /// The symbol string of one code of the demodulator, of which the low seven bits count.
    /// Empty for an unknown code.
    static QString ConvertSymbol(MorseSymbolCode symbol);
    /// The symbol strings of all codes, one behind the other.
    static QString ConvertSymbols(QVector<MorseSymbolCode> symbols);

    /// The alphabet "None", and the current folder.
    SimpleMorseHandler();
    /// A copy goes on by itself from the same state, symbols that wait included.
    SimpleMorseHandler(const SimpleMorseHandler& other);
    /// Takes over the state of `other`.
    SimpleMorseHandler& operator=(const SimpleMorseHandler& other);
    ~SimpleMorseHandler() override;

    void SetAlphabetsDir(const QString& dir) override;
    /// Starts again with the file of that name; "None", in any letter case, is no alphabet. False
    /// when there is no such file: `Alphabet` then gives the name all the same, and text passes
    /// through unchanged.
    bool SetAlphabet(const QString& name) override;
    /// Does nothing: Morse alphabets do not depend on the decoder.
    void SetDecoder(const QString& decoder) override;
    QString Alphabet() override;
    /// "None" and the alphabet files of the folder, by name whatever their letter case.
    QStringList AvailableAlphabets() override;
    bool TextDirectionRTL() override;
    void ResetInternalState() override;
    /// The text of all symbols up to the last gap; what follows waits for the next call. A lone
    /// dash right after a digit is a cut zero. Error marks are dropped, and so is whatever is no
    /// symbol; symbols between the last gap and an error mark that nothing follows are dropped
    /// with it. Without an alphabet, `symbols` unchanged.
    QString Translate(const QString& symbols) override;
    /// Always empty.
    QString Backtranslate(const QString& text) override;

private:
    // Exported by name; not all of them are called by this class itself.
    QString ConvertOneChar(const QString& code);
    QString codecNameToFile(const QString& name);
    QString fileToCodecName(const QString& fileName);
    bool readMalFile(const QString& fileName);
    void readDefaultAlphabet();

    // The order of the fields is binary interface.
    QDir m_alphabetsDir;
    QString m_decoder; ///< reserved: nothing sets or reads it
    QString m_alphabet;
    QMap<QString, QString> m_morseMap; ///< text to code
    bool m_textDirectionRTL = false;
    QString m_pendingSymbols; ///< received and not yet translated
    bool m_lastWasDigit = false;
};
