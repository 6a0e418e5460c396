// SPDX-License-Identifier: MIT
// Powers as shades: dark where there is noise, bright where there is a signal.
#pragma once

#include <QByteArray>

#include <vector>

namespace inspect {

struct Shading
{
    double darkest_dB = 0.0;
    double brightest_dB = 1.0;

    /// The middle of the powers is dark, and nearly all of them are darker than the brightest.
    static Shading of(std::vector<float> powers_dB);

    /// A picture with `columns` powers a line, the top line first; neither may be empty.
    QByteArray png(const std::vector<float>& powers_dB, int columns) const;
};

} // namespace inspect
