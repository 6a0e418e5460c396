// SPDX-License-Identifier: MIT
#include "station/picture/recentband.h"

#include "support/keyer.h"

#include <QtTest>
#include <cmath>

using namespace inspect;

namespace {

constexpr double RATE_Hz = 12000.0;
const demodulator::BandFormat FORMAT = {RATE_Hz, true};

using Samples = std::vector<std::complex<float>>;

Samples noise(double duration_s)
{
    const auto i = testsupport::noise(duration_s, 0.1, RATE_Hz, "i");
    const auto q = testsupport::noise(duration_s, 0.1, RATE_Hz, "q");
    Samples samples;
    for (std::size_t n = 0; n < i.size(); ++n)
        samples.emplace_back(i[n], q[n]);
    return samples;
}

} // namespace

class tst_RecentBand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPassageIsWhatAWaterfallOfItIs_data()
    {
        QTest::addColumn<double>("from_s");
        QTest::addColumn<double>("to_s");
        QTest::newRow("before the memory was full") << 1.0 << 4.0;
        QTest::newRow("over the end of the memory") << 8.0 << 12.0;
        QTest::newRow("up to now") << 15.0 << 20.0;
    }
    void aPassageIsWhatAWaterfallOfItIs()
    {
        QFETCH(double, from_s);
        QFETCH(double, to_s);
        const Samples samples = noise(std::min(20.0, to_s + 5.0));
        RecentBand recent(FORMAT, -2e6, 2e6, 10000000);
        Waterfall all(FORMAT, {0, 1000000000}, -2e6, 2e6, 100000);
        for (const std::complex<float>& sample : samples)
            recent.push(&sample, 1);
        all.push(samples.data(), samples.size());

        Stretch stretch = {std::llround(1e6 * from_s), std::llround(1e6 * to_s)};
        const BandPowers part = recent.cut(stretch, -1000.0, 1000.0);
        QVERIFY(part.lowest_Hz <= -1000.0 && part.lowest_Hz > -1050.0);
        QVERIFY(part.highest_Hz >= 1000.0 && part.highest_Hz < 1050.0);
        QVERIFY(std::abs(part.columns() - std::lround((to_s - from_s) / Waterfall::COLUMN_s)) <= 1);
        const auto first =
            std::lround(static_cast<double>(stretch.from_us) * 1e-6 / Waterfall::COLUMN_s);
        const BandPowers& whole = all.powers();
        const double row_Hz = (whole.highest_Hz - whole.lowest_Hz) / whole.rows;
        const auto top = std::lround((whole.highest_Hz - part.highest_Hz) / row_Hz);
        for (int column = 0; column < part.columns(); ++column) {
            for (int row = 0; row < part.rows; ++row) {
                const float cut =
                    part.powers_dB[static_cast<std::size_t>(column * part.rows + row)];
                const float wanted = whole.powers_dB[static_cast<std::size_t>(
                    (first + column) * whole.rows + top + row)];
                QVERIFY2(std::fabs(cut - wanted) < 0.5F, qPrintable(QString::number(column)));
            }
        }
    }

    void whatIsOlderIsForgotten()
    {
        const Samples samples(static_cast<std::size_t>(20.0 * RATE_Hz));
        RecentBand recent(FORMAT, -2e6, 2e6, 5000000);
        recent.push(samples.data(), samples.size());
        Stretch stretch = {0, 16000000};
        QVERIFY(std::abs(recent.cut(stretch, -100.0, 100.0).columns() - 24) <= 1);
        QVERIFY(std::abs(stretch.from_us - 15000000) < 100000);
        stretch = {0, 14000000};
        QCOMPARE(recent.cut(stretch, -100.0, 100.0).columns(), 0);
    }

    void ofAWideBandLessTimeIsKept()
    {
        constexpr std::size_t MOST_BYTES = 100000;
        const Samples samples(static_cast<std::size_t>(20.0 * RATE_Hz));
        RecentBand recent(FORMAT, -2e6, 2e6, 3600000000, MOST_BYTES);
        recent.push(samples.data(), samples.size());
        Stretch stretch = {0, 1000000000};
        const BandPowers part = recent.cut(stretch, -2e6, 2e6);
        QVERIFY(part.powers_dB.size() <= MOST_BYTES);
        QVERIFY(part.powers_dB.size() > MOST_BYTES - 1000);
        QVERIFY(std::abs(stretch.to_us - 20000000) < 100000);
    }

    void frequenciesBeyondTheBandAreLeftOut()
    {
        const Samples samples(static_cast<std::size_t>(RATE_Hz));
        RecentBand recent(FORMAT, 0.0, 2000.0, 5000000);
        recent.push(samples.data(), samples.size());
        Stretch stretch = {0, 1000000};
        const BandPowers part = recent.cut(stretch, -500.0, 100.0);
        QVERIFY(part.lowest_Hz > -30.0);
        QVERIFY(part.highest_Hz < 150.0);
        QVERIFY(recent.cut(stretch, 9000.0, 9100.0).rows >= 1);
    }
};

QTEST_APPLESS_MAIN(tst_RecentBand)
#include "tst_recentband.moc"
