// SPDX-License-Identifier: MIT
// A host for one Morse signal: builds the values, wires a Morse handler to them, feeds it what a
// demodulator hears and puts the transmissions together.
#pragma once

#include "host/observable.h"
#include "host/values.h"
#include "session/morsehandler.h"
#include "signal/morse/demodulator.h"
#include "signal/morse/symbolsink.h"
#include "station/saveledger.h"
#include "station/stationlistener.h"
#include "station/valuebranch.h"

#include <QString>

#include <optional>

namespace morsehost {

/// How elements become characters.
struct AlphabetChoice
{
    QString name;           ///< empty for the built-in one
    QString directory;      ///< without meaning for the built-in one
    bool cutNumbers = true; ///< after a figure, a dash alone is a zero and no T
};

/// What the operator chose, and what is known of the receiver.
struct StationSettings
{
    QString place;    ///< of its values in the tree, such as "Receiver1/Signal3"
    QString receiver; ///< its name in what is reported; may be empty
    QString source;   ///< name of the recording or pipe; may be empty
    AlphabetChoice alphabet;
    QString saveDirectory; ///< see folderOfDay; empty when nothing is saved
    std::optional<double> frequency_Hz;
    unsigned long long start_us = 0; ///< time of the first sample, since 1970-01-01 00:00 UTC
    std::optional<demodulator::Settings> demodulator; ///< for the result document; may be absent
};

/// Uses the library as any host does: through paths of values, notifications and the handler's
/// public operations. Stations share a tree, each at a place of its own, and a thread. The rule of
/// times is kept here: a line's end (code 5) is written when the next transmission begins, and
/// codes from 3 on carry the time of their own signal.
class MorseStation : public demodulator::SymbolSink, private IObserver
{
public:
    /// Tree and listener outlive the station.
    MorseStation(HostTree& tree, const StationSettings& settings, StationListener& listener);
    ~MorseStation() override;

    /// False when the alphabet could not be loaded.
    bool start();

    // Times count from the first sample.
    void transmissionStarted(std::int64_t time_us) override;
    void symbol(int code, std::int64_t time_us) override;
    void transmissionStopped(std::int64_t time_us,
                             const demodulator::SignalReport& report) override;
    /// The same where nothing is known of the signal. Does nothing when none is open.
    void endTransmission(std::int64_t time_us);

    /// The reception is over: a transmission that is still open ends, all files are closed, and
    /// what the disk has not taken by then is lost. Nothing is received afterwards.
    SaveLosses stop();

    bool isTextRightToLeft();

private:
    void Update(Observable* source, TChangeCode code) override;
    void wireAlphabet();
    void wireFiles();
    void receiveTime(std::int64_t time_us);
    void receiveCode(int code);
    void writeSymbol(int code);
    void heard(const QString& text);
    void describeReceiver();
    QStringList savedFiles();
    void watchFiles(bool isElement);
    void setSaveDirectory();
    bool changeDay(qint64 time_us);

    StationSettings m_settings;
    StationListener& m_listener;
    ValueBranch m_values;
    IntegerValue* m_symbol;
    FlagValue* m_available;
    TextValue* m_text;
    TextValue* m_alphabetDirectory;
    FlagValue* m_saveToFile;
    FlagValue* m_saveDocument;
    FlagValue* m_rightToLeft;
    FlagValue* m_settingsRequest;
    TextValue* m_receiverSettings;
    TextValue* m_codeFileName = nullptr;
    TextValue* m_textFileName = nullptr;
    TextValue* m_documentName = nullptr;
    QString m_folder;                   ///< of the day on which the last transmission began
    std::optional<SaveLedger> m_ledger; ///< while something is saved
    std::optional<MorseHandler> m_handler;

    Transmission m_transmission;
    bool m_isOpen = false;              ///< a transmission has begun and not ended
    std::optional<std::int64_t> m_time; ///< the last that was sent
    QString m_elements;                 ///< dots and dashes of the character being received
    QString m_textOfCode;               ///< what the last code gave
};

} // namespace morsehost
