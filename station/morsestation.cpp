// SPDX-License-Identifier: MIT
#include "station/morsestation.h"

#include "host/standin/resultpolicy.h"
#include "morse/digit.h"
#include "morse/symbolcodes.h"
#include "station/io/folder.h"
#include "station/receiversettings.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace morsehost {

namespace {

// A transmission may last for months, and noise may key dots without a pause.
constexpr int MAX_TEXT = 1 << 20;
constexpr int MAX_UNKNOWN_CODES = 1 << 14;
constexpr int MAX_ELEMENTS = 256;

TavikResultDataXml::ResultPolicy documentPolicy(std::optional<SaveLedger>& ledger)
{
    if (!ledger)
        return {false};
    return {true, true, [&ledger](const TavikResultDataXml::ResultBalance& balance) {
                ledger->documents(balance.waiting, balance.lost);
            }};
}

} // namespace

MorseStation::MorseStation(HostTree& tree, const StationSettings& settings,
                           StationListener& listener)
    : m_settings(settings)
    , m_listener(listener)
    , m_values(tree, settings.place)
    , m_symbol(m_values.add<IntegerValue>("Symbol"))
    , m_available(m_values.add<FlagValue>("Available"))
    , m_text(m_values.add<TextValue>("Text"))
    , m_alphabetDirectory(m_values.add<TextValue>("AlphabetDirectory"))
    , m_saveToFile(m_values.add<FlagValue>("SaveToFile"))
    , m_saveDocument(m_values.add<FlagValue>("SaveDocument"))
    , m_rightToLeft(m_values.add<FlagValue>("RightToLeft"))
    , m_settingsRequest(m_values.add<FlagValue>("SettingsRequest"))
    , m_receiverSettings(m_values.add<TextValue>("ReceiverSettings"))
{
    m_transmission.receiver = settings.receiver;
    m_transmission.source = settings.source;
    m_transmission.decoder = QStringLiteral("Morse");
    m_transmission.map = settings.alphabet.name;
    m_transmission.frequency_Hz = settings.frequency_Hz;
    m_available->SetValue(true, nullptr);
    m_text->AddObserver(this);
    m_settingsRequest->AddObserver(this);

    if (!settings.saveDirectory.isEmpty())
        m_ledger.emplace(settings.saveDirectory,
                         [this](const QString& message) { m_listener.saving(message); });
    // The handler makes its document in its constructor, which takes no argument: so what holds for
    // the documents of this station is in force meanwhile.
    {
        const TavikResultDataXml::ResultPolicyScope scope(documentPolicy(m_ledger));
        m_handler.emplace();
    }
    m_handler->SetSymbol_ValuePath(m_values.path("Symbol"));
    m_handler->SetMorseAvailable_ValuePath(m_values.path("Available"));
    m_handler->SetMorseText_ValuePath(m_values.path("Text"));
    m_handler->SetTextDirectionRTL_ValuePath(m_values.path("RightToLeft"));
    m_handler->SetGenXmlTunerDemodulatorSettingsPath(m_values.path("SettingsRequest"));
    m_handler->SetXmlTunerDemodulatorSettings(m_values.path("ReceiverSettings"));
    wireAlphabet();
    wireFiles();
}

void MorseStation::wireAlphabet()
{
    m_alphabetDirectory->SetValue(m_settings.alphabet.directory, nullptr);
    m_handler->SetMorseAlphabet_DirectoryPath(m_values.path("AlphabetDirectory"));
    // Without a selection the handler takes its built-in alphabet.
    if (m_settings.alphabet.name.isEmpty())
        return;
    auto* const alphabet = m_values.add<ValueSelection>("Alphabet");
    alphabet->AddItem(m_settings.alphabet.name, 0, 0, nullptr);
    alphabet->Select(m_settings.alphabet.name, nullptr);
    m_handler->SetMorseAlphabet_ValuePath(m_values.path("Alphabet"));
}

void MorseStation::wireFiles()
{
    if (m_settings.frequency_Hz) {
        m_values.add<RealValue>("Frequency")->SetValue(*m_settings.frequency_Hz, nullptr);
        m_handler->SetFrequency_ValuePath(m_values.path("Frequency"));
    }
    // One receiver, one way of keying: these two never change here.
    for (const char* name : {"Modulation", "DecoderResult"}) {
        auto* const selection = m_values.add<ValueSelection>(name);
        selection->AddItem(QStringLiteral("CW"), 0, 0, nullptr);
        selection->Select(QStringLiteral("CW"), nullptr);
    }
    m_handler->SetModtype_ValuePath(m_values.path("Modulation"));
    m_handler->SetDecResult_ValuePath(m_values.path("DecoderResult"));
    m_handler->SetMorseSaveToFile_ValuePath(m_values.path("SaveToFile"));
    m_handler->SetMorseXmlSaveToFile_ValuePath(m_values.path("SaveDocument"));
    if (!m_ledger)
        return;
    m_textFileName = m_values.add<TextValue>("TextFileName");
    m_codeFileName = m_values.add<TextValue>("CodeFileName");
    m_documentName = m_values.add<TextValue>("DocumentName");
    m_textFileName->AddObserver(this);
    m_codeFileName->AddObserver(this);
    m_folder = m_settings.saveDirectory;
    setSaveDirectory();
    m_saveToFile->SetValue(true, nullptr);
}

void MorseStation::setSaveDirectory()
{
    m_handler->SetSaveDirectoryPath(m_folder, m_values.path("TextFileName"),
                                    m_values.path("CodeFileName"), m_values.path("DocumentName"));
}

// A transmission stays in the folder of the day on which it began, all of it. True when that is
// another one than before: files that are open stay where they are until new ones are begun.
bool MorseStation::changeDay(qint64 time_us)
{
    const QString folder = folderOfDay(m_settings.saveDirectory, time_us);
    if (folder == m_settings.saveDirectory)
        return false;
    // Somebody may have removed it meanwhile; where it cannot be made, opening files fails.
    QDir().mkpath(folder);
    if (folder == m_folder)
        return false;
    m_folder = folder;
    setSaveDirectory();
    return true;
}

MorseStation::~MorseStation()
{
    m_handler.reset();
    for (ValueBase* const value :
         {static_cast<ValueBase*>(m_text), static_cast<ValueBase*>(m_settingsRequest),
          static_cast<ValueBase*>(m_codeFileName), static_cast<ValueBase*>(m_textFileName)}) {
        if (value)
            value->DeleteObserver(this);
    }
}

bool MorseStation::start()
{
    return m_handler->StartNewMorseSession() || m_settings.alphabet.name.isEmpty();
}

void MorseStation::transmissionStarted(std::int64_t time_us)
{
    if (!m_handler)
        return;
    const qint64 start_us = static_cast<qint64>(m_settings.start_us) + time_us;
    const bool isFolderNew = m_ledger && changeDay(start_us);
    receiveTime(time_us);
    // The line that ends is closed here, where the time of the next one is known.
    if (m_transmission.number > 0)
        receiveCode(eSYMBOL_NEW_LINE);
    if (isFolderNew)
        m_saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
    ++m_transmission.number;
    m_transmission.start_us = start_us;
    m_transmission.tone_Hz.reset();
    m_transmission.speed_wpm.reset();
    m_transmission.snr_dB.reset();
    m_transmission.text.clear();
    m_transmission.unknownCodes.clear();
    m_isOpen = true;
}

void MorseStation::symbol(int code, std::int64_t time_us)
{
    if (!m_handler)
        return;
    // What is decoded now, or was keyed badly, carries the time of its own signal.
    if ((code & MORSE_SYMBOL_MASK) >= eSYMBOL_NEW_CHAR && m_time != time_us)
        receiveTime(time_us);
    receiveCode(code);
}

void MorseStation::transmissionStopped(std::int64_t time_us,
                                       const demodulator::SignalReport& report)
{
    m_transmission.tone_Hz = report.tone_Hz;
    m_transmission.speed_wpm = report.speed_wpm;
    m_transmission.snr_dB = report.snr_dB;
    endTransmission(time_us);
}

void MorseStation::endTransmission(std::int64_t time_us)
{
    if (!m_handler || !m_isOpen)
        return;
    m_isOpen = false;
    receiveTime(time_us);
    m_transmission.stop_us = static_cast<qint64>(m_settings.start_us) + time_us;
    describeReceiver();
    m_saveDocument->HasChanged(eCHANGE_FORCED, nullptr);
    m_transmission.text = m_transmission.text.trimmed();
    m_transmission.files = savedFiles();
    m_listener.transmission(m_transmission);
}

SaveLosses MorseStation::stop()
{
    if (!m_handler)
        return {};
    endTransmission(m_time.value_or(0));
    m_handler->EndMorseSession();
    m_handler.reset(); // tries the disk a last time
    return m_ledger ? m_ledger->losses() : SaveLosses();
}

void MorseStation::receiveTime(std::int64_t time_us)
{
    m_time = time_us;
    const unsigned long long stamp_us =
        m_settings.start_us + static_cast<unsigned long long>(time_us);
    m_listener.time(stamp_us);
    m_handler->SetTimestamp(stamp_us);
}

void MorseStation::receiveCode(int code)
{
    const int symbol = code & MORSE_SYMBOL_MASK;
    const bool isElement = symbol == eSYMBOL_DOT || symbol == eSYMBOL_DASH;
    if (isElement && m_elements.size() < MAX_ELEMENTS)
        m_elements += QLatin1Char(symbol == eSYMBOL_DOT ? '.' : '-');
    m_textOfCode.clear();
    m_listener.symbol(code);
    writeSymbol(code);
    // The handler takes a dash alone for a zero while the last character is a figure: an empty one
    // is none.
    if (symbol == eSYMBOL_NEW_CHAR && !m_settings.alphabet.cutNumbers && isDigit(m_textOfCode))
        writeSymbol(eSYMBOL_NEW_CHAR);
    if (symbol >= eSYMBOL_NEW_CHAR && symbol <= eSYMBOL_NEW_LINE) {
        const QString elements = std::exchange(m_elements, QString());
        if (!elements.isEmpty() && m_textOfCode.trimmed().isEmpty()) {
            if (m_transmission.unknownCodes.size() < MAX_UNKNOWN_CODES)
                m_transmission.unknownCodes += elements;
            m_listener.unknownCode(elements);
        }
    }
    if (m_ledger)
        watchFiles(isElement);
}

void MorseStation::writeSymbol(int code)
{
    // A value announces what is new to it; a code that repeats is new all the same.
    if (m_symbol->GetValue() == code)
        m_symbol->HasChanged(eCHANGE_CONTENT, nullptr);
    else
        m_symbol->SetValue(code, nullptr);
}

void MorseStation::heard(const QString& text)
{
    m_textOfCode += text;
    if (m_isOpen && m_transmission.text.size() < MAX_TEXT)
        m_transmission.text += text;
    m_listener.text(text);
}

// Those that are there: a full disk may have kept any of them away.
QStringList MorseStation::savedFiles()
{
    QStringList files;
    for (TextValue* const name : {m_textFileName, m_codeFileName, m_documentName}) {
        if (name && QFileInfo(name->GetValue()).isFile())
            files += name->GetValue();
    }
    return files;
}

void MorseStation::describeReceiver()
{
    if (m_settings.demodulator)
        m_receiverSettings->SetValue(receiverSettings(*m_settings.demodulator, m_transmission),
                                     nullptr);
}

void MorseStation::watchFiles(bool isElement)
{
    bool areThere = true;
    if (isElement)
        areThere = m_ledger->isWritten(SessionFileKind::Codes, 1, 1);
    if (!m_textOfCode.isEmpty())
        areThere = m_ledger->isWritten(SessionFileKind::Text, m_textOfCode.toUtf8().size(),
                                       m_textOfCode.size()) &&
                   areThere;
    if (areThere)
        return;
    // Into a file that somebody has deleted nothing more is to go. The new ones may get the names
    // of the old ones, which are to be announced all the same.
    m_codeFileName->SetValue(QString(), this);
    m_textFileName->SetValue(QString(), this);
    m_saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
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
        heard(m_text->GetValue());
    } else if (source == m_codeFileName) {
        m_ledger->begun(SessionFileKind::Codes, m_codeFileName->GetValue());
    } else if (source == m_textFileName) {
        m_ledger->begun(SessionFileKind::Text, m_textFileName->GetValue());
    } else if (source == m_settingsRequest && m_settingsRequest->GetValue()) {
        describeReceiver();
        m_settingsRequest->SetValue(false, nullptr);
    }
}

} // namespace morsehost
