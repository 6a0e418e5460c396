// SPDX-License-Identifier: MIT
// Beside the files of each transmission a picture of it: what the decoder of one signal saw.
#pragma once

#include "signal/morse/observer.h"
#include "signal/morse/symbolsink.h"
#include "signal/teleprinter/observer.h"
#include "signal/teleprinter/textreader.h"
#include "station/archive/passinglistener.h"
#include "station/picture/notes.h"
#include "station/picture/teleprinternotes.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace morsehost {

/// Writes a picture of what begins then into `folder` (see folderOfDay), in a file of its own.
/// Returns its path, or nothing with the reason in `problem`.
QString savePicture(const QByteArray& picture, const QString& folder, qint64 start_us,
                    QString& problem);
/// What stands above it.
QString pictureTitle(qint64 start_us);

/// Of a long transmission the end is drawn, so long at most, and a little around each.
constexpr std::int64_t LONGEST_PICTURE_us = 120000000;
constexpr std::int64_t PICTURE_EDGE_us = 1000000;

/// Stands before a station and behind it: takes note of what it gets, passes it on, and adds the
/// path of the picture to the transmission that the station reports. Memory is bounded.
class TransmissionPictures : public PassingListener
{
public:
    void transmission(const Transmission& transmission) override;

protected:
    /// The next listener outlives it. `folder` is that of the station.
    TransmissionPictures(StationListener& next, const QString& folder);

    void begin(std::int64_t time_us) { m_begin_us = time_us; }
    /// Ends at `time_us`, which `pass` passes on to the station.
    template <typename Pass>
    void end(std::int64_t time_us, Pass pass)
    {
        m_end_us = time_us;
        pass();
        m_end_us.reset();
        m_begin_us.reset();
    }
    void hear(std::size_t count, double rate_Hz);

    /// What is before is drawn no more.
    virtual void forgetBefore(std::int64_t time_us) = 0;
    /// What was noted up to then, as a picture.
    virtual QByteArray picture(std::int64_t end_us, const QString& title) const = 0;

private:
    QString draw(const Transmission& transmission);

    QString m_folder;
    double m_heard_us = 0;
    std::int64_t m_kept_us = 0;             ///< what is before is forgotten
    std::optional<std::int64_t> m_begin_us; ///< of the transmission that goes on
    std::optional<std::int64_t> m_end_us;   ///< of the one that ends just now
};

class MorsePictures : public TransmissionPictures,
                      public demodulator::SymbolSink,
                      public demodulator::Observer
{
public:
    MorsePictures(StationListener& next, const QString& folder);

    /// The station, before anything is heard; it outlives what is heard.
    void feed(demodulator::SymbolSink& station) { m_station = &station; }

    void transmissionStarted(std::int64_t time_us) override;
    void symbol(int code, std::int64_t time_us) override;
    void transmissionStopped(std::int64_t time_us,
                             const demodulator::SignalReport& report) override;

    void sound(const float* samples, std::size_t count, double rate_Hz) override;
    void step(const demodulator::FollowedStep& step) override;
    void mark(std::int64_t begin_us, std::int64_t end_us, double unit_us) override;

    void text(const QString& text) override;

private:
    using PassingListener::symbol;

    void forgetBefore(std::int64_t time_us) override;
    QByteArray picture(std::int64_t end_us, const QString& title) const override;

    demodulator::SymbolSink* m_station = nullptr;
    inspect::Notes m_notes;
};

class TeleprinterPictures : public TransmissionPictures,
                            public teleprinter::TextSink,
                            public teleprinter::Observer
{
public:
    TeleprinterPictures(StationListener& next, const QString& folder);

    /// The station, before anything is heard; it outlives what is heard.
    void feed(teleprinter::TextSink& station) { m_station = &station; }

    void transmissionStarted(const teleprinter::Line& line, std::int64_t time_us) override;
    void character(std::uint8_t character, std::int64_t time_us) override;
    void transmissionStopped(const teleprinter::Line& line, std::int64_t time_us) override;

    void sound(const float* samples, std::size_t count, double rate_Hz) override;
    void word(const teleprinter::SeenWord& word) override;

    void text(const QString& text) override;

private:
    void forgetBefore(std::int64_t time_us) override;
    QByteArray picture(std::int64_t end_us, const QString& title) const override;

    teleprinter::TextSink* m_station = nullptr;
    inspect::TeleprinterNotes m_notes;
};

} // namespace morsehost
