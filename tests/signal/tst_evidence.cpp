// SPDX-License-Identifier: MIT
#include "signal/teleprinter/evidence.h"

#include "support/teleprinterkeyer.h"

#include <QtTest>
#include <cmath>
#include <functional>

using namespace testsupport;
using namespace teleprinter;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double BAUD = 50.0;
constexpr double BIT = RATE_Hz / BAUD;

// Elements from the begin of the sound on, weighed by both tones at 1 kHz and 1.2 kHz.
Evidence weighed(const std::string& elements, double snr_dB, double noise,
                 const std::function<void(TonePath&)>& change = {},
                 const EvidenceParameters& parameters = {})
{
    std::vector<Piece> pieces;
    for (const char element : elements)
        pieces.push_back({element == '1', 1.0 / BAUD});
    TonePath path;
    path.centre_Hz = 1100.0;
    path.shift_Hz = 200.0;
    path.snr_dB = snr_dB;
    path.before_s = path.after_s = 0.0;
    if (change)
        change(path);
    const std::vector<float> samples = teleprinterSound(pieces, path, RATE_Hz, "evidence");
    demodulator::SampleHistory history(samples.size());
    history.push(samples.data(), samples.size());
    const auto end = static_cast<std::int64_t>(samples.size());
    const TonePair tones(history, RATE_Hz, {1000.0, 1200.0}, 0, end);
    const int nodes = static_cast<int>(elements.size() - 1) * NODES;
    return weigh(tones, {0.0, BIT, nodes}, RATE_Hz, noise, parameters);
}

// So many elements of a random pattern.
std::string pattern(std::size_t count)
{
    std::string elements;
    unsigned state = 1;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1103515245U + 12345U;
        elements += (state >> 16U & 1U) != 0 ? '1' : '0';
    }
    return elements;
}

std::size_t misread(const Evidence& evidence, const std::string& elements)
{
    std::size_t wrong = 0;
    for (std::size_t i = 0; i + 1 < elements.size(); ++i) {
        const std::size_t node = i * static_cast<std::size_t>(NODES);
        const bool isMark = evidence.likelihoods[MARK][node] > evidence.likelihoods[SPACE][node];
        wrong += isMark != (elements[i] == '1') ? 1 : 0;
    }
    return wrong;
}

} // namespace

class tst_Evidence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachElementIsLikelierWithItsOwnTone()
    {
        const std::string elements = pattern(200);
        QCOMPARE(misread(weighed(elements, 15.0, 1e-3), elements), std::size_t(0));
    }

    // 20 dB between the tones: a strong tone that is off must not win over a weak one that is on.
    void levelsOfBothTonesAreFollowedApart()
    {
        const std::string elements = pattern(400);
        const Evidence evidence = weighed(elements, 25.0, 1e-3, [](TonePath& path) {
            path.selective_dB = 20.0;
            path.fading_Hz = 0.25;
        });
        QVERIFY2(misread(evidence, elements) <= 2,
                 qPrintable(QString::number(misread(evidence, elements))));
    }

    // In a null of a fade nothing is known: what is weak there must not count against a signal.
    void aFadeTakesTheLevelWithIt()
    {
        const auto worst = [](double followed_s) {
            const std::string elements = pattern(400);
            EvidenceParameters parameters;
            parameters.followed_s = followed_s;
            const Evidence evidence = weighed(
                elements, 25.0, 1e-2,
                [](TonePath& path) {
                    path.fading_dB = 30.0;
                    path.fading_Hz = 1.0;
                },
                parameters);
            float least = 0.0F;
            for (std::size_t i = 0; i + 1 < elements.size(); ++i)
                least = std::min(least, eitherTone(evidence, i * static_cast<std::size_t>(NODES)));
            return least;
        };
        const float own = worst(EvidenceParameters().followed_s);
        const float slow = worst(1.0);
        QVERIFY2(own > slow + 10.0F,
                 qPrintable(QString("%1, %2").arg(double(own)).arg(double(slow))));
    }

    void noiseAloneIsNoEvidence()
    {
        const std::vector<float> samples = noise(4.0, 0.1, RATE_Hz, "evidence");
        demodulator::SampleHistory history(samples.size());
        history.push(samples.data(), samples.size());
        const TonePair tones(history, RATE_Hz, {1000.0, 1200.0}, 0,
                             static_cast<std::int64_t>(samples.size()));
        const Evidence evidence = weigh(tones, {0.0, BIT, 190 * NODES}, RATE_Hz, 0.01);
        float sum = 0.0F;
        for (std::size_t i = 0; i < 190; ++i)
            sum += eitherTone(evidence, i * static_cast<std::size_t>(NODES));
        QVERIFY2(sum < 30.0F, qPrintable(QString::number(static_cast<double>(sum))));
    }

    void aKnownPhaseGainsMoreTheStrongerTheSignal()
    {
        QCOMPARE(phaseGain(0.0F), 0.0F);
        QVERIFY(phaseGain(3.0F) < phaseGain(10.0F));
        QVERIFY(phaseGain(10.0F) < 10.0F);
    }
};

QTEST_GUILESS_MAIN(tst_Evidence)
#include "tst_evidence.moc"
