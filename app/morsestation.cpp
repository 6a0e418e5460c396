// SPDX-License-Identifier: MIT
#include "app/morsestation.h"

#include "host/standin/resultpolicy.h"

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
    m_handler.SetMorseSaveToFile_ValuePath(path("SaveToFile"));
    m_handler.SetMorseXmlSaveToFile_ValuePath(path("SaveDocument"));
    if (!settings.saveDirectory.isEmpty()) {
        for (const char* name : {"TextFileName", "CodeFileName", "DocumentName"})
            m_tree.Add<TextValue>(path(name));
        m_handler.SetSaveDirectoryPath(settings.saveDirectory, path("TextFileName"),
                                       path("CodeFileName"), path("DocumentName"));
        m_saveToFile->SetValue(true, nullptr);
    }
}

MorseStation::~MorseStation()
{
    m_text->DeleteObserver(this);
    m_settingsRequest->DeleteObserver(this);
}

bool MorseStation::start()
{
    return m_handler.StartNewMorseSession();
}

void MorseStation::stop()
{
    m_handler.EndMorseSession();
}

void MorseStation::receiveTime(unsigned long long time_us)
{
    m_handler.SetTimestamp(time_us);
}

void MorseStation::receiveSymbol(int code)
{
    // A value announces what is new to it; a code that repeats is new all the same.
    if (m_symbol->GetValue() == code)
        m_symbol->HasChanged(eCHANGE_CONTENT, nullptr);
    else
        m_symbol->SetValue(code, nullptr);
}

void MorseStation::saveDocument()
{
    m_saveDocument->HasChanged(eCHANGE_FORCED, nullptr);
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
    } else if (source == m_settingsRequest && m_settingsRequest->GetValue()) {
        m_receiverSettings->SetValue(
            m_settings.describeReceiver ? m_settings.describeReceiver() : QString(), nullptr);
        m_settingsRequest->SetValue(false, nullptr);
    }
}

} // namespace morsehost
