// SPDX-License-Identifier: MIT
#include "station/picture/waterfall.h"

#include <QtTest>
#include <cmath>

using namespace inspect;

namespace {

constexpr double RATE_Hz = 22050.0; // no whole number of samples is a column

using Samples = std::vector<std::complex<float>>;

// A tone that begins late.
Samples tone(double tone_Hz, double begin_s, double duration_s, bool isComplex)
{
    Samples samples(static_cast<std::size_t>(duration_s * RATE_Hz));
    for (auto n = static_cast<std::size_t>(begin_s * RATE_Hz); n < samples.size(); ++n) {
        const auto value = std::complex<float>(
            std::polar(1.0, 6.283185307179586 * tone_Hz * static_cast<double>(n) / RATE_Hz));
        samples[n] = isComplex ? value : value.real();
    }
    return samples;
}

int brightestRow(const Waterfall& waterfall, int column)
{
    const auto begin = waterfall.powers().powers_dB.begin() + column * waterfall.powers().rows;
    return static_cast<int>(std::max_element(begin, begin + waterfall.powers().rows) - begin);
}

float powerAt(const Waterfall& waterfall, int column, int row)
{
    return waterfall.powers()
        .powers_dB[static_cast<std::size_t>(column * waterfall.powers().rows + row)];
}

} // namespace

class tst_Waterfall : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theBrightestRowLiesAtTheTone_data()
    {
        QTest::addColumn<bool>("isComplex");
        QTest::addColumn<double>("tone_Hz");
        QTest::addColumn<int>("maxRows");
        QTest::newRow("sound") << false << 3000.0 << 4000;
        QTest::newRow("below the centre") << true << -7000.0 << 4000;
        QTest::newRow("above the centre") << true << 9500.0 << 4000;
        QTest::newRow("fewer rows than frequencies") << true << -4321.0 << 100;
    }
    void theBrightestRowLiesAtTheTone()
    {
        QFETCH(bool, isComplex);
        QFETCH(double, tone_Hz);
        QFETCH(int, maxRows);
        Waterfall waterfall({RATE_Hz, isComplex}, {0, 1000000}, -2e6, 2e6, maxRows);
        const Samples samples = tone(tone_Hz, 0.0, 1.0, isComplex);
        waterfall.push(samples.data(), samples.size());
        QVERIFY(waterfall.powers().columns() >= 23);
        QVERIFY(waterfall.powers().rows <= maxRows);
        const double row_Hz = (waterfall.powers().highest_Hz - waterfall.powers().lowest_Hz) /
                              waterfall.powers().rows;
        const int row = brightestRow(waterfall, 10);
        const double found_Hz = waterfall.powers().highest_Hz - (row + 0.5) * row_Hz;
        QVERIFY2(std::fabs(found_Hz - tone_Hz) <= row_Hz, qPrintable(QString::number(found_Hz)));
        QVERIFY(std::fabs(powerAt(waterfall, 10, row)) < 1.5F); // full scale is 0 dB
    }

    // Columns do not drift, however long it takes.
    void theBeginOfAToneLiesAtItsTime()
    {
        constexpr double BEGIN_s = 55.0;
        Waterfall waterfall({RATE_Hz, false}, {0, 60000000}, 0.0, 4000.0, 4000);
        const Samples samples = tone(1000.0, BEGIN_s, 60.0, false);
        waterfall.push(samples.data(), samples.size());
        const int row = brightestRow(waterfall, waterfall.powers().columns() - 1);
        int first = 0;
        while (powerAt(waterfall, first, row) < -10.0F)
            ++first;
        QVERIFY(std::abs(first - static_cast<int>(BEGIN_s / Waterfall::COLUMN_s)) <= 1);
    }

    void onlyTheStretchIsDrawn()
    {
        Waterfall waterfall({RATE_Hz, false}, {2000000, 3000000}, 0.0, 4000.0, 4000);
        const Samples samples = tone(1000.0, 2.5, 10.0, false);
        for (const std::complex<float>& sample : samples)
            waterfall.push(&sample, 1);
        QVERIFY(waterfall.powers().columns() == 23 || waterfall.powers().columns() == 24);
        const int row = brightestRow(waterfall, 20);
        QVERIFY(powerAt(waterfall, 5, row) < -100.0F);
        QVERIFY(powerAt(waterfall, 20, row) > -1.5F);
    }

    void nothingIsDrawnOfABandThatEndsBefore()
    {
        Waterfall waterfall({RATE_Hz, false}, {20000000, 30000000}, 0.0, 4000.0, 4000);
        const Samples samples = tone(1000.0, 0.0, 1.0, false);
        waterfall.push(samples.data(), samples.size());
        QCOMPARE(waterfall.powers().columns(), 0);
    }
};

QTEST_APPLESS_MAIN(tst_Waterfall)
#include "tst_waterfall.moc"
