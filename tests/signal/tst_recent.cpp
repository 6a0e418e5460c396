// SPDX-License-Identifier: MIT
#include "signal/morse/recent.h"

#include <QtTest>

using namespace demodulator;

class TestRecent : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theNewestComesFirstWithoutASeam()
    {
        constexpr int KEPT = 40;
        Recent<int> recent(KEPT, -1);
        for (int n = 0; n < 1000; ++n) {
            recent.push(n);
            for (int age = 0; age < KEPT; ++age) {
                QCOMPARE(recent.data()[age], std::max(-1, n - age));
                QCOMPARE(recent[static_cast<std::size_t>(age)], std::max(-1, n - age));
            }
        }
    }
    void whatIsKeptStaysWhenMoreIsKept()
    {
        Recent<int> recent(16, 0);
        for (int n = 1; n <= 100; ++n)
            recent.push(n);
        recent.keepMore(32, -1);
        recent.keepMore(8, -2); // keeps no less
        QCOMPARE(recent.kept(), std::size_t(32));
        QCOMPARE(recent[0], 100);
        QCOMPARE(recent[15], 85);
        QCOMPARE(recent[16], -1);
        QCOMPARE(recent[31], -1);
        for (int n = 101; n <= 300; ++n)
            recent.push(n);
        QCOMPARE(recent[31], 269);
    }
};

QTEST_APPLESS_MAIN(TestRecent)
#include "tst_recent.moc"
