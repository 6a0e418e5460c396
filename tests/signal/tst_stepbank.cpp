// SPDX-License-Identifier: MIT
#include "signal/band/stepbank.h"

#include "signal/numbers.h"
#include "support/random.h"

#include <QTest>

#include <cmath>

using namespace demodulator;
using testsupport::Random;

namespace {

using Samples = std::vector<std::complex<float>>;

// A tone of amplitude 1 whose phase is 0 at sample 0, of a band with or without Q.
Samples tone(double tone_Hz, const BandFormat& format, std::size_t count, std::int64_t first)
{
    Samples samples;
    for (std::size_t n = 0; n < count; ++n) {
        const double phase = 2.0 * PI * tone_Hz *
                             (static_cast<double>(first) + static_cast<double>(n)) / format.rate_Hz;
        samples.emplace_back(static_cast<float>(std::cos(phase)),
                             format.isComplex ? static_cast<float>(std::sin(phase)) : 0.0F);
    }
    return samples;
}

// Puts steps [0, count) of some samples, of which the first is the begin of step 0's window.
void fill(StepBank& bank, const Samples& samples, std::int64_t count)
{
    for (std::int64_t step = 0; step < count; ++step)
        bank.compute(step, &samples[static_cast<std::size_t>(step) * bank.stepSamples()]);
}

Samples windowed(const StepBank& bank, double tone_Hz, const BandFormat& format, std::int64_t steps)
{
    const std::size_t size =
        static_cast<std::size_t>(steps) * bank.stepSamples() + bank.windowSamples();
    return tone(tone_Hz, format, size, -static_cast<std::int64_t>(bank.windowSamples() / 2));
}

} // namespace

class tst_StepBank : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStepHasTheTonesAmplitudeAndItsPhaseInTheMiddle_data()
    {
        QTest::addColumn<double>("rate_Hz");
        QTest::addColumn<bool>("isComplex");
        QTest::newRow("sound at 8 kHz") << 8000.0 << false;
        QTest::newRow("sound at 44.1 kHz, whose step is no whole number of samples")
            << 44100.0 << false;
        QTest::newRow("I/Q at 12 kHz") << 12000.0 << true;
        QTest::newRow("I/Q at 192 kHz") << 192000.0 << true;
    }
    void aStepHasTheTonesAmplitudeAndItsPhaseInTheMiddle()
    {
        QFETCH(double, rate_Hz);
        QFETCH(bool, isComplex);
        const BandFormat format = {rate_Hz, isComplex};
        StepBank bank(format, 0.1);
        // Places between two filters 62.5 Hz apart.
        for (double tone_Hz = 1000.0; tone_Hz < 1065.0; tone_Hz += 4.1) {
            fill(bank, windowed(bank, tone_Hz, format, 2), 2);
            for (std::int64_t step = 0; step < 2; ++step) {
                const std::complex<double> value = bank.value(step, tone_Hz);
                const double expected = isComplex ? 1.0 : 0.5;
                QVERIFY2(std::fabs(std::abs(value) - expected) < 0.005 * expected,
                         qPrintable(QString::number(std::abs(value))));
                const double turned =
                    std::arg(value * std::polar(1.0, -2.0 * PI * tone_Hz * bank.step_s() *
                                                         static_cast<double>(step)));
                QVERIFY2(std::fabs(turned) < 0.01, qPrintable(QString::number(turned)));
            }
        }
    }

    void frequenciesBelowTheCentreAreHeard()
    {
        const BandFormat format = {48000.0, true};
        StepBank bank(format, 0.1);
        fill(bank, windowed(bank, -7010.0, format, 1), 1);
        QVERIFY(std::abs(bank.value(0, -7010.0)) > 0.99);
        QVERIFY(std::abs(bank.value(0, 7010.0)) < 0.01);
    }

    void aNeighbourLeavesLittle()
    {
        const BandFormat format = {48000.0, true};
        StepBank bank(format, 0.1);
        for (double offset_Hz = 180.0; offset_Hz < 3000.0; offset_Hz += 37.0) {
            fill(bank, windowed(bank, 5000.0 + offset_Hz, format, 1), 1);
            QVERIFY2(std::abs(bank.value(0, 5000.0)) < 0.03,
                     qPrintable(QString::number(offset_Hz)));
        }
    }

    // The signal goes from one filter to the next while it is heard.
    void aToneThatCrossesFiltersKeepsAmplitudeAndPhase()
    {
        const BandFormat format = {8000.0, true};
        StepBank bank(format, 2.0);
        constexpr std::int64_t STEPS = 400;
        constexpr double SWEEP_Hz_per_s = 60.0;
        Samples samples;
        const auto half = static_cast<double>(bank.windowSamples() / 2);
        const std::size_t size =
            static_cast<std::size_t>(STEPS) * bank.stepSamples() + bank.windowSamples();
        const auto phaseAt = [](double t) {
            return 2.0 * PI * (1000.0 * t + 0.5 * SWEEP_Hz_per_s * t * t);
        };
        for (std::size_t n = 0; n < size; ++n)
            samples.push_back(std::polar(
                1.0F, static_cast<float>(std::fmod(
                          phaseAt((static_cast<double>(n) - half) / format.rate_Hz), 2.0 * PI))));
        fill(bank, samples, STEPS);
        BandMixer mixer(bank);
        double mixed = 0.0; // phase of the mixing tone
        for (std::int64_t step = 0; step < STEPS; ++step) {
            const double t = static_cast<double>(step) * bank.step_s();
            const double tone_Hz = 1000.0 + SWEEP_Hz_per_s * t;
            const Step got = mixer.step(step, tone_Hz);
            QCOMPARE(got.tone_Hz, tone_Hz);
            QVERIFY(std::fabs(std::abs(got.value) - 1.0) < 0.01);
            const double error =
                std::remainder(std::arg(got.value) - (phaseAt(t) - mixed), 2.0 * PI);
            QVERIFY2(std::fabs(error) < 0.02, qPrintable(QString::number(error)));
            mixed += 2.0 * PI * tone_Hz * bank.step_s();
        }
    }

    // That is what the chain behind takes a step's noise for.
    void noiseOfASumOfStepsIsThatOfSoManySteps()
    {
        const BandFormat format = {8000.0, true};
        StepBank bank(format, 42.0);
        constexpr std::int64_t STEPS = 10000;
        Random random("noise");
        Samples samples(static_cast<std::size_t>(STEPS) * bank.stepSamples() +
                        bank.windowSamples());
        for (std::complex<float>& sample : samples)
            sample = {static_cast<float>(random.gauss()), static_cast<float>(random.gauss())};
        fill(bank, samples, STEPS);
        const double expected = 2.0 / static_cast<double>(bank.stepSamples()); // of one step
        double sums = 0.0;
        double rests = 0.0;
        for (std::int64_t begin = 0; begin < STEPS; begin += 20) {
            std::complex<double> sum = 0.0;
            BandMixer mixer(bank);
            for (std::int64_t step = begin; step < begin + 20; ++step) {
                const Step one = mixer.step(step, 1234.0);
                sum += one.value;
                rests += one.rest / static_cast<double>(STEPS);
            }
            sums += std::norm(sum) / static_cast<double>(STEPS);
        }
        QVERIFY2(std::fabs(sums / expected - 1.0) < 0.15, qPrintable(QString::number(sums)));
        QVERIFY2(std::fabs(rests / expected - 1.0) < 0.15, qPrintable(QString::number(rests)));
    }

    void aSignalIsNoRestButACrashIs()
    {
        const BandFormat format = {24000.0, true};
        StepBank bank(format, 0.1);
        Random random("rest");
        const auto withNoise = [&](Samples samples, double deviation) {
            for (std::complex<float>& sample : samples)
                sample += std::complex<float>(static_cast<float>(deviation * random.gauss()),
                                              static_cast<float>(deviation * random.gauss()));
            return samples;
        };
        const Samples silent(bank.windowSamples());
        fill(bank, withNoise(silent, 0.01), 1);
        const double quiet = bank.rest(0, 3000.0);
        fill(bank, withNoise(windowed(bank, 3000.0, format, 0), 0.01), 1);
        QVERIFY(bank.rest(0, 3000.0) < 4.0 * quiet);
        fill(bank, withNoise(silent, 0.1), 1);
        QVERIFY(bank.rest(0, 3000.0) > 20.0 * quiet);
    }
};

QTEST_APPLESS_MAIN(tst_StepBank)
#include "tst_stepbank.moc"
