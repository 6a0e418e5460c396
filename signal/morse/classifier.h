// SPDX-License-Identifier: MIT
// Last stage: decided marks and spaces to symbol codes, timing marks included.
#pragma once

#include "signal/morse/observer.h"
#include "signal/morse/symbolsink.h"
#include "signal/morse/timingmodel.h"

#include <cstdint>

namespace demodulator {

struct DecidedMark
{
    Kind kind = Kind::Dot;
    std::int64_t begin_us = 0;
    std::int64_t end_us = 0;
    double unit_us = 0.0; ///< a dot's length at the speed that it was heard at
    double tone_Hz = 0.0;
    double snr = 0.0; ///< key-down power over noise power in 500 Hz
};

class Classifier
{
public:
    explicit Classifier(SymbolSink& sink, Observer* observer = nullptr)
        : m_sink(sink)
        , m_observer(observer)
    {
    }

    /// Begins a transmission where none is under way.
    void mark(const DecidedMark& mark);
    /// The gap after the last mark, over (of kind `kind`) or as long as it is so far.
    void gap(Kind kind);
    void gapSoFar(double length_us, double unit_us, double characterThreshold,
                  double wordThreshold);
    /// Ends the transmission, if one is under way.
    void stop();

    bool active() const { return m_active; }
    std::int64_t lastMarkEnd_us() const { return m_markEnd_us; }

    /// Silence that ends a transmission.
    static double endingSilence_us(double unit_us);

private:
    // Sums over the marks of a transmission, each weighted with its length.
    struct Sums
    {
        double length_us = 0.0;
        double unit_us = 0.0;
        double tone_Hz = 0.0;
        double snr = 0.0;
    };
    SignalReport report() const;

    SymbolSink& m_sink;
    Observer* m_observer;
    bool m_active = false;
    bool m_characterOpen = false; // something was emitted since the last code 3
    bool m_wordOpen = false;      // ... since the last code 4
    std::int64_t m_markEnd_us = 0;
    Sums m_sums;
};

} // namespace demodulator
