// SPDX-License-Identifier: MIT
#include "station/service/receiver.h"

#include <QJsonDocument>
#include <QTcpSocket>

#include <algorithm>
#include <csignal>
#include <sys/prctl.h>

namespace morsehost {

namespace {

// What waits for a decoder; some seconds of the widest input.
constexpr qint64 MAX_WAITING_BYTES = qint64{16} << 20;
// Longer lines are none of a decoder's.
constexpr int MAX_LINE_BYTES = 4 * 1024 * 1024;
constexpr int MAX_ERROR_CHARACTERS = 300;
constexpr int FINISH_ms = 10000;
// After so long a run, the next pause is short again.
constexpr int GOOD_RUN_ms = 60000;

// Ends with the station, also when that is killed.
class Child : public QProcess
{
protected:
    void setupChildProcess() override { prctl(PR_SET_PDEATHSIG, SIGTERM); }
};

bool isRecording(const ReceiverSettings& settings)
{
    return !settings.file.isEmpty();
}

QStringList decoderWords(const ReceiverSettings& settings, const QString& saveFolder)
{
    QStringList words;
    if (settings.decoder == QLatin1String("band"))
        words << QStringLiteral("band");
    else if (settings.decoder == QLatin1String("Morse"))
        words << QStringLiteral("decode");
    else
        words << QStringLiteral("decode") << QStringLiteral("--decoder") << settings.decoder;
    words << QStringLiteral("--json") << settings.options;
    // Repeated recordings are heard now.
    if (isRecording(settings))
        words << QStringLiteral("--start") << QStringLiteral("now");
    if (!saveFolder.isEmpty())
        words << QStringLiteral("--save") << saveFolder;
    words << (isRecording(settings) ? settings.file : QStringLiteral("-"));
    return words;
}

} // namespace

QString stateName(ReceiverState state)
{
    switch (state) {
    case ReceiverState::Starting:
        return QStringLiteral("starting");
    case ReceiverState::Running:
        return QStringLiteral("running");
    case ReceiverState::Ended:
        return QStringLiteral("ended");
    case ReceiverState::Down:
        break;
    }
    return QStringLiteral("down");
}

Receiver::Receiver(const ReceiverSettings& settings, const Surroundings& surroundings,
                   QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_surroundings(surroundings)
    , m_pause_ms(surroundings.firstPause_ms)
{
    m_stall.setSingleShot(true);
    m_again.setSingleShot(true);
    connect(&m_stall, &QTimer::timeout, this,
            [this] { goDown(QStringLiteral("no samples for %1 s").arg(m_settings.stall_s)); });
    connect(&m_again, &QTimer::timeout, this, &Receiver::start);
}

Receiver::~Receiver()
{
    stop();
}

void Receiver::setState(ReceiverState state, const QString& problem)
{
    if (state == m_state && problem == m_problem)
        return;
    m_state = state;
    m_problem = problem;
    Q_EMIT stateChanged();
}

void Receiver::start()
{
    // A recording that takes longer than its repetition is heard to its end.
    if (m_decoder && m_decoder->state() != QProcess::NotRunning) {
        m_again.start(m_surroundings.firstPause_ms);
        return;
    }
    m_isStopping = false;
    m_decoderError.clear();
    startDecoder();
    if (!isRecording(m_settings))
        startSource();
    else if (m_settings.repeat_s > 0)
        m_again.start(m_settings.repeat_s * 1000);
}

void Receiver::startDecoder()
{
    m_line.clear();
    m_decoder = std::make_unique<Child>();
    connect(m_decoder.get(), &QProcess::readyReadStandardOutput, this, &Receiver::readDecoder);
    connect(m_decoder.get(), &QProcess::readyReadStandardError, this, &Receiver::readDecoderErrors);
    connect(m_decoder.get(), QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &Receiver::decoderEnded);
    connect(m_decoder.get(), &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            goDown(QStringLiteral("the decoder cannot be started"));
    });
    m_decoder->start(m_surroundings.program, decoderWords(m_settings, m_surroundings.saveFolder));
    if (isRecording(m_settings)) {
        m_decoder->closeWriteChannel();
        setState(ReceiverState::Running);
    }
}

void Receiver::startSource()
{
    if (m_settings.stall_s > 0)
        m_stall.start(m_settings.stall_s * 1000);
    if (!m_settings.tcp.isEmpty()) {
        m_socket = std::make_unique<QTcpSocket>();
        connect(m_socket.get(), &QTcpSocket::readyRead, this,
                [this] { forward(m_socket->readAll()); });
        connect(m_socket.get(), &QTcpSocket::disconnected, this,
                [this] { sourceEnded(QStringLiteral("the connection was closed")); });
        connect(m_socket.get(), &QTcpSocket::errorOccurred, this,
                [this] { sourceEnded(m_socket->errorString()); });
        m_socket->setReadBufferSize(MAX_WAITING_BYTES);
        m_socket->connectToHost(
            m_settings.tcp.section(QLatin1Char(':'), 0, -2),
            static_cast<quint16>(m_settings.tcp.section(QLatin1Char(':'), -1).toInt()));
        return;
    }
    m_source = std::make_unique<Child>();
    m_source->setStandardInputFile(QProcess::nullDevice());
    connect(m_source.get(), &QProcess::readyReadStandardOutput, this,
            [this] { forward(m_source->readAllStandardOutput()); });
    connect(m_source.get(), &QProcess::readyReadStandardError, this, [this] {
        m_decoderError = QString::fromUtf8(m_source->readAllStandardError())
                             .simplified()
                             .right(MAX_ERROR_CHARACTERS);
    });
    connect(m_source.get(), QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this](int code) {
                forward(m_source->readAllStandardOutput());
                sourceEnded(m_decoderError.isEmpty()
                                ? QStringLiteral("the command ended with status %1").arg(code)
                                : m_decoderError);
            });
    connect(m_source.get(), &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            sourceEnded(QStringLiteral("the command cannot be started"));
    });
    m_source->start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), m_settings.command});
}

void Receiver::forward(const QByteArray& samples)
{
    if (samples.isEmpty() || !m_decoder)
        return;
    if (m_settings.stall_s > 0)
        m_stall.start(m_settings.stall_s * 1000);
    if (!m_run.isValid())
        m_run.start();
    setState(ReceiverState::Running);
    Q_EMIT heard(samples);
    if (m_decoder->bytesToWrite() > MAX_WAITING_BYTES) {
        m_bytesLost += samples.size();
        return;
    }
    m_decoder->write(samples);
}

void Receiver::readDecoder()
{
    m_line += m_decoder->readAllStandardOutput();
    int begin = 0;
    for (int end = m_line.indexOf('\n'); end >= 0; end = m_line.indexOf('\n', begin)) {
        const QJsonDocument document = QJsonDocument::fromJson(m_line.mid(begin, end - begin));
        begin = end + 1;
        if (document.isObject())
            Q_EMIT decoded(document.object());
    }
    m_line.remove(0, begin);
    if (m_line.size() > MAX_LINE_BYTES)
        m_line.clear();
}

void Receiver::readDecoderErrors()
{
    m_decoderError = QString::fromUtf8(m_decoder->readAllStandardError())
                         .simplified()
                         .right(MAX_ERROR_CHARACTERS);
}

void Receiver::sourceEnded(const QString& problem)
{
    if (!m_isStopping)
        goDown(problem);
}

void Receiver::decoderEnded()
{
    readDecoder();
    if (m_isStopping)
        return;
    if (isRecording(m_settings)) {
        const bool isGood =
            m_decoder->exitStatus() == QProcess::NormalExit && m_decoder->exitCode() == 0;
        if (isGood && m_settings.repeat_s == 0)
            setState(ReceiverState::Ended);
        else if (!isGood)
            goDown(m_decoderError.isEmpty() ? QStringLiteral("the decoder ended") : m_decoderError);
        return;
    }
    goDown(m_decoderError.isEmpty() ? QStringLiteral("the decoder ended") : m_decoderError);
}

// The source first, so that the decoder finishes what it has been given.
void Receiver::endDecoder()
{
    m_stall.stop();
    if (m_source) {
        m_source->disconnect(this);
        // Before it runs, it would take the signal as this process does.
        m_source->waitForStarted(FINISH_ms);
        m_source->terminate();
        if (!m_source->waitForFinished(1000)) {
            m_source->kill();
            m_source->waitForFinished(FINISH_ms);
        }
        // It may be the one that reports just now.
        m_source.release()->deleteLater();
    }
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
        m_socket.release()->deleteLater();
    }
    if (!m_decoder)
        return;
    if (m_decoder->state() != QProcess::NotRunning) {
        disconnect(m_decoder.get(), QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
                   this, nullptr);
        m_decoder->closeWriteChannel();
        if (isRecording(m_settings)) {
            m_decoder->waitForStarted(FINISH_ms);
            m_decoder->terminate();
        }
        if (!m_decoder->waitForFinished(FINISH_ms)) {
            m_decoder->kill();
            m_decoder->waitForFinished(FINISH_ms);
        }
        readDecoder();
    }
    m_decoder->disconnect(this);
    m_decoder.release()->deleteLater();
}

void Receiver::stop()
{
    m_isStopping = true;
    m_again.stop();
    endDecoder();
}

void Receiver::goDown(const QString& problem)
{
    m_isStopping = true;
    endDecoder();
    setState(ReceiverState::Down, problem);
    if (m_run.isValid() && m_run.elapsed() > GOOD_RUN_ms)
        m_pause_ms = m_surroundings.firstPause_ms;
    m_run.invalidate();
    m_again.start(m_pause_ms);
    m_pause_ms = std::min(2 * m_pause_ms, m_surroundings.longestPause_ms);
}

void Receiver::changeSaveFolder(const QString& folder)
{
    if (folder == m_surroundings.saveFolder)
        return;
    m_surroundings.saveFolder = folder;
    // A recording takes the folder when it begins again.
    if (isRecording(m_settings) || m_state != ReceiverState::Running)
        return;
    stop();
    start();
}

} // namespace morsehost
