// SPDX-License-Identifier: MIT
// Makes the corpus and scores decoders on it; see README.md.
#include "morse/symbolcodes.h"
#include "reception/bound.h"
#include "reception/corpus.h"
#include "reception/offair.h"
#include "scoring.h"
#include "signal/morse/demodulator.h"
#include "support/morsecode.h"
#include "support/soundfile.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace {

using bench::Cost;
using bench::Rates;

constexpr char UNKNOWN = '*'; // stands for a code of no character, as other programs write one

// What our demodulator gave, and when.
class CodeList : public demodulator::SymbolSink
{
public:
    void transmissionStarted(std::int64_t time_us) override
    {
        if (!codes.empty())
            codes.push_back(eSYMBOL_NEW_WORD);
        ++transmissions;
        m_start_us = time_us;
        m_first = true;
    }
    void symbol(int code, std::int64_t time_us) override
    {
        codes.push_back(code);
        errorMarks += code >= eSYMBOL_DOT_TOO_SHORT ? 1 : 0;
        if (code != eSYMBOL_NEW_CHAR)
            return;
        const double delay_s = now_s - static_cast<double>(time_us) / 1e6;
        const bool begins = static_cast<double>(time_us - m_start_us) / 1e6 < 5.0;
        (m_first ? firstDelays_s : begins ? earlyDelays_s : delays_s).push_back(delay_s);
        m_first = false;
    }
    void transmissionStopped(std::int64_t, const demodulator::SignalReport&) override {}

    std::vector<int> codes;
    std::size_t transmissions = 0;
    std::size_t errorMarks = 0;
    double now_s = 0.0; // of what was pushed
    // From the end of a character to its code: the first of a transmission, others that ended in
    // its first 5 s, the rest.
    std::vector<double> firstDelays_s, earlyDelays_s, delays_s;

private:
    std::int64_t m_start_us = 0;
    bool m_first = false;
};

struct Options
{
    std::string set = "tune";
    std::size_t seeds = 1;
    std::size_t length = reception::TEXT_LENGTH;
    std::string only;
    std::string kind;
    std::string ours = "both";
    double hours = 1.0;
    bool isLive = false;
    bool show = false;
    demodulator::Parameters parameters;
    std::vector<std::string> others; // directory, or NAME=COMMAND
};

// How our demodulator hears a recording.
struct Hearing
{
    bool isLive = false;  // as from a pipe
    bool isKnown = false; // tone and speed
};

CodeList decode(const reception::Recording& recording, const Hearing& hearing,
                const demodulator::Parameters& parameters, Cost& cost)
{
    demodulator::Settings settings;
    settings.parameters = parameters;
    settings.isLive = hearing.isLive;
    settings.sampleRate_Hz = reception::RATE_Hz;
    if (hearing.isKnown) {
        settings.tone_Hz = recording.tone_Hz;
        settings.speed_wpm = recording.speed_wpm;
    }
    CodeList sink;
    const bench::Meter meter(cost,
                             static_cast<double>(recording.samples.size()) / reception::RATE_Hz);
    demodulator::Demodulator demodulator(settings, sink);
    constexpr std::size_t PIECE = 80; // 10 ms
    for (std::size_t at = 0; at < recording.samples.size(); at += PIECE) {
        const std::size_t count = std::min(PIECE, recording.samples.size() - at);
        sink.now_s = static_cast<double>(at + count) / reception::RATE_Hz;
        demodulator.push(recording.samples.data() + at, count);
    }
    demodulator.finish();
    return sink;
}

// What a program writes for a recording.
std::string run(const std::string& command, const std::string& wave,
                const reception::Recording& recording, Cost& cost)
{
    return bench::outputOf(command,
                           {{"{}", wave},
                            {"{tone}", std::to_string(std::lround(recording.tone_Hz))},
                            {"{wpm}", std::to_string(std::lround(recording.speed_wpm))}},
                           static_cast<double>(recording.samples.size()) / reception::RATE_Hz,
                           cost);
}

template <typename Function>
void forAll(const Options& options, const reception::Condition& condition, Function function)
{
    for (const std::string& seed : reception::seeds(options.set, options.seeds)) {
        for (const std::string& kind : reception::kinds()) {
            if (options.kind.empty() || kind == options.kind)
                function(reception::record(condition, kind, seed, options.length));
        }
    }
}

bool wanted(const Options& options, const reception::Condition& condition)
{
    return bench::isAmong(options.only, condition.name);
}

// Whether --only and --kind name what there is.
bool namesRows(const std::string& command, const Options& options)
{
    std::vector<std::string> names;
    if (command == "noise") {
        for (const reception::Silence& silence : reception::silences())
            names.push_back(silence.title);
        return bench::occurs(options.only, names);
    }
    for (const reception::Condition& condition : reception::conditions())
        names.push_back(condition.name);
    return bench::areKnown(options.only, names) &&
           bench::areKnown(options.kind, reception::kinds());
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
    Cost cost;
    for (const reception::Condition& condition : reception::conditions()) {
        if (!wanted(options, condition))
            continue;
        Rates rates;
        Rates lenient; // codes of no character left out
        forAll(options, condition, [&](const reception::Recording& recording) {
            const CodeList heard = decode(recording, {options.isLive, options.ours == "known"},
                                          options.parameters, cost);
            const std::string received = testsupport::textOfCodes(heard.codes, UNKNOWN);
            rates.each.push_back(100.0 * testsupport::characterErrorRate(recording.sent, received));
            lenient.each.push_back(
                100.0 * testsupport::characterErrorRate(recording.sent,
                                                        testsupport::textOfCodes(heard.codes)));
            if (options.show) {
                std::printf("sent %s\n", testsupport::asReceived(recording.sent).c_str());
                std::printf("got  %s\n", testsupport::asReceived(received).c_str());
            }
        });
        std::printf("%-12s %s (%s)  |", condition.name.c_str(), rates.text().c_str(),
                    lenient.text().c_str());
        for (const double rate : rates.each)
            std::printf(" %.2f", rate);
        std::printf("\n");
        std::fflush(stdout);
    }
    std::printf("%.0f s of signal in %.2f s of processor time: %.0f times real time\n",
                cost.signal_s, cost.processor_s, cost.timesRealTime());
    return 0;
}

// What could be read at best; only of conditions with one signal in steady noise.
int bound(const Options& options)
{
    std::printf("| condition | after 0.9 s | after 4 s |\n|---|---:|---:|\n");
    for (const reception::Condition& condition : reception::conditions()) {
        if (!wanted(options, condition))
            continue;
        reception::Condition clean = condition;
        clean.path.snr_dB.reset();
        reception::Condition carrier = clean;
        carrier.keyDown = true;
        Rates soon;
        Rates late;
        for (const std::string& seed : reception::seeds(options.set, options.seeds)) {
            for (const std::string& kind : reception::kinds()) {
                const reception::Recording recording = reception::record(condition, kind, seed);
                const reception::Recording sent = reception::record(clean, kind, seed);
                const reception::Recording held = reception::record(carrier, kind, seed);
                const auto errorsAfter = [&](double late_s) {
                    return 100.0 *
                           testsupport::characterErrorRate(
                               recording.sent,
                               testsupport::textOfCodes(
                                   reception::boundOf(recording, sent, held, late_s), UNKNOWN));
                };
                soon.each.push_back(errorsAfter(0.9));
                late.each.push_back(errorsAfter(4.0));
            }
        }
        std::printf("| %s | %s | %s |\n", condition.title.c_str(), soon.text().c_str(),
                    late.text().c_str());
        std::fflush(stdout);
    }
    return 0;
}

// From the end of a character to its code, in seconds: median and longest.
int delay(const Options& options)
{
    const auto text = [](std::vector<double>& delays_s) {
        char buffer[64] = "";
        std::sort(delays_s.begin(), delays_s.end());
        if (!delays_s.empty())
            std::snprintf(buffer, sizeof buffer, "%.2f, %.2f", delays_s[delays_s.size() / 2],
                          delays_s.back());
        return std::string(buffer);
    };
    Cost cost;
    std::printf("| condition | first character | others in the first 5 s | later |\n"
                "|---|---:|---:|---:|\n");
    for (const reception::Condition& condition : reception::conditions()) {
        if (!wanted(options, condition))
            continue;
        CodeList all;
        reception::Condition later = condition;
        later.path.before_s = 5.0; // not at the very beginning of the input
        forAll(options, later, [&](const reception::Recording& recording) {
            const CodeList heard =
                decode(recording, {true, options.ours == "known"}, options.parameters, cost);
            const auto add = [](std::vector<double>& to, const std::vector<double>& from) {
                to.insert(to.end(), from.begin(), from.end());
            };
            add(all.firstDelays_s, heard.firstDelays_s);
            add(all.earlyDelays_s, heard.earlyDelays_s);
            add(all.delays_s, heard.delays_s);
        });
        std::printf("| %s | %s | %s | %s |\n", condition.title.c_str(),
                    text(all.firstDelays_s).c_str(), text(all.earlyDelays_s).c_str(),
                    text(all.delays_s).c_str());
        std::fflush(stdout);
    }
    return 0;
}

// False output of our demodulator without a signal.
int noise(const Options& options)
{
    constexpr double PIECE_s = 600.0;
    std::printf("| hours of | transmissions | characters | of them unknown | timing marks |\n"
                "|---|---:|---:|---:|---:|\n");
    Cost cost;
    for (const reception::Silence& silence : reception::silences()) {
        if (silence.title.find(options.only) == std::string::npos)
            continue;
        std::size_t transmissions = 0;
        std::size_t characters = 0;
        std::size_t unknown = 0;
        std::size_t errorMarks = 0;
        const auto pieces = static_cast<int>(std::ceil(options.hours * 3600.0 / PIECE_s));
        const double piece_s = std::min(PIECE_s, options.hours * 3600.0);
        for (int piece = 0; piece < pieces; ++piece) {
            reception::Recording recording;
            recording.samples =
                silence.make(piece_s, silence.title + "/" + options.set + std::to_string(piece));
            const CodeList heard =
                decode(recording, {options.isLive, false}, options.parameters, cost);
            transmissions += heard.transmissions;
            errorMarks += heard.errorMarks;
            for (const char c : testsupport::textOfCodes(heard.codes, UNKNOWN)) {
                characters += c == ' ' ? 0 : 1;
                unknown += c == UNKNOWN ? 1 : 0;
            }
            if (options.show && !heard.codes.empty())
                std::printf("piece %d: %s\n", piece,
                            testsupport::textOfCodes(heard.codes, UNKNOWN).c_str());
        }
        std::printf("| %.2f of %s | %zu | %zu | %zu | %zu |\n", pieces * piece_s / 3600.0,
                    silence.title.c_str(), transmissions, characters, unknown, errorMarks);
        std::fflush(stdout);
    }
    std::printf("%.0f times real time\n", cost.timesRealTime());
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
            testsupport::writeSoundFile(directory + "/" + recording.name + ".wav",
                                        reception::RATE_Hz, recording.samples);
            std::ofstream(directory + "/" + recording.name + ".txt")
                << testsupport::asReceived(recording.sent) << "\n";
        });
    }
    return 0;
}

// A table in Markdown: our demodulator, from a file, live, and with tone and speed known, and other
// programs.
int score(const Options& options)
{
    const std::vector<bench::Peer> peers = bench::peersOf(options.others);
    static const bench::TemporaryWave wave; // removed however the program ends
    struct Column
    {
        std::string name;
        std::function<std::string(const reception::Recording&, Cost&)> read;
        Cost cost;
    };
    std::vector<Column> columns;
    const struct
    {
        const char* name;
        const char* chosenBy;
        Hearing hearing;
    } ours[] = {
        {"ours", "unaided", {false, false}},
        {"ours, live", "unaided", {true, false}},
        {"ours, known", "known", {false, true}},
    };
    for (const auto& own : ours) {
        if (options.ours != "both" && options.ours != own.chosenBy)
            continue;
        const auto read = [hearing = own.hearing, &options](const reception::Recording& recording,
                                                            Cost& cost) {
            return testsupport::textOfCodes(
                decode(recording, hearing, options.parameters, cost).codes, UNKNOWN);
        };
        columns.push_back({own.name, read, {}});
    }
    for (const bench::Peer& peer : peers) {
        const auto read = [&](const reception::Recording& recording, Cost& cost) {
            return run(peer.command, wave.path(), recording, cost);
        };
        columns.push_back({peer.name, read, {}});
    }
    std::printf("| condition |");
    for (const Column& column : columns)
        std::printf(" %s |", column.name.c_str());
    std::printf("\n|---|");
    for (std::size_t i = 0; i < columns.size(); ++i)
        std::printf("---:|");
    std::printf("\n");
    for (const reception::Condition& condition : reception::conditions()) {
        if (!wanted(options, condition))
            continue;
        std::vector<Rates> rates(columns.size());
        forAll(options, condition, [&](const reception::Recording& recording) {
            if (!peers.empty())
                testsupport::writeSoundFile(wave.path(), reception::RATE_Hz, recording.samples);
            for (std::size_t i = 0; i < columns.size(); ++i) {
                const std::string text = columns[i].read(recording, columns[i].cost);
                rates[i].each.push_back(100.0 *
                                        testsupport::characterErrorRate(recording.sent, text));
            }
        });
        std::printf("| %s |", condition.title.c_str());
        for (const Rates& rate : rates)
            std::printf(" %s |", rate.text().c_str());
        std::printf("\n");
        std::fflush(stdout);
    }
    std::printf("| times real time, processor time |");
    for (const Column& column : columns)
        std::printf(" %.0f |", column.cost.timesRealTime());
    std::printf("\n");
    // Ten minutes of noise: characters given.
    if (options.only.empty()) {
        reception::Recording noise;
        noise.samples = testsupport::noise(600.0, 0.1, reception::RATE_Hz, "noise/" + options.set);
        noise.tone_Hz = 700.0;
        noise.speed_wpm = 20.0;
        testsupport::writeSoundFile(wave.path(), reception::RATE_Hz, noise.samples);
        std::printf("| noise alone, characters in ten minutes |");
        for (Column& column : columns) {
            const std::string text = testsupport::asReceived(column.read(noise, column.cost));
            std::printf(" %zu |", text.size() - static_cast<std::size_t>(
                                                    std::count(text.begin(), text.end(), ' ')));
        }
        std::printf("\n");
    }
    return 0;
}

int offAir(const Options& options)
{
    if (options.others.size() < 2) {
        std::fprintf(stderr, "offair needs a list and a folder\n");
        return 2;
    }
    const auto peers = bench::peersOf({options.others.begin() + 2, options.others.end()});
    return reception::scoreOffAir(options.others[0], options.others[1], peers);
}

int usage()
{
    std::fprintf(stderr,
                 "usage: reception list\n"
                 "       reception measure [OPTION...]\n"
                 "       reception make [OPTION...] DIRECTORY\n"
                 "       reception score [OPTION...] [NAME=COMMAND...]\n"
                 "       reception bound [OPTION...]\n"
                 "       reception delay [OPTION...]\n"
                 "       reception offair LIST FOLDER [NAME=COMMAND...]\n"
                 "       reception noise [OPTION...] [--hours HOURS]\n"
                 "options: --set NAME  --seeds COUNT  --only CONDITION,...  --kind KIND\n"
                 "         --length CHARACTERS  --ours unaided|known|both|none  --live  --show\n"
                 "         --with PART.MEMBER=VALUE (parameters.h), as often as wanted\n"
                 "COMMAND writes text; {} is the recording, {tone} and {wpm} the truth\n");
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
        {"--kind", options.kind},
        {"--seeds", options.seeds, 1},
        {"--length", options.length, 2},
        {"--hours", options.hours},
        {"--ours", options.ours},
        {"--live", options.isLive},
        {"--show", options.show},
        bench::Option([&options](const std::string& member, double value) {
            return demodulator::setParameter(options.parameters, member, value);
        }),
    };
    if (!bench::readOptions(argc, argv, rows, options.others))
        return usage();
    if (!namesRows(command, options))
        return 2;
    if (command == "list")
        return list();
    if (command == "measure")
        return measure(options);
    if (command == "make")
        return make(options);
    if (command == "score")
        return score(options);
    if (command == "bound")
        return bound(options);
    if (command == "delay")
        return delay(options);
    if (command == "noise")
        return noise(options);
    if (command == "offair")
        return offAir(options);
    return usage();
}
