// SPDX-License-Identifier: MIT
#include "signal/teleprinter/framing.h"

#include "signal/teleprinter/textreader.h"
#include "support/teleprinterkeyer.h"
#include "support/teleprinterstages.h"

#include <QtTest>

using namespace testsupport;
using namespace teleprinter;

namespace {

constexpr double RATE_Hz = 8000.0;

Evidence evidenceOf(const Machine& machine, const TonePath& path, const std::string& text)
{
    const std::vector<float> samples =
        teleprinterSound(teleprinterElements(text, machine, "framing"), path, RATE_Hz, "framing");
    return testsupport::evidenceOf(samples, path, RATE_Hz, machine.baud);
}

QString textOf(const Frames& frames)
{
    const auto reader = makeIta2Reader(Unshift::Never);
    std::string text;
    for (const Frame& frame : frames.list)
        text += reader->read(frame.word);
    return QString::fromStdString(text);
}

const char* const TEXT = "RYRY THE QUICK BROWN FOX 1234567890 TEST";

} // namespace

class tst_Framing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void charactersAreFoundWhateverThePauses_data()
    {
        QTest::addColumn<double>("stop_bits");
        QTest::addColumn<double>("pause_bits");
        QTest::newRow("one stop element") << 1.0 << 0.0;
        QTest::newRow("one and a half") << 1.5 << 0.0;
        QTest::newRow("two") << 2.0 << 0.0;
        QTest::newRow("typed by hand") << 1.5 << 8.0;
    }
    void charactersAreFoundWhateverThePauses()
    {
        QFETCH(double, stop_bits);
        QFETCH(double, pause_bits);
        Machine machine;
        machine.stop_bits = stop_bits;
        machine.typedPause_bits = pause_bits;
        const Frames frames = findFrames(evidenceOf(machine, TonePath(), TEXT), FrameSearch(),
                                         PausePrior(), 0, false);
        QCOMPARE(textOf(frames), QString(TEXT));
        QVERIFY(frames.score > 0.0F);
        QCOMPARE(frames.unexplained, 0);
    }

    void firstCharacterNeedsNoMarkBeforeIt()
    {
        Machine machine;
        machine.idle_s = 0.0;
        TonePath path;
        path.snr_dB = 20.0;
        const Frames frames =
            findFrames(evidenceOf(machine, path, TEXT), FrameSearch(), PausePrior(), 0, false);
        QCOMPARE(textOf(frames), QString(TEXT));
    }

    void keepingThePhaseReadsTheSame()
    {
        Machine machine;
        FrameSearch search;
        search.coherent = true;
        search.turn = 2.0 * 3.14159265358979 * 170.0 / machine.baud;
        const Frames frames =
            findFrames(evidenceOf(machine, TonePath(), TEXT), search, PausePrior(), 0, false);
        QCOMPARE(textOf(frames), QString(TEXT));
    }

    // Phases that turn the other way say nothing together.
    void phaseIsKeptInItsDirection()
    {
        const Machine machine;
        TonePath path;
        path.snr_dB = 0.0;
        const Evidence evidence = evidenceOf(machine, path, TEXT);
        FrameSearch search;
        search.coherent = true;
        search.turn = 2.0 * 3.14159265358979 * 170.0 / machine.baud;
        const float right = findFrames(evidence, search, PausePrior(), 0, false).score;
        search.turn = -search.turn;
        const float wrong = findFrames(evidence, search, PausePrior(), 0, false).score;
        QVERIFY2(right > 1.1F * wrong, qPrintable(QString("%1, %2").arg(right).arg(wrong)));
    }

    void noiseHasNoCharacters()
    {
        const std::vector<float> samples = noise(3.0, 0.1, RATE_Hz, "framing");
        demodulator::SampleHistory history(samples.size());
        history.push(samples.data(), samples.size());
        const TonePair tones(history, RATE_Hz, {1415.0, 1585.0}, 0,
                             static_cast<std::int64_t>(samples.size()));
        const double bit = RATE_Hz / 45.45;
        const Evidence evidence =
            weigh(tones, {0.0, bit, static_cast<int>(3.0 * 45.45 * NODES) - NODES}, RATE_Hz, 0.01);
        const Frames frames = findFrames(evidence, FrameSearch(), PausePrior(), 0, false);
        QVERIFY2(frames.list.size() <= 1, qPrintable(QString::number(frames.list.size())));
    }

    // A pause like those before it costs little.
    void senderWithEvenPausesScoresMore()
    {
        const auto scoreOf = [](const std::vector<int>& pauses) {
            Frames frames;
            for (const int pause : pauses) {
                frames.list.emplace_back();
                frames.list.back().pause = pause;
            }
            return scoreOfSender(frames);
        };
        const float even = scoreOf({9, 9, 9, 9, 9, 9, 9, 9});
        const float nearlyEven = scoreOf({9, 9, 10, 9, 9, 8, 9, 9});
        const float uneven = scoreOf({9, 30, 17, 3, 44, 0, 21, 36});
        const float changed = scoreOf({9, 9, 9, 9, 30, 30, 30, 30});
        QVERIFY(even > nearlyEven && nearlyEven > changed && changed > uneven);
        QVERIFY(even > uneven + 15.0F);
        QCOMPARE(scoreOf({-1, -1, -1}), scoreOf({}) + 3.0F); // the cost of a character is left out
    }

    void pausesAreLearnt()
    {
        PausePrior pauses;
        QVERIFY(pauses.isFlat());
        for (int i = 0; i < 20; ++i)
            pauses.learn(9, 1.0F);
        pauses.update();
        QVERIFY(!pauses.isFlat());
        QVERIFY(pauses[9] > pauses[20] + 2.0F);
        QVERIFY(pauses[9] > pauses[-1] + 2.0F);
    }
};

QTEST_GUILESS_MAIN(tst_Framing)
#include "tst_framing.moc"
