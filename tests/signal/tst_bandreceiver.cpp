// SPDX-License-Identifier: MIT
#include "signal/band/bandreceiver.h"

#include "signal/numbers.h"
#include "support/disturbances.h"
#include "support/keyer.h"
#include "support/morsecode.h"
#include "support/random.h"
#include "support/teleprinterkeyer.h"

#include <QTest>

#include <cmath>
#include <functional>
#include <limits>
#include <map>

using namespace demodulator;
using testsupport::Random;

namespace {

constexpr double RATE_Hz = 8000.0;

using Samples = std::vector<std::complex<float>>;

struct Sent
{
    double begin_s;
    double tone_Hz;
    double snr_dB;
    double speed_wpm;
    std::string text;
};

// Complex noise of power 1.
Samples noise(double duration_s, const std::string& seed = "band")
{
    Random random(seed);
    Samples samples(static_cast<std::size_t>(duration_s * RATE_Hz));
    for (std::complex<float>& sample : samples)
        sample = {static_cast<float>(std::sqrt(0.5) * random.gauss()),
                  static_cast<float>(std::sqrt(0.5) * random.gauss())};
    return samples;
}

double amplitudeOf(double snr_dB)
{
    return std::sqrt(500.0 / RATE_Hz * std::pow(10.0, 0.1 * snr_dB));
}

// Adds a tone whose envelope at a time is given.
void add(Samples& samples, double tone_Hz, const std::function<double(double)>& envelope)
{
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double t = static_cast<double>(n) / RATE_Hz;
        const double level = envelope(t);
        if (level != 0.0)
            samples[n] += std::complex<float>(std::polar(level, 2.0 * PI * tone_Hz * t));
    }
}

void add(Samples& samples, const Sent& sent, double rise_s = 0.005)
{
    testsupport::Hand hand;
    hand.speed_wpm = sent.speed_wpm;
    const auto pieces = testsupport::keying(sent.text, hand, sent.text);
    std::size_t at = 0;
    double start_s = sent.begin_s;
    const double amplitude = amplitudeOf(sent.snr_dB);
    add(samples, sent.tone_Hz, [&](double t) {
        while (at < pieces.size() && t > start_s + pieces[at].duration_s + 0.5 * rise_s) {
            start_s += pieces[at].duration_s;
            ++at;
        }
        if (at == pieces.size() || t < start_s - 0.5 * rise_s)
            return 0.0;
        if (!pieces[at].mark) // the mark after a space begins before its middle
            return at + 1 < pieces.size()
                       ? amplitude *
                             std::clamp((t - start_s - pieces[at].duration_s) / rise_s + 0.5, 0.0,
                                        1.0)
                       : 0.0;
        return amplitude * std::clamp((t - start_s) / rise_s + 0.5, 0.0, 1.0) *
               std::clamp((start_s + pieces[at].duration_s - t) / rise_s + 0.5, 0.0, 1.0);
    });
}

struct SentByTeleprinter
{
    double begin_s;
    double centre_Hz;
    double shift_Hz;
    double baud;
    double snr_dB;
    std::string text;
    testsupport::TeleprinterCode code = testsupport::TeleprinterCode::Ita2;
};

// Its tones without a jump of the phase.
void add(Samples& samples, const SentByTeleprinter& sent)
{
    testsupport::Machine machine;
    machine.baud = sent.baud;
    machine.code = sent.code;
    const auto elements = testsupport::teleprinterElements(sent.text, machine, sent.text);
    const double amplitude = amplitudeOf(sent.snr_dB);
    auto n = static_cast<std::size_t>(sent.begin_s * RATE_Hz);
    double end_s = sent.begin_s;
    double phase = 0.0;
    for (const testsupport::Piece& element : elements) {
        end_s += element.duration_s;
        const double tone_Hz = sent.centre_Hz + (element.mark ? 0.5 : -0.5) * sent.shift_Hz;
        for (; n < samples.size() && static_cast<double>(n) < end_s * RATE_Hz; ++n) {
            phase += 2.0 * PI * tone_Hz / RATE_Hz;
            samples[n] += std::complex<float>(std::polar(amplitude, phase));
        }
    }
}

Samples bandOf(const std::vector<Sent>& signals, double duration_s)
{
    Samples samples = noise(duration_s);
    for (const Sent& sent : signals)
        add(samples, sent);
    return samples;
}

struct Heard
{
    double tone_Hz;
    double begin_s;
    std::string text;
    SignalReport report;
    std::int64_t end_us;
};

class Sink : public BandSink
{
public:
    void signalFound(int signal, double tone_Hz, double) override
    {
        log += "found " + std::to_string(signal) + " at " + std::to_string(tone_Hz) + " Hz\n";
        ++found;
    }
    void transmissionStarted(int signal, double tone_Hz, std::int64_t time_us) override
    {
        QVERIFY(m_open.count(signal) == 0);
        m_open[signal] = {tone_Hz, static_cast<double>(time_us) / 1e6, {}};
        log += std::to_string(signal) + " starts " + std::to_string(time_us) + "\n";
    }
    void symbol(int signal, int code, std::int64_t time_us) override
    {
        QVERIFY(m_open.count(signal) == 1);
        m_open[signal].codes.push_back(code);
        log += std::to_string(signal) + " " + std::to_string(code) + " at " +
               std::to_string(time_us) + "\n";
    }
    void transmissionStopped(int signal, std::int64_t time_us, const SignalReport& report) override
    {
        const Open& open = m_open[signal];
        heard.push_back({open.tone_Hz, open.begin_s, testsupport::textOfCodes(open.codes, '*'),
                         report, time_us});
        m_open.erase(signal);
        log += std::to_string(signal) + " stops " + std::to_string(time_us) + "\n";
    }
    void teleprinterFound(int signal, const teleprinter::Line& line, double snr_dB) override
    {
        QVERIFY(teleprinters.count(signal) == 0);
        teleprinters[signal].line = line;
        teleprinters[signal].snr_dB = snr_dB;
    }
    void teleprinterStarted(int signal, const teleprinter::Line&, std::int64_t time_us) override
    {
        teleprinters.at(signal).begin_s = static_cast<double>(time_us) / 1e6;
    }
    void teleprinterCharacter(int signal, std::uint8_t character, std::int64_t) override
    {
        teleprinters.at(signal).text += static_cast<char>(character);
    }
    void teleprinterStopped(int signal, const teleprinter::Line&, std::int64_t) override
    {
        ++teleprinters.at(signal).stops;
    }
    void signalLost(int signal) override
    {
        log += "lost " + std::to_string(signal) + "\n";
        ++lost;
    }

    // Text near a tone, by time.
    QString textNear(double tone_Hz) const
    {
        std::map<double, std::string> texts;
        for (const Heard& one : heard) {
            if (std::fabs(one.tone_Hz - tone_Hz) < 30.0)
                texts[one.begin_s] += one.text + " ";
        }
        std::string all;
        for (const auto& text : texts)
            all += text.second;
        return QString::fromStdString(testsupport::asReceived(all));
    }

    // All transmissions, for messages.
    std::string summary() const
    {
        std::string all;
        for (const Heard& one : heard)
            all += std::to_string(one.begin_s) + " s " + std::to_string(one.tone_Hz) +
                   " Hz: " + one.text + "\n";
        return all;
    }

    struct Teleprinter
    {
        teleprinter::Line line;
        double snr_dB = 0.0;
        double begin_s = 0.0;
        std::string text;
        int stops = 0;
    };
    std::map<int, Teleprinter> teleprinters;
    std::vector<Heard> heard;
    std::string log;
    int found = 0;
    int lost = 0;

private:
    struct Open
    {
        double tone_Hz;
        double begin_s;
        std::vector<int> codes;
    };
    std::map<int, Open> m_open;
};

Sink receive(const Samples& samples, const BandSettings& settings, std::size_t piece = 1000)
{
    Sink sink;
    BandReceiver receiver(settings, sink);
    for (std::size_t at = 0; at < samples.size(); at += piece)
        receiver.push(&samples[at], std::min(piece, samples.size() - at));
    receiver.finish();
    return sink;
}

BandSettings complexBand(unsigned threads = 2)
{
    BandSettings settings;
    settings.format = {RATE_Hz, true};
    settings.threads = threads;
    return settings;
}

// Characters in all.
std::size_t given(const Sink& sink)
{
    std::size_t count = 0;
    for (const Heard& one : sink.heard)
        count += testsupport::asReceived(one.text).size();
    return count;
}

} // namespace

Q_DECLARE_METATYPE(testsupport::TeleprinterCode)

class tst_BandReceiver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsSignalsSideBySide()
    {
        const Sink sink =
            receive(bandOf({{1.0, -2500.0, 20.0, 18.0, "CQ CQ DE DL0ABC DL0ABC K"},
                            {2.0, 310.0, 10.0, 25.0, "THE WEATHER HERE IS FINE AND WARM TODAY"},
                            {1.5, 390.0, 12.0, 28.0, "NAME HANS QTH BERLIN RIG 100W ANT DIPOLE UP"},
                            {1.0, 1900.0, 6.0, 30.0, "TEST G4XYZ G4XYZ TEST G4XYZ TEST"}},
                           22.0),
                    complexBand());
        QCOMPARE(sink.textNear(-2500.0), QStringLiteral("CQ CQ DE DL0ABC DL0ABC K"));
        QCOMPARE(sink.textNear(310.0), QStringLiteral("THE WEATHER HERE IS FINE AND WARM TODAY"));
        QCOMPARE(sink.textNear(390.0),
                 QStringLiteral("NAME HANS QTH BERLIN RIG 100W ANT DIPOLE UP"));
        QCOMPARE(sink.textNear(1900.0), QStringLiteral("TEST G4XYZ G4XYZ TEST G4XYZ TEST"));
        QCOMPARE(sink.found, 4);
        QCOMPARE(sink.lost, 4);
        for (const Heard& one : sink.heard) {
            if (one.tone_Hz < 0.0) {
                QVERIFY(std::fabs(one.report.tone_Hz + 2500.0) < 1.0);
                QVERIFY(std::fabs(one.report.speed_wpm - 18.0) < 1.5);
                QVERIFY(std::fabs(one.report.snr_dB - 20.0) < 2.5);
                QVERIFY(std::fabs(one.begin_s - 1.0) < 0.02);
            }
        }
    }

    void soundIsReadAsIQIs()
    {
        Samples samples = bandOf({{1.0, 1500.0, 15.0, 22.0, "CQ TEST DL0XYZ DL0XYZ TEST"}}, 17.0);
        for (std::complex<float>& sample : samples)
            sample.imag(0.0F);
        BandSettings settings;
        settings.format.rate_Hz = RATE_Hz;
        settings.threads = 1;
        const Sink sink = receive(samples, settings);
        QCOMPARE(sink.textNear(1500.0), QStringLiteral("CQ TEST DL0XYZ DL0XYZ TEST"));
    }

    void neitherThreadsNorPiecesChangeAnything()
    {
        const Samples samples = bandOf({{0.5, -1200.0, 15.0, 30.0, "TEST DL1ABC DL1ABC"},
                                        {6.5, -1185.0, 5.0, 24.0, "OK2XYZ"},
                                        {1.0, 2000.0, 8.0, 22.0, "QRL? QRL? DE SM5AA"}},
                                       12.0);
        const Sink once = receive(samples, complexBand(1), samples.size());
        QVERIFY(!once.heard.empty());
        QCOMPARE(receive(samples, complexBand(3), 777).log, once.log);
        QCOMPARE(receive(samples, complexBand(2), 1).log, once.log);
    }

    // They answer each other within a second, beside and much weaker.
    void eachStationOnAFrequencyHasATransmissionOfItsOwn()
    {
        const Sink sink = receive(bandOf({{1.0, 500.0, 20.0, 23.0, "TEST HG0IC HG0IC"},
                                          {10.0, 528.0, 17.0, 35.0, "E3NHK"},
                                          {12.2, 500.0, 20.0, 23.0, "E3NHK 5NN 735"},
                                          {19.8, 528.0, 17.0, 35.0, "R 5NN 822"},
                                          {24.2, 500.0, 20.0, 23.0, "TU HG0IC"}},
                                         32.0),
                                  complexBand());
        std::vector<std::string> texts;
        for (const Heard& one : sink.heard)
            texts.push_back(testsupport::asReceived(one.text));
        const std::vector<std::string> expected = {"TEST HG0IC HG0IC", "E3NHK", "E3NHK 5NN 735",
                                                   "R 5NN 822", "TU HG0IC"};
        QVERIFY2(texts == expected, qPrintable(QString::fromStdString(sink.summary())));
        QVERIFY(std::fabs(sink.heard[1].report.speed_wpm - 35.0) < 3.0);
        QVERIFY(std::fabs(sink.heard[1].report.tone_Hz - 528.0) < 2.0);
    }

    // Found both as the next one of its frequency and by itself.
    void anAnswerOfOneLetterIsGivenOnce()
    {
        const Sink sink = receive(
            bandOf({{1.0, 500.0, 22.0, 26.0, "TEST HG0IC"}, {7.117, 530.6, 20.8, 33.0, "R"}}, 18.0),
            complexBand());
        QCOMPARE(sink.textNear(515.0), QString("TEST HG0IC R"));
    }

    void aStationThatComesBackKeepsItsNumber()
    {
        const Sink sink = receive(bandOf({{1.0, 500.0, 20.0, 25.0, "CQ DL1AA DL1AA K"},
                                          {15.0, 500.0, 20.0, 25.0, "CQ DL1AA DL1AA K"}},
                                         26.0),
                                  complexBand());
        QCOMPARE(sink.heard.size(), std::size_t(2));
        QCOMPARE(sink.found, 1);
    }

    void teleprintersAreGivenAsSuchAndNeverAsMorse()
    {
        const std::string weather = "NORTH SEA. WIND WEST 5, LATER 7. SEA 3 METRES, RAIN.\r\n"
                                    "GERMAN BIGHT. WIND NORTH 4, LATER EAST 6, FOG PATCHES.";
        const std::string contact =
            "CQ CQ DE DL0XYZ DL0XYZ PSE K THE QUICK BROWN FOX JUMPS OVER\r\n"
            "THE LAZY DOG 12345 67890 CQ CQ DE DL0XYZ DL0XYZ PSE KKK";
        Samples samples = noise(32.0);
        add(samples, Sent{3.0, -500.0, 20.0, 25.0, "CQ CQ DE OK2ABC OK2ABC K CQ CQ DE OK2ABC K"});
        add(samples, Sent{2.0, 1130.0, 20.0, 22.0, "TEST DE PA3XYZ PA3XYZ TEST DE PA3XYZ TEST"});
        add(samples, SentByTeleprinter{2.0, 2000.0, 170.0, 45.45, 15.0, contact});
        add(samples, SentByTeleprinter{4.0, -2500.0, 450.0, 50.0, 12.0, weather});
        const Sink sink = receive(samples, complexBand());
        QCOMPARE(sink.teleprinters.size(), std::size_t(2));
        for (const auto& numbered : sink.teleprinters) {
            const Sink::Teleprinter& one = numbered.second;
            const bool isWeather = one.line.centre_Hz() < 0.0;
            QCOMPARE(QString::fromStdString(one.text),
                     QString::fromStdString(isWeather ? weather : contact));
            QCOMPARE(one.line.kind.baud, isWeather ? 50.0 : 45.45);
            QVERIFY(std::fabs(one.line.centre_Hz() - (isWeather ? -2500.0 : 2000.0)) < 5.0);
            QVERIFY(std::fabs(one.line.shift_Hz() - (isWeather ? 450.0 : 170.0)) < 5.0);
            QVERIFY2(std::fabs(one.snr_dB - (isWeather ? 12.0 : 15.0)) < 3.0,
                     qPrintable(QString::number(one.snr_dB)));
            // Half a second of mark and a shift to letters come before the first character.
            QVERIFY2(std::fabs(one.begin_s - (isWeather ? 4.5 : 2.5)) < 0.2,
                     qPrintable(QString::number(one.begin_s)));
            QCOMPARE(one.stops, 1);
        }
        QCOMPARE(sink.textNear(-500.0), QString("CQ CQ DE OK2ABC OK2ABC K CQ CQ DE OK2ABC K"));
        QCOMPARE(sink.textNear(1130.0), QString("TEST DE PA3XYZ PA3XYZ TEST DE PA3XYZ TEST"));
        for (const Heard& one : sink.heard)
            QVERIFY2(std::fabs(one.tone_Hz + 500.0) < 30.0 ||
                         std::fabs(one.tone_Hz - 1130.0) < 30.0,
                     sink.summary().c_str());
        const Sink same = receive(samples, complexBand(1), 777);
        QCOMPARE(same.log, sink.log);
    }

    // For two seconds before and one after it, phasing signals: of one tone alone they are a row of
    // clean letters.
    void neitherTheBeginNorTheEndOfATeleprinterIsMorse_data()
    {
        QTest::addColumn<double>("snr_dB");
        for (const double snr_dB : {7.0, 22.0})
            QTest::newRow(qPrintable(QString::number(snr_dB) + QLatin1String(" dB"))) << snr_dB;
    }
    void neitherTheBeginNorTheEndOfATeleprinterIsMorse()
    {
        QFETCH(double, snr_dB);
        const std::string text = "GALE WARNING GERMAN BIGHT. WIND NORTH WEST 8, SEA ROUGH.";
        Samples samples = noise(25.0, std::to_string(snr_dB));
        add(samples, SentByTeleprinter{2.0, 1500.0, 170.0, 100.0, snr_dB, text,
                                       testsupport::TeleprinterCode::SitorB});
        const Sink sink = receive(samples, complexBand());
        QCOMPARE(sink.teleprinters.size(), std::size_t(1));
        QCOMPARE(sink.teleprinters.begin()->second.text, text);
        QVERIFY2(sink.heard.empty(), sink.summary().c_str());
    }

    void aTeleprinterOfAnyKindIsReadAndIsNoMorse_data()
    {
        using testsupport::TeleprinterCode;
        QTest::addColumn<TeleprinterCode>("code");
        QTest::addColumn<double>("baud");
        QTest::addColumn<double>("shift_Hz");
        QTest::addColumn<double>("snr_dB");
        QTest::addColumn<int>("repeats");
        QTest::newRow("weak") << TeleprinterCode::Ita2 << 45.45 << 170.0 << 3.0 << 1;
        QTest::newRow("narrow") << TeleprinterCode::Ita2 << 45.45 << 85.0 << 10.0 << 1;
        QTest::newRow("wide") << TeleprinterCode::Ita2 << 50.0 << 850.0 << 6.0 << 1;
        QTest::newRow("short, ASCII") << TeleprinterCode::Ascii7Even << 110.0 << 170.0 << 20.0 << 1;
        QTest::newRow("long, ASCII") << TeleprinterCode::Ascii7Even << 110.0 << 170.0 << 10.0 << 3;
        QTest::newRow("150 Bd") << TeleprinterCode::Ascii7 << 150.0 << 170.0 << 15.0 << 3;
        QTest::newRow("200 Bd") << TeleprinterCode::Ascii8 << 200.0 << 170.0 << 15.0 << 3;
        QTest::newRow("300 Bd") << TeleprinterCode::Ascii8 << 300.0 << 200.0 << 20.0 << 4;
        QTest::newRow("200 Bd, wide") << TeleprinterCode::Ascii8 << 200.0 << 850.0 << 20.0 << 4;
        QTest::newRow("300 Bd, wide") << TeleprinterCode::Ascii7Even << 300.0 << 850.0 << 20.0 << 4;
        QTest::newRow("Sitor-B, weak") << TeleprinterCode::SitorB << 100.0 << 170.0 << 0.0 << 1;
    }
    void aTeleprinterOfAnyKindIsReadAndIsNoMorse()
    {
        QFETCH(testsupport::TeleprinterCode, code);
        QFETCH(double, baud);
        QFETCH(double, shift_Hz);
        QFETCH(double, snr_dB);
        QFETCH(int, repeats);
        std::string text;
        for (int i = 0; i < repeats; ++i)
            text += "GALE WARNING GERMAN BIGHT. WIND NORTH WEST 8, SEA ROUGH. ";
        Samples samples = noise(25.0, QTest::currentDataTag());
        add(samples, SentByTeleprinter{2.0, 1500.0, shift_Hz, baud, snr_dB, text, code});
        const Sink sink = receive(samples, complexBand());
        QVERIFY2(sink.heard.empty(), sink.summary().c_str());
        QCOMPARE(sink.teleprinters.size(), std::size_t(1));
        const auto errors = testsupport::editDistance(text, sink.teleprinters.begin()->second.text);
        QVERIFY2(errors <= 1, sink.teleprinters.begin()->second.text.c_str());
    }

    void shiftedDataThatNoDecoderReadsGivesNothing()
    {
        Random random("data");
        Samples samples = noise(25.0, "data");
        for (const double baud : {100.0, 250.0}) {
            std::vector<bool> bits(static_cast<std::size_t>(25.0 * baud) + 1);
            for (std::size_t i = 0; i < bits.size(); ++i)
                bits[i] = random.below(2) != 0U;
            double phase = 0.0;
            for (std::size_t n = 0; n < samples.size(); ++n) {
                const auto at = static_cast<std::size_t>(static_cast<double>(n) / RATE_Hz * baud);
                phase += 2.0 * PI * (10.0 * baud + (bits[at] ? 100.0 : -100.0)) / RATE_Hz;
                samples[n] += std::complex<float>(std::polar(amplitudeOf(12.0), phase));
            }
        }
        const Sink sink = receive(samples, complexBand());
        QVERIFY2(sink.heard.empty(), sink.summary().c_str());
        QVERIFY(sink.teleprinters.empty());
    }

    void aWeakTeleprinterBesideAStrongSignalIsRead()
    {
        const std::string text = "NORTH SEA. WIND WEST 5, LATER 7. SEA 3 METRES, RAIN.\r\n"
                                 "GERMAN BIGHT. WIND NORTH 4, LATER EAST 6, FOG PATCHES.";
        Samples samples = noise(30.0);
        add(samples, SentByTeleprinter{2.0, 1500.0, 170.0, 45.45, 7.0, text});
        add(samples, Sent{1.0, 735.0, 23.0, 21.0, "CQ CQ DE OK2ABC OK2ABC K CQ CQ DE OK2ABC K"});
        const Sink sink = receive(samples, complexBand());
        QCOMPARE(sink.teleprinters.size(), std::size_t(1));
        QCOMPARE(QString::fromStdString(sink.teleprinters.begin()->second.text),
                 QString::fromStdString(text));
        QCOMPARE(sink.textNear(735.0), QString("CQ CQ DE OK2ABC OK2ABC K CQ CQ DE OK2ABC K"));
        QCOMPARE(sink.heard.size(), std::size_t(1));
    }

    void aWeakSignalBesideAStrongTeleprinterIsRead()
    {
        Samples samples = noise(30.0);
        add(samples, SentByTeleprinter{2.0, 1500.0, 450.0, 50.0, 25.0,
                                       "NORTH SEA. WIND WEST 5, LATER 7. SEA 3 METRES, RAIN.\r\n"
                                       "GERMAN BIGHT. WIND NORTH 4, LATER EAST 6, FOG PATCHES."});
        add(samples, Sent{5.0, 800.0, 6.0, 25.0, "CQ CQ DE OK2ABC OK2ABC K CQ CQ DE OK2ABC K"});
        const Sink sink = receive(samples, complexBand());
        QCOMPARE(sink.teleprinters.size(), std::size_t(1));
        QCOMPARE(sink.textNear(800.0), QString("CQ CQ DE OK2ABC OK2ABC K CQ CQ DE OK2ABC K"));
        QCOMPARE(sink.heard.size(), std::size_t(1));
    }

    void whatIsNoKeyingGivesNothing_data()
    {
        QTest::addColumn<QString>("what");
        for (const char* const what :
             {"noise", "carriers", "teleprinter", "constant", "not a number", "silence", "clicks",
              "clipped noise", "noise through a receiver's filter", "noise that falls by 26 dB",
              "noise that falls to nothing"})
            QTest::newRow(what) << what;
    }
    void whatIsNoKeyingGivesNothing()
    {
        QFETCH(QString, what);
        constexpr double DURATION_s = 25.0;
        Samples samples = noise(DURATION_s, what.toStdString());
        Random random(what.toStdString());
        if (what == QLatin1String("carriers")) {
            for (const double tone_Hz : {-3000.0, -1000.0, 5.0, 700.0, 2222.0})
                add(samples, tone_Hz, [](double) { return amplitudeOf(20.0); });
        } else if (what == QLatin1String("teleprinter")) {
            // 45.45 baud, 170 Hz
            std::vector<bool> bits;
            for (double t = 0.0; t < DURATION_s; t += 0.022)
                bits.push_back(random.below(2) != 0U);
            const auto bit = [&bits](double t) {
                return bits[static_cast<std::size_t>(t / 0.022)];
            };
            add(samples, 800.0, [&](double t) { return bit(t) ? amplitudeOf(20.0) : 0.0; });
            add(samples, 970.0, [&](double t) { return bit(t) ? 0.0 : amplitudeOf(20.0); });
        } else if (what == QLatin1String("constant")) {
            for (std::complex<float>& sample : samples)
                sample += std::complex<float>(50.0F, -30.0F);
        } else if (what == QLatin1String("not a number")) {
            for (std::size_t n = 0; n < samples.size(); n += 50)
                samples[n] = {std::numeric_limits<float>::quiet_NaN(),
                              std::numeric_limits<float>::infinity()};
        } else if (what == QLatin1String("silence")) {
            samples.assign(samples.size(), 0.0F);
        } else if (what == QLatin1String("clicks")) {
            for (int i = 0; i < 75; ++i) {
                const std::size_t at = random.below(samples.size() - 16);
                for (std::size_t n = at; n < at + 16; ++n)
                    samples[n] *= 20.0F;
            }
        } else if (what == QLatin1String("clipped noise")) {
            for (std::complex<float>& sample : samples)
                sample = {std::copysign(1.0F, sample.real()), std::copysign(1.0F, sample.imag())};
        } else if (what == QLatin1String("noise through a receiver's filter")) {
            samples = testsupport::within(2400.0, noise(100.0, what.toStdString()), RATE_Hz);
        } else if (what.startsWith(QLatin1String("noise that falls"))) {
            const float left = what.endsWith(QLatin1String("nothing")) ? 0.0F : 0.05F;
            for (std::size_t n = samples.size() / 2; n < samples.size(); ++n)
                samples[n] *= left;
        }
        const Sink sink = receive(samples, complexBand());
        QVERIFY2(given(sink) == 0, qPrintable(QString::fromStdString(sink.log).left(1500)));
        QCOMPARE(sink.found, 0);
        QVERIFY(sink.teleprinters.empty());
    }

    // Moments at which what is usual, measured once a second, lies between both levels, or above.
    void noiseThatFallsIsNoKeying_data()
    {
        QTest::addColumn<double>("fall_dB");
        QTest::addColumn<double>("moment_s");
        QTest::newRow("by 8 dB") << 8.0 << 7.8;
        QTest::newRow("by 10 dB") << 10.0 << 8.4;
        QTest::newRow("by 26 dB") << 26.0 << 7.95;
    }
    void noiseThatFallsIsNoKeying()
    {
        QFETCH(double, fall_dB);
        QFETCH(double, moment_s);
        Samples samples = noise(17.0);
        const auto left = static_cast<float>(std::pow(10.0, -0.05 * fall_dB));
        for (auto n = static_cast<std::size_t>(moment_s * RATE_Hz); n < samples.size(); ++n)
            samples[n] *= left;
        QCOMPARE(receive(samples, complexBand()).found, 0);
    }

    // Hard edges, an image 25 dB down, and nothing but the one signal is to be seen.
    void aSignalsClicksAndImageAreNoSignals()
    {
        Samples samples = noise(22.0);
        add(samples, {1.0, 1500.0, 35.0, 25.0, "CQ CQ CQ DE DL0ABC DL0ABC DL0ABC K"}, 0.0005);
        for (std::complex<float>& sample : samples)
            sample = 0.03F * (sample + 0.056F * std::conj(sample));
        const Sink sink = receive(samples, complexBand());
        QCOMPARE(sink.textNear(1500.0), QStringLiteral("CQ CQ CQ DE DL0ABC DL0ABC DL0ABC K"));
        QVERIFY2(sink.found == 1, qPrintable(QString::fromStdString(sink.log).left(1500)));
    }

    void damagedInputIsReadWhereThatIsPossible_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<double>("tone_Hz");
        QTest::newRow("I and Q exchanged: the band is mirrored") << "exchanged" << -1500.0;
        QTest::newRow("a spike at 0 Hz") << "spike" << 1500.0;
        QTest::newRow("the gain steps by 20 dB") << "gain" << 1500.0;
        QTest::newRow("clipped") << "clipped" << 1500.0;
        QTest::newRow("a rate that is wrong by 5 %: tones are as well") << "rate" << 1575.0;
    }
    void damagedInputIsReadWhereThatIsPossible()
    {
        QFETCH(QString, what);
        QFETCH(double, tone_Hz);
        const std::string text = "CQ CQ DE DL0ABC DL0ABC K CQ CQ DE DL0ABC DL0ABC K";
        Samples samples = bandOf({{1.0, 1500.0, 18.0, 25.0, text}}, 32.0);
        for (std::size_t n = 0; n < samples.size(); ++n) {
            std::complex<float>& sample = samples[n];
            if (what == QLatin1String("exchanged"))
                sample = {sample.imag(), sample.real()};
            else if (what == QLatin1String("spike"))
                sample += 20.0F;
            else if (what == QLatin1String("gain"))
                sample *= n < samples.size() / 2 ? 0.1F : 1.0F;
            else if (what == QLatin1String("clipped")) // the signal alone, at half its height
                sample = {std::clamp(sample.real(), -1.0F, 1.0F),
                          std::clamp(sample.imag(), -1.0F, 1.0F)};
        }
        BandSettings settings = complexBand();
        if (what == QLatin1String("rate"))
            settings.format.rate_Hz *= 1.05;
        const Sink sink = receive(samples, settings);
        const double error =
            testsupport::characterErrorRate(text, sink.textNear(tone_Hz).toStdString());
        QVERIFY2(error < 0.1, qPrintable(sink.textNear(tone_Hz)));
        QVERIFY2(sink.found <= 2, qPrintable(QString::number(sink.found)));
    }

    void onlyTheStrongestAreKept()
    {
        std::vector<Sent> signals;
        for (int i = 0; i < 6; ++i)
            signals.push_back(
                {1.0, -3000.0 + 1000.0 * i, 8.0 + 4.0 * i, 25.0, "CQ CQ CQ DE DL0ABC DL0ABC"});
        BandSettings settings = complexBand();
        settings.mostSignals = 2;
        const Samples samples = bandOf(signals, 16.0);
        Sink sink;
        BandReceiver receiver(settings, sink);
        std::size_t most = 0;
        std::size_t dropped = 0;
        for (std::size_t at = 0; at < samples.size(); at += 800) {
            receiver.push(&samples[at], std::min<std::size_t>(800, samples.size() - at));
            most = std::max(most, receiver.signals().size());
            dropped = receiver.dropped();
        }
        receiver.finish();
        QVERIFY(most <= 2);
        QVERIFY(dropped >= 4);
        QVERIFY(!sink.textNear(2000.0).isEmpty());
        QVERIFY(!sink.textNear(1000.0).isEmpty());
    }

    void limitsLeaveOutWhatIsBeyond()
    {
        BandSettings settings = complexBand();
        settings.lowest_Hz = -1000.0;
        settings.highest_Hz = 1500.0;
        settings.leastSnr_dB = 10.0;
        const Sink sink = receive(bandOf({{1.0, -2000.0, 20.0, 25.0, "CQ CQ DE DL1AA"},
                                          {1.0, 500.0, 18.0, 25.0, "CQ CQ DE DL2BB"},
                                          {1.0, 1200.0, 4.0, 25.0, "CQ CQ DE DL3CC"},
                                          {1.0, 2000.0, 20.0, 25.0, "CQ CQ DE DL4DD"}},
                                         12.0),
                                  settings);
        QCOMPARE(sink.found, 1);
        QCOMPARE(sink.textNear(500.0), QStringLiteral("CQ CQ DE DL2BB"));
    }

    void otherRatesHearNothing_data()
    {
        QTest::addColumn<double>("rate_Hz");
        QTest::newRow("too low") << 3999.0;
        QTest::newRow("too high") << 2.5e6;
        QTest::newRow("none") << 0.0;
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
    }
    void otherRatesHearNothing()
    {
        QFETCH(double, rate_Hz);
        BandSettings settings;
        settings.format.rate_Hz = rate_Hz;
        Sink sink;
        BandReceiver receiver(settings, sink);
        const Samples samples(1000, 1.0F);
        receiver.push(samples.data(), samples.size());
        receiver.finish();
        QVERIFY(sink.log.empty());
        QVERIFY(receiver.signals().empty());
        QCOMPARE(receiver.dropped(), std::size_t(0));
    }
};

QTEST_APPLESS_MAIN(tst_BandReceiver)
#include "tst_bandreceiver.moc"
