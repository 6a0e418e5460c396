// SPDX-License-Identifier: MIT
#include "signal/teleprinter/line.h"

#include <algorithm>
#include <bitset>
#include <cmath>

namespace teleprinter {

namespace {

constexpr double SAME_TONE = 0.4;   // of the speed: nearer ones are one within an element
constexpr double SAME_SPEED = 0.01; // 45 and 45.45 Bd are one speed

// Whether a character of seven or eight bits and its parity fill so many elements.
bool canHold(int dataBits, const std::optional<Parity>& parity)
{
    const bool hasParity = parity && *parity != Parity::None;
    const bool mayHaveParity = !parity || *parity != Parity::None;
    return dataBits >= (hasParity ? 8 : 7) && dataBits <= (mayHaveParity ? 9 : 8);
}

} // namespace

const std::vector<LineKind>& lineKinds()
{
    static const std::vector<LineKind> rows = {
        {Code::Ita2, 45.45, 5},  {Code::Ita2, 50.0, 5},     {Code::Ita2, 75.0, 5},
        {Code::Ita2, 100.0, 5},  {Code::Ascii, 110.0, 7},   {Code::Ascii, 110.0, 8},
        {Code::Ascii, 110.0, 9}, {Code::Ascii, 150.0, 7},   {Code::Ascii, 150.0, 8},
        {Code::Ascii, 150.0, 9}, {Code::Ascii, 200.0, 7},   {Code::Ascii, 200.0, 8},
        {Code::Ascii, 200.0, 9}, {Code::Ascii, 300.0, 7},   {Code::Ascii, 300.0, 8},
        {Code::Ascii, 300.0, 9}, {Code::Ccir476, 100.0, 7},
    };
    return rows;
}

bool hasParity(unsigned word, Parity parity)
{
    const bool isOdd = std::bitset<16>(word).count() % 2 == 1;
    return parity == Parity::None || isOdd == (parity == Parity::Odd);
}

bool isSameLine(const Line& a, const Line& b)
{
    const double near_Hz = SAME_TONE * std::max(a.baud, b.baud);
    return a.kind.code == b.kind.code && a.kind.baud == b.kind.baud &&
           a.kind.dataBits == b.kind.dataBits && std::fabs(a.mark_Hz - b.mark_Hz) < near_Hz &&
           std::fabs(a.space_Hz - b.space_Hz) < near_Hz;
}

bool isKnownSpeed(double baud, const Known& known, const LineParameters& parameters)
{
    return !known.baud || std::fabs(*known.baud / baud - 1.0) < parameters.nearestOther;
}

std::vector<LineKind> kindsToTry(const Known& known, const LineParameters& parameters)
{
    std::vector<LineKind> kinds;
    for (const LineKind& row : lineKinds()) {
        if (!known.codes.empty() &&
            std::find(known.codes.begin(), known.codes.end(), row.code) == known.codes.end())
            continue;
        if (known.mostBaud && row.baud > *known.mostBaud)
            continue;
        if (row.code == Code::Ascii && !canHold(row.dataBits, known.parity))
            continue;
        if (!known.baud) {
            kinds.push_back(row);
            continue;
        }
        // Known a speed, each code and length is tried once, at the speed known.
        const bool isThere = std::any_of(kinds.begin(), kinds.end(), [&](const LineKind& kind) {
            return kind.code == row.code && kind.dataBits == row.dataBits &&
                   kind.baud == *known.baud;
        });
        if (!isThere &&
            (row.code != Code::Ccir476 || std::fabs(*known.baud / row.baud - 1.0) < SAME_SPEED))
            kinds.push_back({row.code, *known.baud, row.dataBits});
        const double other = std::fabs(*known.baud / row.baud - 1.0);
        if (other > SAME_SPEED && other < parameters.farthestOther)
            kinds.push_back(row);
    }
    return kinds;
}

} // namespace teleprinter
