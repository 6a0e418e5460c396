// SPDX-License-Identifier: MIT
#include "support/morsecode.h"

#include <QtTest>

using namespace testsupport;

class tst_MorseCode : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void codesBecomeText()
    {
        QCOMPARE(textOfCodes({0, 0, 0, 3, 1, 1, 1, 3, 4, 0, 3}), std::string("SO E"));
    }
    void timingMarksDoNotSpoilText()
    {
        QCOMPARE(textOfCodes({0, 64, 66, 1, 65, 3}), std::string("A"));
    }
    void aDashAfterADigitIsACutZero()
    {
        QCOMPARE(textOfCodes({0, 1, 1, 1, 1, 3, 1, 3}), std::string("10"));
        QCOMPARE(asReceived("1t t5t T"), std::string("10 050 0"));
    }
    void runsOfBlanksCountAsOne() { QCOMPARE(asReceived("  a   b "), std::string("A B")); }
    void errorsAreCountedAgainstWhatWasSent()
    {
        QCOMPARE(editDistance("KITTEN", "SITTING"), std::size_t(3));
        QCOMPARE(characterErrorRate("ABCD", "ABXD"), 0.25);
        QCOMPARE(characterErrorRate("ABCD", ""), 1.0);
    }
};

QTEST_APPLESS_MAIN(tst_MorseCode)
#include "tst_morsecode.moc"
