// SPDX-License-Identifier: MIT
// A recording: the input is the file.
#include "fuzz/fuzzing.h"
#include "station/audio/samplesource.h"

#include <cmath>
#include <optional>
#include <vector>

using fuzzing::require;

namespace {

// A small file may claim, and an encoder deliver, hours of silence.
constexpr std::size_t MOST_SAMPLES = 1 << 16;

struct Reading
{
    std::vector<float> samples;
    bool isWhole = false; ///< read to the end
    QString error;
};

Reading readInPieces(morsehost::SampleSource& source, std::size_t piece)
{
    Reading reading;
    std::vector<float> samples(piece);
    while (reading.samples.size() < MOST_SAMPLES) {
        const std::size_t got = source.read(samples.data(), piece);
        require(got <= piece, "no more samples than asked for");
        reading.samples.insert(reading.samples.end(), samples.begin(),
                               samples.begin() + static_cast<std::ptrdiff_t>(got));
        if (got == 0) {
            reading.isWhole = true;
            break;
        }
    }
    reading.error = source.error();
    return reading;
}

/// Nothing when the file is refused.
std::optional<Reading> readRecording(const QString& path, std::optional<int> channel)
{
    const morsehost::OpenedSource opened = morsehost::openRecording(path, channel);
    require(opened.error.isEmpty() == bool(opened.source), "a refusal has a reason");
    if (!opened.source)
        return std::nullopt;
    const double rate_Hz = opened.source->sampleRate_Hz();
    require(rate_Hz >= 4000.0 && rate_Hz <= 768000.0, "the rate is one that can be used");
    const Reading reading = readInPieces(*opened.source, 4096);
    if (const auto frames = opened.source->frameCount()) {
        const auto count = static_cast<long long>(reading.samples.size());
        require(count <= *frames, "no more samples than announced");
        require(!reading.isWhole || count == *frames || !reading.error.isEmpty(),
                "an early end is reported");
    }
    return reading;
}

} // namespace

/// libsndfile 1.2 does not free what libvorbis allocated when it refuses a broken Ogg file.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions()
{
    return "leak:libvorbis";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzzing::Folder folder;
    const QString path = folder.write("input", fuzzing::bytesOf(data, size));

    const std::optional<Reading> mean = readRecording(path, std::nullopt);
    const std::optional<Reading> left = readRecording(path, 1);
    const std::optional<Reading> right = readRecording(path, 2);
    const std::optional<Reading> third = readRecording(path, 3);
    require(bool(mean) == bool(left), "what can be read has a first channel");
    require(left || !right, "who has a second channel has a first");
    require(right || !third, "who has a third channel has a second");
    if (!left || third)
        return 0;
    require(left->samples.size() == mean->samples.size(), "a channel is as long as the mean");
    require(left->error == mean->error, "and ends alike");
    for (std::size_t i = 0; i < mean->samples.size(); ++i) {
        float sum = left->samples[i];
        if (right)
            sum = (sum + right->samples[i]) / 2.0F;
        require(sum == mean->samples[i] || std::isnan(sum), "the mean is that of all channels");
    }
    return 0;
}
