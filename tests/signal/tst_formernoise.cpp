// SPDX-License-Identifier: MIT
#include "signal/band/formernoise.h"

#include "support/bandfilling.h"
#include "support/random.h"

#include <QtTest>

#include <cmath>
#include <vector>

using namespace demodulator;

namespace {

constexpr std::int64_t SPAN = FormerNoise::SPAN_FRAMES;

// Where half of the frames, in turn, are keyed.
double keyed(std::int64_t frame)
{
    return frame % 6 < 3 ? 1000.0 : 1.0;
}

double falling(std::int64_t frame)
{
    return frame < 100 ? 100.0 : 1.0;
}

} // namespace

class tst_FormerNoise : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void keyingDoesNotCount()
    {
        FormerNoise noise;
        for (std::int64_t frame = 50; frame < 150; ++frame)
            QVERIFY(noise.at(frame, 0, 200, keyed) < 3.0);
    }
    void upToTheFallItIsWhatItWas()
    {
        FormerNoise noise;
        for (std::int64_t frame = 50; frame < 100; ++frame)
            QVERIFY2(noise.at(frame, 0, 200, falling) >= 100.0, qPrintable(QString::number(frame)));
    }
    void aSecondAfterTheFallItIsWhatItIs()
    {
        FormerNoise noise;
        for (std::int64_t frame = 100 + SPAN; frame < 160; ++frame)
            QVERIFY(noise.at(frame, 0, 200, falling) < 3.0);
    }
    // By what the search guesses from one spectrum, which is rough.
    void ofEvenNoiseItIsTheNoise()
    {
        constexpr double RATE_Hz = 8000.0;
        constexpr double DURATION_s = 30.0;
        const BandFormat format = {RATE_Hz, false};
        testsupport::Random random("even");
        std::vector<float> samples(static_cast<std::size_t>(DURATION_s * RATE_Hz));
        for (float& sample : samples)
            sample = static_cast<float>(random.gauss());
        StepBank bank(format, DURATION_s);
        Survey survey(format, bank.stepSamples());
        const std::int64_t newest =
            testsupport::fill(bank, survey, samples) / Survey::HOP_STEPS - 1;
        const std::int64_t oldest = newest - Survey::KEPT_FLOORS + 1;
        double sum_dB = 0.0;
        int count = 0;
        for (double tone_Hz = 500.0; tone_Hz < 3500.0; tone_Hz += 100.0) {
            FormerNoise noise;
            for (std::int64_t frame = oldest + SPAN; frame < newest - SPAN; ++frame, ++count)
                sum_dB +=
                    10.0 * std::log10(noise.at(frame, oldest, newest, [&](std::int64_t asked) {
                        return survey.noiseIn(asked, tone_Hz);
                    }) / survey.noise(tone_Hz));
        }
        const double mean_dB = sum_dB / count;
        QVERIFY2(std::abs(mean_dB) < 0.5, qPrintable(QString::number(mean_dB)));
    }
    void eachFrameIsAskedForOnceAndOnlyIfItIsThere()
    {
        FormerNoise noise;
        std::vector<std::int64_t> asked;
        const auto floorOf = [&asked](std::int64_t frame) {
            asked.push_back(frame);
            return 1.0;
        };
        QVERIFY(noise.at(20, 10, 30, floorOf) > 0.0);
        QCOMPARE(asked.size(), std::size_t{21}); // 10 to 30
        QVERIFY(noise.at(20, 10, 31, floorOf) > 0.0);
        QCOMPARE(asked.size(), std::size_t{21});
        QVERIFY(noise.at(21, 10, 31, floorOf) > 0.0);
        QCOMPARE(asked.size(), std::size_t{22});
        QCOMPARE(asked.back(), std::int64_t{31});
    }
    void withoutFramesThereIsNone()
    {
        FormerNoise noise;
        QCOMPARE(noise.at(5, 10, 9, keyed), 0.0);
    }
};

QTEST_APPLESS_MAIN(tst_FormerNoise)
#include "tst_formernoise.moc"
