// SPDX-License-Identifier: MIT
// Translates the text stream of a decoder, live, through the map that the operator chooses.
#pragma once

#include "charmap/basecharset.h"
#include "charmap/charactermap.h"
#include "host/observable.h"
#include "host/values.h"
#include "morsehandler_export.h"

#include <QFile>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <memory>

class IVtClient;

/// Loads all codec files and map files of one folder, offers those that fit the running decoder in
/// one value of the host's tree, and writes the text of another value, translated through the
/// chosen one, into a third.
///
/// Construct it, attach the values (the available maps and the text direction before the decoder
/// changes), call `Init` with the current selection, then `Enabled(true)`, and announce the
/// selection once more: what `Init` selects before is not in force yet.
///
/// The values belong to the host; one that announces its deletion is forgotten, and whatever needs
/// it is left undone from then on. All work is done on the thread that notifies or calls. A
/// directory is not deleted from within a notification that it caused; in particular, an observer
/// of change code 7 must not delete it while `Init` fills the list.
///
/// No operation throws, unless memory runs out or an observer throws; the destructor never does.
class MORSEHANDLER_EXPORT MappingDirectory : public IObserver
{
public:
    /// Loads the maps of `directory` and reads which base character set each decoder has. What is
    /// no such file, or cannot be read, is not offered; a missing folder offers nothing. Where a
    /// codec file and an ITA2 map file share their name, the map file is taken.
    explicit MappingDirectory(const QString& directory);
    /// Deregisters from every value.
    ~MappingDirectory() override;

    MappingDirectory(const MappingDirectory&) = delete;
    MappingDirectory& operator=(const MappingDirectory&) = delete;

    /// Whether changes of values are obeyed. Off at first; switching off empties the output.
    void Enabled(bool on);

    /// Fills the available maps for the current decoder and selects `selection` again, or "Default"
    /// when it is not among them.
    void Init(QString selection);

    // Each attaches the value at `path`, which is created when there is none, and returns whether a
    // value is held now. The value that was held before is no longer regarded.

    /// The list of maps (output), and the one that the operator chooses (input).
    bool SetAvailableMaps_ValuePath(QString path);
    /// Observed, without effect.
    bool SetChannelIndex_ValuePath(QString path);
    /// The decoder's output. A client that is given gets the value handed over.
    bool SetDataInput_ValuePath(QString path, IVtClient* client);
    /// The translated text.
    bool SetDataOutput_ValuePath(QString path);
    /// Its current item names the decoder. A change fills the available maps again.
    bool SetDecoder_ValuePath(QString path);
    /// Observed, without effect.
    bool SetFrequency_ValuePath(QString path);
    /// The length of the history in characters; set to 10000, between 100 and 10000.
    bool SetMaxNumberOfChars_ValuePath(QString path);
    /// Observed, without effect.
    bool SetModtype_ValuePath(QString path);
    /// Code 19 on this value closes the output file; nothing is written to it.
    bool SetSaveToFile_ValuePath(QString path);
    /// Takes the direction of the chosen map. Not observed, so looked up whenever it is written.
    bool SetTextDirectionRTL_ValuePath(QString path);
    /// Observed, without effect.
    bool SetTranslateAll_ValuePath(QString path);
    /// Observed, without effect.
    bool SetTranslatedFile_ValuePath(QString path);

    /// Stored only.
    void SetTranslatedFileDirectory(QString directory);
    /// Derives and stores the identifier of the host's channel.
    void SetIpcIdentifier(QString id);

    /// Code 2 forgets a value, 3 is obeyed while enabled, 19 always. Other codes, and values that
    /// are not held, are ignored.
    void Update(Observable* source, TChangeCode code) override;

    /// The names that are offered for a base character set: the ITA2 maps, then the ASCII maps,
    /// each in ascending order.
    QStringList availableMaps(eBASE_CHARSET charset);
    /// Adds `text` to the history and translates it through the chosen map, character by character.
    /// Characters outside Latin-1 become question marks first, unless "Default" is chosen.
    QString translate(const QString& text);
    /// The whole history through the chosen map.
    QString TranslateHistory();
    /// Forgets the history.
    void ClearHistory();

private:
    eBASE_CHARSET baseCharset(const QString& display);
    QString charset(const QString& display);
    QString fullString(const QString& name, eBASE_CHARSET charset);
    eBASE_CHARSET GetDecoderCharset();
    void initBaseCharsetMap();
    bool switchTo(const QString& display);
    void SaveToHistory(QString text);
    QString CreateTimeString();
    // Empty: nothing is written to the output file yet.
    void SaveToFile(QString text);
    void CreateFilename();
    void InitSaveToFile();

    // Not exported.
    MORSEHANDLER_NO_EXPORT auto observedValues();
    template <typename Kind>
    MORSEHANDLER_NO_EXPORT void hold(Kind*& role, const QString& path);
    template <typename Kind>
    MORSEHANDLER_NO_EXPORT bool observe(Kind* role);
    template <typename Kind>
    MORSEHANDLER_NO_EXPORT bool attach(Kind*& role, const QString& path);
    MORSEHANDLER_NO_EXPORT void forgetDeleted(const Observable* source);
    MORSEHANDLER_NO_EXPORT void contentChanged(const Observable* source);
    MORSEHANDLER_NO_EXPORT void evaluationForced(const Observable* source);
    MORSEHANDLER_NO_EXPORT void closeOutputFile();
    MORSEHANDLER_NO_EXPORT void writeTextDirection(bool rightToLeft);

    // Up to the pointer at the end the order of the fields is binary interface. What is added goes
    // behind that pointer.
    QString m_currentMap; ///< without the suffix of its character set
    eBASE_CHARSET m_currentCharset = eCHARSET_NONE;
    bool m_enabled = false;
    QString m_history; ///< untranslated; what slid out of it may still be in front
    QString m_ipcIdentifier;
    QString m_translatedFileDirectory;
    QFile m_outputFile;
    QTextStream m_outputStream;
    QMap<eBASE_CHARSET, QMap<QString, CharacterMap>> m_maps;
    QMap<QString, eBASE_CHARSET> m_decoderCharsets;
    bool m_retranslating = false;
    ValueSelection* m_decoder = nullptr;
    ValueSelection* m_availableMaps = nullptr;
    TextValue* m_dataInput = nullptr;
    TextValue* m_dataOutput = nullptr;
    FlagValue* m_translateAll = nullptr;
    TextValue* m_translatedFile = nullptr;
    FlagValue* m_saveToFile = nullptr;
    IntegerValue* m_maxNumberOfChars = nullptr;
    RealValue* m_frequency = nullptr;
    ValueSelection* m_modulationType = nullptr;
    IntegerValue* m_channelIndex = nullptr;
    FlagValue* m_textDirectionRTL = nullptr;

    struct MORSEHANDLER_NO_EXPORT Own;
    std::unique_ptr<Own> m_own;
};
