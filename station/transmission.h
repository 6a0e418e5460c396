// SPDX-License-Identifier: MIT
// One transmission, as every receiver reports it when it is over.
#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace morsehost {

/// What is not known is left out. Times are microseconds since 1970-01-01 00:00 UTC.
struct Transmission
{
    int number = 0;   ///< of the signal within its reception, from 1
    QString receiver; ///< name of the receiver at a station; empty elsewhere
    QString source;   ///< name of the recording or pipe that it was heard in
    QString decoder;  ///< "Morse", or a name of the decoder modules table such as "Baudot"
    std::optional<double> tone_Hz;      ///< pitch in the sound; with I/Q the offset from its centre
    std::optional<double> frequency_Hz; ///< as received
    std::optional<double> speed_wpm;    ///< Morse
    std::optional<double> baudRate;     ///< teleprinters: rate, shift and polarity
    std::optional<double> shift_Hz;
    std::optional<bool> isReversed;
    std::optional<double> snr_dB; ///< key-down power over noise power in 500 Hz
    qint64 start_us = 0;          ///< begin of its first mark
    qint64 stop_us = 0;           ///< end of its last mark
    QString text;                 ///< as shown: behind alphabet or map
    QString rawText;              ///< teleprinters: the characters before the map
    QString map;                  ///< name of the map or alphabet that was applied
    QStringList unknownCodes;     ///< Morse codes that the alphabet does not have, as ".-.-"
    QStringList files;            ///< paths of what was saved of it: text, codes, document
};

/// Microseconds since 1970-01-01 00:00 UTC as JSON has them: ISO 8601 in UTC with milliseconds.
QString isoTime(qint64 time_us);

/// The object `transmission` of every JSON output: "event" and the fields above by their names in
/// lower case with underscores where units stand ("tone_Hz", "speed_wpm"), times by isoTime.
/// What is not known, or empty, is no member.
QJsonObject toJson(const Transmission& transmission);

/// Such an object read again; members that are missing or of another kind are not known.
Transmission transmissionOf(const QJsonObject& object);

} // namespace morsehost
