// SPDX-License-Identifier: MIT
#include "signal/morse/parameters.h"

#include <QtTest>
#include <limits>

using namespace demodulator;

class tst_Parameters : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aMemberIsSetByItsName()
    {
        Parameters parameters;
        QVERIFY(setParameter(parameters, "level.memory_s", 0.7));
        QCOMPARE(parameters.level.memory_s, 0.7);
        QVERIFY(setParameter(parameters, "phase.leastMarks", 9));
        QCOMPARE(parameters.phase.leastMarks, 9U);
    }
    void whatIsNoMemberOrNoNumberIsRefused()
    {
        Parameters parameters;
        QVERIFY(!setParameter(parameters, "level.memory", 0.7));
        QVERIFY(!setParameter(parameters, "", 0.7));
        QVERIFY(
            !setParameter(parameters, "level.memory_s", std::numeric_limits<double>::quiet_NaN()));
        QCOMPARE(parameters.level.memory_s, LevelParameters().memory_s);
    }
};

QTEST_APPLESS_MAIN(tst_Parameters)
#include "tst_parameters.moc"
