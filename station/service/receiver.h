// SPDX-License-Identifier: MIT
// One receiver of a station: where its samples come from, the decoder that they go through, and how
// both are kept alive.
#pragma once

#include "station/service/stationfile.h"

#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QProcess>
#include <QTimer>

#include <memory>
#include <set>
#include <vector>

class QTcpSocket;

namespace morsehost {

/// How a receiver is.
enum class ReceiverState {
    Starting, ///< no sample yet
    Running,
    Down,  ///< ended or stalled; it is started again
    Ended, ///< a recording that is over and does not begin again
};
QString stateName(ReceiverState state);

/// Words of the decoder's command line; with an empty folder, which may hold "{day}", nothing is
/// saved.
QStringList decoderWords(const ReceiverSettings& settings, const QString& saveFolder);

/// Runs in the thread of its event loop. The source (a command, a socket) and the decoder (this
/// program, as a process of its own) are joined here, so that samples are counted, a source that
/// stalls is noticed, and what the decoder does not take in time is bounded: then samples are lost,
/// and that is reported.
class Receiver : public QObject
{
    Q_OBJECT

public:
    struct Surroundings
    {
        QString program;      ///< path of this program
        QString saveFolder;   ///< that the decoder saves into; empty when nothing is saved
        int quiet_ms = 30000; ///< without an event: nobody is heard
        int firstPause_ms = 1000;
        int longestPause_ms = 300000;
    };

    Receiver(const ReceiverSettings& settings, const Surroundings& surroundings,
             QObject* parent = nullptr);
    ~Receiver() override;

    const ReceiverSettings& settings() const { return m_settings; }
    ReceiverState state() const { return m_state; }
    /// Why it is down; empty otherwise.
    const QString& problem() const { return m_problem; }
    qint64 bytesLost() const { return m_bytesLost; }

    void start();
    /// Ends the source and lets the decoder finish what it has; after a few seconds the decoder is
    /// ended without that. Returns at once.
    void end();
    /// Whether source and decoders have ended.
    bool isOver() const;
    /// Ends it, and returns when it is over.
    void stop();
    /// Replaces the decoder when nobody is heard, so that no transmission is cut: the time that it
    /// gives is counted by the samples since it began. The source goes on. A recording's decoder is
    /// as new as its repetition.
    void renewInPause();

Q_SIGNALS:
    /// An object that the decoder wrote.
    void decoded(const QJsonObject& object);
    /// What the source sent, on its way to the decoder.
    void heard(const QByteArray& samples);
    /// A recording is heard from its beginning.
    void begun();
    void stateChanged();

private:
    class Child;
    class Decoder;

    void startDecoder();
    void startSource();
    void startCommand();
    void forward(const QByteArray& samples);
    QByteArray withoutWholeSamples(const QByteArray& samples);
    void read(Decoder& decoder);
    void sourceEnded(const QString& problem);
    void decoderEnded(Decoder& decoder);
    void forget(Decoder& decoder);
    void endSource();
    bool isSourceThere() const;
    void dismissDecoder();
    void goDown(const QString& problem);
    void watch(const QJsonObject& object);
    void quiet();
    void setState(ReceiverState state, const QString& problem = {});

    ReceiverSettings m_settings;
    Surroundings m_surroundings;
    ReceiverState m_state = ReceiverState::Starting;
    QString m_problem;
    std::unique_ptr<Child> m_source;
    QString m_sourceError;
    std::unique_ptr<QTcpSocket> m_socket;
    std::unique_ptr<Decoder> m_decoder;                ///< that gets the samples
    std::vector<std::unique_ptr<Decoder>> m_finishing; ///< those before it that have not ended yet
    QTimer m_stall;
    QTimer m_again;
    QTimer m_quiet;
    std::set<int> m_open; ///< signals that are in a transmission
    bool m_isRenewalDue = false;
    QElapsedTimer m_run; ///< since the first sample
    int m_pause_ms;
    qint64 m_bytesLost = 0;
    int m_begunBytes = 0; ///< of the sample that the decoder has got a part of
};

} // namespace morsehost
