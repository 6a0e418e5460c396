// SPDX-License-Identifier: MIT
// Makes the corpus and scores decoders on it; see README.md.
#include "reception/corpus.h"
#include "signal/teleprinter/receiver.h"
#include "teleprinter/corpus.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

using teleprinterbench::Condition;
using teleprinterbench::Recording;

// What our receiver gave.
class TextList : public teleprinter::TextSink
{
public:
    void transmissionStarted(const teleprinter::Line& line, std::int64_t) override
    {
        lines.push_back(line);
        found_s.push_back(now_s);
        if (!text.empty())
            text += '\n';
    }
    void character(std::uint8_t character, std::int64_t) override
    {
        text += static_cast<char>(character);
    }
    void transmissionStopped(const teleprinter::Line&, std::int64_t) override {}

    std::string text;
    std::vector<teleprinter::Line> lines;
    std::vector<double> found_s;
    double now_s = 0.0;
};

struct Options
{
    std::string command;
    std::string set = "tune";
    std::size_t seeds = 1;
    std::size_t length = teleprinterbench::TEXT_LENGTH;
    std::string only;
    std::string text; ///< file of a text to send in place of those of the corpus
    double hours = 0.2;
    bool show = false;
    teleprinter::Parameters parameters;
    std::vector<std::string> others; // directory, or NAME=COMMAND
};

struct Cost
{
    double signal_s = 0.0;
    double processor_s = 0.0;

    double timesRealTime() const { return signal_s / std::max(processor_s, 1e-9); }
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

TextList receive(const std::vector<float>& samples, const Options& options, Cost& cost)
{
    teleprinter::Settings settings;
    settings.parameters = options.parameters;
    settings.sampleRate_Hz = teleprinterbench::RATE_Hz;
    TextList sink;
    const double begin_s = processor_s(RUSAGE_SELF);
    teleprinter::Receiver receiver(settings, sink);
    constexpr std::size_t PIECE = 800;
    for (std::size_t at = 0; at < samples.size(); at += PIECE) {
        const std::size_t count = std::min(PIECE, samples.size() - at);
        sink.now_s = static_cast<double>(at + count) / teleprinterbench::RATE_Hz;
        receiver.push(samples.data() + at, count);
    }
    receiver.finish();
    cost.processor_s += processor_s(RUSAGE_SELF) - begin_s;
    cost.signal_s += static_cast<double>(samples.size()) / teleprinterbench::RATE_Hz;
    return sink;
}

void showLines(const TextList& heard)
{
    for (std::size_t i = 0; i < heard.lines.size(); ++i) {
        const teleprinter::Line& line = heard.lines[i];
        std::printf("line at %.1f s: %d data bits, %.2f Bd, %.1f Hz about %.1f Hz, %s\n",
                    heard.found_s[i], line.kind.dataBits, line.baud, line.shift_Hz(),
                    line.centre_Hz(), line.isReversed() ? "reversed" : "normal");
    }
}

std::string replaced(std::string command, const std::string& what, const std::string& with)
{
    for (std::size_t at = command.find(what); at != std::string::npos;
         at = command.find(what, at + with.size()))
        command.replace(at, what.size(), with);
    return command;
}

// What a program writes to its standard output for a recording.
std::string run(const std::string& command, const std::string& wave, const Condition& condition,
                const Recording& recording, Cost& cost)
{
    const double half_Hz = (recording.path.reversed ? -0.5 : 0.5) * recording.path.shift_Hz;
    char baud[32];
    std::snprintf(baud, sizeof baud, "%g", condition.machine.baud);
    std::string line = replaced(command, "{}", wave);
    line = replaced(line, "{baud}", baud);
    line =
        replaced(line, "{mark}", std::to_string(std::lround(recording.path.centre_Hz + half_Hz)));
    line =
        replaced(line, "{space}", std::to_string(std::lround(recording.path.centre_Hz - half_Hz)));
    char stop[32];
    std::snprintf(stop, sizeof stop, "%g", condition.machine.stop_bits);
    line = replaced(line, "{stop}", stop);
    std::string text;
    const double begin_s = processor_s(RUSAGE_CHILDREN);
    FILE* pipe = popen(("{ " + line + "; } 2>/dev/null").c_str(), "r");
    if (pipe == nullptr)
        return text;
    char buffer[4096];
    for (std::size_t count = fread(buffer, 1, sizeof buffer, pipe); count > 0;
         count = fread(buffer, 1, sizeof buffer, pipe))
        text.append(buffer, count);
    pclose(pipe);
    cost.processor_s += processor_s(RUSAGE_CHILDREN) - begin_s;
    cost.signal_s += static_cast<double>(recording.samples.size()) / teleprinterbench::RATE_Hz;
    return text;
}

// Error rates of recordings, in percent.
struct Rates
{
    std::vector<double> each;

    double mean() const
    {
        return std::accumulate(each.begin(), each.end(), 0.0) / static_cast<double>(each.size());
    }
    double standardError() const
    {
        const auto count = static_cast<double>(each.size());
        double squares = 0.0;
        for (const double rate : each)
            squares += (rate - mean()) * (rate - mean());
        return count > 1.0 ? std::sqrt(squares / (count - 1.0) / count) : 0.0;
    }
    std::string text() const
    {
        char buffer[64];
        if (standardError() < 0.005)
            std::snprintf(buffer, sizeof buffer, "%.2f", mean());
        else
            std::snprintf(buffer, sizeof buffer, "%.2f ± %.2f", mean(), standardError());
        return buffer;
    }
};

bool wanted(const Options& options, const Condition& condition)
{
    return options.only.empty() ||
           ("," + options.only + ",").find("," + condition.name + ",") != std::string::npos;
}

template <typename Function>
void forAll(const Options& options, const Condition& condition, Function function)
{
    for (const std::string& seed : reception::seeds(options.set, options.seeds)) {
        for (const std::string& kind : reception::kinds())
            function(teleprinterbench::record(condition, kind, seed, options.length));
    }
}

int list()
{
    for (const Condition& condition : teleprinterbench::conditions())
        std::printf("%-12s %s\n", condition.name.c_str(), condition.title.c_str());
    return 0;
}

// Ours alone, one line a condition, for tuning.
int measure(const Options& options)
{
    Cost all;
    for (const Condition& condition : teleprinterbench::conditions()) {
        if (!wanted(options, condition))
            continue;
        Rates rates;
        Cost cost;
        double latest_s = 0.0;
        std::size_t transmissions = 0;
        forAll(options, condition, [&](const Recording& recording) {
            const TextList heard = receive(recording.samples, options, cost);
            rates.each.push_back(100.0 * teleprinterbench::errorRate(recording.sent, heard.text));
            latest_s = std::max(latest_s, heard.found_s.empty() ? 999.0 : heard.found_s.front());
            transmissions += heard.lines.size();
            if (options.show) {
                showLines(heard);
                std::printf("sent %s\n", recording.sent.c_str());
                std::printf("got  %s\n", heard.text.c_str());
            }
        });
        std::printf("%-12s %-16s found by %5.1f s, %zu transmissions, %4.0f times |",
                    condition.name.c_str(), rates.text().c_str(), latest_s, transmissions,
                    cost.timesRealTime());
        for (const double rate : rates.each)
            std::printf(" %.1f", rate);
        std::printf("\n");
        std::fflush(stdout);
        all.signal_s += cost.signal_s;
        all.processor_s += cost.processor_s;
    }
    std::printf("%.0f s of signal in %.2f s of processor time: %.0f times real time\n",
                all.signal_s, all.processor_s, all.timesRealTime());
    return 0;
}

// What is heard where no teleprinter sends.
int silence(const Options& options)
{
    constexpr double PIECE_s = 300.0;
    std::printf("| what | minutes | transmissions | characters | times real time |\n"
                "|---|---:|---:|---:|---:|\n");
    for (const teleprinterbench::Other& other : teleprinterbench::others()) {
        if (other.title.find(options.only) == std::string::npos)
            continue;
        Cost cost;
        std::size_t transmissions = 0;
        std::size_t characters = 0;
        const auto pieces = static_cast<std::size_t>(std::ceil(options.hours * 3600.0 / PIECE_s));
        for (const std::string& seed : reception::seeds(options.set, pieces)) {
            const TextList heard = receive(other.make(PIECE_s, seed), options, cost);
            transmissions += heard.lines.size();
            characters += heard.text.size();
            if (options.show) {
                showLines(heard);
                std::printf("got  %s\n", heard.text.c_str());
            }
        }
        std::printf("| %s | %.0f | %zu | %zu | %.0f |\n", other.title.c_str(),
                    static_cast<double>(pieces) * PIECE_s / 60.0, transmissions, characters,
                    cost.timesRealTime());
        std::fflush(stdout);
    }
    return 0;
}

int make(const Options& options)
{
    const std::filesystem::path directory = options.others.empty() ? "." : options.others.front();
    std::filesystem::create_directories(directory);
    for (const Condition& condition : teleprinterbench::conditions()) {
        if (!wanted(options, condition))
            continue;
        if (!options.text.empty()) {
            std::ifstream file(options.text, std::ios::binary);
            const std::string text((std::istreambuf_iterator<char>(file)), {});
            const Recording recording = teleprinterbench::record(condition, text);
            reception::writeWave((directory / (recording.name + ".wav")).string(),
                                 recording.samples);
            continue;
        }
        forAll(options, condition, [&](const Recording& recording) {
            reception::writeWave((directory / (recording.name + ".wav")).string(),
                                 recording.samples);
            std::ofstream(directory / (recording.name + ".txt")) << recording.sent;
        });
    }
    return 0;
}

// A table: ours and other programs on the same recordings.
int score(const Options& options)
{
    std::printf("| condition | ours |");
    for (const std::string& other : options.others)
        std::printf(" %s |", other.substr(0, other.find('=')).c_str());
    std::printf("\n|---|---:|");
    for (std::size_t i = 0; i < options.others.size(); ++i)
        std::printf("---:|");
    std::printf("\n");
    Cost ours;
    std::vector<Cost> costs(options.others.size());
    const std::filesystem::path wave = std::filesystem::temp_directory_path() /
                                       ("teleprinter-" + std::to_string(getpid()) + ".wav");
    for (const Condition& condition : teleprinterbench::conditions()) {
        if (!wanted(options, condition))
            continue;
        Rates rates;
        std::vector<Rates> others(options.others.size());
        forAll(options, condition, [&](const Recording& recording) {
            rates.each.push_back(
                100.0 * teleprinterbench::errorRate(
                            recording.sent, receive(recording.samples, options, ours).text));
            if (!options.others.empty())
                reception::writeWave(wave.string(), recording.samples);
            for (std::size_t i = 0; i < options.others.size(); ++i) {
                const std::string& other = options.others[i];
                const std::string received = run(other.substr(other.find('=') + 1), wave.string(),
                                                 condition, recording, costs[i]);
                others[i].each.push_back(100.0 *
                                         teleprinterbench::errorRate(recording.sent, received));
            }
        });
        std::printf("| %s | %s |", condition.title.c_str(), rates.text().c_str());
        for (const Rates& other : others)
            std::printf(" %s |", other.text().c_str());
        std::printf("\n");
        std::fflush(stdout);
    }
    std::printf("| times real time | %.0f |", ours.timesRealTime());
    for (const Cost& cost : costs)
        std::printf(" %.0f |", cost.timesRealTime());
    std::printf("\n");
    std::error_code ignored;
    std::filesystem::remove(wave, ignored);
    return 0;
}

int usage()
{
    std::fprintf(stderr, "usage: teleprinter list | measure | score | make | silence\n"
                         "       [--set NAME] [--seeds N] [--length N] [--only A,B] [--hours H]\n"
                         "       [--text FILE] [--show] [--with PART.MEMBER=VALUE]\n"
                         "       [DIRECTORY | NAME=COMMAND ...]\n");
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return usage();
    Options options;
    options.command = argv[1];
    for (int i = 2; i < argc; ++i) {
        const std::string argument = argv[i];
        const auto value = [&] { return i + 1 < argc ? std::string(argv[++i]) : std::string(); };
        if (argument == "--set")
            options.set = value();
        else if (argument == "--seeds")
            options.seeds = std::strtoul(value().c_str(), nullptr, 10);
        else if (argument == "--length")
            options.length = std::strtoul(value().c_str(), nullptr, 10);
        else if (argument == "--only")
            options.only = value();
        else if (argument == "--hours")
            options.hours = std::strtod(value().c_str(), nullptr);
        else if (argument == "--text")
            options.text = value();
        else if (argument == "--show")
            options.show = true;
        else if (argument == "--with") {
            const std::string setting = value();
            const std::size_t equals = setting.find('=');
            if (equals == std::string::npos ||
                !teleprinter::setParameter(options.parameters, setting.substr(0, equals),
                                           std::strtod(setting.c_str() + equals + 1, nullptr))) {
                std::fprintf(stderr, "no such parameter: %s\n", setting.c_str());
                return 2;
            }
        } else
            options.others.push_back(argument);
    }
    if (options.command == "list")
        return list();
    if (options.command == "measure")
        return measure(options);
    if (options.command == "score")
        return score(options);
    if (options.command == "make")
        return make(options);
    if (options.command == "silence")
        return silence(options);
    return usage();
}
