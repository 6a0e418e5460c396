// SPDX-License-Identifier: MIT
// What a radio path does to a signal made by arithmetic, whatever is keyed: scatter, clicks, noise.
#pragma once

#include "support/random.h"

#include <array>
#include <complex>
#include <vector>

namespace testsupport {

/// Amplitude of a level, 1 at 0 dB.
double amplitudeOf(double level_dB);

/// Deviation of white noise beside a tone of amplitude 1; the ratio is that in 500 Hz.
double noiseDeviation(double rate_Hz, double snr_dB);

/// The gain of many paths, each with a Doppler shift of its own: Rayleigh fading, mean power 1.
class Scatter
{
public:
    Scatter(double spread_Hz, Random& random);
    std::complex<double> at(double time_s) const;

private:
    struct Ray
    {
        double turn; // radians a second
        double phase;
    };
    std::array<Ray, 12> m_rays;
};

/// Adds bursts of 2 ms, up to 10 dB over a tone of amplitude 1.
void addClicks(std::vector<float>& samples, double perSecond, double rate_Hz, Random& random);

/// Only what lies within so many Hz of 0, with steep edges. The result is 201 samples shorter.
std::vector<std::complex<float>>
within(double edge_Hz, const std::vector<std::complex<float>>& samples, double rate_Hz);

/// Sets the level so that the loudest sample is 0.9.
void normalise(std::vector<float>& samples);

} // namespace testsupport
