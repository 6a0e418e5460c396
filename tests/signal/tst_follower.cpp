// SPDX-License-Identifier: MIT
#include "signal/morse/follower.h"

#include "support/codelist.h"
#include "support/keyer.h"

#include <QtTest>
#include <cmath>

using namespace demodulator;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double AMPLITUDE = 0.25; // of a key-down tone, so its level is a quarter of the square
constexpr double LEVEL = 0.25 * AMPLITUDE * AMPLITUDE;

// The sound and what the finder makes of it, which a follower hears as far as it has come.
class Sound
{
public:
    explicit Sound(std::vector<float> samples, double rate_Hz = RATE_Hz)
        : m_rate_Hz(rate_Hz)
        , m_samples(std::move(samples))
        , history(1 << 16)
        , finder(rate_Hz)
        , m_frame(finder.frameLength())
    {
    }

    // As far as this, in hops.
    void play(double until_s)
    {
        const std::size_t hop = finder.hop();
        const std::size_t until =
            std::min(m_samples.size(), static_cast<std::size_t>(until_s * m_rate_Hz));
        for (; m_at + hop <= until; m_at += hop) {
            history.push(m_samples.data() + m_at, hop);
            history.copy(history.end() - static_cast<std::int64_t>(m_frame.size()), m_frame.size(),
                         m_frame.data());
            finder.push(m_frame.data());
        }
    }
    void playAll() { play(static_cast<double>(m_samples.size()) / m_rate_Hz); }

private:
    double m_rate_Hz;
    std::vector<float> m_samples;
    std::size_t m_at = 0;

public:
    SampleHistory history;
    ToneFinder finder;

private:
    std::vector<float> m_frame;
};

// The loudest sample of a sound of the keyer is 0.9.
std::vector<float> keyed(const std::string& text, double before_s)
{
    testsupport::Path path;
    path.before_s = before_s;
    std::vector<float> samples = testsupport::sound(text, {}, path, RATE_Hz, "follower");
    for (float& sample : samples)
        sample *= static_cast<float>(AMPLITUDE / 0.9);
    return samples;
}

struct StepList : Observer
{
    void sound(const float*, std::size_t, double) override {}
    void step(const FollowedStep& step) override { list.push_back(step); }
    void mark(std::int64_t, std::int64_t, double) override {}

    std::vector<FollowedStep> list;
};

} // namespace

class tst_Follower : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // As when a signal is noticed some seconds after it began.
    void whatTheHistoryHoldsIsHeardFirst()
    {
        Sound sound(keyed("CQ DE AB1C", 1.0));
        testsupport::CodeList list;
        Follower follower({702.0, LEVEL, 1e-6}, RATE_Hz, 0, {}, {}, list);
        follower.chain().release();
        sound.play(4.0);
        follower.process(sound.history, sound.finder);
        QVERIFY(follower.chain().confirmed());
        sound.playAll();
        follower.process(sound.history, sound.finder);
        follower.chain().finish();
        QCOMPARE(QString::fromStdString(list.text()), QStringLiteral("CQ DE AB1C"));
        QVERIFY(std::fabs(follower.chain().tone_Hz() - 700.0) < 0.3);
    }
    void momentsAreSamplesOfTheSound()
    {
        Sound sound(keyed("TEST", 1.0));
        testsupport::CodeList list;
        Follower follower({700.0, LEVEL, 1e-6}, RATE_Hz, 4000, {}, {}, list);
        follower.chain().release();
        sound.playAll();
        follower.process(sound.history, sound.finder);
        follower.chain().finish();
        // TEST at 20 words a minute is 21 dots of 60 ms.
        const auto about = [](std::int64_t sample, double time_s) {
            return std::fabs(static_cast<double>(sample) / RATE_Hz - time_s) < 0.02;
        };
        QVERIFY(about(follower.firstMark_sample(), 1.0));
        QVERIFY(about(follower.lastMark_sample(), 1.0 + 21 * 0.06));
        QVERIFY(about(follower.lastEmitted_sample(), 1.0 + 21 * 0.06));
        // A step is 4 ms, and is centred on its sample.
        QCOMPARE(follower.firstMark_sample(), 32 * follower.chain().firstMark_step());
        QCOMPARE(follower.lastMark_sample(), 32 * follower.chain().lastMark_step());
        QCOMPARE(follower.lastEmitted_sample(), 32 * follower.chain().lastEmitted_step());
    }
    // At this rate frames and steps do not go together, so that the sound ends anywhere in a step.
    void whatIsThereIsHeardToTheEnd()
    {
        constexpr double ODD_Hz = 11025.0;
        constexpr std::int64_t STEP = 44;
        constexpr std::int64_t AFTER = 66; // its middle, a step needs: half of a window of three
        Sound sound(testsupport::noise(2.0, 0.01, ODD_Hz, "odd"), ODD_Hz);
        testsupport::CodeList list;
        Follower follower({700.0, LEVEL, 1e-6}, ODD_Hz, 0, {}, {}, list);
        bool isExact = false;
        for (int hop = 1; hop <= 60; ++hop) {
            sound.play(0.0325 * hop);
            follower.process(sound.history, sound.finder);
            const std::int64_t end = sound.history.end();
            QCOMPARE(follower.chain().end_step(), end < AFTER ? 0 : (end - AFTER) / STEP + 1);
            isExact = isExact || (end - AFTER) % STEP == 0;
        }
        QVERIFY(isExact);
    }
    // A mixer that stands still loses a tone that wanders.
    void theMixerFollowsTheTone()
    {
        testsupport::Path path;
        path.wander_Hz = 30.0;
        path.wanderPeriod_s = 60.0;
        std::string text = "PARIS";
        for (int word = 1; word < 20; ++word) // 3 s each
            text += " PARIS";
        std::vector<float> samples = testsupport::sound(text, {}, path, RATE_Hz, "wanders");
        for (float& sample : samples)
            sample *= static_cast<float>(AMPLITUDE / 0.9);
        Sound sound(samples);
        sound.play(4.0);
        const auto found = sound.finder.find(90, {300.0, 1200.0});
        QVERIFY(found);
        StepList steps;
        testsupport::CodeList list;
        Follower follower({found->tone_Hz, LEVEL, 1e-6}, RATE_Hz, 0, {}, {}, list, &steps);
        follower.chain().release();
        for (double until_s = 4.0; until_s < static_cast<double>(samples.size()) / RATE_Hz;
             until_s += 0.5) {
            sound.play(until_s);
            follower.process(sound.history, sound.finder);
        }
        double least_Hz = 1e9;
        double most_Hz = 0.0;
        for (std::size_t i = 0; i + 250 <= steps.list.size(); i += 250) {
            double loudest = 0.0;
            for (std::size_t k = i; k < i + 250; ++k)
                loudest = std::max(loudest, std::abs(steps.list[k].value));
            if (loudest < 0.1 * AMPLITUDE)
                continue; // before and after the signal
            least_Hz = std::min(least_Hz, steps.list[i].tone_Hz);
            most_Hz = std::max(most_Hz, steps.list[i].tone_Hz);
            QVERIFY2(std::fabs(loudest / (0.5 * AMPLITUDE) - 1.0) < 0.05,
                     qPrintable(QString::number(loudest)));
        }
        QVERIFY(most_Hz - least_Hz > 50.0);
    }
    void afterTheEndOfItsSignalNothingIsRead()
    {
        std::vector<float> samples = keyed("TEST", 1.0);
        samples.insert(samples.end(), static_cast<std::size_t>(6.0 * RATE_Hz), 0.0F);
        Sound sound(samples);
        testsupport::CodeList list;
        Follower follower({700.0, LEVEL, 1e-6}, RATE_Hz, 0, {}, {}, list);
        follower.chain().release();
        for (const double until_s : {4.0, 8.0}) {
            sound.play(until_s);
            follower.process(sound.history, sound.finder);
        }
        QVERIFY(follower.chain().ended());
        QVERIFY(32 * follower.chain().end_step() < sound.history.end() - RATE_Hz);
        QCOMPARE(list.transmissions.size(), std::size_t(1));
        QVERIFY(list.transmissions.front().stop_us > 0);
    }
    // The noise fell by 30 dB before the signal began and the follower was opened, which knows the
    // noise of now.
    void eachStepIsWeighedByTheNoiseOfItsOwnTime()
    {
        constexpr double NOW = 0.06;
        std::vector<float> samples = keyed("TEST TEST", 3.5);
        const std::vector<float> low =
            testsupport::noise(static_cast<double>(samples.size()) / RATE_Hz, NOW, RATE_Hz, "low");
        for (std::size_t n = 0; n < low.size(); ++n)
            samples[n] += low[n];
        const std::vector<float> loud = testsupport::noise(3.0, 30.0 * NOW, RATE_Hz, "loud");
        std::copy(loud.begin(), loud.end(), samples.begin());
        Sound sound(samples);
        sound.playAll();
        const double ofStep = NOW * NOW / Baseband::stepSamplesAt(RATE_Hz);
        testsupport::CodeList list;
        Follower follower({700.0, LEVEL, ofStep}, RATE_Hz, 0, {}, {}, list);
        follower.chain().release();
        follower.process(sound.history, sound.finder);
        follower.chain().finish();
        QCOMPARE(QString::fromStdString(list.text()), QStringLiteral("TEST TEST"));
    }
};

QTEST_APPLESS_MAIN(tst_Follower)
#include "tst_follower.moc"
