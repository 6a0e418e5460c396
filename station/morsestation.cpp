// SPDX-License-Identifier: MIT
#include "station/morsestation.h"

#include "host/standin/resultpolicy.h"
#include "morse/symbolcodes.h"

#include <utility>

namespace morsehost {

namespace {

QString path(const char* name)
{
    return QStringLiteral("Receiver/Morse/") + QLatin1String(name);
}

} // namespace

MorseStation::MorseStation(const StationSettings& settings, TextListener listener)
    : m_settings(settings)
    , m_listener(std::move(listener))
    , m_symbol(m_tree.Add<IntegerValue>(path("Symbol")))
    , m_available(m_tree.Add<FlagValue>(path("Available")))
    , m_text(m_tree.Add<TextValue>(path("Text")))
    , m_alphabetDirectory(m_tree.Add<TextValue>(path("AlphabetDirectory")))
    , m_saveToFile(m_tree.Add<FlagValue>(path("SaveToFile")))
    , m_saveDocument(m_tree.Add<FlagValue>(path("SaveDocument")))
    , m_rightToLeft(m_tree.Add<FlagValue>(path("RightToLeft")))
    , m_settingsRequest(m_tree.Add<FlagValue>(path("SettingsRequest")))
    , m_receiverSettings(m_tree.Add<TextValue>(path("ReceiverSettings")))
{
    TavikResultDataXml::keepResultDocuments(!settings.saveDirectory.isEmpty());
    m_available->SetValue(true, nullptr);
    m_alphabetDirectory->SetValue(settings.alphabetDirectory, nullptr);
    m_text->AddObserver(this);
    m_settingsRequest->AddObserver(this);

    m_handler.SetSymbol_ValuePath(path("Symbol"));
    m_handler.SetMorseAvailable_ValuePath(path("Available"));
    m_handler.SetMorseText_ValuePath(path("Text"));
    m_handler.SetMorseAlphabet_DirectoryPath(path("AlphabetDirectory"));
    m_handler.SetTextDirectionRTL_ValuePath(path("RightToLeft"));
    m_handler.SetGenXmlTunerDemodulatorSettingsPath(path("SettingsRequest"));
    m_handler.SetXmlTunerDemodulatorSettings(path("ReceiverSettings"));
    if (!settings.alphabet.isEmpty()) {
        auto* const alphabet = m_tree.Add<ValueSelection>(path("Alphabet"));
        alphabet->AddItem(settings.alphabet, 0, 0, nullptr);
        alphabet->Select(settings.alphabet, nullptr);
        m_handler.SetMorseAlphabet_ValuePath(path("Alphabet"));
    }
    if (settings.frequency_Hz) {
        m_tree.Add<RealValue>(path("Frequency"))->SetValue(*settings.frequency_Hz, nullptr);
        m_handler.SetFrequency_ValuePath(path("Frequency"));
    }
    // One receiver, one way of keying: these two never change here.
    for (const char* name : {"Modulation", "DecoderResult"}) {
        auto* const selection = m_tree.Add<ValueSelection>(path(name));
        selection->AddItem(QStringLiteral("CW"), 0, 0, nullptr);
        selection->Select(QStringLiteral("CW"), nullptr);
    }
    m_handler.SetModtype_ValuePath(path("Modulation"));
    m_handler.SetDecResult_ValuePath(path("DecoderResult"));
    m_handler.SetMorseSaveToFile_ValuePath(path("SaveToFile"));
    m_handler.SetMorseXmlSaveToFile_ValuePath(path("SaveDocument"));
    if (!settings.saveDirectory.isEmpty()) {
        m_tree.Add<TextValue>(path("TextFileName"));
        m_codeFileName = m_tree.Add<TextValue>(path("CodeFileName"));
        m_documentName = m_tree.Add<TextValue>(path("DocumentName"));
        m_codeFileName->AddObserver(this);
        m_documentName->AddObserver(this);
        m_handler.SetSaveDirectoryPath(settings.saveDirectory, path("TextFileName"),
                                       path("CodeFileName"), path("DocumentName"));
        m_saveToFile->SetValue(true, nullptr);
    }
}

MorseStation::~MorseStation()
{
    for (ValueBase* const value :
         {static_cast<ValueBase*>(m_text), static_cast<ValueBase*>(m_settingsRequest),
          static_cast<ValueBase*>(m_codeFileName), static_cast<ValueBase*>(m_documentName)}) {
        if (value)
            value->DeleteObserver(this);
    }
}

bool MorseStation::start()
{
    return m_handler.StartNewMorseSession();
}

void MorseStation::stop()
{
    m_handler.EndMorseSession();
    m_ledger.documentsSaved();
}

void MorseStation::receiveTime(unsigned long long time_us)
{
    m_handler.SetTimestamp(time_us);
}

void MorseStation::receiveSymbol(int code)
{
    const int symbol = code & MORSE_SYMBOL_MASK;
    if (m_codeFileName && (symbol == eSYMBOL_DOT || symbol == eSYMBOL_DASH))
        m_ledger.symbolReceived();
    // A value announces what is new to it; a code that repeats is new all the same.
    if (m_symbol->GetValue() == code)
        m_symbol->HasChanged(eCHANGE_CONTENT, nullptr);
    else
        m_symbol->SetValue(code, nullptr);
}

void MorseStation::saveDocument()
{
    m_saveDocument->HasChanged(eCHANGE_FORCED, nullptr);
    m_ledger.documentsSaved();
}

bool MorseStation::isTextRightToLeft()
{
    return m_rightToLeft->GetValue();
}

void MorseStation::Update(Observable* source, TChangeCode code)
{
    if (code != eCHANGE_CONTENT)
        return;
    if (source == m_text) {
        m_listener(m_text->GetValue());
    } else if (source == m_codeFileName) {
        m_ledger.codeFileBegun(m_codeFileName->GetValue());
    } else if (source == m_documentName) {
        m_ledger.documentBegun(m_documentName->GetValue());
    } else if (source == m_settingsRequest && m_settingsRequest->GetValue()) {
        m_receiverSettings->SetValue(
            m_settings.describeReceiver ? m_settings.describeReceiver() : QString(), nullptr);
        m_settingsRequest->SetValue(false, nullptr);
    }
}

} // namespace morsehost
