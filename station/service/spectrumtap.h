// SPDX-License-Identifier: MIT
// The spectrum of what a receiver sends, a few rows a second, for a waterfall.
#pragma once

#include "signal/samples/powerspectra.h"
#include "station/service/stationfile.h"

#include <QByteArray>
#include <QJsonObject>

#include <complex>
#include <memory>
#include <vector>

struct kiss_fft_state;

namespace morsehost {

class SpectrumTap
{
public:
    explicit SpectrumTap(const SampleFormat& format);

    /// Rows that these bytes complete: "event" spectrum, "low_Hz" and "high_Hz" of its edges, "of"
    /// whether those are "frequency_Hz" or "tone_Hz", and "levels", the lowest frequency first, as
    /// bytes in Base64: half decibels above -127 dB, a tone of full scale being 0 dB.
    std::vector<QJsonObject> hear(const QByteArray& bytes);
    /// What nobody looks at; the next bytes continue behind it.
    void skip(const QByteArray& bytes);
    /// As the first, of samples, full scale +-1.
    std::vector<QJsonObject> hear(const std::vector<std::complex<float>>& samples);

private:
    void add(std::complex<float> sample, std::vector<QJsonObject>& rows);
    std::complex<float> sampleAt(const char* bytes) const;
    void transform();
    QJsonObject row();

    SampleFormat m_format;
    int m_sampleBytes; ///< of a sample, or of a pair
    int m_spectraPerRow;
    QByteArray m_rest; ///< of a sample that has not come whole
    std::unique_ptr<kiss_fft_state, void (*)(void*)> m_transform;
    demodulator::Window m_window;
    std::vector<std::complex<float>> m_samples;
    std::vector<std::complex<float>> m_spectrum;
    std::vector<double> m_power; ///< summed up, the lowest frequency first
    int m_spectra = 0;           ///< in that sum
};

} // namespace morsehost
