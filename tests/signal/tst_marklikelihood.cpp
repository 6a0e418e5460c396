// SPDX-License-Identifier: MIT
#include "signal/morse/marklikelihood.h"

#include "support/random.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

MarkLikelihood heard(double amplitude, int silent, int marked, double deviation)
{
    testsupport::Random random("likelihood");
    MarkLikelihood likelihood;
    likelihood.setLevel({1.0, 2.0 * deviation * deviation});
    for (int n = 0; n < silent + marked; ++n) {
        const double level = n < silent ? 0.0 : amplitude;
        likelihood.push({level + deviation * random.gauss(), deviation * random.gauss()});
    }
    return likelihood;
}

} // namespace

class tst_MarkLikelihood : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aMarkIsBestExplainedByItsOwnLength()
    {
        const MarkLikelihood likelihood = heard(1.0, 50, 20, 0.5);
        int best = 1;
        for (int length = 1; length <= 60; ++length) {
            if (likelihood.ratio(length) > likelihood.ratio(best))
                best = length;
        }
        QVERIFY(std::abs(best - 20) <= 2);
        QVERIFY(likelihood.ratio(best) > 10.0F);
    }
    void noiseSpeaksAgainstAMark()
    {
        const MarkLikelihood likelihood = heard(0.0, 100, 0, 0.5);
        // As much as a mark in a deep fade is improbable, and more so the longer it is.
        QVERIFY(likelihood.ratio(15) < -10.0F);
        QVERIFY(likelihood.ratio(95) < likelihood.ratio(15));
    }
    void amplitudesNearTheOneFollowedCountAsMarks()
    {
        for (const double amplitude : {0.55, 1.0, 2.0}) {
            const float ratio = heard(amplitude, 50, 20, 0.4).ratio(20);
            QVERIFY2(ratio > 4.0F, qPrintable(QString::number(ratio)));
        }
    }
    void besideAnEchoWhatIsWeakIsNoMark()
    {
        const auto ratio = [](double amplitude, bool hasEcho) {
            MarkLikelihood likelihood;
            Level level;
            level.signal = 1.0;
            level.noise = 0.01;
            level.hasEcho = hasEcho;
            likelihood.setLevel(level);
            for (int n = 0; n < 20; ++n)
                likelihood.push(amplitude);
            return likelihood.ratio(20);
        };
        for (const double amplitude : {0.25, 0.35, 0.5}) {
            QVERIFY(ratio(amplitude, false) > 4.0F);
            QVERIFY(ratio(amplitude, true) < -4.0F);
        }
        QVERIFY(ratio(0.8, true) > 4.0F);
        QVERIFY(ratio(1.0, true) > 4.0F);
    }
    void aKnownPhaseHelpsOnlyTheMarkThatHasIt()
    {
        // A weak mark on phase 0.
        const auto ratio = [](double phase, double concentration) {
            MarkLikelihood likelihood;
            likelihood.setLevel({1.0, 2.0});
            likelihood.setPhase(phase, concentration);
            for (int n = 0; n < 15; ++n)
                likelihood.push(1.0);
            return likelihood.ratio(15);
        };
        QVERIFY(ratio(0.0, 5.0) > ratio(0.0, 0.0) + 1.0F);
        QVERIFY(ratio(3.1, 5.0) < ratio(0.0, 0.0));
        QVERIFY(ratio(3.1, 5.0) > ratio(0.0, 0.0) - 5.0F); // it may still be another phase
    }
    void aCrashOfStaticIsNoMark()
    {
        MarkLikelihood quiet;
        MarkLikelihood crash;
        for (MarkLikelihood* likelihood : {&quiet, &crash})
            likelihood->setLevel({1.0, 0.1});
        for (int n = 0; n < 15; ++n) {
            quiet.push(1.0);
            crash.push(1.0, 20.0);
        }
        QVERIFY(quiet.ratio(15) > 50.0F);
        QVERIFY(crash.ratio(15) < 3.0F);
    }
    void aStrongMarkMayDriftInPhase()
    {
        MarkLikelihood likelihood;
        likelihood.setLevel({1.0, 0.05});
        for (int n = 0; n < 45; ++n) // 2 Hz off, a third of a turn over a dash
            likelihood.push(std::polar(1.0, 0.05 * n));
        QVERIFY(likelihood.ratio(45) > 200.0F);
    }
    void moreThanWasHeardIsImpossible()
    {
        const MarkLikelihood likelihood = heard(1.0, 0, 10, 0.1);
        QVERIFY(likelihood.ratio(11) < -1e6F);
    }
    void aMarkOnItsOwnPhaseIsWorthTheSameWhateverWasExpected()
    {
        // The phase expected is corrected while the mark lasts; it is of no use to this one.
        MarkLikelihood steady;
        MarkLikelihood corrected;
        for (MarkLikelihood* likelihood : {&steady, &corrected}) {
            likelihood->setLevel({1.0, 0.5});
            for (int n = 0; n < 30; ++n) {
                if (likelihood == &corrected && n % 8 == 0)
                    likelihood->setPhase(0.7 * n, 0.0);
                likelihood->push(1.0);
            }
        }
        QCOMPARE(corrected.ratio(30), steady.ratio(30));
    }
    void evidenceIsTheSameAfterAnHour()
    {
        MarkLikelihood fresh;
        MarkLikelihood old;
        for (MarkLikelihood* likelihood : {&fresh, &old}) {
            likelihood->setLevel({1.0, 0.2});
            for (int n = likelihood == &old ? -900000 : -300; n < 0; ++n)
                likelihood->push(1.0);
            for (int n = 0; n < 600; ++n)
                likelihood->push(n < 585 ? 0.0 : 1.0);
        }
        QVERIFY(std::fabs(old.ratio(15) - fresh.ratio(15)) < 0.02F);
    }
    void sumsAreOfTheStepsAskedFor()
    {
        MarkLikelihood likelihood;
        for (int n = 0; n < 5000; ++n)
            likelihood.push({static_cast<double>(n), 1.0});
        QCOMPARE(likelihood.sum(4990, 4993), std::complex<double>(4990.0 + 4991.0 + 4992.0, 3.0));
        const std::int64_t oldest = 5000 - MarkLikelihood::KEPT_STEPS;
        QCOMPARE(likelihood.sum(oldest, oldest + 1).real(), static_cast<double>(oldest));
        QCOMPARE(likelihood.advance(4990, 4992, 2), std::complex<double>(0.0));
    }
    void theAdvanceOfPhaseShowsAToneThatIsOff()
    {
        MarkLikelihood likelihood;
        for (int n = 0; n < 40; ++n)
            likelihood.push(std::polar(1.0, 0.05 * n));
        QVERIFY(std::fabs(std::arg(likelihood.advance(0, 40, 5)) - 0.25) < 1e-6);
    }
    void atTheEvenMagnitudeADotIsAsLikelyAsNone_data()
    {
        QTest::addColumn<double>("noise");
        QTest::newRow("weak") << 2.0;
        QTest::newRow("middling") << 0.6;
        QTest::newRow("strong") << 0.3;
    }
    void atTheEvenMagnitudeADotIsAsLikelyAsNone()
    {
        QFETCH(double, noise);
        const Level level = {1.0, noise, 15.0};
        const auto ratio = [&level](double magnitude) {
            MarkLikelihood likelihood;
            likelihood.setLevel(level);
            for (int n = 0; n < 15; ++n)
                likelihood.push(magnitude);
            return likelihood.ratio(15);
        };
        const double even = evenMagnitude(level);
        QVERIFY(even > 0.0 && even < 1.0);
        QVERIFY2(std::fabs(ratio(even)) < 0.7F, qPrintable(QString::number(ratio(even))));
        QVERIFY(ratio(1.2 * even) > 1.0F);
        QVERIFY(ratio(0.8 * even) < -1.0F);
    }
    void silenceHasAnEvenMagnitude()
    {
        QVERIFY(std::isfinite(evenMagnitude({0.0, 0.0, 0.0})));
        QVERIFY(std::isfinite(evenMagnitude({1.0, 0.0, 15.0})));
    }
    void silenceGivesNumbers()
    {
        MarkLikelihood likelihood;
        likelihood.setLevel({0.0, 0.0});
        for (int n = 0; n < 40; ++n)
            likelihood.push(0.0);
        QVERIFY(std::isfinite(likelihood.ratio(20)));
    }
};

QTEST_APPLESS_MAIN(tst_MarkLikelihood)
#include "tst_marklikelihood.moc"
