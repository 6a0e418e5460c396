// SPDX-License-Identifier: MIT
// A small host around a mapping directory: feeds it a decoder's text and hears what it writes.
#pragma once

#include "charmap/mappingdirectory.h"
#include "host/observable.h"
#include "host/values.h"
#include "station/valuebranch.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace morsehost {

/// The map that is always offered and changes nothing.
constexpr char NO_MAP[] = "Default";

/// Uses the library as any host does: through paths of values, notifications and public
/// operations. Stations share a tree, each at a place of its own. The decoder modules file has been
/// configured before the first one.
class MapStation : private IObserver
{
public:
    using TextListener = std::function<void(const QString& text)>;

    /// Hears each text that the library writes into the output value. The tree outlives the
    /// station.
    MapStation(HostTree& tree, const QString& place, const QString& mapsDirectory,
               TextListener listener);
    ~MapStation() override;

    void enable();
    void disable();
    /// The maps on offer follow the decoder; the one in force stays where it fits.
    void selectDecoder(const QString& name);
    /// False unless `mapsMeant` is one.
    bool selectMap(const QString& name);
    /// What is offered under `name`, or under it and a character set; in any letter case where
    /// nothing is spelled like this.
    QStringList mapsMeant(const QString& name);
    void receive(const QString& text);
    /// What was received ends here: a stop for the observers of the output.
    void stop();

    QStringList maps();
    QString currentMap();
    bool isTextRightToLeft();
    QString history();
    void clearHistory();

private:
    void Update(Observable* source, TChangeCode code) override;

    TextListener m_listener;
    ValueBranch m_values;
    ValueSelection* m_decoder;
    ValueSelection* m_maps;
    TextValue* m_input;
    TextValue* m_output;
    FlagValue* m_rightToLeft;
    FlagValue* m_saveToFile;
    MappingDirectory m_directory; ///< goes before the values
};

} // namespace morsehost
