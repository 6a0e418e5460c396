// SPDX-License-Identifier: MIT
#include "signal/morse/recent.h"

#include <QtTest>

using namespace demodulator;

class tst_Recent : public QObject
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
    void rowsGoOnTogether()
    {
        RecentRows<int> rows(3, -1);
        const std::size_t kept[] = {10, 70, 200};
        for (std::size_t row = 0; row < 3; ++row)
            rows.keep(row, kept[row]);
        for (int n = 0; n < 1000; ++n) {
            rows.push();
            rows.setNewest(0, n);
            if (n % 2 == 0)
                rows.setNewest(2, n);
            for (int age = 0; age < 10; ++age)
                QCOMPARE(rows.row(0)[age], std::max(-1, n - age));
            for (int age = 0; age < 70; ++age)
                QCOMPARE(rows.row(1)[age], -1);
            for (int age = 0; age < 200; ++age)
                QCOMPARE(rows.row(2)[age], n < age || (n - age) % 2 != 0 ? -1 : n - age);
        }
    }
    void whatIsKeptStaysWhenMoreIsKept()
    {
        RecentRows<int> rows(1, 0);
        rows.keep(0, 16);
        for (int n = 1; n <= 100; ++n) {
            rows.push();
            rows.setNewest(0, n);
        }
        rows.keep(0, 320);
        rows.keep(0, 8); // keeps no less
        for (int n = 101; n <= 400; ++n) {
            rows.push();
            rows.setNewest(0, n);
        }
        QCOMPARE(rows.row(0)[0], 400);
        QCOMPARE(rows.row(0)[315], 85);
    }
};

QTEST_APPLESS_MAIN(tst_Recent)
#include "tst_recent.moc"
