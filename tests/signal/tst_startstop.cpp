// SPDX-License-Identifier: MIT
#include "signal/teleprinter/startstop.h"

#include "signal/teleprinter/textreader.h"
#include "support/teleprinterkeyer.h"
#include "support/teleprinterstages.h"

#include <QtTest>
#include <cmath>

using namespace testsupport;
using namespace teleprinter;

namespace {

constexpr double RATE_Hz = 8000.0;
const char* const TEXT = "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 12345 67890 "
                         "WEATHER NORTH SEA WIND WEST 5 LATER 7 SEA 3 METRES";

struct Heard
{
    QString text;
    Line line;
    double over_s = -1.0; // when the line was given up; -1: it was not
};

// What a channel gives that was opened on the first second of the sound.
Heard heard(const std::vector<float>& samples, const Line& line)
{
    const auto reader = makeIta2Reader(Unshift::WhereSenderDoes);
    Heard heard;
    hear(
        samples, RATE_Hz, [&](const Input& input) { return makeStartStopChannel(input, line, 0); },
        [&](const std::vector<Word>& words, const Channel& channel, std::int64_t end) {
            for (const Word& word : words)
                heard.text += QString::fromStdString(reader->read(word.elements, word.isDoubtful));
            if (channel.isOver() && heard.over_s < 0.0)
                heard.over_s = static_cast<double>(end) / RATE_Hz;
            heard.line = channel.line();
        });
    return heard;
}

std::vector<float> keyed(const Machine& machine, TonePath path, const std::string& text = TEXT)
{
    if (!path.snr_dB)
        path.snr_dB = 15.0;
    return teleprinterSound(teleprinterElements(text, machine, "startstop"), path, RATE_Hz,
                            "startstop");
}

Line lineOf(const Machine& machine, const TonePath& path)
{
    Line line;
    line.kind = {Code::Ita2, machine.baud, 5};
    line.baud = machine.baud;
    line.mark_Hz = path.centre_Hz + 0.5 * path.shift_Hz;
    line.space_Hz = path.centre_Hz - 0.5 * path.shift_Hz;
    return line;
}

} // namespace

class tst_StartStop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textIsReadFromItsBegin()
    {
        const Machine machine;
        const TonePath path;
        QCOMPARE(heard(keyed(machine, path), lineOf(machine, path)).text, QString(TEXT));
    }

    void clockIsFollowed_data()
    {
        QTest::addColumn<double>("fast");
        QTest::newRow("2 % fast") << 0.02;
        QTest::newRow("2 % slow") << -0.02;
    }
    void clockIsFollowed()
    {
        QFETCH(double, fast);
        Machine machine;
        machine.fasterClock = fast;
        const TonePath path;
        const Heard got = heard(keyed(machine, path), lineOf(machine, path));
        QCOMPARE(got.text, QString(TEXT));
        QVERIFY(std::fabs(got.line.baud / (machine.baud * (1.0 + fast)) - 1.0) < 0.0075);
    }

    void tonesAreFollowed()
    {
        const Machine machine;
        TonePath path;
        path.drift_Hz = 20.0; // from 10 below to 10 above
        Line line = lineOf(machine, path);
        line.mark_Hz -= 10.0;
        line.space_Hz -= 10.0;
        const Heard got = heard(keyed(machine, path), line);
        QCOMPARE(got.text, QString(TEXT));
        QVERIFY(got.line.centre_Hz() > path.centre_Hz + 5.0);
    }

    void anIdleMarkIsNoEnd()
    {
        Machine machine;
        machine.idle_s = 8.0;
        const TonePath path;
        const Heard got = heard(keyed(machine, path), lineOf(machine, path));
        QCOMPARE(got.text, QString(TEXT));
        QCOMPARE(got.over_s, -1.0);
    }

    void aLineWithoutCharactersIsOver_data()
    {
        QTest::addColumn<double>("idle_s");
        QTest::addColumn<double>("after_s");
        QTest::addColumn<double>("least_s"); // until it is given up, after the last character
        QTest::addColumn<double>("most_s");
        // Spans of two seconds are judged one after the other.
        QTest::newRow("no tones") << 0.5 << 12.0 << 3.0 << 9.0;
        QTest::newRow("mark alone") << 35.0 << 1.0 << 19.0 << 27.0;
    }
    void aLineWithoutCharactersIsOver()
    {
        QFETCH(double, idle_s);
        QFETCH(double, after_s);
        QFETCH(double, least_s);
        QFETCH(double, most_s);
        Machine machine;
        TonePath path;
        path.snr_dB = 15.0;
        path.after_s = after_s;
        std::vector<Piece> elements = teleprinterElements(TEXT, machine, "startstop");
        double end_s = path.before_s;
        for (const Piece& piece : elements)
            end_s += piece.duration_s;
        end_s -= machine.idle_s;
        elements.push_back({true, idle_s - machine.idle_s + 0.001});
        const Heard got =
            heard(teleprinterSound(elements, path, RATE_Hz, "startstop"), lineOf(machine, path));
        QCOMPARE(got.text, QString(TEXT));
        QVERIFY2(got.over_s > end_s + least_s && got.over_s < end_s + most_s,
                 qPrintable(QString::number(got.over_s - end_s)));
    }

    // Nothing of a character that a fade took is put in the place of it.
    void whatFollowsAGapIsReadAgain()
    {
        const Machine machine;
        TonePath path;
        path.snr_dB = 20.0;
        std::vector<float> samples = keyed(machine, path);
        const auto gap = samples.begin() + static_cast<std::ptrdiff_t>(6.0 * RATE_Hz);
        std::fill(gap, gap + static_cast<std::ptrdiff_t>(1.0 * RATE_Hz), 0.0F);
        const Heard got = heard(samples, lineOf(machine, path));
        const QString text(TEXT);
        QVERIFY(got.text.startsWith(text.left(15)));
        QVERIFY(got.text.endsWith(text.mid(45)));
        QVERIFY2(got.text.size() > text.size() - 12 && got.text.size() < text.size(),
                 qPrintable(got.text));
    }

    void noiseGivesNothingAndIsOver()
    {
        const Machine machine;
        const TonePath path;
        const Heard got = heard(noise(12.0, 0.1, RATE_Hz, "startstop"), lineOf(machine, path));
        QCOMPARE(got.text, QString());
        QVERIFY(got.over_s > 0.0);
    }
};

QTEST_GUILESS_MAIN(tst_StartStop)
#include "tst_startstop.moc"
