// SPDX-License-Identifier: MIT
// Makes bands of many signals and scores receivers on them; see README.md.
#include "band/bands.h"
#include "band/score.h"
#include "signal/band/bandreceiver.h"
#include "support/morsecode.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr char UNKNOWN = '*'; // stands for a code of no character, as other programs write one

struct Options
{
    std::string set = "tune";
    int seeds = 1;
    std::string only;
    unsigned threads = 0;
    bool show = false;
    std::vector<std::string> others;
};

struct Cost
{
    double signal_s = 0.0;
    double processor_s = 0.0;
    double wall_s = 0.0;
};

double processor_s(int who)
{
    rusage usage = {};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Measures while it lives.
class Meter
{
public:
    Meter(Cost& cost, double signal_s, int who)
        : m_cost(cost)
        , m_who(who)
        , m_processor_s(processor_s(who))
        , m_begin(std::chrono::steady_clock::now())
    {
        m_cost.signal_s += signal_s;
    }
    ~Meter()
    {
        m_cost.processor_s += processor_s(m_who) - m_processor_s;
        m_cost.wall_s +=
            std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
    }
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;

private:
    Cost& m_cost;
    int m_who;
    double m_processor_s;
    std::chrono::steady_clock::time_point m_begin;
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
};

std::vector<bands::Received> ours(const bands::Band& band,
                                  const std::vector<std::complex<float>>& samples,
                                  const Options& options, Cost& cost)
{
    demodulator::BandSettings settings;
    settings.format = {band.rate_Hz, band.isComplex};
    settings.threads = options.threads;
    Texts texts;
    const Meter meter(cost, band.duration_s, RUSAGE_SELF);
    demodulator::BandReceiver receiver(settings, texts);
    constexpr std::size_t PIECE = 4096;
    for (std::size_t at = 0; at < samples.size(); at += PIECE)
        receiver.push(&samples[at], std::min(PIECE, samples.size() - at));
    receiver.finish();
    return texts.received;
}

// What a program writes of a recording: lines FREQUENCY:TEXT, the frequency in hertz.
std::vector<bands::Received> theirs(std::string command, const bands::Band& band,
                                    const std::string& wave, Cost& cost)
{
    const auto replace = [&command](const std::string& what, const std::string& with) {
        for (std::size_t at = command.find(what); at != std::string::npos;
             at = command.find(what, at + with.size()))
            command.replace(at, what.size(), with);
    };
    replace("{rate}", std::to_string(std::lround(band.rate_Hz)));
    replace("{}", wave);
    std::vector<bands::Received> received;
    const Meter meter(cost, band.duration_s, RUSAGE_CHILDREN);
    FILE* const pipe = popen(("{ " + command + "; } 2>/dev/null").c_str(), "r");
    if (pipe == nullptr)
        return received;
    char line[4096];
    while (fgets(line, sizeof line, pipe) != nullptr) {
        char* text = nullptr;
        const double tone_Hz = std::strtod(line, &text);
        if (text == line || *text != ':')
            continue;
        std::string rest = text + 1;
        while (!rest.empty() && rest.back() == '\n')
            rest.pop_back();
        // They come in order; when is not said.
        received.push_back({tone_Hz, static_cast<double>(received.size()), rest});
    }
    pclose(pipe);
    return received;
}

template <typename Function>
void forAll(const Options& options, const bands::Kind& kind, Function function)
{
    for (int seed = 1; seed <= options.seeds; ++seed) {
        const bands::Band band = bands::plan(kind, options.set + "-" + std::to_string(seed));
        function(band, bands::samplesOf(band));
    }
}

bool wanted(const Options& options, const bands::Kind& kind)
{
    return options.only.empty() ||
           ("," + options.only + ",").find(std::string(",") + kind.name + ",") != std::string::npos;
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
    std::vector<std::pair<std::string, std::string>> peers;
    for (const std::string& other : options.others) {
        const std::size_t equals = other.find('=');
        if (equals == std::string::npos) {
            std::fprintf(stderr, "bands: '%s' is no NAME=COMMAND\n", other.c_str());
            return 2;
        }
        peers.emplace_back(other.substr(0, equals), other.substr(equals + 1));
    }
    const std::string wave =
        (std::filesystem::temp_directory_path() / ("bands-" + std::to_string(getpid()) + ".wav"))
            .string();
    std::printf("| band | ours, error | strays a minute | processor s a s | s a s |");
    for (const auto& peer : peers)
        std::printf(" %s, error | strays a minute |", peer.first.c_str());
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
                   bands::writeWave(wave, band, samples);
                   for (std::size_t i = 0; i < peers.size(); ++i) {
                       Cost theirCost;
                       rows[i].add(bands::scoreBestBin(
                           band, theirs(peers[i].second, band, wave, theirCost)));
                   }
               });
        std::printf("| %s |", kind.title);
        own.print();
        std::printf(" %.2f | %.2f |", cost.processor_s / cost.signal_s,
                    cost.wall_s / cost.signal_s);
        for (const Row& row : rows) {
            if (row.count > 0)
                row.print();
            else
                std::printf(" cannot | |");
        }
        std::printf("\n");
        std::fflush(stdout);
    }
    std::filesystem::remove(wave);
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
    std::fprintf(stderr, "usage: bands list\n"
                         "       bands make [OPTION...] DIRECTORY\n"
                         "       bands score [OPTION...] [NAME=COMMAND...]\n"
                         "options: --set NAME  --seeds COUNT  --only BAND,...  --threads COUNT\n"
                         "         --show\n"
                         "COMMAND writes lines FREQUENCY:TEXT; {} is the recording, {rate} its\n"
                         "sample rate\n");
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    Options options;
    for (int i = 2; i < argc; ++i) {
        const std::string argument = argv[i];
        const bool more = i + 1 < argc;
        if (argument == "--set" && more)
            options.set = argv[++i];
        else if (argument == "--only" && more)
            options.only = argv[++i];
        else if (argument == "--seeds" && more)
            options.seeds = std::max(1, std::atoi(argv[++i]));
        else if (argument == "--threads" && more)
            options.threads = static_cast<unsigned>(std::max(0, std::atoi(argv[++i])));
        else if (argument == "--show")
            options.show = true;
        else if (argument.compare(0, 2, "--") == 0)
            return usage();
        else
            options.others.push_back(argument);
    }
    if (command == "list")
        return list();
    if (command == "make")
        return make(options);
    if (command == "score")
        return score(options);
    return usage();
}
