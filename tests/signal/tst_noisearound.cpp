// SPDX-License-Identifier: MIT
#include "signal/morse/noisearound.h"

#include "support/keyer.h"

#include <QtTest>

#include <algorithm>

using namespace demodulator;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double TONE_Hz = 700.0;

// Frames of noise, each louder than the one before, so that every one has a floor of its own. From
// 50 to 54 there may be a crash.
ToneFinder risingNoise(std::int64_t frames, float crash = 1.0F)
{
    ToneFinder finder(RATE_Hz);
    const double duration_s = static_cast<double>(finder.frameLength()) / RATE_Hz + 0.001;
    const std::vector<float> noise = testsupport::noise(duration_s, 0.001, RATE_Hz, "rising");
    std::vector<float> frame(finder.frameLength());
    for (std::int64_t n = 0; n < frames; ++n) {
        const float level =
            (1.0F + 0.01F * static_cast<float>(n)) * (n >= 50 && n <= 54 ? crash : 1.0F);
        std::transform(noise.begin(), noise.begin() + static_cast<std::ptrdiff_t>(frame.size()),
                       frame.begin(), [level](float sample) { return sample * level; });
        finder.push(frame.data());
    }
    return finder;
}

double floorOf(const ToneFinder& finder, std::int64_t frame)
{
    return finder.floorNear(TONE_Hz, finder.frames() - 1 - frame);
}

} // namespace

class tst_NoiseAround : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void itIsThatOfTheMiddleOneOfTheFramesAround_data()
    {
        QTest::addColumn<int>("frames");
        QTest::addColumn<int>("frame");
        QTest::addColumn<int>("middle");
        // 15 on each side; of an even number of frames the upper one of the two in the middle.
        QTest::newRow("all are there") << 100 << 50 << 50;
        QTest::newRow("the newest: 85 to 100") << 101 << 100 << 93;
        QTest::newRow("the last with all") << 101 << 85 << 85;
        QTest::newRow("the next one: 71 to 100") << 101 << 86 << 86;
        QTest::newRow("the first: 0 to 15") << 100 << 0 << 8;
        QTest::newRow("the second: 0 to 16") << 100 << 1 << 8;
        QTest::newRow("the oldest kept: 44 to 59") << 300 << 44 << 52;
        QTest::newRow("forgotten, those around are not: 44 to 50") << 300 << 35 << 47;
        QTest::newRow("not there yet, those before are: 94 to 99") << 100 << 109 << 97;
    }
    void itIsThatOfTheMiddleOneOfTheFramesAround()
    {
        QFETCH(int, frames);
        QFETCH(int, frame);
        QFETCH(int, middle);
        const ToneFinder finder = risingNoise(frames);
        QVERIFY(floorOf(finder, middle) > floorOf(finder, middle - 1));
        NoiseAround noise;
        QCOMPARE(noise.at(finder, TONE_Hz, frame), floorOf(finder, middle));
        QCOMPARE(noise.at(finder, TONE_Hz, frame), floorOf(finder, middle)); // kept
    }
    void itFollowsFromFrameToFrame()
    {
        const ToneFinder finder = risingNoise(100);
        NoiseAround noise;
        for (std::int64_t frame = 30; frame < 80; ++frame)
            QCOMPARE(noise.at(finder, TONE_Hz, frame), floorOf(finder, frame));
    }
    void ofAMomentItIsThatOfTheFrameWhoseMiddleComesNext_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("frame");
        // Frames of 512 samples, one every 256; of 100 frames, 85 is the newest with all around it.
        QTest::newRow("the middle of one") << 256 + 20 * 256 << 79;
        QTest::newRow("just after it") << 256 + 20 * 256 - 1 << 80;
        QTest::newRow("just before the next older one") << 256 + 20 * 256 + 255 << 79;
        QTest::newRow("the middle of the newest") << 256 << 99;
        QTest::newRow("after it") << 10 << 99;
        QTest::newRow("an hour ago") << 8000 * 3600 << 99 - (8000 * 3600 - 256) / 256;
    }
    void ofAMomentItIsThatOfTheFrameWhoseMiddleComesNext()
    {
        QFETCH(int, before);
        QFETCH(int, frame);
        const ToneFinder finder = risingNoise(100);
        NoiseAround noise;
        NoiseAround expected;
        QCOMPARE(noise.before(finder, TONE_Hz, before), expected.at(finder, TONE_Hz, frame));
    }
    void aCrashOfStaticDoesNotCount()
    {
        const ToneFinder finder = risingNoise(100, 30.0F);
        NoiseAround noise;
        // Of 36 to 66 the five loudest are those of the crash.
        QCOMPARE(noise.at(finder, TONE_Hz, 51), floorOf(finder, 56));
    }
    void withoutFramesThereIsNone()
    {
        const ToneFinder finder(RATE_Hz);
        NoiseAround noise;
        QCOMPARE(noise.at(finder, TONE_Hz, 0), 0.0);
        QVERIFY(noise.at(risingNoise(100), TONE_Hz, 5) > 0.0);
        QCOMPARE(noise.at(risingNoise(300), TONE_Hz, 20), 0.0); // all forgotten
    }
};

QTEST_APPLESS_MAIN(tst_NoiseAround)
#include "tst_noisearound.moc"
