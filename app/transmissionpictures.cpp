// SPDX-License-Identifier: MIT
#include "app/transmissionpictures.h"

#include "station/io/folder.h"
#include "station/picture/picture.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <limits>

namespace morsehost {

namespace {

constexpr std::int64_t SECOND_us = 1000000;
constexpr std::int64_t EDGE_us = SECOND_us;          // drawn on both sides
constexpr std::int64_t LONGEST_us = 120 * SECOND_us; // that is drawn of a transmission
// A transmission is noticed so long after its begin, at most.
constexpr std::int64_t NOTICED_us = 60 * SECOND_us;
constexpr std::int64_t FORGOTTEN_AT_ONCE_us = 10 * SECOND_us;
constexpr int MOST_NAMES = 1000; // of pictures that begin in one second

} // namespace

TransmissionPictures::TransmissionPictures(StationListener& next, const QString& folder)
    : PassingListener(next)
    , m_folder(folder)
    , m_notes({0, std::numeric_limits<std::int64_t>::max()})
{
}

void TransmissionPictures::transmissionStarted(std::int64_t time_us)
{
    m_begin_us = time_us;
    m_notes.transmissionStarted(time_us);
    m_station->transmissionStarted(time_us);
}

void TransmissionPictures::symbol(int code, std::int64_t time_us)
{
    m_notes.symbol(code, time_us);
    m_station->symbol(code, time_us);
}

void TransmissionPictures::transmissionStopped(std::int64_t time_us,
                                               const demodulator::SignalReport& report)
{
    m_end_us = time_us;
    m_notes.transmissionStopped(time_us, report);
    m_station->transmissionStopped(time_us, report);
    m_end_us.reset();
    m_begin_us.reset();
}

void TransmissionPictures::sound(const float* samples, std::size_t count, double rate_Hz)
{
    m_notes.sound(samples, count, rate_Hz);
    m_heard_us += 1e6 * static_cast<double>(count) / rate_Hz;
    const auto now_us = static_cast<std::int64_t>(m_heard_us);
    const std::int64_t wanted_us =
        m_begin_us ? std::max(*m_begin_us - EDGE_us, now_us - LONGEST_us) : now_us - NOTICED_us;
    if (wanted_us - m_notes.seen().stretch.from_us > FORGOTTEN_AT_ONCE_us)
        m_notes.forgetBefore(wanted_us);
}

void TransmissionPictures::step(const demodulator::FollowedStep& step)
{
    m_notes.step(step);
}

void TransmissionPictures::mark(std::int64_t begin_us, std::int64_t end_us, double unit_us)
{
    m_notes.mark(begin_us, end_us, unit_us);
}

void TransmissionPictures::text(const QString& text)
{
    m_notes.text(text);
    PassingListener::text(text);
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
    const std::int64_t end_us = std::min(m_end_us.value_or(heard_us) + EDGE_us, heard_us);
    m_notes.forgetBefore(std::max(m_begin_us.value_or(0) - EDGE_us, end_us - LONGEST_us));
    inspect::Seen seen = m_notes.seen();
    seen.stretch.to_us = end_us;
    const QDateTime begin = QDateTime::fromMSecsSinceEpoch(transmission.start_us / 1000, Qt::UTC);
    const QByteArray picture = inspect::picture(seen, begin.toString(Qt::ISODate));
    const QString name =
        begin.toString(QStringLiteral("yyyy_MM_dd__hh_mm_ss")) + QStringLiteral("_picture");
    const QString folder = folderOfDay(m_folder, transmission.start_us);
    QFile file;
    for (int attempt = 1; attempt <= MOST_NAMES && !file.isOpen(); ++attempt) {
        const QString number = attempt > 1 ? QStringLiteral("_%1").arg(attempt) : QString();
        file.setFileName(QDir(folder).filePath(name + number + QStringLiteral(".svg")));
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && !file.exists())
            break;
    }
    if (file.isOpen() && file.write(picture) == picture.size() && file.flush())
        return file.fileName();
    saving(QStringLiteral("%1: the picture cannot be saved: %2")
               .arg(file.fileName(), file.errorString()));
    if (file.isOpen())
        file.remove();
    return {};
}

} // namespace morsehost
