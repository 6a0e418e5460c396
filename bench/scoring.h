// SPDX-License-Identifier: MIT
// What the benches that score decoders have in common: cost, error rates, other programs, options.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace bench {

/// What decoding took, beside the length of what was decoded.
struct Cost
{
    double signal_s = 0.0;
    double processor_s = 0.0;
    double clock_s = 0.0;

    double timesRealTime() const;
    Cost& operator+=(const Cost& other);
};

/// Adds to a cost what is spent between its construction and its destruction.
class Meter
{
public:
    enum class Of { Process, Children };
    Meter(Cost& cost, double signal_s, Of of = Of::Process);
    ~Meter();
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;

private:
    Cost& m_cost;
    Of m_of;
    double m_processor_s;
    std::chrono::steady_clock::time_point m_begin;
};

/// Error rates of recordings, in percent.
struct Rates
{
    std::vector<double> each;

    double mean() const;
    double standardError() const;
    /// "1.17 ± 0.19"; without the error where that rounds to 0.
    std::string text() const;
};

/// Another program: its column in a table, and the command line that writes text.
struct Peer
{
    std::string name;
    std::string command;
};

/// The peers that NAME=COMMAND names; ends the program with a usage error at any other argument.
std::vector<Peer> peersOf(const std::vector<std::string>& arguments);

/// Names in a command line, braces included, and what stands for them.
using Replacements = std::vector<std::pair<std::string, std::string>>;

/// What a command writes to its standard output; ends the program with a message when there is no
/// such command. `cost` gets the processor time of the command and all that it starts.
std::string outputOf(std::string command, const Replacements& replacements, double signal_s,
                     Cost& cost);

/// The path of a file in the folder for temporary files, which is removed at the end.
class TemporaryWave
{
public:
    TemporaryWave();
    ~TemporaryWave();
    TemporaryWave(const TemporaryWave&) = delete;
    TemporaryWave& operator=(const TemporaryWave&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

/// Whether `list`, names with commas between them, holds the name; an empty list holds all.
bool isAmong(const std::string& list, const std::string& name);

/// Whether every name in `list` is one of `names`; otherwise prints which is not.
bool areKnown(const std::string& list, const std::vector<std::string>& names);

/// Whether `part` occurs in one of the texts; otherwise prints that it does not.
bool occurs(const std::string& part, const std::vector<std::string>& texts);

/// An option of a bench, "--name VALUE" or, as a flag, "--name". `take` returns false for a value
/// that is none.
struct Option
{
    Option(std::string optionName, std::string& value);
    Option(std::string optionName, double& value);
    Option(std::string optionName, bool& flag);
    /// A whole number, at least `least`.
    Option(std::string optionName, std::size_t& value, std::size_t least);
    /// "--with PART.MEMBER=VALUE", as often as wanted.
    explicit Option(std::function<bool(const std::string& member, double value)> set);

    std::string name;
    bool isFlag;
    std::function<bool(const std::string&)> take;
};

/// Reads the arguments behind the first one; what is no option is an operand. False, after a
/// message, when there is an unknown option or a value that is none.
bool readOptions(int argc, char** argv, const std::vector<Option>& options,
                 std::vector<std::string>& operands);

} // namespace bench
