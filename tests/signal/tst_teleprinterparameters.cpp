// SPDX-License-Identifier: MIT
#include "signal/teleprinter/parameters.h"

#include <QtTest>
#include <limits>

using namespace teleprinter;

class tst_TeleprinterParameters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMemberIsSetByItsName()
    {
        Parameters parameters;
        QVERIFY(setParameter(parameters, "evidence.followed_s", 0.3));
        QCOMPARE(parameters.evidence.followed_s, 0.3);
        QVERIFY(setParameter(parameters, "framing.character", -2.0));
        QCOMPARE(parameters.framing.character, -2.0F);
        QVERIFY(setParameter(parameters, "acquisition.refined", 7.0));
        QCOMPARE(parameters.acquisition.refined, 7);
    }
    void whatIsNoMemberOrNoNumberIsRefused()
    {
        Parameters parameters;
        QVERIFY(!setParameter(parameters, "followed_s", 0.3));
        QVERIFY(!setParameter(parameters, "", 0.3));
        QVERIFY(!setParameter(parameters, "evidence.followed_s",
                              std::numeric_limits<double>::quiet_NaN()));
        QCOMPARE(parameters.evidence.followed_s, EvidenceParameters().followed_s);
    }
};

QTEST_APPLESS_MAIN(tst_TeleprinterParameters)
#include "tst_teleprinterparameters.moc"
