// SPDX-License-Identifier: MIT
#include "station/audio/samplesource.h"

#include "signal/morse/limits.h"
#include "station/io/systemtext.h"

#include <QFile>
#include <QFileInfo>

#include <sndfile.h>

#include <cerrno>
#include <vector>

namespace morsehost {

namespace {

struct CloseSound
{
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, CloseSound>;

class Recording : public SampleSource
{
public:
    Recording(SoundFile file, const SF_INFO& info, std::optional<int> channel)
        : m_file(std::move(file))
        , m_info(info)
        , m_channel(channel)
    {
    }

    double sampleRate_Hz() const override { return m_info.samplerate; }

    std::optional<long long> frameCount() const override
    {
        // Streams without a length report the largest number.
        if (m_info.frames <= 0 || m_info.frames == SF_COUNT_MAX)
            return std::nullopt;
        return m_info.frames;
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

    QString error() const override { return m_error; }

private:
    float mono(const float* frame) const
    {
        if (m_channel)
            return frame[*m_channel - 1];
        float sum = 0;
        for (int i = 0; i < m_info.channels; ++i)
            sum += frame[i];
        return sum / static_cast<float>(m_info.channels);
    }

    void noteEnd()
    {
        if (sf_error(m_file.get()) != SF_ERR_NO_ERROR) {
            m_error = QString::fromLocal8Bit(sf_strerror(m_file.get()));
        } else if (frameCount() && m_read < *frameCount()) {
            m_error = QStringLiteral("ends after %1 of %2 seconds")
                          .arg(m_read / sampleRate_Hz(), 0, 'f', 1)
                          .arg(*frameCount() / sampleRate_Hz(), 0, 'f', 1);
        }
    }

    SoundFile m_file;
    SF_INFO m_info;
    std::optional<int> m_channel;
    std::vector<float> m_frames;
    sf_count_t m_read = 0;
    QString m_error;
};

OpenedSource refused(const QString& reason)
{
    return {nullptr, reason};
}

} // namespace

OpenedSource openRecording(const QString& path, std::optional<int> channel)
{
    const QFileInfo file(path);
    if (!file.exists())
        return refused(QStringLiteral("no such file"));
    if (file.isDir())
        return refused(QStringLiteral("is a directory"));
    if (file.isFile() && file.size() == 0)
        return refused(QStringLiteral("is empty"));
    if (!file.isReadable())
        return refused(systemError(EACCES));

    SF_INFO info = {};
    SoundFile sound(sf_open(QFile::encodeName(path).constData(), SFM_READ, &info));
    if (!sound) {
        QString reason = QString::fromLocal8Bit(sf_strerror(nullptr)).trimmed();
        if (reason.endsWith(QLatin1Char('.')))
            reason.chop(1);
        return refused(QStringLiteral("is no recording that can be read: %1").arg(reason));
    }
    if (info.samplerate < demodulator::LOWEST_RATE_Hz ||
        info.samplerate > demodulator::HIGHEST_RATE_Hz)
        return refused(QStringLiteral("has %1 samples a second; %2 to %3 can be used")
                           .arg(info.samplerate)
                           .arg(demodulator::LOWEST_RATE_Hz)
                           .arg(demodulator::HIGHEST_RATE_Hz));
    if (channel && *channel > info.channels)
        return refused(QStringLiteral("has %1; there is no channel %2")
                           .arg(counted(info.channels, "channel", "channels"))
                           .arg(*channel));
    return {std::make_unique<Recording>(std::move(sound), info, channel), {}};
}

} // namespace morsehost
