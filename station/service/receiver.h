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
        QString program;    ///< path of this program
        QString saveFolder; ///< that the decoder saves into; empty when nothing is saved
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
    /// Ends the source, lets the decoder finish what it has, and returns when it has; after a few
    /// seconds the decoder is ended without that.
    void stop();
    /// The folder that the next decoder saves into. The running one is ended in order and replaced.
    void changeSaveFolder(const QString& folder);

Q_SIGNALS:
    /// An object that the decoder wrote.
    void decoded(const QJsonObject& object);
    /// What the source sent, on its way to the decoder.
    void heard(const QByteArray& samples);
    void stateChanged();

private:
    void startDecoder();
    void startSource();
    void forward(const QByteArray& samples);
    void readDecoder();
    void readDecoderErrors();
    void sourceEnded(const QString& problem);
    void decoderEnded();
    void endDecoder();
    void goDown(const QString& problem);
    void setState(ReceiverState state, const QString& problem = {});

    ReceiverSettings m_settings;
    Surroundings m_surroundings;
    ReceiverState m_state = ReceiverState::Starting;
    QString m_problem;
    std::unique_ptr<QProcess> m_source;
    std::unique_ptr<QTcpSocket> m_socket;
    std::unique_ptr<QProcess> m_decoder;
    QByteArray m_line; ///< of the decoder, unfinished
    QString m_decoderError;
    QTimer m_stall;
    QTimer m_again;
    QElapsedTimer m_run; ///< since the first sample
    int m_pause_ms;
    qint64 m_bytesLost = 0;
    bool m_isStopping = false;
};

} // namespace morsehost
