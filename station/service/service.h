// SPDX-License-Identifier: MIT
// A station that runs by itself: its receivers, and where what they hear goes.
#pragma once

#include "station/archive/record.h"
#include "station/archive/writer.h"
#include "station/io/folderlock.h"
#include "station/page/pagepublisher.h"
#include "station/service/receiver.h"
#include "station/service/recordingtap.h"
#include "station/service/retention.h"
#include "station/service/spectrumtap.h"
#include "station/service/stationfile.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <deque>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace morsehost {

/// Runs in the thread of its event loop.
class StationService : public QObject
{
    Q_OBJECT

public:
    /// `program` is the path of this program, which the decoders are run with.
    explicit StationService(const QString& program, QObject* parent = nullptr);
    ~StationService() override;

    /// Does what the configuration says; what was the same before goes on undisturbed. A receiver
    /// that is removed or replaced ends in its own time, and its successor begins when it has
    /// ended. False, with the reason, when the folder cannot be used,
    /// for instance because another station uses it; then all is as it was.
    bool configure(const StationConfiguration& configuration, QString& error);
    /// Ends the receivers, lets the decoders finish, and sends what can be sent.
    void stop();

    std::vector<const Receiver*> receivers() const;
    /// Of the page; 0 while there is none.
    int pagePort() const;

Q_SIGNALS:
    /// A line for the log.
    void reported(const QString& line);
    void received(const morsehost::ArchiveRecord& record);

private:
    void take(const Receiver& receiver, const QJsonObject& object);
    void configurePublishers(const StationConfiguration& before);
    void notifyPublishers();
    std::unique_ptr<ArchiveWriter> writerFor(const StationConfiguration& configuration);
    void addReceiver(const ReceiverSettings& settings);
    void letGo(std::unique_ptr<Receiver> receiver);
    void startWaiting();
    void keepUnsent();
    void show(const QString& receiver, const std::vector<QJsonObject>& rows);
    void showRecordings();
    void changeDay();
    void keepWithinLimits();
    void keepFiles(const FileLimits& limits);
    QString saveFolder(const ReceiverSettings& settings) const;

    QString m_program;
    StationConfiguration m_configuration;
    std::unique_ptr<FolderLock> m_lock; ///< of the folder; two stations would send all twice
    std::unique_ptr<ArchiveWriter> m_archive;
    std::map<QString, std::unique_ptr<Receiver>> m_receivers; ///< by name
    std::vector<std::unique_ptr<Receiver>> m_leaving; ///< replaced or removed, and not over yet
    std::set<QString> m_waiting;              ///< those that start when their predecessor is over
    std::map<QString, SpectrumTap> m_spectra; ///< likewise
    std::map<QString, RecordingTap> m_recordings; ///< likewise, of those that are heard
    std::map<QString, int> m_rowsShown;           ///< likewise, since the last tick
    std::unique_ptr<PagePublisher> m_page;
    std::unique_ptr<MqttPublisher> m_mqtt;
    std::vector<Publisher*> m_publishers; ///< those that there are
    SteadyClock m_clock;
    FileKeeper m_files;                   ///< used by what goes on there:
    std::future<RemovedFiles> m_removing; ///< not valid while there is nothing
    int m_looks = 0;
    QString m_day; ///< when it was looked at last
    QTimer m_daily;
    QTimer m_tick;
    std::deque<ArchiveRecord> m_unkept; ///< that the disk has not taken, the oldest first
    bool m_isDiskReported = false;
};

} // namespace morsehost
