// SPDX-License-Identifier: MIT
// Stage: from the path of the moment to what is emitted for good. A mark is emitted once it is so
// old that nothing to come can change it; what was emitted is what the timing model learns from.
#pragma once

#include "signal/morse/classifier.h"
#include "signal/morse/parameters.h"
#include "signal/morse/timingmodel.h"
#include "signal/morse/trellis.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace demodulator {

class Decider
{
public:
    /// All must outlive it. Step 0 of the paths is step `origin` of the sound.
    Decider(TimingModel& timing, Classifier& classifier, const DecisionParameters& parameters,
            double step_s, std::int64_t origin);

    struct Heard
    {
        double tone_Hz;
        double snr; ///< key-down power over noise power in 500 Hz
        double dot; ///< energy of a dot over noise density, of the weakest of the last seconds
    };

    /// Emits what ends before step `until` and was not emitted. `isForeign` says of each segment
    /// whether it is somebody else's mark; those are left out. The timing model learns.
    void emitUntil(const Path& path, const std::vector<bool>& isForeign, std::int64_t now,
                   std::int64_t until, const Heard& heard);

    /// End of the last mark emitted, 0 before the first.
    std::int64_t emitted_step() const { return m_emitted; }

private:
    std::int64_t time_us(std::int64_t step) const;
    void emitMark(const Segment& mark, const Heard& heard);

    TimingModel& m_timing;
    Classifier& m_classifier;
    DecisionParameters m_parameters;
    double m_step_us;
    std::int64_t m_origin;
    std::int64_t m_emitted = 0;
    std::int64_t m_learnt = 0;  // when the timing model was put to use last
    double m_unit_steps = 15.0; // of the last mark emitted
    struct Gap
    {
        Kind kind;
        double units;
    };
    std::optional<Gap> m_gap; // after it, as it looked last: learnt when the next mark is emitted
};

} // namespace demodulator
