// SPDX-License-Identifier: MIT
#include "signal/morse/echometer.h"

#include "signal/numbers.h"
#include "signal/timing.h"

#include <QtTest>

#include <cmath>
#include <vector>

using namespace demodulator;

namespace {

constexpr double NOISE = 1e-3;
constexpr double LATE_s = 0.13;
constexpr std::size_t UNIT_steps = 15; // 20 words a minute

// Dashes and dots of a level that may change, with an echo of them.
std::vector<float> powersOf(double echo_dB, double dBPerSecond = 0.0)
{
    const std::vector<int> units = {3, 1, 1, 1, 3, 1, 1, 3, 3, 1, 3, 1, 1, 7, 1, 1, 1, 3};
    std::vector<double> keyed;
    while (keyed.size() < 750) {
        for (std::size_t i = 0; i < units.size(); ++i)
            keyed.insert(keyed.end(), static_cast<std::size_t>(units[i]) * UNIT_steps,
                         i % 2 == 0 ? 1.0 : 0.0);
    }
    const auto late = static_cast<std::size_t>(std::llround(LATE_s / STEP_s));
    std::vector<float> powers;
    for (std::size_t n = 0; n < 750; ++n) {
        const double echo = n < late ? 0.0 : std::pow(10.0, 0.1 * echo_dB) * keyed[n - late];
        const double level = std::pow(10.0, 0.1 * dBPerSecond * STEP_s * static_cast<double>(n));
        powers.push_back(static_cast<float>(level * std::max(keyed[n], echo) + NOISE));
    }
    return {powers.rbegin(), powers.rend()};
}

// A level that goes up and down within less than a second.
std::vector<float> fadingQuickly(double depth_dB, double rate_Hz)
{
    std::vector<float> powers = powersOf(-100.0);
    for (std::size_t n = 0; n < powers.size(); ++n) {
        const double turns = rate_Hz * STEP_s * static_cast<double>(n);
        const double level_dB = 0.5 * depth_dB * (std::cos(TWO_PI * turns) - 1.0);
        powers[n] =
            static_cast<float>((powers[n] - NOISE) * std::pow(10.0, 0.1 * level_dB) + NOISE);
    }
    return powers;
}

bool isHeard(const std::vector<float>& powers, bool former = false)
{
    return hasEcho(powers, NOISE, STEP_s, former, EchoParameters());
}

} // namespace

class tst_EchoMeter : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void anEchoIsHeardWhatIsNotDisturbingIsNone()
    {
        for (const double echo_dB : {-9.0, -12.0, -14.0}) {
            const std::vector<float> powers = powersOf(echo_dB);
            QVERIFY2(isHeard(powers), qPrintable(QString::number(echo_dB)));
            // What comes before a mark is none.
            QVERIFY(!isHeard({powers.rbegin(), powers.rend()}));
        }
        QVERIFY(!isHeard(powersOf(-18.0)));
        QVERIFY(!isHeard(powersOf(-100.0)));
    }
    void fadingIsNoEcho()
    {
        for (const double dBPerSecond : {-20.0, -8.0, 8.0, 20.0})
            QVERIFY2(!isHeard(powersOf(-100.0, dBPerSecond)),
                     qPrintable(QString::number(dBPerSecond)));
    }
    void quickFadingIsNoEcho()
    {
        for (const double rate_Hz : {1.0, 1.5, 2.0, 2.5})
            QVERIFY2(!isHeard(fadingQuickly(10.0, rate_Hz)), qPrintable(QString::number(rate_Hz)));
    }
    void whatFillsOtherGapsTooIsNoEcho()
    {
        std::vector<float> powers = powersOf(-12.0);
        QVERIFY(isHeard(powers));
        for (std::size_t n = 0; n < powers.size() / 2; ++n)
            powers[n] = std::max(powers[n], 0.06F);
        QVERIFY(!isHeard(powers));
    }
    void noiseIsNoEcho()
    {
        std::vector<float> powers = powersOf(-100.0);
        for (std::size_t n = 0; n < powers.size(); ++n)
            powers[n] *= 1.0F + static_cast<float>(n % 3);
        QVERIFY(!hasEcho(powers, 2.0 * NOISE, STEP_s, false, EchoParameters()));
        QVERIFY(!hasEcho(powersOf(-12.0), 0.1, STEP_s, false, EchoParameters()));
    }
    void itStaysWhileHalfOfTheGapsHaveIt()
    {
        std::vector<float> powers = powersOf(-12.0);
        const std::vector<float> clean = powersOf(-100.0);
        // The last 1.2 s have no echo any more.
        std::copy_n(clean.begin(), 300, powers.begin());
        QVERIFY(!isHeard(powers, false));
        QVERIFY(isHeard(powers, true));
        QVERIFY(!isHeard(clean, true));
    }
    void withoutGapsItIsWhatItWas()
    {
        QVERIFY(!isHeard({}, false));
        QVERIFY(isHeard({}, true));
        QVERIFY(isHeard(std::vector<float>(750, 1.0F), true));
    }
};

QTEST_APPLESS_MAIN(tst_EchoMeter)
#include "tst_echometer.moc"
