// SPDX-License-Identifier: MIT
#include "signal/morse/phasetracker.h"

#include "signal/numbers.h"
#include "support/random.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double NOISE = 1.0;

// Marks of a steady oscillator of `tone_Hz`, mixed with 700 Hz, one every 0.2 s, the last one 0.2 s
// ago; `scatter` in radians.
std::vector<HeardMark> marks(double tone_Hz, double scatter, int count)
{
    testsupport::Random random("phases");
    std::vector<HeardMark> result;
    for (int i = 0; i < count; ++i) {
        const double time_s = 0.2 * i;
        HeardMark mark;
        mark.length_steps = 20.0;
        mark.middle_s = 0.2 * (count - i);
        mark.cycles = 700.0 * time_s;
        const double phase =
            TWO_PI * (tone_Hz * time_s - mark.cycles) + 1.0 + scatter * random.gauss();
        mark.sum = std::polar(20.0, phase); // energy 20 over the noise
        result.push_back(mark);
    }
    return result;
}

PhaseEstimate track(const std::vector<HeardMark>& marks, const PhaseParameters& parameters = {})
{
    return trackPhase(marks, 700.0, NOISE, parameters);
}

} // namespace

class tst_PhaseTracker : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aSteadyOscillatorIsPredicted()
    {
        const PhaseEstimate estimate = track(marks(700.2, 0.1, 15));
        QVERIFY(estimate.concentration > 2.0);
        QVERIFY(std::fabs(estimate.frequency_Hz - 700.2) < 0.1);
        const double expected = 700.2 * 3.0 + 1.0 / TWO_PI;
        QVERIFY(std::fabs(std::remainder(estimate.cycles - expected, 1.0)) < 0.06);
    }
    void phasesAtRandomGiveNoClaim()
    {
        const PhaseEstimate estimate = track(marks(700.0, 100.0, 15));
        QCOMPARE(estimate.concentration, 0.0);
    }
    // A claim that is too sure of itself would outweigh the sound.
    void noClaimIsSurerThanAllowed()
    {
        auto steady = marks(700.0, 0.0, 60);
        for (HeardMark& mark : steady)
            mark.sum *= 10.0;
        PhaseParameters unlimited;
        unlimited.largestConcentration = 1000.0;
        const double possible = track(steady, unlimited).concentration;
        QVERIFY(possible > PhaseParameters().largestConcentration);
        QVERIFY(possible < 1000.0);
        QCOMPARE(track(steady).concentration, PhaseParameters().largestConcentration);
    }
    void predictionsHaveToComeTrue()
    {
        const auto unsteady = marks(700.0, 0.7, 40);
        PhaseParameters lenient;
        lenient.leastCoherence = 0.1;
        QVERIFY(track(unsteady, lenient).concentration > 0.0);
        PhaseParameters strict;
        strict.leastCoherence = 0.99;
        QCOMPARE(track(unsteady, strict).concentration, 0.0);
    }
    void aFewMarksGiveNoClaim()
    {
        QCOMPARE(track(marks(700.0, 0.0, 5)).concentration, 0.0);
        QCOMPARE(track({}).concentration, 0.0);
    }
    void theLongerAgoTheLessIsClaimed()
    {
        const auto recent = marks(700.1, 0.2, 15);
        auto old = recent;
        for (HeardMark& mark : old)
            mark.middle_s += 1.5;
        QVERIFY(track(old).concentration < track(recent).concentration);
    }
};

QTEST_APPLESS_MAIN(tst_PhaseTracker)
#include "tst_phasetracker.moc"
