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
    explicit Sound(std::vector<float> samples)
        : m_samples(std::move(samples))
        , history(1 << 16)
        , finder(RATE_Hz)
        , m_frame(finder.frameLength())
    {
    }

    // As far as this, in hops.
    void play(double until_s)
    {
        const std::size_t hop = finder.hop();
        const std::size_t until =
            std::min(m_samples.size(), static_cast<std::size_t>(until_s * RATE_Hz));
        for (; m_at + hop <= until; m_at += hop) {
            history.push(m_samples.data() + m_at, hop);
            history.copy(history.end() - static_cast<std::int64_t>(m_frame.size()), m_frame.size(),
                         m_frame.data());
            finder.push(m_frame.data());
        }
    }
    void playAll() { play(static_cast<double>(m_samples.size()) / RATE_Hz); }

private:
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
        QVERIFY(about(follower.lastGiven_sample(), 1.0 + 21 * 0.06));
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
