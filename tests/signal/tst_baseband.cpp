// SPDX-License-Identifier: MIT
#include "signal/morse/baseband.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

SampleHistory tone(double tone_Hz, double amplitude)
{
    SampleHistory history(8192);
    for (int n = 0; n < 8000; ++n) {
        const auto sample =
            static_cast<float>(amplitude * std::sin(6.283185307179586 * tone_Hz * n / 8000.0));
        history.push(&sample, 1);
    }
    return history;
}

} // namespace

class tst_Baseband : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theToneStandsStillAtHalfItsAmplitude()
    {
        const SampleHistory history = tone(700.0, 0.5);
        Baseband baseband(8000.0, 700.0);
        std::complex<double> first;
        for (int step = 0; step < 200; ++step) {
            const std::complex<double> value = baseband.step(history, step).value;
            if (step == 10)
                first = value;
            if (step > 10) {
                QVERIFY(std::fabs(std::abs(value) - 0.25) < 0.01);
                QVERIFY(std::abs(value - first) < 0.02);
            }
        }
    }
    void aToneOf300HzAsideIsGone()
    {
        const SampleHistory history = tone(1000.0, 0.5);
        Baseband baseband(8000.0, 700.0);
        for (int step = 0; step < 200; ++step) {
            const std::complex<double> value = baseband.step(history, step).value;
            QVERIFY(step < 10 || std::abs(value) < 0.01);
        }
    }
    void theToneCanBeChangedWithoutAJumpOfPhase()
    {
        const SampleHistory history = tone(700.0, 0.5);
        Baseband baseband(8000.0, 700.0);
        std::complex<double> last;
        for (int step = 0; step < 200; ++step) {
            if (step == 100)
                baseband.setTone(703.0);
            const std::complex<double> value = baseband.step(history, step).value;
            if (step > 10) // 3 Hz turn 0.075 rad a step
                QVERIFY(std::fabs(std::arg(value / last)) < 0.09);
            last = value;
        }
    }
    void theRestIsWhatIsNotTheTone()
    {
        const SampleHistory own = tone(700.0, 0.5);
        Baseband baseband(8000.0, 700.0);
        QVERIFY(baseband.step(own, 50).rest * baseband.stepSamples() < 0.01);
        const SampleHistory other = tone(1500.0, 0.5);
        const double rest = baseband.step(other, 50).rest * baseband.stepSamples();
        QVERIFY(std::fabs(rest - 0.125) < 0.01);
    }
    void stepsSayWhichSamplesTheyNeed()
    {
        Baseband baseband(8000.0, 700.0);
        QCOMPARE(baseband.stepSamples(), 32);
        QCOMPARE(baseband.neededEnd(10), std::int64_t(320 + 48));
    }
};

QTEST_APPLESS_MAIN(tst_Baseband)
#include "tst_baseband.moc"
