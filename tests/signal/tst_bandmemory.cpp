// SPDX-License-Identifier: MIT
#include "signal/band/bandmemory.h"

#include <QtTest>

using namespace demodulator;

namespace {

bool nobody(int /*number*/)
{
    return false;
}

} // namespace

class tst_BandMemory : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void stationsAreNumberedFromOne()
    {
        StationNumbers numbers({});
        QCOMPARE(numbers.find(700.0, nobody), 0);
        QCOMPARE(numbers.add(700.0, 0), 1);
        QCOMPARE(numbers.add(900.0, 0), 2);
    }
    void aStationIsFoundByTheNearestToneThatIsFree()
    {
        StationNumbers numbers({});
        numbers.add(700.0, 0);
        numbers.add(704.0, 0);
        QCOMPARE(numbers.find(701.0, nobody), 1);
        QCOMPARE(numbers.find(703.0, nobody), 2);
        QCOMPARE(numbers.find(703.0, [](int number) { return number == 2; }), 1);
        QCOMPARE(numbers.find(694.0, nobody), 1);
        QCOMPARE(numbers.find(693.9, nobody), 0);
    }
    void aStationIsFoundWhereItWasLastHeard()
    {
        StationNumbers numbers({});
        const int number = numbers.add(700.0, 0);
        numbers.heard(number, 720.0, 10);
        QCOMPARE(numbers.find(700.0, nobody), 0);
        QCOMPARE(numbers.find(720.0, nobody), number);
    }
    void thoseSilentForLongAreForgottenAndTheirNumbersAreNotUsedAgain()
    {
        StationNumbers numbers({});
        numbers.add(700.0, 10);
        numbers.add(800.0, 20);
        QVERIFY(numbers.forget(9).empty());
        QCOMPARE(numbers.forget(10), std::vector<int>({1}));
        QCOMPARE(numbers.find(700.0, nobody), 0);
        QCOMPARE(numbers.add(700.0, 30), 3);
        QCOMPARE(numbers.clear(), std::vector<int>({2, 3}));
        QVERIFY(numbers.clear().empty());
    }
    void theLastStepGivenNearAToneIsKnownUntilItIsForgotten()
    {
        ToneMemory memory({});
        QCOMPARE(memory.heardUntil(700.0), std::int64_t(0));
        memory.close(700.0, 50);
        memory.close(720.0, 40);
        QCOMPARE(memory.heardUntil(710.0), std::int64_t(50));
        QCOMPARE(memory.heardUntil(741.0), std::int64_t(40));
        QCOMPARE(memory.heardUntil(660.0), std::int64_t(0));
        memory.forget(50, 0);
        QCOMPARE(memory.heardUntil(710.0), std::int64_t(50));
        QCOMPARE(memory.heardUntil(741.0), std::int64_t(0));
        memory.forget(51, 0);
        QCOMPARE(memory.heardUntil(710.0), std::int64_t(0));
    }
    void theOldestGoFirstWhenThereAreTooMany()
    {
        ToneMemory memory({});
        memory.close(100.0, 7);
        for (int i = 0; i < 4095; ++i)
            memory.close(700.0, i);
        QCOMPARE(memory.heardUntil(100.0), std::int64_t(7));
        memory.close(700.0, 5000);
        QCOMPARE(memory.heardUntil(100.0), std::int64_t(0));
        QCOMPARE(memory.heardUntil(700.0), std::int64_t(5000));
    }
    void whatWasNoSignalIsNotTriedAgainUnlessItIsLouder()
    {
        ToneMemory memory({});
        memory.refuse(700.0, 1.0, 100);
        QVERIFY(memory.isRefused(724.0, 1.9));
        QVERIFY(!memory.isRefused(725.0, 1.0));
        QVERIFY(!memory.isRefused(700.0, 2.0));
        memory.forget(0, 100);
        QVERIFY(memory.isRefused(700.0, 1.0));
        memory.forget(0, 101);
        QVERIFY(!memory.isRefused(700.0, 1.0));
    }
};

QTEST_APPLESS_MAIN(tst_BandMemory)
#include "tst_bandmemory.moc"
