// SPDX-License-Identifier: MIT
#include "signal/band/shiftedpairs.h"

#include "signal/numbers.h"
#include "support/bandfilling.h"
#include "support/keyer.h"
#include "support/random.h"
#include "support/teleprinterkeyer.h"

#include <QtTest>

#include <cmath>
#include <complex>
#include <optional>
#include <string>
#include <vector>

using namespace demodulator;
using testsupport::Piece;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double DURATION_s = 5.0;
const BandFormat FORMAT = {RATE_Hz, false};
const std::string TEXT = "RYRY THE WEATHER HERE IS FINE AND WARM TODAY";

using Samples = std::vector<std::complex<float>>;

// Of the noise, the power in 500 Hz is 0 dB.
Samples noise(const std::string& seed)
{
    testsupport::Random random(seed);
    Samples samples(static_cast<std::size_t>(DURATION_s * RATE_Hz));
    for (std::complex<float>& sample : samples)
        sample = static_cast<float>(std::sqrt(0.5 * RATE_Hz / 500.0) * random.gauss());
    return samples;
}

// Marks at one tone, pauses at the other; at 0 Hz nothing is sent.
void add(Samples& samples, const std::vector<Piece>& pieces, double mark_Hz, double pause_Hz,
         double snr_dB, double begin_s = 0.0)
{
    const double amplitude = std::pow(10.0, snr_dB / 20.0);
    auto n = static_cast<std::size_t>(begin_s * RATE_Hz);
    double end_s = begin_s;
    double phase = 0.0;
    for (const Piece& piece : pieces) {
        end_s += piece.duration_s;
        const double tone_Hz = piece.mark ? mark_Hz : pause_Hz;
        for (; n < samples.size() && static_cast<double>(n) < end_s * RATE_Hz; ++n) {
            phase += 2.0 * PI * tone_Hz / RATE_Hz;
            samples[n] += tone_Hz > 0.0 ? static_cast<float>(amplitude * std::cos(phase)) : 0.0F;
        }
    }
}

void addTeleprinter(Samples& samples, double centre_Hz, double shift_Hz, double baud, double snr_dB)
{
    testsupport::Machine machine;
    machine.baud = baud;
    machine.code =
        baud > 100.0 ? testsupport::TeleprinterCode::Ascii8 : testsupport::TeleprinterCode::Ita2;
    add(samples, testsupport::teleprinterElements(TEXT + TEXT + TEXT, machine, TEXT),
        centre_Hz + 0.5 * shift_Hz, centre_Hz - 0.5 * shift_Hz, snr_dB);
}

void addMorse(Samples& samples, const std::string& text, double tone_Hz, double speed_wpm,
              double begin_s = 0.0)
{
    testsupport::Hand hand;
    hand.speed_wpm = speed_wpm;
    add(samples, testsupport::keying(text, hand, text), tone_Hz, 0.0, 15.0, begin_s);
}

std::optional<ShiftedPair> pairIn(const Samples& samples, double tone_Hz)
{
    StepBank bank(FORMAT, DURATION_s);
    Survey survey(FORMAT, bank.stepSamples());
    const std::int64_t steps = testsupport::fill(bank, survey, samples);
    return ShiftedPairs(bank, survey, PairParameters()).find(tone_Hz, steps);
}

} // namespace

class tst_ShiftedPairs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tonesOfATeleprinterArePair_data()
    {
        QTest::addColumn<double>("shift_Hz");
        QTest::addColumn<double>("baud");
        QTest::addColumn<double>("snr_dB");
        QTest::newRow("as weak as its noise") << 170.0 << 45.45 << 0.0;
        QTest::newRow("narrow") << 85.0 << 45.45 << 6.0;
        QTest::newRow("wide") << 850.0 << 75.0 << 3.0;
        QTest::newRow("quick") << 170.0 << 110.0 << 6.0;
        QTest::newRow("elements shorter than a window") << 200.0 << 300.0 << 12.0;
    }
    void tonesOfATeleprinterArePair()
    {
        QFETCH(double, shift_Hz);
        QFETCH(double, baud);
        QFETCH(double, snr_dB);
        constexpr double CENTRE_Hz = 1730.0;
        Samples samples = noise(QTest::currentDataTag());
        addTeleprinter(samples, CENTRE_Hz, shift_Hz, baud, snr_dB);
        for (const double tone_Hz : {CENTRE_Hz - 0.5 * shift_Hz, CENTRE_Hz + 0.5 * shift_Hz}) {
            const auto pair = pairIn(samples, tone_Hz);
            QVERIFY(pair && pair->isSure);
            QVERIFY2(std::fabs(0.5 * (pair->lower_Hz + pair->upper_Hz) - CENTRE_Hz) < 45.0,
                     qPrintable(QString::number(0.5 * (pair->lower_Hz + pair->upper_Hz))));
            QVERIFY2(std::fabs(pair->upper_Hz - pair->lower_Hz - shift_Hz) < 130.0,
                     qPrintable(QString::number(pair->upper_Hz - pair->lower_Hz)));
        }
    }

    void humpOfAQuickOneLeadsToItsTones()
    {
        Samples samples = noise("hump");
        addTeleprinter(samples, 1730.0, 170.0, 200.0, 12.0);
        const auto pair = pairIn(samples, 1730.0);
        QVERIFY(pair && pair->isSure);
        QVERIFY(pair->lower_Hz < 1730.0 && pair->upper_Hz > 1730.0);
    }

    void whatIsSentSomewhereElseIsNoneOfIt()
    {
        Samples samples = noise("elsewhere");
        addTeleprinter(samples, 2500.0, 170.0, 45.45, 12.0);
        addMorse(samples, TEXT, 1700.0, 25.0);
        QVERIFY(!pairIn(samples, 1700.0));
    }

    void handsAreNoPair_data()
    {
        QTest::addColumn<double>("other_Hz");
        QTest::addColumn<double>("speed_wpm");
        for (const double other_Hz : {1580.0, 1700.0, 2100.0}) {
            for (const double speed_wpm : {15.0, 28.0, 40.0})
                QTest::newRow(
                    qPrintable(QStringLiteral("%1 Hz, %2 wpm").arg(other_Hz).arg(speed_wpm)))
                    << other_Hz << speed_wpm;
        }
    }
    void handsAreNoPair()
    {
        QFETCH(double, other_Hz);
        QFETCH(double, speed_wpm);
        Samples samples = noise(QTest::currentDataTag());
        addMorse(samples, TEXT, 1500.0, 28.0);
        addMorse(samples, "CQ TEST DE DL0XYZ DL0XYZ TEST CQ CQ TEST", other_Hz, speed_wpm);
        const auto pair = pairIn(samples, 1500.0);
        QVERIFY(!pair || !pair->isSure);
    }

    void answersOfTwoHandsAreNoPair()
    {
        Samples samples = noise("answers");
        for (double begin_s = 0.0; begin_s < DURATION_s; begin_s += 1.0) {
            addMorse(samples, "R", 1500.0, 30.0, begin_s);
            addMorse(samples, "K", 1670.0, 30.0, begin_s + 0.5);
        }
        QVERIFY(!pairIn(samples, 1500.0));
    }

    void oneHandAloneIsNoPair()
    {
        Samples samples = noise("alone");
        addMorse(samples, TEXT, 1500.0, 25.0);
        QVERIFY(!pairIn(samples, 1500.0));
    }
};

QTEST_APPLESS_MAIN(tst_ShiftedPairs)
#include "tst_shiftedpairs.moc"
