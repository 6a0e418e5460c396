// SPDX-License-Identifier: MIT
#include "signal/teleprinter/bitstream.h"

#include "signal/teleprinter/framing.h"
#include "support/random.h"
#include "support/teleprinterkeyer.h"
#include "support/teleprinterstages.h"

#include <QtTest>

using namespace testsupport;
using namespace teleprinter;

namespace {

constexpr double RATE_Hz = 8000.0;

Evidence evidenceOf(const std::vector<Piece>& elements, double baud)
{
    TonePath path;
    path.snr_dB = 15.0;
    const std::vector<float> samples = teleprinterSound(elements, path, RATE_Hz, "bitstream");
    return testsupport::evidenceOf(samples, path, RATE_Hz, baud);
}

std::vector<Piece> data(double baud, int count)
{
    Random random("bitstream");
    std::vector<Piece> elements;
    for (int i = 0; i < count; ++i)
        elements.push_back({random.below(2) == 0, 1.0 / baud});
    return elements;
}

float framesScore(const Evidence& evidence)
{
    return findFrames(evidence, FrameSearch(), PausePrior(), 0, false).score;
}

} // namespace

class tst_BitStream : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dataFitBetterThanCharactersDo_data()
    {
        QTest::addColumn<double>("clock");
        QTest::newRow("at the speed that is tried") << 1.0;
        QTest::newRow("1 % fast") << 1.01;
        QTest::newRow("1 % slow") << 0.99;
    }
    void dataFitBetterThanCharactersDo()
    {
        QFETCH(double, clock);
        const Evidence evidence = evidenceOf(data(50.0 * clock, 200), 50.0);
        QVERIFY(bitStreamScore(evidence) > framesScore(evidence) + 10.0F);
    }

    void itsOwnSpeedFitsDataBest()
    {
        const std::vector<Piece> elements = data(100.0, 300);
        const float own = bitStreamScore(evidenceOf(elements, 100.0));
        for (const double other : {50.0, 75.0, 150.0, 200.0})
            QVERIFY(own > bitStreamScore(evidenceOf(elements, other)));
    }

    // Half an element of a stop is a step aside in every character.
    void aMachineFitsCharactersBetter()
    {
        const Machine machine;
        const Evidence evidence =
            evidenceOf(teleprinterElements("THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 12345",
                                           machine, "bitstream"),
                       machine.baud);
        QVERIFY(framesScore(evidence) > bitStreamScore(evidence));
    }

    void aToneThatGoesOnCostsNothingForEachElement()
    {
        std::vector<Piece> elements = data(50.0, 100);
        const float before = bitStreamScore(evidenceOf(elements, 50.0));
        elements.push_back({true, 2.0});
        const float after = bitStreamScore(evidenceOf(elements, 50.0));
        const Evidence rest = evidenceOf({{true, 2.0}}, 50.0);
        QVERIFY(after - before > 0.7F * bitStreamScore(rest));
    }

    void noiseAndNothingScoreNothing()
    {
        QCOMPARE(bitStreamScore(Evidence()), 0.0F);
        Evidence noise;
        noise.grid.count = 400;
        for (const std::size_t tone : {SPACE, MARK})
            noise.likelihoods[tone].assign(400, -1.0F);
        QCOMPARE(bitStreamScore(noise), 0.0F);
    }
};

QTEST_GUILESS_MAIN(tst_BitStream)
#include "tst_bitstream.moc"
