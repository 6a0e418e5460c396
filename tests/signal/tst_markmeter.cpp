// SPDX-License-Identifier: MIT
#include "signal/morse/markmeter.h"

#include "signal/numbers.h"
#include "signal/timing.h"

#include <QtTest>
#include <cmath>
#include <complex>
#include <functional>

using namespace demodulator;

namespace {

constexpr double EXPECTED_Hz = 700.0;

// Steps of a tone that is so far off the expected one, step by step, and a meter of them.
struct Steps
{
    explicit Steps(double noise = 1e-4)
    {
        Level level;
        level.signal = 1.0;
        level.noise = noise;
        steps.setLevel(level);
    }

    void push(int count, const std::function<double(int)>& offset_Hz)
    {
        for (int n = 0; n < count; ++n) {
            cycles += offset_Hz(n) * STEP_s;
            steps.push(tone.turn({std::polar(1.0, TWO_PI * cycles), 0.0, EXPECTED_Hz}));
        }
    }
    void push(int count, double offset_Hz)
    {
        push(count, [offset_Hz](int) { return offset_Hz; });
    }
    void pause(int count)
    {
        for (int n = 0; n < count; ++n)
            steps.push(tone.turn({0.0, 0.0, EXPECTED_Hz}));
    }

    double cycles = 0.0;
    MarkLikelihood steps;
    ExpectedTone tone{EXPECTED_Hz, STEP_s, MarkLikelihood::KEPT_STEPS};
    MarkMeter meter{steps, tone, STEP_s, ToneParameters(), JudgeParameters()};
};

bool isNear(double value, double expected, double within = 1e-3)
{
    return std::fabs(value - expected) < within;
}

} // namespace

class tst_MarkMeter : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lengthAndAgeCountInSteps()
    {
        Steps steps;
        steps.pause(10);
        steps.push(15, 0.0);
        steps.pause(20);
        const HeardMark mark = steps.meter.measured(10, 25);
        QCOMPARE(mark.length_steps, 15.0);
        QVERIFY(isNear(mark.end_s, 20 * STEP_s));
        QVERIFY(isNear(mark.middle_s, 28 * STEP_s));
        QVERIFY(isNear(mark.lag_s, 5 * STEP_s));
        QVERIFY(isNear(std::abs(mark.sum), 15.0));
        QVERIFY(isNear(std::abs(mark.turn), 10.0));
    }
    void theToneIsMeasuredAgainstTheOneExpected()
    {
        for (const double offset_Hz : {-12.0, 0.0, 7.5, 30.0}) {
            Steps steps;
            steps.pause(3);
            steps.push(16, offset_Hz);
            const HeardMark mark = steps.meter.measured(3, 19);
            QVERIFY(isNear(mark.offset_Hz, offset_Hz));
            QVERIFY(isNear(mark.tone_Hz, EXPECTED_Hz));
            QVERIFY(isNear(mark.bend_Hz, 0.0));
        }
    }
    // The middle of an even number of steps lies between two of them.
    void thePhaseExpectedIsThatOfTheMiddle()
    {
        for (const int length : {16, 17}) {
            Steps steps;
            steps.push(length, 0.0);
            const double middle = 0.5 * (length - 1);
            QVERIFY(isNear(steps.meter.measured(0, length).cycles, middle * EXPECTED_Hz * STEP_s));
        }
    }
    void aChirpBendsTheTone()
    {
        Steps steps;
        steps.push(20, [](int n) { return n < 10 ? 10.0 : -4.0; });
        const HeardMark mark = steps.meter.measured(0, 20);
        QVERIFY(isNear(mark.bend_Hz, -14.0));
        QVERIFY(mark.bendError_Hz > 0.0 && mark.bendError_Hz < 1.0);
        Steps noisy(1e-2);
        noisy.push(20, 0.0);
        QVERIFY(isNear(noisy.meter.measured(0, 20).bendError_Hz, 10.0 * mark.bendError_Hz, 0.2));
    }
    void ofAShortMarkTheHalvesSayNothing()
    {
        Steps steps;
        steps.push(20, [](int n) { return 2.0 * n; });
        const auto shortest = MarkMeter::SHORTEST_STEPS;
        QCOMPARE(steps.meter.measured(0, shortest - 1).bendError_Hz, 0.0);
        QVERIFY(steps.meter.measured(0, shortest).bendError_Hz > 0.0);
    }
    // In a third of a dash of 60 steps, 30 Hz turn the phase 2.4 times.
    void wholeTurnsAreCountedWhereNoiseLeavesNoDoubt()
    {
        Steps steps;
        steps.push(60, 30.0);
        const HeardMark mark = steps.meter.measured(0, 60);
        QCOMPARE(mark.wholeTurns, 2.0);
        QVERIFY(isNear(std::arg(mark.turn) / TWO_PI, 0.4));
        Steps noisy(3.0);
        noisy.push(60, 30.0);
        QCOMPARE(noisy.meter.measured(0, 60).wholeTurns, 0.0);
    }
    void aToneFarOffIsForeignUnlessAllMarksSpread()
    {
        const double foreign_Hz = ToneParameters().foreign_Hz;
        for (const double side : {-1.0, 1.0}) {
            Steps steps;
            steps.push(30, side * (foreign_Hz - 1.0));
            QVERIFY(!steps.meter.isForeign(0, 30, {}));
            steps.push(30, side * (foreign_Hz + 1.0));
            QVERIFY(steps.meter.isForeign(30, 60, {}));
            QVERIFY(!steps.meter.isForeign(30, 60, {2.0, 0.0}));
        }
    }
    void aToneStraysUnlessNoiseExplainsIt()
    {
        const double stray_Hz = JudgeParameters().strayTone_Hz;
        Steps steps(1e-6);
        steps.push(30, stray_Hz + 1.0);
        QVERIFY(steps.meter.strays(0, 30, {}));
        QVERIFY(!steps.meter.strays(0, 30, {2.0, 0.0}));
        steps.push(30, stray_Hz - 1.0);
        QVERIFY(!steps.meter.strays(30, 60, {}));
        // The longer, the better is its tone known.
        Steps noisy(1.0);
        noisy.push(30, stray_Hz + 20.0);
        QVERIFY(!noisy.meter.strays(0, 30, {}));
        noisy.push(500, stray_Hz + 20.0);
        QVERIFY(noisy.meter.strays(0, 530, {}));
    }
    void whatIsNoLongerKeptIsNotForeign()
    {
        Steps steps;
        steps.push(30, 200.0 / 3.0);
        QVERIFY(steps.meter.isForeign(0, 30, {}));
        steps.pause(static_cast<int>(MarkLikelihood::KEPT_STEPS) - 29);
        QVERIFY(!steps.meter.isForeign(0, 30, {}));
    }
};

QTEST_APPLESS_MAIN(tst_MarkMeter)
#include "tst_markmeter.moc"
