// SPDX-License-Identifier: MIT
#include "signal/teleprinter/synchronous.h"

#include "signal/numbers.h"
#include "support/teleprinterkeyer.h"

#include <QtTest>
#include <algorithm>
#include <cmath>

using namespace testsupport;
using namespace teleprinter;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double BIT = RATE_Hz / 100.0;
using demodulator::PI;

const std::vector<unsigned> WORDS = {0,  1,         2,         7,           12, 30,
                                     31, PHASING_1, PHASING_2, SIGNAL_BETA, 5,  17};

// Words one after the other, `late` samples after the begin of the sound.
Evidence evidenceOf(double snr_dB, double late_bits)
{
    std::vector<Piece> pieces;
    for (const unsigned word : WORDS) {
        for (int element = 0; element < WORD_ELEMENTS; ++element)
            pieces.push_back({(ccir476Elements()[word] >> element & 1U) != 0, 0.01});
    }
    TonePath path;
    path.snr_dB = snr_dB;
    path.before_s = 0.01 * late_bits;
    path.after_s = 0.01;
    const std::vector<float> samples = teleprinterSound(pieces, path, RATE_Hz, "synchronous");
    demodulator::SampleHistory history(samples.size());
    history.push(samples.data(), samples.size());
    const auto end = static_cast<std::int64_t>(samples.size());
    const TonePair tones(history, RATE_Hz, {1415.0, 1585.0}, 0, end);
    const int nodes =
        static_cast<int>((late_bits + static_cast<double>(WORDS.size()) * WORD_ELEMENTS) * NODES);
    return weigh(tones, {0.0, BIT, nodes}, RATE_Hz, 1e-3);
}

WordLikelihoods only(unsigned word, float likelihood)
{
    WordLikelihoods words;
    words.fill(0.0F);
    words[word] = likelihood;
    return words;
}

} // namespace

class tst_Synchronous : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyWordIsReadWithAndWithoutItsPhase()
    {
        const Evidence evidence = evidenceOf(12.0, 0.0);
        const double turn = 2.0 * PI * 170.0 / 100.0;
        for (std::size_t i = 0; i < WORDS.size(); ++i) {
            const int node = static_cast<int>(i) * WORD_NODES;
            QCOMPARE(choose(weighWords(evidence, node)).word, WORDS[i]);
            QCOMPARE(choose(weighWords(evidence, node, turn)).word, WORDS[i]);
        }
    }

    // A phase that turns the other way fits no word well.
    void phaseIsKeptInItsDirection()
    {
        const Evidence evidence = evidenceOf(6.0, 0.0);
        const double turn = 2.0 * PI * 170.0 / 100.0;
        float right = 0.0F;
        float wrong = 0.0F;
        for (std::size_t i = 0; i < WORDS.size(); ++i) {
            const int node = static_cast<int>(i) * WORD_NODES;
            right += meanOf(weighWords(evidence, node, turn));
            wrong += meanOf(weighWords(evidence, node, -turn));
        }
        QVERIFY(right > wrong + 10.0F);
    }

    void beginOfWordsIsFound_data()
    {
        QTest::addColumn<double>("late_bits");
        QTest::newRow("at once") << 0.0;
        QTest::newRow("two elements late") << 2.0;
        QTest::newRow("four and a half") << 4.5;
    }
    void beginOfWordsIsFound()
    {
        QFETCH(double, late_bits);
        const WordPhase phase = findWordPhase(evidenceOf(12.0, late_bits));
        const int expected = static_cast<int>(late_bits * NODES);
        const int off = (phase.node - expected + 100 * WORD_NODES) % WORD_NODES;
        QVERIFY2(std::min(off, WORD_NODES - off) <= 2, qPrintable(QString::number(phase.node)));
        QVERIFY(phase.form > 0.8F * static_cast<float>(phase.words));
    }

    void bothTimesTogetherDecide()
    {
        const WordLikelihoods both = combine(only(5, 2.0F), only(5, 3.0F));
        QCOMPARE(choose(both).word, 5U);
        QCOMPARE(both[5], 5.0F);
        QVERIFY(choose(both).margin > choose(only(5, 3.0F)).margin);
    }

    // The direct stream has phasing signal 2 where the repeated one has 1.
    void phasingSignalsAreTakenTogether()
    {
        QCOMPARE(choose(combine(only(PHASING_2, 4.0F), only(PHASING_1, 4.0F))).word, PHASING_2);
    }

    void meanIsThatOfTheLikelihoods()
    {
        WordLikelihoods words;
        words.fill(2.0F);
        QVERIFY(std::fabs(meanOf(words) - 2.0F) < 1e-4F);
        QVERIFY(std::fabs(meanOf(only(3, 20.0F)) - (20.0F - std::log(35.0F))) < 1e-3F);
    }
};

QTEST_GUILESS_MAIN(tst_Synchronous)
#include "tst_synchronous.moc"
