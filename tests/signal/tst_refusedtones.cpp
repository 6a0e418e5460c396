// SPDX-License-Identifier: MIT
#include "signal/morse/refusedtones.h"

#include <QtTest>

using namespace demodulator;

class tst_RefusedTones : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aToneIsLeftOutUntilItsTimeIsOver()
    {
        RefusedTones refused;
        refused.add(700.0, 8000);
        refused.update(7999);
        const auto bands = refused.bands(40.0);
        QCOMPARE(bands.size(), std::size_t(1));
        QCOMPARE(bands[0].lowest_Hz, 660.0);
        QCOMPARE(bands[0].highest_Hz, 740.0);
        refused.update(8000);
        QVERIFY(refused.bands(40.0).empty());
    }
    void eachHasATimeOfItsOwn()
    {
        RefusedTones refused;
        refused.add(700.0, 9000);
        refused.add(900.0, 8000);
        refused.add(1100.0, 10000);
        refused.update(8500);
        const auto bands = refused.bands(1.0);
        QCOMPARE(bands.size(), std::size_t(2));
        QCOMPARE(bands[0].lowest_Hz, 699.0);
        QCOMPARE(bands[1].lowest_Hz, 1099.0);
    }
    void oneTooManyTakesThePlaceOfTheOldest()
    {
        RefusedTones refused;
        for (std::size_t i = 0; i <= RefusedTones::MOST; ++i)
            refused.add(100.0 * static_cast<double>(i), 8000);
        const auto bands = refused.bands(0.0);
        QCOMPARE(bands.size(), RefusedTones::MOST);
        QCOMPARE(bands.front().lowest_Hz, 100.0);
        QCOMPARE(bands.back().lowest_Hz, 100.0 * static_cast<double>(RefusedTones::MOST));
    }
};

QTEST_APPLESS_MAIN(tst_RefusedTones)
#include "tst_refusedtones.moc"
