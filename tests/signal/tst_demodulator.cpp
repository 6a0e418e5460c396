// SPDX-License-Identifier: MIT
#include "signal/morse/demodulator.h"

#include "signal/limits.h"
#include "support/codelist.h"
#include "support/keyer.h"
#include "support/othersounds.h"
#include "support/random.h"

#include <QtTest>
#include <cmath>
#include <limits>

using namespace testsupport;

namespace {

QString read(const CodeList& list)
{
    return QString::fromStdString(list.text());
}

const QString TEXT_READ = QStringLiteral("THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 1234567890");

const char* const TEXT = "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 1234567890";

// Codes and how long after what it reports each came; a word's end is only known once its gap is
// long enough.
class LiveList : public CodeList
{
public:
    void symbol(int code, std::int64_t time_us) override
    {
        CodeList::symbol(code, time_us);
        if (code != 4)
            longestDelay_s = std::max(longestDelay_s, now_s - static_cast<double>(time_us) / 1e6);
    }

    double now_s = 0.0;
    double longestDelay_s = 0.0;
};

LiveList decodeAsItComes(const std::vector<float>& samples)
{
    constexpr std::size_t PIECE = 80; // 10 ms
    LiveList list;
    demodulator::Demodulator demodulator({8000.0, {}, {}}, list);
    for (std::size_t at = 0; at + PIECE <= samples.size(); at += PIECE) {
        list.now_s = static_cast<double>(at + PIECE) / 8000.0;
        demodulator.push(samples.data() + at, PIECE);
    }
    demodulator.finish();
    return list;
}

std::vector<float> keyedText(double speed_wpm, double rate_Hz, std::optional<double> snr_dB)
{
    Hand hand;
    hand.speed_wpm = speed_wpm;
    Path path;
    path.snr_dB = snr_dB;
    return sound(TEXT, hand, path, rate_Hz, "demodulator");
}

} // namespace

class tst_Demodulator : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyRateAndSpeedIsHeard_data()
    {
        QTest::addColumn<double>("rate_Hz");
        QTest::addColumn<double>("speed_wpm");
        QTest::newRow("4 kHz, 20 wpm") << 4000.0 << 20.0;
        QTest::newRow("8 kHz, 8 wpm") << 8000.0 << 8.0;
        QTest::newRow("8 kHz, 45 wpm") << 8000.0 << 45.0;
        QTest::newRow("11.025 kHz, 30 wpm") << 11025.0 << 30.0;
        QTest::newRow("44.1 kHz, 15 wpm") << 44100.0 << 15.0;
        QTest::newRow("48 kHz, 25 wpm") << 48000.0 << 25.0;
        QTest::newRow("192 kHz, 20 wpm") << 192000.0 << 20.0;
    }
    void everyRateAndSpeedIsHeard()
    {
        QFETCH(double, rate_Hz);
        QFETCH(double, speed_wpm);
        const CodeList list = decodeAll(keyedText(speed_wpm, rate_Hz, 20.0), rate_Hz);
        QCOMPARE(read(list), TEXT_READ);
    }
    // Heard together with it, the text is that of a slow hand.
    void whoTunesBeforeTheTextIsReadFromItsBegin_data()
    {
        QTest::addColumn<double>("tuning_s");
        QTest::addColumn<double>("pause_s");
        for (const double tuning_s : {0.9, 1.2, 2.2})
            for (const double pause_s : {0.5, 1.0, 1.4})
                QTest::addRow("%.1f s, then %.1f s", tuning_s, pause_s) << tuning_s << pause_s;
    }
    void whoTunesBeforeTheTextIsReadFromItsBegin()
    {
        QFETCH(double, tuning_s);
        QFETCH(double, pause_s);
        Hand hand;
        hand.tuning_s = tuning_s;
        hand.afterTuning_s = pause_s;
        Path path;
        path.snr_dB = 20.0;
        const CodeList list =
            decodeAll(sound("CQ CQ DE DL1ABC DL1ABC K", hand, path, 8000.0, "tuning"), 8000.0);
        QVERIFY2(read(list).endsWith(QStringLiteral("CQ CQ DE DL1ABC DL1ABC K")),
                 qPrintable(read(list)));
    }
    // Its inverse looks like keying as well, until there are gaps between words.
    void ofFrequencyShiftKeyingTheSpaceIsSoonLeftAlone()
    {
        Path path;
        path.tone_Hz = 700.0;
        path.shift_Hz = 85.0;
        path.snr_dB = 20.0;
        const std::vector<float> samples = sound(TEXT, {}, path, 8000.0, "shifted");
        const auto readNear = [&samples](double tone_Hz) {
            return read(decodeAll(samples, {8000.0, tone_Hz, {}}));
        };
        QCOMPARE(readNear(720.0), TEXT_READ);
        QVERIFY2(readNear(595.0).size() < 16, qPrintable(readNear(595.0)));
    }
    void theLimitsOfToneAndSpeedAreHeard_data()
    {
        using namespace demodulator;
        QTest::addColumn<double>("tone_Hz");
        QTest::addColumn<double>("speed_wpm");
        QTest::addColumn<bool>("isSet");
        QTest::newRow("lowest tone") << LOWEST_TONE_Hz << 20.0 << false;
        QTest::newRow("highest tone") << HIGHEST_TONE_Hz << 20.0 << false;
        QTest::newRow("slowest hand") << 700.0 << LOWEST_SPEED_wpm << false;
        QTest::newRow("fastest hand") << 700.0 << HIGHEST_SPEED_wpm << false;
        QTest::newRow("lowest tone set") << LOWEST_SET_TONE_Hz << 20.0 << true;
        QTest::newRow("a tone set with noise on one side only") << 100.0 << 20.0 << true;
        QTest::newRow("highest tone set") << HIGHEST_SET_TONE_Hz << 20.0 << true;
        QTest::newRow("slowest hand set") << 700.0 << LOWEST_SET_SPEED_wpm << true;
        QTest::newRow("fastest hand set") << 700.0 << HIGHEST_SET_SPEED_wpm << true;
    }
    void theLimitsOfToneAndSpeedAreHeard()
    {
        QFETCH(double, tone_Hz);
        QFETCH(double, speed_wpm);
        QFETCH(bool, isSet);
        Hand hand;
        hand.speed_wpm = speed_wpm;
        Path path;
        path.tone_Hz = tone_Hz;
        path.snr_dB = 20.0;
        path.after_s = 4.0;
        const std::vector<float> samples = sound("CQ DE AB1C AB1C", hand, path, 8000.0, "limits");
        demodulator::Settings settings;
        settings.sampleRate_Hz = 8000.0;
        if (isSet) {
            settings.tone_Hz = tone_Hz;
            settings.speed_wpm = speed_wpm;
        }
        QCOMPARE(read(decodeAll(samples, settings)), QStringLiteral("CQ DE AB1C AB1C"));
    }
    void theCutOfTheInputChangesNothing()
    {
        Hand hand;
        Path path;
        path.after_s = 4.0; // ends the transmission
        std::vector<float> samples = sound("CQ DE AB1C", hand, path, 11025.0, "cut");
        const std::vector<float> more = keyedText(25.0, 11025.0, {});
        samples.insert(samples.end(), more.begin(), more.end());
        addNoise(samples, 11025.0, 0.9, 6.0, "cut");
        const CodeList whole = decodeAll(samples, 11025.0, samples.size());
        QCOMPARE(whole.transmissions.size(), std::size_t(2));
        QVERIFY(whole.codes().size() > 150);
        for (const std::size_t piece : {std::size_t(1), std::size_t(37), std::size_t(5000)})
            QVERIFY(decodeAll(samples, 11025.0, piece).transmissions == whole.transmissions);
    }
    void timesAreThoseOfTheSignal()
    {
        Hand hand;
        hand.speed_wpm = 20.0; // unit 60 ms
        Path path;
        path.before_s = 1.0;
        path.snr_dB = 20.0;
        const CodeList list = decodeAll(sound("PARIS", hand, path, 8000.0, "times"), 8000.0);
        QCOMPARE(read(list), QStringLiteral("PARIS"));
        const Transmission& transmission = list.transmissions.front();
        const auto near = [](std::int64_t time_us, double expected_s) {
            return std::fabs(static_cast<double>(time_us) / 1e6 - expected_s) < 0.012;
        };
        QVERIFY(near(transmission.start_us, 1.0));
        QVERIFY(near(transmission.times_us[0], 1.06));        // P: end of the dot
        QVERIFY(near(transmission.times_us[1], 1.06 + 0.24)); // and of the dash
        QVERIFY(near(transmission.stop_us, 1.0 + 43 * 0.06));
        QCOMPARE(transmission.times_us.back(), transmission.stop_us);
    }
    void aCodeComesWithinASecondOfWhatItReports_data()
    {
        QTest::addColumn<double>("speed_wpm");
        QTest::addColumn<double>("snr_dB");
        QTest::addColumn<double>("most_s");
        for (const double speed : {8.0, 12.0, 20.0, 30.0, 40.0}) {
            // With a slow sender it takes longer until the first elements show the speed.
            const double most_s = speed < 10.0 ? 2.3 : (speed < 15.0 ? 2.0 : 1.0);
            for (const double snr : {20.0, 3.0})
                QTest::newRow(qPrintable(QStringLiteral("%1 wpm, %2 dB").arg(speed).arg(snr)))
                    << speed << snr << most_s;
        }
    }
    void aCodeComesWithinASecondOfWhatItReports()
    {
        QFETCH(double, speed_wpm);
        QFETCH(double, snr_dB);
        QFETCH(double, most_s);
        Hand hand;
        hand.speed_wpm = speed_wpm;
        Path path;
        path.snr_dB = snr_dB;
        path.before_s = 4.0;
        const LiveList list =
            decodeAsItComes(sound("CQ CQ DE AB1C K", hand, path, 8000.0, "delay"));
        QCOMPARE(read(list), QStringLiteral("CQ CQ DE AB1C K"));
        QVERIFY2(list.longestDelay_s < most_s, qPrintable(QString::number(list.longestDelay_s)));
    }
    void atTheBeginningOfTheInputTheStrongestSignalIsWaitedFor()
    {
        Hand hand;
        Path path;
        path.neighbours = {{-250.0, -6.0, 24.0}}; // may begin first
        path.snr_dB = 20.0;
        for (const char* seed : {"one", "two", "three", "four", "five"}) {
            const LiveList list =
                decodeAsItComes(sound("CQ CQ DE AB1C K", hand, path, 8000.0, seed));
            QCOMPARE(read(list), QStringLiteral("CQ CQ DE AB1C K"));
            QVERIFY2(list.longestDelay_s < 2.5, qPrintable(QString::number(list.longestDelay_s)));
        }
    }
    void whereTheSpeedIsUnclearTheFirstCodesComeLaterButCome()
    {
        // Nothing but dashes: they could be dots of a slower hand.
        Hand hand;
        Path path;
        path.snr_dB = 20.0;
        const LiveList list = decodeAsItComes(sound("TTTMTMOTMT", hand, path, 8000.0, "dashes"));
        QCOMPARE(read(list), QStringLiteral("TTTMTMOTMT"));
        QVERIFY2(list.longestDelay_s < 4.6, qPrintable(QString::number(list.longestDelay_s)));
    }
    void anAnswerIsGivenSoonAfterItBegins()
    {
        Hand hand;
        Path path;
        path.tone_Hz = 650.0;
        path.before_s = 4.0;
        path.after_s = 1.0;
        std::vector<float> samples = sound("XY2Z DE AB1C K", hand, path, 8000.0, "call");
        hand.speed_wpm = 26.0;
        path.tone_Hz = 740.0;
        path.before_s = 0.0;
        path.after_s = 2.0;
        for (const float sample : sound("R R AB1C DE XY2Z K", hand, path, 8000.0, "answer"))
            samples.push_back(0.6F * sample);
        addNoise(samples, 8000.0, 0.9, 15.0, "answer");
        const LiveList list = decodeAsItComes(samples);
        QCOMPARE(read(list), QStringLiteral("XY2Z DE AB1C K R R AB1C DE XY2Z K"));
        QVERIFY2(list.longestDelay_s < 1.1, qPrintable(QString::number(list.longestDelay_s)));
    }
    void anAnswerNearTheToneIsReadWhole_data()
    {
        QTest::addColumn<double>("offset_Hz");
        for (const double offset_Hz : {8.0, 16.0, 23.0, 31.0, 37.0, 45.0})
            QTest::addRow("%g Hz", offset_Hz) << offset_Hz;
    }
    void anAnswerNearTheToneIsReadWhole()
    {
        QFETCH(double, offset_Hz);
        std::vector<float> samples;
        const auto add = [&](double tone_Hz, double speed_wpm, float level) {
            Hand hand;
            hand.speed_wpm = speed_wpm;
            Path path;
            path.tone_Hz = tone_Hz;
            path.before_s = 0.6;
            path.after_s = 0.6;
            for (const float sample : sound(TEXT, hand, path, 8000.0, "near"))
                samples.push_back(level * sample);
        };
        for (int over = 0; over < 3; ++over) {
            add(700.0, 25.0, 1.0F);
            add(700.0 + offset_Hz, 29.0, 0.6F);
        }
        addNoise(samples, 8000.0, 0.9, 15.0, "near");
        const QString received = read(decodeAll(samples, 8000.0));
        // Until it is sure that another one sends, a few characters may be lost.
        QVERIFY2(received.count(TEXT_READ.mid(5)) == 6, qPrintable(received));
    }
    void aLongSilenceEndsATransmission()
    {
        Hand hand;
        Path path;
        path.before_s = 0.5;
        path.after_s = 6.0;
        std::vector<float> samples = sound("CQ DE AB1C", hand, path, 8000.0, "first");
        const double first_s = static_cast<double>(samples.size()) / 8000.0;
        hand.speed_wpm = 28.0;
        path.tone_Hz = 900.0;
        const std::vector<float> second = sound("AB1C DE XY2Z K", hand, path, 8000.0, "second");
        samples.insert(samples.end(), second.begin(), second.end());
        addNoise(samples, 8000.0, 0.9, 15.0, "both");
        const CodeList list = decodeAll(samples, 8000.0);
        QCOMPARE(list.transmissions.size(), std::size_t(2));
        QCOMPARE(asReceived(textOfCodes(list.transmissions[0].codes)), std::string("CQ DE AB1C"));
        QCOMPARE(asReceived(textOfCodes(list.transmissions[1].codes)),
                 std::string("AB1C DE XY2Z K"));
        QVERIFY(std::fabs(static_cast<double>(list.transmissions[0].stop_us) / 1e6 -
                          (first_s - 6.0)) < 0.02);
        QVERIFY(std::fabs(static_cast<double>(list.transmissions[1].start_us) / 1e6 -
                          (first_s + 0.5)) < 0.02);
    }
    void nothingIsGivenTwice()
    {
        // The silence ends the transmission, but is shorter than what is heard again for the next.
        Hand hand;
        Path path;
        path.after_s = 3.6;
        std::vector<float> samples = sound("CQ CQ DE AB1C K", hand, path, 8000.0, "first");
        path.before_s = 0.0;
        const std::vector<float> second = sound("CQ DE AB1C AR", hand, path, 8000.0, "second");
        samples.insert(samples.end(), second.begin(), second.end());
        addNoise(samples, 8000.0, 0.9, 12.0, "both");
        const CodeList list = decodeAll(samples, 8000.0);
        QCOMPARE(list.transmissions.size(), std::size_t(2));
        QCOMPARE(read(list), QStringLiteral("CQ CQ DE AB1C K CQ DE AB1C AR"));
        QVERIFY(list.transmissions[1].start_us > list.transmissions[0].stop_us + 3000000);
    }
    void noiseIsSilent()
    {
        for (const char* seed : {"two minutes", "two others", "and two more", "the last two"})
            QVERIFY(decodeAll(noise(120.0, 0.2, 8000.0, seed), 8000.0).transmissions.empty());
    }
    void aSteadyToneIsNoKeying_data()
    {
        QTest::addColumn<double>("amplitude");
        QTest::addColumn<double>("tone_Hz");
        QTest::newRow("strong") << 0.5 << 800.0;
        QTest::newRow("as strong as the noise") << 0.05 << 620.0;
        QTest::newRow("weak") << 0.02 << 700.0;
    }
    void aSteadyToneIsNoKeying()
    {
        QFETCH(double, amplitude);
        QFETCH(double, tone_Hz);
        std::vector<float> samples = noise(20.0, 0.05, 8000.0, "carrier");
        for (std::size_t n = 16000; n < samples.size(); ++n)
            samples[n] +=
                static_cast<float>(amplitude * std::sin(6.283185307 * tone_Hz * n / 8000.0));
        QCOMPARE(decodeAll(samples, 8000.0).codes(), std::vector<int>());
    }
    void aKeyHeldDownIsAMarkTooLongAndNoDash()
    {
        Hand hand;
        Path path;
        path.after_s = 0.0;
        std::vector<Piece> pieces = keying("VVV DE AB1C", hand, "held");
        pieces.push_back({false, 0.42});
        pieces.push_back({true, 2.0});
        pieces.push_back({false, 0.42});
        for (const Piece& piece : keying("VVV", hand, "held"))
            pieces.push_back(piece);
        path.after_s = 2.0;
        path.snr_dB = 20.0;
        const CodeList list = decodeAll(sound(pieces, path, 8000.0, "held"), 8000.0);
        QCOMPARE(read(list), QStringLiteral("VVV DE AB1C VVV"));
        const std::vector<int> codes = list.codes();
        QCOMPARE(std::count(codes.begin(), codes.end(), 65), std::ptrdiff_t(1));
        const auto mark = std::find(codes.begin(), codes.end(), 65);
        QVERIFY(*(mark - 1) == 4 && *(mark + 1) == 0); // after a word's end, before the next dot
    }
    void insaneInputIsSurvived_data()
    {
        QTest::addColumn<int>("what");
        QTest::newRow("nothing at all") << 0;
        QTest::newRow("one sample") << 1;
        QTest::newRow("digital silence") << 2;
        QTest::newRow("no numbers") << 3;
        QTest::newRow("infinities") << 4;
        QTest::newRow("largest numbers") << 5;
        QTest::newRow("direct current") << 6;
        QTest::newRow("full-scale random bits") << 7;
    }
    void insaneInputIsSurvived()
    {
        QFETCH(int, what);
        std::vector<float> samples(what == 0 ? 0 : what == 1 ? 1 : 80000, 0.0F);
        Random random("insane");
        for (float& sample : samples) {
            if (what == 3)
                sample = std::nanf("");
            else if (what == 4)
                sample =
                    std::numeric_limits<float>::infinity() * (random.below(2) != 0U ? 1.0F : -1.0F);
            else if (what == 5)
                sample = std::numeric_limits<float>::max();
            else if (what == 6)
                sample = 1.0F;
            else if (what == 7)
                sample = random.below(2) != 0U ? 1.0F : -1.0F;
        }
        QVERIFY(decodeAll(samples, 8000.0).transmissions.empty());
    }
    void aClippedSignalIsReadAllTheSame()
    {
        std::vector<float> samples = keyedText(20.0, 8000.0, 15.0);
        for (float& sample : samples)
            sample = std::clamp(5.0F * sample, -1.0F, 1.0F);
        QCOMPARE(read(decodeAll(samples, 8000.0)), TEXT_READ);
    }
    void holesOfNoNumbersCostOnlyWhatTheyCover()
    {
        std::vector<float> samples = keyedText(20.0, 8000.0, 20.0);
        for (std::size_t n = 80000; n < 80400; ++n)
            samples[n] = std::nanf("");
        const CodeList list = decodeAll(samples, 8000.0);
        QVERIFY2(characterErrorRate(TEXT, list.text()) < 0.1, list.text().c_str());
    }
    void ratesOutsideTheRangeHearNothing_data()
    {
        QTest::addColumn<double>("rate_Hz");
        QTest::newRow("zero") << 0.0;
        QTest::newRow("negative") << -8000.0;
        QTest::newRow("too low") << 3999.0;
        QTest::newRow("too high") << 1e9;
        QTest::newRow("no number") << std::nan("");
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
    }
    void ratesOutsideTheRangeHearNothing()
    {
        QFETCH(double, rate_Hz);
        QVERIFY(decodeAll(keyedText(20.0, 8000.0, 20.0), rate_Hz).transmissions.empty());
    }
    void finishingTwiceOrPushingAfterwardsDoesNothing()
    {
        CodeList list;
        demodulator::Demodulator demodulator({8000.0, {}, {}}, list);
        const std::vector<float> samples = keyedText(30.0, 8000.0, 20.0);
        demodulator.push(samples.data(), samples.size());
        demodulator.finish();
        QCOMPARE(read(list), TEXT_READ);
        const std::vector<Transmission> before = list.transmissions;
        demodulator.push(samples.data(), samples.size());
        demodulator.finish();
        QVERIFY(list.transmissions == before);
    }
    void whatIsNoMorseGivesNothing_data()
    {
        QTest::addColumn<std::vector<float>>("samples");
        const auto add = [](const char* name, std::vector<float> samples) {
            addNoise(samples, 8000.0, 1.0, 26.0, name);
            for (float& sample : samples)
                sample *= 0.3F;
            QTest::newRow(name) << samples;
        };
        add("a teleprinter", teleprinter(40.0, 1000.0, 8000.0, "test"));
        add("dialling tones", dialling(40.0, 8000.0, "test"));
        add("time pips", timePips(40.0, 8000.0, "test"));
        add("phase keying", phaseKeying(40.0, 8000.0, "test"));
        add("radar", radar(40.0, false, 8000.0, "test"));
        add("radar in bursts", radar(40.0, true, 8000.0, "test"));
        add("chirps of an ionosonde", sweeps(40.0, 25e3, 100e3, 8000.0, "test"));
        add("carriers that sweep", sweeps(40.0, 30.0, 3000.0, 8000.0, "test"));
        const double toNothing_dB = std::numeric_limits<double>::infinity();
        for (const double drop_dB : {10.0, 30.0, toNothing_dB})
            QTest::addRow("noise that falls by %g dB", drop_dB)
                << fallingNoise(40.0, 10.0, drop_dB, 8000.0, "test");
        for (const double drop_dB : {40.0, toNothing_dB})
            QTest::addRow("a squelch that opens for 3 s, %g dB", drop_dB)
                << fallingNoise(720.0, 3.0, drop_dB, 8000.0, "test");
    }
    void whatIsNoMorseGivesNothing()
    {
        QFETCH(std::vector<float>, samples);
        const CodeList list = decodeAll(samples, 8000.0);
        QVERIFY2(list.text().empty(), list.text().c_str());
        QVERIFY(list.transmissions.empty());
    }
    void aSignalIsReadRightAfterTheNoiseFell_data()
    {
        QTest::addColumn<double>("amplitude");
        QTest::addColumn<double>("pause_s");
        for (const double amplitude : {0.05, 0.1, 0.15, 0.2, 0.5, 0.9}) {
            for (const double pause_s : {0.0, 0.2, 0.5})
                QTest::addRow("%g after %g s", amplitude, pause_s) << amplitude << pause_s;
        }
    }
    // The power of the noise that was may be that of the signal.
    void aSignalIsReadRightAfterTheNoiseFell()
    {
        QFETCH(double, amplitude);
        QFETCH(double, pause_s);
        Path path;
        path.before_s = 10.0 + pause_s;
        std::vector<float> samples = sound(TEXT, Hand(), path, 8000.0, "after");
        for (float& sample : samples)
            sample *= static_cast<float>(amplitude);
        const std::vector<float> before = noise(10.0, 0.1, 8000.0, "before");
        for (std::size_t n = 0; n < before.size(); ++n)
            samples[n] = before[n];
        addNoise(samples, 8000.0, amplitude, 30.0, "after");
        QCOMPARE(read(decodeAll(samples, 8000.0)), TEXT_READ);
    }
    void aSignalIsReadBesideATeleprinter()
    {
        Path path;
        path.snr_dB = 20.0;
        path.teleprinter_dB = 6.0;
        path.before_s = 8.0; // to find that the stronger one is no Morse
        QCOMPARE(read(decodeAll(sound(TEXT, Hand(), path, 8000.0, "beside"), 8000.0)), TEXT_READ);
    }
    void theReportHasToneSpeedAndStrength_data()
    {
        QTest::addColumn<double>("speed_wpm");
        QTest::addColumn<double>("snr_dB");
        for (const double speed_wpm : {12.0, 25.0}) {
            for (const double snr_dB : {3.0, 10.0, 20.0})
                QTest::addRow("%g wpm, %+g dB", speed_wpm, snr_dB) << speed_wpm << snr_dB;
        }
    }
    void theReportHasToneSpeedAndStrength()
    {
        QFETCH(double, speed_wpm);
        QFETCH(double, snr_dB);
        const CodeList list = decodeAll(keyedText(speed_wpm, 8000.0, snr_dB), 8000.0);
        QCOMPARE(list.transmissions.size(), std::size_t(1));
        const demodulator::SignalReport& report = list.transmissions.front().report;
        QVERIFY2(std::fabs(report.tone_Hz - 700.0) < 1.0,
                 QByteArray::number(report.tone_Hz).constData());
        QVERIFY2(std::fabs(report.speed_wpm / speed_wpm - 1.0) < 0.05,
                 QByteArray::number(report.speed_wpm).constData());
        // The edges of a strong signal's keying count as noise beside it.
        QVERIFY2(report.snr_dB < snr_dB + 1.0 && report.snr_dB > snr_dB - 2.5,
                 QByteArray::number(report.snr_dB).constData());
    }
    void aSetToneChoosesBetweenTwoSignals()
    {
        Hand hand;
        Path path;
        path.tone_Hz = 600.0;
        std::vector<float> samples = sound("STRONG STRONG STRONG", hand, path, 8000.0, "strong");
        path.tone_Hz = 1000.0;
        const std::vector<float> weak = sound("WEAK WEAK WEAK", hand, path, 8000.0, "weak");
        for (std::size_t n = 0; n < std::min(samples.size(), weak.size()); ++n)
            samples[n] += 0.5F * weak[n];
        addNoise(samples, 8000.0, 0.9, 20.0, "known");
        QCOMPARE(read(decodeAll(samples, 8000.0)), QStringLiteral("STRONG STRONG STRONG"));
        QCOMPARE(read(decodeAll(samples, {8000.0, 1000.0, {}})), QStringLiteral("WEAK WEAK WEAK"));
    }
    void anAnsweringStationIsHeardAtItsOwnSpeedAndTone()
    {
        Hand hand;
        Path path;
        path.tone_Hz = 700.0;
        path.after_s = 1.5;
        std::vector<float> samples = sound("AB1C DE XY2Z KN", hand, path, 8000.0, "first");
        hand.speed_wpm = 14.0;
        path.tone_Hz = 820.0;
        path.before_s = 0.0;
        path.after_s = 2.0;
        for (const float sample : sound("XY2Z DE AB1C R R TU 73", hand, path, 8000.0, "second"))
            samples.push_back(0.4F * sample);
        addNoise(samples, 8000.0, 0.9, 20.0, "answer");
        const CodeList list = decodeAll(samples, 8000.0);
        QCOMPARE(read(list), QStringLiteral("AB1C DE XY2Z KN XY2Z DE AB1C R R TU 73"));
    }
    void aNeighbourDoesNotSpeakWhenTheSignalPauses()
    {
        Hand hand;
        Path path;
        path.snr_dB = 20.0;
        path.neighbours = {{300.0, -6.0, 24.0}};
        path.after_s = 2.0;
        const CodeList list = decodeAll(sound(TEXT, hand, path, 8000.0, "neighbour"), 8000.0);
        QCOMPARE(read(list), TEXT_READ);
    }
    void theStrongerOfTwoTakesOver()
    {
        // The weaker one is there first and does not pause.
        Hand hand;
        hand.speed_wpm = 24.0;
        Path path;
        path.tone_Hz = 950.0;
        path.before_s = 0.2;
        std::vector<float> samples =
            sound("WEAK WEAK WEAK WEAK WEAK WEAK WEAK WEAK", hand, path, 8000.0, "weaker");
        for (float& sample : samples)
            sample *= 0.5F;
        hand.speed_wpm = 20.0;
        path.tone_Hz = 650.0;
        path.before_s = 4.0;
        const std::vector<float> stronger =
            sound("VVV VVV VVV DE AB1C THE STRONGER ONE", hand, path, 8000.0, "stronger");
        samples.resize(std::max(samples.size(), stronger.size()), 0.0F);
        for (std::size_t n = 0; n < stronger.size(); ++n)
            samples[n] += stronger[n];
        addNoise(samples, 8000.0, 0.9, 15.0, "stronger");

        const CodeList list = decodeAll(samples, 8000.0);
        QCOMPARE(list.transmissions.size(), std::size_t(2));
        const Transmission& first = list.transmissions[0];
        const Transmission& second = list.transmissions[1];
        QVERIFY2(read(list).startsWith(QLatin1String("WEAK ")), qPrintable(read(list)));
        QVERIFY2(read(list).endsWith(QLatin1String("DE AB1C THE STRONGER ONE")),
                 qPrintable(read(list)));
        // The first was ended as any other, and time went on.
        QCOMPARE(first.codes.back(), 3);
        QVERIFY(first.stop_us >= first.times_us.back());
        QVERIFY(second.start_us >= first.stop_us);
        QVERIFY(std::is_sorted(second.times_us.begin(), second.times_us.end()));
    }
    void aSignalIsHeardAgainAfterAShortStrongerOne()
    {
        Hand hand;
        Path path;
        path.tone_Hz = 950.0;
        std::vector<float> samples =
            sound("DE AB1C DE AB1C DE AB1C DE AB1C DE AB1C DE AB1C", hand, path, 8000.0, "longer");
        // Gone at the moment at which it takes over, or a little before or after.
        for (const double length_s : {2.0, 2.4, 2.8, 3.2, 3.6}) {
            std::vector<float> both = samples;
            path.tone_Hz = 650.0;
            path.before_s = 4.0;
            std::vector<float> stronger = sound("VVVVVVVVVVVV", hand, path, 8000.0, "shorter");
            stronger.resize(static_cast<std::size_t>((4.0 + length_s) * 8000.0));
            for (std::size_t n = 0; n < stronger.size(); ++n)
                both[n] = 0.3F * both[n] + stronger[n];
            for (std::size_t n = stronger.size(); n < both.size(); ++n)
                both[n] *= 0.3F;
            addNoise(both, 8000.0, 0.9, 25.0, "shorter");
            const QString heard = read(decodeAll(both, 8000.0));
            QVERIFY2(heard.endsWith(QLatin1String(" DE AB1C DE AB1C")), qPrintable(heard));
        }
    }
    void fadingDoesNotGiveASignalAway()
    {
        Hand hand;
        Path path;
        path.snr_dB = 20.0;
        path.fading_dB = 10.0;
        path.fading_Hz = 0.5;
        path.neighbours = {{300.0, -6.0, 24.0}};
        const CodeList list = decodeAll(sound(TEXT, hand, path, 8000.0, "fading"), 8000.0);
        QCOMPARE(list.transmissions.size(), std::size_t(1));
        QCOMPARE(read(list), TEXT_READ);
    }
    void hearingTheSameAgainGivesTheSame()
    {
        const std::vector<float> samples = keyedText(20.0, 8000.0, 0.0);
        const CodeList once = decodeAll(samples, 8000.0);
        QVERIFY2(characterErrorRate(TEXT, once.text()) < 0.05, once.text().c_str());
        QVERIFY(decodeAll(samples, 8000.0).transmissions == once.transmissions);
    }
    void weakAndUnsteadySignalsAreRead_data()
    {
        QTest::addColumn<double>("snr_dB");
        QTest::addColumn<double>("jitter_units");
        QTest::newRow("+3 dB") << 3.0 << 0.0;
        QTest::newRow("+10 dB, unsteady hand") << 10.0 << 0.15;
    }
    void weakAndUnsteadySignalsAreRead()
    {
        QFETCH(double, snr_dB);
        QFETCH(double, jitter_units);
        Hand hand;
        hand.jitter_units = jitter_units;
        Path path;
        path.snr_dB = snr_dB;
        const CodeList list = decodeAll(sound(TEXT, hand, path, 8000.0, "weak"), 8000.0);
        QCOMPARE(read(list), TEXT_READ);
    }
};

QTEST_APPLESS_MAIN(tst_Demodulator)
#include "tst_demodulator.moc"
