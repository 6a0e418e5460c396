// SPDX-License-Identifier: MIT
#include "signal/teleprinter/tracking.h"

#include "support/teleprinterkeyer.h"

#include <QtTest>
#include <cmath>

using namespace testsupport;
using namespace teleprinter;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double BAUD = 50.0;
constexpr double BIT = RATE_Hz / BAUD;
constexpr double SPACE_Hz = 1000.0;
constexpr double MARK_Hz = 1170.0;

constexpr unsigned CHARACTERS[] = {0x4C, 0x72, 0x56, 0x6A, 0x78, 0x4E, 0x66, 0x5A};
constexpr int ELEMENTS = 7;

// How the receiver's idea is off.
struct Off
{
    double space_Hz = 0.0;
    double mark_Hz = 0.0;
    double length = 0.0; // share
    double begin = 0.0;  // samples that characters begin later than thought
};

Tracking tracked(const Off& off, TrackingParameters parameters = {})
{
    std::vector<Piece> pieces;
    std::vector<Decided> decided;
    const double bit = BIT / (1.0 + off.length); // as it is taken to be
    double begin = 0.0;
    for (int round = 0; round < 6; ++round) {
        for (const unsigned elements : CHARACTERS) {
            for (int element = 0; element < ELEMENTS; ++element)
                pieces.push_back({(elements >> element & 1U) != 0, 1.0 / BAUD});
            const double middle = begin + 0.5 * ELEMENTS * BIT;
            decided.push_back({middle - 0.5 * ELEMENTS * bit - off.begin, elements, ELEMENTS});
            begin += ELEMENTS * BIT;
        }
    }
    TonePath path;
    path.centre_Hz = 0.5 * (SPACE_Hz + MARK_Hz);
    path.shift_Hz = MARK_Hz - SPACE_Hz;
    path.snr_dB = 25.0;
    path.before_s = path.after_s = 0.0;
    const std::vector<float> samples = teleprinterSound(pieces, path, RATE_Hz, "tracking");
    demodulator::SampleHistory history(samples.size());
    history.push(samples.data(), samples.size());
    const TonePair tones(history, RATE_Hz, {SPACE_Hz - off.space_Hz, MARK_Hz - off.mark_Hz}, 0,
                         static_cast<std::int64_t>(samples.size()));
    Tracking tracking(parameters);
    tracking.add(tones, decided, bit);
    return tracking;
}

bool isNear(double got, double expected, double tolerance)
{
    if (std::fabs(got - expected) <= tolerance)
        return true;
    qWarning("%g, expected %g", got, expected);
    return false;
}

} // namespace

class tst_Tracking : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsOffWhereNothingIs()
    {
        const Tracking tracking = tracked({});
        QVERIFY(isNear(tracking.toneError_Hz(MARK, RATE_Hz, BIT), 0.0, 1.0));
        QVERIFY(isNear(tracking.fineToneError_Hz(SPACE, RATE_Hz, BIT), 0.0, 0.3));
        QVERIFY(isNear(tracking.lengthError(), 0.0, 0.001));
        QVERIFY(isNear(tracking.beginError(BIT), 0.0, 0.02 * BIT));
    }

    // Each tone by itself, and beyond what one element to the next can show.
    void tonesAreFoundEachByItself()
    {
        Off off;
        off.space_Hz = 12.0;
        off.mark_Hz = -7.0;
        const Tracking tracking = tracked(off);
        QVERIFY(isNear(tracking.toneError_Hz(SPACE, RATE_Hz, BIT), 12.0, 2.0));
        QVERIFY(isNear(tracking.toneError_Hz(MARK, RATE_Hz, BIT), -7.0, 2.0));
        QVERIFY(isNear(tracking.fineToneError_Hz(SPACE, RATE_Hz, BIT), 12.0, 0.5));
        QVERIFY(isNear(tracking.fineToneError_Hz(MARK, RATE_Hz, BIT), -7.0, 0.5));
    }

    void clockIsFound_data()
    {
        QTest::addColumn<double>("length");
        QTest::newRow("slow") << 0.006;
        QTest::newRow("fast") << -0.006;
    }
    void clockIsFound()
    {
        QFETCH(double, length);
        Off off;
        off.length = length;
        QVERIFY(isNear(tracked(off).lengthError(), length, 0.003));
    }

    void lateCharactersAreFound()
    {
        Off off;
        off.begin = 0.1 * BIT;
        QVERIFY(isNear(tracked(off).beginError(BIT), 0.1 * BIT, 0.04 * BIT));
        off.begin = -off.begin;
        QVERIFY(isNear(tracked(off).beginError(BIT), -0.1 * BIT, 0.04 * BIT));
    }

    // The shift is a transmitter's own and steadier than its frequency.
    void tonesAreFollowedTogether()
    {
        Off off;
        off.space_Hz = off.mark_Hz = 3.0;
        Line line;
        line.space_Hz = SPACE_Hz - 3.0;
        line.mark_Hz = MARK_Hz - 3.0;
        const Tracking tracking = tracked(off);
        followTones(tracking, line, RATE_Hz, BIT);
        QVERIFY(isNear(line.shift_Hz(), MARK_Hz - SPACE_Hz, 0.3));
        QVERIFY(line.centre_Hz() > 0.5 * (SPACE_Hz + MARK_Hz) - 1.5);
        QVERIFY(line.centre_Hz() < 0.5 * (SPACE_Hz + MARK_Hz) + 0.3);
        TrackingParameters steady;
        steady.centreDrift_Hz2 = 0.0;
        steady.shiftDrift_Hz2 = 0.0;
        Line unmoved;
        unmoved.space_Hz = SPACE_Hz - 3.0;
        unmoved.mark_Hz = MARK_Hz - 3.0;
        followTones(tracked(off, steady), unmoved, RATE_Hz, BIT);
        QVERIFY(isNear(unmoved.mark_Hz, MARK_Hz - 3.0, 1e-6));
    }
};

QTEST_GUILESS_MAIN(tst_Tracking)
#include "tst_tracking.moc"
