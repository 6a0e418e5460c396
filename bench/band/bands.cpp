// SPDX-License-Identifier: MIT
#include "band/bands.h"

#include "reception/corpus.h"
#include "signal/numbers.h"
#include "support/random.h"
#include "support/soundfile.h"

#include <algorithm>
#include <cmath>

namespace bands {

using testsupport::Hand;
using testsupport::Piece;
using testsupport::Random;

namespace {

using demodulator::PI;
constexpr double RISE_s = 0.005;
constexpr double LARGEST_OFFSET_Hz = 40.0; // of a station that answers
constexpr double LARGEST_JITTER_units = 0.08;
constexpr double PEAK = 0.9;

double between(double least, double most, Random& random)
{
    return least + (most - least) * random.uniform();
}

std::string callSign(Random& random)
{
    std::string call;
    for (std::size_t i = 1 + random.below(2); i > 0; --i)
        call += static_cast<char>('A' + random.below(26));
    call += static_cast<char>('0' + random.below(10));
    for (std::size_t i = 2 + random.below(2); i > 0; --i)
        call += static_cast<char>('A' + random.below(26));
    return call;
}

std::string serial(Random& random)
{
    std::string number = std::to_string(1 + random.below(999));
    return std::string(3 - number.size(), '0') + number;
}

struct Station
{
    std::string call;
    double tone_Hz;
    double level_dB;
    Hand hand;
};

Station stationNear(const Kind& kind, double tone_Hz, double offset_Hz, Random& random)
{
    Station station;
    station.call = callSign(random);
    station.tone_Hz = tone_Hz + between(-offset_Hz, offset_Hz, random);
    station.level_dB = between(kind.weakest_dB, kind.strongest_dB, random);
    station.hand.speed_wpm = between(kind.slowest_wpm, kind.fastest_wpm, random);
    station.hand.jitter_units = between(0.0, LARGEST_JITTER_units, random);
    return station;
}

double lengthOf(const std::vector<Piece>& pieces)
{
    double length_s = 0.0;
    for (const Piece& piece : pieces)
        length_s += piece.duration_s;
    return length_s;
}

std::string seedOf(const Over& over)
{
    return over.text + std::to_string(over.begin_s) + std::to_string(over.tone_Hz);
}

std::vector<Piece> keyingOf(const Over& over)
{
    if (over.teleprinter)
        return testsupport::teleprinterElements(over.text, over.teleprinter->machine, seedOf(over));
    return testsupport::keying(over.text, over.hand, seedOf(over));
}

// Sends a text if it ends before the band does; otherwise what of it fits, whole words only.
bool send(Frequency& frequency, const Station& station, std::string text, double begin_s,
          double end_s)
{
    while (!text.empty()) {
        Over over = {begin_s, 0.0, station.tone_Hz, station.level_dB, text, station.hand};
        over.end_s = begin_s + lengthOf(keyingOf(over));
        if (over.end_s < end_s) {
            frequency.overs.push_back(over);
            return true;
        }
        const std::size_t blank = text.find_last_of(' ');
        text.resize(blank == std::string::npos ? 0 : blank);
    }
    return false;
}

void fillSteady(const Kind& kind, Frequency& frequency, const std::string& seed, Random& random)
{
    const Station station = stationNear(kind, frequency.tone_Hz, 0.0, random);
    const std::string& text = reception::kinds()[random.below(reception::kinds().size())];
    const auto length = static_cast<std::size_t>(kind.duration_s * station.hand.speed_wpm / 8.0);
    send(frequency, station, reception::text(text, seed, length), between(0.5, 3.0, random),
         kind.duration_s - 1.0);
}

// Of the teleprinters of a band, the one of this number.
Teleprinter teleprinterOf(std::size_t number)
{
    Teleprinter teleprinter = {{}, 170.0};
    if (number % 3 == 1) {
        teleprinter.machine.baud = 50.0;
        teleprinter.shift_Hz = 450.0;
    } else if (number % 3 == 2) {
        teleprinter.machine.code = testsupport::TeleprinterCode::SitorB;
        teleprinter.machine.baud = 100.0;
    }
    return teleprinter;
}

void fillTeleprinter(const Kind& kind, Frequency& frequency, std::size_t number,
                     const std::string& seed, Random& random)
{
    const Teleprinter teleprinter = teleprinterOf(number);
    const bool isSitor = teleprinter.machine.code == testsupport::TeleprinterCode::SitorB;
    const double characters_per_s = teleprinter.machine.baud / (isSitor ? 19.0 : 8.5);
    const auto length = static_cast<std::size_t>((kind.duration_s - 15.0) * characters_per_s);
    const std::string& text = reception::kinds()[random.below(reception::kinds().size())];
    Over over = {
        between(0.5, 3.0, random),
        0.0,
        frequency.tone_Hz,
        between(kind.weakest_dB, kind.strongest_dB, random),
        testsupport::teleprinterText(reception::text(text, seed, length), teleprinter.machine.code),
        {},
        teleprinter};
    over.end_s = over.begin_s + lengthOf(keyingOf(over));
    frequency.overs.push_back(over);
}

void fillPauses(const Kind& kind, Frequency& frequency, const std::string& seed, Random& random)
{
    const Station station = stationNear(kind, frequency.tone_Hz, 0.0, random);
    double begin_s = between(0.5, 8.0, random);
    for (int over = 0;; ++over) {
        const std::string& text = reception::kinds()[random.below(reception::kinds().size())];
        const std::size_t length = 30 + random.below(60);
        if (!send(frequency, station,
                  reception::text(text, seed + "/" + std::to_string(over), length), begin_s,
                  kind.duration_s - 1.0))
            return;
        begin_s = frequency.overs.back().end_s + between(2.0, 6.0, random);
    }
}

void fillContest(const Kind& kind, Frequency& frequency, Random& random)
{
    const Station runner = stationNear(kind, frequency.tone_Hz, 0.0, random);
    double begin_s = between(0.5, 4.0, random);
    const auto over = [&](const Station& station, const std::string& text) {
        if (!send(frequency, station, text, begin_s, kind.duration_s - 1.0))
            return false;
        begin_s = frequency.overs.back().end_s + between(0.3, 1.2, random);
        return true;
    };
    for (;;) {
        if (!over(runner, "TEST " + runner.call + " " + runner.call))
            return;
        if (random.below(3) == 0) { // nobody answers
            begin_s += between(1.5, 4.0, random);
            continue;
        }
        const Station caller = stationNear(kind, frequency.tone_Hz, LARGEST_OFFSET_Hz, random);
        if (!over(caller, caller.call) || !over(runner, caller.call + " 5NN " + serial(random)) ||
            !over(caller, "R 5NN " + serial(random)) || !over(runner, "TU " + runner.call))
            return;
    }
}

// 0..1 at a time since the begin of a mark of some length, raised cosine edges.
double envelopeAt(double t_s, double length_s)
{
    const double in = std::clamp(t_s / RISE_s + 0.5, 0.0, 1.0);
    const double out = std::clamp((length_s - t_s) / RISE_s + 0.5, 0.0, 1.0);
    return 0.25 * (1.0 - std::cos(PI * in)) * (1.0 - std::cos(PI * out));
}

// Of a tone of amplitude 1: real sound has half its power, and noise up to half the rate.
double noiseDeviation(const Band& band)
{
    const double tonePower = band.isComplex ? 1.0 : 0.5;
    const double width_Hz = band.isComplex ? band.rate_Hz : 0.5 * band.rate_Hz;
    return std::sqrt(tonePower * width_Hz / 500.0); // of a signal of 0 dB
}

// Two tones in turn, without a jump of the phase.
void addTeleprinter(std::vector<std::complex<float>>& samples, const Over& over, const Band& band)
{
    const double amplitude = std::pow(10.0, over.level_dB / 20.0);
    const double half_Hz = 0.5 * over.teleprinter->shift_Hz;
    auto n = static_cast<std::size_t>(over.begin_s * band.rate_Hz);
    double end_s = over.begin_s;
    double phase = 0.0;
    for (const Piece& element : keyingOf(over)) {
        end_s += element.duration_s;
        const double tone_Hz = over.tone_Hz + (element.mark ? half_Hz : -half_Hz);
        for (; n < samples.size() && static_cast<double>(n) < end_s * band.rate_Hz; ++n) {
            phase = std::fmod(phase + 2.0 * PI * tone_Hz / band.rate_Hz, 2.0 * PI);
            samples[n] += std::complex<float>(std::polar(amplitude, phase));
        }
    }
}

void addOver(std::vector<std::complex<float>>& samples, const Over& over, const Band& band)
{
    if (over.teleprinter) {
        addTeleprinter(samples, over, band);
        return;
    }
    const double amplitude = std::pow(10.0, over.level_dB / 20.0);
    Random random(seedOf(over) + "/phase");
    const double turn = 2.0 * PI * over.tone_Hz / band.rate_Hz;
    const double first = 2.0 * PI * random.uniform();
    double start_s = over.begin_s;
    for (const Piece& piece : keyingOf(over)) {
        if (piece.mark) {
            const auto from = static_cast<std::size_t>(
                std::max(0.0, std::ceil((start_s - 0.5 * RISE_s) * band.rate_Hz)));
            const auto to = std::min(
                samples.size(), static_cast<std::size_t>(
                                    (start_s + piece.duration_s + 0.5 * RISE_s) * band.rate_Hz));
            std::complex<double> carrier = std::polar(
                amplitude, std::fmod(turn * static_cast<double>(from), 2.0 * PI) + first);
            const std::complex<double> step = std::polar(1.0, turn);
            for (std::size_t n = from; n < to; ++n) {
                const double t_s = static_cast<double>(n) / band.rate_Hz - start_s;
                const bool flat = t_s > 0.5 * RISE_s && t_s < piece.duration_s - 0.5 * RISE_s;
                const double gain = flat ? 1.0 : envelopeAt(t_s, piece.duration_s);
                samples[n] += std::complex<float>(gain * carrier);
                carrier = {carrier.real() * step.real() - carrier.imag() * step.imag(),
                           carrier.real() * step.imag() + carrier.imag() * step.real()};
            }
        }
        start_s += piece.duration_s;
    }
}

} // namespace

std::string Frequency::sent() const
{
    std::string all;
    for (const Over& over : overs)
        all += over.text + " ";
    return all;
}

const std::vector<Kind>& kinds()
{
    using Traffic = Kind::Traffic;
    // clang-format off
    static const std::vector<Kind> rows = {
        {"quiet", "5 signals, +10 to +25 dB, 3 kHz of sound",
         5, 350, 2900, 250, 8000, false, 120, 10, 25, 15, 30, Traffic::Steady},
        {"busy", "20 signals, 0 to +25 dB, 12 to 35 wpm, 10 kHz of sound",
         20, 400, 9800, 160, 24000, false, 120, 0, 25, 12, 35, Traffic::Steady},
        {"contest", "80 frequencies, short overs, 0 to +30 dB, 22 to 38 wpm, 22 kHz of sound",
         80, 400, 22000, 160, 48000, false, 60, 0, 30, 22, 38, Traffic::Contest},
        {"minute", "40 frequencies, short overs, 3 to 30 dB, 22 to 36 wpm, 10 kHz of sound",
         40, 500, 10000, 200, 22050, false, 60, 3, 30, 22, 36, Traffic::Contest},
        {"mixed", "8 Morse signals and 4 teleprinters, +5 to +25 dB, 10 kHz of sound",
         12, 700, 9500, 700, 24000, false, 60, 5, 25, 15, 30, Traffic::Mixed},
        {"wide", "150 signals, -3 to +30 dB, 96 kHz of I/Q",
         150, -46000, 46000, 160, 96000, true, 120, -3, 30, 12, 38, Traffic::Pauses},
        {"huge", "700 frequencies, short overs, 0 to +30 dB, 192 kHz of I/Q",
         700, -92000, 92000, 160, 192000, true, 60, 0, 30, 22, 38, Traffic::Contest},
    };
    // clang-format on
    return rows;
}

const Kind* kindOf(const std::string& name)
{
    const auto found = std::find_if(kinds().begin(), kinds().end(),
                                    [&](const Kind& kind) { return kind.name == name; });
    return found == kinds().end() ? nullptr : &*found;
}

Band plan(const Kind& kind, const std::string& seed)
{
    Band band = {kind.name + ("." + seed), kind.rate_Hz, kind.isComplex, kind.duration_s, {}};
    Random random("band/" + band.name);
    const double slack_Hz = kind.highest_Hz - kind.lowest_Hz -
                            static_cast<double>(kind.frequencies - 1) * kind.spacing_Hz;
    std::vector<double> places;
    for (std::size_t i = 0; i < kind.frequencies; ++i)
        places.push_back(slack_Hz * random.uniform());
    std::sort(places.begin(), places.end());
    for (std::size_t i = 0; i < places.size(); ++i) {
        Frequency frequency;
        frequency.tone_Hz = kind.lowest_Hz + places[i] + static_cast<double>(i) * kind.spacing_Hz;
        const std::string own = band.name + "/" + std::to_string(i);
        Random drawn(own);
        switch (kind.traffic) {
        case Kind::Traffic::Steady:
            fillSteady(kind, frequency, own, drawn);
            break;
        case Kind::Traffic::Mixed:
            if (i % 3 == 2)
                fillTeleprinter(kind, frequency, i / 3, own, drawn);
            else
                fillSteady(kind, frequency, own, drawn);
            break;
        case Kind::Traffic::Pauses:
            fillPauses(kind, frequency, own, drawn);
            break;
        case Kind::Traffic::Contest:
            fillContest(kind, frequency, drawn);
            break;
        }
        band.frequencies.push_back(frequency);
    }
    return band;
}

std::vector<std::complex<float>> samplesOf(const Band& band)
{
    std::vector<std::complex<float>> samples(
        static_cast<std::size_t>(band.duration_s * band.rate_Hz));
    for (const Frequency& frequency : band.frequencies) {
        for (const Over& over : frequency.overs)
            addOver(samples, over, band);
    }
    Random random(band.name + "/noise");
    const double deviation = noiseDeviation(band) * (band.isComplex ? std::sqrt(0.5) : 1.0);
    float peak = 1e-6F;
    for (std::complex<float>& sample : samples) {
        const double i = deviation * random.gauss();
        const double q = band.isComplex ? deviation * random.gauss() : 0.0;
        sample += std::complex<float>(static_cast<float>(i), static_cast<float>(q));
        if (!band.isComplex)
            sample.imag(0.0F);
        peak = std::max({peak, std::fabs(sample.real()), std::fabs(sample.imag())});
    }
    for (std::complex<float>& sample : samples)
        sample *= static_cast<float>(PEAK) / peak;
    return samples;
}

void writeWave(const std::string& path, const Band& band,
               const std::vector<std::complex<float>>& samples)
{
    std::vector<float> frames;
    for (const std::complex<float>& sample : samples) {
        frames.push_back(sample.real());
        if (band.isComplex)
            frames.push_back(sample.imag());
    }
    testsupport::writeSoundFile(path, band.rate_Hz, std::move(frames), band.isComplex ? 2 : 1);
}

} // namespace bands
