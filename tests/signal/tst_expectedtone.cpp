// SPDX-License-Identifier: MIT
#include "signal/morse/expectedtone.h"

#include "signal/numbers.h"
#include "signal/timing.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr std::int64_t KEPT_STEPS = 32;

// A tone of 600 Hz as a mixer at `mixed_Hz` has it, whose phase never jumps.
class Mixer
{
public:
    Step step(double mixed_Hz)
    {
        Step step;
        step.value = std::polar(1.0, TWO_PI * (m_cycles - m_mixed));
        step.tone_Hz = mixed_Hz;
        m_cycles += 600.0 * STEP_s;
        m_mixed += mixed_Hz * STEP_s;
        return step;
    }

private:
    double m_cycles = 0.25;
    double m_mixed = 0.0;
};

bool isNear(std::complex<double> a, std::complex<double> b)
{
    return std::abs(a - b) < 1e-9;
}

} // namespace

class tst_ExpectedTone : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aToneThatIsExpectedStandsStillWhereverTheMixerIs()
    {
        Mixer mixer;
        ExpectedTone tone(600.0, STEP_s, KEPT_STEPS);
        for (int step = 0; step < 500; ++step) {
            const double mixed_Hz = step < 200 ? 600.0 : 580.0 + step % 7;
            QVERIFY(isNear(tone.turn(mixer.step(mixed_Hz)), std::polar(1.0, 0.5 * PI)));
        }
    }
    void anotherToneTurnsByTheDifference()
    {
        Mixer mixer;
        ExpectedTone tone(590.0, STEP_s, KEPT_STEPS);
        for (int step = 0; step < 100; ++step)
            QVERIFY(isNear(tone.turn(mixer.step(605.0)),
                           std::polar(1.0, 0.5 * PI + TWO_PI * 10.0 * STEP_s * step)));
    }
    void itsPhaseDoesNotJumpWhereItWanders()
    {
        ExpectedTone tone(600.0, STEP_s, KEPT_STEPS);
        Mixer mixer;
        double cycles = 0.0;
        for (std::int64_t step = 0; step < 100; ++step) {
            QVERIFY(std::fabs(tone.nextCycles() - cycles) < 1e-9);
            tone.turn(mixer.step(600.0));
            cycles += tone.tone_Hz() * STEP_s;
            tone.set(600.0 + static_cast<double>(step % 5));
        }
    }
    void whatWasExpectedOfTheLastStepsIsRemembered()
    {
        Mixer mixer;
        ExpectedTone tone(500.0, STEP_s, KEPT_STEPS);
        std::vector<double> cycles;
        for (std::int64_t step = 0; step < 3 * KEPT_STEPS; ++step) {
            tone.set(500.0 + static_cast<double>(step));
            cycles.push_back(tone.nextCycles());
            tone.turn(mixer.step(600.0));
            const std::int64_t oldest = std::max<std::int64_t>(0, step - KEPT_STEPS + 1);
            for (const std::int64_t at : {oldest, step}) {
                QCOMPARE(tone.toneAt(at), 500.0 + static_cast<double>(at));
                QCOMPARE(tone.cyclesAt(at), cycles[static_cast<std::size_t>(at)]);
            }
        }
    }
};

QTEST_APPLESS_MAIN(tst_ExpectedTone)
#include "tst_expectedtone.moc"
