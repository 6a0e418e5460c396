// SPDX-License-Identifier: MIT
#include "signal/morse/tonetracker.h"

#include "signal/numbers.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double LAG_s = 0.02;

// A strong mark of `actual_Hz` where `expected_Hz` was expected.
HeardMark mark(double actual_Hz, double expected_Hz, double middle_s)
{
    HeardMark result;
    result.middle_s = middle_s;
    result.end_s = middle_s - 0.02;
    result.lag_s = LAG_s;
    result.tone_Hz = expected_Hz;
    result.turn = std::polar(10.0, TWO_PI * (actual_Hz - expected_Hz) * LAG_s);
    return result;
}

double track(const std::vector<HeardMark>& marks, double tone_Hz)
{
    return trackTone(marks, tone_Hz, 1.0, 0.001, {});
}

} // namespace

class tst_ToneTracker : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void halfOfADifferenceIsMadeGoodAtOnce()
    {
        const double tone_Hz = track({mark(701.0, 700.0, 0.3), mark(701.0, 700.0, 0.1)}, 700.0);
        QVERIFY2(std::fabs(tone_Hz - 700.5) < 0.01, QByteArray::number(tone_Hz).constData());
    }
    void whatWasExpectedThenIsTakenIntoAccount()
    {
        const double tone_Hz = track({mark(701.0, 700.0, 0.5), mark(701.0, 704.0, 0.1)}, 701.0);
        QVERIFY(std::fabs(tone_Hz - 701.0) < 0.01);
    }
    void aDriftIsFollowedAhead()
    {
        // 1 Hz a second, seen until 0.2 s ago: now it is above what any mark had.
        std::vector<HeardMark> marks;
        for (const double age_s : {1.4, 1.2, 1.0, 0.8, 0.6, 0.4, 0.2})
            marks.push_back(mark(700.0 - age_s, 700.0, age_s));
        const double tone_Hz = track(marks, 700.0);
        QVERIFY2(tone_Hz > 699.9 && tone_Hz < 700.01, QByteArray::number(tone_Hz).constData());
    }
    // Within the lag the angle shows the difference but for whole turns: 50 Hz each.
    void wholeTurnsCount()
    {
        HeardMark far = mark(700.5, 700.0, 0.1);
        far.tone_Hz = 650.0;
        far.wholeTurns = 1.0;
        QVERIFY(std::fabs(track({far}, 700.0) - 700.25) < 0.01);
    }
    void aLargeDifferenceIsMadeGoodBitByBit()
    {
        QCOMPARE(track({mark(705.0, 700.0, 0.1)}, 700.0), 701.0);
        QCOMPARE(track({mark(695.0, 700.0, 0.1)}, 700.0), 699.0);
    }
    void wellKnownMarksCountMore()
    {
        HeardMark weak = mark(698.0, 700.0, 0.1);
        weak.turn *= 1e-4;
        const double tone_Hz = track({weak, mark(701.0, 700.0, 0.1)}, 700.0);
        QVERIFY(tone_Hz > 700.4);
    }
    void someoneElsesOldAndEmptyMarksSayNothing()
    {
        HeardMark foreign = mark(740.0, 700.0, 0.1);
        foreign.isForeign = true;
        HeardMark empty = mark(701.0, 700.0, 0.1);
        empty.turn = 0.0;
        QCOMPARE(track({foreign, empty, mark(701.0, 700.0, 3.1)}, 700.0), 700.0);
    }
};

QTEST_APPLESS_MAIN(tst_ToneTracker)
#include "tst_tonetracker.moc"
