// SPDX-License-Identifier: MIT
#include "signal/morse/timingmodel.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double STEP_s = 0.004;
constexpr double WEAK_DOT = 8.0; // energy over noise density: -6 dB

const DurationTable& tableAt(const TimingModel& timing, double unit_steps)
{
    std::size_t best = 0;
    for (std::size_t speed = 0; speed < timing.speeds(); ++speed) {
        if (std::fabs(timing.table(speed).unit_steps - unit_steps) <
            std::fabs(timing.table(best).unit_steps - unit_steps))
            best = speed;
    }
    return timing.table(best);
}

Kind gapKind(const TimingModel& timing, double units)
{
    return tableAt(timing, 15.0).gapKind(std::lround(units * 15.0));
}

Kind markKind(const TimingModel& timing, double units)
{
    return tableAt(timing, 15.0).markKind(std::lround(units * 15.0));
}

double probability(Score score)
{
    return std::exp(static_cast<double>(score) / SCORES_PER_NAT);
}

// Log likelihood of a length that a machine keys over one that lies off by 0.2 of a unit.
double preferenceForEven(const TimingModel& timing)
{
    const LengthTable& gaps = tableAt(timing, 15.0).gap;
    return (gaps.exactly[45] - gaps.exactly[48]) / double{SCORES_PER_NAT};
}

} // namespace

class tst_TimingModel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void textbookLengthsAreWhatTheyAre()
    {
        const TimingModel timing(STEP_s, {});
        QCOMPARE(int(markKind(timing, 1.0)), int(Kind::Dot));
        QCOMPARE(int(markKind(timing, 3.0)), int(Kind::Dash));
        QCOMPARE(int(gapKind(timing, 1.0)), int(Kind::ElementGap));
        QCOMPARE(int(gapKind(timing, 3.0)), int(Kind::CharacterGap));
        QCOMPARE(int(gapKind(timing, 7.0)), int(Kind::WordGap));
    }
    void gapsEndWhereTheNextKindIsLikelier()
    {
        const TimingModel timing(STEP_s, {});
        QVERIFY(timing.characterThreshold() > 1.5 && timing.characterThreshold() < 2.2);
        QVERIFY(timing.wordThreshold() > 4.0 && timing.wordThreshold() < 6.0);
    }
    void usualSpeedsAreLikelierAndAllTogetherCertain()
    {
        const TimingModel timing(STEP_s, {});
        double total = 0.0;
        std::size_t likeliest = 0;
        for (std::size_t speed = 0; speed < timing.speeds(); ++speed) {
            total += std::exp(timing.prior(speed));
            if (timing.prior(speed) > timing.prior(likeliest))
                likeliest = speed;
        }
        QVERIFY(std::fabs(total - 1.0) < 1e-6);
        // 20 words a minute; half a logarithm away it is a deviation.
        QVERIFY(std::fabs(timing.table(likeliest).unit_steps / 15.0 - 1.0) < 0.03);
        const double away = std::log(timing.table(0).unit_steps / 15.0) / 0.5;
        QVERIFY(std::fabs(timing.prior(likeliest) - timing.prior(0) - 0.5 * away * away) < 0.01);
    }
    void speedsFrom5To60AreOffered()
    {
        const TimingModel timing(STEP_s, {});
        QVERIFY(timing.table(0).unit_steps <= 1.2 / 60.0 / STEP_s);
        QVERIFY(timing.table(timing.speeds() - 1).unit_steps >= 1.2 / 5.4 / STEP_s);
    }
    void aSetSpeedLeavesThoseAroundIt()
    {
        const TimingModel timing(STEP_s, 25.0);
        for (std::size_t speed = 0; speed < timing.speeds(); ++speed) {
            const double speed_wpm = 1.2 / STEP_s / timing.table(speed).unit_steps;
            QVERIFY(speed_wpm > 25.0 / 1.21 && speed_wpm < 25.0 * 1.21);
        }
    }
    void probabilitiesOfAllLengthsAddUpToAboutOne()
    {
        const TimingModel timing(STEP_s, {});
        const DurationTable& table = tableAt(timing, 15.0);
        double marks = 0.0;
        double gaps = 0.0;
        for (std::size_t i = 1; i < table.mark.count; ++i)
            marks += probability(table.mark.exactly[i]);
        for (std::size_t i = 1; i < table.gap.count; ++i)
            gaps += probability(table.gap.exactly[i]);
        QVERIFY2(marks > 0.8 && marks < 1.1, qPrintable(QString::number(marks)));
        QVERIFY2(gaps > 0.8 && gaps < 1.1, qPrintable(QString::number(gaps)));
    }
    void whatIsAtLeastSoLongIsAllThatIsLonger()
    {
        const TimingModel timing(STEP_s, {});
        for (const double unit_steps : {5.0, 15.0, 50.0}) {
            const DurationTable& table = tableAt(timing, unit_steps);
            for (const LengthTable* lengths : {&table.mark, &table.gap}) {
                QCOMPARE(int(lengths->atLeast[0]), 0);
                double longer = 0.02;
                for (std::size_t i = lengths->count - 1; i > lengths->count / 4; --i) {
                    QVERIFY(std::fabs(std::log(longer) -
                                      double(lengths->atLeast[i]) / SCORES_PER_NAT) < 0.02);
                    longer += probability(lengths->exactly[i]);
                }
            }
        }
    }
    void tablesAreFilledUpToWholeLanes()
    {
        const TimingModel timing(STEP_s, {});
        for (std::size_t speed = 0; speed < timing.speeds(); ++speed) {
            for (const LengthTable* lengths :
                 {&timing.table(speed).mark, &timing.table(speed).gap}) {
                QCOMPARE(lengths->exactly.size(), wholeLanes(lengths->count));
                QCOMPARE(lengths->atLeast.size(), wholeLanes(lengths->count));
                for (std::size_t i = lengths->count; i < lengths->exactly.size(); ++i)
                    QVERIFY(lengths->exactly[i] == NEVER && lengths->atLeast[i] == NEVER);
            }
        }
    }
    void clicksAreNoMarks()
    {
        const TimingModel timing(STEP_s, {});
        for (const double unit_steps : {5.0, 15.0, 50.0}) {
            const DurationTable& table = tableAt(timing, unit_steps);
            const auto shortest =
                static_cast<std::size_t>(std::lround(std::max(0.3 * table.unit_steps, 3.0)));
            QVERIFY(table.mark.exactly[shortest] > NEVER);
            QVERIFY(table.mark.exactly[shortest - 1] == NEVER);
        }
    }
    void heavyKeyingIsLearnt()
    {
        TimingModel timing(STEP_s, {});
        for (int i = 0; i < 60; ++i) {
            timing.learn(Kind::Dot, 1.3);
            timing.learn(Kind::ElementGap, 0.7);
            timing.learn(Kind::Dash, 3.3);
        }
        timing.update();
        QVERIFY(std::fabs(timing.mean(Kind::Dot) - 1.3) < 0.06);
        QVERIFY(std::fabs(timing.mean(Kind::ElementGap) - 0.7) < 0.06);
        QVERIFY(std::fabs(timing.mean(Kind::Dash) - 3.3) < 0.1);
    }
    void doubledGapsAreLearntFromAFew()
    {
        TimingModel timing(STEP_s, {});
        for (int i = 0; i < 4; ++i)
            timing.learn(Kind::WordGap, 6.0); // what they look like at first
        timing.learn(Kind::WordGap, 14.0);
        timing.learn(Kind::WordGap, 6.1);
        timing.update();
        QCOMPARE(int(gapKind(timing, 6.0)), int(Kind::CharacterGap));
        QVERIFY(timing.wordThreshold() > 7.5 && timing.wordThreshold() < 13.0);
    }
    void gapsOfAStyleVaryInProportionToIt()
    {
        // How much less probable a gap between characters is that is a sixth longer than its mean.
        const auto drop_nats = [](const TimingModel& timing, double mean_units) {
            const DurationTable& table = tableAt(timing, 30.0);
            const auto at = [&table](double units) {
                return static_cast<double>(
                    table.gap.exactly[static_cast<std::size_t>(units * table.unit_steps + 0.5)]);
            };
            return (at(mean_units) - at(mean_units * 7.0 / 6.0)) / SCORES_PER_NAT;
        };
        TimingParameters uneven; // nobody keys as a machine does
        uneven.evenShare = uneven.leastEvenShare = uneven.mostEvenShare = 0.0;
        TimingModel usual(STEP_s, {}, uneven);
        TimingModel wide(STEP_s, {}, uneven);
        for (int i = 0; i < 12; ++i) {
            for (int character = 0; character < 4; ++character) {
                usual.learn(Kind::CharacterGap, 3.0);
                wide.learn(Kind::CharacterGap, 6.5);
            }
            usual.learn(Kind::WordGap, 7.0);
            wide.learn(Kind::WordGap, 6.5 * 2.33);
        }
        usual.update();
        wide.update();
        QCOMPARE(wide.mean(Kind::CharacterGap), 6.5);
        QVERIFY(drop_nats(usual, 3.0) > 0.3);
        QVERIFY(std::fabs(drop_nats(wide, 6.5) - drop_nats(usual, 3.0)) < 0.15);
    }
    void aTailToLongerLengthsMovesTheThreshold()
    {
        TimingParameters parameters;
        const double usual = TimingModel(STEP_s, {}, parameters).wordThreshold();
        parameters.characterGap.rightTail = 3.0;
        QVERIFY(TimingModel(STEP_s, {}, parameters).wordThreshold() > usual + 0.3);
    }
    void tablesEndWithTheLongestLengths()
    {
        const TimingModel timing(STEP_s, {});
        // Marks of 6 units; gaps of 1.8 times a word gap, at most 2.6 s.
        const DurationTable& quick = tableAt(timing, 15.0);
        QCOMPARE(quick.mark.count, static_cast<std::size_t>(6.0 * quick.unit_steps) + 1);
        QCOMPARE(quick.gap.count, static_cast<std::size_t>(7.0 * 1.8 * quick.unit_steps) + 1);
        QCOMPARE(tableAt(timing, 60.0).gap.count, std::size_t(2.6 / STEP_s + 0.5) + 1);
    }
    void similarSpeedsLearnAtOnceAndOthersInOneOf16Updates()
    {
        TimingModel timing(STEP_s, {});
        const auto dashAt = [&timing](double unit_steps) {
            const DurationTable& table = tableAt(timing, unit_steps);
            return int(table.mark.exactly[static_cast<std::size_t>(4.5 * table.unit_steps)]);
        };
        const int nearBefore = dashAt(15.0);
        const int farBefore = dashAt(40.0);
        for (int i = 0; i < 60; ++i)
            timing.learn(Kind::Dash, 4.5);
        for (int update = 1; update < 16; ++update) {
            timing.update(15.0);
            QVERIFY(dashAt(15.0) > nearBefore + SCORES_PER_NAT);
            QCOMPARE(dashAt(40.0), farBefore);
        }
        timing.update(15.0);
        QVERIFY(dashAt(40.0) > farBefore + SCORES_PER_NAT);
    }
    void whatWasLearntIsForgottenWithItsOwner()
    {
        TimingModel timing(STEP_s, {});
        for (int i = 0; i < 60; ++i)
            timing.learn(Kind::Dash, 4.2);
        timing.update();
        QVERIFY(timing.mean(Kind::Dash) > 3.8);
        timing.forget();
        timing.update();
        QVERIFY(std::fabs(timing.mean(Kind::Dash) - 3.0) < 0.01);
    }
    void aSpeedThatIsSomewhatOffIsNotLearntAsLengths()
    {
        // All lengths 10 % longer than the speed that they were heard at.
        TimingModel timing(STEP_s, {});
        for (int i = 0; i < 60; ++i) {
            timing.learn(Kind::Dot, 1.1);
            timing.learn(Kind::ElementGap, 1.1);
            timing.learn(Kind::Dash, 3.3);
        }
        timing.update();
        QVERIFY(std::fabs(timing.mean(Kind::Dot) - 1.0) < 0.03);
        QVERIFY(std::fabs(timing.mean(Kind::Dash) - 3.0) < 0.06);
    }
    void aMachinesLengthsAreExpectedMoreAndMore()
    {
        TimingModel timing(STEP_s, {});
        timing.update(0.0, WEAK_DOT);
        const double before = preferenceForEven(timing);
        for (int i = 0; i < 40; ++i) {
            for (const Kind kind : {Kind::Dot, Kind::ElementGap})
                timing.learn(kind, 1.0);
            for (const Kind kind : {Kind::Dash, Kind::CharacterGap})
                timing.learn(kind, 3.0);
            timing.learn(Kind::WordGap, 7.0);
            timing.update(15.0, WEAK_DOT);
        }
        QVERIFY(preferenceForEven(timing) > before + 1.0);
        timing.forget();
        timing.update(0.0, WEAK_DOT);
        QVERIFY(std::fabs(preferenceForEven(timing) - before) < 0.1);
    }
    void aHandsLengthsMakeThemUnlikely()
    {
        TimingParameters parameters;
        parameters.evenShare = 0.5;
        TimingModel timing(STEP_s, {}, parameters);
        timing.update(0.0, WEAK_DOT);
        const double before = preferenceForEven(timing);
        QVERIFY(before > 0.5);
        for (int i = 0; i < 100; ++i) {
            const double off = 0.1 * static_cast<double>(i % 9 - 4);
            timing.learn(Kind::Dot, 1.0 + off);
            timing.learn(Kind::ElementGap, 1.0 - off);
            timing.learn(Kind::Dash, 3.0 + 2.0 * off);
            timing.learn(Kind::CharacterGap, 3.0 + 3.0 * off);
            timing.update(15.0, WEAK_DOT);
        }
        QVERIFY(preferenceForEven(timing) < 0.5 * before);
    }
    void aMachineIsKnownAtASpeedBetweenTwoTables()
    {
        TimingModel timing(STEP_s, {});
        timing.update(0.0, WEAK_DOT);
        const double before = preferenceForEven(timing);
        for (int i = 0; i < 100; ++i) {
            for (const Kind kind : {Kind::Dot, Kind::ElementGap})
                timing.learn(kind, 1.02);
            for (const Kind kind : {Kind::Dash, Kind::CharacterGap})
                timing.learn(kind, 3.06);
            timing.update(15.0, WEAK_DOT);
        }
        QVERIFY(preferenceForEven(timing) > before + 1.0);
    }
    void carriersAndSilenceSayNothingOfWhoKeys()
    {
        TimingModel timing(STEP_s, {});
        timing.update(0.0, WEAK_DOT);
        const double before = preferenceForEven(timing);
        for (int i = 0; i < 100; ++i) {
            timing.learn(Kind::Carrier, 9.0);
            timing.learn(Kind::Silence, 50.0);
        }
        timing.update(0.0, WEAK_DOT);
        QCOMPARE(preferenceForEven(timing), before);
    }
    void ofAStrongSignalNoMachineIsExpected()
    {
        TimingModel timing(STEP_s, {});
        const double before = preferenceForEven(timing);
        for (int i = 0; i < 100; ++i)
            timing.learn(Kind::CharacterGap, 3.0);
        timing.update(0.0, TimingParameters().evenDot);
        const double strong = preferenceForEven(timing);
        timing.update(0.0, WEAK_DOT);
        QVERIFY(preferenceForEven(timing) > strong + 1.0);
        QVERIFY(std::fabs(strong - before) < 0.5);
    }
    void oneWildLengthChangesLittle()
    {
        TimingModel timing(STEP_s, {});
        timing.learn(Kind::Dash, 1000.0);
        timing.learn(Kind::Dot, -1000.0);
        timing.update();
        QVERIFY(std::fabs(timing.mean(Kind::Dash) - 3.0) < 0.3);
        QVERIFY(std::fabs(timing.mean(Kind::Dot) - 1.0) < 0.3);
    }
};

QTEST_APPLESS_MAIN(tst_TimingModel)
#include "tst_timingmodel.moc"
