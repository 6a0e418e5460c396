// SPDX-License-Identifier: MIT
#include "station/audio/bandsource.h"

#include "signal/band/bandreceiver.h"
#include "signal/limits.h"
#include "station/audio/samplesource.h"
#include "station/audio/soundfile.h"
#include "station/io/input.h"
#include "station/io/systemtext.h"

#include <QFile>

#include <cstdint>
#include <cstring>
#include <unistd.h>
#include <vector>

namespace morsehost {

namespace {

using Sample = std::complex<float>;

class SoundBand : public BandSource
{
public:
    explicit SoundBand(std::unique_ptr<SampleSource> source)
        : m_source(std::move(source))
    {
    }
    demodulator::BandFormat format() const override { return {m_source->sampleRate_Hz(), false}; }
    std::size_t read(Sample* samples, std::size_t count) override
    {
        m_real.resize(count);
        const std::size_t got = m_source->read(m_real.data(), count);
        for (std::size_t i = 0; i < got; ++i)
            samples[i] = m_real[i];
        return got;
    }
    QString error() const override { return m_source->error(); }

private:
    std::unique_ptr<SampleSource> m_source;
    std::vector<float> m_real;
};

class RecordedIQ : public BandSource
{
public:
    RecordedIQ(SoundFile file, double rate_Hz)
        : m_file(std::move(file))
        , m_rate_Hz(rate_Hz)
    {
    }
    demodulator::BandFormat format() const override { return {m_rate_Hz, true}; }
    std::size_t read(Sample* samples, std::size_t count) override
    {
        // Pairs of floats are what a complex number is in memory.
        const sf_count_t frames = sf_readf_float(m_file.get(), reinterpret_cast<float*>(samples),
                                                 static_cast<sf_count_t>(count));
        if (frames > 0)
            return static_cast<std::size_t>(frames);
        if (sf_error(m_file.get()) != SF_ERR_NO_ERROR)
            m_error = QString::fromLocal8Bit(sf_strerror(m_file.get()));
        return 0;
    }
    QString error() const override { return m_error; }

private:
    SoundFile m_file;
    double m_rate_Hz;
    QString m_error;
};

std::size_t bytesOf(RawFormat format)
{
    switch (format) {
    case RawFormat::F32:
        return 4;
    case RawFormat::S16:
        return 2;
    case RawFormat::U8:
    case RawFormat::S8:
        break;
    }
    return 1;
}

float numberOf(RawFormat format, const unsigned char* bytes)
{
    switch (format) {
    case RawFormat::F32: {
        const std::uint32_t bits = bytes[0] | (bytes[1] << 8U) | (bytes[2] << 16U) |
                                   (static_cast<std::uint32_t>(bytes[3]) << 24U);
        float value = 0.0F;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    case RawFormat::S16:
        return static_cast<float>(static_cast<std::int16_t>(bytes[0] | (bytes[1] << 8U))) /
               32768.0F;
    case RawFormat::U8: // its middle lies between two numbers
        return (static_cast<float>(bytes[0]) - 127.5F) / 127.5F;
    case RawFormat::S8:
        break;
    }
    return static_cast<float>(static_cast<std::int8_t>(bytes[0])) / 128.0F;
}

class RawBand : public BandSource
{
public:
    explicit RawBand(const BandRequest& request)
        : m_request(request)
        , m_input(STDIN_FILENO)
        , m_sampleBytes(bytesOf(request.format) * (request.isComplex ? 2 : 1))
    {
    }
    demodulator::BandFormat format() const override
    {
        return {m_request.rate_Hz, m_request.isComplex};
    }
    std::size_t read(Sample* samples, std::size_t count) override
    {
        m_bytes.resize(std::max(m_filled, count * m_sampleBytes));
        // A pipe may cut a sample anywhere.
        do {
            const std::size_t got =
                m_input.read(m_bytes.data() + m_filled, m_bytes.size() - m_filled);
            if (got == 0) {
                m_isCut = m_filled != 0;
                return 0;
            }
            m_filled += got;
        } while (m_filled < m_sampleBytes);
        const std::size_t whole = m_filled / m_sampleBytes;
        const auto* bytes = reinterpret_cast<const unsigned char*>(m_bytes.data());
        const std::size_t second = bytesOf(m_request.format);
        for (std::size_t i = 0; i < whole; ++i, bytes += m_sampleBytes) {
            samples[i] = {numberOf(m_request.format, bytes),
                          m_request.isComplex ? numberOf(m_request.format, bytes + second) : 0.0F};
        }
        m_filled -= whole * m_sampleBytes;
        std::memmove(m_bytes.data(), m_bytes.data() + whole * m_sampleBytes, m_filled);
        return whole;
    }
    QString error() const override
    {
        if (m_isCut && m_input.error().isEmpty())
            return QStringLiteral("ends in the middle of a sample");
        return m_input.error();
    }

private:
    BandRequest m_request;
    Input m_input;
    std::size_t m_sampleBytes;
    std::vector<char> m_bytes;
    std::size_t m_filled = 0;
    bool m_isCut = false;
};

OpenedBand refusedBand(const QString& reason)
{
    return {nullptr, reason};
}

OpenedBand openRecordedIQ(const QString& path)
{
    if (const QString why = whyUnreadable(path); !why.isEmpty())
        return refusedBand(why);
    SF_INFO info = {};
    SoundFile sound(sf_open(QFile::encodeName(path).constData(), SFM_READ, &info));
    if (!sound)
        return refusedBand(QStringLiteral("is not a recording that can be read: %1")
                               .arg(QString::fromLocal8Bit(sf_strerror(nullptr)).trimmed()));
    if (info.channels != 2)
        return refusedBand(QStringLiteral("has %1; I and Q are two")
                               .arg(counted(info.channels, "channel", "channels")));
    if (info.samplerate < demodulator::LOWEST_BAND_RATE_Hz ||
        info.samplerate > demodulator::HIGHEST_BAND_RATE_Hz)
        return refusedBand(
            QStringLiteral("has a sample rate of %1 Hz, which is not between %2 and %3")
                .arg(info.samplerate)
                .arg(demodulator::LOWEST_BAND_RATE_Hz, 0, 'f', 0)
                .arg(demodulator::HIGHEST_BAND_RATE_Hz, 0, 'f', 0));
    return {std::make_unique<RecordedIQ>(std::move(sound), info.samplerate), {}};
}

} // namespace

OpenedBand openBand(const BandRequest& request)
{
    if (request.isPipe) {
        if (isatty(STDIN_FILENO) != 0)
            return refusedBand(
                QStringLiteral("is a terminal; raw samples are expected from a pipe"));
        return {std::make_unique<RawBand>(request), {}};
    }
    if (request.isComplex)
        return openRecordedIQ(request.name);
    OpenedSource opened = openRecording(request.name, std::nullopt);
    if (!opened.source)
        return refusedBand(opened.error);
    return {std::make_unique<SoundBand>(std::move(opened.source)), {}};
}

} // namespace morsehost
