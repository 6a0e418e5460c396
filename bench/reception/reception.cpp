// SPDX-License-Identifier: MIT
// Makes the corpus and scores decoders on it; see README.md.
#include "app/demodulator/demodulator.h"
#include "reception/corpus.h"
#include "support/morsecode.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
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

std::string decode(const reception::Recording& recording, bool told)
{
    demodulator::Settings settings;
    settings.sampleRate_Hz = reception::RATE_Hz;
    if (told) {
        settings.tone_Hz = recording.tone_Hz;
        settings.speed_wpm = recording.speed_wpm;
    }
    CodeList sink;
    demodulator::Demodulator demodulator(settings, sink);
    demodulator.push(recording.samples.data(), recording.samples.size());
    demodulator.finish();
    return testsupport::textOfCodes(sink.codes);
}

int measure(const std::string& set, const std::string& only, const std::string& onlyKind, bool show,
            bool told)
{
    double signal_s = 0.0;
    double spent_s = 0.0;
    for (const reception::Condition& condition : reception::conditions()) {
        if (!only.empty() &&
            ("," + only + ",").find("," + condition.name + ",") == std::string::npos)
            continue;
        std::string cells;
        double sum = 0.0;
        int count = 0;
        for (const std::string& seed : reception::seeds(set)) {
            for (const std::string& kind : reception::kinds()) {
                if (!onlyKind.empty() && kind != onlyKind)
                    continue;
                const reception::Recording recording = reception::record(condition, kind, seed);
                const std::clock_t begin = std::clock();
                const std::string received = decode(recording, told);
                spent_s += static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
                signal_s += static_cast<double>(recording.samples.size()) / reception::RATE_Hz;
                const double rate = testsupport::characterErrorRate(recording.sent, received);
                sum += rate;
                ++count;
                char cell[32];
                std::snprintf(cell, sizeof cell, " %6.2f", 100.0 * rate);
                cells += cell;
                if (show) {
                    std::printf("sent %s\n", testsupport::asReceived(recording.sent).c_str());
                    std::printf("got  %s\n", testsupport::asReceived(received).c_str());
                }
            }
        }
        std::printf("%-14s %6.2f  |%s\n", condition.name.c_str(), 100.0 * sum / count,
                    cells.c_str());
        std::fflush(stdout);
    }
    std::printf("%.0f s of signal in %.2f s: %.0f times real time\n", signal_s, spent_s,
                signal_s / spent_s);
    return 0;
}

int pureNoise(double duration_s, const std::string& seed)
{
    const std::vector<float> samples =
        testsupport::noise(duration_s, 0.1, reception::RATE_Hz, seed);
    CodeList sink;
    demodulator::Settings settings;
    settings.sampleRate_Hz = reception::RATE_Hz;
    demodulator::Demodulator demodulator(settings, sink);
    const std::clock_t begin = std::clock();
    demodulator.push(samples.data(), samples.size());
    demodulator.finish();
    const double spent_s = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    std::printf("noise %.0f s: [%s] %.0f times real time\n", duration_s,
                testsupport::textOfCodes(sink.codes).c_str(), duration_s / spent_s);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    std::string set = "tune";
    std::string only;
    std::string kind;
    bool show = false;
    bool told = false;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--set") == 0 && i + 1 < argc)
            set = argv[++i];
        else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc)
            only = argv[++i];
        else if (std::strcmp(argv[i], "--kind") == 0 && i + 1 < argc)
            kind = argv[++i];
        else if (std::strcmp(argv[i], "--show") == 0)
            show = true;
        else if (std::strcmp(argv[i], "--told") == 0)
            told = true;
    }
    if (command == "measure")
        return measure(set, only, kind, show, told);
    if (command == "noise")
        return pureNoise(600.0, set);
    std::fprintf(stderr,
                 "usage: reception measure [--set tune|report] [--only NAME,...] [--show]\n");
    return 2;
}
