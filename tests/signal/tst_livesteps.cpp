// SPDX-License-Identifier: MIT
#include "signal/morse/livesteps.h"

#include "support/random.h"

#include <QtTest>

using namespace demodulator;

class tst_LiveSteps : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aGroupIsAliveWhileOneOfItsStepsIs()
    {
        LiveSteps live;
        live.push();
        QCOMPARE(live.groups(LiveSteps::GROUPS), std::uint64_t(0));
        live.setNewest();
        for (std::size_t age = 0; age < LiveSteps::GROUPS * LANES; ++age) {
            QCOMPARE(live.groups(LiveSteps::GROUPS), std::uint64_t(1) << (age / LANES));
            live.push();
        }
        QCOMPARE(live.groups(LiveSteps::GROUPS), std::uint64_t(0));
    }
    void stepsOfSeveralGroupsCountTogether()
    {
        LiveSteps live;
        for (const bool isAlive : {true, true, false}) {
            for (std::size_t step = 0; step < LANES; ++step) {
                live.push();
                if (isAlive)
                    live.setNewest();
            }
        }
        QCOMPARE(live.groups(LiveSteps::GROUPS), std::uint64_t(0b110));
        live.push();
        QCOMPARE(live.groups(LiveSteps::GROUPS), std::uint64_t(0b1110));
    }
    void onlyTheFirstGroupsAreAskedFor()
    {
        LiveSteps live;
        for (std::size_t step = 0; step < LiveSteps::GROUPS * LANES; ++step) {
            live.push();
            live.setNewest();
        }
        QCOMPARE(live.groups(0), std::uint64_t(0));
        QCOMPARE(live.groups(3), std::uint64_t(0b111));
        QCOMPARE(live.groups(LiveSteps::GROUPS), (std::uint64_t(1) << LiveSteps::GROUPS) - 1);
        QCOMPARE(live.groups(64), (std::uint64_t(1) << LiveSteps::GROUPS) - 1);
    }
    // Whatever LiveSteps knows to be alive.
    void aRowLeavesOutNoGroupThatIsAliveAndFewThatAreNot()
    {
        testsupport::Random random("rows");
        LiveSteps live;
        LiveRows rows(3);
        int more = 0;
        int all = 0;
        for (int step = 0; step < 5000; ++step) {
            live.push();
            rows.push();
            if (random.uniform() < 0.01) {
                live.setNewest();
                rows.setNewest(1);
            }
            const std::uint64_t expected = live.groups(LiveSteps::GROUPS);
            const std::uint64_t kept = (std::uint64_t(1) << LiveSteps::GROUPS) - 1;
            const std::uint64_t groups = rows.groups(1) & kept;
            QCOMPARE(groups & expected, expected);
            QCOMPARE(groups & kept >> 1 & ~(expected | expected << 1 | expected >> 1),
                     std::uint64_t(0));
            QCOMPARE(rows.groups(0) | rows.groups(2), std::uint64_t(0));
            more += __builtin_popcountll(groups);
            all += __builtin_popcountll(expected);
        }
        QVERIFY(all > 0 && more < 2 * all);
    }
};

QTEST_APPLESS_MAIN(tst_LiveSteps)
#include "tst_livesteps.moc"
