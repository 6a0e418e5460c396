// SPDX-License-Identifier: MIT
#include "signal/morse/morsejudge.h"

#include "support/keyer.h"
#include "support/random.h"

#include <QtTest>

using namespace demodulator;
using Verdict = MorseJudge::Verdict;

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
