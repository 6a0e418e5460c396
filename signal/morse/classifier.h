// SPDX-License-Identifier: MIT
// Last stage: decided marks and spaces to symbol codes, timing marks included.
#pragma once

#include "signal/morse/demodulator.h"
#include "signal/morse/timingmodel.h"
#include "signal/morse/witness.h"

#include <cstdint>

namespace demodulator {

class Classifier
{
public:
    explicit Classifier(SymbolSink& sink, Witness* witness = nullptr)
        : m_sink(sink)
        , m_witness(witness)
    {
    }

    /// Begins a transmission where none is under way.
    void mark(Kind kind, std::int64_t begin_us, std::int64_t end_us, double unit_us);
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
    SymbolSink& m_sink;
    Witness* m_witness;
    bool m_active = false;
    bool m_characterOpen = false; // something was given since the last code 3
    bool m_wordOpen = false;      // ... since the last code 4
    std::int64_t m_markEnd_us = 0;
};

} // namespace demodulator
