// SPDX-License-Identifier: MIT
// Makes the corpus and scores decoders on it; see README.md.
#include "app/demodulator/demodulator.h"
#include "reception/corpus.h"
#include "support/morsecode.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

class CodeList : public demodulator::SymbolSink
{
public:
    void transmissionStarted(std::int64_t) override
    {
        if (!codes.empty())
            codes.push_back(4);
    }
    void symbol(int code, std::int64_t) override { codes.push_back(code); }
    void transmissionStopped(std::int64_t) override {}

    std::vector<int> codes;
};

struct Options
{
    std::string set = "tune";
    std::string only;
    std::string kind;
    bool show = false;
    std::vector<std::string> others; // directory, or NAME=COMMAND
};

double g_signal_s = 0.0;
double g_spent_s = 0.0;

std::string decode(const reception::Recording& recording, bool told)
{
    demodulator::Settings settings;
    settings.sampleRate_Hz = reception::RATE_Hz;
    if (told) {
        settings.tone_Hz = recording.tone_Hz;
        settings.speed_wpm = recording.speed_wpm;
    }
    CodeList sink;
    const std::clock_t begin = std::clock();
    demodulator::Demodulator demodulator(settings, sink);
    demodulator.push(recording.samples.data(), recording.samples.size());
    demodulator.finish();
    g_spent_s += static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    g_signal_s += static_cast<double>(recording.samples.size()) / reception::RATE_Hz;
    return testsupport::textOfCodes(sink.codes);
}

void put(std::ofstream& file, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        file.put(static_cast<char>(value >> (8 * i)));
}

void writeWave(const std::string& path, const std::vector<float>& samples)
{
    std::ofstream file(path, std::ios::binary);
    const auto size = static_cast<std::uint32_t>(2 * samples.size());
    const auto rate = static_cast<std::uint32_t>(reception::RATE_Hz);
    file << "RIFF";
    put(file, 36 + size, 4);
    file << "WAVEfmt ";
    put(file, 16, 4);
    put(file, 1, 2);
    put(file, 1, 2);
    put(file, rate, 4);
    put(file, 2 * rate, 4);
    put(file, 2, 2);
    put(file, 16, 2);
    file << "data";
    put(file, size, 4);
    for (const float sample : samples) {
        const long value = std::lround(std::clamp(sample, -1.0F, 1.0F) * 32767.0F);
        put(file, static_cast<std::uint32_t>(value) & 0xFFFFU, 2);
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
std::string run(const std::string& command, const std::string& wave,
                const reception::Recording& recording)
{
    std::string line = replaced(command, "{}", wave);
    line = replaced(line, "{tone}", std::to_string(std::lround(recording.tone_Hz)));
    line = replaced(line, "{wpm}", std::to_string(std::lround(recording.speed_wpm)));
    line += " 2>/dev/null";
    std::string text;
    FILE* pipe = popen(line.c_str(), "r");
    if (pipe == nullptr)
        return text;
    char buffer[4096];
    for (std::size_t count = fread(buffer, 1, sizeof buffer, pipe); count > 0;
         count = fread(buffer, 1, sizeof buffer, pipe))
        text.append(buffer, count);
    pclose(pipe);
    return text;
}

template <typename Function>
void forAll(const Options& options, const reception::Condition& condition, Function function)
{
    for (const std::string& seed : reception::seeds(options.set)) {
        for (const std::string& kind : reception::kinds()) {
            if (options.kind.empty() || kind == options.kind)
                function(reception::record(condition, kind, seed));
        }
    }
}

bool wanted(const Options& options, const reception::Condition& condition)
{
    return options.only.empty() ||
           ("," + options.only + ",").find("," + condition.name + ",") != std::string::npos;
}

int list()
{
    for (const reception::Condition& condition : reception::conditions())
        std::printf("%-12s %s\n", condition.name.c_str(), condition.title.c_str());
    return 0;
}

// Our own demodulator alone, one line a condition, for tuning.
int measure(const Options& options)
{
    for (const reception::Condition& condition : reception::conditions()) {
        if (!wanted(options, condition))
            continue;
        std::vector<double> rates;
        forAll(options, condition, [&](const reception::Recording& recording) {
            const std::string received = decode(recording, false);
            rates.push_back(testsupport::characterErrorRate(recording.sent, received));
            if (options.show) {
                std::printf("sent %s\n", testsupport::asReceived(recording.sent).c_str());
                std::printf("got  %s\n", testsupport::asReceived(received).c_str());
            }
        });
        double sum = 0.0;
        for (const double rate : rates)
            sum += rate;
        std::printf("%-12s %6.2f  |", condition.name.c_str(),
                    100.0 * sum / static_cast<double>(rates.size()));
        for (const double rate : rates)
            std::printf(" %6.2f", 100.0 * rate);
        std::printf("\n");
        std::fflush(stdout);
    }
    std::printf("%.0f s of signal in %.2f s of processor time: %.0f times real time\n", g_signal_s,
                g_spent_s, g_signal_s / g_spent_s);
    return 0;
}

int make(const Options& options)
{
    const std::string directory = options.others.empty() ? "." : options.others.front();
    std::filesystem::create_directories(directory);
    for (const reception::Condition& condition : reception::conditions()) {
        if (!wanted(options, condition))
            continue;
        forAll(options, condition, [&](const reception::Recording& recording) {
            writeWave(directory + "/" + recording.name + ".wav", recording.samples);
            std::ofstream(directory + "/" + recording.name + ".txt")
                << testsupport::asReceived(recording.sent) << "\n";
        });
    }
    return 0;
}

// A table in Markdown: our demodulator, unaided and told, beside other programs.
int score(const Options& options)
{
    std::vector<std::pair<std::string, std::string>> peers;
    for (const std::string& other : options.others) {
        const std::size_t equals = other.find('=');
        if (equals == std::string::npos) {
            std::fprintf(stderr, "reception: '%s' is no NAME=COMMAND\n", other.c_str());
            return 2;
        }
        peers.emplace_back(other.substr(0, equals), other.substr(equals + 1));
    }
    std::printf("| condition | ours | ours, told |");
    for (const auto& peer : peers)
        std::printf(" %s |", peer.first.c_str());
    std::printf("\n|---|---:|---:|");
    for (std::size_t i = 0; i < peers.size(); ++i)
        std::printf("---:|");
    std::printf("\n");
    const std::string wave = (std::filesystem::temp_directory_path() /
                              ("reception-" + std::to_string(std::clock()) + "-" +
                               std::to_string(std::time(nullptr)) + ".wav"))
                                 .string();
    for (const reception::Condition& condition : reception::conditions()) {
        if (!wanted(options, condition))
            continue;
        std::vector<double> sums(2 + peers.size(), 0.0);
        double count = 0.0;
        forAll(options, condition, [&](const reception::Recording& recording) {
            const auto add = [&](std::size_t column, const std::string& text) {
                sums[column] += testsupport::characterErrorRate(recording.sent, text);
            };
            add(0, decode(recording, false));
            add(1, decode(recording, true));
            if (!peers.empty())
                writeWave(wave, recording.samples);
            for (std::size_t i = 0; i < peers.size(); ++i)
                add(2 + i, run(peers[i].second, wave, recording));
            count += 1.0;
        });
        std::printf("| %s |", condition.title.c_str());
        for (const double sum : sums)
            std::printf(" %.2f |", 100.0 * sum / count);
        std::printf("\n");
        std::fflush(stdout);
    }
    // Ten minutes of noise: characters given.
    const std::vector<float> samples =
        testsupport::noise(600.0, 0.1, reception::RATE_Hz, "noise/" + options.set);
    reception::Recording noise;
    noise.samples = samples;
    noise.tone_Hz = 700.0;
    noise.speed_wpm = 20.0;
    const auto characters = [](const std::string& text) {
        std::size_t count = 0;
        for (const char c : testsupport::asReceived(text))
            count += c == ' ' ? 0 : 1;
        return count;
    };
    std::printf("| noise alone, characters in ten minutes | %zu | %zu |",
                characters(decode(noise, false)), characters(decode(noise, true)));
    writeWave(wave, samples);
    for (const auto& peer : peers)
        std::printf(" %zu |", characters(run(peer.second, wave, noise)));
    std::printf("\n");
    std::filesystem::remove(wave);
    return 0;
}

int usage()
{
    std::fprintf(stderr, "usage: reception list\n"
                         "       reception measure [OPTION...]\n"
                         "       reception make [OPTION...] DIRECTORY\n"
                         "       reception score [OPTION...] [NAME=COMMAND...]\n"
                         "options: --set NAME  --only CONDITION,...  --kind KIND  --show\n"
                         "COMMAND writes text; {} is the recording, {tone} and {wpm} the truth\n");
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
        else if (argument == "--kind" && more)
            options.kind = argv[++i];
        else if (argument == "--show")
            options.show = true;
        else if (argument.compare(0, 2, "--") == 0)
            return usage();
        else
            options.others.push_back(argument);
    }
    if (command == "list")
        return list();
    if (command == "measure")
        return measure(options);
    if (command == "make")
        return make(options);
    if (command == "score")
        return score(options);
    return usage();
}
