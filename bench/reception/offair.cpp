// SPDX-License-Identifier: MIT
#include "reception/offair.h"

#include "support/morsecode.h"
#include "support/soundfile.h"

#include <QCryptographicHash>
#include <QFile>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace reception {

namespace {

using Fault = std::runtime_error;

constexpr double MOST = 1e6; // seconds, Hz: what a number of the list can be
constexpr std::array KEYS = {"file", "address", "licence", "sha256", "from",
                             "to",   "tone",    "wpm",     "text",   "written"};

// A stretch of a recording: what the list says of it.
struct Stretch
{
    std::string title;
    std::string where; // in the list
    std::map<std::string, std::string> values;

    const std::string& value(const std::string& key) const
    {
        const auto found = values.find(key);
        if (found == values.end() || found->second.empty())
            throw Fault(where + ": '" + title + "' has no '" + key + "'");
        return found->second;
    }
    double number(const std::string& key) const
    {
        const std::string& text = value(key);
        char* end = nullptr;
        const double result = std::strtod(text.c_str(), &end);
        if (*end != '\0' || !(result >= 0.0 && result <= MOST))
            throw Fault(where + ": '" + key + "' of '" + title + "' cannot be '" + text + "'");
        return result;
    }
};

std::string trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

void checkStretch(const Stretch& stretch)
{
    for (const char* key : KEYS)
        stretch.value(key);
    for (const char* key : {"from", "to", "tone", "wpm"})
        stretch.number(key);
    if (stretch.number("to") <= stretch.number("from"))
        throw Fault(stretch.where + ": '" + stretch.title + "' ends before it begins");
    if (stretch.value("file").find('/') != std::string::npos)
        throw Fault(stretch.where + ": '" + stretch.value("file") + "' is a path, not a name");
}

// [TITLE] begins a stretch, lines of KEY: VALUE follow; an indented line continues the one before
// it, and # begins a comment.
std::vector<Stretch> readList(const std::string& path)
{
    std::ifstream input(path);
    std::vector<Stretch> list;
    std::string* last = nullptr; // what an indented line continues
    std::string line;
    for (int number = 1; std::getline(input, line); ++number) {
        const std::string where = path + ":" + std::to_string(number);
        const std::string text = trimmed(line);
        if (text.empty() || text.front() == '#')
            continue;
        if (text.front() == '[' && text.back() == ']') {
            list.push_back({text.substr(1, text.size() - 2), where, {}});
            last = nullptr;
            continue;
        }
        if (line.front() == ' ' && last != nullptr) {
            *last += " " + text;
            continue;
        }
        const std::size_t colon = text.find(':');
        const std::string key = text.substr(0, colon);
        if (list.empty() || colon == std::string::npos ||
            std::find(KEYS.begin(), KEYS.end(), key) == KEYS.end())
            throw Fault(where + ": '" + text + "' is neither [TITLE] nor KEY: VALUE");
        last = &list.back().values[key];
        if (!last->empty())
            throw Fault(where + ": a second '" + key + "'");
        *last = trimmed(text.substr(colon + 1));
    }
    if (list.empty())
        throw Fault(path + ": no list of recordings");
    std::for_each(list.begin(), list.end(), checkStretch);
    return list;
}

// The stretch alone, in `wave`.
double cut(const Stretch& stretch, const std::string& path, const std::string& wave)
{
    QFile file(QString::fromStdString(path));
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        throw Fault(path + ": cannot be read");
    const std::string sum = hash.result().toHex().toStdString();
    if (sum != stretch.value("sha256"))
        throw Fault(path + ": another recording than the list means: its SHA-256 is " + sum);
    testsupport::SoundFile sound = testsupport::readSoundFile(path);
    const auto first = static_cast<std::size_t>(stretch.number("from") * sound.rate_Hz);
    const auto end = static_cast<std::size_t>(stretch.number("to") * sound.rate_Hz);
    if (end > sound.samples.size() || sound.samples.empty())
        throw Fault(path + ": ends before " + stretch.value("to") + " s, or is no recording");
    const auto begin = sound.samples.begin();
    testsupport::writeSoundFile(
        wave, sound.rate_Hz,
        {begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(end)});
    return static_cast<double>(end - first) / sound.rate_Hz;
}

// What the program writes as codes, so that one without a character counts as a wrong character.
std::string textOf(const std::string& codes)
{
    std::vector<int> list;
    std::istringstream input(codes);
    for (int code = 0; input >> code;)
        list.push_back(code);
    return testsupport::textOfCodes(list, '*');
}

struct Column
{
    std::string name, command;
    std::size_t errors = 0;
    bench::Cost cost;
};

void printTable(const std::vector<Stretch>& list, const std::string& folder,
                std::vector<Column> columns)
{
    static const bench::TemporaryWave wave; // removed however the program ends
    std::printf("| recording | characters |");
    for (const Column& column : columns)
        std::printf(" %s |", column.name.c_str());
    std::printf("\n|---|---:|");
    for (std::size_t i = 0; i < columns.size(); ++i)
        std::printf("---:|");
    std::printf("\n");
    std::size_t characters = 0;
    for (const Stretch& stretch : list) {
        const double length_s = cut(stretch, folder + "/" + stretch.value("file"), wave.path());
        const std::string sent = testsupport::asReceived(stretch.value("text"));
        characters += sent.size();
        std::printf("| %s | %zu |", stretch.title.c_str(), sent.size());
        for (Column& column : columns) {
            const std::string output = bench::outputOf(column.command,
                                                       {{"{}", wave.path()},
                                                        {"{tone}", stretch.value("tone")},
                                                        {"{wpm}", stretch.value("wpm")}},
                                                       length_s, column.cost);
            const std::string text = &column == &columns.front() ? textOf(output) : output;
            const std::size_t errors =
                testsupport::editDistance(sent, testsupport::asReceived(text));
            column.errors += errors;
            std::printf(" %.1f |",
                        100.0 * static_cast<double>(errors) / static_cast<double>(sent.size()));
            std::fflush(stdout);
        }
        std::printf("\n");
    }
    std::printf("| all | %zu |", characters);
    for (const Column& column : columns)
        std::printf(" %.1f |",
                    100.0 * static_cast<double>(column.errors) / static_cast<double>(characters));
    std::printf("\n| times real time, processor time | |");
    for (const Column& column : columns)
        std::printf(" %.0f |", column.cost.timesRealTime());
    std::printf("\n");
}

} // namespace

int scoreOffAir(const std::string& list, const std::string& folder,
                const std::vector<bench::Peer>& peers)
{
    namespace fs = std::filesystem;
    try {
        const std::vector<Stretch> all = readList(list);
        if (!fs::is_directory(folder))
            throw Fault(folder + ": no folder");
        const fs::path program = fs::read_symlink("/proc/self/exe").parent_path() / "morsehost";
        if (!fs::exists(program))
            throw Fault(program.string() + ": not built");
        std::vector<Stretch> there;
        for (const Stretch& stretch : all) {
            if (fs::exists(folder + "/" + stretch.value("file")))
                there.push_back(stretch);
            else
                std::fprintf(stderr, "not in %s: %s, from %s (%s)\n", folder.c_str(),
                             stretch.value("file").c_str(), stretch.value("address").c_str(),
                             stretch.value("licence").c_str());
        }
        if (there.empty())
            throw Fault(folder + ": none of the recordings is here");
        std::vector<Column> columns = {
            {"ours", "'" + program.string() + "' decode --codes {}", 0, {}}};
        for (const bench::Peer& peer : peers)
            columns.push_back({peer.name, peer.command, 0, {}});
        printTable(there, folder, columns);
        return 0;
    } catch (const std::exception& fault) {
        std::fflush(stdout);
        std::fprintf(stderr, "%s\n", fault.what());
        return 1;
    }
}

} // namespace reception
