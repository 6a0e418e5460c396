// SPDX-License-Identifier: MIT
// What a station has to do: its file, read and checked.
#pragma once

#include "station/mqtt/mqttpublisher.h"
#include "station/page/stationpage.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace morsehost {

/// Raw samples as a receiver's source sends them.
struct SampleFormat
{
    enum class Word { S16, F32, U8, S8 };

    Word word = Word::S16;
    double rate_Hz = 8000;
    bool isComplex = false; ///< pairs of I and Q
    double center_Hz = 0;   ///< what 0 Hz of I and Q stands for
};

/// Bytes of a sample, or of a pair.
int sampleBytes(const SampleFormat& format);

/// Folders below that of a station: what waits for the archive, and for the broker.
inline constexpr const char* UNSENT = "unsent";
inline constexpr const char* UNPUBLISHED = "unpublished";

/// One `[receiver NAME]`.
struct ReceiverSettings
{
    QString name;
    // Where its samples come from: one of these is not empty.
    QString command;  ///< run by the shell, its standard output read
    QString file;     ///< a recording
    QString tcp;      ///< "host:port"
    int repeat_s = 0; ///< of a recording: it begins again so long after it began; 0 for once

    QString decoder = QStringLiteral("Morse"); ///< "band", or a decoder's name
    /// Words for the decoder's command line, from the keys that it understands.
    QStringList options;
    SampleFormat samples;               ///< of a command or an address
    std::optional<double> frequency_Hz; ///< that it is tuned to
    bool isSaved = true;                ///< files are kept in a folder a day
    int stall_s = 30;         ///< without a sample for so long, it counts as stalled; 0 for never
    QMap<QString, int> lines; ///< where its keys stand, and under "" its section; not compared

    bool operator==(const ReceiverSettings& other) const;
};

struct StationConfiguration
{
    QString name;
    QString folder;              ///< of all that is kept
    QString archive;             ///< URL
    int keepDays = 0;            ///< 0 for ever
    double keepGigabytes = 0;    ///< of files; 0 for all
    int archiveDays = 0;         ///< of transmissions; 0 for ever
    double archiveGigabytes = 0; ///< of an archive in a file; 0 for all
    PageSettings page;
    MqttSettings mqtt;
    std::vector<ReceiverSettings> receivers;
};

/// What is wrong with the file, at a line of it (0: in no line).
struct ConfigurationFault
{
    int line;
    QString text;
};

/// Reads the file. With faults, what could not be understood has its default.
StationConfiguration readConfiguration(const QString& path,
                                       std::vector<ConfigurationFault>& faults);

/// A row of what the file may hold, for the check and for the manual.
struct ConfigurationKey
{
    const char* section;
    const char* name;
    const char* help;
};
const std::vector<ConfigurationKey>& configurationKeys();

} // namespace morsehost
