// SPDX-License-Identifier: MIT
// Makes the corpus and scores decoders on it; see README.md.
#include "morse/symbolcodes.h"
#include "reception/corpus.h"
#include "scoring.h"
#include "signal/band/bandreceiver.h"
#include "signal/teleprinter/teleprinterreceiver.h"
#include "support/soundfile.h"
#include "teleprinter/corpus.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using bench::Cost;
using bench::Meter;
using bench::Rates;
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
    std::size_t morse = 0; ///< characters of it, in a band
};

// The same of a receiver for a band, and how much it gave as Morse.
class BandTexts : public demodulator::BandSink
{
public:
    explicit BandTexts(TextList& list)
        : m_list(list)
    {
    }

    void signalFound(int, double, double) override {}
    void transmissionStarted(int, double, std::int64_t) override {}
    void symbol(int, int code, std::int64_t) override
    {
        m_list.morse += code == eSYMBOL_NEW_CHAR ? 1 : 0;
    }
    void transmissionStopped(int, std::int64_t, const demodulator::SignalReport&) override {}
    void teleprinterStarted(int, const teleprinter::Line& line, std::int64_t time_us) override
    {
        m_list.transmissionStarted(line, time_us);
    }
    void teleprinterCharacter(int, std::uint8_t character, std::int64_t time_us) override
    {
        m_list.character(character, time_us);
    }
    void signalLost(int) override {}

private:
    TextList& m_list;
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
    bool isBand = false;
    teleprinter::Parameters parameters;
    std::vector<std::string> others; // directory, or NAME=COMMAND
};

// In pieces, as they come live, so that a text knows when it was heard.
template <typename Sample, typename Receiver>
void feed(const std::vector<Sample>& samples, Receiver& receiver, TextList& list)
{
    constexpr std::size_t PIECE = 800;
    for (std::size_t at = 0; at < samples.size(); at += PIECE) {
        const std::size_t count = std::min(PIECE, samples.size() - at);
        list.now_s = static_cast<double>(at + count) / teleprinterbench::RATE_Hz;
        receiver.push(samples.data() + at, count);
    }
    receiver.finish();
}

// As `morsehost band` hears it, in a band that holds nothing else.
void receiveInBand(const std::vector<float>& samples, TextList& list)
{
    demodulator::BandSettings settings;
    settings.format.rate_Hz = teleprinterbench::RATE_Hz;
    settings.threads = 1;
    BandTexts sink(list);
    demodulator::BandReceiver receiver(settings, sink);
    feed(std::vector<std::complex<float>>(samples.begin(), samples.end()), receiver, list);
}

TextList receive(const std::vector<float>& samples, const Options& options, Cost& cost)
{
    TextList sink;
    const Meter meter(cost, static_cast<double>(samples.size()) / teleprinterbench::RATE_Hz);
    if (options.isBand) {
        receiveInBand(samples, sink);
        return sink;
    }
    teleprinter::Settings settings;
    settings.parameters = options.parameters;
    settings.sampleRate_Hz = teleprinterbench::RATE_Hz;
    teleprinter::Receiver receiver(settings, sink);
    feed(samples, receiver, sink);
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

// As short as a number can be written.
std::string plain(double number)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}

// What another program writes for a recording.
std::string run(const std::string& command, const std::string& wave, const Condition& condition,
                const Recording& recording, Cost& cost)
{
    const double half_Hz = (recording.path.reversed ? -0.5 : 0.5) * recording.path.shift_Hz;
    return bench::outputOf(
        command,
        {{"{}", wave},
         {"{baud}", plain(condition.machine.baud)},
         {"{mark}", std::to_string(std::lround(recording.path.centre_Hz + half_Hz))},
         {"{space}", std::to_string(std::lround(recording.path.centre_Hz - half_Hz))},
         {"{stop}", plain(condition.machine.stop_bits)}},
        static_cast<double>(recording.samples.size()) / teleprinterbench::RATE_Hz, cost);
}

template <typename Function>
void forAll(const Options& options, const Condition& condition, Function function)
{
    for (const std::string& seed : reception::seeds(options.set, options.seeds)) {
        for (const std::string& kind : reception::kinds())
            function(teleprinterbench::record(condition, kind, seed, options.length));
    }
}

// Whether --only names what there is.
bool namesRows(const Options& options)
{
    std::vector<std::string> names;
    if (options.command == "silence") {
        for (const teleprinterbench::Other& other : teleprinterbench::others())
            names.push_back(other.title);
        return bench::occurs(options.only, names);
    }
    for (const Condition& condition : teleprinterbench::conditions())
        names.push_back(condition.name);
    return bench::areKnown(options.only, names);
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
        if (!bench::isAmong(options.only, condition.name))
            continue;
        Rates rates;
        Cost cost;
        double latest_s = 0.0;
        std::size_t transmissions = 0;
        std::size_t morse = 0;
        forAll(options, condition, [&](const Recording& recording) {
            const TextList heard = receive(recording.samples, options, cost);
            morse += heard.morse;
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
        if (options.isBand)
            std::printf(" Morse %zu |", morse);
        for (const double rate : rates.each)
            std::printf(" %.1f", rate);
        std::printf("\n");
        std::fflush(stdout);
        all += cost;
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
        std::size_t morse = 0;
        const auto pieces = static_cast<std::size_t>(std::ceil(options.hours * 3600.0 / PIECE_s));
        for (const std::string& seed : reception::seeds(options.set, pieces)) {
            const TextList heard = receive(other.make(PIECE_s, seed), options, cost);
            transmissions += heard.lines.size();
            characters += heard.text.size();
            morse += heard.morse;
            if (options.show) {
                showLines(heard);
                std::printf("got  %s\n", heard.text.c_str());
            }
        }
        std::printf("| %s | %.0f | %zu | %zu | %.0f |", other.title.c_str(),
                    static_cast<double>(pieces) * PIECE_s / 60.0, transmissions, characters,
                    cost.timesRealTime());
        if (options.isBand)
            std::printf(" Morse %zu |", morse);
        std::printf("\n");
        std::fflush(stdout);
    }
    return 0;
}

int make(const Options& options)
{
    const std::filesystem::path directory = options.others.empty() ? "." : options.others.front();
    std::filesystem::create_directories(directory);
    for (const Condition& condition : teleprinterbench::conditions()) {
        if (!bench::isAmong(options.only, condition.name))
            continue;
        if (!options.text.empty()) {
            std::ifstream file(options.text, std::ios::binary);
            const std::string text((std::istreambuf_iterator<char>(file)), {});
            const Recording recording = teleprinterbench::record(condition, text);
            testsupport::writeSoundFile((directory / (recording.name + ".wav")).string(),
                                        teleprinterbench::RATE_Hz, recording.samples);
            continue;
        }
        forAll(options, condition, [&](const Recording& recording) {
            testsupport::writeSoundFile((directory / (recording.name + ".wav")).string(),
                                        teleprinterbench::RATE_Hz, recording.samples);
            std::ofstream(directory / (recording.name + ".txt")) << recording.sent;
        });
    }
    return 0;
}

// A table: ours and other programs on the same recordings.
int score(const Options& options)
{
    const std::vector<bench::Peer> peers = bench::peersOf(options.others);
    std::printf("| condition | ours |");
    for (const bench::Peer& peer : peers)
        std::printf(" %s |", peer.name.c_str());
    std::printf("\n|---|---:|");
    for (std::size_t i = 0; i < peers.size(); ++i)
        std::printf("---:|");
    std::printf("\n");
    Cost ours;
    std::vector<Cost> costs(peers.size());
    static const bench::TemporaryWave wave; // removed however the program ends
    for (const Condition& condition : teleprinterbench::conditions()) {
        if (!bench::isAmong(options.only, condition.name))
            continue;
        Rates rates;
        std::vector<Rates> others(peers.size());
        forAll(options, condition, [&](const Recording& recording) {
            rates.each.push_back(
                100.0 * teleprinterbench::errorRate(
                            recording.sent, receive(recording.samples, options, ours).text));
            if (!peers.empty())
                testsupport::writeSoundFile(wave.path(), teleprinterbench::RATE_Hz,
                                            recording.samples);
            for (std::size_t i = 0; i < peers.size(); ++i) {
                const std::string received =
                    run(peers[i].command, wave.path(), condition, recording, costs[i]);
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
    return 0;
}

int usage()
{
    std::fprintf(stderr, "usage: teleprinter list | measure | score | make | silence\n"
                         "       [--set NAME] [--seeds N] [--length N] [--only A,B] [--hours H]\n"
                         "       [--text FILE] [--show] [--band] [--with PART.MEMBER=VALUE]\n"
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
    const std::vector<bench::Option> rows = {
        {"--set", options.set},
        {"--seeds", options.seeds, 1},
        {"--length", options.length, 1},
        {"--only", options.only},
        {"--hours", options.hours},
        {"--text", options.text},
        {"--show", options.show},
        {"--band", options.isBand},
        bench::Option([&options](const std::string& member, double value) {
            return teleprinter::setParameter(options.parameters, member, value);
        }),
    };
    if (!bench::readOptions(argc, argv, rows, options.others))
        return usage();
    if (!namesRows(options))
        return 2;
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
