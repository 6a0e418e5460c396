// SPDX-License-Identifier: MIT
// Where a whole band comes from: sound or I/Q, from a recording or raw from standard input.
#pragma once

#include "signal/band/stepbank.h"

#include <QString>

#include <complex>
#include <cstddef>
#include <memory>
#include <optional>

namespace morsehost {

/// Samples, full scale +-1, read once from begin to end; of sound the imaginary part is 0.
class BandSource
{
public:
    virtual ~BandSource() = default;

    virtual demodulator::BandFormat format() const = 0;
    /// Fills up to `count` samples and returns how many; 0 at the end of input, after an error, or
    /// when interrupted. A pipe gives what it has as soon as it has any.
    virtual std::size_t read(std::complex<float>* samples, std::size_t count) = 0;
    /// What ended the input before its end; empty when nothing did.
    virtual QString error() const = 0;
};

/// Raw numbers, little-endian; with I/Q in pairs, I first.
enum class RawFormat { S16, F32, U8, S8 };

struct BandRequest
{
    QString name; ///< path of a recording, or of standard input its name in messages
    bool isPipe = false;
    bool isComplex = false; ///< I and Q: two channels of a recording
    RawFormat format = RawFormat::S16;
    double rate_Hz = 48000.0; ///< of raw samples
};

struct OpenedBand
{
    std::unique_ptr<BandSource> source; ///< null when the input cannot be used
    QString error;                      ///< why
};

OpenedBand openBand(const BandRequest& request);

} // namespace morsehost
