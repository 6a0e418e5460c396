// SPDX-License-Identifier: MIT
#include "station/service/service.h"

#include "station/archive/archive.h"
#include "station/service/retention.h"

#include <QDateTime>
#include <QDir>
#include <QJsonArray>

#include <set>

namespace morsehost {

namespace {

constexpr int LOOK_ms = 10000; // at the day and at the limits

QString today()
{
    return QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd"));
}

} // namespace

StationService::StationService(const QString& program, QObject* parent)
    : QObject(parent)
    , m_program(program)
{
    connect(&m_daily, &QTimer::timeout, this, [this] {
        changeDay();
        keepWithinLimits();
    });
}

StationService::~StationService()
{
    stop();
}

bool StationService::configure(const StationConfiguration& configuration, QString& error)
{
    const bool isArchiveNew = !m_archive || configuration.folder != m_configuration.folder ||
                              configuration.archive != m_configuration.archive;
    if (isArchiveNew) {
        if (!QDir().mkpath(configuration.folder)) {
            error = QStringLiteral("%1: the folder cannot be made").arg(configuration.folder);
            return false;
        }
        // Two writers never share a spool.
        m_archive.reset();
        m_archive = std::make_unique<ArchiveWriter>(
            ArchiveWriter::Settings{configuration.archive,
                                    QDir(configuration.folder).filePath(QStringLiteral("unsent"))},
            [this](const QString& problem) {
                // From the writer's thread.
                QMetaObject::invokeMethod(this, [this, problem] {
                    Q_EMIT reported(problem.isEmpty()
                                        ? QStringLiteral("archive: works again")
                                        : QStringLiteral("archive: %1; transmissions are kept and "
                                                         "sent later")
                                              .arg(problem));
                });
            });
        if (!m_archive->error().isEmpty()) {
            error = QStringLiteral("%1: %2").arg(configuration.folder, m_archive->error());
            return false;
        }
    }
    const bool isFolderNew = configuration.folder != m_configuration.folder;
    m_configuration = configuration;

    std::set<QString> wanted;
    for (const ReceiverSettings& settings : configuration.receivers)
        wanted.insert(settings.name);
    for (auto it = m_receivers.begin(); it != m_receivers.end();) {
        if (wanted.count(it->first) != 0) {
            ++it;
            continue;
        }
        it->second->stop();
        Q_EMIT reported(QStringLiteral("%1: removed").arg(it->first));
        it = m_receivers.erase(it);
    }
    for (const ReceiverSettings& settings : configuration.receivers) {
        std::unique_ptr<Receiver>& receiver = m_receivers[settings.name];
        if (receiver && receiver->settings() == settings && !isFolderNew)
            continue;
        if (receiver)
            receiver->stop();
        Receiver::Surroundings surroundings;
        surroundings.program = m_program;
        surroundings.saveFolder = saveFolder(settings);
        receiver = std::make_unique<Receiver>(settings, surroundings);
        Receiver* const source = receiver.get();
        connect(source, &Receiver::decoded, this,
                [this, source](const QJsonObject& object) { take(*source, object); });
        connect(source, &Receiver::stateChanged, this, [this, source] {
            const QString& problem = source->problem();
            Q_EMIT reported(
                QStringLiteral("%1: %2%3")
                    .arg(source->settings().name, stateName(source->state()),
                         problem.isEmpty() ? QString() : QStringLiteral(": ") + problem));
        });
        source->start();
    }
    m_daily.start(LOOK_ms);
    return true;
}

void StationService::stop()
{
    m_daily.stop();
    for (const auto& [name, receiver] : m_receivers)
        receiver->stop();
    m_receivers.clear();
    if (m_archive)
        m_archive->flush();
    m_archive.reset();
}

std::vector<const Receiver*> StationService::receivers() const
{
    std::vector<const Receiver*> all;
    for (const auto& [name, receiver] : m_receivers)
        all.push_back(receiver.get());
    return all;
}

QString StationService::saveFolder(const ReceiverSettings& settings) const
{
    return settings.isSaved
               ? QDir(m_configuration.folder)
                     .filePath(QStringLiteral("files/%1/%2").arg(today(), settings.name))
               : QString();
}

void StationService::take(const Receiver& receiver, const QJsonObject& object)
{
    if (object.value(QLatin1String("event")) != QLatin1String("transmission"))
        return;
    ArchiveRecord record;
    record.station = m_configuration.name;
    record.transmission = transmissionOf(object);
    record.transmission.receiver = receiver.settings().name;
    const QJsonArray files = object.value(QLatin1String("files")).toArray();
    for (const QJsonValue& file : files)
        record.files += file.toString();
    record.key = archiveKey(record.station, record.transmission);
    if (m_archive && !m_archive->add(record)) {
        if (!m_isArchiveReported)
            Q_EMIT reported(
                QStringLiteral("archive: a transmission is lost: %1").arg(m_archive->error()));
        m_isArchiveReported = true;
    } else {
        m_isArchiveReported = false;
    }
    Q_EMIT received(record);
}

void StationService::changeDay()
{
    for (const auto& [name, receiver] : m_receivers)
        receiver->changeSaveFolder(saveFolder(receiver->settings()));
}

void StationService::keepWithinLimits()
{
    const QString files = QDir(m_configuration.folder).filePath(QStringLiteral("files"));
    const QStringList removed = removeOldDays(files, m_configuration.keepDays,
                                              qint64(m_configuration.keepGigabytes * 1e9), today());
    for (const QString& day : removed)
        Q_EMIT reported(QStringLiteral("files of %1 removed").arg(day));
}

} // namespace morsehost
