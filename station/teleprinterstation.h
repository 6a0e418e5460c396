// SPDX-License-Identifier: MIT
// A host for one teleprinter signal: feeds a mapping directory what the decoder puts out, keeps
// what comes back, and puts the transmissions together.
#pragma once

#include "signal/teleprinter/teleprinterreceiver.h"
#include "station/mapstation.h"
#include "station/stationlistener.h"

#include <QFile>
#include <QString>

#include <optional>

namespace morsehost {

/// What the operator chose, and what is known of the receiver.
struct TeleprinterSettings
{
    QString place;         ///< of its values in the tree, such as "Receiver1/Signal3"
    QString source;        ///< name of the recording or pipe; may be empty
    QString decoder;       ///< a name of the decoder modules table
    QString mapsDirectory; ///< an existing folder
    QString map;           ///< as the operator calls it; NO_MAP for none
    QString saveDirectory; ///< see folderOfDay; empty when nothing is saved
    std::optional<double> frequency_Hz;
    unsigned long long start_us = 0; ///< time of the first sample, since 1970-01-01 00:00 UTC
};

/// Of each transmission two files are kept: the text as it is shown (UTF-8), and the characters as
/// the decoder put them out (8 bits each). The decoder modules file has been configured before.
class TeleprinterStation : public teleprinter::TextSink
{
public:
    /// Tree and listener outlive the station.
    TeleprinterStation(HostTree& tree, TeleprinterSettings settings, StationListener& listener);

    /// Empty, or why it cannot be begun.
    QString start();

    // Times count from the first sample.
    void transmissionStarted(const teleprinter::Line& line, std::int64_t time_us) override;
    void character(std::uint8_t character, std::int64_t time_us) override;
    void transmissionStopped(const teleprinter::Line& line, std::int64_t time_us) override;

    /// Transmissions that are not on disk as a whole.
    long long lost() const { return m_lost; }

private:
    void shown(const QString& text);
    void openFiles();
    void save(QFile& file, const QByteArray& bytes);
    unsigned long long timeOf(std::int64_t time_us) const;

    TeleprinterSettings m_settings;
    StationListener& m_listener;
    MapStation m_maps;
    QFile m_textFile;
    QFile m_rawFile;
    Transmission m_transmission;
    bool m_isFailing = false; ///< something of this transmission could not be saved
    long long m_lost = 0;
};

/// Whether a map is offered for any teleprinter's decoder.
bool isMapOfAny(HostTree& tree, const QString& mapsDirectory, const QString& map);

/// The map for a decoder that was found, not asked for: `map`, but none where it is only for
/// others.
QString mapForFound(HostTree& tree, const TeleprinterSettings& settings);

} // namespace morsehost
