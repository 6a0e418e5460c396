// SPDX-License-Identifier: MIT
#include "signal/band/narrowsound.h"

#include "signal/numbers.h"

#include <QTest>

#include <cmath>

using namespace demodulator;

namespace {

// A bank that has heard a tone of amplitude 1.
void hear(StepBank& bank, const BandFormat& format, double tone_Hz, std::int64_t steps)
{
    const auto step = static_cast<std::int64_t>(bank.stepSamples());
    const auto length = static_cast<std::int64_t>(bank.windowSamples());
    std::vector<std::complex<float>> window(bank.windowSamples());
    for (std::int64_t n = 0; n < steps; ++n) {
        for (std::int64_t i = 0; i < length; ++i) {
            const double at = static_cast<double>(n * step - length / 2 + i);
            const std::complex<double> value =
                std::polar(1.0, 2.0 * PI * tone_Hz / format.rate_Hz * at);
            window[static_cast<std::size_t>(i)] =
                format.isComplex ? std::complex<float>(value)
                                 : std::complex<float>(static_cast<float>(value.real()), 0.0F);
        }
        bank.compute(n, window.data());
    }
}

} // namespace

class tst_NarrowSound : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void toneKeepsLevelFrequencyAndPhase_data()
    {
        QTest::addColumn<double>("rate_Hz");
        QTest::addColumn<bool>("isComplex");
        QTest::addColumn<double>("tone_Hz");
        QTest::addColumn<double>("width_Hz");
        QTest::newRow("sound") << 8000.0 << false << 1234.5 << 900.0;
        QTest::newRow("I/Q") << 48000.0 << true << 10432.1 << 900.0;
        QTest::newRow("I/Q, below the centre") << 48000.0 << true << -7321.7 << 900.0;
        QTest::newRow("odd rate") << 44100.0 << true << 3333.3 << 900.0;
        QTest::newRow("as wide as it may be") << 48000.0 << true << 10432.1 << MOST_NARROW_Hz;
    }
    void toneKeepsLevelFrequencyAndPhase()
    {
        QFETCH(double, rate_Hz);
        QFETCH(bool, isComplex);
        QFETCH(double, tone_Hz);
        QFETCH(double, width_Hz);
        const BandFormat format = {rate_Hz, isComplex};
        StepBank bank(format, 2.0);
        hear(bank, format, tone_Hz, 250);
        constexpr std::int64_t BEGIN = 20;
        NarrowSound narrow(bank, tone_Hz - 0.4 * width_Hz, tone_Hz + 0.6 * width_Hz, BEGIN);
        std::vector<float> samples;
        narrow.read(100, samples);
        narrow.read(250, samples);
        QVERIFY(samples.size() > 3000);
        for (std::size_t n = 128; n < samples.size(); ++n) {
            const double t_s = narrow.begin_s() + static_cast<double>(n) / narrow.rate_Hz();
            // What is taken off the frequency is taken off the phase since the first sample.
            const double expected = std::cos(2.0 * PI * (tone_Hz - narrow.base_Hz()) * t_s);
            QVERIFY2(std::fabs(static_cast<double>(samples[n]) - expected) < 0.01,
                     qPrintable(QString("%1: %2, not %3").arg(n).arg(samples[n]).arg(expected)));
        }
    }

    void toneOutsideIsLeftOut()
    {
        const BandFormat format = {48000.0, true};
        StepBank bank(format, 2.0);
        hear(bank, format, 2000.0, 200);
        NarrowSound narrow(bank, 3000.0, 4000.0, 20);
        std::vector<float> samples;
        narrow.read(200, samples);
        for (std::size_t n = 64; n < samples.size(); ++n)
            QVERIFY(std::fabs(samples[n]) < 0.02F);
    }
};

QTEST_APPLESS_MAIN(tst_NarrowSound)
#include "tst_narrowsound.moc"
