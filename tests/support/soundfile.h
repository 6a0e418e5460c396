// SPDX-License-Identifier: MIT
// Recordings for tests and benches, read and written by libsndfile.
#pragma once

#include <algorithm>
#include <sndfile.hh>
#include <stdexcept>
#include <string>
#include <vector>

namespace testsupport {

struct SoundFile
{
    double rate_Hz = 0.0;
    std::vector<float> samples; ///< mean of all channels
};

/// Empty where the file cannot be read.
inline SoundFile readSoundFile(const std::string& path)
{
    SoundFile result;
    SndfileHandle file(path);
    if (file.error() != 0 || file.channels() < 1)
        return result;
    result.rate_Hz = file.samplerate();
    const auto channels = static_cast<std::size_t>(file.channels());
    std::vector<float> frames(4096 * channels);
    for (sf_count_t count = file.readf(frames.data(), 4096); count > 0;
         count = file.readf(frames.data(), 4096)) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            float sum = 0.0F;
            for (std::size_t channel = 0; channel < channels; ++channel)
                sum += frames[i * channels + channel];
            result.samples.push_back(sum / static_cast<float>(channels));
        }
    }
    return result;
}

/// A sample of each channel in turn; what is beyond full scale (1) is clipped.
inline void writeSoundFile(const std::string& path, double rate_Hz, std::vector<float> samples,
                           int channels = 1, int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16)
{
    for (float& sample : samples)
        sample = std::clamp(sample, -1.0F, 1.0F);
    SndfileHandle file(path, SFM_WRITE, format, channels, static_cast<int>(rate_Hz));
    const auto frames = static_cast<sf_count_t>(samples.size()) / channels;
    // In pieces: one encoder recurses over what it is given at once.
    for (sf_count_t done = 0; done < frames;) {
        const sf_count_t count = std::min<sf_count_t>(4096, frames - done);
        if (file.writef(&samples[static_cast<std::size_t>(done * channels)], count) != count)
            throw std::runtime_error("cannot write " + path);
        done += count;
    }
}

} // namespace testsupport
