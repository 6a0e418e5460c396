// SPDX-License-Identifier: MIT
#include "signal/band/bandteleprinters.h"

#include "support/bandfilling.h"
#include "support/random.h"
#include "support/teleprinterkeyer.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

using namespace demodulator;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double KEPT_s = 40.0; // all that any of the sounds has
constexpr double CENTRE_Hz = 1730.0;
constexpr double MARK_Hz = CENTRE_Hz + 85.0;
constexpr double SPACE_Hz = CENTRE_Hz - 85.0;
constexpr double FAR_Hz = 3000.0;
constexpr double LEVEL = 1e-6; // far below that of the tones
const BandFormat FORMAT = {RATE_Hz, false};
const std::string TEXT = "THE WEATHER HERE IS FINE AND WARM TODAY";

struct Sink : BandSink
{
    void signalFound(int, double, double) override { ++morse; }
    void transmissionStarted(int, double, std::int64_t) override { ++morse; }
    void symbol(int, int, std::int64_t) override { ++morse; }
    void transmissionStopped(int, std::int64_t, const SignalReport&) override { ++morse; }
    void signalLost(int) override {}
    void teleprinterFound(int number, const teleprinter::Line& line, double) override
    {
        calls += "found ";
        numbers.push_back(number);
        centre_Hz = line.centre_Hz();
    }
    void teleprinterStarted(int number, const teleprinter::Line&, std::int64_t) override
    {
        calls += "started ";
        numbers.push_back(number);
    }
    void teleprinterCharacter(int number, std::uint8_t character, std::int64_t) override
    {
        numbers.push_back(number);
        text += static_cast<char>(character);
    }
    void teleprinterStopped(int number, const teleprinter::Line&, std::int64_t) override
    {
        calls += "stopped ";
        numbers.push_back(number);
    }

    int morse = 0;
    std::string calls;
    std::string text;
    std::vector<int> numbers;
    double centre_Hz = 0.0;
};

// Not in a class, where moc takes the name for the keyword.
std::vector<BandSignal> receivedBy(const BandTeleprinters& teleprinters)
{
    return teleprinters.signals();
}

// What a receiver for a band has around the teleprinters, with the bank filled from a sound.
struct Band
{
    Band()
    {
        settings.format = FORMAT;
        settings.lowest_Hz = 200.0;
        settings.highest_Hz = 3500.0;
    }

    void hear(const std::vector<float>& samples)
    {
        end = testsupport::fill(bank, survey, samples, end);
    }

    void notice() { teleprinters.notice(MARK_Hz, {}, end, 0); }

    // A second at a time, as a receiver would.
    void listen(std::int64_t until)
    {
        const std::int64_t second = steps(1.0);
        for (std::int64_t step = second; step <= until; step += second) {
            for (std::size_t i = 0; i < teleprinters.size(); ++i)
                teleprinters.process(i, step);
            teleprinters.handOn(step, [this](const BandTeleprinters::IsOf& isOf) {
                ++morseEnded;
                isTonesEnded = isTonesEnded && isOf(MARK_Hz, LEVEL) && isOf(SPACE_Hz, LEVEL);
                isOthersEnded = isOthersEnded || isOf(FAR_Hz, 1e6);
            });
            wasOwn = wasOwn || teleprinters.isOwn(MARK_Hz, LEVEL);
            const std::vector<BandSignal> now = receivedBy(teleprinters);
            if (!now.empty())
                shown = now;
        }
    }

    std::int64_t steps(double duration_s) const
    {
        return static_cast<std::int64_t>(duration_s / bank.step_s());
    }

    BandSettings settings;
    StepBank bank{FORMAT, KEPT_s};
    Survey survey{FORMAT, bank.stepSamples()};
    ShiftedPairs pairs{bank, survey, PairParameters()};
    StationNumbers numbers{AdmissionParameters()};
    ToneMemory memory{AttentionParameters()};
    Sink sink;
    BandTeleprinters teleprinters{settings, bank, pairs, numbers, memory, sink};
    std::int64_t end = 0;
    int morseEnded = 0;
    bool isTonesEnded = true;
    bool isOthersEnded = false;
    bool wasOwn = false;
    std::vector<BandSignal> shown;
};

std::vector<float> teleprinterSoundOf(const std::string& text, double after_s)
{
    testsupport::TonePath path;
    path.centre_Hz = CENTRE_Hz;
    path.snr_dB = 15.0;
    path.after_s = after_s;
    return testsupport::teleprinterSound(
        testsupport::teleprinterElements(text, testsupport::Machine(), text), path, RATE_Hz, text);
}

// So that the last seconds hold the tones.
std::vector<float> beginOf(std::vector<float> samples, double duration_s)
{
    samples.resize(std::min(samples.size(), static_cast<std::size_t>(duration_s * RATE_Hz)));
    return samples;
}

} // namespace

class tst_BandTeleprinters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textIsHandedOnUnderOneNumberAndItsTonesAreNoMorse()
    {
        Band band;
        const std::vector<float> sound = teleprinterSoundOf(TEXT, 12.0);
        band.hear(beginOf(sound, 5.0));
        QVERIFY(band.teleprinters.mayBegin(MARK_Hz, LEVEL));
        band.notice();
        QCOMPARE(band.teleprinters.size(), std::size_t(1));
        band.hear(sound);
        band.listen(band.end);

        QVERIFY2(band.sink.calls == "found started stopped ", band.sink.calls.c_str());
        QVERIFY2(band.sink.text.find(TEXT) != std::string::npos, band.sink.text.c_str());
        QVERIFY(std::all_of(band.sink.numbers.begin(), band.sink.numbers.end(),
                            [](int number) { return number == 1; }));
        QVERIFY(std::fabs(band.sink.centre_Hz - CENTRE_Hz) < 5.0);
        QVERIFY(band.teleprinters.hasNumber(1));
        QVERIFY(!band.teleprinters.hasNumber(2));
        QCOMPARE(band.shown.size(), std::size_t(1));
        QCOMPARE(band.shown.front().number, 1);
        QCOMPARE(band.shown.front().baudRate, 45.45);
        QVERIFY(std::fabs(band.shown.front().tone_Hz - CENTRE_Hz) < 5.0);

        // When it was found, and when it was over.
        QCOMPARE(band.morseEnded, 2);
        QVERIFY(band.isTonesEnded);
        QVERIFY(!band.isOthersEnded);
        QVERIFY(band.wasOwn);
        QVERIFY(!band.teleprinters.isOwn(MARK_Hz, LEVEL));
        QVERIFY(band.memory.heardUntil(MARK_Hz) > 0);
        QVERIFY(band.memory.heardUntil(SPACE_Hz) > 0);
        QCOMPARE(band.memory.heardUntil(FAR_Hz), std::int64_t(0));
        QCOMPARE(band.sink.morse, 0);
    }

    void oneThatIsSilentIsKeptForHalfAMinute()
    {
        Band band;
        const std::vector<float> sound = teleprinterSoundOf(TEXT, 12.0);
        band.hear(beginOf(sound, 5.0));
        band.notice();
        band.hear(sound);
        band.listen(band.end);
        band.teleprinters.forget(band.end);
        QVERIFY(band.teleprinters.hasNumber(1));
        QVERIFY(!band.teleprinters.mayBegin(MARK_Hz, LEVEL)); // it hears what comes next itself
        band.teleprinters.forget(band.end + band.steps(30.0));
        QCOMPARE(band.teleprinters.size(), std::size_t(0));
        QVERIFY(!band.teleprinters.hasNumber(1));
    }

    void whatGivesNoneIsLetGoAndNotTriedAgainAtOnce()
    {
        Band band;
        band.hear(beginOf(teleprinterSoundOf(TEXT, 12.0), 5.0));
        band.notice();
        QCOMPARE(band.teleprinters.size(), std::size_t(1));
        QVERIFY(band.teleprinters.isOwn(MARK_Hz, LEVEL)); // as long as it may be one
        QVERIFY(!band.teleprinters.mayBegin(SPACE_Hz, LEVEL));
        band.notice();
        QCOMPARE(band.teleprinters.size(), std::size_t(1));

        const TeleprinterParameters parameters;
        band.teleprinters.forget(band.end + band.steps(parameters.within_s));
        QCOMPARE(band.teleprinters.size(), std::size_t(1));
        band.teleprinters.forget(band.end + band.steps(parameters.within_s) + 1);
        QCOMPARE(band.teleprinters.size(), std::size_t(0));
        QVERIFY(!band.teleprinters.isOwn(MARK_Hz, LEVEL));
        QVERIFY(!band.teleprinters.mayBegin(MARK_Hz, LEVEL));
        band.notice();
        QCOMPARE(band.teleprinters.size(), std::size_t(0));

        band.teleprinters.forget(band.end +
                                 band.steps(parameters.within_s + parameters.notAgain_s) + 1);
        QVERIFY(band.teleprinters.mayBegin(MARK_Hz, LEVEL));
        band.notice();
        QCOMPARE(band.teleprinters.size(), std::size_t(1));
        QVERIFY(band.sink.calls.empty());
    }

    void noiseIsNotNoticed()
    {
        Band band;
        testsupport::Random random("noise");
        std::vector<float> noise(static_cast<std::size_t>(5.0 * RATE_Hz));
        for (float& sample : noise)
            sample = static_cast<float>(0.1 * random.gauss());
        band.hear(noise);
        band.notice();
        QCOMPARE(band.teleprinters.size(), std::size_t(0));
    }

    void tonesOutsideTheBandAreLeftAlone()
    {
        Band band;
        QVERIFY(band.teleprinters.mayBegin(200.0, LEVEL));
        QVERIFY(!band.teleprinters.mayBegin(199.0, LEVEL));
        QVERIFY(band.teleprinters.mayBegin(3500.0, LEVEL));
        QVERIFY(!band.teleprinters.mayBegin(3501.0, LEVEL));
    }
};

QTEST_APPLESS_MAIN(tst_BandTeleprinters)
#include "tst_bandteleprinters.moc"
