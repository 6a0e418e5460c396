// SPDX-License-Identifier: MIT
#include "signal/morse/tonefinder.h"

#include "support/keyer.h"
#include "support/othersounds.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

ToneFinder heard(const std::vector<float>& samples)
{
    ToneFinder finder(8000.0);
    for (std::size_t at = 0; at + finder.frameLength() <= samples.size(); at += finder.hop())
        finder.push(samples.data() + at);
    return finder;
}

std::vector<float> keyed(double tone_Hz, std::optional<double> snr_dB, const char* name)
{
    testsupport::Hand hand;
    testsupport::Path path;
    path.tone_Hz = tone_Hz;
    path.snr_dB = snr_dB;
    path.before_s = 0.0;
    path.after_s = 0.0;
    return testsupport::sound("PARIS", hand, path, 8000.0, name);
}

} // namespace

class tst_ToneFinder : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aKeyedToneIsFoundToAFewHertz_data()
    {
        QTest::addColumn<double>("tone_Hz");
        QTest::addColumn<double>("snr_dB");
        QTest::addColumn<double>("tolerance_Hz");
        QTest::newRow("low and strong") << 250.0 << 20.0 << 2.0;
        QTest::newRow("between two bins") << 703.3 << 20.0 << 2.0;
        QTest::newRow("high") << 2900.0 << 20.0 << 2.0;
        QTest::newRow("0 dB") << 612.0 << 0.0 << 5.0;
    }
    void aKeyedToneIsFoundToAFewHertz()
    {
        QFETCH(double, tone_Hz);
        QFETCH(double, snr_dB);
        QFETCH(double, tolerance_Hz);
        const ToneFinder finder = heard(keyed(tone_Hz, snr_dB, "finder"));
        const auto found = finder.find(94, {150.0, 3500.0});
        QVERIFY(found.has_value());
        QVERIFY(std::fabs(found->tone_Hz - tone_Hz) < tolerance_Hz);
    }
    void levelAndNoiseAreThoseOfTheSignal()
    {
        // At the end all is scaled to a peak of 0.9, so look at the ratio only.
        const ToneFinder finder = heard(keyed(700.0, 10.0, "level"));
        const auto found = finder.find(94, {150.0, 3500.0});
        QVERIFY(found.has_value());
        // A^2/2 over the noise in 500 Hz, with level = A^2/4 and noise = that of 4000 Hz.
        const double ratio = 2.0 * found->level / (found->noise / 8.0);
        QVERIFY2(ratio > 5.0 && ratio < 20.0, qPrintable(QString::number(ratio)));
    }
    void theLevelIsThatOfTheKeyDownInNoiseToo()
    {
        constexpr double AMPLITUDE = 0.03;
        std::vector<float> samples = testsupport::noise(8.0, 0.1, 8000.0, "level in noise");
        for (std::size_t n = 0; n < samples.size(); ++n) {
            if ((n / 1024) % 2 == 0)
                samples[n] += static_cast<float>(
                    AMPLITUDE * std::sin(6.283185307 * 750.0 * static_cast<double>(n) / 8000.0));
        }
        const auto found = heard(samples).find(ToneFinder::KEPT_FRAMES, {700.0, 800.0});
        QVERIFY(found);
        const double level = found->level / (0.25 * AMPLITUDE * AMPLITUDE);
        QVERIFY2(std::fabs(level - 1.0) < 0.3, qPrintable(QString::number(level)));
    }
    void noiseHasNoTone()
    {
        int found = 0;
        for (int i = 0; i < 20; ++i) {
            const auto samples = testsupport::noise(3.0, 0.1, 8000.0, "finder" + std::to_string(i));
            if (const auto candidate = heard(samples).find(94, {150.0, 3500.0}))
                found += candidate->swing > 4.0 ? 1 : 0;
        }
        QCOMPARE(found, 0);
    }
    void aSteadyCarrierIsNoKeyedTone()
    {
        std::vector<float> samples = testsupport::noise(3.0, 0.05, 8000.0, "carrier");
        for (std::size_t n = 0; n < samples.size(); ++n)
            samples[n] += static_cast<float>(0.5 * std::sin(6.283185307 * 800.0 * n / 8000.0));
        const auto found = heard(samples).find(80, {150.0, 3500.0});
        QVERIFY(!found || std::fabs(found->tone_Hz - 800.0) > 50.0);
    }
    // A click swings as keying does, but a tone has to be there for longer.
    void aToneThatIsHardlyThereIsNotFound()
    {
        const auto isFound = [](double length_s) {
            std::vector<float> samples = testsupport::noise(8.0, 0.05, 8000.0, "click");
            const std::size_t end = 8000 + static_cast<std::size_t>(8000.0 * length_s);
            for (std::size_t n = 8000; n < end; ++n)
                samples[n] += static_cast<float>(
                    0.0245 * std::sin(6.283185307 * 800.0 * static_cast<double>(n) / 8000.0));
            return heard(samples).find(ToneFinder::KEPT_FRAMES, {780.0, 820.0}).has_value();
        };
        QVERIFY(!isFound(0.1));
        QVERIFY(isFound(1.0));
    }
    void silenceAndOneFrameGiveNothing()
    {
        ToneFinder finder(8000.0);
        QVERIFY(!finder.find(94, {150.0, 3500.0}));
        QCOMPARE(finder.noiseNear(700.0, 50), 0.0);
        const std::vector<float> silence(finder.frameLength(), 0.0F);
        for (int i = 0; i < 50; ++i)
            finder.push(silence.data());
        QVERIFY(!finder.find(94, {150.0, 3500.0}));
        QCOMPARE(finder.noiseNear(700.0, 50), 0.0);
    }
    void theFloorOfAFrameIsThatOfItsTime()
    {
        std::vector<float> samples = testsupport::noise(4.0, 0.1, 8000.0, "floor");
        for (std::size_t n = 16000; n < samples.size(); ++n)
            samples[n] *= 0.1F;
        const ToneFinder finder = heard(samples);
        const auto mean = [&finder](std::int64_t from, std::int64_t to) {
            double sum = 0.0;
            for (std::int64_t age = from; age < to; ++age)
                sum += finder.floorNear(700.0, age) / static_cast<double>(to - from);
            return sum;
        };
        QVERIFY(std::fabs(mean(5, 45) / 0.0001 - 1.0) < 0.2);
        QVERIFY(std::fabs(mean(70, 110) / 0.01 - 1.0) < 0.2);
        QVERIFY(finder.floorNear(700.0, 0) > 0.0);
        QCOMPARE(finder.floorNear(700.0, -1), 0.0);
        QCOMPARE(finder.floorNear(700.0, ToneFinder::KEPT_FRAMES), 0.0);
    }
    void twoTonesInTurnAreComplements()
    {
        QVERIFY(
            heard(testsupport::teleprinter(4.0, 1000.0, 8000.0, "two")).hasComplement(1085.0, 94));
        testsupport::Path path;
        path.snr_dB = 20.0;
        path.neighbours = {{300.0, -3.0, 24.0}};
        QVERIFY(!heard(testsupport::sound("PARIS PARIS PARIS", {}, path, 8000.0, "one"))
                     .hasComplement(700.0, 94));
    }
    void tonesOfATuneTakeTurns()
    {
        // Notes of a fifth of a second, one after the other.
        std::vector<float> samples = testsupport::noise(4.0, 0.02, 8000.0, "tune");
        const double notes_Hz[] = {700.0, 880.0, 1100.0, 880.0};
        const auto noteAt = [&notes_Hz](std::size_t n) { return notes_Hz[(n / 1600) % 4]; };
        for (std::size_t n = 0; n < samples.size(); ++n)
            samples[n] += static_cast<float>(
                0.3 * std::sin(6.283185307 * noteAt(n) * static_cast<double>(n) / 8000.0));
        const ToneFinder finder = heard(samples);
        for (const double tone_Hz : {700.0, 880.0, 1100.0})
            QVERIFY(finder.takesTurns(tone_Hz, 94));
        QVERIFY(!finder.takesTurns(700.0, 3)); // too few to say
    }
    void aKeyedToneTakesNoTurns()
    {
        QVERIFY(!heard(keyed(700.0, 20.0, "alone")).takesTurns(700.0, 94));
        testsupport::Path path;
        path.snr_dB = 20.0;
        path.neighbours = {{300.0, -3.0, 24.0}};
        QVERIFY(!heard(testsupport::sound("PARIS PARIS PARIS", {}, path, 8000.0, "two hands"))
                     .takesTurns(700.0, 94));
    }
    void aToneBesideAStrongerOneInTurnIsItsOwn()
    {
        // Their powers go against each other, but one is a tenth of the other: a click's, or noise
        // that a receiver's gain lets through when the key is up.
        std::vector<float> samples = testsupport::noise(4.0, 0.002, 8000.0, "gain");
        for (std::size_t n = 0; n < samples.size(); ++n) {
            const bool down = (n / 1600) % 2 == 0;
            const double t = static_cast<double>(n) / 8000.0;
            samples[n] += static_cast<float>(down ? 0.3 * std::sin(6.283185307 * 700.0 * t)
                                                  : 0.1 * std::sin(6.283185307 * 1100.0 * t));
        }
        const ToneFinder finder = heard(samples);
        QVERIFY(!finder.takesTurns(700.0, 94));
        QVERIFY(!finder.takesTurns(1100.0, 94));
    }
    // Recordings differ by many powers of ten, and there may be no noise at all.
    void howLoudTheSoundIsMakesNoDifference()
    {
        std::vector<float> samples = keyed(700.0, {}, "faint");
        const auto loud = heard(samples).find(94, {150.0, 3500.0});
        QVERIFY(loud);
        for (float& sample : samples)
            sample *= 1e-4F;
        const auto faint = heard(samples).find(94, {150.0, 3500.0});
        QVERIFY(faint);
        QVERIFY(std::fabs(faint->tone_Hz - loud->tone_Hz) < 0.1);
        QVERIFY(std::fabs(faint->swing / loud->swing - 1.0) < 0.01);
        QVERIFY(std::fabs(1e8 * faint->level / loud->level - 1.0) < 0.01);
    }
    void aComplementHasAFifthOfThePower_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<double>("share");
        QTest::addColumn<bool>("isComplement");
        for (const double scale : {0.9, 0.0009}) {
            QTest::addRow("half of it, at %g", scale) << scale << 0.5 << true;
            QTest::addRow("a twentieth, at %g", scale) << scale << 0.05 << false;
        }
    }
    void aComplementHasAFifthOfThePower()
    {
        QFETCH(double, scale);
        QFETCH(double, share);
        std::vector<float> samples(4 * 8000);
        for (std::size_t n = 0; n < samples.size(); ++n) {
            const double t = static_cast<double>(n) / 8000.0;
            samples[n] = static_cast<float>(
                scale * ((n / 1600) % 2 == 0
                             ? std::sin(6.283185307 * 700.0 * t)
                             : std::sqrt(share) * std::sin(6.283185307 * 1100.0 * t)));
        }
        QTEST(heard(samples).hasComplement(700.0, 94), "isComplement");
    }
    // Of the time asked for, what there is.
    void tonesThatNeverGoAwayEntirelyTakeTurnsToo()
    {
        std::vector<float> samples = testsupport::noise(4.0, 0.002, 8000.0, "half");
        for (std::size_t n = 0; n < samples.size(); ++n) {
            const bool isFirst = (n / 1600) % 2 == 0;
            const double t = static_cast<double>(n) / 8000.0;
            samples[n] +=
                static_cast<float>((isFirst ? 0.3 : 0.15) * std::sin(6.283185307 * 700.0 * t) +
                                   (isFirst ? 0.15 : 0.3) * std::sin(6.283185307 * 1100.0 * t));
        }
        const ToneFinder finder = heard(samples);
        for (const std::int64_t count : {std::int64_t{94}, std::int64_t{100000}}) {
            QVERIFY(finder.takesTurns(700.0, count));
            QVERIFY(finder.takesTurns(1100.0, count));
        }
    }
    void thePowerOfATimeIsThatOfItsFramesAlone()
    {
        // Half a second each of a tone, silence, the tone at twice the amplitude.
        std::vector<float> samples(12000);
        for (std::size_t n = 0; n < samples.size(); ++n) {
            const double amplitude = n < 4000 ? 0.2 : n < 8000 ? 0.0 : 0.4;
            samples[n] = static_cast<float>(
                amplitude * std::sin(6.283185307 * 750.0 * static_cast<double>(n) / 8000.0));
        }
        const ToneFinder finder = heard(samples);
        QCOMPARE(finder.frames(), std::int64_t(45));
        const double first = finder.power(750.0, 32, 10);
        const double last = finder.power(750.0, 0, 10);
        QVERIFY(first > 0.0);
        QVERIFY(std::fabs(last / first - 4.0) < 0.01);
        QVERIFY(finder.power(750.0, 18, 8) < 1e-6 * first);
        // Of more than there is, what there is; of what is not there, nothing.
        QVERIFY(std::fabs(finder.power(750.0, 32, 1000) / first - 1.0) < 0.01);
        QCOMPARE(finder.power(750.0, 45, 10), 0.0);
        QVERIFY(std::fabs(finder.power(750.0, 9, 2) / finder.power(750.0, 10, 1) - 1.0) < 0.01);
    }
    void whatStaysWhileTheKeyIsUpIsSeenInTheGaps()
    {
        std::vector<float> samples = testsupport::noise(6.0, 0.02, 8000.0, "gaps");
        const double ofNoise = heard(samples).noiseNear(700.0, 150);
        const auto with = [&samples](double up) {
            std::vector<float> sound = samples;
            for (std::size_t n = 0; n < sound.size(); ++n)
                sound[n] += static_cast<float>(
                    ((n / 4000) % 2 == 0 ? 0.3 : up) *
                    std::sin(6.283185307 * 700.0 * static_cast<double>(n) / 8000.0));
            return heard(sound).noiseInGaps(700.0, 150);
        };
        QVERIFY(with(0.0) < ofNoise);
        // A carrier below the keyed one, of a hundredth of its power.
        const double carrier = with(0.03);
        QVERIFY(carrier > 20.0 * ofNoise);
        QVERIFY(std::fabs(with(0.06) / carrier - 4.0) < 1.0);
    }
    void theFloorIsThatOfTheToneAndNotOfWhatIsBelow()
    {
        std::vector<float> samples = testsupport::noise(4.0, 0.01, 8000.0, "below");
        const double alone = heard(samples).floorNear(700.0, 20);
        for (std::size_t n = 0; n < samples.size(); ++n) {
            const double t = static_cast<double>(n) / 8000.0;
            for (double hum_Hz = 30.0; hum_Hz < 440.0; hum_Hz += 10.0)
                samples[n] +=
                    static_cast<float>(0.05 * std::sin(6.283185307 * hum_Hz * t + hum_Hz));
        }
        QVERIFY(std::fabs(heard(samples).floorNear(700.0, 20) / alone - 1.0) < 0.2);
    }
    void whatIsLeftOutIsNotFound()
    {
        testsupport::Path path;
        path.snr_dB = 20.0;
        path.neighbours = {{300.0, -6.0, 24.0}};
        const ToneFinder finder =
            heard(testsupport::sound("PARIS PARIS PARIS", {}, path, 8000.0, "left out"));
        const auto found = finder.find(94, {150.0, 3500.0}, {{650.0, 750.0}});
        QVERIFY(found);
        QVERIFY(std::fabs(found->tone_Hz - 1000.0) < 5.0);
        QVERIFY(!finder.find(94, {650.0, 750.0}, {{600.0, 800.0}}));
    }
};

QTEST_APPLESS_MAIN(tst_ToneFinder)
#include "tst_tonefinder.moc"
