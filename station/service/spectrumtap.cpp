// SPDX-License-Identifier: MIT
#include "station/service/spectrumtap.h"

#include <kiss_fft.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace morsehost {

namespace {

constexpr std::size_t SIZE = 2048;
constexpr double ROWS_A_SECOND = 4.0;
constexpr double LOWEST_dB = -127.0; // so that full scale is the highest that a byte holds
constexpr double STEPS_A_dB = 2.0;
constexpr double SILENCE = 1e-14;

// Bytes come in the order of this machine.
float wordAt(const char* bytes, SampleFormat::Word word)
{
    switch (word) {
    case SampleFormat::Word::F32: {
        float value = 0;
        std::memcpy(&value, bytes, sizeof value);
        return std::isfinite(value) ? std::clamp(value, -4.0F, 4.0F) : 0.0F;
    }
    case SampleFormat::Word::S16: {
        std::int16_t value = 0;
        std::memcpy(&value, bytes, sizeof value);
        return static_cast<float>(value) / 32768.0F;
    }
    case SampleFormat::Word::U8:
        return (static_cast<float>(static_cast<unsigned char>(*bytes)) - 127.5F) / 128.0F;
    case SampleFormat::Word::S8:
        break;
    }
    return static_cast<float>(static_cast<signed char>(*bytes)) / 128.0F;
}

} // namespace

SpectrumTap::SpectrumTap(const SampleFormat& format)
    : m_format(format)
    , m_sampleBytes(sampleBytes(format))
    , m_spectraPerRow(std::max(
          1, static_cast<int>(format.rate_Hz / (ROWS_A_SECOND * static_cast<double>(SIZE)))))
    , m_transform(kiss_fft_alloc(static_cast<int>(SIZE), 0, nullptr, nullptr), kiss_fft_free)
    , m_window(SIZE)
    , m_spectrum(SIZE)
    , m_power(SIZE)
{
    m_samples.reserve(SIZE);
}

std::complex<float> SpectrumTap::sampleAt(const char* bytes) const
{
    const float real = wordAt(bytes, m_format.word);
    return m_format.isComplex
               ? std::complex<float>(real, wordAt(bytes + m_sampleBytes / 2, m_format.word))
               : std::complex<float>(real, 0.0F);
}

std::vector<QJsonObject> SpectrumTap::hear(const QByteArray& bytes)
{
    std::vector<QJsonObject> rows;
    m_rest += bytes;
    int used = 0;
    for (; used + m_sampleBytes <= m_rest.size(); used += m_sampleBytes)
        add(sampleAt(m_rest.constData() + used), rows);
    m_rest.remove(0, used);
    return rows;
}

void SpectrumTap::skip(const QByteArray& bytes)
{
    m_rest = (m_rest + bytes).right((m_rest.size() + bytes.size()) % m_sampleBytes);
}

std::vector<QJsonObject> SpectrumTap::hear(const std::vector<std::complex<float>>& samples)
{
    std::vector<QJsonObject> rows;
    for (const std::complex<float> sample : samples)
        add(sample, rows);
    return rows;
}

void SpectrumTap::add(std::complex<float> sample, std::vector<QJsonObject>& rows)
{
    m_samples.push_back(sample);
    if (m_samples.size() < SIZE)
        return;
    transform();
    if (m_spectra == m_spectraPerRow)
        rows.push_back(row());
}

void SpectrumTap::transform()
{
    for (std::size_t n = 0; n < SIZE; ++n)
        m_samples[n] *= m_window.values[n];
    static_assert(sizeof(kiss_fft_cpx) == sizeof(std::complex<float>));
    kiss_fft(m_transform.get(), reinterpret_cast<const kiss_fft_cpx*>(m_samples.data()),
             reinterpret_cast<kiss_fft_cpx*>(m_spectrum.data()));
    // Negative frequencies lie in the upper half.
    for (std::size_t n = 0; n < SIZE; ++n)
        m_power[n] += static_cast<double>(std::norm(m_spectrum[(n + SIZE / 2) % SIZE]));
    m_samples.clear();
    ++m_spectra;
}

QJsonObject SpectrumTap::row()
{
    // Of sound, one half mirrors the other.
    const std::size_t first = m_format.isComplex ? 0 : SIZE / 2;
    const double half = m_format.isComplex ? 1.0 : 0.5;
    const double fullScale =
        half * half * m_window.sum * m_window.sum * static_cast<double>(m_spectra);
    QByteArray levels;
    for (std::size_t n = first; n < SIZE; ++n) {
        const double level_dB = 10.0 * std::log10(m_power[n] / fullScale + SILENCE);
        levels.append(static_cast<char>(static_cast<unsigned char>(
            std::clamp(std::lround(STEPS_A_dB * (level_dB - LOWEST_dB)), 0L, 255L))));
    }
    std::fill(m_power.begin(), m_power.end(), 0.0);
    m_spectra = 0;
    const double low_Hz = m_format.isComplex ? m_format.center_Hz - m_format.rate_Hz / 2 : 0.0;
    return {{QStringLiteral("event"), QStringLiteral("spectrum")},
            {QStringLiteral("of"),
             m_format.isComplex ? QStringLiteral("frequency_Hz") : QStringLiteral("tone_Hz")},
            {QStringLiteral("low_Hz"), low_Hz},
            {QStringLiteral("high_Hz"),
             m_format.isComplex ? low_Hz + m_format.rate_Hz : m_format.rate_Hz / 2},
            {QStringLiteral("levels"), QString::fromLatin1(levels.toBase64())}};
}

} // namespace morsehost
