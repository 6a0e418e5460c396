// SPDX-License-Identifier: MIT
#include "signal/morse/morsejudge.h"

#include "support/keyer.h"
#include "support/random.h"

#include <QtTest>
#include <limits>

using namespace demodulator;
using Verdict = MorseJudge::Verdict;

Q_DECLARE_METATYPE(MorseJudge::Verdict)

namespace {

constexpr double UNIT_steps = 15.0;

MorseJudge judged(const testsupport::Hand& hand, std::size_t marks, double share = 1.0)
{
    const double unit_s = 1.2 / hand.speed_wpm;
    MorseJudge judge({});
    double gap_units = 0.0;
    for (const testsupport::Piece& piece : testsupport::keying(
             "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 0123456789", hand, "hand")) {
        const double units = share * piece.duration_s / unit_s;
        if (!piece.mark)
            gap_units = units;
        else if (marks-- > 0)
            judge.mark({units, UNIT_steps, gap_units, false});
        else
            break;
    }
    return judge;
}

// Marks and spaces of one to some units, each bit drawn.
MorseJudge teleprinter(double unit, int marks)
{
    testsupport::Random random("bits");
    MorseJudge judge({});
    const auto run = [&] {
        double length = 1.0;
        while (random.below(2) != 0U)
            length += 1.0;
        return unit * length;
    };
    for (int i = 0; i < marks; ++i) {
        const double length = run();
        judge.mark({length, UNIT_steps, run(), false});
    }
    return judge;
}

// One that forgets nothing, so that its counts are whole.
JudgeParameters counting()
{
    JudgeParameters parameters;
    parameters.memory_marks = std::numeric_limits<double>::infinity();
    return parameters;
}

} // namespace

class tst_MorseJudge : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void handsAreMorse_data()
    {
        QTest::addColumn<double>("jitter");
        QTest::addColumn<double>("dash");
        QTest::addColumn<double>("dashJitter");
        QTest::addColumn<double>("gapSpread");
        QTest::newRow("a machine") << 0.0 << 3.0 << 0.0 << 0.0;
        QTest::newRow("jitter of 20 %") << 0.2 << 3.0 << 0.0 << 0.0;
        QTest::newRow("a beginner") << 0.15 << 3.0 << 0.4 << 0.35;
        QTest::newRow("a bug key") << 0.0 << 4.0 << 0.8 << 0.15;
    }
    void handsAreMorse()
    {
        QFETCH(double, jitter);
        QFETCH(double, dash);
        QFETCH(double, dashJitter);
        QFETCH(double, gapSpread);
        testsupport::Hand hand;
        hand.jitter_units = jitter;
        hand.dash_units = dash;
        hand.dashJitter_units = dashJitter;
        hand.gapSpread = gapSpread;
        for (const std::size_t marks : {12U, 40U, 120U})
            QVERIFY(judged(hand, marks).verdict() == Verdict::Morse);
    }
    void aTeleprinterIsNot()
    {
        QVERIFY(teleprinter(1.0, 150).verdict() == Verdict::Other);
        QVERIFY(teleprinter(0.75, 150).verdict() == Verdict::Other); // taken for slower keying
    }
    void ofTwoTonesInTurnTheSpaceHasTheLongestMarks()
    {
        using Side = MorseJudge::Side;
        MorseJudge mark({});
        MorseJudge space({});
        double on_units = 0.0;
        double off_units = 0.0;
        for (const testsupport::Piece& piece : testsupport::keying("PARIS PARIS", {}, "sides")) {
            const double units = piece.duration_s * testsupport::Hand().speed_wpm / 1.2;
            if (piece.mark) {
                space.mark({off_units, UNIT_steps, on_units, false});
                on_units = units;
                mark.mark({on_units, UNIT_steps, off_units, false});
            } else {
                off_units = units;
            }
        }
        QCOMPARE(mark.side(), Side::Mark);
        QCOMPARE(space.side(), Side::Space);
        QCOMPARE(MorseJudge({}).side(), Side::Unknown);
    }
    void dotsAloneAreNotSureAndDashesAloneAreSaid()
    {
        for (const double length : {1.0, 3.0}) {
            MorseJudge judge({});
            judge.mark({length, UNIT_steps, 0.0, false});
            QVERIFY(judge.verdict() == Verdict::Unsure);
            for (int i = 1; i < 9; ++i)
                judge.mark({length, UNIT_steps, 1.0, false});
            QVERIFY(judge.verdict() == (length < 2.0 ? Verdict::Unsure : Verdict::Dashes));
            judge.mark({4.0 - length, UNIT_steps, 1.0, false});
            QVERIFY(judge.verdict() == Verdict::Morse);
        }
    }
    void marksWithoutCompanyAreNot()
    {
        MorseJudge judge({});
        for (int i = 0; i < 40; ++i)
            judge.mark({i % 3 == 0 ? 3.0 : 1.0, UNIT_steps, i % 10 == 0 ? 1.0 : 9.0, false});
        QVERIFY(judge.verdict() == Verdict::Other);
    }
    void spacesTakenForMarksAreNot()
    {
        // Gaps of seven units are no dashes.
        MorseJudge judge({});
        for (int i = 0; i < 40; ++i)
            judge.mark({i % 8 == 0 ? 7.0 : (i % 3 == 0 ? 3.0 : 1.0), UNIT_steps, 1.0, false});
        QVERIFY(judge.verdict() == Verdict::Other);
    }
    void marksAtOtherTonesAreNot()
    {
        MorseJudge judge({});
        for (int i = 0; i < 40; ++i)
            judge.mark({i % 3 == 0 ? 3.0 : 1.0, UNIT_steps, 1.0, i % 2 == 0});
        QVERIFY(judge.verdict() == Verdict::Other);
    }
    void aMarkAtAnotherToneIsNeitherDotNorDash()
    {
        MorseJudge judge({});
        for (int i = 0; i < 40; ++i)
            judge.mark({1.0, UNIT_steps, 1.0, false});
        judge.mark({3.0, UNIT_steps, 1.0, true});
        QVERIFY(judge.verdict() == Verdict::Unsure);
        judge.mark({3.0, UNIT_steps, 1.0, false});
        QVERIFY(judge.verdict() == Verdict::Morse);
    }
    void fewOddMarksAreNotSure()
    {
        // Dots, dashes and a gap within a character, but as many lengths in between.
        MorseJudge judge({});
        for (const double length : {1.0, 2.0, 3.0, 2.0, 1.0, 2.0})
            judge.mark({length, UNIT_steps, 1.0, false});
        QVERIFY(judge.verdict() == Verdict::Unsure);
    }
    // A share is too large for Morse when it is so by more than half a mark, and certainly too
    // large when it is so by 1.5 deviations more: of 40 marks, sqrt(40 q (1 - q)) each.
    void soManyMarksAreOdd_data()
    {
        QTest::addColumn<int>("between");
        QTest::addColumn<int>("tooLong");
        QTest::addColumn<int>("foreign");
        QTest::addColumn<int>("alone");
        QTest::addColumn<Verdict>("expected");
        QTest::newRow("none") << 0 << 0 << 0 << 0 << Verdict::Morse;
        QTest::newRow("between: 4.5") << 4 << 0 << 0 << 0 << Verdict::Morse;
        QTest::newRow("between: more") << 5 << 0 << 0 << 0 << Verdict::Unsure;
        QTest::newRow("between: 7.3") << 7 << 0 << 0 << 0 << Verdict::Unsure;
        QTest::newRow("between: certain") << 8 << 0 << 0 << 0 << Verdict::Other;
        QTest::newRow("long: 1.7") << 0 << 1 << 0 << 0 << Verdict::Morse;
        QTest::newRow("long: more") << 0 << 2 << 0 << 0 << Verdict::Unsure;
        QTest::newRow("long: 3.3") << 0 << 3 << 0 << 0 << Verdict::Unsure;
        QTest::newRow("long: certain") << 0 << 4 << 0 << 0 << Verdict::Other;
        QTest::newRow("foreign: 10.5") << 0 << 0 << 10 << 0 << Verdict::Morse;
        QTest::newRow("foreign: more") << 0 << 0 << 11 << 0 << Verdict::Unsure;
        QTest::newRow("foreign: 14.6") << 0 << 0 << 14 << 0 << Verdict::Unsure;
        QTest::newRow("foreign: certain") << 0 << 0 << 15 << 0 << Verdict::Other;
        QTest::newRow("alone: 28.5") << 0 << 0 << 0 << 28 << Verdict::Morse;
        QTest::newRow("alone: more") << 0 << 0 << 0 << 29 << Verdict::Unsure;
        QTest::newRow("alone: 32.8") << 0 << 0 << 0 << 32 << Verdict::Unsure;
        QTest::newRow("alone: certain") << 0 << 0 << 0 << 33 << Verdict::Other;
    }
    void soManyMarksAreOdd()
    {
        QFETCH(int, between);
        QFETCH(int, tooLong);
        QFETCH(int, foreign);
        QFETCH(int, alone);
        QFETCH(Verdict, expected);
        MorseJudge judge(counting());
        for (int i = 0; i < 40; ++i) {
            const int place = 39 - i; // odd ones last
            const double length = place < between   ? 2.0
                                  : place < tooLong ? 6.0
                                                    : 1.0 + 2.0 * (i % 2);
            // What is foreign has no gap within a character.
            judge.mark({length, UNIT_steps, place < alone ? 9.0 : 1.0, place < foreign});
        }
        QCOMPARE(judge.marks(), 40.0);
        QCOMPARE(judge.verdict(), expected);
    }
    void oddOnesAreCertainFromTenMarksOn()
    {
        MorseJudge judge(counting());
        for (int i = 1; i <= 10; ++i) {
            QVERIFY(judge.verdict() == Verdict::Unsure);
            judge.mark({2.0, UNIT_steps, 1.0, false});
        }
        QVERIFY(judge.verdict() == Verdict::Other);
    }
    void ofFewMarksFewerMayBeAlone()
    {
        JudgeParameters parameters = counting();
        parameters.mostAlone = 0.9;
        parameters.usuallyAlone = 0.5;
        for (const int alone : {5, 6}) {
            MorseJudge judge(parameters);
            for (int i = 0; i < 9; ++i)
                judge.mark({i % 2 == 0 ? 1.0 : 3.0, UNIT_steps, i < alone ? 9.0 : 1.0, false});
            QVERIFY(judge.verdict() == (alone == 5 ? Verdict::Morse : Verdict::Unsure));
            judge.mark({3.0, UNIT_steps, 9.0, false});
            QVERIFY(judge.verdict() == Verdict::Morse);
        }
    }
    void lengthsHaveLimits_data()
    {
        QTest::addColumn<double>("length_units");
        QTest::addColumn<bool>("isDot");
        QTest::addColumn<bool>("isDash");
        QTest::newRow("a long dot") << 1.59 << true << false;
        QTest::newRow("longer than a dot") << 1.6 << false << false;
        QTest::newRow("shorter than a dash") << 2.39 << false << false;
        QTest::newRow("a short dash") << 2.4 << false << true;
        QTest::newRow("a long dash") << 5.59 << false << true;
        QTest::newRow("longer than a dash") << 5.6 << false << false;
    }
    void lengthsHaveLimits()
    {
        QFETCH(double, length_units);
        QFETCH(bool, isDot);
        QFETCH(bool, isDash);
        // Enough dashes or dots around it, that one odd mark is none too many.
        for (const double other : {1.0, 3.0}) {
            MorseJudge judge(counting());
            for (int i = 0; i < 30; ++i)
                judge.mark({other, UNIT_steps, 1.0, false});
            judge.mark({length_units, UNIT_steps, 1.0, false});
            const bool both = other < 2.0 ? isDash : isDot;
            const Verdict alone = other < 2.0 ? Verdict::Unsure : Verdict::Dashes;
            QCOMPARE(judge.verdict(), both ? Verdict::Morse : alone);
        }
    }
    void aGapWithinACharacterHasLimits()
    {
        for (const double gap : {0.0, 1.79, 1.8}) {
            MorseJudge judge(counting());
            judge.mark({1.0, UNIT_steps, gap, false});
            judge.mark({3.0, UNIT_steps, gap, false});
            QVERIFY(judge.verdict() == (gap == 1.79 ? Verdict::Morse : Verdict::Unsure));
        }
    }
    // Squares of deviations of 40 dots may be 0.28^2 each, and certainly no more than 4/3 of that.
    void dotsScatter_data()
    {
        QTest::addColumn<double>("deviation");
        QTest::addColumn<double>("unit_steps");
        QTest::addColumn<Verdict>("expected");
        QTest::newRow("little") << 0.27 << 1e6 << Verdict::Morse;
        QTest::newRow("much") << 0.29 << 1e6 << Verdict::Unsure;
        QTest::newRow("nearly too much") << 0.32 << 1e6 << Verdict::Unsure;
        QTest::newRow("too much") << 0.33 << 1e6 << Verdict::Other;
        QTest::newRow("much, some of it the grid's") << 0.34 << 5.0 << Verdict::Morse;
        QTest::newRow("more than the grid's") << 0.36 << 5.0 << Verdict::Unsure;
        QTest::newRow("the grid is no coarser than a unit") << 0.5 << 0.5 << Verdict::Morse;
    }
    void dotsScatter()
    {
        QFETCH(double, deviation);
        QFETCH(double, unit_steps);
        QFETCH(Verdict, expected);
        MorseJudge judge(counting());
        for (int i = 0; i < 40; ++i)
            judge.mark({1.0 + (i % 2 == 0 ? deviation : -deviation), unit_steps, 1.0, false});
        judge.mark({3.0, unit_steps, 1.0, false});
        QCOMPARE(judge.verdict(), expected);
    }
    void whatIsLongAgoIsForgotten()
    {
        MorseJudge judge = teleprinter(1.0, 150);
        for (int i = 0; i < 300; ++i)
            judge.mark({i % 2 == 0 ? 3.0 : 1.0, UNIT_steps, 1.0, false});
        QVERIFY(judge.verdict() == Verdict::Morse);
    }
};

QTEST_APPLESS_MAIN(tst_MorseJudge)
#include "tst_morsejudge.moc"
