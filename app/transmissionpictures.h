// SPDX-License-Identifier: MIT
// Beside the files of each transmission a picture of it: what the demodulator saw.
#pragma once

#include "signal/morse/observer.h"
#include "signal/morse/symbolsink.h"
#include "station/archive/passinglistener.h"
#include "station/morsestation.h"
#include "station/picture/notes.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace morsehost {

/// Stands before a station and behind it: takes note of what it gets, passes it on, and adds the
/// path of the picture to the transmission that the station reports. Memory is bounded: of a long
/// transmission the last two minutes are drawn.
class TransmissionPictures : public demodulator::SymbolSink,
                             public demodulator::Observer,
                             public PassingListener
{
public:
    /// The next listener outlives it. `folder` is that of the
    /// station.
    TransmissionPictures(StationListener& next, const QString& folder);

    /// The station, before anything is heard; it outlives what is heard.
    void feed(MorseStation& station) { m_station = &station; }

    void transmissionStarted(std::int64_t time_us) override;
    void symbol(int code, std::int64_t time_us) override;
    void transmissionStopped(std::int64_t time_us,
                             const demodulator::SignalReport& report) override;

    void sound(const float* samples, std::size_t count, double rate_Hz) override;
    void step(const demodulator::FollowedStep& step) override;
    void mark(std::int64_t begin_us, std::int64_t end_us, double unit_us) override;

    void text(const QString& text) override;
    void transmission(const Transmission& transmission) override;

private:
    using PassingListener::symbol;

    QString draw(const Transmission& transmission);

    QString m_folder;
    MorseStation* m_station = nullptr;
    inspect::Notes m_notes;
    double m_heard_us = 0;
    std::optional<std::int64_t> m_begin_us; ///< of the transmission that goes on
    std::optional<std::int64_t> m_end_us;   ///< of the one that ends just now
};

} // namespace morsehost
