// SPDX-License-Identifier: MIT
#include "signal/morse/signalchain.h"

#include "signal/numbers.h"
#include "signal/timing.h"
#include "support/codelist.h"
#include "support/keyer.h"
#include "support/random.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double NOISE = 1e-4; // variance of a step
constexpr double AMPLITUDE = 0.25;
constexpr std::int64_t BEFORE_steps = 50;

// Whether the key is down at each step.
std::vector<bool> keyed(const std::string& text, double speed_wpm)
{
    testsupport::Hand hand;
    hand.speed_wpm = speed_wpm;
    std::vector<bool> steps(BEFORE_steps, false);
    double end_s = BEFORE_steps * STEP_s;
    for (const testsupport::Piece& piece : testsupport::keying(text, hand, "chain")) {
        end_s += piece.duration_s;
        while (static_cast<double>(steps.size()) * STEP_s < end_s)
            steps.push_back(piece.mark);
    }
    steps.insert(steps.end(), 1000, false); // 4 s
    return steps;
}

struct Listening
{
    testsupport::CodeList list;
    bool confirmed = false;
    bool ended = false;
    double tone_Hz = 0.0;
};

// What a mixer gives that is at `mixed_Hz` or, where that is 0, where the chain asks for.
Listening listen(const std::vector<bool>& keyed, double tone_Hz, double mixed_Hz,
                 std::int64_t begin_step = 0)
{
    Listening result;
    SignalChain chain({tone_Hz + 3.0, AMPLITUDE * AMPLITUDE, NOISE}, STEP_s, begin_step, {},
                      result.list);
    chain.release();
    testsupport::Random random("steps");
    double cycles = 0.0;
    for (std::size_t n = 0; n < keyed.size(); ++n) {
        const double mixer_Hz = mixed_Hz != 0.0 ? mixed_Hz : chain.tone_Hz();
        const double deviation = std::sqrt(0.5 * NOISE);
        std::complex<double> value = {deviation * random.gauss(), deviation * random.gauss()};
        if (keyed[n])
            value += std::polar(AMPLITUDE, 2.0 * PI * cycles);
        cycles += (tone_Hz - mixer_Hz) * STEP_s;
        chain.push({value, NOISE, mixer_Hz});
    }
    result.confirmed = chain.confirmed();
    result.tone_Hz = chain.tone_Hz();
    result.ended = chain.ended();
    return result;
}

} // namespace

class tst_SignalChain : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void stepsWithoutAnySoundAreRead()
    {
        const Listening heard = listen(keyed("CQ DE AB1C", 20.0), 700.0, 0.0);
        QVERIFY(heard.confirmed);
        QVERIFY(heard.ended);
        QCOMPARE(QString::fromStdString(heard.list.text()), QStringLiteral("CQ DE AB1C"));
        QVERIFY(std::fabs(heard.tone_Hz - 700.0) < 0.3);
    }
    void timesCountFromTheFirstStepOfTheSound()
    {
        const auto steps = keyed("E E", 20.0);
        const Listening heard = listen(steps, 700.0, 0.0, 1000);
        QCOMPARE(heard.list.transmissions.size(), std::size_t(1));
        const auto begin_us = static_cast<std::int64_t>((1000 + BEFORE_steps) * STEP_s * 1e6);
        QVERIFY(std::llabs(heard.list.transmissions[0].start_us - begin_us) <= 6000);
    }
    void aMixerThatStandsStillSaysSo()
    {
        const Listening heard = listen(keyed("CQ CQ CQ DE AB1C AB1C", 20.0), 700.0, 708.0);
        QCOMPARE(QString::fromStdString(heard.list.text()),
                 QStringLiteral("CQ CQ CQ DE AB1C AB1C"));
        QVERIFY2(std::fabs(heard.tone_Hz - 700.0) < 0.5,
                 QByteArray::number(heard.tone_Hz).constData());
    }
    void noiseIsNoSignal()
    {
        const Listening heard = listen(std::vector<bool>(5000, false), 700.0, 0.0);
        QVERIFY(!heard.confirmed);
        QVERIFY(heard.list.transmissions.empty());
    }
    void nothingIsGivenBeforeTheRelease()
    {
        testsupport::CodeList list;
        SignalChain chain({700.0, 1.0, 0.01}, STEP_s, 0, {}, list);
        for (const bool down : keyed("CQ CQ", 20.0))
            chain.push({down ? 1.0 : 0.0, 0.0, 700.0});
        QVERIFY(chain.confirmed());
        QVERIFY(list.transmissions.empty());
        chain.release();
        chain.finish();
        QCOMPARE(QString::fromStdString(list.text()), QStringLiteral("CQ CQ"));
    }
};

QTEST_APPLESS_MAIN(tst_SignalChain)
#include "tst_signalchain.moc"
