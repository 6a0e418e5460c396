// SPDX-License-Identifier: MIT
#include "signal/morse/rehearing.h"

#include "reception/corpus.h"
#include "signal/morse/demodulator.h"
#include "signal/numbers.h"
#include "signal/timing.h"
#include "support/codelist.h"
#include "support/keyer.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <complex>
#include <string>
#include <vector>

using namespace demodulator;
using namespace testsupport;

namespace {

constexpr double RATE_Hz = 8000.0;
const char* const TEXT = "CQ CQ DE AB1C AB1C THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG K";

struct Heard : CodeList, Observer
{
    void sound(const float*, std::size_t count, double rate_Hz) override
    {
        sound_s += static_cast<double>(count) / rate_Hz;
    }
    void step(const FollowedStep& step) override
    {
        const double ahead_s = sound_s - 1e-6 * static_cast<double>(step.time_us);
        leastAhead_s = std::min(leastAhead_s, ahead_s);
        mostAhead_s = std::max(mostAhead_s, ahead_s);
        ++steps;
    }
    void mark(std::int64_t, std::int64_t, double) override { ++marks; }

    double sound_s = 0.0;
    double leastAhead_s = 0.0; // the sound of its steps
    double mostAhead_s = 0.0;
    int steps = 0;
    int marks = 0;
};

Heard hear(const std::vector<float>& samples, bool isLive, std::size_t piece = 4000)
{
    Settings settings;
    settings.sampleRate_Hz = RATE_Hz;
    settings.isLive = isLive;
    Heard heard;
    Demodulator demodulator(settings, heard, &heard);
    for (std::size_t at = 0; at < samples.size(); at += piece)
        demodulator.push(samples.data() + at, std::min(piece, samples.size() - at));
    demodulator.finish();
    return heard;
}

std::vector<float> keyed(double tone_Hz, double speed_wpm, double after_s)
{
    Hand hand;
    hand.speed_wpm = speed_wpm;
    testsupport::Path path;
    path.tone_Hz = tone_Hz;
    path.before_s = 0.6;
    path.after_s = after_s;
    return sound(TEXT, hand, path, RATE_Hz, "rehearing");
}

std::vector<float> withNoise(std::vector<float> samples)
{
    addNoise(samples, RATE_Hz, 0.9, 12.0, "rehearing");
    return samples;
}

void append(std::vector<float>& samples, const std::vector<float>& more, float level = 1.0F)
{
    for (const float sample : more)
        samples.push_back(level * sample);
}

std::size_t errors(const reception::Recording& recording, const CodeList& list)
{
    return editDistance(asReceived(recording.sent), asReceived(textOfCodes(list.codes(), '*')));
}

struct ErrorCounts
{
    std::size_t live = 0;
    std::size_t again = 0;
};

// All kinds of text under a condition, once for each seed.
ErrorCounts errorsOf(const std::string& condition, const std::vector<std::string>& seeds)
{
    const auto& all = reception::conditions();
    const auto row = std::find_if(all.begin(), all.end(),
                                  [&](const auto& each) { return each.name == condition; });
    if (row == all.end())
        qFatal("no condition %s", condition.c_str());
    ErrorCounts counts;
    for (const std::string& seed : seeds) {
        for (const std::string& kind : reception::kinds()) {
            const reception::Recording recording = reception::record(*row, kind, seed, 150);
            counts.live += errors(recording, hear(recording.samples, true));
            counts.again += errors(recording, hear(recording.samples, false));
        }
    }
    return counts;
}

// A first hearing made by arithmetic: the steps of what is keyed, and its marks once they are over.
class FirstHearing
{
public:
    explicit FirstHearing(Rehearing& rehearing)
        : m_rehearing(rehearing)
    {
    }

    void mark(double duration_s)
    {
        const std::int64_t begin_us = now_us();
        go(true, duration_s);
        m_rehearing.mark(begin_us, now_us(), 1e6 * unitOf_s(Hand().speed_wpm));
    }
    void pause(double duration_s) { go(false, duration_s); }
    void text(const std::string& text)
    {
        for (const testsupport::Piece& piece : keying(text, Hand(), "first")) {
            if (piece.mark)
                mark(piece.duration_s);
            else
                pause(piece.duration_s);
        }
    }
    void stop(std::int64_t time_us) { m_rehearing.transmissionStopped(time_us, {}); }

    std::int64_t now_us() const
    {
        return std::llround(1e6 * STEP_s * static_cast<double>(m_steps));
    }

    int echoesInTen = 0;         // steps at which it seems that there is an echo
    double drift_Hz_per_s = 0.0; // of the tone, half a second of which the first hearing is behind

private:
    void go(bool isDown, double duration_s)
    {
        for (std::int64_t steps = std::llround(duration_s / STEP_s); steps > 0; --steps)
            step(isDown);
    }
    void step(bool isDown)
    {
        const double now_s = STEP_s * static_cast<double>(m_steps);
        const double expected_Hz = 700.0 + drift_Hz_per_s * now_s;
        Level level = {1.0, 1e-2};
        level.hasEcho = m_steps % 10 < echoesInTen;
        const std::complex<double> value = isDown ? std::polar(1.0, TWO_PI * m_cycles) : 0.0;
        m_rehearing.step({now_us(), expected_Hz, value, level, level.noise});
        m_cycles += drift_Hz_per_s * RehearingParameters().toneLag_s * STEP_s;
        ++m_steps;
    }

    Rehearing& m_rehearing;
    std::int64_t m_steps = 0;
    double m_cycles = 0.0;
};

void sendWord(FirstHearing& first, const std::string& word)
{
    first.text(word);
    first.pause(7.0 * unitOf_s(Hand().speed_wpm));
}

// The stage alone, what it emits and what its observer gets.
struct Stage : Heard
{
    void step(const FollowedStep& step) override
    {
        Heard::step(step);
        hasEcho = step.level.hasEcho;
        if (std::abs(step.value) > 0.5)
            mostTurned = std::max(mostTurned, std::fabs(std::arg(step.value)));
    }

    double mostTurned = 0.0; // from the phase of the first mark
    bool hasEcho = false;    // as it was believed last
    Rehearing rehearing{STEP_s, {}, Parameters(), *this, this, true};
    FirstHearing first{rehearing};
};

} // namespace

class tst_Rehearing : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void whatFadesIsReadWithAThirdOfTheErrors_data()
    {
        QTest::addColumn<QString>("condition");
        for (const char* condition : {"hf-moderate", "hf-poor"})
            QTest::newRow(condition) << QString::fromLatin1(condition);
    }
    void whatFadesIsReadWithAThirdOfTheErrors()
    {
        QFETCH(QString, condition);
        const auto [live, again] = errorsOf(condition.toStdString(), {"test"});
        QVERIFY2(3 * again < live, qPrintable(QStringLiteral("%1 of %2").arg(again).arg(live)));
    }
    // Half of the level is no mark, wherever the echo makes a mark stronger or weaker.
    void anEchoCostsNoMoreThanLive()
    {
        const auto [live, again] = errorsOf("echo9", {"one", "two", "three"});
        QVERIFY2(again <= live, qPrintable(QStringLiteral("%1, live %2").arg(again).arg(live)));
    }
    // Its weak marks are as weak as an echo.
    void quickFadingIsReadWhole()
    {
        const auto [live, again] = errorsOf("quickfading", {"one"});
        QVERIFY2(again <= 2, qPrintable(QStringLiteral("%1, live %2").arg(again).arg(live)));
    }
    // A phase that is known says nothing against a strong mark with a hole.
    void aHoleCostsAboutAsMuchAsLive()
    {
        const auto [live, again] = errorsOf("holes", {"one", "two", "three"});
        QVERIFY2(2 * again < 3 * live, qPrintable(QStringLiteral("%1 of %2").arg(again).arg(live)));
    }
    void aShortTransmissionIsHeardToo()
    {
        testsupport::Path path;
        path.after_s = 1.0;
        const Heard heard = hear(withNoise(sound("TEST", {}, path, RATE_Hz, "short")), false);
        QCOMPARE(QString::fromStdString(heard.text()), QStringLiteral("TEST"));
        QCOMPARE(heard.transmissions.size(), std::size_t(1));
    }
    // An answer beside its tone that comes before it is held to be over is no part of it.
    void aShortOverIsKeptWhenItIsAnswered_data()
    {
        QTest::addColumn<QString>("over");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<double>("pause_s");
        for (const char* over : {"QRL?", "5NN TU", "CQ TEST K"})
            for (const char* answer : {"R", "TU", "R R K"})
                for (const double pause_s : {2.3, 2.5})
                    QTest::addRow("%s, %s after %.1f s", over, answer, pause_s)
                        << QString::fromLatin1(over) << QString::fromLatin1(answer) << pause_s;
    }
    void aShortOverIsKeptWhenItIsAnswered()
    {
        QFETCH(QString, over);
        QFETCH(QString, answer);
        QFETCH(double, pause_s);
        Hand hand;
        hand.speed_wpm = 22.0;
        testsupport::Path path;
        path.before_s = 3.0;
        path.after_s = pause_s;
        std::vector<float> samples = sound(over.toStdString(), hand, path, RATE_Hz, "over");
        path.tone_Hz += 40.0;
        path.before_s = 0.0;
        path.after_s = 5.0;
        append(samples, sound(answer.toStdString(), hand, path, RATE_Hz, "answer"));
        const Heard heard = hear(withNoise(std::move(samples)), false);
        const QString text = QString::fromStdString(heard.text());
        QVERIFY2(text.startsWith(over), qPrintable(text));
    }
    // The answer is heard from before its first mark on, which is within the last mark of this one.
    void aQuickAnswerLeavesTheLastDashWhole_data()
    {
        QTest::addColumn<double>("pause_s");
        for (const double pause_s : {0.2, 0.25, 0.3})
            QTest::addRow("after %.2f s", pause_s) << pause_s;
    }
    void aQuickAnswerLeavesTheLastDashWhole()
    {
        QFETCH(double, pause_s);
        testsupport::Path path;
        path.after_s = pause_s;
        std::vector<float> samples = sound("CQ CQ DE DL1ABC K", {}, path, RATE_Hz, "first");
        path.tone_Hz += 100.0;
        path.before_s = 0.0;
        path.after_s = 5.0;
        append(samples, sound("DL1ABC DE G3XYZ K", {}, path, RATE_Hz, "answer"));
        const Heard heard = hear(withNoise(std::move(samples)), false);
        QCOMPARE(QString::fromStdString(heard.text()).simplified(),
                 QStringLiteral("CQ CQ DE DL1ABC K DL1ABC DE G3XYZ K"));
    }
    // What comes back into it makes its end odd, which does not undo its beginning.
    void aWeakAnswerIsKeptWhenTheFirstStationComesBack()
    {
        Hand quick;
        quick.speed_wpm = 26.0;
        testsupport::Path path;
        path.after_s = 0.8;
        std::vector<float> samples = sound("G3XYZ DE DL1ABC KN", {}, path, RATE_Hz, "first");
        path.before_s = 0.0;
        testsupport::Path answerPath = path;
        answerPath.tone_Hz += 40.0;
        std::vector<float> answer = sound("R R DE G3XYZ KN", quick, answerPath, RATE_Hz, "answer");
        for (float& sample : answer)
            sample *= 0.5F;
        append(samples, answer);
        path.after_s = 5.0;
        append(samples, sound("TU 73 EE", {}, path, RATE_Hz, "back"));
        const Heard heard = hear(withNoise(std::move(samples)), false);
        const QString text = QString::fromStdString(heard.text());
        QVERIFY2(text.contains(QStringLiteral("DE G3XYZ KN")), qPrintable(text));
    }
    void transmissionsAreThoseOfTheFirstHearing()
    {
        std::vector<float> samples = keyed(700.0, 25.0, 5.0);
        append(samples, keyed(850.0, 18.0, 8.0));
        append(samples, keyed(700.0, 30.0, 1.0));
        samples = withNoise(samples);
        const Heard live = hear(samples, true);
        const Heard again = hear(samples, false);
        QCOMPARE(again.text(), live.text());
        QCOMPARE(again.transmissions.size(), live.transmissions.size());
        for (std::size_t i = 0; i < live.transmissions.size(); ++i) {
            const Transmission& expected = live.transmissions[i];
            const Transmission& found = again.transmissions[i];
            QVERIFY(std::abs(found.start_us - expected.start_us) < 20000);
            QVERIFY(std::abs(found.stop_us - expected.stop_us) < 20000);
            QVERIFY(std::fabs(found.report.tone_Hz - expected.report.tone_Hz) < 2.0);
            QVERIFY(std::fabs(found.report.speed_wpm - expected.report.speed_wpm) < 0.5);
            QVERIFY(std::fabs(found.report.snr_dB - expected.report.snr_dB) < 1.5);
        }
    }
    // Who takes over is heard from before the moment at which that was noticed.
    void whereAnotherSignalTakesOverNothingIsReadTwice()
    {
        std::vector<float> samples = keyed(700.0, 25.0, 0.6);
        append(samples, keyed(820.0, 29.0, 0.6), 0.6F);
        append(samples, keyed(700.0, 25.0, 0.6));
        const Heard heard = hear(withNoise(samples), false);
        const QString text = QString::fromStdString(heard.text());
        QCOMPARE(text.count(QStringLiteral("QUICK BROWN FOX JUMPS OVER THE LAZY DOG K")), 3);
        QCOMPARE(text.count(QStringLiteral("FOX")), 3);
        std::int64_t last_us = 0;
        for (const Transmission& transmission : heard.transmissions) {
            QVERIFY(transmission.start_us >= last_us);
            QVERIFY(std::is_sorted(transmission.times_us.begin(), transmission.times_us.end()));
            last_us = transmission.stop_us;
        }
    }
    void theCutOfTheInputChangesNothing()
    {
        std::vector<float> samples = keyed(700.0, 25.0, 5.0);
        append(samples, keyed(850.0, 18.0, 0.0));
        samples = withNoise(samples);
        const Heard whole = hear(samples, false, samples.size());
        QCOMPARE(whole.transmissions.size(), std::size_t(2));
        QVERIFY(hear(samples, false, 37).transmissions == whole.transmissions);
    }
    void anObserverHearsTheSoundBeforeItsSteps()
    {
        std::vector<float> samples = keyed(700.0, 25.0, 5.0);
        append(samples, keyed(850.0, 18.0, 1.0));
        samples = withNoise(samples);
        const Heard heard = hear(samples, false);
        QVERIFY(heard.sound_s * RATE_Hz >= static_cast<double>(samples.size()));
        QVERIFY2(heard.leastAhead_s > -0.05, qPrintable(QString::number(heard.leastAhead_s)));
        // Twice as much as is heard at once, since each hearing has its own pieces.
        QVERIFY2(heard.mostAhead_s < 2.0 * RehearingParameters().piece_s + 1.0,
                 qPrintable(QString::number(heard.mostAhead_s)));
        QVERIFY(heard.steps > 5000);
        QVERIFY(heard.marks > 200);
    }
    // Live, what sounds like a few characters is emitted before it is known to be speech.
    void whatTurnsOutToBeNoMorseIsLeftOut()
    {
        const auto& all = reception::silences();
        const auto speech = std::find_if(all.begin(), all.end(),
                                         [](const auto& each) { return each.title == "speech"; });
        QVERIFY(speech != all.end());
        std::size_t live = 0;
        std::size_t again = 0;
        for (const char* seed : {"one", "two", "three", "four"}) {
            const std::vector<float> samples = speech->make(60.0, seed);
            live += hear(samples, true).codes().size();
            again += hear(samples, false).codes().size();
        }
        QVERIFY2(live > 40 && 2 * again < live,
                 qPrintable(QStringLiteral("%1 of %2").arg(again).arg(live)));
    }
    // Until then it may turn out to be no Morse.
    void codesAreHeldUntilEnoughWasHeard()
    {
        const RehearingParameters rehearing;
        Stage stage;
        while (1e-6 * static_cast<double>(stage.first.now_us()) <
               rehearing.judged_s + rehearing.ahead_s - 4.0)
            sendWord(stage.first, "TEST");
        QVERIFY(stage.codes().empty());
        for (int i = 0; i < 3; ++i)
            sendWord(stage.first, "TEST");
        QVERIFY(!stage.codes().empty());
    }
    // As the first hearing went on, in the silence in which it waited for its end.
    void whatComesAfterItsEndIsAnotherStations()
    {
        Stage stage;
        stage.first.text("TEST");
        const std::int64_t end_us = stage.first.now_us();
        stage.first.pause(1.2);
        stage.first.text("EE");
        stage.first.stop(end_us);
        stage.rehearing.finish();
        QCOMPARE(QString::fromStdString(stage.text()), QStringLiteral("TEST"));
    }
    // A tone that drifts is turned against where it was known to be later, piece after piece.
    void thePhaseGoesOnFromPieceToPiece()
    {
        for (const double drift_Hz_per_s : {-0.11, 0.07, 0.16}) {
            Stage stage;
            stage.first.drift_Hz_per_s = drift_Hz_per_s;
            for (int i = 0; i < 12; ++i)
                sendWord(stage.first, "CQCQTEST");
            stage.rehearing.finish();
            QVERIFY(stage.steps > 5000);
            QVERIFY2(stage.mostTurned < 0.2, qPrintable(QString::number(stage.mostTurned)));
        }
    }
    void anEchoIsBelievedThatWasThereMostOfTheTime_data()
    {
        QTest::addColumn<int>("inTen");
        QTest::addColumn<bool>("isBelieved");
        QTest::newRow("a third of it") << 3 << false;
        QTest::newRow("two thirds") << 7 << true;
    }
    void anEchoIsBelievedThatWasThereMostOfTheTime()
    {
        QFETCH(int, inTen);
        Stage stage;
        stage.first.echoesInTen = inTen;
        for (int i = 0; i < 4; ++i)
            sendWord(stage.first, "TEST");
        stage.rehearing.finish();
        QTEST(stage.hasEcho, "isBelieved");
    }
    // Dots alone may be any row of equal sounds, but a few of them are a short answer.
    void dotsAloneAreLeftOutWhenTheyAreTooManyForAnAnswer()
    {
        const auto heard = [](int dots) {
            Stage stage;
            stage.first.text(std::string(static_cast<std::size_t>(dots), 'E'));
            stage.first.pause(3.0);
            stage.rehearing.finish();
            return QString::fromStdString(stage.text());
        };
        const int most = AttentionParameters().loneMarks;
        QCOMPARE(heard(most), QString(most, QLatin1Char('E')));
        QCOMPARE(heard(most + 1), QString());
    }
    void noTransmissionNoCode()
    {
        std::vector<float> samples(static_cast<std::size_t>(20.0 * RATE_Hz), 0.0F);
        const Heard heard = hear(withNoise(samples), false);
        QVERIFY(heard.transmissions.empty());
        QVERIFY(heard.sound_s > 19.0);
    }
};

QTEST_APPLESS_MAIN(tst_Rehearing)
#include "tst_rehearing.moc"
