// SPDX-License-Identifier: MIT
#include "station/teleprinterstation.h"

#include "station/decoders.h"
#include "station/io/folder.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <utility>

namespace morsehost {

namespace {

// So many transmissions may begin in one second.
constexpr int MAX_NAMES = 1000;

// As the names of Morse files have it.
QString frequencyText(double frequency_Hz)
{
    constexpr double FROM_MHz = 1e6;
    return frequency_Hz > FROM_MHz
               ? QString::number(frequency_Hz / 1e6, 'f', 3) + QStringLiteral("MHz")
               : QString::number(frequency_Hz / 1e3, 'f', 3) + QStringLiteral("KHz");
}

// Whether a station with these settings can be begun.
bool canStart(HostTree& tree, const TeleprinterSettings& settings)
{
    class Silent : public StationListener
    {
    } silent;
    return TeleprinterStation(tree, settings, silent).start().isEmpty();
}

// A name that no other station has used, and the number of its attempt.
bool openNew(QFile& file, const QString& path)
{
    file.setFileName(path);
    return file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered);
}

} // namespace

TeleprinterStation::TeleprinterStation(HostTree& tree, TeleprinterSettings settings,
                                       StationListener& listener)
    : m_settings(std::move(settings))
    , m_listener(listener)
    , m_maps(tree, m_settings.place, m_settings.mapsDirectory,
             [this](const QString& text) { shown(text); })
{
}

QString TeleprinterStation::start()
{
    m_maps.enable();
    m_maps.selectDecoder(m_settings.decoder);
    if (m_maps.selectMap(m_settings.map))
        return QString();
    const QStringList meant = m_maps.mapsMeant(m_settings.map);
    if (meant.isEmpty())
        return QStringLiteral("no map '%1' is offered for the decoder '%2' (see 'morsehost maps')")
            .arg(m_settings.map, m_settings.decoder);
    return QStringLiteral("the map '%1' may be '%2'")
        .arg(m_settings.map, meant.join(QLatin1String("' or '")));
}

unsigned long long TeleprinterStation::timeOf(std::int64_t time_us) const
{
    return m_settings.start_us + static_cast<unsigned long long>(time_us);
}

void TeleprinterStation::transmissionStarted(const teleprinter::Line& /*line*/,
                                             std::int64_t time_us)
{
    const int number = m_transmission.number + 1;
    m_transmission = Transmission();
    m_transmission.number = number;
    m_transmission.source = m_settings.source;
    m_transmission.decoder = m_settings.decoder;
    m_transmission.map = m_maps.currentMap();
    m_transmission.frequency_Hz = m_settings.frequency_Hz;
    m_transmission.start_us = static_cast<qint64>(timeOf(time_us));
    m_isFailing = false;
    if (!m_settings.saveDirectory.isEmpty())
        openFiles();
    m_listener.time(timeOf(time_us));
}

void TeleprinterStation::character(std::uint8_t character, std::int64_t time_us)
{
    const QString raw(QLatin1Char(static_cast<char>(character)));
    m_transmission.rawText += raw;
    save(m_rawFile, raw.toLatin1());
    m_listener.time(timeOf(time_us));
    m_maps.receive(raw);
}

void TeleprinterStation::shown(const QString& text)
{
    // A screen begins a line at its left by itself.
    QString onScreen = text;
    onScreen.remove(QLatin1Char('\r'));
    if (onScreen.isEmpty())
        return;
    m_transmission.text += onScreen;
    save(m_textFile, onScreen.toUtf8());
    m_listener.text(onScreen);
}

void TeleprinterStation::transmissionStopped(const teleprinter::Line& line, std::int64_t time_us)
{
    m_maps.stop();
    m_transmission.stop_us = static_cast<qint64>(timeOf(time_us));
    m_transmission.tone_Hz = std::round(line.centre_Hz());
    m_transmission.baudRate = line.kind.baud;
    m_transmission.shift_Hz = std::round(line.shift_Hz());
    m_transmission.isReversed = line.isReversed();
    m_transmission.snr_dB = line.snr_dB;
    m_textFile.close();
    m_rawFile.close();
    m_lost += m_isFailing ? 1 : 0;
    m_listener.transmission(m_transmission);
}

void TeleprinterStation::openFiles()
{
    QString decoder = m_settings.decoder;
    decoder.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9-]")), QStringLiteral("_"));
    const QString begin = QDateTime::fromMSecsSinceEpoch(m_transmission.start_us / 1000, Qt::UTC)
                              .toString(QStringLiteral("yyyy_MM_dd__hh_mm_ss"));
    const QString frequency = m_settings.frequency_Hz
                                  ? QStringLiteral("__") + frequencyText(*m_settings.frequency_Hz)
                                  : QString();
    const QDir folder(folderOfDay(m_settings.saveDirectory, m_transmission.start_us));
    if (folder.path() != m_settings.saveDirectory)
        QDir().mkpath(folder.path());
    for (int attempt = 1; attempt <= MAX_NAMES; ++attempt) {
        QString name = begin + QLatin1Char('_') + decoder + frequency;
        if (attempt > 1)
            name += QLatin1Char('_') + QString::number(attempt);
        const QString raw = folder.filePath(name + QLatin1String(".raw"));
        if (openNew(m_rawFile, raw)) {
            if (openNew(m_textFile, folder.filePath(name + QLatin1String(".txt")))) {
                m_transmission.files = QStringList{m_textFile.fileName(), m_rawFile.fileName()};
                return;
            }
            m_rawFile.close();
            m_rawFile.remove();
        }
        if (!QFile::exists(raw) && !QFile::exists(m_textFile.fileName()))
            break;
    }
    m_isFailing = true;
    m_listener.saving(QStringLiteral("%1: the transmission cannot be saved: %2")
                          .arg(m_settings.saveDirectory, m_rawFile.errorString()));
}

void TeleprinterStation::save(QFile& file, const QByteArray& bytes)
{
    if (!file.isOpen() || file.write(bytes) == bytes.size())
        return;
    if (!m_isFailing)
        m_listener.saving(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    m_isFailing = true;
}

bool isMapOfAny(HostTree& tree, const QString& mapsDirectory, const QString& map)
{
    const QStringList decoders = teleprinterDecoders();
    return std::any_of(decoders.begin(), decoders.end(), [&](const QString& decoder) {
        TeleprinterSettings settings;
        settings.place = QStringLiteral("Trial1");
        settings.decoder = decoder;
        settings.mapsDirectory = mapsDirectory;
        settings.map = map;
        return canStart(tree, settings);
    });
}

QString mapForFound(HostTree& tree, const TeleprinterSettings& settings)
{
    return !canStart(tree, settings) && isMapOfAny(tree, settings.mapsDirectory, settings.map)
               ? QString(QLatin1String(NO_MAP))
               : settings.map;
}

} // namespace morsehost
