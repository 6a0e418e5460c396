// SPDX-License-Identifier: MIT
#include "reception/bound.h"

#include "signal/morse/baseband.h"
#include "signal/morse/classifier.h"
#include "signal/morse/marklikelihood.h"
#include "signal/morse/timingmodel.h"
#include "signal/morse/trellis.h"

#include <algorithm>
#include <cmath>

namespace reception {

using namespace demodulator;

namespace {

constexpr std::int64_t REVIEW_steps = 8;
constexpr double CERTAIN = 30.0; // concentration of the phase
constexpr double NEVER = -100.0; // log probability of another level than the one known

class Codes : public SymbolSink
{
public:
    void transmissionStarted(std::int64_t) override {}
    void symbol(int code, std::int64_t) override { codes.push_back(code); }
    void transmissionStopped(std::int64_t, const SignalReport&) override {}

    std::vector<int> codes;
};

} // namespace

std::vector<int> boundOf(const Recording& recording, const Recording& clean,
                         const Recording& carrier, double late_s)
{
    // Each is scaled to its own peak: how much of the one is in the other. Without noise the gaps
    // are empty.
    const std::size_t size =
        std::min({recording.samples.size(), clean.samples.size(), carrier.samples.size()});
    double product = 0.0;
    double cleanPower = 0.0;
    double keyedProduct = 0.0;
    double keyedPower = 0.0;
    for (std::size_t n = 0; n < size; ++n) {
        const auto keyed = static_cast<double>(clean.samples[n]);
        const double held = keyed == 0.0 ? 0.0 : static_cast<double>(carrier.samples[n]);
        product += static_cast<double>(recording.samples[n]) * keyed;
        cleanPower += keyed * keyed;
        keyedProduct += keyed * held;
        keyedPower += held * held;
    }
    const double scale = product / cleanPower;
    const double carrierScale = scale * keyedProduct / keyedPower;
    double noisePower = 0.0;
    for (std::size_t n = 0; n < size; ++n) {
        const double rest = static_cast<double>(recording.samples[n]) -
                            scale * static_cast<double>(clean.samples[n]);
        noisePower += rest * rest / static_cast<double>(size);
    }

    const auto historyOf = [](const Recording& from) {
        SampleHistory history(from.samples.size() + 1);
        history.push(from.samples.data(), from.samples.size());
        return history;
    };
    const SampleHistory history = historyOf(recording);
    const SampleHistory carrierHistory = historyOf(carrier);
    Baseband baseband(RATE_Hz, recording.tone_Hz);
    Baseband carrierBaseband(RATE_Hz, recording.tone_Hz);
    const std::int64_t steps =
        std::min(history.end(), carrierHistory.end()) / baseband.stepSamples() - 2;

    Level level;
    level.noise = noisePower / baseband.stepSamples();
    level.dot_steps = unitOf_s(recording.speed_wpm) / STEP_s;
    TimingModel timing(STEP_s, recording.speed_wpm);
    for (int i = 0; i < 100; ++i) {
        timing.learn(Kind::Dot, 1.0);
        timing.learn(Kind::Dash, 3.0);
        timing.learn(Kind::ElementGap, 1.0);
    }
    timing.update(0.0, 0.0);
    LikelihoodParameters knownLevel;
    knownLevel.nearPrice = NEVER;
    knownLevel.fadedPrice = NEVER;
    MarkLikelihood likelihood(knownLevel);
    Trellis trellis(timing, likelihood);
    Codes codes;
    Classifier classifier(codes);
    const std::int64_t late_steps = std::llround(late_s / STEP_s);
    std::int64_t given = 0;
    for (std::int64_t step = 0; step < steps; ++step) {
        const std::complex<double> held =
            carrierScale * carrierBaseband.step(carrierHistory, step).value;
        level.signal = std::norm(held);
        likelihood.setLevel(level);
        likelihood.setPhase(std::arg(held), CERTAIN);
        likelihood.push(baseband.step(history, step).value);
        trellis.advance();
        const bool last = step + 1 == steps;
        if ((step + 1) % REVIEW_steps != 0 && !last)
            continue;
        for (const Segment& segment : trellis.path(given).segments) {
            if ((segment.begin_step + segment.end_step) / 2 < given)
                continue;
            if (!last && segment.end_step > step - late_steps)
                break;
            if (isMark(segment.kind))
                classifier.mark({segment.kind, segment.begin_step, segment.end_step, 1.0});
            else
                classifier.gap(segment.kind);
            given = segment.end_step;
        }
    }
    classifier.stop();
    return codes.codes;
}

} // namespace reception
