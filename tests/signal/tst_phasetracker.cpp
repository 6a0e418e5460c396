// SPDX-License-Identifier: MIT
#include "signal/morse/phasetracker.h"

#include "support/random.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double TWO_PI = 6.283185307179586;

// Marks of a steady oscillator of `tone_Hz`, mixed with 700 Hz; `scatter` in radians.
std::vector<PhaseMark> marks(double tone_Hz, double scatter, int count)
{
    testsupport::Random random("phases");
    std::vector<PhaseMark> result;
    for (int i = 0; i < count; ++i) {
        PhaseMark mark;
        mark.time_s = 0.2 * i;
        mark.cycles = 700.0 * mark.time_s;
        const double phase =
            TWO_PI * (tone_Hz * mark.time_s - mark.cycles) + 1.0 + scatter * random.gauss();
        mark.sum = std::polar(1.0, phase);
        mark.energy = 20.0;
        result.push_back(mark);
    }
    return result;
}

} // namespace

class TestPhaseTracker : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aSteadyOscillatorIsPredicted()
    {
        const PhaseEstimate estimate = trackPhase(marks(700.2, 0.1, 15), 700.0, 3.0);
        QVERIFY(estimate.concentration > 2.0);
        QVERIFY(std::fabs(estimate.frequency_Hz - 700.2) < 0.1);
        const double expected = 700.2 * 3.0 + 1.0 / TWO_PI;
        QVERIFY(std::fabs(std::remainder(estimate.cycles - expected, 1.0)) < 0.06);
    }
    void phasesAtRandomGiveNoClaim()
    {
        const PhaseEstimate estimate = trackPhase(marks(700.0, 100.0, 15), 700.0, 3.0);
        QCOMPARE(estimate.concentration, 0.0);
    }
    void aFewMarksGiveNoClaim()
    {
        QCOMPARE(trackPhase(marks(700.0, 0.0, 5), 700.0, 1.0).concentration, 0.0);
        QCOMPARE(trackPhase({}, 700.0, 1.0).concentration, 0.0);
    }
    void theLongerAgoTheLessIsClaimed()
    {
        const auto heard = marks(700.1, 0.2, 15);
        QVERIFY(trackPhase(heard, 700.0, 4.5).concentration <
                trackPhase(heard, 700.0, 2.9).concentration);
    }
};

QTEST_APPLESS_MAIN(TestPhaseTracker)
#include "tst_phasetracker.moc"
