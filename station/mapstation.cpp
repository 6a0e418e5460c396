// SPDX-License-Identifier: MIT
#include "station/mapstation.h"

#include "tables/displayname.h"

#include <utility>

namespace morsehost {

MapStation::MapStation(HostTree& tree, const QString& place, const QString& mapsDirectory,
                       TextListener listener)
    : m_listener(std::move(listener))
    , m_values(tree, place)
    , m_decoder(m_values.add<ValueSelection>("Decoder"))
    , m_maps(m_values.add<ValueSelection>("AvailableMaps"))
    , m_input(m_values.add<TextValue>("Input"))
    , m_output(m_values.add<TextValue>("Output"))
    , m_rightToLeft(m_values.add<FlagValue>("RightToLeft"))
    , m_saveToFile(m_values.add<FlagValue>("SaveToFile"))
    , m_directory(mapsDirectory)
{
    m_output->AddObserver(this);
    m_directory.SetAvailableMaps_ValuePath(m_values.path("AvailableMaps"));
    m_directory.SetTextDirectionRTL_ValuePath(m_values.path("RightToLeft"));
    m_directory.SetDataInput_ValuePath(m_values.path("Input"), nullptr);
    m_directory.SetDataOutput_ValuePath(m_values.path("Output"));
    m_directory.SetSaveToFile_ValuePath(m_values.path("SaveToFile"));
    m_directory.SetMaxNumberOfChars_ValuePath(m_values.path("MaxNumberOfChars"));
    m_directory.SetDecoder_ValuePath(m_values.path("Decoder"));
    m_directory.Init(QString());
}

MapStation::~MapStation()
{
    m_output->DeleteObserver(this);
}

void MapStation::enable()
{
    m_directory.Enabled(true);
    // What was selected while it was disabled takes effect when it is announced.
    m_maps->HasChanged(eCHANGE_CONTENT, this);
}

void MapStation::disable()
{
    m_directory.Enabled(false);
}

void MapStation::selectDecoder(const QString& name)
{
    if (!m_decoder->GetItem(name))
        m_decoder->AddItem(name, 0, m_decoder->GetItemCount(), nullptr);
    m_decoder->Select(name, nullptr);
}

bool MapStation::selectMap(const QString& name)
{
    const QStringList meant = mapsMeant(name);
    return meant.size() == 1 && m_maps->Select(meant.constFirst(), nullptr);
}

void MapStation::receive(const QString& text)
{
    // A value announces what is new to it; a text that repeats is new all the same.
    if (m_input->GetValue() == text)
        m_input->HasChanged(eCHANGE_CONTENT, nullptr);
    else
        m_input->SetValue(text, nullptr);
}

void MapStation::stop()
{
    // A forced evaluation translates the input once more, so that nothing may be left in it.
    m_input->SetValue(QString(), nullptr);
    m_input->HasChanged(eCHANGE_FORCED, nullptr);
    m_saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
}

QStringList MapStation::maps()
{
    QStringList names;
    for (long i = 0; i < m_maps->GetItemCount(); ++i)
        names += m_maps->GetItem(i)->GetName();
    return names;
}

QStringList MapStation::mapsMeant(const QString& name)
{
    const QStringList offered = maps();
    if (offered.contains(name))
        return {name};
    for (const Qt::CaseSensitivity letterCase : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        QStringList meant;
        for (const QString& map : offered) {
            if (map.compare(name, letterCase) == 0 ||
                nameOfDisplayName(map).compare(name, letterCase) == 0)
                meant += map;
        }
        if (!meant.isEmpty())
            return meant;
    }
    return {};
}

QString MapStation::currentMap()
{
    return m_maps->GetStringValue();
}

bool MapStation::isTextRightToLeft()
{
    return m_rightToLeft->GetValue();
}

QString MapStation::history()
{
    return m_directory.TranslateHistory();
}

void MapStation::clearHistory()
{
    m_directory.ClearHistory();
}

void MapStation::Update(Observable* source, TChangeCode code)
{
    if (code == eCHANGE_CONTENT && source == m_output)
        m_listener(m_output->GetValue());
}

} // namespace morsehost
