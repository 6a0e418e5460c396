// SPDX-License-Identifier: MIT
#include "signal/morse/burstmeter.h"

#include "signal/timing.h"

#include <QtTest>
#include <cmath>
#include <limits>

using namespace demodulator;

namespace {

// Has heard 4 s of this power beside the tone.
BurstMeter used(double rest)
{
    BurstMeter meter({}, STEP_s, rest);
    for (int step = 0; step < 1000; ++step)
        meter.noiseOf(rest, rest);
    return meter;
}

} // namespace

class tst_BurstMeter : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void usualNoiseIsNoBurst()
    {
        BurstMeter meter = used(1.0);
        QCOMPARE(meter.noiseOf(1.0, 1.0), 0.0);
        QCOMPARE(meter.noiseOf(3.9, 1.0), 0.0);
    }
    void aBurstIsAsMuchNoiseAsItsPower()
    {
        BurstMeter meter = used(1.0);
        QCOMPARE(meter.noiseOf(50.0, 1.0), 50.0);
    }
    void whatAFilterTookAwayBesideTheToneIsAdded()
    {
        // Beside the tone there is a fifth of the noise that is near it.
        BurstMeter meter = used(1.0);
        const double noise = meter.noiseOf(50.0, 5.0);
        QVERIFY2(noise > 235.0 && noise < 250.0, QByteArray::number(noise).constData());
    }
    void manyBurstsDoNotBecomeUsual()
    {
        BurstMeter meter = used(1.0);
        for (int step = 0; step < 1000; ++step)
            meter.noiseOf(step % 20 == 0 ? 100.0 : 1.0, 1.0);
        QVERIFY(meter.noiseOf(100.0, 1.0) > 0.0);
        QVERIFY(meter.noiseOf(6.0, 1.0) > 0.0);
    }
    void noiseThatStaysHighBecomesUsual()
    {
        BurstMeter meter = used(1.0);
        for (int step = 0; step < 3000; ++step)
            meter.noiseOf(10.0, 10.0);
        QCOMPARE(meter.noiseOf(10.0, 10.0), 0.0);
    }
    void aSquelchIsNoMeasureOfWhatIsUsual()
    {
        BurstMeter meter = used(1.0);
        for (int step = 0; step < 3000; ++step)
            meter.noiseOf(0.001, 1.0);
        QCOMPARE(meter.noiseOf(1.0, 1.0), 0.0);
    }
    // A step says nothing when the noise of an open receiver is missing from it.
    void aMomentWithoutNoiseWasLost()
    {
        BurstMeter meter = used(1.0);
        for (int step = 1; step <= 12; ++step) // less than 50 ms
            QCOMPARE(meter.noiseOf(0.01, 1.0), std::numeric_limits<double>::infinity());
        QCOMPARE(meter.noiseOf(0.01, 1.0), 0.0); // it was no moment
        meter.noiseOf(1.0, 1.0);
        QCOMPARE(meter.noiseOf(0.01, 1.0), std::numeric_limits<double>::infinity());
        QCOMPARE(meter.noiseOf(0.011, 1.0), 0.0);
    }
    void aReceiverThatIsOftenMutedLosesNothing()
    {
        // One step of eight, and one of twelve.
        for (const int period : {8, 12}) {
            BurstMeter meter = used(1.0);
            double last = -1.0;
            for (int step = 1; step <= 24 * 100; ++step) {
                const double noise = meter.noiseOf(step % period == 0 ? 0.0 : 1.0, 1.0);
                if (step % period == 0)
                    last = noise;
                else
                    QCOMPARE(noise, 0.0);
            }
            QCOMPARE(last, period == 8 ? 0.0 : std::numeric_limits<double>::infinity());
        }
    }
    void atFirstItIsNotKnownWhetherNoiseIsMissing()
    {
        BurstMeter meter({}, STEP_s, 1.0);
        meter.noiseOf(1.0, 1.0);
        QCOMPARE(meter.noiseOf(0.0, 1.0), 0.0);
    }
};

QTEST_APPLESS_MAIN(tst_BurstMeter)
#include "tst_burstmeter.moc"
