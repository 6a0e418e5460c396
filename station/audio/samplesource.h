// SPDX-License-Identifier: MIT
// Where sound comes from: a recording or a pipe of raw samples.
#pragma once

#include <QString>

#include <cstddef>
#include <memory>
#include <optional>

namespace morsehost {

/// Mono samples, full scale +-1, read once from begin to end.
class SampleSource
{
public:
    virtual ~SampleSource() = default;

    virtual double sampleRate_Hz() const = 0;
    /// Frames in all, where that is known.
    virtual std::optional<long long> frameCount() const = 0;
    /// Time of the first sample as the recording itself says it, in microseconds since 1970-01-01
    /// 00:00 UTC.
    virtual std::optional<unsigned long long> recorded_us() const { return std::nullopt; }
    /// Fills up to `count` samples and returns how many; 0 at the end of input, after an error, or
    /// when interrupted. A pipe gives what it has as soon as it has any.
    virtual std::size_t read(float* samples, std::size_t count) = 0;
    /// Passes over up to `count` samples and returns how many; fewer at the end of input.
    virtual long long skip(long long count);
    /// What ended the input before its end; empty when nothing did.
    virtual QString error() const = 0;
};

struct OpenedSource
{
    std::unique_ptr<SampleSource> source; ///< null when the input cannot be used
    QString error;                        ///< why
};

/// Any file that libsndfile reads. `channel` counts from 1; without it the mean of all is taken.
OpenedSource openRecording(const QString& path, std::optional<int> channel);

/// What comes from a file descriptor, which stays the caller's: a recording where it begins like
/// one (RIFF, RF64, FORM, fLaC, OggS, ID3), otherwise raw samples, signed, 16 bits, little-endian,
/// mono, `rate_Hz` a second (default: 8000). A recording needs no rate, raw samples no channel: the
/// other is an error. Waits for the first bytes. WAV, AIFF and Ogg are heard while they arrive,
/// FLAC and MP3 when they have come to their end.
OpenedSource openPipe(int descriptor, std::optional<int> rate_Hz, std::optional<int> channel);

} // namespace morsehost
