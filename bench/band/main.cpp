// SPDX-License-Identifier: MIT
// Makes bands of many signals and scores receivers on them; see README.md.
#include "band/bands.h"
#include "band/score.h"
#include "scoring.h"
#include "signal/band/bandreceiver.h"
#include "support/morsecode.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using bench::Cost;

constexpr char UNKNOWN = '*'; // stands for a code of no character, as other programs write one

struct Options
{
    std::string set = "tune";
    std::size_t seeds = 1;
    std::string only;
    std::size_t threads = 0;
    bool show = false;
    demodulator::BandParameters parameters;
    std::vector<std::string> others;
};

// One text a transmission.
class Texts : public demodulator::BandSink
{
public:
    void signalFound(int, double, double) override { ++signals; }
    void transmissionStarted(int signal, double tone_Hz, std::int64_t time_us) override
    {
        m_open[signal] = {tone_Hz, static_cast<double>(time_us) / 1e6, {}};
    }
    void symbol(int signal, int code, std::int64_t) override
    {
        m_open[signal].codes.push_back(code);
    }
    void transmissionStopped(int signal, std::int64_t, const demodulator::SignalReport&) override
    {
        const Open& open = m_open[signal];
        received.push_back(
            {open.tone_Hz, open.begin_s, testsupport::textOfCodes(open.codes, UNKNOWN)});
        m_open.erase(signal);
    }
    void teleprinterStarted(int signal, const teleprinter::Line& line,
                            std::int64_t time_us) override
    {
        m_texts[signal] = {line.centre_Hz(), static_cast<double>(time_us) / 1e6, {}};
    }
    void teleprinterCharacter(int signal, std::uint8_t character, std::int64_t) override
    {
        m_texts[signal].text += static_cast<char>(character);
    }
    void teleprinterStopped(int signal, const teleprinter::Line&, std::int64_t) override
    {
        received.push_back(m_texts[signal]);
        m_texts.erase(signal);
    }
    void signalLost(int) override {}

    std::vector<bands::Received> received;
    int signals = 0;

private:
    struct Open
    {
        double tone_Hz;
        double begin_s;
        std::vector<int> codes;
    };
    std::map<int, Open> m_open;
    std::map<int, bands::Received> m_texts; // of teleprinters
};

std::vector<bands::Received> ours(const bands::Band& band,
                                  const std::vector<std::complex<float>>& samples,
                                  const Options& options, Cost& cost)
{
    demodulator::BandSettings settings;
    settings.format = {band.rate_Hz, band.isComplex};
    settings.threads = static_cast<unsigned>(options.threads);
    settings.parameters = options.parameters;
    Texts texts;
    const bench::Meter meter(cost, band.duration_s);
    demodulator::BandReceiver receiver(settings, texts);
    constexpr std::size_t PIECE = 4096;
    for (std::size_t at = 0; at < samples.size(); at += PIECE)
        receiver.push(&samples[at], std::min(PIECE, samples.size() - at));
    receiver.finish();
    return texts.received;
}

// What a program writes of a recording: lines FREQUENCY:TEXT, the frequency in hertz.
std::vector<bands::Received> theirs(const std::string& command, const bands::Band& band,
                                    const std::string& wave, Cost& cost)
{
    std::istringstream output(bench::outputOf(
        command, {{"{rate}", std::to_string(std::lround(band.rate_Hz))}, {"{}", wave}},
        band.duration_s, cost));
    std::vector<bands::Received> received;
    for (std::string line; std::getline(output, line);) {
        char* text = nullptr;
        const double tone_Hz = std::strtod(line.c_str(), &text);
        // They come in order; when is not said.
        if (text != line.c_str() && *text == ':')
            received.push_back({tone_Hz, static_cast<double>(received.size()), text + 1});
    }
    return received;
}

template <typename Function>
void forAll(const Options& options, const bands::Kind& kind, Function function)
{
    for (std::size_t seed = 1; seed <= options.seeds; ++seed) {
        const bands::Band band = bands::plan(kind, options.set + "-" + std::to_string(seed));
        function(band, bands::samplesOf(band));
    }
}

bool wanted(const Options& options, const bands::Kind& kind)
{
    return bench::isAmong(options.only, kind.name);
}

void show(const bands::Band& band, const bands::Score& score,
          const std::vector<bands::Received>& received)
{
    for (std::size_t i = 0; i < band.frequencies.size(); ++i) {
        const bands::Frequency& frequency = band.frequencies[i];
        std::printf("%.1f Hz: %.1f %%\n", frequency.tone_Hz, 100.0 * score.errors[i]);
        for (const bands::Over& over : frequency.overs)
            std::printf("   sent %6.1f..%5.1f s %9.1f Hz %5.1f dB %4.1f wpm  %s\n", over.begin_s,
                        over.end_s, over.tone_Hz, over.level_dB, over.hand.speed_wpm,
                        over.text.c_str());
        for (const bands::Received& one : received) {
            if (std::fabs(one.tone_Hz - frequency.tone_Hz) <= bands::NEAR_Hz)
                std::printf("   got  %6.1f          %9.1f Hz                    %s\n", one.begin_s,
                            one.tone_Hz, one.text.c_str());
        }
    }
    std::printf("elsewhere:\n");
    for (const bands::Received& one : received) {
        const bool near =
            std::any_of(band.frequencies.begin(), band.frequencies.end(),
                        [&](const bands::Frequency& frequency) {
                            return std::fabs(one.tone_Hz - frequency.tone_Hz) <= bands::NEAR_Hz;
                        });
        if (!near)
            std::printf("   got  %6.1f          %9.1f Hz                    %s\n", one.begin_s,
                        one.tone_Hz, one.text.c_str());
    }
}

// Means over the bands of a row.
struct Row
{
    double error = 0.0;
    double strays = 0.0;
    int count = 0;

    void add(const bands::Score& score)
    {
        error += score.meanError();
        strays += score.straysPerMinute();
        ++count;
    }
    void print() const { std::printf(" %.2f %% | %.1f |", 100.0 * error / count, strays / count); }
};

// A table in Markdown: our receiver beside other programs.
int score(const Options& options)
{
    const std::vector<bench::Peer> peers = bench::peersOf(options.others);
    static const bench::TemporaryWave wave; // removed however the program ends
    std::printf("| band | ours, error | strays a minute | processor s a s | s a s |");
    for (const bench::Peer& peer : peers)
        std::printf(" %s, error | strays a minute |", peer.name.c_str());
    std::printf("\n|---|---:|---:|---:|---:|");
    for (std::size_t i = 0; i < peers.size(); ++i)
        std::printf("---:|---:|");
    std::printf("\n");
    for (const bands::Kind& kind : bands::kinds()) {
        if (!wanted(options, kind))
            continue;
        Row own;
        Cost cost;
        std::vector<Row> rows(peers.size());
        forAll(options, kind,
               [&](const bands::Band& band, const std::vector<std::complex<float>>& samples) {
                   const auto received = ours(band, samples, options, cost);
                   const bands::Score its = bands::score(band, received);
                   own.add(its);
                   if (options.show)
                       show(band, its, received);
                   if (peers.empty() || band.isComplex)
                       return;
                   bands::writeWave(wave.path(), band, samples);
                   for (std::size_t i = 0; i < peers.size(); ++i) {
                       Cost theirCost;
                       rows[i].add(bands::scoreBestBin(
                           band, theirs(peers[i].command, band, wave.path(), theirCost)));
                   }
               });
        std::printf("| %s |", kind.title);
        own.print();
        std::printf(" %.2f | %.2f |", cost.processor_s / cost.signal_s,
                    cost.clock_s / cost.signal_s);
        for (const Row& row : rows) {
            if (row.count > 0)
                row.print();
            else
                std::printf(" cannot | |");
        }
        std::printf("\n");
        std::fflush(stdout);
    }
    return 0;
}

int make(const Options& options)
{
    const std::string directory = options.others.empty() ? "." : options.others.front();
    std::filesystem::create_directories(directory);
    for (const bands::Kind& kind : bands::kinds()) {
        if (!wanted(options, kind))
            continue;
        forAll(options, kind,
               [&](const bands::Band& band, const std::vector<std::complex<float>>& samples) {
                   bands::writeWave(directory + "/" + band.name + ".wav", band, samples);
                   std::ofstream list(directory + "/" + band.name + ".txt");
                   for (const bands::Frequency& frequency : band.frequencies) {
                       for (const bands::Over& over : frequency.overs)
                           list << over.begin_s << ' ' << over.tone_Hz << ' ' << over.level_dB
                                << ' ' << over.hand.speed_wpm << ' ' << over.text << '\n';
                   }
               });
    }
    return 0;
}

int list()
{
    for (const bands::Kind& kind : bands::kinds()) {
        const bands::Band band = bands::plan(kind, "tune-1");
        std::size_t overs = 0;
        for (const bands::Frequency& frequency : band.frequencies)
            overs += frequency.overs.size();
        std::printf("%-8s %s; %.0f s, %zu overs in tune-1\n", kind.name, kind.title,
                    kind.duration_s, overs);
    }
    return 0;
}

int usage()
{
    std::fprintf(stderr,
                 "usage: bands list\n"
                 "       bands make [OPTION...] DIRECTORY\n"
                 "       bands score [OPTION...] [NAME=COMMAND...]\n"
                 "options: --set NAME  --seeds COUNT  --only BAND,...  --threads COUNT\n"
                 "         --show  --with PART.MEMBER=VALUE (parameters.h of the band or of\n"
                 "         Morse), as often as wanted\n"
                 "COMMAND writes lines FREQUENCY:TEXT; {} is the recording, {rate} its\n"
                 "sample rate\n");
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    Options options;
    const std::vector<bench::Option> rows = {
        {"--set", options.set},
        {"--only", options.only},
        {"--seeds", options.seeds, 1},
        {"--threads", options.threads, 0},
        {"--show", options.show},
        bench::Option([&options](const std::string& member, double value) {
            return demodulator::setParameter(options.parameters, member, value);
        }),
    };
    if (!bench::readOptions(argc, argv, rows, options.others))
        return usage();
    std::vector<std::string> names;
    for (const bands::Kind& kind : bands::kinds())
        names.emplace_back(kind.name);
    if (!bench::areKnown(options.only, names))
        return 2;
    if (command == "list")
        return list();
    if (command == "make")
        return make(options);
    if (command == "score")
        return score(options);
    return usage();
}
