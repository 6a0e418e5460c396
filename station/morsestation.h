// SPDX-License-Identifier: MIT
// A small host: builds a value tree, wires a Morse handler to it, and feeds it what a demodulator
// hears.
#pragma once

#include "host/observable.h"
#include "host/standin/hosttree.h"
#include "host/values.h"
#include "session/morsehandler.h"
#include "station/saveledger.h"

#include <QString>

#include <functional>
#include <optional>

namespace morsehost {

/// What the operator chose.
struct StationSettings
{
    QString alphabetDirectory;
    QString alphabet;      ///< empty for the built-in one
    QString saveDirectory; ///< empty when nothing is saved
    std::optional<double> frequency_Hz;
    /// Describes tuner and demodulator, asked for whenever a transmission begins.
    std::function<QString()> describeReceiver;
};

/// Uses the library as any host does: through paths of values, notifications and the handler's
/// public operations. One station exists at a time, since the tree is one a process.
class MorseStation : private IObserver
{
public:
    /// Hears each text that the handler writes into the text value.
    using TextListener = std::function<void(const QString& text)>;

    MorseStation(const StationSettings& settings, TextListener listener);
    ~MorseStation() override;

    /// False when the alphabet could not be loaded.
    bool start();
    void receiveTime(unsigned long long time_us);
    void receiveSymbol(int code);
    /// Has the document of the transmission saved.
    void saveDocument();
    void stop();

    /// After `stop`: what was received to be saved and could not be.
    long long lostSymbols() { return m_ledger.lostSymbols(); }
    long long lostDocuments() const { return m_ledger.lostDocuments(); }

    bool isTextRightToLeft();

private:
    void Update(Observable* source, TChangeCode code) override;

    StationSettings m_settings;
    TextListener m_listener;
    HostTree m_tree;
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
    TextValue* m_documentName = nullptr;
    SaveLedger m_ledger;
    MorseHandler m_handler; ///< goes before the tree
};

} // namespace morsehost
