// SPDX-License-Identifier: MIT
#include "session/morsehandler.h"

#include "host/datetime.h"
#include "host/ipcidentifier.h"
#include "host/trace.h"
#include "host/valueroles.h"
#include "morse/digit.h"
#include "morse/morsetranslator.h"
#include "morse/symbolcodes.h"
#include "session/sessionfile.h"
#include "session/tavikresultdatahandler.h"
#include "tables/tableformat.h"

#include <QDateTime>
#include <QFile>
#include <QScopeGuard>
#include <QTextStream>

#include <limits>
#include <utility>

namespace {

constexpr unsigned long long NO_TIMESTAMP = std::numeric_limits<unsigned long long>::max();

// The symbol buffer slides before it reaches this length.
constexpr int SYMBOL_BUFFER_LIMIT = 30000;

const QLatin1String CHARACTER_GAP("c");
const QLatin1String LINE_END("\n");
const QLatin1String DASH("-");
const QLatin1String CUT_ZERO("0");

const QLatin1String SOURCE_FILE("tools\\morsehandler\\morsehandler");

QString withTrailingBackslash(const QString& directory)
{
    const QLatin1Char backslash('\\');
    return directory.endsWith(backslash) ? directory : directory + backslash;
}

} // namespace

struct MorseHandler::Own
{
    explicit Own(MorseHandler& handler);

    // Paths of the values that are not observed.
    QString alphabetPath;
    QString textDirectionPath;
    QString textFileNamePath;
    QString codeFileNamePath;
    QString xmlFileNamePath;
    QString settingsRequestPath;

    UnfinishedFiles unfinishedFiles;
    SessionFile textFile;
    SessionFile codeFile;

    // Codes may arrive while one is processed.
    bool isProcessing = false;
    int arrivals = 0;
};

MorseHandler::Own::Own(MorseHandler& handler)
    : textFile({handler.m_strTextFileName, handler.m_pTextFile, handler.m_pTextStream,
                handler.m_nTextColumn},
               "UTF-8", unfinishedFiles)
    , codeFile({handler.m_strCodeFileName, handler.m_pCodeFile, handler.m_pCodeStream,
                handler.m_nCodeColumn},
               nullptr, unfinishedFiles)
{
}

// A row for each role whose value is observed.
auto MorseHandler::observedValues()
{
    return ValueRoles(this, [this](auto visit) {
        visit(m_pSymbol);
        visit(m_pMorseAvailable);
        visit(m_pMorseText);
        visit(m_pMorseSaveToFile);
        visit(m_pMorseXmlSaveToFile);
        visit(m_pXmlTunerDemodulatorSettings);
        visit(m_pMorseAlphabetDirectory);
        visit(m_pFrequency);
        visit(m_pModtype);
        visit(m_pDecResult);
    });
}

MorseHandler::MorseHandler()
    : m_pTranslator(new MorseTranslator)
    , m_strSaveDirectory(QStringLiteral("C:\\Temp"))
    , m_pDateTime(new Vanth::DateTime)
    , m_nPreviousTimestamp(NO_TIMESTAMP)
    , m_nCurrentTimestamp(NO_TIMESTAMP)
    , m_pResultDataHandler(new TavikResultDataHandler(this, QStringLiteral("TAVIK")))
    , m_own(std::make_unique<Own>(*this))
{
    m_pDateTime->setFormatString(QStringLiteral("hh:mm:ss.zzz"));
    m_pDateTime->setOffsetFromUTC(Vanth::DateTime::Local_TimeZone);
    // The formatter would take the blanks out of the signatures.
    // clang-format off
    connect(m_pResultDataHandler, SIGNAL(SetFilename(const QString &)),
            this, SLOT(SetXmlFileName(const QString &)));
    // clang-format on
    connect(m_pResultDataHandler, SIGNAL(GetXmlTunerDemodulatorSettings()), this,
            SLOT(GetXmlTunerDemodulatorSettings()));
}

MorseHandler::~MorseHandler()
{
    try {
        CloseAllFiles();
        observedValues().LeaveAll();
        m_own->unfinishedFiles.Finish();
    } catch (...) {
        // Texts of traces are interface: this one names the translator.
        traceMessage(QStringLiteral("Exception caught in MorseTranslator::~MorseHandler"),
                     SOURCE_FILE, 149);
    }
    delete m_pTranslator;
    delete m_pDateTime;
    delete m_pResultDataHandler;
}

// Taking, leaving and finding values.

template <typename Kind>
void MorseHandler::observe(Kind*& role, const QString& path)
{
    Kind* const previous = std::exchange(role, nullptr);
    // A value may serve in two roles; it is left when the last one ends.
    if (previous && !observedValues().Hold(previous))
        previous->DeleteObserver(this);
    role = findLivingValue<Kind>(path);
    if (role)
        role->AddObserver(this);
}

// These are registered twice, as the contract with the host says; a change is notified once all the
// same.
template <typename Kind>
void MorseHandler::observeTwice(Kind*& role, const QString& path)
{
    observe(role, path);
    if (role)
        role->AddObserver(this);
}

void MorseHandler::SetSymbol_ValuePath(const QString& path)
{
    observe(m_pSymbol, path);
}

void MorseHandler::SetMorseAvailable_ValuePath(const QString& path)
{
    observe(m_pMorseAvailable, path);
    m_bMorseAvailable = m_pMorseAvailable && m_pMorseAvailable->GetValue();
}

void MorseHandler::SetMorseText_ValuePath(const QString& path)
{
    observe(m_pMorseText, path);
}

void MorseHandler::SetMorseAlphabet_ValuePath(const QString& path)
{
    m_own->alphabetPath = path;
    lookUpAgain(m_pMorseAlphabet, m_own->alphabetPath);
}

void MorseHandler::SetMorseSaveToFile_ValuePath(const QString& path)
{
    observe(m_pMorseSaveToFile, path);
    if (m_pMorseSaveToFile)
        replay(m_pMorseSaveToFile);
}

void MorseHandler::SetMorseXmlSaveToFile_ValuePath(const QString& path)
{
    observe(m_pMorseXmlSaveToFile, path);
    if (m_pMorseXmlSaveToFile)
        replay(m_pMorseXmlSaveToFile);
    if (m_pMorseXmlSaveToFile)
        m_pMorseXmlSaveToFile->SetValue(true, nullptr);
}

void MorseHandler::SetMorseAlphabet_DirectoryPath(const QString& path)
{
    observe(m_pMorseAlphabetDirectory, path);
    if (m_pMorseAlphabetDirectory)
        m_strAlphabetDirectory = withTrailingBackslash(m_pMorseAlphabetDirectory->GetValue());
}

void MorseHandler::SetTextDirectionRTL_ValuePath(const QString& path)
{
    m_own->textDirectionPath = path;
    lookUpAgain(m_pTextDirectionRTL, m_own->textDirectionPath);
}

void MorseHandler::SetFrequency_ValuePath(const QString& path)
{
    observeTwice(m_pFrequency, path);
}

void MorseHandler::SetModtype_ValuePath(const QString& path)
{
    observeTwice(m_pModtype, path);
}

void MorseHandler::SetDecResult_ValuePath(const QString& path)
{
    observeTwice(m_pDecResult, path);
}

void MorseHandler::SetGenXmlTunerDemodulatorSettingsPath(const QString& path)
{
    m_own->settingsRequestPath = path;
    lookUpAgain(m_pGenXmlTunerDemodulatorSettings, m_own->settingsRequestPath);
}

void MorseHandler::SetXmlTunerDemodulatorSettings(const QString& path)
{
    observe(m_pXmlTunerDemodulatorSettings, path);
}

void MorseHandler::SetSaveDirectoryPath(const QString& directory, const QString& textFileNamePath,
                                        const QString& codeFileNamePath,
                                        const QString& xmlFileNamePath)
{
    m_strSaveDirectory = directory;
    m_own->textFileNamePath = textFileNamePath;
    m_own->codeFileNamePath = codeFileNamePath;
    m_own->xmlFileNamePath = xmlFileNamePath;
    lookUpAgain(m_pTextFileName, m_own->textFileNamePath);
    lookUpAgain(m_pCodeFileName, m_own->codeFileNamePath);
    lookUpAgain(m_pXmlFileName, m_own->xmlFileNamePath);
    m_pResultDataHandler->SetWorkDir(directory);
}

void MorseHandler::SetIpcIdentifier(const QString& id)
{
    m_strIpcIdentifier = ipcIdentifier(id);
}

// Notifications.

void MorseHandler::Update(Observable* source, TChangeCode code)
{
    switch (code) {
    case eCHANGE_DELETED:
        observedValues().Forget(source);
        // Not observed, but a host may announce these to everybody.
        ValueRoles(this, [this](auto visit) {
            visit(m_pTextFileName);
            visit(m_pXmlFileName);
            visit(m_pCodeFileName);
        }).Forget(source);
        break;
    case eCHANGE_CONTENT:
        contentChanged(source);
        break;
    case eCHANGE_FORCED:
        evaluationForced(source);
        break;
    default:
        break;
    }
}

// The notifications of a value that has just been attached, to this handler alone.
void MorseHandler::replay(ValueBase* value)
{
    for (const TChangeCode code : {eCHANGE_DELETED, eCHANGE_STATE, eCHANGE_CONTENT})
        Update(value, code);
}

void MorseHandler::contentChanged(const Observable* source)
{
    if (isSame(source, m_pMorseAvailable)) {
        m_bMorseAvailable = m_pMorseAvailable->GetValue();
    } else if (isSame(source, m_pSymbol)) {
        AddSymbol(m_pSymbol->GetValue());
    } else if (isSame(source, m_pMorseSaveToFile)) {
        m_bSaveToFile = m_pMorseSaveToFile->GetValue();
        if (!m_bSaveToFile)
            CloseAllFiles();
    } else if (isSame(source, m_pFrequency) || isSame(source, m_pModtype)) {
        m_pResultDataHandler->SetFrequency(m_pFrequency ? m_pFrequency->GetValue() : 0.0);
        restartFilesIfSaving();
    } else if (isSame(source, m_pDecResult)) {
        restartFilesIfSaving();
    } else if (isSame(source, m_pMorseAlphabetDirectory)) {
        m_strAlphabetDirectory = withTrailingBackslash(m_pMorseAlphabetDirectory->GetValue());
    } else if (isSame(source, m_pXmlTunerDemodulatorSettings)) {
        ProcessUpdateTunerDemodulatorSettings();
    }
}

void MorseHandler::evaluationForced(const Observable* source)
{
    if (isSame(source, m_pMorseSaveToFile)) {
        restartFilesIfSaving();
    } else if (isSame(source, m_pMorseXmlSaveToFile)) {
        m_pResultDataHandler->SaveFile();
    } else if (isSame(source, m_pSymbol)) {
        traceMessage(QStringLiteral("new line in morsehandler receive"), SOURCE_FILE, 526);
    }
}

// Sessions.

bool MorseHandler::StartNewMorseSession()
{
    const bool ok = ChangeAlphabet();
    m_bMorseAvailable = m_pMorseAvailable && m_pMorseAvailable->GetValue();
    m_bSessionActive = true;
    return ok;
}

void MorseHandler::EndMorseSession()
{
    m_bMorseAvailable = false;
    m_bSessionActive = false;
    m_strSymbolBuffer.clear();
    m_strCurrentSymbols.clear();
    m_strErrorMarks.clear();
    m_bDigitMode = false;
    CloseAllFiles();
}

bool MorseHandler::ChangeAlphabet()
{
    const bool ok = m_pTranslator->SetMorseAlphabet(BuildAlphabetPath());
    if (FlagValue* const direction = lookUpAgain(m_pTextDirectionRTL, m_own->textDirectionPath))
        direction->SetValue(m_pTranslator->isTextDirectionRTL(), nullptr);
    return ok;
}

QString MorseHandler::BuildAlphabetPath()
{
    ValueSelection* const alphabet = GetMorseAlphabet();
    const QString name = alphabet ? alphabet->GetStringValue() : QString();
    // A name is no path: it does not lead out of the directory.
    if (!alphabet || name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')))
        return {};
    return m_strAlphabetDirectory + name + ALPHABET_ENDING;
}

ValueSelection* MorseHandler::GetMorseAlphabet()
{
    return lookUpAgain(m_pMorseAlphabet, m_own->alphabetPath);
}

void MorseHandler::SetMorseAvailable(bool available)
{
    m_bMorseAvailable = available;
    m_bSessionActive = available;
}

void MorseHandler::SetBaudrate(double baudrate)
{
    m_pResultDataHandler->SetBaudrate(baudrate);
}

void MorseHandler::SetFrequencyOffset(double offset_Hz)
{
    m_pResultDataHandler->SetFrequencyOffset(offset_Hz);
}

void MorseHandler::SetTimestamp(const unsigned long long& timestamp)
{
    m_nPreviousTimestamp = m_nCurrentTimestamp;
    m_nCurrentTimestamp = timestamp;
    m_pResultDataHandler->SetTimestamp(timestamp);
}

// Symbols.

void MorseHandler::AddSymbol(int code)
{
    m_symbolList.push_back(code);
    ProcessSymbolList();
}

// One queued code per arrival. A code that arrives while another is processed waits its turn, so
// that an observer of the text may write symbols.
void MorseHandler::ProcessSymbolList()
{
    ++m_own->arrivals;
    if (std::exchange(m_own->isProcessing, true))
        return;
    // An observer that throws does not stop the handler for good.
    const auto done = qScopeGuard([this] { m_own->isProcessing = false; });
    while (m_own->arrivals > 0) {
        --m_own->arrivals;
        processOldestSymbol();
    }
}

void MorseHandler::processOldestSymbol()
{
    if (m_symbolList.empty() || !m_bMorseAvailable || !m_bSessionActive)
        return;
    const auto done = qScopeGuard([this] { m_symbolList.pop_front(); });
    const int code = m_symbolList.front() & MORSE_SYMBOL_MASK;
    const QString s = m_pTranslator->DecodeSymbol(code);
    switch (code) {
    case eSYMBOL_NEW_CHAR:
        ProcessNewChar(s);
        break;
    case eSYMBOL_NEW_WORD:
        ProcessNewWord(s);
        break;
    case eSYMBOL_NEW_LINE:
        if (!m_strCurrentSymbols.isEmpty())
            ProcessNewChar(CHARACTER_GAP);
        ProcessNewLine(s);
        m_pResultDataHandler->AppendText(LINE_END);
        break;
    case eSYMBOL_DOT_TOO_SHORT:
    case eSYMBOL_DASH_TOO_LONG:
    case eSYMBOL_PAUSE_TOO_SHORT:
        m_strErrorMarks += s;
        break;
    default: // an element; of an unknown code, nothing
        AddToSymbolBuffer(s);
        m_strCurrentSymbols += s;
        SaveCodeAndText(s, QString());
        break;
    }
}

void MorseHandler::ProcessNewChar(const QString& s)
{
    AddToSymbolBuffer(s);
    const QString symbols = std::exchange(m_strCurrentSymbols, QString());
    QString text = m_pTranslator->DecodeMorse(symbols);
    if (m_bDigitMode && symbols == DASH)
        text = CUT_ZERO;
    m_bDigitMode = isDigit(text);
    if (!text.isEmpty())
        m_pResultDataHandler->AppendText(text);
    publishText(text);
    const QString marks = std::exchange(m_strErrorMarks, QString());
    SaveCodeAndText(marks + QLatin1Char(' '), text + marks);
}

void MorseHandler::ProcessNewWord(const QString& s)
{
    AddToSymbolBuffer(s);
    const QString symbols = std::exchange(m_strCurrentSymbols, QString());
    const QString text = m_pTranslator->DecodeMorse(symbols) + QLatin1Char(' ');
    m_pResultDataHandler->AppendText(text);
    publishText(text);
    const QString marks = std::exchange(m_strErrorMarks, QString());
    SaveCodeAndText(marks, text + marks);
}

void MorseHandler::ProcessNewLine(const QString& s)
{
    if (m_nPreviousTimestamp == NO_TIMESTAMP || m_nCurrentTimestamp == NO_TIMESTAMP)
        return;
    AddToSymbolBuffer(s);
    m_strCurrentSymbols.clear();
    m_bDigitMode = false;
    if (m_pMorseText)
        m_pMorseText->SetValue(s, nullptr);
    m_pDateTime->setTime_ts(m_nPreviousTimestamp);
    const QString stop =
        QStringLiteral("[Stop Time:  ") + m_pDateTime->toString() + QLatin1Char(']');
    m_pDateTime->setTime_ts(m_nCurrentTimestamp);
    const QString start =
        QStringLiteral("[Start Time:  ") + m_pDateTime->toString() + QLatin1Char(']');
    const QString block = LINE_END + stop + LINE_END + start + LINE_END;
    const QString marks = std::exchange(m_strErrorMarks, QString());
    SaveCodeAndText(marks, block);
}

void MorseHandler::publishText(const QString& text)
{
    if (!m_pMorseText)
        return;
    const bool same = text == m_pMorseText->GetValue();
    m_pMorseText->SetValue(text, nullptr);
    // Writing an equal value notifies nobody, yet a repeated character is new. An observer may have
    // deleted the value meanwhile.
    if (same && m_pMorseText)
        m_pMorseText->HasChanged(eCHANGE_CONTENT, this);
}

void MorseHandler::AddToSymbolBuffer(const QString& s)
{
    if (m_strSymbolBuffer.size() + s.size() >= SYMBOL_BUFFER_LIMIT)
        m_strSymbolBuffer.remove(0, s.size());
    m_strSymbolBuffer += s;
}

void MorseHandler::ClearSymbolBuffer()
{
    m_strSymbolBuffer.clear();
}

const QString& MorseHandler::GetCurrentMorseSymbolString()
{
    return m_strSymbolBuffer;
}

const QString& MorseHandler::TranslateText(bool partOnly, bool fromEnd, int count)
{
    if (partOnly && count >= 1)
        return m_pTranslator->Translate(GetPartOfSymbolString(fromEnd, count));
    return m_pTranslator->Translate(m_strSymbolBuffer);
}

// A unit is a completed character or a word gap. The part begins with the separator that completes
// the count; the unfinished character at the end of the buffer is left out.
QString MorseHandler::GetPartOfSymbolString(bool fromEnd, int count)
{
    if (!fromEnd)
        return {};
    int start = m_strSymbolBuffer.size();
    int end = -1; // index of the last separator
    int units = 0;
    bool inCharacter = false;
    while (start > 0 && units < count) {
        --start;
        const QChar c = m_strSymbolBuffer.at(start);
        const bool isWordGap = c == QLatin1Char('w');
        if (isWordGap || c == QLatin1Char('c')) {
            if (end < 0)
                end = start;
            units += (isWordGap ? 1 : 0) + (inCharacter ? 1 : 0);
            inCharacter = false;
        } else if (end >= 0) {
            inCharacter = true;
        }
    }
    return end < 0 ? QString() : m_strSymbolBuffer.mid(start, end - start + 1);
}

// The result document.

void MorseHandler::SetXmlFileName(const QString& strXmlFileName)
{
    if (TextValue* const name = lookUpAgain(m_pXmlFileName, m_own->xmlFileNamePath))
        name->SetValue(strXmlFileName, nullptr);
}

void MorseHandler::GetXmlTunerDemodulatorSettings()
{
    FlagValue* const request =
        lookUpAgain(m_pGenXmlTunerDemodulatorSettings, m_own->settingsRequestPath);
    if (!request)
        return;
    if (request->GetValue())
        request->HasChanged(eCHANGE_CONTENT, nullptr);
    else
        request->SetValue(true, nullptr);
}

void MorseHandler::ProcessUpdateTunerDemodulatorSettings()
{
    m_pResultDataHandler->SetTunerDemodulatorSettings(m_pXmlTunerDemodulatorSettings->GetValue());
}

// Session files.

// The text first. An observer of the text or of a file name may switch saving off or end the
// session, so each part asks again, and the arguments are none of the fields.
void MorseHandler::SaveCodeAndText(const QString& code, const QString& text)
{
    if (!text.isEmpty() && m_bSaveToFile && m_bSessionActive) {
        PrepareSavingMorseText();
        OpenMorseText();
        m_own->textFile.Write(text);
    }
    if (!code.isEmpty() && m_bSaveToFile && m_bSessionActive) {
        PrepareSavingMorseCode();
        OpenMorseCode();
        m_own->codeFile.Write(code);
    }
}

void MorseHandler::CloseAllFiles()
{
    m_own->textFile.Close();
    m_own->codeFile.Close();
}

void MorseHandler::PrepareSavingMorseCode()
{
    if (CheckIfNewCodeFile())
        m_own->codeFile.Begin();
}

void MorseHandler::PrepareSavingMorseText()
{
    if (CheckIfNewTextFile())
        m_own->textFile.Begin();
}

bool MorseHandler::CheckIfNewCodeFile()
{
    if (!m_own->codeFile.NeedsNewName())
        return false;
    CreateCodeFilename();
    return true;
}

bool MorseHandler::CheckIfNewTextFile()
{
    if (!m_own->textFile.NeedsNewName())
        return false;
    CreateTextFilename();
    return true;
}

void MorseHandler::CreateCodeFilename()
{
    m_strCodeFileName = newFileName(QString(), "MorseHandler::CreateCodeFilename");
}

void MorseHandler::CreateTextFilename()
{
    ValueSelection* const alphabet = GetMorseAlphabet();
    const QString alphabetName = alphabet ? alphabet->GetStringValue() : QStringLiteral("Default");
    m_strTextFileName = newFileName(QStringLiteral("__") + sessionfile::namePart(alphabetName),
                                    "MorseHandler::CreateTextFilename");
}

QString MorseHandler::newFileName(const QString& nameEnd, const char* operation)
{
    const QString stamp = Vanth::DateTime(QDateTime::currentDateTimeUtc())
                              .toString(QStringLiteral("yyyyMMdd_hhmmss"));
    const QString frequency =
        m_pFrequency ? sessionfile::frequencyText(m_pFrequency->GetValue()) : QString();
    const sessionfile::Name name =
        sessionfile::freeName(m_strSaveDirectory, stamp,
                              QStringLiteral("_MO__") + frequency + nameEnd, sessionfile::isTaken);
    sessionfile::traceWrapped(name, operation);
    return name.path;
}

void MorseHandler::OpenMorseCode()
{
    if (m_pCodeFile || !m_own->codeFile.Open([this] { CreateCodeFilename(); }))
        return;
    if (TextValue* const name = lookUpAgain(m_pCodeFileName, m_own->codeFileNamePath))
        name->SetValue(QString(m_strCodeFileName), nullptr);
}

void MorseHandler::OpenMorseText()
{
    if (m_pTextFile || !m_own->textFile.Open([this] { CreateTextFilename(); }))
        return;
    if (TextValue* const name = lookUpAgain(m_pTextFileName, m_own->textFileNamePath))
        name->SetValue(QString(m_strTextFileName), nullptr);
}

QString MorseHandler::CreateTimeString()
{
    return Vanth::DateTime(QDateTime::currentDateTimeUtc())
        .toString()
        .replace(QLatin1Char(':'), QLatin1Char('_'))
        .replace(QLatin1Char(' '), QStringLiteral("__"));
}

// A new frequency, modulation or decoder result begins new files.
void MorseHandler::restartFilesIfSaving()
{
    if (!m_bSaveToFile)
        return;
    CloseAllFiles();
    PrepareSavingMorseCode();
    PrepareSavingMorseText();
}
