// SPDX-License-Identifier: MIT
#include "signal/teleprinter/line.h"

#include <algorithm>
#include <cmath>

namespace teleprinter {

namespace {

constexpr double SAME_TONE = 0.4;   // of the speed: nearer ones are one within an element
constexpr double SAME_SPEED = 0.01; // 45 and 45.45 Bd are one speed

} // namespace

const std::vector<LineKind>& lineKinds()
{
    static const std::vector<LineKind> rows = {
        {Code::Ita2, 45.45, 5},    {Code::Ita2, 50.0, 5},   {Code::Ita2, 75.0, 5},
        {Code::Ita2, 100.0, 5},    {Code::Ascii, 110.0, 7}, {Code::Ascii, 110.0, 8},
        {Code::Ascii, 150.0, 7},   {Code::Ascii, 150.0, 8}, {Code::Ascii, 200.0, 7},
        {Code::Ascii, 200.0, 8},   {Code::Ascii, 300.0, 7}, {Code::Ascii, 300.0, 8},
        {Code::Ccir476, 100.0, 7},
    };
    return rows;
}

bool isSameLine(const Line& a, const Line& b)
{
    const double near_Hz = SAME_TONE * std::max(a.baud, b.baud);
    return a.kind.code == b.kind.code && a.kind.baud == b.kind.baud &&
           a.kind.dataBits == b.kind.dataBits && std::fabs(a.mark_Hz - b.mark_Hz) < near_Hz &&
           std::fabs(a.space_Hz - b.space_Hz) < near_Hz;
}

std::vector<LineKind> kindsToTry(const Known& known)
{
    std::vector<LineKind> kinds;
    for (const LineKind& row : lineKinds()) {
        if (!known.codes.empty() &&
            std::find(known.codes.begin(), known.codes.end(), row.code) == known.codes.end())
            continue;
        if (known.mostBaud && row.baud > *known.mostBaud)
            continue;
        if (!known.baud) {
            kinds.push_back(row);
            continue;
        }
        // Known a speed, each code and length is tried once, at the speed known.
        const bool isThere = std::any_of(kinds.begin(), kinds.end(), [&](const LineKind& kind) {
            return kind.code == row.code && kind.dataBits == row.dataBits;
        });
        if (!isThere &&
            (row.code != Code::Ccir476 || std::fabs(*known.baud / row.baud - 1.0) < SAME_SPEED))
            kinds.push_back({row.code, *known.baud, row.dataBits});
    }
    return kinds;
}

} // namespace teleprinter
