// SPDX-License-Identifier: MIT
#include "signal/teleprinter/tonepair.h"

#include "signal/numbers.h"

#include <QtTest>

#include <cmath>
#include <vector>

using namespace teleprinter;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr std::int64_t COUNT = 1600;
constexpr ByTone<double> TONES_Hz = {1000.0, 1200.0};

// A history that has heard one tone of amplitude 1.
demodulator::SampleHistory heard(double tone_Hz)
{
    std::vector<float> samples;
    for (std::int64_t n = 0; n < COUNT; ++n)
        samples.push_back(static_cast<float>(
            std::cos(2.0 * demodulator::PI * tone_Hz / RATE_Hz * static_cast<double>(n))));
    demodulator::SampleHistory history(samples.size());
    history.push(samples.data(), samples.size());
    return history;
}

} // namespace

class tst_TonePair : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void toneThatIsOnFillsItsFilterAlone()
    {
        const auto history = heard(TONES_Hz[MARK]);
        const TonePair tones(history, RATE_Hz, TONES_Hz, 0, COUNT);
        // 40 ms: whole turns of what is left of the other tone.
        QVERIFY(std::fabs(std::abs(tones.sum(MARK, 160.0, 480.0)) - 160.0) < 0.1);
        QVERIFY(std::abs(tones.sum(SPACE, 160.0, 480.0)) < 0.1);
    }

    void sumsOfNeighboursAddUp()
    {
        const auto history = heard(1100.0);
        const TonePair tones(history, RATE_Hz, TONES_Hz, 0, COUNT);
        const auto parts = tones.sum(MARK, 10.25, 77.5) + tones.sum(MARK, 77.5, 300.75);
        QVERIFY(std::abs(parts - tones.sum(MARK, 10.25, 300.75)) < 1e-9);
    }

    void laterSpanHasThePhaseOfTheWhole()
    {
        const auto history = heard(1190.0);
        const TonePair whole(history, RATE_Hz, TONES_Hz, 0, COUNT);
        const TonePair later(history, RATE_Hz, TONES_Hz, 333, COUNT);
        QVERIFY(std::abs(later.sum(MARK, 400.0, 700.0) - whole.sum(MARK, 400.0, 700.0)) < 1e-3);
    }

    void whatLiesOutsideIsSilence()
    {
        const auto history = heard(1200.0);
        const TonePair tones(history, RATE_Hz, TONES_Hz, 400, 800);
        QCOMPARE(tones.sum(MARK, 0.0, 400.0), std::complex<double>(0.0));
        QCOMPARE(tones.sum(MARK, 800.0, 1200.0), std::complex<double>(0.0));
        QCOMPARE(tones.sum(MARK, 0.0, 1600.0), tones.sum(MARK, 400.0, 800.0));
    }
};

QTEST_APPLESS_MAIN(tst_TonePair)
#include "tst_tonepair.moc"
