// SPDX-License-Identifier: MIT
#include "signal/limits.h"
#include "station/audio/container.h"
#include "station/audio/rawpipe.h"
#include "station/audio/recordedtime.h"
#include "station/audio/samplesource.h"
#include "station/audio/soundfile.h"
#include "station/io/input.h"
#include "station/io/interrupt.h"
#include "station/io/systemtext.h"
#include "tables/literal.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <thread>
#include <unistd.h>
#include <vector>

namespace morsehost {

namespace {

constexpr int DEFAULT_RATE_HZ = 8000;
constexpr std::size_t PIECE_BYTES = 65536;
constexpr std::size_t PIECE_SAMPLES = 65536;

// A header and what may stand around it; what has more bytes has sound.
constexpr qint64 HEADER_BYTES = 4096;

// Where the mean of all channels is 40 dB below each of them, they cancel each other out.
constexpr double CANCELLED_SHARE = 1e-4;

const QLatin1String NO_SOUND("its header says that it holds no sound");

/// What went wrong with a file, or with opening one, as part of a sentence.
QString reasonOf(SNDFILE* file)
{
    QString reason = QString::fromLocal8Bit(sf_strerror(file)).trimmed();
    constexpr QLatin1String mark = literal("Error : ");
    if (reason.startsWith(mark))
        reason.remove(0, mark.size());
    if (reason.endsWith(QLatin1Char('.')))
        reason.chop(1);
    return reason;
}

// Bytes on their way from one descriptor into a pipe, which is what a recording that arrives slowly
// is read from: its reader knows no other way to wait.
class Pump
{
public:
    Pump(int descriptor, QByteArray begin, int to)
        : m_input(descriptor)
        , m_begin(std::move(begin))
        , m_to(to)
        , m_thread([this] { run(); })
    {
    }
    ~Pump()
    {
        m_input.stop();
        m_thread.join();
    }
    Pump(const Pump&) = delete;
    Pump& operator=(const Pump&) = delete;

    /// Why what came is not all of what was recorded; empty while more may come.
    QString whyCut() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_hasEnded ? morsehost::whyCut(m_begin, m_end, m_size) : QString();
    }

private:
    void run()
    {
        std::vector<char> piece(PIECE_BYTES);
        bool isTaken = pass(m_begin.constData(), static_cast<std::size_t>(m_begin.size()));
        while (isTaken) {
            const std::size_t count = m_input.read(piece.data(), piece.size());
            isTaken = count > 0 && pass(piece.data(), count);
        }
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_hasEnded = true;
        }
        ::close(m_to);
    }

    bool pass(const char* data, std::size_t size)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_size += static_cast<qint64>(size);
            m_end.append(data, static_cast<int>(size));
            if (m_end.size() > 2 * CONTAINER_END_BYTES)
                m_end.remove(0, m_end.size() - CONTAINER_END_BYTES);
        }
        return write(data, size);
    }

    // False when nobody reads any more; SIGPIPE is ignored in this program.
    bool write(const char* data, std::size_t size) const
    {
        while (size > 0) {
            const ssize_t written = ::write(m_to, data, size);
            if (written < 0 && errno != EINTR)
                return false;
            if (written > 0) {
                data += written;
                size -= static_cast<std::size_t>(written);
            }
        }
        return true;
    }

    Input m_input;
    const QByteArray m_begin;
    int m_to;
    mutable std::mutex m_mutex; ///< of the next three
    QByteArray m_end;           ///< the last CONTAINER_END_BYTES that came, or some more
    qint64 m_size = 0;
    bool m_hasEnded = false;
    std::thread m_thread;
};

class Recording : public SampleSource
{
public:
    Recording(std::unique_ptr<Pump> pump, SoundFile file, const SF_INFO& info,
              std::optional<int> channel)
        : m_pump(std::move(pump))
        , m_file(std::move(file))
        , m_info(info)
        , m_channel(channel)
    {
    }

    /// By its header, which a writer fills in when it is done.
    bool isEmpty() const { return m_info.frames == 0; }
    void setError(const QString& error) { m_error = error; }
    void forgetLength() { m_info.frames = 0; }

    double sampleRate_Hz() const override { return m_info.samplerate; }

    std::optional<long long> frameCount() const override
    {
        // Streams without a length report the largest number.
        if (m_info.frames <= 0 || m_info.frames == SF_COUNT_MAX)
            return std::nullopt;
        return m_info.frames;
    }

    std::optional<unsigned long long> recorded_us() const override
    {
        SF_BROADCAST_INFO info = {};
        if (sf_command(m_file.get(), SFC_GET_BROADCAST_INFO, &info, sizeof info) != SF_TRUE)
            return std::nullopt;
        return timeInBroadcastChunk(
            QString::fromLatin1(info.origination_date, sizeof info.origination_date),
            QString::fromLatin1(info.origination_time, sizeof info.origination_time));
    }

    std::size_t read(float* samples, std::size_t count) override
    {
        const auto channels = static_cast<std::size_t>(m_info.channels);
        m_frames.resize(count * channels);
        const sf_count_t frames =
            sf_readf_float(m_file.get(), m_frames.data(), static_cast<sf_count_t>(count));
        if (frames <= 0) {
            noteEnd();
            return 0;
        }
        m_read += frames;
        for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i)
            samples[i] = mono(&m_frames[i * channels]);
        return static_cast<std::size_t>(frames);
    }

    long long skip(long long count) override
    {
        if (m_info.seekable == 0)
            return SampleSource::skip(count);
        const sf_count_t wanted = std::min<sf_count_t>(m_read + count, m_info.frames);
        const sf_count_t reached = sf_seek(m_file.get(), wanted, SEEK_SET);
        if (reached < 0)
            return SampleSource::skip(count);
        const sf_count_t passed = reached - m_read;
        m_read = reached;
        return passed;
    }

    QString error() const override { return m_error; }

private:
    float mono(const float* frame)
    {
        if (m_channel)
            return frame[*m_channel - 1];
        float sum = 0;
        for (int i = 0; i < m_info.channels; ++i) {
            sum += frame[i];
            m_channelPower += static_cast<double>(frame[i] * frame[i]) / m_info.channels;
        }
        const float mean = sum / static_cast<float>(m_info.channels);
        m_meanPower += static_cast<double>(mean * mean);
        return mean;
    }

    void noteEnd()
    {
        if (!m_error.isEmpty() || isInterrupted())
            return;
        if (sf_error(m_file.get()) != SF_ERR_NO_ERROR)
            m_error = reasonOf(m_file.get());
        else if (frameCount() && m_read < *frameCount())
            m_error = QStringLiteral("ends after %1 of %2 seconds")
                          .arg(m_read / sampleRate_Hz(), 0, 'f', 1)
                          .arg(*frameCount() / sampleRate_Hz(), 0, 'f', 1);
        else if (m_pump && !m_pump->whyCut().isEmpty())
            m_error = m_pump->whyCut();
        else if (m_channelPower > 0 && m_meanPower < CANCELLED_SHARE * m_channelPower)
            m_error = QStringLiteral("its channels cancel each other out; take one of them with "
                                     "--channel 1");
    }

    std::unique_ptr<Pump> m_pump; ///< what the file reads from; null where that is a path
    SoundFile m_file;
    SF_INFO m_info;
    std::optional<int> m_channel;
    std::vector<float> m_frames;
    sf_count_t m_read = 0;
    double m_channelPower = 0.0; ///< sums over all frames
    double m_meanPower = 0.0;
    QString m_error;
};

OpenedSource refused(const QString& reason)
{
    return {nullptr, reason};
}

struct OpenedRecording
{
    std::unique_ptr<Recording> recording;
    QString error;
};

// The descriptor is closed with the recording, whatever becomes of it.
OpenedRecording openDescriptor(int descriptor, std::optional<int> channel,
                               std::unique_ptr<Pump> pump = nullptr)
{
    SF_INFO info = {};
    SoundFile sound(sf_open_fd(descriptor, SFM_READ, &info, SF_TRUE));
    if (!sound) {
        return {nullptr,
                QStringLiteral("is not a recording that can be read: %1").arg(reasonOf(nullptr))};
    }
    if (info.samplerate < demodulator::LOWEST_RATE_Hz ||
        info.samplerate > demodulator::HIGHEST_RATE_Hz)
        return {nullptr, QStringLiteral("has %1 samples a second, which is not between %2 and %3")
                             .arg(info.samplerate)
                             .arg(demodulator::LOWEST_RATE_Hz)
                             .arg(demodulator::HIGHEST_RATE_Hz)};
    if (channel && *channel > info.channels)
        return {nullptr, QStringLiteral("has %1; there is no channel %2")
                             .arg(counted(info.channels, "channel", "channels"))
                             .arg(*channel)};
    return {std::make_unique<Recording>(std::move(pump), std::move(sound), info, channel), {}};
}

QString whyCutFile(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray begin = file.read(CONTAINER_MARK_BYTES);
    file.seek(std::max<qint64>(0, file.size() - CONTAINER_END_BYTES));
    return whyCut(begin, file.read(CONTAINER_END_BYTES), file.size());
}

OpenedSource openFile(const QString& path, std::optional<int> channel)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return refused(systemError(errno));
    if (::lseek(descriptor, 0, SEEK_CUR) < 0) {
        ::close(descriptor);
        return refused(QStringLiteral("is a pipe; a file is needed, or '-' for standard input"));
    }
    OpenedRecording opened = openDescriptor(descriptor, channel);
    if (!opened.recording)
        return refused(opened.error);
    const qint64 size = QFileInfo(path).size();
    if (opened.recording->isEmpty() && size > HEADER_BYTES)
        return refused(NO_SOUND + QStringLiteral(", yet it has %1 bytes; 'sox --ignore-length' "
                                                 "repairs it")
                                      .arg(size));
    opened.recording->setError(whyCutFile(path));
    return {std::move(opened.recording), {}};
}

OpenedSource openStreamed(int descriptor, const QByteArray& begin, std::optional<int> channel)
{
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return refused(systemError(errno));
    OpenedRecording opened =
        openDescriptor(ends[0], channel, std::make_unique<Pump>(descriptor, begin, ends[1]));
    if (!opened.recording)
        return refused(opened.error);
    if (opened.recording->isEmpty())
        return refused(NO_SOUND + QStringLiteral("; if it does, 'sox --ignore-length' repairs it"));
    if (declaredSize(begin) < 0)
        opened.recording->forgetLength();
    return {std::move(opened.recording), {}};
}

// Appends until `size` bytes are there, or no more come.
void readUpTo(int size, Input& input, QByteArray& bytes)
{
    int filled = bytes.size();
    bytes.resize(std::max(filled, size));
    for (std::size_t count = 1; count > 0 && filled < size; filled += static_cast<int>(count))
        count = input.read(bytes.data() + filled, static_cast<std::size_t>(size - filled));
    bytes.truncate(filled);
}

OpenedSource openWhole(int descriptor, const QByteArray& begin, std::optional<int> channel)
{
    QTemporaryFile spool;
    if (!spool.open())
        return refused(spool.errorString());
    Input input(descriptor);
    std::vector<char> piece(PIECE_BYTES);
    bool isKept = spool.write(begin) == begin.size();
    while (isKept) {
        const std::size_t count = input.read(piece.data(), piece.size());
        if (count == 0)
            break;
        isKept =
            spool.write(piece.data(), static_cast<qint64>(count)) == static_cast<qint64>(count);
    }
    if (!isKept || !spool.flush())
        return refused(QStringLiteral("cannot be kept until its end: %1").arg(spool.errorString()));
    if (!input.error().isEmpty())
        return refused(input.error());
    return openFile(spool.fileName(), channel);
}

} // namespace

long long SampleSource::skip(long long count)
{
    std::vector<float> samples(PIECE_SAMPLES);
    long long passed = 0;
    while (passed < count) {
        const auto wanted =
            std::min<std::size_t>(samples.size(), static_cast<std::size_t>(count - passed));
        const std::size_t got = read(samples.data(), wanted);
        if (got == 0)
            break;
        passed += static_cast<long long>(got);
    }
    return passed;
}

OpenedSource openRecording(const QString& path, std::optional<int> channel)
{
    const QFileInfo info(path);
    if (const QString why = whyUnreadable(path); !why.isEmpty())
        return refused(why);
    if (info.isFile() && info.size() == 0)
        return refused(QStringLiteral("is empty"));
    return openFile(path, channel);
}

OpenedSource openPipe(int descriptor, std::optional<int> rate_Hz, std::optional<int> channel)
{
    Input input(descriptor);
    QByteArray begin;
    readUpTo(CONTAINER_MARK_BYTES, input, begin);
    readUpTo(bytesForKind(begin), input, begin);
    if (!input.error().isEmpty())
        return refused(input.error());

    const Container container = containerOf(begin);
    if (container == Container::None) {
        if (channel.value_or(1) != 1)
            return refused(QStringLiteral("raw samples have one channel"));
        return {openRawSamples(descriptor, begin, rate_Hz.value_or(DEFAULT_RATE_HZ)), {}};
    }
    if (rate_Hz)
        return refused(QStringLiteral("is a recording and has its own rate; leave --rate out"));
    if (container == Container::Streamed)
        return openStreamed(descriptor, begin, channel);
    return openWhole(descriptor, begin, channel);
}

} // namespace morsehost
