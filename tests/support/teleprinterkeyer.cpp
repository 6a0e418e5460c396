// SPDX-License-Identifier: MIT
#include "support/teleprinterkeyer.h"

#include "signal/numbers.h"
#include "support/disturbances.h"
#include "support/random.h"

#include <algorithm>
#include <bitset>
#include <cctype>
#include <cmath>
#include <complex>
#include <cstring>

namespace testsupport {

namespace {

using demodulator::PI;

// Both alphabets of ITU-T S.1 and of CCIR 476, element sent first on the left; combination 1 first.
struct Combination
{
    char letter;
    char figure; // 0: none that is the same everywhere
    const char* ita2;
    const char* ccir476; // B as 1, Y as 0
};

constexpr Combination COMBINATIONS[] = {
    {'A', '-', "11000", "1110001"},   {'B', '?', "10011", "0100111"},
    {'C', ':', "01110", "1011100"},   {'D', 0, "10010", "1100101"},
    {'E', '3', "10000", "0110101"},   {'F', 0, "10110", "1101100"},
    {'G', 0, "01011", "1010110"},     {'H', 0, "00101", "1001011"},
    {'I', '8', "01100", "1011001"},   {'J', 0, "11010", "1110100"},
    {'K', '(', "11110", "0111100"},   {'L', ')', "01001", "1010011"},
    {'M', '.', "00111", "1001110"},   {'N', ',', "00110", "1001101"},
    {'O', '9', "00011", "1000111"},   {'P', '0', "01101", "1011010"},
    {'Q', '1', "11101", "0111010"},   {'R', '4', "01010", "1010101"},
    {'S', '\'', "10100", "1101001"},  {'T', '5', "00001", "0010111"},
    {'U', '7', "11100", "0111001"},   {'V', '=', "01111", "0011110"},
    {'W', '2', "11001", "1110010"},   {'X', '/', "10111", "0101110"},
    {'Y', '6', "10101", "1101010"},   {'Z', '+', "10001", "1100011"},
    {'\r', '\r', "00010", "0001111"}, {'\n', '\n', "01000", "0011011"},
    {' ', ' ', "00100", "0011101"},
};
struct Signal
{
    const char* ita2;
    const char* ccir476;
};
constexpr Signal LETTERS = {"11111", "0101101"};
constexpr Signal FIGURES = {"11011", "0110110"};
constexpr const char* PHASING_1 = "1111000"; // also the idle signal alpha
constexpr const char* PHASING_2 = "0110011"; // also the request for repetition
constexpr std::size_t PHASING_PAIRS = 16;

char asKeyed(char c)
{
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

const Combination* combinationOf(char c, bool figures)
{
    for (const Combination& row : COMBINATIONS) {
        if (c == (figures ? row.figure : row.letter))
            return &row;
    }
    return nullptr;
}

// Calls with the elements of each combination, shifts put in.
template <typename Function>
void forCombinations(const std::string& text, const Machine& machine, Function function)
{
    const bool isSitor = machine.code == TeleprinterCode::SitorB;
    const auto elements = [isSitor](const auto& row) { return isSitor ? row.ccir476 : row.ita2; };
    bool figures = false;
    bool isSure = false; // of the shift that the receiving machine is in
    for (const char given : text) {
        const char c = asKeyed(given);
        const bool canLetter = combinationOf(c, false) != nullptr;
        const bool canFigure = combinationOf(c, true) != nullptr;
        if (!canLetter && !canFigure)
            continue;
        const bool isEither = canLetter && canFigure;
        if (!isEither && (figures != canFigure || !isSure)) {
            figures = canFigure;
            isSure = true;
            function(elements(figures ? FIGURES : LETTERS));
        }
        function(elements(*combinationOf(c, figures)));
        if (c == ' ' && figures && machine.figuresAfterBlank)
            isSure = false;
    }
}

class Elements
{
public:
    Elements(const Machine& machine, const std::string& seed)
        : m_machine(machine)
        , m_bit_s(1.0 / (machine.baud * (1.0 + machine.fasterClock)))
        , m_random(seed + "/machine")
    {
    }

    void add(bool mark, double bits) { m_pieces.push_back({mark, bits * m_bit_s}); }
    void add(const char* elements)
    {
        for (; *elements != 0; ++elements)
            add(*elements == '1', 1.0);
    }
    void addStartStop(const std::string& elements)
    {
        if (m_machine.typedPause_bits > 0.0)
            add(true, -m_machine.typedPause_bits * std::log(1.0 - m_random.uniform()));
        add(false, 1.0);
        add(elements.c_str());
        add(true, m_machine.stop_bits);
    }
    void idle() { m_pieces.push_back({true, m_machine.idle_s}); }

    std::vector<Piece> take() { return std::move(m_pieces); }

private:
    const Machine& m_machine;
    double m_bit_s;
    Random m_random;
    std::vector<Piece> m_pieces;
};

std::string asciiElements(char c, TeleprinterCode code)
{
    const bool isSeven = code == TeleprinterCode::Ascii7 || code == TeleprinterCode::Ascii7Even;
    const std::size_t count = isSeven ? 7 : 8;
    const std::bitset<8> bits(static_cast<unsigned char>(c) & (isSeven ? 0x7FU : 0xFFU));
    std::string elements;
    for (std::size_t bit = 0; bit < count; ++bit)
        elements += bits[bit] ? '1' : '0';
    const bool isOdd = bits.count() % 2 == 1;
    if (code == TeleprinterCode::Ascii7Even || code == TeleprinterCode::Ascii8Even)
        elements += isOdd ? '1' : '0';
    if (code == TeleprinterCode::Ascii8Odd)
        elements += isOdd ? '0' : '1';
    return elements;
}

// Time diversity: a character of the direct stream comes again five characters later.
void addSitor(const std::string& text, const Machine& machine, Elements& elements)
{
    std::vector<const char*> direct(PHASING_PAIRS, PHASING_2);
    std::vector<const char*> repeated(PHASING_PAIRS, PHASING_1);
    forCombinations(text, machine, [&](const char* combination) {
        direct.push_back(combination);
        repeated.push_back(combination);
    });
    direct.insert(direct.end(), 5, PHASING_1);
    repeated.insert(repeated.end(), 5, PHASING_1);
    for (std::size_t n = 0; n < direct.size(); ++n) {
        elements.add(direct[n]);
        elements.add(n < 2 ? PHASING_1 : repeated[n - 2]);
    }
}

} // namespace

std::vector<Piece> teleprinterElements(const std::string& text, const Machine& machine,
                                       const std::string& seed)
{
    Elements elements(machine, seed);
    if (machine.code == TeleprinterCode::SitorB) {
        addSitor(text, machine, elements);
        return elements.take();
    }
    elements.idle();
    if (machine.code == TeleprinterCode::Ita2) {
        forCombinations(text, machine,
                        [&](const char* combination) { elements.addStartStop(combination); });
    } else {
        for (const char c : text)
            elements.addStartStop(asciiElements(c, machine.code));
    }
    elements.idle();
    return elements.take();
}

std::string teleprinterText(const std::string& text, TeleprinterCode code)
{
    if (code != TeleprinterCode::Ita2 && code != TeleprinterCode::SitorB)
        return text;
    std::string sent;
    for (const char given : text) {
        const char c = asKeyed(given);
        if (combinationOf(c, false) != nullptr || combinationOf(c, true) != nullptr)
            sent += c;
    }
    return sent;
}

std::vector<float> teleprinterSound(const std::vector<Piece>& elements, const TonePath& path,
                                    double rate_Hz, const std::string& seed)
{
    double keyed_s = 0.0;
    for (const Piece& element : elements)
        keyed_s += element.duration_s;
    const double length_s = path.before_s + keyed_s + path.after_s;
    std::vector<float> samples(static_cast<std::size_t>(length_s * rate_Hz) + 1, 0.0F);
    const auto first = static_cast<std::size_t>(path.before_s * rate_Hz);
    const auto count = static_cast<std::size_t>(keyed_s * rate_Hz);

    Random random(seed + "/path");
    const double fadingPhase = 2.0 * PI * random.uniform();
    const Scatter direct(path.scatter_Hz, random);
    const Scatter echo(path.scatter_Hz, random);
    std::vector<double> phases(count, 0.0);
    std::vector<double> gains(count, 0.0);
    double phase = 2.0 * PI * random.uniform();
    std::size_t element = 0;
    double elementEnd_s = elements.empty() ? 0.0 : elements[0].duration_s;
    for (std::size_t n = 0; n < count; ++n) {
        const double t = static_cast<double>(n) / rate_Hz;
        while (t >= elementEnd_s && element + 1 < elements.size())
            elementEnd_s += elements[++element].duration_s;
        const bool upper = elements[element].mark != path.reversed;
        const double frequency = path.centre_Hz + (upper ? 0.5 : -0.5) * path.shift_Hz +
                                 path.drift_Hz * (t / keyed_s - 0.5);
        phase += 2.0 * PI * frequency / rate_Hz;
        phases[n] = phase;
        const double fade = std::cos(2.0 * PI * path.fading_Hz * t + fadingPhase);
        gains[n] = amplitudeOf(-0.5 * path.fading_dB * (1.0 - fade)) *
                   amplitudeOf(-0.5 * path.selective_dB * (1.0 - (upper ? fade : -fade)));
    }
    const auto delay = static_cast<std::size_t>(path.echo_ms / 1000.0 * rate_Hz);
    const bool isEchoed = path.echo_ms > 0.0;
    std::complex<double> directGain = 1.0;
    std::complex<double> echoGain = 0.0;
    for (std::size_t n = 0; n < count; ++n) {
        if (path.scatter_Hz > 0.0 && n % 16 == 0) {
            const double t = static_cast<double>(n) / rate_Hz;
            directGain = direct.at(t) * (isEchoed ? std::sqrt(0.5) : 1.0);
            echoGain = isEchoed ? echo.at(t) * std::sqrt(0.5) : 0.0;
        }
        std::complex<double> sum = directGain * std::polar(gains[n], phases[n]);
        if (isEchoed && n >= delay)
            sum += echoGain * std::polar(gains[n - delay], phases[n - delay]);
        samples[first + n] += static_cast<float>(sum.real());
    }

    if (path.carrier_dB) {
        Random text(seed + "/carrier");
        std::string keyed;
        for (double at_s = 0.0; at_s < length_s; at_s += 0.5)
            keyed += text.below(6) == 0 ? ' ' : static_cast<char>('A' + text.below(26));
        Path other;
        other.tone_Hz = path.centre_Hz + path.carrier_Hz;
        other.before_s = 0.0;
        const std::vector<float> carrier = sound(keyed, Hand(), other, rate_Hz, seed);
        const double level = amplitudeOf(*path.carrier_dB) / 0.9; // its loudest sample is 0.9
        for (std::size_t n = 0; n < std::min(samples.size(), carrier.size()); ++n)
            samples[n] += static_cast<float>(level) * carrier[n];
    }
    Random clicks(seed + "/clicks");
    addClicks(samples, path.clicks_per_s, rate_Hz, clicks);
    if (path.snr_dB)
        addNoise(samples, rate_Hz, 1.0, *path.snr_dB, seed);
    normalise(samples);
    return samples;
}

} // namespace testsupport
