// SPDX-License-Identifier: MIT
// The Morse session: symbol codes from a host value in, text in a host value out, with session
// files and a result document beside it.
#pragma once

#include "host/observable.h"
#include "host/values.h"
#include "morsehandler_export.h"

#include <QObject>
#include <QString>

#include <list>
#include <memory>

class MorseTranslator;
class QFile;
class QTextStream;
class TavikResultDataHandler;
namespace Vanth {
class DateTime;
}

/// Observes the demodulator's symbol value, decodes the codes through a Morse alphabet and writes
/// each character into the text value.
///
/// The host wires a handler by paths of its value tree, then calls `StartNewMorseSession`. From
/// then on each code that is written into the symbol value moves one queued code through the
/// handler. A path that is not in the tree, or holds a value of another kind, leaves that role
/// empty; an empty role counts as false, 0 or an empty text and is never an error.
///
/// Values belong to the tree. The handler forgets a value when it announces its deletion, and
/// looks values that it does not observe up again by their path whenever it uses them.
///
/// All work runs on the thread that changes the values or calls the operations; a handler is not
/// safe for concurrent use, and all handlers of a process are used from one thread at a time since
/// their translations share a result. A handler is not deleted from within a notification that it
/// caused.
///
/// No operation throws, unless memory runs out or an observer throws; the destructor never does.
/// An observer that throws ends the work on the code that it heard of; the codes behind it are
/// processed as ever.
class MORSEHANDLER_EXPORT MorseHandler : public QObject, public IObserver
{
    Q_OBJECT

public:
    /// No values, no session, no alphabet.
    MorseHandler();
    /// Closes the files and deregisters from every value.
    ~MorseHandler() override;

    // Each setter leaves the value that served before and takes the one at `path`.

    /// The demodulator's symbol code (input).
    void SetSymbol_ValuePath(const QString& path);
    /// Whether Morse decoding is available; taken over at once.
    void SetMorseAvailable_ValuePath(const QString& path);
    /// The decoded text (output): one character, a character and a blank, or a line feed at a time.
    void SetMorseText_ValuePath(const QString& path);
    /// Its current item names the alphabet file. Read when a session starts.
    void SetMorseAlphabet_ValuePath(const QString& path);
    /// Whether code and text files are written; takes effect at once.
    void SetMorseSaveToFile_ValuePath(const QString& path);
    /// Code 19 on this value saves the result document. Set to true when it is attached.
    void SetMorseXmlSaveToFile_ValuePath(const QString& path);
    /// Where the alphabet files lie.
    void SetMorseAlphabet_DirectoryPath(const QString& path);
    /// Receives true when the alphabet's text runs right to left.
    void SetTextDirectionRTL_ValuePath(const QString& path);
    /// Receive frequency in Hz; a change begins new files.
    void SetFrequency_ValuePath(const QString& path);
    /// Modulation type; a change begins new files.
    void SetModtype_ValuePath(const QString& path);
    /// Decoder result; a change begins new files.
    void SetDecResult_ValuePath(const QString& path);
    /// Request flag that asks the host for the tuner and demodulator settings.
    void SetGenXmlTunerDemodulatorSettingsPath(const QString& path);
    /// Where the host writes those settings.
    void SetXmlTunerDemodulatorSettings(const QString& path);
    /// The folder of the session files and the result document, and the values that receive the
    /// full path of the current text file, code file and document. An open file stays where it is.
    void SetSaveDirectoryPath(const QString& directory, const QString& textFileNamePath,
                              const QString& codeFileNamePath, const QString& xmlFileNamePath);

    /// Derives and stores the identifier of the host's channel.
    void SetIpcIdentifier(const QString& id);

    /// Loads the selected alphabet and begins to process codes. False when no alphabet file could
    /// be read; the built-in alphabet is used then.
    bool StartNewMorseSession();
    /// Stops processing, forgets the received symbols and closes the files. Codes that wait in the
    /// queue stay there.
    void EndMorseSession();

    /// Queues a code as if the symbol value had changed to it.
    void AddSymbol(int code);
    /// Forgets the symbols of the session that are kept for `TranslateText`.
    void ClearSymbolBuffer();
    /// The whole symbol buffer translated again, or, with `partOnly` and a `count` of at least 1,
    /// its last `count` units (completed characters and word gaps); nothing when `fromEnd` is
    /// false then. The reference is valid until the next translation of any handler.
    const QString& TranslateText(bool partOnly, bool fromEnd, int count);
    /// The symbols of the session, a sliding window of fewer than 30000 characters.
    const QString& GetCurrentMorseSymbolString();
    /// Null when there is none.
    ValueSelection* GetMorseAlphabet();
    /// Loads the alphabet that the selection names and publishes its writing direction.
    bool ChangeAlphabet();

    /// Sets availability and session state at once.
    void SetMorseAvailable(bool available);
    /// Handed to the result document, which has no use for it yet.
    void SetBaudrate(double baudrate);
    /// Handed to the result document, which has no use for it yet.
    void SetFrequencyOffset(double offset_Hz);
    /// Time of the latest received signal in microseconds since 1970-01-01 00:00 UTC. The latest
    /// two bound the line markers; the first one of a transmission opens it in the document.
    void SetTimestamp(const unsigned long long& timestamp);

protected:
    /// Code 2 forgets a value, 3 and 19 do what each setter says. Other codes, and values that are
    /// not held, are ignored.
    void Update(Observable* source, TChangeCode code) override;

protected Q_SLOTS:
    /// Writes the name of a new document into its value.
    void SetXmlFileName(const QString& strXmlFileName);
    /// Raises the request for the settings, or announces it again.
    void GetXmlTunerDemodulatorSettings();

private:
    void AddToSymbolBuffer(const QString& s);
    void ProcessSymbolList();
    void ProcessNewChar(const QString& s);
    void ProcessNewWord(const QString& s);
    void ProcessNewLine(const QString& s);
    QString GetPartOfSymbolString(bool fromEnd, int count);
    QString BuildAlphabetPath();
    void ProcessUpdateTunerDemodulatorSettings();

    void SaveCodeAndText(const QString& code, const QString& text);
    void CloseAllFiles();
    void PrepareSavingMorseCode();
    void PrepareSavingMorseText();
    bool CheckIfNewCodeFile();
    bool CheckIfNewTextFile();
    void CreateCodeFilename();
    void CreateTextFilename();
    void OpenMorseCode();
    void OpenMorseText();
    QString CreateTimeString();

    // Not exported.
    MORSEHANDLER_NO_EXPORT auto observedValues();
    template <typename Kind>
    MORSEHANDLER_NO_EXPORT void observe(Kind*& role, const QString& path);
    template <typename Kind>
    MORSEHANDLER_NO_EXPORT void observeTwice(Kind*& role, const QString& path);
    MORSEHANDLER_NO_EXPORT void replay(ValueBase* value);
    MORSEHANDLER_NO_EXPORT void contentChanged(const Observable* source);
    MORSEHANDLER_NO_EXPORT void evaluationForced(const Observable* source);
    MORSEHANDLER_NO_EXPORT void processOldestSymbol();
    MORSEHANDLER_NO_EXPORT void publishText(const QString& text);
    MORSEHANDLER_NO_EXPORT QString newFileName(const QString& nameEnd, const char* operation);
    MORSEHANDLER_NO_EXPORT void restartFilesIfSaving();

    // Up to the pointer at the end the order of the fields is binary interface. What is added goes
    // behind that pointer.
    IntegerValue* m_pSymbol = nullptr;
    FlagValue* m_pMorseAvailable = nullptr;
    TextValue* m_pMorseText = nullptr;
    ValueSelection* m_pMorseAlphabet = nullptr;
    FlagValue* m_pMorseSaveToFile = nullptr;
    FlagValue* m_pMorseXmlSaveToFile = nullptr;
    TextValue* m_pTextFileName = nullptr;
    TextValue* m_pXmlFileName = nullptr;
    TextValue* m_pCodeFileName = nullptr;
    TextValue* m_pMorseAlphabetDirectory = nullptr;
    FlagValue* m_pTextDirectionRTL = nullptr;
    RealValue* m_pFrequency = nullptr;
    ValueSelection* m_pModtype = nullptr;
    ValueSelection* m_pDecResult = nullptr;
    MorseTranslator* m_pTranslator = nullptr;
    QString m_strAlphabetDirectory; ///< ends in a backslash once set from its value
    QString m_strSymbolBuffer;
    QString m_strCurrentSymbols; ///< dots and dashes of the character being received
    QString m_strErrorMarks;     ///< since the last character, word or line end
    QString m_strSaveDirectory;
    QString m_strCodeFileName; ///< empty when there is none
    QString m_strTextFileName; ///< empty when there is none
    QString m_strReserved1;
    QString m_strReserved2;
    QString m_strIpcIdentifier;
    QFile* m_pTextFile = nullptr;
    QTextStream* m_pTextStream = nullptr;
    QFile* m_pCodeFile = nullptr;
    QTextStream* m_pCodeStream = nullptr;
    bool m_bMorseAvailable = false;
    bool m_bSessionActive = false;
    bool m_bSaveToFile = false;
    bool m_bDigitMode = false; ///< the last decoded character was a digit
    unsigned int m_nCodeColumn = 0;
    unsigned int m_nTextColumn = 0;
    unsigned int m_nLineLength = 100;
    std::list<int> m_symbolList; ///< codes not yet processed, the oldest in front
    Vanth::DateTime* m_pDateTime = nullptr;
    unsigned long long m_nPreviousTimestamp;
    unsigned long long m_nCurrentTimestamp;
    TavikResultDataHandler* m_pResultDataHandler = nullptr;
    FlagValue* m_pGenXmlTunerDemodulatorSettings = nullptr;
    TextValue* m_pXmlTunerDemodulatorSettings = nullptr;

    struct MORSEHANDLER_NO_EXPORT Own;
    std::unique_ptr<Own> m_own;
};
