// SPDX-License-Identifier: MIT
#include "signal/morse/leveltracker.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double NOISE = 0.01;
constexpr double REVIEW_s = 0.032;

// A mark of 20 steps with this power of a step, noise left out, that ended so long ago.
HeardMark mark(double power, double end_s)
{
    HeardMark result;
    result.length_steps = 20.0;
    result.end_s = end_s;
    result.sum = 20.0 * std::sqrt(power + NOISE / 20.0);
    return result;
}

double track(const std::vector<HeardMark>& marks, double signal, double noise = NOISE)
{
    return trackLevel(marks, signal, noise, REVIEW_s, {});
}

bool near(double value, double expected)
{
    return std::fabs(value - expected) < 1e-3 * expected;
}

} // namespace

class tst_LevelTracker : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theLevelIsThatOfTheMarksWithoutTheNoiseInThem()
    {
        QVERIFY(near(track({mark(1.0, 0.3), mark(1.0, 0.1)}, 0.5), 1.0));
    }
    void theLastMarkCountsMost()
    {
        // Ages differ by one memory, so that weights are 1 to e.
        const double expected = (1.0 + 4.0 * std::exp(1.0)) / (1.0 + std::exp(1.0));
        QVERIFY(near(track({mark(1.0, 0.3), mark(4.0, 0.1)}, 1.0), expected));
    }
    void weakSignalsAreAveragedForLonger()
    {
        // At a tenth of the ratio below which that is done, ten times longer.
        const double signal = 7.5;
        const double noise = 10.0;
        HeardMark old = mark(0.0, 2.1);
        HeardMark recent = mark(0.0, 0.1);
        old.sum = 20.0 * std::sqrt(5.0 + noise / 20.0);
        recent.sum = 20.0 * std::sqrt(10.0 + noise / 20.0);
        const double expected = (5.0 + 10.0 * std::exp(1.0)) / (1.0 + std::exp(1.0));
        QVERIFY(near(track({old, recent}, signal, noise), expected));
    }
    void aMarkPutTogetherWronglyDoesNotPullTheLevelDown()
    {
        // 20 dB a second.
        QVERIFY(near(track({mark(0.2, 0.0)}, 1.0), std::pow(10.0, -0.1 * 20.0 * REVIEW_s)));
    }
    void oldMarksAndNoMarksSayNothing()
    {
        QCOMPARE(track({}, 3.0), 3.0);
        QCOMPARE(track({mark(1.0, 3.1)}, 3.0), 3.0);
    }
    void nothingWeakerIsLookedFor()
    {
        QVERIFY(near(track({mark(0.0, 0.1)}, 0.3501 * NOISE), 0.35 * NOISE));
    }
};

QTEST_APPLESS_MAIN(tst_LevelTracker)
#include "tst_leveltracker.moc"
