// SPDX-License-Identifier: MIT
#include "app/transmissionpictures.h"

#include "signal/morse/parameters.h"
#include "station/io/folder.h"
#include "station/picture/picture.h"
#include "station/picture/teleprinterpicture.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <limits>

namespace morsehost {

namespace {

// A transmission is reported so long after its begin, at most.
constexpr std::int64_t REPORTED_WITHIN_us =
    static_cast<std::int64_t>(1e6 * (demodulator::RehearingParameters().heldAtMost_s +
                                     demodulator::RehearingParameters().piece_s +
                                     demodulator::AttentionParameters().heardAgain_s));
constexpr std::int64_t FORGOTTEN_AT_ONCE_us = 10000000;
constexpr int MOST_NAMES = 1000; // of pictures that begin in one second
constexpr inspect::Stretch ALWAYS = {0, std::numeric_limits<std::int64_t>::max()};

QDateTime begin(qint64 start_us)
{
    return QDateTime::fromMSecsSinceEpoch(start_us / 1000, Qt::UTC);
}

} // namespace

QString pictureTitle(qint64 start_us)
{
    return begin(start_us).toString(Qt::ISODate);
}

QString savePicture(const QByteArray& picture, const QString& folder, qint64 start_us,
                    QString& problem)
{
    const QDir ofDay(folderOfDay(folder, start_us));
    const QString name = begin(start_us).toString(QStringLiteral("yyyy_MM_dd__hh_mm_ss")) +
                         QStringLiteral("_picture");
    QFile file;
    for (int attempt = 1; attempt <= MOST_NAMES && !file.isOpen(); ++attempt) {
        const QString number = attempt > 1 ? QStringLiteral("_%1").arg(attempt) : QString();
        file.setFileName(ofDay.filePath(name + number + QStringLiteral(".svg")));
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && !file.exists())
            break;
    }
    if (file.isOpen() && file.write(picture) == picture.size() && file.flush())
        return file.fileName();
    problem = QStringLiteral("%1: the picture cannot be saved: %2")
                  .arg(file.fileName(), file.errorString());
    if (file.isOpen())
        file.remove();
    return {};
}

TransmissionPictures::TransmissionPictures(StationListener& next, const QString& folder)
    : PassingListener(next)
    , m_folder(folder)
{
}

void TransmissionPictures::hear(std::size_t count, double rate_Hz)
{
    m_heard_us += 1e6 * static_cast<double>(count) / rate_Hz;
    const auto now_us = static_cast<std::int64_t>(m_heard_us);
    const std::int64_t wanted_us =
        m_begin_us ? std::max(*m_begin_us - PICTURE_EDGE_us, now_us - LONGEST_PICTURE_us)
                   : now_us - REPORTED_WITHIN_us;
    if (wanted_us - m_kept_us <= FORGOTTEN_AT_ONCE_us)
        return;
    m_kept_us = wanted_us;
    forgetBefore(wanted_us);
}

void TransmissionPictures::transmission(const Transmission& transmission)
{
    Transmission pictured = transmission;
    const QString path = draw(transmission);
    if (!path.isEmpty())
        pictured.files += path;
    PassingListener::transmission(pictured);
}

// Empty where it could not be saved, which is reported.
QString TransmissionPictures::draw(const Transmission& transmission)
{
    const auto heard_us = static_cast<std::int64_t>(m_heard_us);
    const std::int64_t end_us = std::min(m_end_us.value_or(heard_us) + PICTURE_EDGE_us, heard_us);
    m_kept_us = std::max(
        {m_kept_us, m_begin_us.value_or(0) - PICTURE_EDGE_us, end_us - LONGEST_PICTURE_us});
    forgetBefore(m_kept_us);
    QString problem;
    QString path = savePicture(picture(end_us, pictureTitle(transmission.start_us)), m_folder,
                               transmission.start_us, problem);
    if (path.isEmpty())
        saving(problem);
    return path;
}

MorsePictures::MorsePictures(StationListener& next, const QString& folder)
    : TransmissionPictures(next, folder)
    , m_notes(ALWAYS)
{
}

void MorsePictures::transmissionStarted(std::int64_t time_us)
{
    begin(time_us);
    m_notes.transmissionStarted(time_us);
    m_station->transmissionStarted(time_us);
}

void MorsePictures::symbol(int code, std::int64_t time_us)
{
    m_notes.symbol(code, time_us);
    m_station->symbol(code, time_us);
}

void MorsePictures::transmissionStopped(std::int64_t time_us,
                                        const demodulator::SignalReport& report)
{
    m_notes.transmissionStopped(time_us, report);
    end(time_us, [&] { m_station->transmissionStopped(time_us, report); });
}

void MorsePictures::sound(const float* samples, std::size_t count, double rate_Hz)
{
    m_notes.sound(samples, count, rate_Hz);
    hear(count, rate_Hz);
}

void MorsePictures::step(const demodulator::FollowedStep& step)
{
    m_notes.step(step);
}

void MorsePictures::mark(std::int64_t begin_us, std::int64_t end_us, double unit_us)
{
    m_notes.mark(begin_us, end_us, unit_us);
}

void MorsePictures::text(const QString& text)
{
    m_notes.text(text);
    PassingListener::text(text);
}

void MorsePictures::forgetBefore(std::int64_t time_us)
{
    m_notes.forgetBefore(time_us);
}

QByteArray MorsePictures::picture(std::int64_t end_us, const QString& title) const
{
    inspect::Seen seen = m_notes.seen();
    seen.stretch.to_us = end_us;
    return inspect::picture(seen, title);
}

TeleprinterPictures::TeleprinterPictures(StationListener& next, const QString& folder)
    : TransmissionPictures(next, folder)
    , m_notes(ALWAYS)
{
}

void TeleprinterPictures::transmissionStarted(const teleprinter::Line& line, std::int64_t time_us)
{
    begin(time_us);
    m_notes.transmissionStarted(line, time_us);
    m_station->transmissionStarted(line, time_us);
}

void TeleprinterPictures::character(std::uint8_t character, std::int64_t time_us)
{
    m_notes.character(character, time_us);
    m_station->character(character, time_us);
}

void TeleprinterPictures::transmissionStopped(const teleprinter::Line& line, std::int64_t time_us)
{
    m_notes.transmissionStopped(line, time_us);
    end(time_us, [&] { m_station->transmissionStopped(line, time_us); });
}

void TeleprinterPictures::sound(const float* samples, std::size_t count, double rate_Hz)
{
    m_notes.sound(samples, count, rate_Hz);
    hear(count, rate_Hz);
}

void TeleprinterPictures::word(const teleprinter::SeenWord& word)
{
    m_notes.word(word);
}

void TeleprinterPictures::text(const QString& text)
{
    m_notes.text(text);
    PassingListener::text(text);
}

void TeleprinterPictures::forgetBefore(std::int64_t time_us)
{
    m_notes.forgetBefore(time_us);
}

QByteArray TeleprinterPictures::picture(std::int64_t end_us, const QString& title) const
{
    inspect::SeenTeleprinter seen = m_notes.seen();
    seen.stretch.to_us = end_us;
    return inspect::teleprinterPicture(seen, title);
}

} // namespace morsehost
