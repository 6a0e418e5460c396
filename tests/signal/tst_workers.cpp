// SPDX-License-Identifier: MIT
#include "signal/band/workers.h"

#include <QTest>

#include <vector>

using demodulator::Workers;

class tst_Workers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPieceOfWorkIsDoneOnce_data()
    {
        QTest::addColumn<unsigned>("threads");
        QTest::addColumn<int>("count");
        QTest::newRow("alone") << 1U << 1000;
        QTest::newRow("two") << 2U << 1000;
        QTest::newRow("more threads than work") << 8U << 3;
        QTest::newRow("no work") << 3U << 0;
        QTest::newRow("as many threads as there are processors") << 0U << 1000;
    }
    void everyPieceOfWorkIsDoneOnce()
    {
        QFETCH(unsigned, threads);
        QFETCH(int, count);
        Workers workers(threads);
        std::vector<int> done(static_cast<std::size_t>(count));
        for (int round = 1; round <= 200; ++round) {
            workers.forAll(done.size(), [&](std::size_t i) { ++done[i]; });
            // All of it is finished here, and seen from this thread.
            for (const int times : done)
                QCOMPARE(times, round);
        }
    }
};

QTEST_APPLESS_MAIN(tst_Workers)
#include "tst_workers.moc"
