// SPDX-License-Identifier: MIT
#include "charmap/mappingdirectory.h"

#include "charmap/decodercharsets.h"
#include "host/datetime.h"
#include "host/ipcidentifier.h"
#include "host/ivtclient.h"
#include "host/trace.h"
#include "host/valuelookup.h"
#include "host/valueroles.h"
#include "tables/charactertable.h"
#include "tables/displayname.h"
#include "tables/hostpath.h"
#include "tables/tableformat.h"

#include <QDir>
#include <QVector>

#include <algorithm>
#include <utility>

namespace {

// Bounds of the history, in characters.
constexpr int MIN_HISTORY = 100;
constexpr int MAX_HISTORY = 10000;

/// The text with question marks in place of all characters outside Latin-1.
QString latin1Of(const QString& text)
{
    const bool isLatin1 =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFF; });
    if (isLatin1)
        return text;
    const QByteArray bytes = text.toLatin1();
    return QString::fromLatin1(bytes.constData(), bytes.size());
}

} // namespace

struct MappingDirectory::Own
{
    QString textDirectionPath;
    QVector<ValueBase*> replaced; ///< no longer regarded, but still observed
    int historyStart = 0;         ///< what slid out of the history may still be in front of it
    int initCount = 0;
};

/// A row for each role whose value is observed.
auto MappingDirectory::observedValues()
{
    return ValueRoles(this, [this](auto visit) {
        visit(m_dataInput);
        visit(m_dataOutput);
        visit(m_availableMaps);
        visit(m_decoder);
        visit(m_saveToFile);
        visit(m_translateAll);
        visit(m_translatedFile);
        visit(m_maxNumberOfChars);
        visit(m_frequency);
        visit(m_modulationType);
        visit(m_channelIndex);
    });
}

MappingDirectory::MappingDirectory(const QString& directory)
    : m_outputStream(&m_outputFile)
    , m_own(std::make_unique<Own>())
{
    const QDir folder(localPath(directory));
    for (const TableFormat& format : TABLE_FORMATS) {
        if (format.charset == eCHARSET_NONE)
            continue;
        const QStringList entries =
            folder.entryList({QLatin1Char('*') + format.suffix}, QDir::Files, QDir::Name);
        for (const QString& entry : entries) {
            const CharacterMap map = readCharacterMap(folder.absoluteFilePath(entry));
            if (map.loaded)
                m_maps[format.charset].insert(baseNameOf(entry), map);
        }
    }
    initBaseCharsetMap();
}

MappingDirectory::~MappingDirectory()
{
    try {
        closeOutputFile();
        observedValues().LeaveAll();
        for (ValueBase* value : qAsConst(m_own->replaced))
            value->DeleteObserver(this);
    } catch (...) {
        traceMessage(QStringLiteral("Exception catched in MorseTranslator::~MorseHandler"),
                     QStringLiteral("tools\\morsehandler\\mappingdirectory"), 126);
    }
}

void MappingDirectory::Enabled(bool on)
{
    m_enabled = on;
    if (on)
        return;
    closeOutputFile();
    if (m_dataOutput)
        m_dataOutput->SetValue(QString(), nullptr);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface has it by value
void MappingDirectory::Init(QString selection)
{
    if (!m_availableMaps)
        return;
    // An observer of a step may delete the value, or cause another filling that replaces
    // this one.
    const int count = ++m_own->initCount;
    const auto isGoingOn = [&] { return m_availableMaps && m_own->initCount == count; };

    m_availableMaps->DeleteItems(this);
    const QStringList names = availableMaps(GetDecoderCharset());
    if (isGoingOn())
        m_availableMaps->AddItem(defaultMapName(), 0.0, 0, nullptr);
    for (int i = 0; i < names.size() && isGoingOn(); ++i)
        m_availableMaps->AddItem(names[i], i + 1.0, i + 1, this);
    if (!isGoingOn())
        return;
    m_currentCharset = GetDecoderCharset();
    if (m_currentCharset == eCHARSET_BOTH)
        m_currentCharset = baseCharset(selection);
    // Notifies every observer, this object included, which then switches to the map.
    const bool isSelected =
        m_availableMaps->Select(fullString(charset(selection), m_currentCharset), nullptr);
    if (!isSelected && isGoingOn())
        m_availableMaps->Select(defaultMapName(), nullptr);
}

template <typename Kind>
void MappingDirectory::hold(Kind*& role, const QString& path)
{
    Kind* const value = findOrCreateValue<Kind>(path, this);
    Kind* const previous = std::exchange(role, nullptr);
    if (previous && previous != value && !m_own->replaced.contains(previous))
        m_own->replaced.append(previous);
    if (value->GetState() != eSTATE_DELETED)
        role = value;
    else if (!observedValues().Hold(value) && !m_own->replaced.contains(value))
        value->DeleteObserver(this);
}

template <typename Kind>
bool MappingDirectory::observe(Kind* role)
{
    if (role)
        role->AddObserver(this);
    return role != nullptr;
}

template <typename Kind>
bool MappingDirectory::attach(Kind*& role, const QString& path)
{
    hold(role, path);
    return observe(role);
}

// NOLINTBEGIN(performance-unnecessary-value-param): the interface has them by value
bool MappingDirectory::SetAvailableMaps_ValuePath(QString path)
{
    return attach(m_availableMaps, path);
}

bool MappingDirectory::SetChannelIndex_ValuePath(QString path)
{
    return attach(m_channelIndex, path);
}

bool MappingDirectory::SetDataInput_ValuePath(QString path, IVtClient* client)
{
    hold(m_dataInput, path);
    if (m_dataInput && client)
        client->HandOver(m_dataInput, 0);
    return observe(m_dataInput);
}

bool MappingDirectory::SetDataOutput_ValuePath(QString path)
{
    return attach(m_dataOutput, path);
}

bool MappingDirectory::SetDecoder_ValuePath(QString path)
{
    return attach(m_decoder, path);
}

bool MappingDirectory::SetFrequency_ValuePath(QString path)
{
    return attach(m_frequency, path);
}

bool MappingDirectory::SetMaxNumberOfChars_ValuePath(QString path)
{
    attach(m_maxNumberOfChars, path);
    if (m_maxNumberOfChars)
        m_maxNumberOfChars->SetMinMax(MIN_HISTORY, MAX_HISTORY, 1, this);
    if (m_maxNumberOfChars)
        m_maxNumberOfChars->SetValue(MAX_HISTORY, nullptr);
    return m_maxNumberOfChars != nullptr;
}

bool MappingDirectory::SetModtype_ValuePath(QString path)
{
    return attach(m_modulationType, path);
}

bool MappingDirectory::SetSaveToFile_ValuePath(QString path)
{
    return attach(m_saveToFile, path);
}

bool MappingDirectory::SetTextDirectionRTL_ValuePath(QString path)
{
    m_own->textDirectionPath = path;
    FlagValue* const value = findOrCreateValue<FlagValue>(path);
    m_textDirectionRTL = value->GetState() == eSTATE_DELETED ? nullptr : value;
    return m_textDirectionRTL != nullptr;
}

bool MappingDirectory::SetTranslateAll_ValuePath(QString path)
{
    return attach(m_translateAll, path);
}

bool MappingDirectory::SetTranslatedFile_ValuePath(QString path)
{
    return attach(m_translatedFile, path);
}

void MappingDirectory::SetTranslatedFileDirectory(QString directory)
{
    m_translatedFileDirectory = std::move(directory);
}

void MappingDirectory::SetIpcIdentifier(QString id)
{
    m_ipcIdentifier = ipcIdentifier(id);
}
// NOLINTEND(performance-unnecessary-value-param)

void MappingDirectory::Update(Observable* source, TChangeCode code)
{
    switch (code) {
    case eCHANGE_DELETED:
        forgetDeleted(source);
        break;
    case eCHANGE_CONTENT:
        if (m_enabled)
            contentChanged(source);
        break;
    case eCHANGE_FORCED:
        evaluationForced(source);
        break;
    default:
        break;
    }
}

void MappingDirectory::forgetDeleted(const Observable* source)
{
    observedValues().Forget(source);
    const auto isLeft = [this, source](ValueBase* value) {
        if (!isSame(source, value) || value->GetState() != eSTATE_DELETED)
            return false;
        value->DeleteObserver(this);
        return true;
    };
    QVector<ValueBase*>& replaced = m_own->replaced;
    replaced.erase(std::remove_if(replaced.begin(), replaced.end(), isLeft), replaced.end());
}

void MappingDirectory::contentChanged(const Observable* source)
{
    if (isSame(source, m_availableMaps)) {
        switchTo(m_availableMaps->GetStringValue());
    } else if (isSame(source, m_decoder)) {
        if (m_availableMaps)
            Init(m_availableMaps->GetStringValue());
    } else if (isSame(source, m_dataInput)) {
        const QString translated = translate(m_dataInput->GetValue());
        if (!m_dataOutput)
            return;
        // A value announces nothing when it is set to what it holds.
        if (m_dataOutput->GetValue() == translated)
            m_dataOutput->HasChanged(eCHANGE_CONTENT, this);
        else
            m_dataOutput->SetValue(translated, this);
    }
}

/// Obeyed while disabled as well.
void MappingDirectory::evaluationForced(const Observable* source)
{
    if (isSame(source, m_saveToFile)) {
        closeOutputFile();
    } else if (isSame(source, m_dataInput)) {
        const QString translated = translate(m_dataInput->GetValue());
        if (m_dataOutput)
            m_dataOutput->SetValue(translated, this);
        if (m_dataOutput)
            m_dataOutput->HasChanged(eCHANGE_FORCED, this);
    }
}

void MappingDirectory::closeOutputFile()
{
    if (m_outputFile.isOpen())
        m_outputFile.close();
}

void MappingDirectory::writeTextDirection(bool rightToLeft)
{
    if (FlagValue* const direction = lookUpAgain(m_textDirectionRTL, m_own->textDirectionPath))
        direction->SetValue(rightToLeft, nullptr);
}

QStringList MappingDirectory::availableMaps(eBASE_CHARSET charset)
{
    QStringList names;
    for (const eBASE_CHARSET one : {eCHARSET_ITA2, eCHARSET_ASCII}) {
        if (charset != one && charset != eCHARSET_BOTH)
            continue;
        const QStringList maps = m_maps[one].keys();
        for (const QString& map : maps)
            names += fullString(map, one);
    }
    return names;
}

eBASE_CHARSET MappingDirectory::baseCharset(const QString& display)
{
    return charsetOfDisplayName(display);
}

QString MappingDirectory::charset(const QString& display)
{
    return nameOfDisplayName(display);
}

QString MappingDirectory::fullString(const QString& name, eBASE_CHARSET charset)
{
    return displayName(name, charset);
}

eBASE_CHARSET MappingDirectory::GetDecoderCharset()
{
    if (!m_decoder)
        return eCHARSET_NONE;
    return m_decoderCharsets.value(m_decoder->GetStringValue(), eCHARSET_NONE);
}

void MappingDirectory::initBaseCharsetMap()
{
    m_decoderCharsets = readDecoderCharsets();
}

bool MappingDirectory::switchTo(const QString& display)
{
    const eBASE_CHARSET newCharset = baseCharset(display);
    const QString name = charset(display);
    if (isDefaultMap(name)) {
        // The direction is that of the map before under the new character set, which is none:
        // left to right, and a record of that name from now on.
        const bool rightToLeft = m_maps[newCharset][m_currentMap].rightToLeft;
        writeTextDirection(rightToLeft);
        m_currentMap = name;
        return true;
    }
    if (!m_maps[newCharset].contains(name))
        return false;
    m_currentCharset = newCharset;
    m_currentMap = name;
    writeTextDirection(m_maps[newCharset][name].rightToLeft);
    return true;
}

QString MappingDirectory::translate(const QString& text)
{
    if (!m_retranslating)
        SaveToHistory(text);
    if (isDefaultMap(m_currentMap))
        return text;
    QString translated =
        translateForward(m_maps[m_currentCharset][m_currentMap].table, latin1Of(text));
    SaveToFile(translated);
    return translated;
}

QString MappingDirectory::TranslateHistory()
{
    m_retranslating = true;
    QString translated = translate(m_history.mid(m_own->historyStart));
    m_retranslating = false;
    return translated;
}

void MappingDirectory::ClearHistory()
{
    m_history.clear();
    m_own->historyStart = 0;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface has it by value
void MappingDirectory::SaveToHistory(QString text)
{
    m_history += text;
    if (!m_maxNumberOfChars)
        return;
    const int max = qMax(0, static_cast<int>(m_maxNumberOfChars->GetRealValue()));
    m_own->historyStart = qMax(m_own->historyStart, m_history.size() - max);
    // What slid out is cut off from time to time: to move the rest for every single character would
    // take longer than to translate it.
    if (m_own->historyStart > max) {
        m_history = m_history.mid(m_own->historyStart);
        m_own->historyStart = 0;
    }
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface has it by value
void MappingDirectory::SaveToFile(QString) {}

QString MappingDirectory::CreateTimeString()
{
    return Vanth::DateTime()
        .toString()
        .replace(QLatin1Char(':'), QLatin1Char('_'))
        .replace(QLatin1Char('-'), QLatin1Char('_'))
        .replace(QLatin1Char(' '), QLatin1String("__"));
}

void MappingDirectory::CreateFilename() {}

void MappingDirectory::InitSaveToFile() {}
