// SPDX-License-Identifier: MIT
#include "support/othersounds.h"

#include "signal/numbers.h"
#include "support/random.h"
#include "support/teleprinterkeyer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace testsupport {

namespace {

using demodulator::TWO_PI;

std::vector<float> silent(double duration_s, double rate_Hz)
{
    return std::vector<float>(static_cast<std::size_t>(duration_s * rate_Hz), 0.0F);
}

double between(double least, double most, Random& random)
{
    return least + (most - least) * random.uniform();
}

// Rises and falls within 5 ms.
double edges(double age_s, double duration_s)
{
    return std::clamp(std::min(age_s, duration_s - age_s) / 0.005, 0.0, 1.0);
}

void addTone(std::vector<float>& samples, double begin_s, double duration_s, double tone_Hz,
             double amplitude, double decay_s, double rate_Hz)
{
    const auto first = static_cast<std::size_t>(begin_s * rate_Hz);
    const auto count = static_cast<std::size_t>(duration_s * rate_Hz);
    for (std::size_t n = 0; n < count && first + n < samples.size(); ++n) {
        const double age_s = static_cast<double>(n) / rate_Hz;
        const double decay = decay_s > 0.0 ? std::exp(-age_s / decay_s) : 1.0;
        samples[first + n] += static_cast<float>(amplitude * edges(age_s, duration_s) * decay *
                                                 std::sin(TWO_PI * tone_Hz * age_s));
    }
}

// Two tones in turn, without a jump of phase. `nextBit` says whether the next bit is a mark, the
// upper tone, and adds its length to the end of the last one.
template <typename NextBit>
std::vector<float> shifted(double duration_s, double centre_Hz, double shift_Hz, double rate_Hz,
                           NextBit nextBit)
{
    std::vector<float> samples = silent(duration_s, rate_Hz);
    double phase = 0.0;
    double bitEnd_s = 0.0;
    bool mark = true;
    for (std::size_t n = 0; n < samples.size(); ++n) {
        if (static_cast<double>(n) / rate_Hz >= bitEnd_s)
            mark = nextBit(bitEnd_s);
        phase += TWO_PI * (centre_Hz + (mark ? 0.5 : -0.5) * shift_Hz) / rate_Hz;
        samples[n] = static_cast<float>(std::sin(phase));
    }
    return samples;
}

// What a receiver's filter of 300 to 2700 Hz leaves of a tone.
double passed(double tone_Hz)
{
    return std::clamp(std::min(tone_Hz - 250.0, 2750.0 - tone_Hz) / 100.0, 0.0, 1.0);
}

} // namespace

std::vector<float> teleprinter(double duration_s, double centre_Hz, double rate_Hz,
                               const std::string& seed)
{
    constexpr double BAUD = 45.45;
    constexpr double SHIFT_Hz = 170.0;
    Random random(seed + "/teleprinter");
    int bit = 0; // of a character: start, five, stop
    return shifted(duration_s, centre_Hz, SHIFT_Hz, rate_Hz, [&](double& bitEnd_s) {
        const bool mark = bit != 0 && (bit == 6 || random.below(2) != 0U);
        bitEnd_s += (bit == 6 ? 1.5 : 1.0) / BAUD;
        bit = (bit + 1) % 7;
        return mark;
    });
}

std::vector<float> otherTeleprinters(double duration_s, double rate_Hz, const std::string& seed)
{
    constexpr double EACH_s = 20.0;
    constexpr double BAUDS[] = {45.45, 50.0, 75.0, 100.0};
    constexpr double SHIFTS_Hz[] = {85.0, 170.0, 450.0, 850.0};
    Random random(seed + "/teleprinters");
    std::vector<float> samples;
    while (static_cast<double>(samples.size()) < duration_s * rate_Hz) {
        Machine machine;
        machine.idle_s = 0.2;
        TonePath path;
        path.centre_Hz = between(900.0, 1800.0, random);
        path.shift_Hz = SHIFTS_Hz[random.below(4)];
        path.before_s = path.after_s = 0.0;
        if (random.below(4) == 0) {
            machine.code = TeleprinterCode::SitorB;
            path.shift_Hz = 170.0;
        } else {
            machine.baud = BAUDS[random.below(4)];
        }
        std::string text;
        while (text.size() < 250) // more than is sent in that time
            text += static_cast<char>(random.below(6) == 0 ? ' ' : 'A' + random.below(26));
        std::vector<float> part =
            teleprinterSound(teleprinterElements(text, machine, seed), path, rate_Hz, seed);
        part.resize(std::min(part.size(), static_cast<std::size_t>(EACH_s * rate_Hz)));
        samples.insert(samples.end(), part.begin(), part.end());
    }
    samples.resize(static_cast<std::size_t>(duration_s * rate_Hz));
    return samples;
}

std::vector<float> teleprinterBursts(double duration_s, double rate_Hz, const std::string& seed)
{
    constexpr double BAUD = 100.0;
    constexpr double SHIFT_Hz = 170.0;
    constexpr double CYCLE_s = 0.45;
    constexpr double BURST_s = 0.21;
    Random random(seed + "/bursts");
    const double centre_Hz = between(900.0, 1800.0, random);
    std::vector<float> samples =
        shifted(duration_s, centre_Hz, SHIFT_Hz, rate_Hz, [&](double& bitEnd_s) {
            bitEnd_s += 1.0 / BAUD;
            return random.below(2) != 0U;
        });
    for (std::size_t n = 0; n < samples.size(); ++n) {
        if (std::fmod(static_cast<double>(n) / rate_Hz, CYCLE_s) >= BURST_s)
            samples[n] = 0.0F;
    }
    return samples;
}

std::vector<float> speech(double duration_s, double rate_Hz, const std::string& seed)
{
    // First, second and third formant of five vowels, in Hz.
    constexpr double VOWELS[5][3] = {{730, 1090, 2440},
                                     {530, 1840, 2480},
                                     {270, 2290, 3010},
                                     {570, 840, 2410},
                                     {300, 870, 2240}};
    Random random(seed + "/speech");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    double at_s = 0.2;
    while (at_s < duration_s) {
        const std::size_t syllables = 3 + random.below(12);
        for (std::size_t i = 0; i < syllables && at_s < duration_s; ++i) {
            if (random.below(3) == 0) {
                const auto first = static_cast<std::size_t>(at_s * rate_Hz);
                const auto count = static_cast<std::size_t>(between(0.04, 0.1, random) * rate_Hz);
                for (std::size_t n = 0; n < count && first + n < samples.size(); ++n)
                    samples[first + n] += static_cast<float>(0.15 * random.gauss());
                at_s += static_cast<double>(count) / rate_Hz;
            }
            const double length_s = between(0.08, 0.25, random);
            const double pitch_Hz = between(90.0, 180.0, random);
            const double glide = between(-0.2, 0.2, random);
            const double* vowel = VOWELS[random.below(5)];
            const auto first = static_cast<std::size_t>(at_s * rate_Hz);
            const auto count = static_cast<std::size_t>(length_s * rate_Hz);
            const auto harmonics = static_cast<int>(3400.0 / pitch_Hz);
            std::vector<double> levels;
            for (int harmonic = 1; harmonic <= harmonics; ++harmonic) {
                double level = 0.0;
                for (int formant = 0; formant < 3; ++formant) {
                    const double off =
                        (harmonic * pitch_Hz - vowel[formant]) / (60.0 + 30.0 * formant);
                    level += (formant == 0 ? 1.0 : 0.5 / formant) / (1.0 + off * off);
                }
                levels.push_back(level);
            }
            double phase = 0.0;
            for (std::size_t n = 0; n < count && first + n < samples.size(); ++n) {
                const double age_s = static_cast<double>(n) / rate_Hz;
                phase += TWO_PI * pitch_Hz * (1.0 + glide * age_s / length_s) / rate_Hz;
                double sum = 0.0;
                for (int harmonic = 1; harmonic <= harmonics; ++harmonic)
                    sum +=
                        levels[static_cast<std::size_t>(harmonic - 1)] * std::sin(harmonic * phase);
                const double swell = std::sin(0.5 * TWO_PI * age_s / length_s);
                samples[first + n] += static_cast<float>(0.4 * swell * sum);
            }
            at_s += length_s + between(0.0, 0.05, random);
        }
        at_s += between(0.2, 1.2, random);
    }
    return samples;
}

std::vector<float> dialling(double duration_s, double rate_Hz, const std::string& seed)
{
    constexpr double LOW_Hz[] = {697, 770, 852, 941};
    constexpr double HIGH_Hz[] = {1209, 1336, 1477, 1633};
    Random random(seed + "/dialling");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    for (double at_s = 0.5; at_s < duration_s;) {
        for (std::size_t i = 4 + random.below(10); i > 0; --i) {
            addTone(samples, at_s, 0.1, LOW_Hz[random.below(4)], 0.5, 0.0, rate_Hz);
            addTone(samples, at_s, 0.1, HIGH_Hz[random.below(4)], 0.5, 0.0, rate_Hz);
            at_s += 0.1 + between(0.06, 0.16, random);
        }
        at_s += between(0.5, 4.0, random);
    }
    return samples;
}

std::vector<float> timePips(double duration_s, double rate_Hz, const std::string& seed)
{
    std::vector<float> samples = silent(duration_s, rate_Hz);
    Random random(seed + "/pips");
    const auto first = static_cast<int>(random.below(60));
    for (int second = 0; second < static_cast<int>(duration_s); ++second) {
        const bool minute = (first + second) % 60 == 0;
        addTone(samples, second, minute ? 0.5 : 0.1, 1000.0, 1.0, 0.0, rate_Hz);
    }
    return samples;
}

std::vector<float> timeCode(double duration_s, double rate_Hz, const std::string& seed)
{
    constexpr double LENGTHS_s[] = {0.2, 0.5, 0.8};
    Random random(seed + "/time code");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    double tone_Hz = 0.0;
    double low = 0.0;
    bool isKeyedHigh = false;
    double length_s = 0.0;
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double time_s = static_cast<double>(n) / rate_Hz;
        const double second_s = std::fmod(time_s, 1.0);
        if (std::fmod(time_s, 60.0) < 0.5 / rate_Hz) {
            tone_Hz = between(500.0, 1000.0, random);
            low = random.below(2) == 0 ? 0.32 : 0.14;
            isKeyedHigh = random.below(2) == 0;
        }
        if (second_s < 0.5 / rate_Hz) {
            const std::size_t kind = random.below(20);
            length_s = LENGTHS_s[kind == 0 ? 2 : kind % 2];
        }
        const double amplitude = (second_s < length_s) == isKeyedHigh ? 1.0 : low;
        samples[n] = static_cast<float>(amplitude * std::sin(TWO_PI * tone_Hz * time_s));
    }
    return samples;
}

std::vector<float> ringing(double duration_s, double rate_Hz, const std::string& seed)
{
    // On and off in turn.
    const std::vector<double> CADENCES_s[] = {{0.4, 0.2, 0.4, 2.0}, {1.0, 4.0},   {2.0, 4.0},
                                              {0.5, 0.5},           {0.25, 0.25}, {0.375, 0.375}};
    Random random(seed + "/ringing");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    for (double begin_s = 0.0; begin_s < duration_s; begin_s += 20.0) {
        const std::vector<double>& cadence_s = CADENCES_s[random.below(6)];
        const double tone_Hz = between(400.0, 450.0, random);
        double at_s = begin_s;
        for (std::size_t i = 0; at_s < begin_s + 20.0; i = (i + 1) % cadence_s.size()) {
            if (i % 2 == 0)
                addTone(samples, at_s, cadence_s[i], tone_Hz, 1.0, 0.0, rate_Hz);
            at_s += cadence_s[i];
        }
    }
    return samples;
}

std::vector<float> hoppingTones(double duration_s, double rate_Hz, const std::string& seed)
{
    Random random(seed + "/hopping");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    double hop_s = 0.0;
    int left = 0;
    for (double at_s = 0.2; at_s < duration_s; at_s += hop_s) {
        if (left-- == 0) {
            hop_s = between(0.032, 0.25, random);
            left = 100;
        }
        const double tone_Hz = 500.0 + 62.5 * static_cast<double>(random.below(16));
        addTone(samples, at_s, hop_s, tone_Hz, 1.0, 0.0, rate_Hz);
    }
    return samples;
}

std::vector<float> music(double duration_s, double rate_Hz, const std::string& seed)
{
    constexpr int SCALE[] = {0, 2, 4, 5, 7, 9, 11};
    Random random(seed + "/music");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    const double beat_s = between(0.2, 0.4, random);
    for (const int octave : {-12, 0}) {
        for (double at_s = 0.1; at_s < duration_s;) {
            const double beats = 0.5 * static_cast<double>(1 + random.below(octave < 0 ? 8 : 4));
            if (random.below(8) != 0) {
                const double note_Hz =
                    440.0 * std::pow(2.0, (octave + SCALE[random.below(7)] +
                                           12.0 * static_cast<double>(random.below(2))) /
                                              12.0);
                for (int harmonic = 1; harmonic <= 5; ++harmonic)
                    addTone(samples, at_s, beats * beat_s, harmonic * note_Hz,
                            0.35 / (harmonic * harmonic), 0.5, rate_Hz);
            }
            at_s += beats * beat_s;
        }
    }
    return samples;
}

std::vector<float> phaseKeying(double duration_s, double rate_Hz, const std::string& seed)
{
    constexpr double BAUD = 31.25;
    Random random(seed + "/phase");
    const double tone_Hz = between(500.0, 1500.0, random);
    std::vector<float> samples = silent(duration_s, rate_Hz);
    double before = 1.0;
    double after = 1.0;
    std::int64_t bit = -1;
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double bits = static_cast<double>(n) / rate_Hz * BAUD;
        if (static_cast<std::int64_t>(bits) != bit) {
            bit = static_cast<std::int64_t>(bits);
            before = after;
            after = random.below(2) != 0U ? before : -before;
        }
        const double share = 0.5 - 0.5 * std::cos(0.5 * TWO_PI * (bits - static_cast<double>(bit)));
        samples[n] =
            static_cast<float>((before + (after - before) * share) *
                               std::sin(TWO_PI * tone_Hz * static_cast<double>(n) / rate_Hz));
    }
    return samples;
}

std::vector<float> radar(double duration_s, bool isGated, double rate_Hz, const std::string& seed)
{
    constexpr double CHIP_s = 0.0005;
    Random random(seed + "/radar");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    for (double setting_s = 0.0; setting_s < duration_s; setting_s += 20.0) {
        const double interval_s = 1.0 / between(10.0, 50.0, random);
        const double length_s = between(0.002, 0.015, random);
        const double tone_Hz = between(400.0, 2000.0, random);
        const bool isCoded = random.below(2) != 0U;
        std::vector<double> code; // the same for every pulse
        for (double at_s = 0.0; at_s < length_s; at_s += CHIP_s)
            code.push_back(isCoded && random.below(2) != 0U ? -1.0 : 1.0);
        double gate_s = setting_s; // when it opens or closes next
        bool isOpen = !isGated;
        const double end_s = std::min(setting_s + 20.0, duration_s);
        for (double at_s = setting_s; at_s < end_s; at_s += interval_s) {
            while (isGated && at_s >= gate_s) {
                isOpen = !isOpen;
                gate_s += between(0.3, 5.0, random);
            }
            const auto first = static_cast<std::size_t>(at_s * rate_Hz);
            const auto count = isOpen ? static_cast<std::size_t>(length_s * rate_Hz) : 0;
            for (std::size_t n = 0; n < count && first + n < samples.size(); ++n) {
                const double age_s = static_cast<double>(n) / rate_Hz;
                samples[first + n] = static_cast<float>(
                    code[static_cast<std::size_t>(age_s / CHIP_s)] *
                    std::sin(TWO_PI * tone_Hz * static_cast<double>(first + n) / rate_Hz));
            }
        }
    }
    return samples;
}

std::vector<float> sweeps(double duration_s, double slowest_Hz_per_s, double fastest_Hz_per_s,
                          double rate_Hz, const std::string& seed)
{
    constexpr double LOW_Hz = 250.0;
    constexpr double HIGH_Hz = 2750.0;
    Random random(seed + "/sweeps");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    std::size_t n = 0;
    while (n < samples.size()) {
        n += static_cast<std::size_t>(between(0.2, 3.0, random) * rate_Hz);
        // As many slow ones as quick ones.
        const double speed_Hz_per_s =
            slowest_Hz_per_s *
            std::pow(fastest_Hz_per_s / slowest_Hz_per_s, between(0.0, 1.0, random));
        const bool isRising = random.below(2) != 0U;
        const double step_Hz = (isRising ? 1.0 : -1.0) * speed_Hz_per_s / rate_Hz;
        double phase = between(0.0, TWO_PI, random);
        for (double tone_Hz = isRising ? LOW_Hz : HIGH_Hz;
             n < samples.size() && tone_Hz >= LOW_Hz && tone_Hz <= HIGH_Hz; tone_Hz += step_Hz) {
            phase += TWO_PI * tone_Hz / rate_Hz;
            samples[n++] = static_cast<float>(passed(tone_Hz) * std::sin(phase));
        }
    }
    return samples;
}

std::vector<float> tunedAcross(double duration_s, double rate_Hz, const std::string& seed)
{
    Random random(seed + "/tuned");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    double from_Hz = between(-500.0, 3500.0, random);
    double phase = 0.0;
    std::size_t n = 0;
    while (n < samples.size()) {
        const double to_Hz = between(-500.0, 3500.0, random);
        const double turned_s = between(0.3, 4.0, random);
        const auto end =
            n + static_cast<std::size_t>((turned_s + between(0.0, 2.0, random)) * rate_Hz);
        for (const std::size_t first = n; n < std::min(end, samples.size()); ++n) {
            const double share = std::min(1.0, static_cast<double>(n - first) / rate_Hz / turned_s);
            // A hand begins and ends gently.
            const double tone_Hz =
                from_Hz + (to_Hz - from_Hz) * (0.5 - 0.5 * std::cos(0.5 * TWO_PI * share));
            phase += TWO_PI * tone_Hz / rate_Hz;
            samples[n] = static_cast<float>(passed(tone_Hz) * std::sin(phase));
        }
        from_Hz = to_Hz;
    }
    return samples;
}

std::vector<float> fallingNoise(double duration_s, double loud_s, double drop_dB, double rate_Hz,
                                const std::string& seed)
{
    Random random(seed + "/falling");
    std::vector<float> samples = silent(duration_s, rate_Hz);
    const double low = std::isinf(drop_dB) ? 0.0 : std::pow(10.0, -drop_dB / 20.0);
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double time_s = static_cast<double>(n) / rate_Hz;
        const bool isLow = std::fmod(time_s, 15.0) >= loud_s;
        samples[n] = static_cast<float>(0.2 * (isLow ? low : 1.0) * random.gauss());
    }
    return samples;
}

} // namespace testsupport
