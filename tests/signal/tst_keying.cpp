// SPDX-License-Identifier: MIT
#include "signal/morse/keying.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double STEP_s = 0.004;

const DurationTable& tableAt(const Keying& keying, double unit_steps)
{
    std::size_t best = 0;
    for (std::size_t speed = 0; speed < keying.speeds(); ++speed) {
        if (std::fabs(keying.table(speed).unit_steps - unit_steps) <
            std::fabs(keying.table(best).unit_steps - unit_steps))
            best = speed;
    }
    return keying.table(best);
}

Kind gapKind(const Keying& keying, double units)
{
    const DurationTable& table = tableAt(keying, 15.0);
    return table.gapKind[static_cast<std::size_t>(units * table.unit_steps / table.stride)];
}

Kind markKind(const Keying& keying, double units)
{
    const DurationTable& table = tableAt(keying, 15.0);
    return table.markKind[static_cast<std::size_t>(units * table.unit_steps / table.stride)];
}

} // namespace

class TestKeying : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void textbookLengthsAreWhatTheyAre()
    {
        const Keying keying(STEP_s, {});
        QCOMPARE(int(markKind(keying, 1.0)), int(Kind::Dot));
        QCOMPARE(int(markKind(keying, 3.0)), int(Kind::Dash));
        QCOMPARE(int(gapKind(keying, 1.0)), int(Kind::ElementGap));
        QCOMPARE(int(gapKind(keying, 3.0)), int(Kind::CharacterGap));
        QCOMPARE(int(gapKind(keying, 7.0)), int(Kind::WordGap));
    }
    void speedsFrom5To60AreOffered()
    {
        const Keying keying(STEP_s, {});
        QVERIFY(keying.table(0).unit_steps <= 1.2 / 60.0 / STEP_s);
        QVERIFY(keying.table(keying.speeds() - 1).unit_steps >= 1.2 / 5.4 / STEP_s);
    }
    void aToldSpeedLeavesThoseAroundIt()
    {
        const Keying keying(STEP_s, 25.0);
        for (std::size_t speed = 0; speed < keying.speeds(); ++speed) {
            const double speed_wpm = 1.2 / STEP_s / keying.table(speed).unit_steps;
            QVERIFY(speed_wpm > 25.0 / 1.21 && speed_wpm < 25.0 * 1.21);
        }
    }
    void probabilitiesOfAllLengthsAddUpToAboutOne()
    {
        const Keying keying(STEP_s, {});
        const DurationTable& table = tableAt(keying, 15.0);
        double marks = 0.0;
        for (std::size_t i = 1; i < table.mark.size(); ++i)
            marks += table.stride * std::exp(static_cast<double>(table.mark[i]));
        QVERIFY2(marks > 0.8 && marks < 1.1, qPrintable(QString::number(marks)));
    }
    void heavyKeyingIsLearnt()
    {
        Keying keying(STEP_s, {});
        for (int i = 0; i < 60; ++i) {
            keying.learn(Kind::Dot, 1.3);
            keying.learn(Kind::ElementGap, 0.7);
            keying.learn(Kind::Dash, 3.3);
        }
        keying.update();
        QVERIFY(std::fabs(keying.mean(Kind::Dot) - 1.3) < 0.06);
        QVERIFY(std::fabs(keying.mean(Kind::ElementGap) - 0.7) < 0.06);
        QVERIFY(std::fabs(keying.mean(Kind::Dash) - 3.3) < 0.1);
    }
    void doubledGapsAreLearntFromAFew()
    {
        Keying keying(STEP_s, {});
        for (int i = 0; i < 4; ++i)
            keying.learn(Kind::WordGap, 6.0); // what they look like at first
        keying.learn(Kind::WordGap, 14.0);
        keying.learn(Kind::WordGap, 6.1);
        keying.update();
        QCOMPARE(int(gapKind(keying, 6.0)), int(Kind::CharacterGap));
        QVERIFY(keying.wordThreshold() > 7.5 && keying.wordThreshold() < 13.0);
    }
    void habitsAreForgottenWithTheirOwner()
    {
        Keying keying(STEP_s, {});
        for (int i = 0; i < 60; ++i)
            keying.learn(Kind::Dash, 4.2);
        keying.update();
        QVERIFY(keying.mean(Kind::Dash) > 3.8);
        keying.forget();
        keying.update();
        QVERIFY(std::fabs(keying.mean(Kind::Dash) - 3.0) < 0.01);
    }
    void aSpeedThatIsSomewhatOffIsNoHabit()
    {
        // All lengths 10 % longer than the speed that they were heard at.
        Keying keying(STEP_s, {});
        for (int i = 0; i < 60; ++i) {
            keying.learn(Kind::Dot, 1.1);
            keying.learn(Kind::ElementGap, 1.1);
            keying.learn(Kind::Dash, 3.3);
        }
        keying.update();
        QVERIFY(std::fabs(keying.mean(Kind::Dot) - 1.0) < 0.03);
        QVERIFY(std::fabs(keying.mean(Kind::Dash) - 3.0) < 0.06);
    }
    void oneWildLengthChangesLittle()
    {
        Keying keying(STEP_s, {});
        keying.learn(Kind::Dash, 1000.0);
        keying.learn(Kind::Dot, -1000.0);
        keying.update();
        QVERIFY(std::fabs(keying.mean(Kind::Dash) - 3.0) < 0.3);
        QVERIFY(std::fabs(keying.mean(Kind::Dot) - 1.0) < 0.3);
    }
};

QTEST_APPLESS_MAIN(TestKeying)
#include "tst_keying.moc"
