// SPDX-License-Identifier: MIT
// Spectra of frames of sound that overlap, of which the last ones are kept, and the window that
// every spectrum here looks through.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

struct kiss_fftr_state;

namespace demodulator {

/// A raised cosine (von Hann).
struct Window
{
    explicit Window(std::size_t length);

    std::vector<float> values;
    double sum = 0.0;     ///< square of it: power of a tone in its bin, over that of the tone
    double squares = 0.0; ///< power of noise in a bin, over the variance of a sample
};

class PowerSpectra
{
public:
    /// Frames of `length` samples; the transform is `size` samples long, at least as long as a
    /// frame and even. The newest `kept` frames are remembered.
    PowerSpectra(std::size_t length, std::size_t size, std::int64_t kept);
    PowerSpectra(PowerSpectra&&) = default;

    const Window& window() const { return m_window; }
    std::size_t size() const { return m_size; }
    /// Of 0 Hz up to half of the sample rate, both included.
    std::size_t bins() const { return m_output.size(); }

    /// The next frame.
    void push(const float* samples);
    std::int64_t frames() const { return m_frames; }
    /// How many of the newest `count` frames there are and are kept.
    std::int64_t available(std::int64_t count) const;

    /// Power of each bin; 0 is the newest frame. The frame has to be available.
    const float* frame(std::int64_t age) const;

private:
    Window m_window;
    std::size_t m_size;
    std::int64_t m_kept;
    std::unique_ptr<kiss_fftr_state, void (*)(void*)> m_transform;
    std::vector<float> m_input; // the rest of a padded one stays 0
    std::vector<std::complex<float>> m_output;
    std::vector<float> m_powers; // ring of frames
    std::int64_t m_frames = 0;
};

} // namespace demodulator
