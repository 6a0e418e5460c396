// SPDX-License-Identifier: MIT
#include "signal/morse/classifier.h"

#include "support/codelist.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double UNIT_us = 60000.0;

} // namespace

class tst_Classifier : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aWordEndsWithItsCharacterAndThenTheWord()
    {
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.mark({Kind::Dot, 0, 60000, UNIT_us});
        classifier.gap(Kind::ElementGap);
        classifier.mark({Kind::Dash, 120000, 300000, UNIT_us});
        classifier.gap(Kind::WordGap);
        QCOMPARE(list.transmissions.size(), std::size_t(1));
        QCOMPARE(list.transmissions[0].start_us, std::int64_t(0));
        QCOMPARE(list.transmissions[0].codes, (std::vector<int>{0, 1, 3, 4}));
        QCOMPARE(list.transmissions[0].times_us,
                 (std::vector<std::int64_t>{60000, 300000, 300000, 300000}));
    }
    void aGapThatGrowsIsReportedOnceForEachThreshold()
    {
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.mark({Kind::Dot, 0, 60000, UNIT_us});
        for (const double length_us : {60e3, 150e3, 200e3, 290e3, 310e3, 400e3, 2.9e6})
            classifier.gapSoFar(length_us, UNIT_us, 2.0, 5.0);
        QCOMPARE(list.transmissions[0].codes, (std::vector<int>{0, 3, 4}));
        QCOMPARE(list.transmissions[0].stop_us, std::int64_t(-1));
        classifier.gapSoFar(3.1e6, UNIT_us, 2.0, 5.0);
        QCOMPARE(list.transmissions[0].stop_us, std::int64_t(60000));
        QVERIFY(!classifier.active());
    }
    void timingMarksFollowWhatTheyComplainOf()
    {
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.mark({Kind::Dot, 0, 25000, UNIT_us});
        classifier.gap(Kind::ElementGap);
        classifier.mark({Kind::Dash, 45000, 45000 + 330000, UNIT_us});
        QCOMPARE(list.transmissions[0].codes, (std::vector<int>{0, 64, 66, 1, 65}));
        QCOMPARE(list.transmissions[0].times_us,
                 (std::vector<std::int64_t>{25000, 25000, 45000, 375000, 375000}));
    }
    void codesStayInOrderWhereAMarkReachesBackIntoTheOneBefore()
    {
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.mark({Kind::Dash, 0, 180000, UNIT_us});
        classifier.gap(Kind::ElementGap);
        classifier.mark({Kind::Dash, 150000, 400000, UNIT_us});
        QCOMPARE(list.transmissions[0].codes, (std::vector<int>{1, 66, 1}));
        QCOMPARE(list.transmissions[0].times_us,
                 (std::vector<std::int64_t>{180000, 180000, 400000}));
    }
    void aSteadyToneIsTooLongForADash()
    {
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.mark({Kind::Carrier, 0, 2000000, UNIT_us});
        classifier.stop();
        QCOMPARE(list.transmissions[0].codes, (std::vector<int>{65}));
    }
    void stoppingEndsTheCharacterAndOnlyOnce()
    {
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.stop();
        QVERIFY(list.transmissions.empty());
        classifier.mark({Kind::Dash, 0, 180000, UNIT_us});
        classifier.stop();
        classifier.stop();
        QCOMPARE(list.transmissions[0].codes, (std::vector<int>{1, 3}));
        QCOMPARE(list.transmissions[0].stop_us, std::int64_t(180000));
    }
    // A word that was cut off by the end is none of the next transmission.
    void noWordGoesOnOverTheEnd()
    {
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.mark({Kind::Dot, 0, 60000, UNIT_us});
        classifier.stop();
        classifier.mark({Kind::Carrier, 9000000, 11000000, UNIT_us});
        classifier.gap(Kind::WordGap);
        QCOMPARE(list.transmissions[1].codes, (std::vector<int>{65}));
    }
    void limitsOfMarksAndPauses_data()
    {
        QTest::addColumn<int>("pause_us");
        QTest::addColumn<int>("dot_us");
        QTest::addColumn<int>("dash_us");
        QTest::addColumn<std::vector<int>>("codes");
        QTest::newRow("shortest pause") << 24000 << 60000 << 180000 << std::vector<int>{0, 1};
        QTest::newRow("too short a pause")
            << 23999 << 60000 << 180000 << std::vector<int>{0, 66, 1};
        QTest::newRow("shortest dot") << 60000 << 30000 << 180000 << std::vector<int>{0, 1};
        QTest::newRow("too short a dot") << 60000 << 29999 << 180000 << std::vector<int>{0, 64, 1};
        QTest::newRow("longest dash") << 60000 << 60000 << 300000 << std::vector<int>{0, 1};
        QTest::newRow("too long a dash") << 60000 << 60000 << 300001 << std::vector<int>{0, 1, 65};
    }
    void limitsOfMarksAndPauses()
    {
        QFETCH(int, pause_us);
        QFETCH(int, dot_us);
        QFETCH(int, dash_us);
        QFETCH(std::vector<int>, codes);
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.mark({Kind::Dot, 0, dot_us, UNIT_us});
        classifier.gap(Kind::ElementGap);
        classifier.mark({Kind::Dash, dot_us + pause_us, dot_us + pause_us + dash_us, UNIT_us});
        QCOMPARE(list.transmissions[0].codes, codes);
    }
    void aShortPauseBetweenCharactersIsNoFault()
    {
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.mark({Kind::Dot, 0, 60000, UNIT_us});
        classifier.gap(Kind::CharacterGap);
        classifier.mark({Kind::Dot, 61000, 121000, UNIT_us});
        QCOMPARE(list.transmissions[0].codes, (std::vector<int>{0, 3, 0}));
    }
    void theReportHoldsMeansOverTheMarksOfATransmission()
    {
        testsupport::CodeList list;
        Classifier classifier(list);
        classifier.mark({Kind::Dot, 0, 60000, UNIT_us, 700.0, 40.0});
        classifier.mark({Kind::Dash, 120000, 300000, 0.8 * UNIT_us, 704.0, 120.0});
        classifier.stop();
        classifier.mark({Kind::Dot, 9000000, 9060000, 2.0 * UNIT_us, 650.0, 1e30});
        classifier.stop();
        const SignalReport& first = list.transmissions[0].report;
        QCOMPARE(first.tone_Hz, 703.0); // a dash weighs as much as three dots
        QVERIFY(std::fabs(first.speed_wpm - 20.0 / 0.85) < 1e-9);
        QVERIFY(std::fabs(first.snr_dB - 20.0) < 1e-9);
        const SignalReport& second = list.transmissions[1].report;
        QCOMPARE(second.tone_Hz, 650.0);
        QCOMPARE(second.speed_wpm, 10.0);
        QCOMPARE(second.snr_dB, 99.0);
    }
    void theEndingSilenceIs3SecondsOr45Units()
    {
        QCOMPARE(Classifier::endingSilence_us(60000.0), 3e6);
        QCOMPARE(Classifier::endingSilence_us(100000.0), 4.5e6);
    }
};

QTEST_APPLESS_MAIN(tst_Classifier)
#include "tst_classifier.moc"
