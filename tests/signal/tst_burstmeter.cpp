// SPDX-License-Identifier: MIT
#include "signal/morse/burstmeter.h"

#include "signal/timing.h"

#include <QtTest>
#include <cmath>

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
};

QTEST_APPLESS_MAIN(tst_BurstMeter)
#include "tst_burstmeter.moc"
