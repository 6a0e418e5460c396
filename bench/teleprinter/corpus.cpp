// SPDX-License-Identifier: MIT
#include "teleprinter/corpus.h"

#include "reception/corpus.h"
#include "signal/numbers.h"
#include "support/disturbances.h"
#include "support/morsecode.h"
#include "support/random.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace teleprinterbench {

namespace {

using testsupport::Machine;
using testsupport::Random;
using testsupport::TeleprinterCode;
using testsupport::TonePath;

using demodulator::PI;
constexpr std::size_t LINE_LENGTH = 64;
constexpr double LOWEST_CENTRE_Hz = 1000.0;
constexpr double HIGHEST_CENTRE_Hz = 2000.0;

Condition weak(const char* name, const char* title, double snr_dB)
{
    Condition condition;
    condition.name = name;
    condition.title = title;
    condition.path.snr_dB = snr_dB;
    return condition;
}

Condition changed(const char* name, const char* title, double snr_dB,
                  const std::function<void(Machine&, TonePath&)>& change)
{
    Condition condition = weak(name, title, snr_dB);
    change(condition.machine, condition.path);
    return condition;
}

Condition ascii(const char* name, const char* title, double snr_dB, TeleprinterCode code,
                double baud, double stop_bits, double shift_Hz = TonePath().shift_Hz)
{
    return changed(name, title, snr_dB, [&](Machine& machine, TonePath& path) {
        machine.code = code;
        machine.baud = baud;
        machine.stop_bits = stop_bits;
        path.shift_Hz = shift_Hz;
    });
}

// Words and groups in lines, as a machine's operator sends them. Of the figures, only those that
// are the same in the international alphabet and in that of the United States.
std::string linesOf(const std::string& text)
{
    std::string lines;
    std::size_t column = 0;
    for (const char c : text) {
        if (c == ' ' && column > LINE_LENGTH) {
            lines += "\r\n";
            column = 0;
            continue;
        }
        lines += c == '=' ? '-' : c == '+' ? '/' : c == '\'' ? ' ' : c;
        ++column;
    }
    return lines;
}

std::string comparable(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (std::isspace(static_cast<unsigned char>(c)) == 0)
            result += c;
        else if (!result.empty() && result.back() != ' ')
            result += ' ';
    }
    while (!result.empty() && result.back() == ' ')
        result.pop_back();
    return result;
}

// Syllables: a voice of gliding pitch through three formants, hisses between, pauses after.
std::vector<float> speech(double duration_s, const std::string& seed)
{
    Random random(seed + "/speech");
    std::vector<float> samples(static_cast<std::size_t>(duration_s * RATE_Hz), 0.0F);
    std::size_t at = 0;
    while (at < samples.size()) {
        const double length_s = 0.08 + 0.2 * random.uniform();
        const double pitch_Hz = 90.0 + 120.0 * random.uniform();
        const double glide = 0.3 * (random.uniform() - 0.5);
        const double formants_Hz[] = {300.0 + 500.0 * random.uniform(),
                                      900.0 + 1300.0 * random.uniform(),
                                      2300.0 + 700.0 * random.uniform()};
        const bool hisses = random.below(4) == 0;
        const auto count = static_cast<std::size_t>(length_s * RATE_Hz);
        double phase = 0.0;
        for (std::size_t n = 0; n < count && at + n < samples.size(); ++n) {
            const double part = static_cast<double>(n) / static_cast<double>(count);
            const double shape = std::sin(PI * part);
            if (hisses) {
                samples[at + n] = static_cast<float>(0.3 * shape * random.gauss());
                continue;
            }
            const double now_Hz = pitch_Hz * (1.0 + glide * part);
            phase += 2.0 * PI * now_Hz / RATE_Hz;
            double sum = 0.0;
            for (int harmonic = 1; harmonic * now_Hz < 3500.0; ++harmonic) {
                double gain = 0.02;
                for (const double formant_Hz : formants_Hz)
                    gain += 1.0 / (1.0 + std::pow((harmonic * now_Hz - formant_Hz) / 80.0, 2.0));
                sum += gain * std::sin(harmonic * phase);
            }
            samples[at + n] = static_cast<float>(shape * sum);
        }
        at += count;
        if (random.below(4) == 0)
            at += static_cast<std::size_t>((0.1 + 0.4 * random.uniform()) * RATE_Hz);
    }
    testsupport::normalise(samples);
    return samples;
}

// Chords and runs of notes that are struck and fade away.
std::vector<float> music(double duration_s, const std::string& seed)
{
    Random random(seed + "/music");
    std::vector<float> samples(static_cast<std::size_t>(duration_s * RATE_Hz), 0.0F);
    const double beat_s = 0.12 + 0.25 * random.uniform();
    constexpr int SCALE[] = {0, 2, 4, 5, 7, 9, 11};
    const auto noteOf = [&] {
        const auto octave = static_cast<double>(random.below(3));
        const double step = SCALE[random.below(7)];
        return 220.0 * std::pow(2.0, octave + step / 12.0);
    };
    for (double at_s = 0.0; at_s < duration_s; at_s += beat_s) {
        const std::size_t voices = 1 + random.below(4);
        for (std::size_t voice = 0; voice < voices; ++voice) {
            const double note_Hz = noteOf();
            const double held_s = beat_s * static_cast<double>(1 + random.below(4));
            const auto first = static_cast<std::size_t>(at_s * RATE_Hz);
            const auto count = static_cast<std::size_t>(held_s * RATE_Hz);
            for (std::size_t n = 0; n < count && first + n < samples.size(); ++n) {
                const double t = static_cast<double>(n) / RATE_Hz;
                const double level = std::exp(-2.0 * t) * std::min(1.0, t / 0.01);
                for (int harmonic = 1; harmonic <= 4 && harmonic * note_Hz < 3800.0; ++harmonic)
                    samples[first + n] += static_cast<float>(
                        level / harmonic * std::sin(2.0 * PI * harmonic * note_Hz * t));
            }
        }
    }
    testsupport::normalise(samples);
    return samples;
}

// Two stations that key Morse a shift apart.
std::vector<float> twoMorse(double duration_s, const std::string& seed)
{
    testsupport::Path path;
    path.snr_dB = 15.0;
    path.tone_Hz = 1200.0;
    path.neighbours = {{170.0, 0.0, 27.0}};
    std::string text = reception::text("prose", seed, static_cast<std::size_t>(duration_s * 3.0));
    std::vector<float> samples = testsupport::sound(text, testsupport::Hand(), path, RATE_Hz, seed);
    samples.resize(static_cast<std::size_t>(duration_s * RATE_Hz), 0.0F);
    return samples;
}

std::vector<float> morse(double duration_s, const std::string& seed)
{
    testsupport::Path path;
    path.snr_dB = 10.0;
    testsupport::Hand hand;
    hand.speed_wpm = 15.0 + 25.0 * Random(seed + "/speed").uniform();
    hand.jitter_units = 0.1;
    std::string text = reception::text("contact", seed, static_cast<std::size_t>(duration_s * 4.0));
    std::vector<float> samples = testsupport::sound(text, hand, path, RATE_Hz, seed);
    samples.resize(static_cast<std::size_t>(duration_s * RATE_Hz), 0.0F);
    return samples;
}

// Elements of no form: a shift-keyed line of data.
std::vector<float> data(double duration_s, double baud, const std::string& seed)
{
    Random random(seed + "/data");
    std::vector<testsupport::Piece> elements;
    for (double at_s = 0.0; at_s < duration_s; at_s += 1.0 / baud)
        elements.push_back({random.below(2) == 0, 1.0 / baud});
    TonePath path;
    path.snr_dB = 12.0;
    path.before_s = path.after_s = 0.0;
    return testsupport::teleprinterSound(elements, path, RATE_Hz, seed);
}

} // namespace

const std::vector<Condition>& conditions()
{
    static const std::vector<Condition> rows = {
        weak("snr20", "+20 dB", 20.0),
        weak("snr6", "+6 dB", 6.0),
        weak("snr3", "+3 dB", 3.0),
        weak("snr0", "0 dB", 0.0),
        weak("snr-2", "-2 dB", -2.0),
        weak("snr-4", "-4 dB", -4.0),
        changed("wide", "50 Bd, 450 Hz, +3 dB", 3.0,
                [](Machine& machine, TonePath& path) {
                    machine.baud = 50.0;
                    path.shift_Hz = 450.0;
                }),
        changed("bd75", "75 Bd, 850 Hz", 20.0,
                [](Machine& machine, TonePath& path) {
                    machine.baud = 75.0;
                    path.shift_Hz = 850.0;
                }),
        changed("bd100", "100 Bd", 20.0, [](Machine& machine, TonePath&) { machine.baud = 100.0; }),
        changed("narrow", "85 Hz shift, +10 dB", 10.0,
                [](Machine&, TonePath& path) { path.shift_Hz = 85.0; }),
        changed("reversed", "polarity reversed", 20.0,
                [](Machine&, TonePath& path) { path.reversed = true; }),
        changed("drift", "drift of 30 Hz", 20.0,
                [](Machine&, TonePath& path) { path.drift_Hz = 30.0; }),
        changed("fast", "clock 2 % fast", 20.0,
                [](Machine& machine, TonePath&) { machine.fasterClock = 0.02; }),
        changed("stop1", "stop of 1 element, +6 dB", 6.0,
                [](Machine& machine, TonePath&) { machine.stop_bits = 1.0; }),
        changed("late", "after 20 s of noise, +6 dB", 6.0,
                [](Machine&, TonePath& path) { path.before_s = 20.0; }),
        changed("clicks", "3 clicks a second", 20.0,
                [](Machine&, TonePath& path) { path.clicks_per_s = 3.0; }),
        changed("fading", "fading, 15 dB", 20.0,
                [](Machine&, TonePath& path) { path.fading_dB = 15.0; }),
        changed("selective", "tones fading against each other, 15 dB", 20.0,
                [](Machine&, TonePath& path) { path.selective_dB = 15.0; }),
        changed("rayleigh", "flat fading (Rayleigh, 0.3 Hz), +12 dB on average", 12.0,
                [](Machine&, TonePath& path) { path.scatter_Hz = 0.3; }),
        changed("echo", "two paths 2 ms apart (Rayleigh, 0.3 Hz), +12 dB on average", 12.0,
                [](Machine&, TonePath& path) {
                    path.scatter_Hz = 0.3;
                    path.echo_ms = 2.0;
                }),
        changed("carrier", "keyed carrier 350 Hz up, 3 dB down", 20.0,
                [](Machine&, TonePath& path) { path.carrier_dB = -3.0; }),
        changed("typed", "typed by hand", 20.0,
                [](Machine& machine, TonePath&) { machine.typedPause_bits = 6.0; }),
        changed("slow", "typed slowly by hand, +6 dB", 6.0,
                [](Machine& machine, TonePath&) { machine.typedPause_bits = 20.0; }),
        ascii("ascii110", "ASCII, 110 Bd, 7 bits, even parity, +10 dB", 10.0,
              TeleprinterCode::Ascii7Even, 110.0, 2.0),
        ascii("ascii300", "ASCII, 300 Bd, 200 Hz, 8 bits, +15 dB", 15.0, TeleprinterCode::Ascii8,
              300.0, 1.0, 200.0),
        ascii("ascii150", "ASCII, 150 Bd, 170 Hz, 7 bits, +15 dB", 15.0, TeleprinterCode::Ascii7,
              150.0, 1.0),
        ascii("ascii200", "ASCII, 200 Bd, 170 Hz, 8 bits, +15 dB", 15.0, TeleprinterCode::Ascii8,
              200.0, 1.0),
        ascii("ascii300n", "ASCII, 300 Bd, 170 Hz, 7 bits, 2 stops, +15 dB", 15.0,
              TeleprinterCode::Ascii7, 300.0, 2.0),
        ascii("ascii300w", "ASCII, 300 Bd, 850 Hz, 7 bits, even parity, +12 dB", 12.0,
              TeleprinterCode::Ascii7Even, 300.0, 1.0, 850.0),
        ascii("ascii-8o", "ASCII, 110 Bd, 8 bits, odd parity, +10 dB", 10.0,
              TeleprinterCode::Ascii8Odd, 110.0, 1.0),
        changed("sitor6", "Sitor-B, +6 dB", 6.0,
                [](Machine& machine, TonePath&) {
                    machine.code = TeleprinterCode::SitorB;
                    machine.baud = 100.0;
                }),
        changed("sitor0", "Sitor-B, 0 dB", 0.0,
                [](Machine& machine, TonePath&) {
                    machine.code = TeleprinterCode::SitorB;
                    machine.baud = 100.0;
                }),
        changed("sitor-fade", "Sitor-B, flat fading (Rayleigh, 0.3 Hz), +12 dB on average", 12.0,
                [](Machine& machine, TonePath& path) {
                    machine.code = TeleprinterCode::SitorB;
                    machine.baud = 100.0;
                    path.scatter_Hz = 0.3;
                }),
    };
    return rows;
}

namespace {

Recording recordNamed(const Condition& condition, const std::string& name, const std::string& text)
{
    Recording recording;
    recording.name = name;
    Random random(name);
    recording.path = condition.path;
    recording.path.centre_Hz =
        LOWEST_CENTRE_Hz + (HIGHEST_CENTRE_Hz - LOWEST_CENTRE_Hz) * random.uniform();
    recording.sent = testsupport::teleprinterText(text, condition.machine.code);
    recording.samples = testsupport::teleprinterSound(
        testsupport::teleprinterElements(recording.sent, condition.machine, name), recording.path,
        RATE_Hz, name);
    return recording;
}

} // namespace

Recording record(const Condition& condition, const std::string& kind, const std::string& seed,
                 std::size_t length)
{
    return recordNamed(condition, condition.name + "." + kind + "." + seed,
                       linesOf(reception::text(kind, seed, length)));
}

Recording record(const Condition& condition, const std::string& text)
{
    return recordNamed(condition, condition.name, text);
}

double errorRate(const std::string& sent, const std::string& received)
{
    const std::string a = comparable(sent);
    const std::string b = comparable(received);
    return static_cast<double>(testsupport::editDistance(a, b)) /
           static_cast<double>(std::max<std::size_t>(1, a.size()));
}

const std::vector<Other>& others()
{
    static const std::vector<Other> rows = [] {
        std::vector<Other> list = {
            {"speech", speech},
            {"music", music},
            {"Morse", morse},
            {"Morse of two stations 170 Hz apart", twoMorse},
            {"shift-keyed data, 50 Bd",
             [](double duration_s, const std::string& seed) {
                 return data(duration_s, 50.0, seed);
             }},
            {"shift-keyed data, 100 Bd",
             [](double duration_s, const std::string& seed) {
                 return data(duration_s, 100.0, seed);
             }},
            {"shift-keyed data, 200 Bd",
             [](double duration_s, const std::string& seed) {
                 return data(duration_s, 200.0, seed);
             }},
            {"shift-keyed data, 300 Bd",
             [](double duration_s, const std::string& seed) {
                 return data(duration_s, 300.0, seed);
             }},
        };
        for (const reception::Silence& silence : reception::silences())
            list.push_back({silence.title, silence.make});
        return list;
    }();
    return rows;
}

} // namespace teleprinterbench
