// SPDX-License-Identifier: MIT
#include "signal/band/parameters.h"

#include <QtTest>

using namespace demodulator;

class tst_BandParameters : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aMemberIsSetByItsName()
    {
        BandParameters parameters;
        QVERIFY(setParameter(parameters, "shadow.margin", 3.0));
        QCOMPARE(parameters.shadow.margin, 3.0);
        QVERIFY(setParameter(parameters, "survey.search_frames", 60.0));
        QCOMPARE(parameters.survey.search_frames, 60);
        QVERIFY(!setParameter(parameters, "shadow.nothing", 3.0));
    }
    void aMemberOfTheChainIsSetByItsName()
    {
        BandParameters parameters;
        QVERIFY(setParameter(parameters, "level.memory_s", 0.7));
        QCOMPARE(parameters.signal.level.memory_s, 0.7);
    }
};

QTEST_APPLESS_MAIN(tst_BandParameters)
#include "tst_bandparameters.moc"
