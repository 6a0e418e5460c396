// SPDX-License-Identifier: MIT
// Recordings for tests, read by libsndfile.
#pragma once

#include <sndfile.hh>
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

} // namespace testsupport
