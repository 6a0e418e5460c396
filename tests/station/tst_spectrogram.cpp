// SPDX-License-Identifier: MIT
#include "station/picture/spectrogram.h"

#include "station/picture/notes.h"

#include <QtTest>
#include <cmath>

using namespace inspect;

namespace {

Seen tone(double tone_Hz, double rate_Hz, double duration_s)
{
    Seen seen;
    seen.stretch = {0, static_cast<std::int64_t>(1e6 * duration_s)};
    seen.rate_Hz = rate_Hz;
    const auto count = static_cast<int>(duration_s * rate_Hz);
    for (int n = 0; n < count; ++n)
        seen.samples.push_back(static_cast<float>(std::sin(6.283185307 * tone_Hz * n / rate_Hz)));
    return seen;
}

int brightestRow(const Spectrogram& spectrum, int column)
{
    int best = 0;
    for (int row = 1; row < spectrum.rows; ++row) {
        if (spectrum.power_dB[static_cast<std::size_t>(row * spectrum.columns + column)] >
            spectrum.power_dB[static_cast<std::size_t>(best * spectrum.columns + column)])
            best = row;
    }
    return best;
}

} // namespace

class tst_Spectrogram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theBrightestRowLiesAtTheTone_data()
    {
        QTest::addColumn<double>("tone_Hz");
        QTest::addColumn<double>("rate_Hz");
        QTest::newRow("low") << 450.0 << 8000.0;
        QTest::newRow("between") << 703.3 << 8000.0;
        QTest::newRow("high") << 990.0 << 8000.0;
        QTest::newRow("another rate") << 700.0 << 11025.0;
        QTest::newRow("low rate") << 700.0 << 4000.0;
    }
    void theBrightestRowLiesAtTheTone()
    {
        QFETCH(double, tone_Hz);
        QFETCH(double, rate_Hz);
        const Seen seen = tone(tone_Hz, rate_Hz, 1.0);
        const Spectrogram spectrum = spectrogram(seen, seen.stretch, 400.0, 1000.0);
        QCOMPARE(spectrum.columns, 125);
        QCOMPARE(spectrum.power_dB.size(),
                 static_cast<std::size_t>(spectrum.columns) * std::size_t(spectrum.rows));
        const double row_Hz = (spectrum.highest_Hz - spectrum.lowest_Hz) / spectrum.rows;
        const int row = brightestRow(spectrum, 60);
        const double middle_Hz = spectrum.highest_Hz - (row + 0.5) * row_Hz;
        QVERIFY2(std::fabs(middle_Hz - tone_Hz) <= 0.6 * row_Hz,
                 qPrintable(QString::number(middle_Hz)));
        const float power_dB =
            spectrum.power_dB[static_cast<std::size_t>(row * spectrum.columns + 60)];
        QVERIFY(std::fabs(power_dB) < 1.0F);
    }

    void columnsLieAtTheirTime()
    {
        Seen seen = tone(700.0, 8000.0, 1.0);
        std::fill(seen.samples.begin(), seen.samples.begin() + 4000, 0.0F);
        const Spectrogram spectrum = spectrogram(seen, seen.stretch, 400.0, 1000.0);
        const int row = brightestRow(spectrum, 120);
        const auto power = [&](int column) {
            return spectrum.power_dB[static_cast<std::size_t>(row * spectrum.columns + column)];
        };
        QVERIFY(power(58) < -60.0F); // 0.468 s: its window does not reach the tone
        QVERIFY(power(67) > -3.0F);
        // The same for sound of which only a part was kept.
        Seen part = seen;
        part.firstSample = 3000;
        part.samples.erase(part.samples.begin(), part.samples.begin() + 3000);
        const Spectrogram again = spectrogram(part, seen.stretch, 400.0, 1000.0);
        QCOMPARE(again.power_dB, spectrum.power_dB);
    }

    void nothingToShowIsEmpty()
    {
        QCOMPARE(spectrogram(Seen(), {0, 1000000}, 400.0, 1000.0).columns, 0);
        const Seen seen = tone(700.0, 4000.0, 0.1);
        QCOMPARE(spectrogram(seen, seen.stretch, 3000.0, 3500.0).columns, 0);
        QVERIFY(spectrogram(seen, {5000000, 6000000}, 400.0, 1000.0).power_dB[0] < -119.0F);
    }
};

QTEST_APPLESS_MAIN(tst_Spectrogram)
#include "tst_spectrogram.moc"
