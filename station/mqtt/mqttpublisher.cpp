// SPDX-License-Identifier: MIT
#include "station/mqtt/mqttpublisher.h"

#include "station/archive/record.h"
#include "station/archive/spool.h"

#include <QJsonDocument>
#include <QUrl>

#include <mosquitto.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

namespace morsehost {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int PLAIN_PORT = 1883;
constexpr int TLS_PORT = 8883;
constexpr int KEEP_ALIVE_s = 30;
constexpr int LOOP_ms = 100;
constexpr std::chrono::seconds ANSWER_TIME{30};  // of a broker that is being connected
constexpr std::chrono::seconds FAREWELL_TIME{2}; // for what is under way at the end
constexpr int AT_ONCE = 20;
constexpr int CONFIRMED = 1; // quality of service
// A broker that is away for months does not fill the disk.
constexpr qint64 MOST_WAITING_BYTES = qint64{256} << 20;
// Nor does a full disk fill the memory.
constexpr qint64 MOST_UNKEPT_BYTES = qint64{8} << 20;

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QString wordsOf(int error)
{
    return QString::fromLocal8Bit(mosquitto_strerror(error));
}

} // namespace

bool MqttSettings::operator==(const MqttSettings& other) const
{
    return url == other.url && ca == other.ca && station == other.station && folder == other.folder;
}

QString mqttUrlFault(const QString& url)
{
    const QUrl parsed(url);
    const bool isScheme =
        parsed.scheme() == QLatin1String("mqtt") || parsed.scheme() == QLatin1String("mqtts");
    if (!parsed.isValid() || !isScheme || parsed.host().isEmpty())
        return QStringLiteral("not mqtt://HOST/PREFIX or mqtts://HOST/PREFIX");
    const QString prefix = parsed.path().mid(1);
    const bool hasWildcard = parsed.hasFragment() || prefix.contains(QLatin1Char('+')) ||
                             prefix.contains(QLatin1Char('#'));
    if (hasWildcard)
        return QStringLiteral("a prefix has neither '+' nor '#'");
    if (parsed.hasQuery())
        return QStringLiteral("a '?' in a prefix is written as %3F");
    if (!prefix.isEmpty() && prefix.split(QLatin1Char('/')).contains(QString()))
        return QStringLiteral("a prefix has no empty level");
    return {};
}

class MqttPublisher::Private
{
public:
    Private(const MqttSettings& settings, Report report)
        : m_settings(settings)
        , m_report(std::move(report))
        , m_spool(settings.folder)
        , m_error(m_spool.error())
    {
        const QUrl url(settings.url);
        for (const QString& part : {url.path().mid(1), settings.station}) {
            if (!part.isEmpty())
                m_root += (part + QLatin1Char('/')).toUtf8();
        }
        if (!m_error.isEmpty())
            return;
        mosquitto_lib_init();
        m_thread = std::thread([this] { run(); });
    }

    ~Private()
    {
        if (!m_thread.joinable())
            return;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isStopping = true;
        }
        m_changed.notify_all();
        m_thread.join();
        mosquitto_lib_cleanup();
    }

    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;

    const QString& error() const { return m_error; }

    void receivers(const std::vector<ReceiverFacts>& all)
    {
        std::map<QByteArray, QByteArray> states;
        for (const ReceiverFacts& one : all) {
            states["receiver/" + one.name.toUtf8() + "/state"] =
                compact({{QStringLiteral("state"), one.state},
                         {QStringLiteral("problem"), one.problem},
                         {QStringLiteral("decoder"), one.decoder},
                         {QStringLiteral("bytes_lost"), double(one.bytesLost)}});
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        // An empty message takes a retained one away.
        for (const auto& [topic, state] : m_states) {
            if (states.count(topic) == 0)
                m_changedStates[topic].clear();
        }
        for (const auto& [topic, state] : states) {
            const auto known = m_states.find(topic);
            if (known == m_states.end() || known->second != state)
                m_changedStates[topic] = state;
        }
        m_states = std::move(states);
    }

    void add(const QByteArray& line)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_unkept.push_back(line);
        m_unkeptBytes += line.size();
        keepUnkept();
    }

    // What a full disk did not take.
    void tryAgain()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_unkept.empty())
            keepUnkept();
    }

    void withdraw()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isWithdrawn = true;
    }

private:
    void dropOldest()
    {
        m_unkeptBytes -= m_unkept.front().size();
        m_unkept.pop_front();
    }

    // In order, so that those behind wait too. With the lock.
    void keepUnkept()
    {
        const bool isFull = m_spool.size() >= MOST_WAITING_BYTES;
        while (!isFull && !m_unkept.empty() && m_spool.append(m_unkept.front()))
            dropOldest();
        bool isLost = false;
        while (m_unkeptBytes > MOST_UNKEPT_BYTES) {
            dropOldest();
            isLost = true;
        }
        const Disk disk = isLost ? Disk::Loses : m_unkept.empty() ? Disk::Takes : Disk::Refuses;
        if (disk == m_disk || (disk == Disk::Refuses && m_disk == Disk::Loses))
            return;
        m_disk = disk;
        const QString reason = isFull ? QStringLiteral("too many wait") : m_spool.error();
        if (disk == Disk::Takes)
            m_report(QStringLiteral("mqtt: the disk takes transmissions again"));
        else if (disk == Disk::Refuses)
            m_report(QStringLiteral("mqtt: %1; transmissions are kept in memory").arg(reason));
        else
            m_report(QStringLiteral("mqtt: the oldest transmissions are lost: %1").arg(reason));
    }

    bool isStopping()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_isStopping;
    }

    void run()
    {
        std::chrono::milliseconds pause = m_settings.firstPause;
        while (!isStopping()) {
            const QString problem = serve();
            if (m_wasConnected)
                pause = m_settings.firstPause;
            if (!problem.isEmpty() && problem != m_problem)
                m_report(
                    QStringLiteral("mqtt: %1; transmissions are kept and sent later").arg(problem));
            m_problem = problem;
            std::unique_lock<std::mutex> lock(m_mutex);
            m_changed.wait_for(lock, pause, [this] { return m_isStopping; });
            pause = std::min(2 * pause, m_settings.longestPause);
        }
    }

    // One connection, from its begin to its end. Returns what ended it.
    QString serve()
    {
        m_wasConnected = false;
        m_isConnected = false;
        m_refusal.clear();
        m_underWay.clear();
        m_sent = 0;
        const std::unique_ptr<mosquitto, void (*)(mosquitto*)> client(
            mosquitto_new(nullptr, true, this), mosquitto_destroy);
        if (!client)
            return QStringLiteral("out of memory");
        mosquitto_connect_callback_set(client.get(), [](mosquitto*, void* self, int result) {
            static_cast<Private*>(self)->connected(result);
        });
        mosquitto_publish_callback_set(client.get(), [](mosquitto*, void* self, int message) {
            static_cast<Private*>(self)->m_underWay.erase(message);
        });
        if (const int error = connect(client.get()); error != MOSQ_ERR_SUCCESS)
            return wordsOf(error);
        const Clock::time_point begin = Clock::now();
        bool isGreeted = false;
        while (!isStopping()) {
            const int error = mosquitto_loop(client.get(), LOOP_ms, 1);
            if (!m_refusal.isEmpty())
                return m_refusal;
            if (error != MOSQ_ERR_SUCCESS)
                return wordsOf(error);
            if (!m_isConnected) {
                if (Clock::now() - begin > ANSWER_TIME)
                    return QStringLiteral("the broker does not answer");
                continue;
            }
            if (!isGreeted)
                greet(client.get());
            isGreeted = true;
            sendStates(client.get());
            if (!sendTransmissions(client.get()))
                return QStringLiteral("cannot record which transmissions were sent");
        }
        farewell(client.get());
        return {};
    }

    int connect(mosquitto* client)
    {
        const QUrl url(m_settings.url);
        const bool isTls = url.scheme() == QLatin1String("mqtts");
        int error = MOSQ_ERR_SUCCESS;
        if (isTls) {
            const QByteArray ca = m_settings.ca.toLocal8Bit();
            error = mosquitto_tls_set(client, ca.isEmpty() ? nullptr : ca.constData(),
                                      ca.isEmpty() ? "/etc/ssl/certs" : nullptr, nullptr, nullptr,
                                      nullptr);
        }
        if (error == MOSQ_ERR_SUCCESS && !url.userName().isEmpty())
            error = mosquitto_username_pw_set(
                client, url.userName(QUrl::FullyDecoded).toUtf8().constData(),
                url.password(QUrl::FullyDecoded).toUtf8().constData());
        const QByteArray will = "offline";
        if (error == MOSQ_ERR_SUCCESS)
            error = mosquitto_will_set(client, (m_root + "state").constData(), will.size(),
                                       will.constData(), CONFIRMED, true);
        if (error == MOSQ_ERR_SUCCESS)
            error = mosquitto_connect_async(client, url.host().toUtf8().constData(),
                                            url.port(isTls ? TLS_PORT : PLAIN_PORT), KEEP_ALIVE_s);
        return error;
    }

    void connected(int result)
    {
        if (result != 0) {
            m_refusal = QString::fromLocal8Bit(mosquitto_connack_string(result));
            return;
        }
        m_isConnected = true;
        m_wasConnected = true;
        m_problem.clear();
        m_report(QStringLiteral("mqtt: connected"));
    }

    int publish(mosquitto* client, const QByteArray& topic, const QByteArray& payload, bool isKept)
    {
        int message = 0;
        const int error = mosquitto_publish(client, &message, (m_root + topic).constData(),
                                            payload.size(), payload.constData(), CONFIRMED, isKept);
        if (error == MOSQ_ERR_SUCCESS)
            m_underWay.insert(message);
        return error;
    }

    // A broker that was away may have forgotten all that it retained.
    void greet(mosquitto* client)
    {
        publish(client, "state", "online", true);
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& [topic, state] : m_states)
            m_changedStates[topic] = state;
    }

    void sendStates(mosquitto* client)
    {
        std::map<QByteArray, QByteArray> states;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            states = std::exchange(m_changedStates, {});
        }
        for (const auto& [topic, state] : states)
            publish(client, topic, state, true);
    }

    // The next ones are sent when all before them are confirmed.
    bool sendTransmissions(mosquitto* client)
    {
        if (!m_underWay.empty())
            return true;
        std::vector<QByteArray> lines;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!m_spool.take(m_sent))
                return false;
            lines = m_spool.oldest(AT_ONCE);
        }
        m_sent = static_cast<int>(lines.size());
        for (const QByteArray& line : lines) {
            const QString receiver =
                QJsonDocument::fromJson(line).object().value(QLatin1String("receiver")).toString();
            // A name that no topic can have is of no message of ours.
            if (!receiver.isEmpty())
                publish(client, "receiver/" + receiver.toUtf8() + "/transmission", line, false);
        }
        return true;
    }

    void farewell(mosquitto* client)
    {
        if (!m_isConnected)
            return;
        const Clock::time_point end = Clock::now() + FAREWELL_TIME;
        const auto goesOn = [&] {
            return !m_underWay.empty() && Clock::now() < end &&
                   mosquitto_loop(client, LOOP_ms, 1) == MOSQ_ERR_SUCCESS;
        };
        while (sendTransmissions(client) && goesOn()) {
        }
        leaveStates(client);
        while (goesOn()) {
        }
        mosquitto_disconnect(client);
        mosquitto_loop(client, LOOP_ms, 1);
    }

    // Receivers have stopped; of topics that are given up nothing stays.
    void leaveStates(mosquitto* client)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& [topic, state] : m_states) {
            QJsonObject object = QJsonDocument::fromJson(state).object();
            object.insert(QStringLiteral("state"), QStringLiteral("stopped"));
            object.insert(QStringLiteral("problem"), QString());
            publish(client, topic, m_isWithdrawn ? QByteArray() : compact(object), true);
        }
        publish(client, "state", m_isWithdrawn ? "" : "offline", true);
    }

    enum class Disk { Takes, Refuses, Loses };

    MqttSettings m_settings;
    Report m_report;
    QByteArray m_root;  ///< of all topics
    std::mutex m_mutex; ///< guards what follows, up to the thread's own
    std::condition_variable m_changed;
    Spool m_spool;
    bool m_isStopping = false;
    bool m_isWithdrawn = false;
    std::deque<QByteArray> m_unkept; ///< that the disk has not taken, the oldest first
    qint64 m_unkeptBytes = 0;
    Disk m_disk = Disk::Takes;                 ///< as reported
    std::map<QByteArray, QByteArray> m_states; ///< by topic
    std::map<QByteArray, QByteArray> m_changedStates;
    // The thread's own.
    QString m_problem;
    QString m_refusal;
    bool m_isConnected = false;
    bool m_wasConnected = false;
    std::set<int> m_underWay; ///< messages that the broker has not confirmed
    int m_sent = 0;           ///< the oldest lines that are sent
    QString m_error;
    std::thread m_thread;
};

MqttPublisher::MqttPublisher(const MqttSettings& settings, Report report)
    : m_d(std::make_unique<Private>(settings, std::move(report)))
{
}

MqttPublisher::~MqttPublisher() = default;

const QString& MqttPublisher::error() const
{
    return m_d->error();
}

void MqttPublisher::receivers(const std::vector<ReceiverFacts>& all)
{
    m_d->receivers(all);
}

void MqttPublisher::heard(const QString& /*receiver*/, const QJsonObject& /*object*/) {}

void MqttPublisher::transmission(const ArchiveRecord& record)
{
    QJsonObject object = toJson(record.transmission);
    object.insert(QStringLiteral("key"), record.key);
    if (!record.station.isEmpty())
        object.insert(QStringLiteral("station"), record.station);
    m_d->add(compact(object));
}

void MqttPublisher::tick()
{
    m_d->tryAgain();
}

void MqttPublisher::withdraw()
{
    m_d->withdraw();
}

} // namespace morsehost
