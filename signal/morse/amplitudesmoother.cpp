// SPDX-License-Identifier: MIT
#include "signal/morse/amplitudesmoother.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace demodulator {

namespace {

// Amplitude and its change per second, of both parts of the complex number alike.
struct State
{
    std::complex<double> value, change;
};

// Symmetric, of a part.
struct Covariance
{
    double value, mixed, change;
};

struct Belief
{
    State mean;
    Covariance spread;
};

// A random amplitude of some power whose correlation is (1 + r t) exp(-r t) over a time t: it has a
// derivative, as fading has.
class Fading
{
public:
    Fading(double rate_per_s, double power, double step_s)
        : m_start{power, 0.0, rate_per_s * rate_per_s * power}
    {
        const double turn = rate_per_s * step_s;
        const double decay = std::exp(-turn);
        m_valueByValue = decay * (1.0 + turn);
        m_valueByChange = decay * step_s;
        m_changeByValue = -decay * turn * rate_per_s;
        m_changeByChange = decay * (1.0 - turn);
        const Covariance kept = carried(m_start);
        m_added = {m_start.value - kept.value, m_start.mixed - kept.mixed,
                   m_start.change - kept.change};
    }

    Belief start() const { return {{}, m_start}; }

    // A step later.
    Belief after(const Belief& belief) const
    {
        const Covariance kept = carried(belief.spread);
        return {
            {m_valueByValue * belief.mean.value + m_valueByChange * belief.mean.change,
             m_changeByValue * belief.mean.value + m_changeByChange * belief.mean.change},
            {kept.value + m_added.value, kept.mixed + m_added.mixed, kept.change + m_added.change}};
    }

    // What was believed of a step, once the next one is known from both sides.
    Belief before(const Belief& belief, const Belief& expectedNext, const Belief& next) const
    {
        const Covariance& spread = belief.spread;
        const Covariance& there = expectedNext.spread;
        // Covariance of this step with the next one, over that of the next one.
        const double vv = spread.value * m_valueByValue + spread.mixed * m_valueByChange;
        const double vc = spread.value * m_changeByValue + spread.mixed * m_changeByChange;
        const double cv = spread.mixed * m_valueByValue + spread.change * m_valueByChange;
        const double cc = spread.mixed * m_changeByValue + spread.change * m_changeByChange;
        const double determinant = std::max(there.value * there.change - there.mixed * there.mixed,
                                            std::numeric_limits<double>::min());
        const double gvv = (vv * there.change - vc * there.mixed) / determinant;
        const double gvc = (vc * there.value - vv * there.mixed) / determinant;
        const double gcv = (cv * there.change - cc * there.mixed) / determinant;
        const double gcc = (cc * there.value - cv * there.mixed) / determinant;
        const std::complex<double> value = next.mean.value - expectedNext.mean.value;
        const std::complex<double> change = next.mean.change - expectedNext.mean.change;
        const double dv = next.spread.value - there.value;
        const double dm = next.spread.mixed - there.mixed;
        const double dc = next.spread.change - there.change;
        return {{belief.mean.value + gvv * value + gvc * change,
                 belief.mean.change + gcv * value + gcc * change},
                {spread.value + gvv * gvv * dv + 2.0 * gvv * gvc * dm + gvc * gvc * dc,
                 spread.mixed + gvv * gcv * dv + (gvv * gcc + gvc * gcv) * dm + gvc * gcc * dc,
                 spread.change + gcv * gcv * dv + 2.0 * gcv * gcc * dm + gcc * gcc * dc}};
    }

private:
    Covariance carried(const Covariance& spread) const
    {
        return {m_valueByValue * m_valueByValue * spread.value +
                    2.0 * m_valueByValue * m_valueByChange * spread.mixed +
                    m_valueByChange * m_valueByChange * spread.change,
                m_valueByValue * m_changeByValue * spread.value +
                    (m_valueByValue * m_changeByChange + m_valueByChange * m_changeByValue) *
                        spread.mixed +
                    m_valueByChange * m_changeByChange * spread.change,
                m_changeByValue * m_changeByValue * spread.value +
                    2.0 * m_changeByValue * m_changeByChange * spread.mixed +
                    m_changeByChange * m_changeByChange * spread.change};
    }

    Covariance m_start;
    double m_valueByValue, m_valueByChange, m_changeByValue, m_changeByChange;
    Covariance m_added;
};

// Takes a mark's step into account; log density of it.
double correct(Belief& belief, const HeardStep& step, double leastNoise)
{
    const double variance = belief.spread.value + std::max(step.noise, leastNoise);
    const std::complex<double> surprise = step.value - belief.mean.value;
    const double valueGain = belief.spread.value / variance;
    const double changeGain = belief.spread.mixed / variance;
    belief.mean.value += valueGain * surprise;
    belief.mean.change += changeGain * surprise;
    belief.spread.change -= changeGain * belief.spread.mixed;
    belief.spread.mixed -= valueGain * belief.spread.mixed;
    belief.spread.value -= valueGain * belief.spread.value;
    return -std::norm(surprise) / variance - std::log(variance);
}

double meanPower(const std::vector<HeardStep>& steps)
{
    double power = 0.0;
    double noise = 0.0;
    std::size_t count = 0;
    for (const HeardStep& step : steps) {
        if (!step.isMark)
            continue;
        power += std::norm(step.value);
        noise += step.noise;
        ++count;
    }
    return count == 0 ? 0.0 : std::max(power - noise, 0.3 * noise) / static_cast<double>(count);
}

double likelihoodOf(const std::vector<HeardStep>& steps, const Fading& fading, double leastNoise)
{
    double sum = 0.0;
    Belief belief = fading.start();
    for (const HeardStep& step : steps) {
        if (step.isMark)
            sum += correct(belief, step, leastNoise);
        belief = fading.after(belief);
    }
    return sum;
}

// The steps of each part of a mark turned to one phase, and how many parts that makes.
struct Aligned
{
    std::vector<HeardStep> steps;
    int parts = 0;
};

Aligned aligned(const std::vector<HeardStep>& heard, std::size_t part_steps)
{
    Aligned turned = {heard, 0};
    std::vector<HeardStep>& steps = turned.steps;
    for (std::size_t begin = 0; begin < steps.size();) {
        std::size_t end = begin;
        std::complex<double> sum;
        for (; end < steps.size() && end - begin < part_steps && steps[end].isMark; ++end)
            sum += steps[end].value;
        const std::complex<double> turn = std::polar(1.0, -std::arg(sum));
        std::for_each(steps.begin() + static_cast<std::ptrdiff_t>(begin),
                      steps.begin() + static_cast<std::ptrdiff_t>(end),
                      [turn](HeardStep& step) { step.value *= turn; });
        turned.parts += end > begin ? 1 : 0;
        begin = std::max(end, begin + 1);
    }
    return turned;
}

// Of the powers of a stretch.
struct Scale
{
    double power;      // of a mark
    double leastNoise; // nothing is more certain
    double step_s;
};

struct Explanation
{
    double rate_per_s = 0.0;
    double likelihood = -std::numeric_limits<double>::infinity();
};

Explanation explain(const std::vector<HeardStep>& steps, const Scale& scale,
                    const RehearingParameters& parameters)
{
    Explanation best;
    for (double rate_per_s = parameters.slowestFading_per_s;
         rate_per_s < parameters.fastestFading_per_s; rate_per_s *= 2.0) {
        const Fading fading(rate_per_s, scale.power, scale.step_s);
        const double likelihood = likelihoodOf(steps, fading, scale.leastNoise);
        if (likelihood > best.likelihood)
            best = {rate_per_s, likelihood};
    }
    return best;
}

std::vector<ExpectedAmplitude> smooth(const std::vector<HeardStep>& steps, double rate_per_s,
                                      const Scale& scale)
{
    const Fading fading(rate_per_s, scale.power, scale.step_s);
    std::vector<Belief> expectedThen, corrected;
    expectedThen.reserve(steps.size());
    corrected.reserve(steps.size());
    Belief belief = fading.start();
    for (const HeardStep& step : steps) {
        expectedThen.push_back(belief);
        if (step.isMark)
            correct(belief, step, scale.leastNoise);
        corrected.push_back(belief);
        belief = fading.after(belief);
    }
    std::vector<ExpectedAmplitude> expected(steps.size());
    belief = corrected.back();
    for (std::size_t i = steps.size(); i-- > 0;) {
        if (i + 1 < steps.size())
            belief = fading.before(corrected[i], expectedThen[i + 1], belief);
        expected[i] = {belief.mean.value, std::max(0.0, belief.spread.value)};
    }
    return expected;
}

} // namespace

Amplitudes smoothAmplitude(const std::vector<HeardStep>& steps, double step_s, bool isUnsteady,
                           const RehearingParameters& parameters)
{
    Amplitudes amplitudes;
    const double power = meanPower(steps);
    if (!(power > 0.0)) {
        amplitudes.steps.resize(steps.size());
        return amplitudes;
    }
    const Scale scale = {power, power / parameters.largestRatio, step_s};
    Explanation best = explain(steps, scale, parameters);
    Aligned turned;
    if (isUnsteady || best.rate_per_s >= parameters.steadyFading_per_s) {
        turned = aligned(steps, isUnsteady ? parameters.part_steps : steps.size());
        const Explanation other = explain(turned.steps, scale, parameters);
        amplitudes.hasPhase =
            !isUnsteady && other.likelihood - parameters.ownPhase * turned.parts < best.likelihood;
        if (!amplitudes.hasPhase)
            best = other;
    }
    amplitudes.rate_per_s = best.rate_per_s;
    amplitudes.steps = smooth(amplitudes.hasPhase ? steps : turned.steps, best.rate_per_s, scale);
    return amplitudes;
}

} // namespace demodulator
