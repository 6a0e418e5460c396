// SPDX-License-Identifier: MIT
#include "station/service/service.h"

#include "station/archive/archive.h"
#include "station/archive/spool.h"

#include <QDateTime>
#include <QDir>

#include <algorithm>
#include <chrono>
#include <set>
#include <utility>

namespace morsehost {

namespace {

constexpr int LOOK_ms = 10000;   // at the day and at the limits
constexpr int LOOKS_A_COUNT = 6; // of all files
constexpr int TICK_ms = 250;     // of what is shown live
constexpr std::size_t MOST_UNKEPT = 10000;
// Of a waterfall, since the last tick; who sends faster floods no page.
constexpr int MOST_ROWS = 8;

QString today()
{
    return QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd"));
}

// Of what has to be written to from the begin on.
QString folderFault(const StationConfiguration& configuration)
{
    for (const char* const name : {UNSENT, UNPUBLISHED}) {
        if (name == UNPUBLISHED && configuration.mqtt.url.isEmpty())
            continue;
        const QString folder = QDir(configuration.folder).filePath(QLatin1String(name));
        const QString fault = Spool::folderFault(folder);
        if (!fault.isEmpty())
            return folder + QStringLiteral(": ") + fault;
    }
    return {};
}

} // namespace

StationService::StationService(const QString& program, QObject* parent)
    : QObject(parent)
    , m_program(program)
{
    connect(&m_daily, &QTimer::timeout, this, [this] {
        changeDay();
        keepWithinLimits();
        keepUnsent();
        notifyPublishers();
    });
    connect(&m_tick, &QTimer::timeout, this, [this] {
        startWaiting();
        m_rowsShown.clear();
        showRecordings();
        for (Publisher* const publisher : m_publishers)
            publisher->tick();
    });
}

StationService::~StationService()
{
    stop();
}

bool StationService::configure(const StationConfiguration& configuration, QString& error)
{
    error = folderFault(configuration);
    if (!error.isEmpty())
        return false;
    const bool isFolderNew = configuration.folder != m_configuration.folder;
    std::unique_ptr<FolderLock> lock;
    if (!m_lock || isFolderNew) {
        lock = std::make_unique<FolderLock>(configuration.folder);
        if (!lock->error().isEmpty()) {
            error = configuration.folder + QStringLiteral(": ") + lock->error();
            return false;
        }
    }
    if (!m_archive || isFolderNew || configuration.archive != m_configuration.archive) {
        // Two writers never share a spool; the old one works until another folder is known to.
        const bool hadWriter = m_archive != nullptr;
        if (!isFolderNew)
            m_archive.reset();
        std::unique_ptr<ArchiveWriter> writer = writerFor(configuration);
        if (!writer->error().isEmpty()) {
            error = QStringLiteral("%1: %2").arg(configuration.folder, writer->error());
            writer.reset();
            if (hadWriter && !m_archive)
                m_archive = writerFor(m_configuration);
            return false;
        }
        m_archive = std::move(writer);
    }
    if (lock)
        m_lock = std::move(lock);
    const StationConfiguration before = std::exchange(m_configuration, configuration);
    configurePublishers(before);

    std::set<QString> wanted;
    for (const ReceiverSettings& settings : configuration.receivers)
        wanted.insert(settings.name);
    for (auto it = m_receivers.begin(); it != m_receivers.end();) {
        if (wanted.count(it->first) != 0) {
            ++it;
            continue;
        }
        letGo(std::move(it->second));
        Q_EMIT reported(QStringLiteral("%1: removed").arg(it->first));
        m_spectra.erase(it->first);
        m_recordings.erase(it->first);
        m_waiting.erase(it->first);
        it = m_receivers.erase(it);
    }
    for (const ReceiverSettings& settings : configuration.receivers) {
        const auto old = m_receivers.find(settings.name);
        const bool isThere = old != m_receivers.end();
        if (isThere && old->second->settings() == settings && !isFolderNew)
            continue;
        if (isThere)
            letGo(std::move(old->second));
        addReceiver(settings);
    }
    startWaiting();
    notifyPublishers();
    m_daily.start(LOOK_ms);
    m_tick.start(TICK_ms);
    return true;
}

std::unique_ptr<ArchiveWriter> StationService::writerFor(const StationConfiguration& configuration)
{
    return std::make_unique<ArchiveWriter>(
        ArchiveWriter::Settings{configuration.archive,
                                QDir(configuration.folder).filePath(QLatin1String(UNSENT))},
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
}

void StationService::addReceiver(const ReceiverSettings& settings)
{
    Receiver::Surroundings surroundings;
    surroundings.program = m_program;
    surroundings.saveFolder = saveFolder(settings);
    std::unique_ptr<Receiver>& receiver = m_receivers[settings.name];
    receiver = std::make_unique<Receiver>(settings, surroundings);
    Receiver* const source = receiver.get();
    connect(source, &Receiver::decoded, this,
            [this, source](const QJsonObject& object) { take(*source, object); });
    m_recordings.erase(settings.name);
    m_spectra.erase(settings.name);
    m_spectra.emplace(settings.name, SpectrumTap(settings.samples));
    // Only while there is a page to look at.
    connect(source, &Receiver::heard, this, [this, source](const QByteArray& samples) {
        const QString& name = source->settings().name;
        if (m_page && m_rowsShown[name] < MOST_ROWS)
            show(name, m_spectra.at(name).hear(samples));
        else
            m_spectra.at(name).skip(samples);
    });
    connect(source, &Receiver::begun, this, [this, source] {
        m_recordings.insert_or_assign(source->settings().name, RecordingTap(source->settings()));
    });
    connect(source, &Receiver::stateChanged, this, [this, source] {
        const QString& problem = source->problem();
        Q_EMIT reported(QStringLiteral("%1: %2%3")
                            .arg(source->settings().name, stateName(source->state()),
                                 problem.isEmpty() ? QString() : QStringLiteral(": ") + problem));
        notifyPublishers();
    });
    m_waiting.insert(settings.name);
}

// It finishes what it has; the others go on meanwhile.
void StationService::letGo(std::unique_ptr<Receiver> receiver)
{
    receiver->end();
    m_leaving.push_back(std::move(receiver));
}

// A tuner is free when the receiver that used it is over.
void StationService::startWaiting()
{
    m_leaving.erase(std::remove_if(m_leaving.begin(), m_leaving.end(),
                                   [](const auto& receiver) { return receiver->isOver(); }),
                    m_leaving.end());
    std::set<QString> occupied;
    for (const auto& receiver : m_leaving)
        occupied.insert(receiver->settings().name);
    for (auto name = m_waiting.begin(); name != m_waiting.end();) {
        if (occupied.count(*name) != 0) {
            ++name;
            continue;
        }
        m_receivers.at(*name)->start();
        name = m_waiting.erase(name);
    }
}

void StationService::configurePublishers(const StationConfiguration& before)
{
    const StationConfiguration& now = m_configuration;
    const bool isPageAsBefore = now.page == before.page && now.name == before.name &&
                                now.archive == before.archive && now.folder == before.folder;
    const auto report = [this](const QString& line) {
        // Also from threads of the publishers.
        QMetaObject::invokeMethod(this, [this, line] { Q_EMIT reported(line); });
    };
    m_publishers.clear();
    if (!isPageAsBefore)
        m_page.reset(); // its address may be wanted again
    if (!m_page && !now.page.address.isEmpty())
        m_page =
            std::make_unique<PagePublisher>(now.page, now.name, now.archive, now.folder, report);
    if (m_mqtt && !(now.mqtt == before.mqtt)) {
        m_mqtt->withdraw();
        m_mqtt.reset(); // two never share a folder
    }
    if (!m_mqtt && !now.mqtt.url.isEmpty()) {
        m_mqtt = std::make_unique<MqttPublisher>(now.mqtt, report);
        if (!m_mqtt->error().isEmpty())
            report(QStringLiteral("mqtt: %1: %2").arg(now.mqtt.folder, m_mqtt->error()));
    }
    for (Publisher* const publisher :
         {static_cast<Publisher*>(m_page.get()), static_cast<Publisher*>(m_mqtt.get())}) {
        if (publisher)
            m_publishers.push_back(publisher);
    }
}

void StationService::notifyPublishers()
{
    std::vector<ReceiverFacts> all;
    for (const auto& [name, receiver] : m_receivers) {
        all.push_back({name, receiver->settings().decoder, stateName(receiver->state()),
                       receiver->problem(), receiver->bytesLost(),
                       receiver->settings().frequency_Hz});
    }
    for (Publisher* const publisher : m_publishers)
        publisher->receivers(all);
}

int StationService::pagePort() const
{
    return m_page ? m_page->port() : 0;
}

void StationService::stop()
{
    m_daily.stop();
    m_tick.stop();
    // All at once, and then each is waited for.
    for (const auto& [name, receiver] : m_receivers)
        receiver->end();
    for (const auto& [name, receiver] : m_receivers)
        receiver->stop();
    for (const auto& receiver : m_leaving)
        receiver->stop();
    m_receivers.clear();
    m_leaving.clear();
    m_waiting.clear();
    m_recordings.clear();
    m_publishers.clear();
    m_page.reset();
    m_mqtt.reset();
    keepUnsent();
    if (m_archive)
        m_archive->flush();
    m_archive.reset();
    m_lock.reset();
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
    return settings.isSaved ? QDir(m_configuration.folder)
                                  .filePath(QStringLiteral("files/{day}/") + settings.name)
                            : QString();
}

void StationService::take(const Receiver& receiver, const QJsonObject& object)
{
    for (Publisher* const publisher : m_publishers)
        publisher->heard(receiver.settings().name, object);
    if (object.value(QLatin1String("event")) != QLatin1String("transmission"))
        return;
    Transmission transmission = transmissionOf(object);
    transmission.receiver = receiver.settings().name;
    const ArchiveRecord record{keyOfHeard(), m_configuration.name, transmission};
    m_unkept.push_back(record);
    keepUnsent();
    for (Publisher* const publisher : m_publishers)
        publisher->transmission(record);
    Q_EMIT received(record);
}

// What a full disk does not take is kept in memory until there is room.
void StationService::keepUnsent()
{
    while (!m_unkept.empty() && m_archive && m_archive->add(m_unkept.front()))
        m_unkept.pop_front();
    if (m_unkept.empty() && m_isDiskReported)
        Q_EMIT reported(QStringLiteral("archive: the disk takes transmissions again"));
    if (!m_unkept.empty() && !m_isDiskReported)
        Q_EMIT reported(
            QStringLiteral("archive: %1; the latest %2 transmissions are kept in memory")
                .arg(m_archive ? m_archive->error() : QString())
                .arg(MOST_UNKEPT));
    m_isDiskReported = !m_unkept.empty();
    if (m_unkept.size() > MOST_UNKEPT)
        m_unkept.pop_front();
}

void StationService::show(const QString& receiver, const std::vector<QJsonObject>& rows)
{
    int& shown = m_rowsShown[receiver];
    for (const QJsonObject& row : rows) {
        if (shown++ < MOST_ROWS)
            m_page->heard(receiver, row);
    }
}

void StationService::showRecordings()
{
    if (!m_page)
        return;
    for (auto& [name, recording] : m_recordings)
        show(name, recording.advance(TICK_ms / 1000.0));
}

// Decoders begin the folder of a day by themselves; their clocks are set once a day.
void StationService::changeDay()
{
    const QString before = std::exchange(m_day, today());
    if (before.isEmpty() || before == m_day)
        return;
    for (const auto& [name, receiver] : m_receivers)
        receiver->renewInPause();
}

// Many files take a while to be counted; the receivers do not wait for that.
void StationService::keepFiles(const FileLimits& limits)
{
    if (m_removing.valid() &&
        m_removing.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return;
    if (m_removing.valid()) {
        const RemovedFiles removed = m_removing.get();
        for (const QString& day : removed.days)
            Q_EMIT reported(QStringLiteral("files of %1 removed").arg(day));
        if (removed.ofToday > 0)
            Q_EMIT reported(QStringLiteral("the oldest %1 files of today removed: keep_gigabytes")
                                .arg(removed.ofToday));
    }
    if (m_looks++ % LOOKS_A_COUNT == 0 && (limits.keepDays > 0 || limits.keepBytes > 0))
        m_removing =
            std::async(std::launch::async, [this, limits] { return m_files.keep(limits); });
}

void StationService::keepWithinLimits()
{
    const QString files = QDir(m_configuration.folder).filePath(QStringLiteral("files"));
    const bool isClockSteady =
        m_clock.isSteady(QDateTime::currentMSecsSinceEpoch(),
                         std::chrono::duration_cast<std::chrono::milliseconds>(
                             std::chrono::steady_clock::now().time_since_epoch())
                             .count());
    keepFiles({files, isClockSteady ? m_configuration.keepDays : 0,
               qint64(m_configuration.keepGigabytes * 1e9), today(),
               QDateTime::currentMSecsSinceEpoch()});
    ArchiveLimits limits;
    limits.station = m_configuration.name;
    if (isClockSteady && m_configuration.archiveDays > 0)
        limits.before_us = beginOfKeptDays_us(today(), m_configuration.archiveDays);
    limits.mostBytes = qint64(m_configuration.archiveGigabytes * 1e9);
    if (limits.isAny())
        m_archive->prune(limits);
}

} // namespace morsehost
