// SPDX-License-Identifier: MIT
#include "signal/teleprinter/spectrum.h"

#include "support/teleprinterkeyer.h"

#include <QtTest>
#include <cmath>

using namespace testsupport;
using namespace teleprinter;

namespace {

constexpr double RATE_Hz = 8000.0;

Spectrum spectrumOf(const std::vector<float>& samples, const SpectrumParameters& parameters = {})
{
    Spectrum spectrum(RATE_Hz, parameters);
    for (std::size_t at = 0; at + spectrum.length() <= samples.size();
         at += static_cast<std::size_t>(spectrum.hop()))
        spectrum.push(&samples[at]);
    return spectrum;
}

std::vector<float> keyed(const Machine& machine, TonePath path)
{
    path.before_s = path.after_s = 0.0;
    return teleprinterSound(teleprinterElements("THE QUICK BROWN FOX JUMPS OVER", machine, "x"),
                            path, RATE_Hz, "spectrum");
}

bool hasPair(const std::vector<TonesFound>& pairs, double centre_Hz, double shift_Hz,
             double tolerance_Hz)
{
    for (const TonesFound& found : pairs) {
        const ByTone<double>& pair = found.tones_Hz;
        if (std::fabs(pair[0] - centre_Hz + 0.5 * shift_Hz) < tolerance_Hz &&
            std::fabs(pair[1] - centre_Hz - 0.5 * shift_Hz) < tolerance_Hz)
            return true;
    }
    return false;
}

} // namespace

class tst_Spectrum : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bothTonesAreFound_data()
    {
        QTest::addColumn<double>("baud");
        QTest::addColumn<double>("shift_Hz");
        QTest::newRow("45.45 Bd, 170 Hz") << 45.45 << 170.0;
        QTest::newRow("50 Bd, 85 Hz") << 50.0 << 85.0;
        QTest::newRow("75 Bd, 850 Hz") << 75.0 << 850.0;
        QTest::newRow("tones within one hump") << 300.0 << 200.0;
    }
    void bothTonesAreFound()
    {
        QFETCH(double, baud);
        QFETCH(double, shift_Hz);
        Machine machine;
        machine.code = baud > 100.0 ? TeleprinterCode::Ascii8 : TeleprinterCode::Ita2;
        machine.baud = baud;
        TonePath path;
        path.centre_Hz = 1600.0;
        path.shift_Hz = shift_Hz;
        path.snr_dB = 15.0;
        const Spectrum spectrum = spectrumOf(keyed(machine, path));
        QVERIFY(hasPair(spectrum.pairs(Known(), baud, 8.0), 1600.0, shift_Hz, 0.25 * baud));
    }

    void whatIsKnownIsKeptTo()
    {
        TonePath path;
        path.centre_Hz = 1600.0;
        path.snr_dB = 15.0;
        const Spectrum spectrum = spectrumOf(keyed(Machine(), path));
        Known known;
        known.shift_Hz = 170.0;
        known.centre_Hz = 1620.0;
        QVERIFY(hasPair(spectrum.pairs(known, 45.45, 8.0), 1600.0, 170.0, 10.0));
        known.centre_Hz = 1900.0;
        QVERIFY(!hasPair(spectrum.pairs(known, 45.45, 8.0), 1600.0, 170.0, 10.0));
        known.centre_Hz.reset();
        known.shift_Hz = 450.0;
        QVERIFY(!hasPair(spectrum.pairs(known, 45.45, 8.0), 1600.0, 170.0, 10.0));
    }

    // As variance of a sample, with a signal in the middle of it.
    void noiseIsMeasuredBesideTheTones()
    {
        TonePath path;
        path.centre_Hz = 1600.0;
        std::vector<float> samples = keyed(Machine(), path);
        const std::vector<float> rest =
            noise(static_cast<double>(samples.size()) / RATE_Hz + 1.0, 0.3, RATE_Hz, "spectrum");
        double variance = 0.0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] += rest[i];
            variance += static_cast<double>(rest[i] * rest[i]);
        }
        variance /= static_cast<double>(samples.size());
        const double measured = spectrumOf(samples).noise(1515.0, 1685.0, 45.45, 8.0);
        QVERIFY2(std::fabs(10.0 * std::log10(measured / variance)) < 2.5,
                 qPrintable(QString("%1, %2").arg(measured).arg(variance)));
    }

    void onlyTheLastSecondsCount()
    {
        TonePath path;
        path.snr_dB = 20.0;
        std::vector<float> samples = keyed(Machine(), path);
        const std::vector<float> after = noise(4.0, 0.001, RATE_Hz, "spectrum");
        samples.insert(samples.end(), after.begin(), after.end());
        const Spectrum spectrum = spectrumOf(samples);
        QVERIFY(hasPair(spectrum.pairs(Known(), 45.45, 8.0), 1500.0, 170.0, 10.0));
        QVERIFY(!hasPair(spectrum.pairs(Known(), 45.45, 3.0), 1500.0, 170.0, 10.0));
    }
};

QTEST_GUILESS_MAIN(tst_Spectrum)
#include "tst_spectrum.moc"
