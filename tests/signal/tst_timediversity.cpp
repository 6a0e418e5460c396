// SPDX-License-Identifier: MIT
#include "signal/teleprinter/timediversity.h"

#include "signal/teleprinter/ccir476.h"
#include "signal/teleprinter/textreader.h"
#include "support/teleprinterkeyer.h"
#include "support/teleprinterstages.h"

#include <QtTest>
#include <algorithm>
#include <cmath>

using namespace testsupport;
using namespace teleprinter;

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double WORD_s = 0.07;
const char* const TEXT = "ZCZC NA12 NORTH SEA. WIND WEST 5, LATER 7. SEA 3 METRES, RAIN. NNNN";

struct Heard
{
    QString text;
    int phasing = 0;
    double repeat_s = 0.0; // how long after each character it comes again, in the mean
    Line line;
    bool isOver = false;
};

Machine sender()
{
    Machine machine;
    machine.code = TeleprinterCode::SitorB;
    machine.baud = 100.0;
    return machine;
}

std::vector<float> keyed(TonePath path, const Machine& machine = sender())
{
    if (!path.snr_dB)
        path.snr_dB = 15.0;
    return teleprinterSound(teleprinterElements(TEXT, machine, "timediversity"), path, RATE_Hz,
                            "timediversity");
}

// From the word that begins at a second of the sound, or is on so many others from there.
Heard heard(const std::vector<float>& samples, double begin_s)
{
    Line line;
    line.kind = {Code::Ccir476, 100.0, 7};
    line.baud = 100.0;
    line.mark_Hz = 1585.0;
    line.space_Hz = 1415.0;
    const auto reader = makeIta2Reader(Unshift::WhereSenderDoes);
    Heard heard;
    int count = 0;
    hear(
        samples, RATE_Hz,
        [&](const Input& input) {
            return makeTimeDiversityChannel(input, line, begin_s * RATE_Hz, 0);
        },
        [&](const std::vector<Word>& words, const Channel& channel, std::int64_t /*end*/) {
            for (const Word& word : words) {
                heard.repeat_s += (word.repeat - word.begin) / RATE_Hz;
                ++count;
                if (word.elements >= PHASING_1)
                    ++heard.phasing;
                else
                    heard.text +=
                        QString::fromStdString(reader->read(word.elements, word.isDoubtful));
            }
            heard.isOver = heard.isOver || channel.isOver();
            heard.line = channel.line();
        });
    heard.repeat_s /= std::max(1, count);
    return heard;
}

// Silence for a while.
void wipe(std::vector<float>& samples, double begin_s, double duration_s)
{
    const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(begin_s * RATE_Hz);
    std::fill(begin, begin + static_cast<std::ptrdiff_t>(duration_s * RATE_Hz), 0.0F);
}

constexpr double FIRST_s = 1.0; // where the path lets the first word begin

} // namespace

class tst_TimeDiversity : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void directAndRepeatedAreDistinguished_data()
    {
        QTest::addColumn<double>("begin_s");
        QTest::newRow("begun at a direct word") << FIRST_s;
        QTest::newRow("begun at a repeated word") << FIRST_s + WORD_s;
        QTest::newRow("begun in the middle of the text") << FIRST_s + 41 * WORD_s;
    }
    void directAndRepeatedAreDistinguished()
    {
        QFETCH(double, begin_s);
        const Heard got = heard(keyed(TonePath()), begin_s);
        QCOMPARE(got.text, QString(TEXT));
        QVERIFY(got.phasing >= 8);
        QVERIFY(std::fabs(got.repeat_s - 5 * WORD_s) < 0.002);
    }

    // Each character is sent again 350 ms after it: what is shorter takes one of both at most.
    void aGapShorterThanTheDiversityTakesNothing()
    {
        std::vector<float> samples = keyed(TonePath());
        for (double at_s = 4.0; at_s < 10.0; at_s += 1.5)
            wipe(samples, at_s, 0.2);
        QCOMPARE(heard(samples, FIRST_s).text, QString(TEXT));
    }

    void aLongerGapTakesWhatWasSentInIt()
    {
        std::vector<float> samples = keyed(TonePath());
        wipe(samples, 6.0, 1.4);
        const Heard got = heard(samples, FIRST_s);
        const QString text(TEXT);
        QVERIFY2(got.text.size() >= text.size() - 16 && got.text.size() <= text.size() - 4,
                 qPrintable(got.text));
        QVERIFY2(got.text.endsWith(text.right(20)), qPrintable(got.text));
    }

    void clockIsFollowed()
    {
        Machine machine = ::sender();
        machine.fasterClock = 0.0005;
        const Heard got = heard(keyed(TonePath(), machine), FIRST_s);
        QCOMPARE(got.text, QString(TEXT));
        QVERIFY2(std::fabs(got.line.baud - 100.05) < 0.04,
                 qPrintable(QString::number(got.line.baud)));
    }

    void theEndIsNoticed()
    {
        TonePath path;
        path.after_s = 12.0;
        const Heard got = heard(keyed(path), FIRST_s);
        QCOMPARE(got.text, QString(TEXT));
        QVERIFY(got.isOver);
    }

    void noiseGivesNothing()
    {
        const Heard got = heard(noise(15.0, 0.1, RATE_Hz, "timediversity"), FIRST_s);
        QCOMPARE(got.text, QString());
        QCOMPARE(got.phasing, 0);
    }
};

QTEST_GUILESS_MAIN(tst_TimeDiversity)
#include "tst_timediversity.moc"
