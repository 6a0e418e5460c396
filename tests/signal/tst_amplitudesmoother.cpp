// SPDX-License-Identifier: MIT
#include "signal/morse/amplitudesmoother.h"

#include "signal/numbers.h"
#include "signal/timing.h"
#include "support/random.h"

#include <QtTest>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

using namespace demodulator;

namespace {

constexpr double NOISE = 1e-2;
constexpr std::size_t STEPS = 2500; // ten seconds
constexpr std::size_t UNIT_steps = 15;

// Marks of one and three units in turn, a unit between.
bool isMark(std::size_t n)
{
    const std::size_t within = n % (6 * UNIT_steps);
    return within < UNIT_steps || (within >= 2 * UNIT_steps && within < 5 * UNIT_steps);
}

// Steps since the mark began.
std::size_t stepOfMark(std::size_t n)
{
    const std::size_t within = n % (6 * UNIT_steps);
    return within < 2 * UNIT_steps ? within : within - 2 * UNIT_steps;
}

using Amplitude = std::function<std::complex<double>(std::size_t)>;

std::vector<HeardStep> heard(const Amplitude& amplitude, double noise = NOISE)
{
    testsupport::Random random("amplitudes");
    std::vector<HeardStep> steps;
    for (std::size_t n = 0; n < STEPS; ++n) {
        HeardStep step;
        step.value = {std::sqrt(0.5 * noise) * random.gauss(),
                      std::sqrt(0.5 * noise) * random.gauss()};
        step.noise = noise;
        step.isMark = isMark(n);
        if (step.isMark)
            step.value += amplitude(n);
        steps.push_back(step);
    }
    return steps;
}

Amplitudes smoothed(const std::vector<HeardStep>& steps, bool isUnsteady = false)
{
    return smoothAmplitude(steps, STEP_s, isUnsteady, RehearingParameters());
}

// Of all steps but those at the ends, marks or not.
double meanSquareError(const Amplitudes& amplitudes, const Amplitude& amplitude)
{
    double sum = 0.0;
    for (std::size_t n = 100; n < STEPS - 100; ++n)
        sum += std::norm(amplitudes.steps[n].mean - amplitude(n));
    return sum / static_cast<double>(STEPS - 200);
}

double meanVariance(const Amplitudes& amplitudes)
{
    double sum = 0.0;
    for (std::size_t n = 100; n < STEPS - 100; ++n)
        sum += amplitudes.steps[n].variance;
    return sum / static_cast<double>(STEPS - 200);
}

std::complex<double> steady(std::size_t)
{
    return std::polar(0.5, 1.0);
}

// Through a null in the middle, its phase turned over behind it.
std::complex<double> fading(std::size_t n)
{
    return std::polar(0.7, 0.4) * std::cos(PI * static_cast<double>(n) / STEPS);
}

// Of each step, known from those of marks alone: what normal random numbers are when some of them
// are known, without a filter. They have this power, and are (1 + r t) exp(-r t) alike.
std::vector<ExpectedAmplitude> conditional(const std::vector<HeardStep>& steps, double power,
                                           double rate_per_s)
{
    const auto alike = [&](std::size_t a, std::size_t b) {
        const double turn =
            rate_per_s * STEP_s * std::fabs(static_cast<double>(a) - static_cast<double>(b));
        return power * (1.0 + turn) * std::exp(-turn);
    };
    std::vector<std::size_t> marks;
    for (std::size_t n = 0; n < steps.size(); ++n) {
        if (steps[n].isMark)
            marks.push_back(n);
    }
    // Gauss: a row is what a mark has in common with each mark, and then with each step.
    std::vector<std::vector<double>> rows;
    for (const std::size_t a : marks) {
        rows.emplace_back();
        for (const std::size_t b : marks)
            rows.back().push_back(alike(a, b) + (a == b ? steps[a].noise : 0.0));
        for (std::size_t n = 0; n < steps.size(); ++n)
            rows.back().push_back(alike(a, n));
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = 0; j < rows.size(); ++j) {
            const double share = j == i ? 0.0 : rows[j][i] / rows[i][i];
            for (std::size_t k = i; k < rows[i].size(); ++k)
                rows[j][k] -= share * rows[i][k];
        }
    }
    std::vector<ExpectedAmplitude> expected(steps.size(), {{}, power});
    for (std::size_t n = 0; n < steps.size(); ++n) {
        for (std::size_t i = 0; i < marks.size(); ++i) {
            const double weight = rows[i][marks.size() + n] / rows[i][i];
            expected[n].mean += weight * steps[marks[i]].value;
            expected[n].variance -= weight * alike(marks[i], n);
        }
    }
    return expected;
}

} // namespace

class tst_AmplitudeSmoother : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aSteadyAmplitudeIsKnownInGapsAsInMarks()
    {
        const Amplitudes amplitudes = smoothed(heard(steady));
        QCOMPARE(amplitudes.steps.size(), STEPS);
        QVERIFY(amplitudes.hasPhase);
        QVERIFY(amplitudes.rate_per_s < 1.0);
        // Of some hundred steps heard in its time the mean is as good as that.
        const double error = meanSquareError(amplitudes, steady);
        QVERIFY2(error < 0.03 * NOISE, qPrintable(QString::number(error / NOISE)));
    }
    void aSignalAsWeakAsTheNoiseIsAveragedForLonger()
    {
        const double noise = 0.25;
        const double error = meanSquareError(smoothed(heard(steady, noise)), steady);
        QVERIFY2(error < 0.05 * noise, qPrintable(QString::number(error / noise)));
    }
    void allIsKnownThatTheMarksSay_data()
    {
        QTest::addColumn<double>("rate_per_s");
        QTest::newRow("slow") << 2.4;
        QTest::newRow("quick") << 19.2;
    }
    void allIsKnownThatTheMarksSay()
    {
        QFETCH(double, rate_per_s);
        std::vector<HeardStep> steps = heard([](std::size_t n) {
            return std::polar(1.0 + 0.3 * std::sin(0.05 * static_cast<double>(n)),
                              0.01 * static_cast<double>(n));
        });
        steps.resize(110);
        double power = 0.0;
        double marks = 0.0;
        for (HeardStep& step : steps) {
            step.noise = 0.2;
            power += step.isMark ? std::norm(step.value) - step.noise : 0.0;
            marks += step.isMark ? 1.0 : 0.0;
        }
        RehearingParameters parameters;
        parameters.slowestFading_per_s = rate_per_s;
        parameters.fastestFading_per_s = 1.5 * rate_per_s;
        parameters.steadyFading_per_s = 100.0;
        const Amplitudes found = smoothAmplitude(steps, STEP_s, false, parameters);
        QCOMPARE(found.rate_per_s, rate_per_s);
        const std::vector<ExpectedAmplitude> expected =
            conditional(steps, power / marks, rate_per_s);
        for (std::size_t n = 0; n < steps.size(); ++n) {
            QVERIFY(std::abs(found.steps[n].mean - expected[n].mean) < 1e-6);
            QVERIFY(std::fabs(found.steps[n].variance - expected[n].variance) < 1e-6);
        }
    }
    // Otherwise chance would say that there is no signal at all.
    void marksThatAreWeakerThanTheirNoiseHaveSomePower()
    {
        std::vector<HeardStep> steps(STEPS, {0.0, NOISE, false});
        for (std::size_t n = 0; n < UNIT_steps; ++n)
            steps[n].isMark = true;
        const Amplitudes found = smoothed(steps);
        const double power = found.steps.back().variance; // far from any mark
        QVERIFY2(power > 0.25 * NOISE && power < 0.35 * NOISE, qPrintable(QString::number(power)));
    }
    void aNullIsKnownFromBothSides()
    {
        const Amplitudes amplitudes = smoothed(heard(fading));
        QVERIFY(amplitudes.hasPhase);
        const double error = meanSquareError(amplitudes, fading);
        QVERIFY2(error < 0.2 * NOISE, qPrintable(QString::number(error / NOISE)));
        QVERIFY(std::abs(amplitudes.steps[STEPS / 2].mean) < 0.05);
        QVERIFY(std::real(amplitudes.steps[100].mean *
                          std::conj(amplitudes.steps[STEPS - 100].mean)) < -0.3);
    }
    // It decides how far a mark may be from what is expected.
    void theVarianceIsThatOfTheError()
    {
        for (const Amplitude& amplitude : {Amplitude(steady), Amplitude(fading)}) {
            const Amplitudes amplitudes = smoothed(heard(amplitude));
            const double ratio = meanSquareError(amplitudes, amplitude) / meanVariance(amplitudes);
            QVERIFY2(ratio > 0.05 && ratio < 2.0, qPrintable(QString::number(ratio)));
        }
    }
    void farFromAnyMarkLittleIsKnown()
    {
        std::vector<HeardStep> steps = heard(fading);
        for (std::size_t n = 1000; n < STEPS; ++n)
            steps[n].isMark = false;
        const Amplitudes amplitudes = smoothed(steps);
        QVERIFY(amplitudes.steps[2400].variance > 20.0 * amplitudes.steps[500].variance);
    }
    void aFastFadeIsFollowedFast()
    {
        const Amplitude flutter = [](std::size_t n) {
            return std::polar(0.5, 3.0 * std::sin(TWO_PI * 3.0 * STEP_s * static_cast<double>(n)));
        };
        const Amplitudes amplitudes = smoothed(heard(flutter));
        QVERIFY(amplitudes.rate_per_s > 8.0);
        const double error = meanSquareError(amplitudes, flutter);
        QVERIFY2(error < 0.5 * std::norm(0.5), qPrintable(QString::number(error)));
    }
    void whereEachMarkHasAPhaseOfItsOwnOnlyMagnitudesAreKnown()
    {
        const Amplitude restarted = [](std::size_t n) {
            const std::size_t pair = n / (6 * UNIT_steps);
            const auto mark =
                static_cast<double>(2 * pair + (stepOfMark(n) == n % (6 * UNIT_steps)));
            return std::polar(0.5, 2.4 * mark * mark);
        };
        const Amplitudes amplitudes = smoothed(heard(restarted));
        QVERIFY(!amplitudes.hasPhase);
        QVERIFY(amplitudes.rate_per_s < 3.0);
        for (std::size_t n = 100; n < STEPS - 100; ++n) {
            const double magnitude = std::abs(amplitudes.steps[n].mean);
            QVERIFY2(magnitude > 0.4 && magnitude < 0.6, qPrintable(QString::number(magnitude)));
        }
    }
    void ofAToneThatChangesWithinItsMarksOnlyMagnitudesAreKnown()
    {
        const Amplitude chirp = [](std::size_t n) {
            const auto within = static_cast<double>(stepOfMark(n));
            return std::polar(0.5, 0.003 * within * within);
        };
        const Amplitudes amplitudes = smoothed(heard(chirp), true);
        QVERIFY(!amplitudes.hasPhase);
        const double magnitude = std::abs(amplitudes.steps[STEPS / 2].mean);
        QVERIFY2(magnitude > 0.4 && magnitude < 0.6, qPrintable(QString::number(magnitude)));
    }
    void whatIsNoMarkSaysNothing()
    {
        std::vector<HeardStep> steps = heard(steady);
        for (HeardStep& step : steps) {
            if (!step.isMark)
                step.value = 100.0;
        }
        QVERIFY(meanSquareError(smoothed(steps), steady) < 0.03 * NOISE);
    }
    void withoutAnyMarkNothingIsExpected()
    {
        std::vector<HeardStep> steps = heard(steady);
        for (HeardStep& step : steps)
            step.isMark = false;
        const Amplitudes amplitudes = smoothed(steps);
        QCOMPARE(amplitudes.steps.size(), STEPS);
        for (const ExpectedAmplitude& expected : amplitudes.steps)
            QVERIFY(expected.mean == 0.0 && expected.variance == 0.0);
        QVERIFY(smoothed({}).steps.empty());
    }
};

QTEST_APPLESS_MAIN(tst_AmplitudeSmoother)
#include "tst_amplitudesmoother.moc"
