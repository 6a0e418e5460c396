// SPDX-License-Identifier: MIT
#include "support/keyer.h"

#include "signal/numbers.h"
#include "support/disturbances.h"
#include "support/morsecode.h"
#include "support/othersounds.h"
#include "support/random.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>

namespace testsupport {

namespace {

using demodulator::PI;
constexpr double SHORTEST_UNITS = 0.15; // jitter never makes a mark or space vanish

double unit_s(double speed_wpm)
{
    return 1.2 / speed_wpm; // "PARIS " is 50 units
}

// 0..1 for each sample, with raised-cosine edges centred on the moments of keying.
std::vector<float> envelope(const std::vector<Piece>& pieces, double before_s, double after_s,
                            double rise_ms, double rate_Hz)
{
    double length_s = before_s + after_s;
    for (const Piece& piece : pieces)
        length_s += piece.duration_s;
    std::vector<float> result(static_cast<std::size_t>(length_s * rate_Hz) + 1, 0.0F);
    const double rise_s = std::max(rise_ms / 1000.0, 1.0 / rate_Hz);
    double start_s = before_s;
    for (const Piece& piece : pieces) {
        const double end_s = start_s + piece.duration_s;
        if (piece.mark) {
            const auto first =
                static_cast<std::size_t>(std::max(0.0, (start_s - rise_s) * rate_Hz));
            const auto last =
                std::min(result.size(), static_cast<std::size_t>((end_s + rise_s) * rate_Hz) + 1);
            for (std::size_t n = first; n < last; ++n) {
                const double t = static_cast<double>(n) / rate_Hz;
                const double in = std::clamp((t - start_s) / rise_s + 0.5, 0.0, 1.0);
                const double out = std::clamp((end_s - t) / rise_s + 0.5, 0.0, 1.0);
                const double value = 0.25 * (1.0 - std::cos(PI * in)) * (1.0 - std::cos(PI * out));
                result[n] = std::max(result[n], static_cast<float>(value));
            }
        }
        start_s = end_s;
    }
    return result;
}

// Linear-phase band-pass (windowed sinc), delay taken out.
std::vector<float> bandPass(const std::vector<float>& in, double centre_Hz, double width_Hz,
                            double rate_Hz)
{
    const int half = static_cast<int>(0.012 * rate_Hz);
    std::vector<double> taps;
    for (int k = -half; k <= half; ++k) {
        const double x = PI * width_Hz * k / rate_Hz;
        const double sinc = k == 0 ? 1.0 : std::sin(x) / x;
        const double window = 0.5 + 0.5 * std::cos(PI * k / (half + 1));
        taps.push_back(2.0 * width_Hz / rate_Hz * sinc * window *
                       std::cos(2.0 * PI * centre_Hz * k / rate_Hz));
    }
    std::vector<float> out(in.size(), 0.0F);
    const auto size = static_cast<std::ptrdiff_t>(in.size());
    for (std::ptrdiff_t n = 0; n < size; ++n) {
        const std::ptrdiff_t from = std::max<std::ptrdiff_t>(0, n - half);
        const std::ptrdiff_t to = std::min<std::ptrdiff_t>(size - 1, n + half);
        double sum = 0.0;
        for (std::ptrdiff_t m = from; m <= to; ++m)
            sum += in[static_cast<std::size_t>(m)] * taps[static_cast<std::size_t>(m - n + half)];
        out[static_cast<std::size_t>(n)] = static_cast<float>(sum);
    }
    return out;
}

void addStatic(std::vector<float>& samples, double perSecond, double rate_Hz, Random& random)
{
    const double length_s = static_cast<double>(samples.size()) / rate_Hz;
    const auto count = static_cast<std::size_t>(perSecond * length_s);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = random.below(samples.size());
        const double decay_s = 0.01 + 0.07 * random.uniform();
        const double level = amplitudeOf(20.0 * random.uniform());
        const auto width = static_cast<std::size_t>(4.0 * decay_s * rate_Hz);
        for (std::size_t n = at; n < std::min(samples.size(), at + width); ++n) {
            const double age_s = static_cast<double>(n - at) / rate_Hz;
            samples[n] += static_cast<float>(level * std::exp(-age_s / decay_s) * random.gauss());
        }
    }
}

void addHum(std::vector<float>& samples, double level_dB, double rate_Hz, Random& random)
{
    const double mains_Hz = 50.0 + 0.05 * random.gauss();
    for (int harmonic = 1; harmonic * mains_Hz < std::min(4000.0, 0.5 * rate_Hz); ++harmonic) {
        const double level = amplitudeOf(level_dB) * 2.0 / std::max(2, harmonic) *
                             (harmonic % 2 == 0 ? 1.0 : amplitudeOf(-10.0));
        const double turn = 2.0 * PI * harmonic * mains_Hz / rate_Hz;
        const double begin = 2.0 * PI * random.uniform();
        for (std::size_t n = 0; n < samples.size(); ++n)
            samples[n] +=
                static_cast<float>(level * std::sin(turn * static_cast<double>(n) + begin));
    }
}

void addEcho(std::vector<float>& samples, double late_ms, double level_dB, double rate_Hz)
{
    const auto late = static_cast<std::size_t>(late_ms * rate_Hz / 1000.0);
    const auto level = static_cast<float>(amplitudeOf(level_dB));
    for (std::size_t n = samples.size(); n-- > late;)
        samples[n] += level * samples[n - late];
}

// A receiver's automatic gain: what is louder than the tone turns it down at once.
void turnDown(std::vector<float>& samples, double recovery_s, double rate_Hz)
{
    const double keep = std::exp(-1.0 / (recovery_s * rate_Hz));
    double held = 0.0;
    for (float& sample : samples) {
        held = std::max(std::fabs(static_cast<double>(sample)), held * keep);
        sample /= static_cast<float>(std::max(1.0, held));
    }
}

void cutHoles(std::vector<float>& samples, double perSecond, double rate_Hz, Random& random)
{
    const auto period = static_cast<std::size_t>(rate_Hz / perSecond);
    const auto width = static_cast<std::size_t>(0.020 * rate_Hz);
    for (std::size_t begin = 0; begin + period < samples.size(); begin += period) {
        const std::size_t at = begin + random.below(period - width);
        std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(at), width, 0.0F);
    }
}

std::string idleText(std::size_t length, Random& random)
{
    std::string text;
    while (text.size() < length) {
        for (std::size_t i = 1 + random.below(6); i > 0; --i)
            text += static_cast<char>('A' + random.below(26));
        text += ' ';
    }
    return text;
}

void addTone(std::vector<float>& samples, const std::vector<float>& keyed, double tone_Hz,
             double level, const Path& path, double rate_Hz, const std::string& seed)
{
    Random random(seed + "/path");
    const double wanderPhase = 2.0 * PI * random.uniform();
    const double fadingPhase = 2.0 * PI * random.uniform();
    const Scatter scatter(path.scatter_Hz, random);
    const Scatter secondScatter(path.scatter_Hz, random);
    std::optional<std::complex<double>> scattered;
    const auto second = static_cast<std::size_t>(path.secondPath_ms * rate_Hz / 1000.0);
    std::vector<std::complex<double>> past(second + 1); // ring of the tone as it was sent
    std::complex<double> late = 0.0;                    // what the second path does now
    double phase = 0.0;
    double markStart_s = 0.0;
    bool inMark = false;
    for (std::size_t n = 0; n < samples.size() && n < keyed.size(); ++n) {
        const double t = static_cast<double>(n) / rate_Hz;
        double frequency = tone_Hz;
        if (path.wander_Hz != 0.0)
            frequency +=
                path.wander_Hz * std::sin(2.0 * PI * t / path.wanderPeriod_s + wanderPhase);
        const bool marking = keyed[n] > 0.0F;
        if (marking && !inMark)
            markStart_s = t;
        inMark = marking;
        if (path.chirp_Hz != 0.0 && marking)
            frequency +=
                path.chirp_Hz * std::exp(-(t - markStart_s) * 1000.0 / path.chirpSettling_ms);
        if (path.shift_Hz != 0.0 && keyed[n] < 0.5F)
            frequency -= path.shift_Hz;
        phase += 2.0 * PI * frequency / rate_Hz;
        if (path.samePhase && marking && t == markStart_s)
            phase = 0.0;
        if (path.shift_Hz == 0.0 && !marking && second == 0)
            continue;
        double gain = level;
        if (path.fading_dB != 0.0)
            gain *= amplitudeOf(-0.5 * path.fading_dB *
                                (1.0 - std::cos(2.0 * PI * path.fading_Hz * t + fadingPhase)));
        if (path.scatter_Hz != 0.0 && (n % 16 == 0 || !scattered))
            scattered = scatter.at(t);
        const double envelope = path.shift_Hz != 0.0 ? 1.0 : static_cast<double>(keyed[n]);
        const std::complex<double> sent = std::polar(gain * envelope, phase);
        if (second == 0) {
            const std::complex<double> turned =
                sent * scattered.value_or(std::complex<double>(1.0));
            samples[n] += static_cast<float>(turned.imag());
            continue;
        }
        past[n % past.size()] = sent;
        if (n % 16 == 0 || n == 0)
            late = secondScatter.at(t);
        const std::complex<double> both =
            sent * scattered.value_or(1.0) + past[(n + 1) % past.size()] * late;
        samples[n] += static_cast<float>(both.imag() / std::sqrt(2.0));
    }
}

} // namespace

std::vector<Piece> keying(const std::string& text, const Hand& hand, const std::string& seed)
{
    Random random(seed + "/hand");
    Random ragged(seed + "/ragged");
    std::vector<Piece> pieces;
    if (hand.tuning_s > 0.0)
        pieces = {{true, hand.tuning_s}, {false, hand.afterTuning_s}};
    double elapsed_s = 0.0;
    const double total = std::max<double>(1.0, static_cast<double>(text.size()));
    double speed_wpm = hand.speed_wpm;
    const double swingPhase = 2.0 * PI * Random(seed + "/swing").uniform();

    double base_wpm = hand.speed_wpm;
    double next_wpm = hand.speed_wpm; // from the next word on
    double jumped_wpm = hand.speed_wpm;
    int wordsLeft = hand.otherSpeed_wpm > 0.0 ? 4 : 0;
    const auto spread = [&ragged](double deviation) {
        return deviation > 0.0 ? std::exp(deviation * ragged.gauss()) : 1.0;
    };
    const auto add = [&](bool mark, double units) {
        units += mark ? hand.heavier_units : -hand.heavier_units;
        units += hand.jitter_units * random.gauss();
        const double duration_s = std::max(units, SHORTEST_UNITS) * unit_s(speed_wpm);
        pieces.push_back({mark, duration_s});
        elapsed_s += duration_s;
    };

    double pendingGap_units = 0.0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        speed_wpm = base_wpm;
        if (hand.endSpeed_wpm > 0.0)
            speed_wpm += (hand.endSpeed_wpm - hand.speed_wpm) * static_cast<double>(i) / total;
        if (hand.speedSwing_wpm != 0.0)
            speed_wpm += hand.speedSwing_wpm * std::sin(2.0 * PI * elapsed_s / 40.0 + swingPhase);
        if (hand.mostJump_wpm > 0.0)
            speed_wpm = jumped_wpm;
        speed_wpm *= spread(hand.speedSpread);
        const char* elements = morseOf(text[i]);
        if (elements == nullptr) {
            if (!pieces.empty())
                pendingGap_units = hand.wordGap_units;
            if ((hand.mostJump_wpm > 0.0 || hand.otherSpeed_wpm > 0.0) && wordsLeft-- <= 0) {
                wordsLeft = 3 + static_cast<int>(ragged.below(6));
                if (hand.otherSpeed_wpm > 0.0)
                    next_wpm = next_wpm == hand.speed_wpm ? hand.otherSpeed_wpm : hand.speed_wpm;
                jumped_wpm = hand.leastJump_wpm +
                             (hand.mostJump_wpm - hand.leastJump_wpm) * ragged.uniform();
            }
            continue;
        }
        if (pendingGap_units > 0.0)
            add(false, pendingGap_units * spread(hand.gapSpread));
        // The gap before it is one of the speed that was.
        if (next_wpm != base_wpm)
            speed_wpm = base_wpm = next_wpm;
        for (const char* element = elements; *element != 0; ++element) {
            if (element != elements)
                add(false, 1.0);
            const double dash_units =
                hand.dash_units +
                (hand.dashJitter_units > 0.0 ? hand.dashJitter_units * ragged.gauss() : 0.0);
            add(true, *element == '.' ? 1.0 : dash_units);
        }
        pendingGap_units = hand.characterGap_units;
    }
    return pieces;
}

std::vector<float> sound(const std::vector<Piece>& pieces, const Path& path, double rate_Hz,
                         const std::string& seed)
{
    const std::vector<float> keyed =
        envelope(pieces, path.before_s, path.after_s, path.rise_ms, rate_Hz);
    std::vector<float> samples(keyed.size(), 0.0F);
    addTone(samples, keyed, path.tone_Hz, 1.0, path, rate_Hz, seed);
    if (path.echo_ms > 0.0)
        addEcho(samples, path.echo_ms, path.echo_dB, rate_Hz);

    const double length_s = static_cast<double>(samples.size()) / rate_Hz;
    const auto beside = [&](const std::vector<float>& sound, double level_dB) {
        const auto level = static_cast<float>(amplitudeOf(level_dB));
        for (std::size_t n = 0; n < std::min(samples.size(), sound.size()); ++n)
            samples[n] += level * sound[n];
    };
    if (path.teleprinter_dB)
        beside(teleprinter(length_s, path.tone_Hz + 400.0, rate_Hz, seed), *path.teleprinter_dB);
    if (path.speech_dB)
        beside(speech(length_s, rate_Hz, seed), *path.speech_dB);
    Random others(seed + "/others");
    for (const Neighbour& neighbour : path.neighbours) {
        Hand other;
        other.speed_wpm = neighbour.speed_wpm;
        const double characters =
            length_s * neighbour.speed_wpm / 6.0; // more than there is time for
        const std::string text = idleText(static_cast<std::size_t>(characters) + 1, others);
        const std::vector<float> otherKeyed =
            envelope(keying(text, other, seed), 2.0 * others.uniform(), 0.0, path.rise_ms, rate_Hz);
        addTone(samples, otherKeyed, path.tone_Hz + neighbour.offset_Hz,
                amplitudeOf(neighbour.level_dB), Path(), rate_Hz, seed);
    }
    Random clicks(seed + "/clicks");
    addClicks(samples, path.clicks_per_s, rate_Hz, clicks);
    Random crashes(seed + "/static");
    addStatic(samples, path.static_per_s, rate_Hz, crashes);
    Random hum(seed + "/hum");
    if (path.hum_dB != 0.0)
        addHum(samples, path.hum_dB, rate_Hz, hum);
    if (path.snr_dB)
        addNoise(samples, rate_Hz, 1.0, *path.snr_dB, seed);
    Random holes(seed + "/holes");
    if (path.holes_per_s > 0.0)
        cutHoles(samples, path.holes_per_s, rate_Hz, holes);
    if (path.agc_s > 0.0)
        turnDown(samples, path.agc_s, rate_Hz);
    if (path.filter_Hz > 0.0)
        samples = bandPass(samples, path.tone_Hz, path.filter_Hz, rate_Hz);
    normalise(samples);
    return samples;
}

std::vector<float> sound(const std::string& text, const Hand& hand, const Path& path,
                         double rate_Hz, const std::string& seed)
{
    return sound(keying(text, hand, seed), path, rate_Hz, seed);
}

void addNoise(std::vector<float>& samples, double rate_Hz, double amplitude, double snr_dB,
              const std::string& seed)
{
    Random random(seed + "/noise");
    const double deviation = amplitude * noiseDeviation(rate_Hz, snr_dB);
    for (float& sample : samples)
        sample += static_cast<float>(deviation * random.gauss());
}

std::vector<float> noise(double duration_s, double deviation, double rate_Hz,
                         const std::string& seed)
{
    Random random(seed + "/noise");
    std::vector<float> samples(static_cast<std::size_t>(duration_s * rate_Hz));
    for (float& sample : samples)
        sample = static_cast<float>(deviation * random.gauss());
    return samples;
}

} // namespace testsupport
