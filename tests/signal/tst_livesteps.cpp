// SPDX-License-Identifier: MIT
#include "signal/morse/livesteps.h"

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
};

QTEST_APPLESS_MAIN(tst_LiveSteps)
#include "tst_livesteps.moc"
