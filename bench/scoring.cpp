// SPDX-License-Identifier: MIT
#include "scoring.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <optional>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

double processor_s(Meter::Of of)
{
    rusage usage = {};
    getrusage(of == Meter::Of::Process ? RUSAGE_SELF : RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::optional<double> numberIn(const std::string& text)
{
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(number))
        return std::nullopt;
    return number;
}

} // namespace

double Cost::timesRealTime() const
{
    return signal_s / std::max(processor_s, 1e-9);
}

Cost& Cost::operator+=(const Cost& other)
{
    signal_s += other.signal_s;
    processor_s += other.processor_s;
    clock_s += other.clock_s;
    return *this;
}

Meter::Meter(Cost& cost, double signal_s, Of of)
    : m_cost(cost)
    , m_of(of)
    , m_processor_s(processor_s(of))
    , m_begin(std::chrono::steady_clock::now())
{
    m_cost.signal_s += signal_s;
}

Meter::~Meter()
{
    m_cost.processor_s += processor_s(m_of) - m_processor_s;
    m_cost.clock_s +=
        std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
}

double Rates::mean() const
{
    return std::accumulate(each.begin(), each.end(), 0.0) / static_cast<double>(each.size());
}

double Rates::standardError() const
{
    const auto count = static_cast<double>(each.size());
    double squares = 0.0;
    for (const double rate : each)
        squares += (rate - mean()) * (rate - mean());
    return count > 1.0 ? std::sqrt(squares / (count - 1.0) / count) : 0.0;
}

std::string Rates::text() const
{
    char buffer[64];
    if (standardError() < 0.005)
        std::snprintf(buffer, sizeof buffer, "%.2f", mean());
    else
        std::snprintf(buffer, sizeof buffer, "%.2f ± %.2f", mean(), standardError());
    return buffer;
}

std::vector<Peer> peersOf(const std::vector<std::string>& arguments)
{
    std::vector<Peer> peers;
    for (const std::string& argument : arguments) {
        const std::size_t equals = argument.find('=');
        if (equals == std::string::npos) {
            std::fprintf(stderr, "'%s' is not NAME=COMMAND\n", argument.c_str());
            std::exit(2);
        }
        peers.push_back({argument.substr(0, equals), argument.substr(equals + 1)});
    }
    return peers;
}

std::string outputOf(std::string command, const Replacements& replacements, double signal_s,
                     Cost& cost)
{
    for (const auto& [what, with] : replacements) {
        for (std::size_t at = command.find(what); at != std::string::npos;
             at = command.find(what, at + with.size()))
            command.replace(at, what.size(), with);
    }
    const Meter meter(cost, signal_s, Meter::Of::Children);
    std::string text;
    FILE* const pipe = popen(("{ " + command + "; } 2>/dev/null").c_str(), "r");
    if (pipe == nullptr)
        return text;
    char buffer[4096];
    for (std::size_t count = fread(buffer, 1, sizeof buffer, pipe); count > 0;
         count = fread(buffer, 1, sizeof buffer, pipe))
        text.append(buffer, count);
    const int status = pclose(pipe);
    // A program that is not there would look like one that reads nothing.
    if (WIFEXITED(status) && (WEXITSTATUS(status) == 126 || WEXITSTATUS(status) == 127)) {
        std::fprintf(stderr, "cannot run '%s'\n", command.c_str());
        std::exit(2);
    }
    return text;
}

TemporaryWave::TemporaryWave()
    : m_path(
          (std::filesystem::temp_directory_path() / ("bench-" + std::to_string(getpid()) + ".wav"))
              .string())
{
}

TemporaryWave::~TemporaryWave()
{
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
}

bool isAmong(const std::string& list, const std::string& name)
{
    return list.empty() || ("," + list + ",").find("," + name + ",") != std::string::npos;
}

bool areKnown(const std::string& list, const std::vector<std::string>& names)
{
    std::istringstream parts(list);
    for (std::string name; std::getline(parts, name, ',');) {
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            std::fprintf(stderr, "no row '%s'\n", name.c_str());
            return false;
        }
    }
    return true;
}

bool occurs(const std::string& part, const std::vector<std::string>& texts)
{
    const bool is = std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
        return text.find(part) != std::string::npos;
    });
    if (!is)
        std::fprintf(stderr, "no row with '%s' in its title\n", part.c_str());
    return is;
}

Option::Option(std::string optionName, std::string& value)
    : name(std::move(optionName))
    , isFlag(false)
    , take([&value](const std::string& text) {
        value = text;
        return true;
    })
{
}

Option::Option(std::string optionName, double& value)
    : name(std::move(optionName))
    , isFlag(false)
    , take([&value](const std::string& text) {
        const auto number = numberIn(text);
        value = number.value_or(0.0);
        return number && *number >= 0.0;
    })
{
}

Option::Option(std::string optionName, bool& flag)
    : name(std::move(optionName))
    , isFlag(true)
    , take([&flag](const std::string&) {
        flag = true;
        return true;
    })
{
}

Option::Option(std::string optionName, std::size_t& value, std::size_t least)
    : name(std::move(optionName))
    , isFlag(false)
    , take([&value, least](const std::string& text) {
        const auto number = numberIn(text);
        if (!number || *number < static_cast<double>(least) || *number > 1e9)
            return false;
        value = static_cast<std::size_t>(*number);
        return true;
    })
{
}

Option::Option(std::function<bool(const std::string& member, double value)> set)
    : name("--with")
    , isFlag(false)
    , take([set = std::move(set)](const std::string& text) {
        const std::size_t equals = text.find('=');
        if (equals == std::string::npos)
            return false;
        const auto number = numberIn(text.substr(equals + 1));
        return number && set(text.substr(0, equals), *number);
    })
{
}

bool readOptions(int argc, char** argv, const std::vector<Option>& options,
                 std::vector<std::string>& operands)
{
    for (int i = 2; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.compare(0, 2, "--") != 0) {
            operands.push_back(argument);
            continue;
        }
        const auto option = std::find_if(options.begin(), options.end(),
                                         [&](const Option& row) { return row.name == argument; });
        if (option == options.end()) {
            std::fprintf(stderr, "no option '%s'\n", argument.c_str());
            return false;
        }
        if (!option->isFlag && ++i == argc) {
            std::fprintf(stderr, "%s needs a value\n", argument.c_str());
            return false;
        }
        if (!option->take(argv[i])) {
            std::fprintf(stderr, "%s cannot be '%s'\n", argument.c_str(), argv[i]);
            return false;
        }
    }
    return true;
}

} // namespace bench
