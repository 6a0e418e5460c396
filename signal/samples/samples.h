// SPDX-License-Identifier: MIT
// First stage: input of any rate brought to a working rate of 4 to 16 kHz, of which the last
// seconds are kept so that a signal can be decoded from before it was noticed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace demodulator {

/// A sample that the rest can compute with: not-a-number and infinity become 0, excess is clipped.
float usableSample(float sample);

/// Low-pass and decimation by a whole number. Output sample k belongs to the moment of input sample
/// k * factor().
class Decimator
{
public:
    explicit Decimator(double inputRate_Hz);

    double outputRate_Hz() const { return m_outputRate_Hz; }
    int factor() const { return m_factor; }

    /// Appends what can be computed, of samples made usable.
    void push(const float* samples, std::size_t count, std::vector<float>& output);
    /// Appends the samples that still waited for their right-hand neighbours.
    void flush(std::vector<float>& output);

private:
    int m_factor;
    double m_outputRate_Hz;
    std::vector<float> m_taps;
    std::vector<float> m_pending; // input not used up yet; the window of the next output starts it
};

/// The last samples of a stream, addressed by their index since its beginning. Those before the
/// beginning or already forgotten read as 0.
class SampleHistory
{
public:
    explicit SampleHistory(std::size_t capacity);

    void push(const float* samples, std::size_t count);
    std::int64_t end() const { return m_end; }
    std::int64_t begin() const;
    /// Copies [from, from + count).
    void copy(std::int64_t from, std::size_t count, float* output) const;

private:
    std::vector<float> m_ring; // capacity is a power of two
    std::int64_t m_end = 0;
};

} // namespace demodulator
