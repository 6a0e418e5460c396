// SPDX-License-Identifier: MIT
// Hours of reception as raw samples for `morsehost decode -`: stations one after the other, each
// with a text, speed, tone and strength of its own, silence between them, and noise all the time.
//
//     longsignal HOURS SENT
//
// writes 8000 samples a second to standard output, and what was sent into the file SENT, a line a
// transmission.
#include "support/keyer.h"
#include "support/random.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using testsupport::Random;

constexpr double RATE_Hz = 8000.0;
constexpr double NOISE = 0.05; // deviation

std::string groups(std::size_t number, Random& random)
{
    std::string text = "VVV NR " + std::to_string(number) + " ";
    const std::size_t count = 25 + random.below(50);
    for (std::size_t i = 0; i < count; ++i) {
        for (int k = 0; k < 5; ++k)
            text += static_cast<char>('A' + random.below(26));
        text += ' ';
    }
    return text + "AR";
}

// Amplitude of a tone so far over the noise in 500 Hz.
double amplitude(double snr_dB)
{
    return NOISE * std::sqrt(2.0 * std::pow(10.0, snr_dB / 10.0) * 500.0 / (RATE_Hz / 2.0));
}

std::vector<float> transmission(const std::string& text, const std::string& seed, Random& random)
{
    testsupport::Hand hand;
    hand.speed_wpm = 16.0 + 16.0 * random.uniform();
    hand.jitter_units = 0.08 * random.uniform();
    testsupport::Path path;
    path.tone_Hz = 500.0 + 400.0 * random.uniform();
    path.after_s = 6.0 + 40.0 * random.uniform();
    std::vector<float> samples = testsupport::sound(text, hand, path, RATE_Hz, seed);
    const auto gain = static_cast<float>(amplitude(10.0 + 10.0 * random.uniform()) / 0.9);
    for (float& sample : samples)
        sample = gain * sample + static_cast<float>(NOISE * random.gauss());
    return samples;
}

bool write(const std::vector<float>& samples)
{
    std::vector<unsigned char> bytes;
    bytes.reserve(2 * samples.size());
    for (const float sample : samples) {
        const auto value = static_cast<int>(std::lround(32767.0F * sample));
        bytes.push_back(static_cast<unsigned char>(value & 0xFF));
        bytes.push_back(static_cast<unsigned char>((value >> 8) & 0xFF));
    }
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
}

} // namespace

int main(int argc, char* argv[])
{
    const double hours = argc == 3 ? std::atof(argv[1]) : 0.0;
    std::FILE* const sent = hours > 0.0 ? std::fopen(argv[2], "w") : nullptr;
    if (!sent) {
        std::fputs("usage: longsignal HOURS SENT\n", stderr);
        return 2;
    }
    double left_s = 3600.0 * hours;
    for (std::size_t number = 1; left_s > 0.0; ++number) {
        const std::string seed = "long run " + std::to_string(number);
        Random random(seed);
        const std::string text = groups(number, random);
        const std::vector<float> samples = transmission(text, seed, random);
        std::fprintf(sent, "%s\n", text.c_str());
        if (!write(samples))
            return 1;
        left_s -= static_cast<double>(samples.size()) / RATE_Hz;
    }
    const bool written = std::fflush(stdout) == 0;
    return std::fclose(sent) == 0 && written ? 0 : 1;
}
