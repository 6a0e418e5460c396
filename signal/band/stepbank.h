// SPDX-License-Identifier: MIT
// Front of a receiver for many signals: one transform a step turns the whole band into evenly
// spaced filters, from which each signal takes its steps. The last seconds are kept, so that a
// signal can be heard from before it was noticed.
#pragma once

#include "signal/morse/step.h"

#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

struct kiss_fft_state;

namespace demodulator {

/// What the samples of a band are.
struct BandFormat
{
    double rate_Hz = 48000.0;
    /// I/Q: frequencies from minus to plus half the rate. Otherwise sound, whose imaginary part is
    /// 0: frequencies from 0 to half the rate.
    bool isComplex = false;
};

class StepBank
{
public:
    StepBank(const BandFormat& format, double history_s);
    ~StepBank();
    StepBank(const StepBank&) = delete;
    StepBank& operator=(const StepBank&) = delete;

    /// Samples between two steps; step n is centred on sample n * stepSamples().
    std::size_t stepSamples() const { return m_stepSamples; }
    double step_s() const { return static_cast<double>(m_stepSamples) / m_format.rate_Hz; }
    /// Samples of a step's window; that many have to be there around its centre.
    std::size_t windowSamples() const { return m_window.size(); }
    /// Steps that are kept.
    std::int64_t keptSteps() const { return m_keptSteps; }

    /// Computes one step; `samples` points to the begin of its window. Different steps may be
    /// computed by different threads at once, as long as those asked for are not among them.
    void compute(std::int64_t step, const std::complex<float>* samples);

    /// The band at one moment, seen through the filter at one frequency, its phase that of the
    /// middle of the step. Steps that are not kept any more, or not computed yet, are unspecified.
    std::complex<double> value(std::int64_t step, double frequency_Hz) const;
    /// Noise of a step, from the weaker filters around: a crash of static raises it, a signal does
    /// not.
    double rest(std::int64_t step, double frequency_Hz) const;

    /// Between two filters.
    double spacing_Hz() const { return m_spacing_Hz; }
    /// One filter, number `index` counted from 0 Hz; nothing beyond the edges of the band.
    std::complex<float> filter(std::int64_t step, long index) const;
    /// Part of a turn that a tone at a filter is ahead at a step, since the first sample.
    double turnsOf(long index, std::int64_t step) const;
    /// What the sum of all filters, added up over the windows that overlap, is multiplied with to
    /// be the sound, or the real part of the I/Q.
    double scale() const;

private:
    std::size_t filterOf(long index) const;
    void noteRest(const std::complex<float>* filters, float* rests) const;

    BandFormat m_format;
    std::size_t m_stepSamples;
    std::size_t m_size;    // of the transform
    std::size_t m_filters; // that are kept of it
    double m_spacing_Hz;
    std::int64_t m_keptSteps;
    std::vector<float> m_window;
    std::unique_ptr<kiss_fft_state, void (*)(void*)> m_transform;
    std::vector<float> m_taps;               // by place between two filters
    std::vector<std::complex<float>> m_ring; // by step, then filter
    std::vector<float> m_restRing;           // by step, then block of filters
    std::size_t m_blocks;
};

/// Takes the steps of one signal out of the bank.
class BandMixer
{
public:
    explicit BandMixer(const StepBank& bank)
        : m_bank(bank)
    {
    }
    /// Steps are asked for in order.
    Step step(std::int64_t step, double tone_Hz);

private:
    const StepBank& m_bank;
    double m_phase = 0.0;
};

} // namespace demodulator
