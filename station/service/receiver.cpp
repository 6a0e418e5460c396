// SPDX-License-Identifier: MIT
#include "station/service/receiver.h"

#include <QJsonDocument>
#include <QTcpSocket>

#include <algorithm>
#include <csignal>
#include <sys/prctl.h>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

namespace morsehost {

namespace {

// What waits for a decoder; some seconds of the widest input.
constexpr qint64 MAX_WAITING_BYTES = qint64{16} << 20;
// Longer lines are none of a decoder's.
constexpr int MAX_LINE_BYTES = 4 * 1024 * 1024;
constexpr int MAX_ERROR_CHARACTERS = 300;
constexpr int FINISH_ms = 10000; // of a decoder, what it has been given
constexpr int LEAVE_ms = 1000;   // of a command that is asked to end
// After so long a run, the next pause is short again.
constexpr int GOOD_RUN_ms = 60000;

bool isRecording(const ReceiverSettings& settings)
{
    return !settings.file.isEmpty();
}

// What a process said at its end, which may be read only when it has ended.
void noteLastWords(QProcess& process, QString& words)
{
    const QByteArray errors = process.readAllStandardError();
    if (!errors.isEmpty())
        words = QString::fromUtf8(errors).simplified().right(MAX_ERROR_CHARACTERS);
}

} // namespace

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

// Ends with the station, also when that is killed. What it started ends with it: of a command line
// any process may hold the tuner.
class Receiver::Child : public QProcess
{
public:
    bool isThere() const { return state() != QProcess::NotRunning; }

    // Asks it to end; kills it when it has not after so long.
    void leave(int patience_ms)
    {
        // Before it runs, it would take the signal as this process does.
        waitForStarted(FINISH_ms);
        signalAll(SIGTERM);
        killAfter(patience_ms);
    }

    void killAfter(int patience_ms)
    {
        QTimer::singleShot(patience_ms, this, [this] { signalAll(SIGKILL); });
    }

    // The same, waiting for it.
    void wait(int patience_ms)
    {
        if (!isThere() || waitForFinished(patience_ms))
            return;
        signalAll(SIGKILL);
        waitForFinished(FINISH_ms);
    }

protected:
    void setupChildProcess() override
    {
        setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, SIGTERM);
    }

private:
    void signalAll(int number)
    {
        if (isThere() && processId() > 0)
            ::kill(static_cast<pid_t>(-processId()), number);
    }
};

class Receiver::Decoder : public Child
{
public:
    QByteArray line; ///< unfinished
    QString lastError;
};

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
    m_quiet.setSingleShot(true);
    connect(&m_quiet, &QTimer::timeout, this, &Receiver::quiet);
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
    // A recording that takes longer than its repetition is heard to its end; a tuner is free when
    // the command that used it has ended.
    const bool isRecordingHeard = isRecording(m_settings) && m_decoder && m_decoder->isThere();
    if (isRecordingHeard || !m_finishing.empty() || isSourceThere()) {
        m_again.start(m_surroundings.firstPause_ms);
        return;
    }
    startDecoder();
    if (!isRecording(m_settings))
        startSource();
    else if (m_settings.repeat_s > 0)
        m_again.start(m_settings.repeat_s * 1000);
}

void Receiver::startDecoder()
{
    m_decoder = std::make_unique<Decoder>();
    Decoder* const decoder = m_decoder.get();
    connect(decoder, &QProcess::readyReadStandardOutput, this, [this, decoder] { read(*decoder); });
    connect(decoder, &QProcess::readyReadStandardError, this,
            [decoder] { noteLastWords(*decoder, decoder->lastError); });
    connect(decoder, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this, decoder] { decoderEnded(*decoder); });
    connect(decoder, &QProcess::errorOccurred, this, [this, decoder](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        decoder->lastError = QStringLiteral("the decoder cannot be started");
        decoderEnded(*decoder);
    });
    m_begunBytes = 0;
    m_open.clear();
    m_isRenewalDue = false;
    decoder->start(m_surroundings.program, decoderWords(m_settings, m_surroundings.saveFolder));
    if (isRecording(m_settings)) {
        decoder->closeWriteChannel();
        setState(ReceiverState::Running);
        Q_EMIT begun();
    }
}

void Receiver::startSource()
{
    if (m_settings.stall_s > 0)
        m_stall.start(m_settings.stall_s * 1000);
    if (m_settings.tcp.isEmpty()) {
        startCommand();
        return;
    }
    m_socket = std::make_unique<QTcpSocket>();
    connect(m_socket.get(), &QTcpSocket::readyRead, this, [this] { forward(m_socket->readAll()); });
    connect(m_socket.get(), &QTcpSocket::disconnected, this,
            [this] { sourceEnded(QStringLiteral("the connection was closed")); });
    connect(m_socket.get(), &QTcpSocket::errorOccurred, this,
            [this] { sourceEnded(m_socket->errorString()); });
    m_socket->setReadBufferSize(MAX_WAITING_BYTES);
    m_socket->connectToHost(
        m_settings.tcp.section(QLatin1Char(':'), 0, -2),
        static_cast<quint16>(m_settings.tcp.section(QLatin1Char(':'), -1).toInt()));
}

void Receiver::startCommand()
{
    m_sourceError.clear();
    m_source = std::make_unique<Child>();
    m_source->setStandardInputFile(QProcess::nullDevice());
    connect(m_source.get(), &QProcess::readyReadStandardOutput, this,
            [this] { forward(m_source->readAllStandardOutput()); });
    connect(m_source.get(), &QProcess::readyReadStandardError, this,
            [this] { noteLastWords(*m_source, m_sourceError); });
    connect(m_source.get(), QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this](int code) {
                forward(m_source->readAllStandardOutput());
                noteLastWords(*m_source, m_sourceError);
                sourceEnded(m_sourceError.isEmpty()
                                ? QStringLiteral("the command ended with status %1").arg(code)
                                : m_sourceError);
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
    const bool isTooMuch = m_decoder->bytesToWrite() > MAX_WAITING_BYTES;
    const QByteArray kept = isTooMuch ? withoutWholeSamples(samples) : samples;
    m_bytesLost += samples.size() - kept.size();
    const int size = sampleBytes(m_settings.samples);
    m_begunBytes = (m_begunBytes + kept.size() % size) % size;
    Q_EMIT heard(kept);
    m_decoder->write(kept);
}

// What is left out are whole samples, so that those behind are read as they are meant.
QByteArray Receiver::withoutWholeSamples(const QByteArray& samples)
{
    const int size = sampleBytes(m_settings.samples);
    const int begin = (size - m_begunBytes) % size;
    if (samples.size() <= begin)
        return samples;
    return samples.left(begin) + samples.right((samples.size() - begin) % size);
}

void Receiver::read(Decoder& decoder)
{
    QByteArray& line = decoder.line;
    line += decoder.readAllStandardOutput();
    int begin = 0;
    for (int end = line.indexOf('\n'); end >= 0; end = line.indexOf('\n', begin)) {
        const QJsonDocument document = QJsonDocument::fromJson(line.mid(begin, end - begin));
        begin = end + 1;
        if (!document.isObject())
            continue;
        if (&decoder == m_decoder.get())
            watch(document.object());
        Q_EMIT decoded(document.object());
    }
    line.remove(0, begin);
    if (line.size() > MAX_LINE_BYTES)
        line.clear();
}

void Receiver::sourceEnded(const QString& problem)
{
    goDown(problem);
}

void Receiver::decoderEnded(Decoder& decoder)
{
    read(decoder);
    noteLastWords(decoder, decoder.lastError);
    if (&decoder != m_decoder.get()) {
        forget(decoder);
        return;
    }
    const QString problem =
        decoder.lastError.isEmpty() ? QStringLiteral("the decoder ended") : decoder.lastError;
    const bool isGood = decoder.error() == QProcess::UnknownError &&
                        decoder.exitStatus() == QProcess::NormalExit && decoder.exitCode() == 0;
    if (!isRecording(m_settings) || !isGood)
        goDown(problem);
    else if (m_settings.repeat_s == 0)
        setState(ReceiverState::Ended);
}

void Receiver::forget(Decoder& decoder)
{
    const auto found = std::find_if(m_finishing.begin(), m_finishing.end(),
                                    [&decoder](const auto& one) { return one.get() == &decoder; });
    if (found == m_finishing.end())
        return;
    // It may be the one that reports just now.
    found->release()->deleteLater();
    m_finishing.erase(found);
}

void Receiver::endSource()
{
    m_stall.stop();
    if (m_source) {
        m_source->disconnect(this);
        m_source->closeReadChannel(QProcess::StandardOutput);
        m_source->leave(LEAVE_ms);
    }
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
        // It may be the one that reports just now.
        m_socket.release()->deleteLater();
    }
}

// It finishes what it has been given, while another may already be there.
void Receiver::dismissDecoder()
{
    if (!m_decoder)
        return;
    Decoder* const decoder = m_decoder.get();
    if (!decoder->isThere()) {
        m_decoder.release()->deleteLater();
        return;
    }
    m_finishing.push_back(std::move(m_decoder));
    decoder->closeWriteChannel();
    if (isRecording(m_settings))
        decoder->leave(FINISH_ms);
    else
        decoder->killAfter(FINISH_ms);
}

void Receiver::end()
{
    m_again.stop();
    endSource();
    dismissDecoder();
}

bool Receiver::isSourceThere() const
{
    return m_source && m_source->isThere();
}

bool Receiver::isOver() const
{
    return m_finishing.empty() && !m_decoder && !isSourceThere();
}

void Receiver::stop()
{
    end();
    if (m_source)
        m_source->wait(LEAVE_ms);
    while (!m_finishing.empty()) {
        Decoder& oldest = *m_finishing.front();
        oldest.wait(FINISH_ms);
        forget(oldest);
    }
}

void Receiver::goDown(const QString& problem)
{
    end();
    setState(ReceiverState::Down, problem);
    if (m_run.isValid() && m_run.elapsed() > GOOD_RUN_ms)
        m_pause_ms = m_surroundings.firstPause_ms;
    m_run.invalidate();
    m_again.start(m_pause_ms);
    m_pause_ms = std::min(2 * m_pause_ms, m_surroundings.longestPause_ms);
}

// A signal is in a transmission from what is first heard of it until that is reported.
void Receiver::watch(const QJsonObject& object)
{
    m_quiet.start(m_surroundings.quiet_ms);
    const QString event = object.value(QLatin1String("event")).toString();
    // A decoder of one signal does not number it; it counts transmissions.
    const int signal = m_settings.decoder == QLatin1String("band")
                           ? object.value(QLatin1String("number")).toInt()
                           : 0;
    if (event == QLatin1String("transmission") || event == QLatin1String("signal"))
        m_open.erase(signal);
    else
        m_open.insert(signal);
}

void Receiver::renewInPause()
{
    m_isRenewalDue = !isRecording(m_settings);
    m_quiet.start(m_surroundings.quiet_ms);
}

void Receiver::quiet()
{
    if (!m_isRenewalDue || !m_open.empty() || m_state != ReceiverState::Running)
        return;
    dismissDecoder();
    startDecoder();
}

} // namespace morsehost
