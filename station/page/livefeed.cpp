// SPDX-License-Identifier: MIT
#include "station/page/livefeed.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace morsehost {

namespace {

constexpr int LAST_WORDS = 160; // characters
constexpr std::size_t MOST_SIGNALS = 5000;
constexpr std::size_t MOST_LATEST = 100;
// A transmission may be long; the archive has all of it.
constexpr int SHOWN_TEXT = 4000;
constexpr int SILENT_TICKS = 120; // half a minute

const QLatin1String EVENT("event");
const QLatin1String NUMBER("number");
const QLatin1String STATE("state");
const QLatin1String TEXT("text");

QByteArray eventBytes(const char* kind, const QJsonObject& object)
{
    return QByteArray("event: ") + kind +
           "\ndata: " + QJsonDocument(object).toJson(QJsonDocument::Compact) + "\n\n";
}

QJsonObject receiverObject(const ReceiverFacts& receiver)
{
    return {{QStringLiteral("name"), receiver.name},
            {QStringLiteral("decoder"), receiver.decoder},
            {QStringLiteral("state"), receiver.state},
            {QStringLiteral("problem"), receiver.problem},
            {QStringLiteral("bytes_lost"), double(receiver.bytesLost)}};
}

// What of a signal is known from an object about it.
void takeFacts(QJsonObject& facts, const QJsonObject& object)
{
    for (const char* const name :
         {"frequency_Hz", "tone_Hz", "snr_dB", "speed_wpm", "baud_rate", "decoder"}) {
        const QJsonValue value = object.value(QLatin1String(name));
        if (!value.isUndefined())
            facts.insert(QLatin1String(name), value);
    }
}

// What is known of a single signal before its end.
QJsonObject tunedFacts(const ReceiverFacts& receiver)
{
    QJsonObject facts = {{QStringLiteral("decoder"), receiver.decoder}};
    if (receiver.frequency_Hz)
        facts.insert(QStringLiteral("frequency_Hz"), *receiver.frequency_Hz);
    return facts;
}

} // namespace

QJsonObject shownObject(const ArchiveRecord& record)
{
    QJsonObject object = toJson(record.transmission);
    object.remove(EVENT);
    if (record.transmission.text.size() > SHOWN_TEXT)
        object.insert(TEXT, record.transmission.text.left(SHOWN_TEXT) + QChar(0x2026));
    object.insert(QStringLiteral("station"), record.station);
    object.insert(QStringLiteral("key"), record.key);
    QJsonArray files;
    for (const QString& file : record.transmission.files)
        files.append(QFileInfo(file).fileName());
    object.insert(QStringLiteral("files"), files);
    return object;
}

LiveFeed::LiveFeed(const QString& station)
    : m_station(station)
{
}

void LiveFeed::receivers(const std::vector<ReceiverFacts>& all)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::set<QString> wanted;
    for (const ReceiverFacts& facts : all) {
        wanted.insert(facts.name);
        const auto found = m_receivers.find(facts.name);
        if (found != m_receivers.end() && found->second.facts == facts)
            continue;
        Receiver& receiver = m_receivers[facts.name];
        receiver.facts = facts;
        // It is down; what is heard next has other numbers.
        if (!facts.problem.isEmpty())
            forgetSignals(receiver);
        publish("receiver", receiverObject(facts));
    }
    for (auto it = m_receivers.begin(); it != m_receivers.end();) {
        if (wanted.count(it->first) != 0) {
            ++it;
            continue;
        }
        publish("removed", {{QStringLiteral("name"), it->first}});
        it = m_receivers.erase(it);
    }
}

void LiveFeed::heard(const QString& name, const QJsonObject& object)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_receivers.find(name);
    if (found == m_receivers.end())
        return;
    Receiver& receiver = found->second;
    const QString event = object.value(EVENT).toString();
    const QString at = object.value(QLatin1String("at")).toString();
    // A decoder of one signal does not number it.
    const int number = object.value(NUMBER).toInt();
    const bool isBand = receiver.facts.decoder == QLatin1String("band");
    if (event == QLatin1String("character") || event == TEXT) {
        hearText(receiver, number, object.value(TEXT).toString(), at);
    } else if (event == QLatin1String("word")) {
        hearText(receiver, number, QStringLiteral(" "), at);
    } else if (event == QLatin1String("line")) {
        hearText(receiver, number, QStringLiteral("\n"), at);
    } else if (event == QLatin1String("signal") && object.value(STATE) == QLatin1String("lost")) {
        receiver.present.erase(number);
        receiver.changed.erase(number);
        receiver.gone.insert(number);
    } else if (event == QLatin1String("signal")) {
        hearText(receiver, number, QString(), at);
        if (receiver.present.count(number) != 0)
            takeFacts(receiver.present[number].facts, object);
    } else if (event == QLatin1String("transmission")) {
        const int signal = isBand ? number : 0;
        const auto present = receiver.present.find(signal);
        if (present == receiver.present.end())
            return;
        takeFacts(present->second.facts, object);
        present->second.isOver = true;
        present->second.ticksOver = 0;
        receiver.changed.insert(signal);
    } else if (event == QLatin1String("spectrum")) {
        QJsonObject row = object;
        row.insert(QStringLiteral("receiver"), name);
        publish("spectrum", row);
    }
}

void LiveFeed::forgetSignals(Receiver& receiver)
{
    for (const auto& [number, signal] : receiver.present)
        receiver.gone.insert(number);
    receiver.present.clear();
    receiver.changed.clear();
}

// A band says itself when a signal is lost.
void LiveFeed::forgetSilent(Receiver& receiver)
{
    const auto only = receiver.present.find(0);
    if (only == receiver.present.end() || !only->second.isOver ||
        ++only->second.ticksOver < SILENT_TICKS)
        return;
    receiver.present.erase(only);
    receiver.changed.erase(0);
    receiver.gone.insert(0);
}

void LiveFeed::hearText(Receiver& receiver, int number, const QString& text, const QString& at)
{
    if (receiver.present.count(number) == 0 && receiver.present.size() >= MOST_SIGNALS)
        return;
    Signal& signal = receiver.present[number];
    // A blank or the end of a line belongs to what was before.
    const bool begins = signal.isOver || signal.since.isEmpty();
    if (begins && !text.trimmed().isEmpty()) {
        signal.since = at;
        signal.isOver = false;
        // It may be another one; how fast and strong it is, its end shows.
        if (number == 0)
            signal.facts = tunedFacts(receiver.facts);
    }
    signal.words = (signal.words + text).right(LAST_WORDS);
    receiver.changed.insert(number);
    receiver.gone.erase(number);
}

QJsonObject LiveFeed::signalObject(int number, const Signal& signal)
{
    QJsonObject object = signal.facts;
    object.insert(NUMBER, number);
    object.insert(TEXT, signal.words);
    object.insert(QStringLiteral("since"), signal.since);
    return object;
}

void LiveFeed::transmission(const ArchiveRecord& record)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const QJsonObject object = shownObject(record);
    m_latest.push_back(object);
    if (m_latest.size() > MOST_LATEST)
        m_latest.pop_front();
    publish("transmission", object);
}

void LiveFeed::flush()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (auto& [name, receiver] : m_receivers) {
        forgetSilent(receiver);
        if (receiver.changed.empty() && receiver.gone.empty())
            continue;
        QJsonArray present;
        for (const int number : receiver.changed)
            present.append(signalObject(number, receiver.present[number]));
        QJsonArray gone;
        for (const int number : receiver.gone)
            gone.append(number);
        receiver.changed.clear();
        receiver.gone.clear();
        publish("signals", {{QStringLiteral("receiver"), name},
                            {QStringLiteral("present"), present},
                            {QStringLiteral("gone"), gone}});
    }
}

void LiveFeed::publish(const char* kind, const QJsonObject& object)
{
    const QByteArray bytes = eventBytes(kind, object);
    m_readers.erase(std::remove_if(m_readers.begin(), m_readers.end(),
                                   [&bytes](const std::weak_ptr<EventStream>& weak) {
                                       const auto reader = weak.lock();
                                       return !reader || !reader->push(bytes);
                                   }),
                    m_readers.end());
}

std::shared_ptr<EventStream> LiveFeed::subscribe()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    QJsonArray receivers;
    for (const auto& [name, receiver] : m_receivers) {
        QJsonArray present;
        for (const auto& [number, signal] : receiver.present)
            present.append(signalObject(number, signal));
        QJsonObject object = receiverObject(receiver.facts);
        object.insert(QStringLiteral("present"), present);
        receivers.append(object);
    }
    QJsonArray latest;
    for (const QJsonObject& one : m_latest)
        latest.append(one);
    // A whole state may be large; what comes after it waits behind.
    const QByteArray state = eventBytes("state", {{QStringLiteral("station"), m_station},
                                                  {QStringLiteral("receivers"), receivers},
                                                  {QStringLiteral("latest"), latest}});
    auto reader = std::make_shared<EventStream>(static_cast<std::size_t>(state.size()) +
                                                (std::size_t{1} << 20));
    reader->push(state);
    m_readers.push_back(reader);
    return reader;
}

} // namespace morsehost
