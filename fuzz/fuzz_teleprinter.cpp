// SPDX-License-Identifier: MIT
// Sound through the receiver of teleprinters. The input: a byte each for the sample rate, for what
// the receiver knows, and for the kind of the rest, which is samples of 8 bits, samples as
// floating-point numbers, or keying: eight elements of two tones a byte. The bit 4 of the kind asks
// for the same again in pieces.
#include "fuzz/fuzzing.h"
#include "signal/teleprinter/teleprinterreceiver.h"

#include <algorithm>
#include <cmath>
#include <cstring>

using fuzzing::require;

namespace {

// Enough to be found, and to end.
constexpr double MOST_s = 8.0;

struct Heard : teleprinter::TextSink
{
    void transmissionStarted(const teleprinter::Line& line, std::int64_t time_us) override
    {
        require(!isOpen, "a transmission stops before the next begins");
        require(std::isfinite(line.mark_Hz) && std::isfinite(line.space_Hz) && line.baud > 0.0,
                "a line has tones and a speed");
        isOpen = true;
        add(time_us);
    }
    void character(std::uint8_t character, std::int64_t time_us) override
    {
        require(isOpen, "characters lie within a transmission");
        text += static_cast<char>(character);
        add(time_us);
    }
    void transmissionStopped(const teleprinter::Line& /*line*/, std::int64_t time_us) override
    {
        require(isOpen, "what stops has begun");
        isOpen = false;
        add(time_us);
    }

    void add(std::int64_t time_us)
    {
        require(times_us.empty() || time_us >= times_us.back() - 1, "all comes in order of time");
        times_us.push_back(time_us);
    }

    bool isOpen = false;
    std::string text;
    std::vector<std::int64_t> times_us;
};

std::vector<float> keyed(const QByteArray& bytes, double rate_Hz)
{
    constexpr double SPEEDS[] = {45.45, 50.0, 100.0, 300.0};
    fuzzing::Bytes keying(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                          static_cast<std::size_t>(bytes.size()));
    const double lower_Hz = 300.0 + 4.0 * keying.byte();
    const double shift_Hz = 4.0 * keying.byte();
    const double element = rate_Hz / SPEEDS[keying.byte() % 4];
    std::vector<float> samples;
    double phase = 0.0;
    double until = 0.0;
    while (!keying.isEmpty() && static_cast<double>(samples.size()) < MOST_s * rate_Hz) {
        const std::uint8_t byte = keying.byte();
        for (unsigned bit = 0; bit < 8; ++bit) {
            until += element;
            const double tone_Hz = lower_Hz + ((byte >> bit & 1U) != 0 ? shift_Hz : 0.0);
            while (static_cast<double>(samples.size()) < until) {
                phase += 6.283185307 * tone_Hz / rate_Hz;
                samples.push_back(0.5F * static_cast<float>(std::sin(phase)));
            }
        }
    }
    return samples;
}

Heard hear(const std::vector<float>& samples, const teleprinter::Settings& settings,
           std::size_t piece)
{
    Heard heard;
    teleprinter::Receiver receiver(settings, heard);
    for (std::size_t at = 0; at < samples.size(); at += piece)
        receiver.push(samples.data() + at, std::min(piece, samples.size() - at));
    receiver.finish();
    receiver.finish();
    receiver.push(samples.data(), samples.size());
    return heard;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr double RATES_Hz[] = {4000.0, 8000.0, 11025.0, 3999.0};
    fuzzing::Bytes bytes(data, size);
    teleprinter::Settings settings;
    settings.sampleRate_Hz = RATES_Hz[bytes.byte() % 4];
    const std::uint8_t bits = bytes.byte();
    if (bits & 1)
        settings.known.codes = {static_cast<teleprinter::Code>(bits >> 1U & 1U)};
    if (bits & 4)
        settings.known.baud = 40.0 + bits;
    if (bits & 8)
        settings.known.shift_Hz = 4.0 * bits;
    if (bits & 16)
        settings.known.centre_Hz = 12.0 * bits;
    if (bits & 32)
        settings.known.reversed = (bits & 64) != 0;
    const std::uint8_t kind = bytes.byte();

    std::vector<float> samples;
    const QByteArray rest = bytes.rest();
    if (kind % 4 == 0) {
        for (const char byte : rest)
            samples.push_back(static_cast<float>(byte) / 128.0F);
    } else if (kind % 4 == 1) {
        samples.resize(static_cast<std::size_t>(rest.size()) / sizeof(float));
        if (!samples.empty())
            std::memcpy(samples.data(), rest.constData(), samples.size() * sizeof(float));
    } else {
        samples = keyed(rest, settings.sampleRate_Hz);
    }
    samples.resize(
        std::min(samples.size(), static_cast<std::size_t>(MOST_s * settings.sampleRate_Hz)));

    const Heard whole = hear(samples, settings, samples.size() + 1);
    require(!whole.isOpen, "every transmission is stopped");
    require(settings.sampleRate_Hz >= 4000.0 || whole.times_us.empty(),
            "at an unusable rate nothing is heard");
    require(static_cast<double>(whole.text.size()) <= 60.0 * (MOST_s + 1.0),
            "characters grow with the time");
    if (!(kind & 4))
        return 0;
    for (float& sample : samples)
        sample = std::isfinite(sample) ? sample : 0.0F;
    const Heard pieces = hear(samples, settings, 1U + kind);
    require(pieces.text == whole.text && pieces.times_us == whole.times_us,
            "pieces give what the whole gives, and what is not a number is silence");
    return 0;
}
