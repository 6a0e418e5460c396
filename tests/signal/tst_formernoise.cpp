// SPDX-License-Identifier: MIT
#include "signal/band/formernoise.h"

#include <QtTest>

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
