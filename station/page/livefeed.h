// SPDX-License-Identifier: MIT
// What goes on at the station now, for those who look at it: the whole state for one who comes,
// then what changes.
#pragma once

#include "station/archive/record.h"
#include "station/page/eventstream.h"
#include "station/publisher.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

namespace morsehost {

/// Called as a Publisher is, but from any thread. What is kept is bounded: signals of a receiver,
/// last words of a signal, the latest transmissions.
class LiveFeed
{
public:
    explicit LiveFeed(const QString& station);

    void receivers(const std::vector<ReceiverFacts>& all);
    void heard(const QString& receiver, const QJsonObject& object);
    void transmission(const ArchiveRecord& record);
    /// Sends what has changed since the last call; to be called four times a second, so that each
    /// character is not an event of its own. Who was heard by a receiver of one signal is gone half
    /// a minute after the end, as in a band.
    void flush();

    /// For one more reader: the state, and from then on what changes.
    std::shared_ptr<EventStream> subscribe();

private:
    struct Signal
    {
        QJsonObject facts; ///< frequency, strength, speed
        QString words;     ///< the last
        QString since;
        bool isOver = false; ///< what comes next is another transmission
        int ticksOver = 0;   ///< since then
    };
    struct Receiver
    {
        ReceiverFacts facts;
        std::map<int, Signal> present;
        std::set<int> changed;
        std::set<int> gone;
    };

    static void forgetSignals(Receiver& receiver);
    static void forgetSilent(Receiver& receiver);
    static void hearText(Receiver& receiver, int number, const QString& text, const QString& at);
    void publish(const char* kind, const QJsonObject& object);
    static QJsonObject signalObject(int number, const Signal& signal);

    std::mutex m_mutex;
    QString m_station;
    std::map<QString, Receiver> m_receivers;
    std::deque<QJsonObject> m_latest; ///< transmissions, the oldest first
    std::vector<std::weak_ptr<EventStream>> m_readers;
};

/// A transmission as it is shown: its fields, station and files' names.
QJsonObject shownObject(const ArchiveRecord& record);

} // namespace morsehost
