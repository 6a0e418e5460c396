// SPDX-License-Identifier: MIT
#include "signal/samples/powerspectra.h"

#include "support/keyer.h"

#include <QtTest>
#include <algorithm>
#include <cmath>

using demodulator::PowerSpectra;

namespace {

std::vector<float> tone(std::size_t length, double bin, double size, double amplitude)
{
    std::vector<float> samples;
    for (std::size_t n = 0; n < length; ++n) {
        const double phase = 6.283185307179586 * bin * static_cast<double>(n) / size;
        samples.push_back(static_cast<float>(amplitude * std::cos(phase)));
    }
    return samples;
}

} // namespace

class tst_PowerSpectra : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theWindowRisesAndFallsSymmetrically()
    {
        const demodulator::Window window(64);
        for (std::size_t n = 0; n < 32; ++n)
            QCOMPARE(window.values[n], window.values[63 - n]);
        QVERIFY(std::is_sorted(window.values.begin(), window.values.begin() + 32));
        QVERIFY(std::fabs(window.sum - 32.0) < 1e-9);
        QVERIFY(std::fabs(window.squares - 24.0) < 1e-9);
    }
    void aToneHasTheSquareOfTheWindowsSumInItsBin()
    {
        PowerSpectra spectra(256, 1024, 4);
        spectra.push(tone(256, 100.0, 1024.0, 2.0).data());
        const float* const powers = spectra.frame(0);
        const auto peak = std::max_element(powers, powers + spectra.bins()) - powers;
        QCOMPARE(peak, std::ptrdiff_t{100});
        // Half of the amplitude 2 lies at the positive frequency.
        const double expected = spectra.window().sum * spectra.window().sum;
        QVERIFY(std::fabs(static_cast<double>(powers[100]) / expected - 1.0) < 0.001);
    }
    void noiseHasTheWindowsSquaresInEveryBin()
    {
        PowerSpectra spectra(256, 256, 400);
        const auto samples = testsupport::noise(13.0, 0.1, 8000.0, "spectra");
        for (std::size_t at = 0; at + 256 <= samples.size(); at += 256)
            spectra.push(samples.data() + at);
        double sum = 0.0;
        for (std::int64_t age = 0; age < spectra.frames(); ++age) {
            for (std::size_t bin = 4; bin < 124; ++bin)
                sum += static_cast<double>(spectra.frame(age)[bin]);
        }
        const double mean = sum / (120.0 * static_cast<double>(spectra.frames()));
        QVERIFY(std::fabs(mean / (0.01 * spectra.window().squares) - 1.0) < 0.03);
    }
    void theNewestFramesAreKeptInTheirOrder()
    {
        PowerSpectra spectra(64, 64, 3);
        QCOMPARE(spectra.available(10), std::int64_t{0});
        for (int i = 1; i <= 5; ++i)
            spectra.push(tone(64, 8.0, 64.0, i).data());
        QCOMPARE(spectra.frames(), std::int64_t{5});
        QCOMPARE(spectra.available(10), std::int64_t{3});
        QCOMPARE(spectra.available(2), std::int64_t{2});
        const auto unit = static_cast<double>(spectra.frame(0)[8]) / 25.0;
        QVERIFY(std::fabs(static_cast<double>(spectra.frame(1)[8]) / unit - 16.0) < 0.01);
        QVERIFY(std::fabs(static_cast<double>(spectra.frame(2)[8]) / unit - 9.0) < 0.01);
    }
};

QTEST_APPLESS_MAIN(tst_PowerSpectra)
#include "tst_powerspectra.moc"
