// SPDX-License-Identifier: MIT
#include "signal/morse/tonespread.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double ERROR_Hz = 1.0;

// Ended half a second ago.
HeardMark mark(double offset_Hz, double bend_Hz)
{
    HeardMark result;
    result.end_s = 0.5;
    result.offset_Hz = offset_Hz;
    result.bend_Hz = bend_Hz;
    result.bendError_Hz = ERROR_Hz;
    return result;
}

ToneSpread spreadOf(const std::vector<HeardMark>& marks)
{
    return toneSpread(marks, {7.0, 9.0}, {});
}

} // namespace

class tst_ToneSpread : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void whatNoiseDoesIsNoSpread()
    {
        const ToneSpread spread = spreadOf({mark(0.0, -1.0), mark(0.0, 1.0), mark(0.0, 0.3)});
        QCOMPARE(spread.within_Hz, 0.0);
        QCOMPARE(spread.off_Hz, 0.0);
    }
    void aChangeWithinMarksIsSeen()
    {
        const ToneSpread spread = spreadOf({mark(8.0, 10.0), mark(-8.0, -10.0), mark(8.0, 10.0)});
        QCOMPARE(spread.within_Hz, std::sqrt(99.0));
        QCOMPARE(spread.off_Hz, std::sqrt(64.0 + 0.25 * 99.0));
    }
    void anAnswerAtAnotherToneIsSteady()
    {
        const ToneSpread spread = spreadOf({mark(20.0, 0.5), mark(20.0, -0.5), mark(20.0, 0.0)});
        QCOMPARE(spread.within_Hz, 0.0);
        QCOMPARE(spread.off_Hz, 0.0);
    }
    void oneMarkThatWasPutTogetherWronglyDoesNotCount()
    {
        QCOMPARE(spreadOf({mark(0.0, 0.5), mark(20.0, 30.0), mark(0.0, 0.5)}).within_Hz, 0.0);
    }
    void ofFewMarksTheFormerSpreadStays()
    {
        HeardMark old = mark(20.0, 20.0);
        old.end_s = ToneParameters().span_s + 0.1;
        HeardMark brief = mark(20.0, 0.0);
        brief.bendError_Hz = 0.0;
        const ToneSpread spread = spreadOf({mark(20.0, 20.0), mark(20.0, 20.0), old, brief});
        QCOMPARE(spread.within_Hz, 7.0);
        QCOMPARE(spread.off_Hz, 9.0);
    }
};

QTEST_APPLESS_MAIN(tst_ToneSpread)
#include "tst_tonespread.moc"
