// SPDX-License-Identifier: MIT
// Sound through the demodulator. The input: a byte each for the sample rate, for the tone and the
// speed that the demodulator is given, and for the kind of the rest, which is samples of 8 bits,
// samples as floating-point numbers, or keying: marks and spaces in turn, in steps of 10 ms. The
// bit 4 of the kind asks for the same again in pieces, bit 8 for it not live.
#include "fuzz/fuzzing.h"
#include "morse/symbolcodes.h"
#include "signal/morse/demodulator.h"

#include "support/codelist.h"

#include <cmath>
#include <cstring>
#include <limits>

using fuzzing::require;

namespace {

// Enough for a transmission to begin and end, and for another one.
constexpr double MOST_s = 8.0;

std::vector<float> samplesOf8Bits(const QByteArray& bytes)
{
    std::vector<float> samples;
    for (const char byte : bytes)
        samples.push_back(static_cast<float>(byte) / 128.0F);
    return samples;
}

std::vector<float> floatingPoint(const QByteArray& bytes)
{
    std::vector<float> samples(static_cast<std::size_t>(bytes.size()) / sizeof(float));
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(float));
    return samples;
}

/// The first byte is the tone, the second the noise. Of the others the upper bit changes the tone
/// for good, and 0 is one sample that is not a number.
std::vector<float> keyed(const QByteArray& bytes, double rate_Hz)
{
    fuzzing::Bytes keying(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                          static_cast<std::size_t>(bytes.size()));
    double tone_Hz = 300.0 + 8.0 * keying.byte();
    const float noise = static_cast<float>(keying.byte()) / 512.0F;
    std::uint32_t random = 1;
    std::vector<float> samples;
    double phase = 0.0;
    for (bool isMark = true; !keying.isEmpty(); isMark = !isMark) {
        const std::uint8_t byte = keying.byte();
        if (byte & 0x80)
            tone_Hz = 300.0 + 20.0 * (byte & 0x7F);
        if (byte == 0)
            samples.push_back(std::numeric_limits<float>::quiet_NaN());
        const int steps = byte & 0x80 ? 8 : byte;
        const auto count = static_cast<std::size_t>(steps * rate_Hz / 100.0);
        for (std::size_t i = 0; i < count; ++i) {
            phase += 6.283185307 * tone_Hz / rate_Hz;
            random = random * 1664525U + 1013904223U;
            const float hiss = static_cast<float>(random >> 8) / 8388608.0F - 1.0F;
            samples.push_back((isMark ? 0.5F * static_cast<float>(std::sin(phase)) : 0.0F) +
                              noise * hiss);
        }
        if (static_cast<double>(samples.size()) > MOST_s * rate_Hz)
            break;
    }
    return samples;
}

testsupport::CodeList heard(const std::vector<float>& samples,
                            const demodulator::Settings& settings, std::size_t piece)
{
    testsupport::CodeList list;
    demodulator::Demodulator demodulator(settings, list);
    for (std::size_t at = 0; at < samples.size(); at += piece)
        demodulator.push(samples.data() + at, std::min(piece, samples.size() - at));
    demodulator.finish();
    demodulator.finish();
    demodulator.push(samples.data(), samples.size());
    return list;
}

bool isSame(const testsupport::Transmission& a, const testsupport::Transmission& b)
{
    return a.start_us == b.start_us && a.stop_us == b.stop_us && a.codes == b.codes &&
           a.times_us == b.times_us;
}

void requireOrder(const testsupport::CodeList& list, double duration_s)
{
    const auto end_us = static_cast<std::int64_t>((duration_s + 0.1) * 1e6);
    std::int64_t before_us = 0;
    std::size_t count = 0;
    for (const testsupport::Transmission& transmission : list.transmissions) {
        require(transmission.start_us >= before_us, "transmissions follow one another");
        require(transmission.stop_us >= transmission.start_us, "every transmission is stopped");
        require(transmission.stop_us <= end_us, "nothing is heard behind the end");
        before_us = transmission.start_us;
        int codeBefore = -1;
        for (std::size_t i = 0; i < transmission.codes.size(); ++i) {
            const int code = transmission.codes[i];
            require(code == eSYMBOL_DOT || code == eSYMBOL_DASH || code == eSYMBOL_NEW_CHAR ||
                        code == eSYMBOL_NEW_WORD || code == eSYMBOL_DOT_TOO_SHORT ||
                        code == eSYMBOL_DASH_TOO_LONG || code == eSYMBOL_PAUSE_TOO_SHORT,
                    "no other codes");
            require(code != eSYMBOL_NEW_WORD || codeBefore == eSYMBOL_NEW_CHAR,
                    "a word ends with its character");
            require(transmission.times_us[i] >= before_us, "codes come in order of time");
            require(transmission.times_us[i] <= transmission.stop_us,
                    "no code is later than the last mark");
            before_us = transmission.times_us[i];
            // A steady tone may lie in between.
            if (code != eSYMBOL_DASH_TOO_LONG)
                codeBefore = code;
        }
        count += transmission.codes.size();
        before_us = transmission.stop_us;
    }
    // At most four codes for a mark, and no hand keys 100 marks a second.
    require(static_cast<double>(count) <= 400.0 * (duration_s + 1.0), "codes grow with the time");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr double RATES_Hz[] = {4000.0, 8000.0, 11025.0, 3999.0};
    fuzzing::Bytes bytes(data, size);
    demodulator::Settings settings;
    settings.sampleRate_Hz = RATES_Hz[bytes.byte() % 4];
    if (const std::uint8_t tone = bytes.byte())
        settings.tone_Hz = 20.0 * tone;
    if (const std::uint8_t speed = bytes.byte())
        settings.speed_wpm = 1.0 * speed;
    const std::uint8_t kind = bytes.byte();
    settings.isLive = (kind & 8) == 0;

    std::vector<float> samples = kind % 4 == 0   ? samplesOf8Bits(bytes.rest())
                                 : kind % 4 == 1 ? floatingPoint(bytes.rest())
                                                 : keyed(bytes.rest(), settings.sampleRate_Hz);
    const auto most = static_cast<std::size_t>(MOST_s * settings.sampleRate_Hz);
    samples.resize(std::min(samples.size(), most));

    const testsupport::CodeList list = heard(samples, settings, samples.size() + 1);
    require(settings.sampleRate_Hz >= 4000.0 || list.transmissions.empty(),
            "at an unusable rate nothing is heard");
    requireOrder(list, static_cast<double>(samples.size()) / settings.sampleRate_Hz);

    // It costs as much again.
    if (!(kind & 4))
        return 0;
    for (float& sample : samples)
        sample = std::isfinite(sample) ? sample : 0.0F;
    const testsupport::CodeList pieces = heard(samples, settings, 1U + kind);
    require(std::equal(list.transmissions.begin(), list.transmissions.end(),
                       pieces.transmissions.begin(), pieces.transmissions.end(), isSame),
            "pieces give what the whole gives, and what is not a number is silence");
    return 0;
}
