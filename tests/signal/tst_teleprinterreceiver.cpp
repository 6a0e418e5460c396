// SPDX-License-Identifier: MIT
#include "signal/teleprinter/teleprinterreceiver.h"

#include "support/morsecode.h"
#include "support/teleprinterkeyer.h"

#include <QtTest>
#include <cmath>
#include <functional>
#include <limits>

using namespace testsupport;
using namespace teleprinter;

Q_DECLARE_METATYPE(Machine)
Q_DECLARE_METATYPE(TonePath)

namespace {

constexpr double RATE_Hz = 8000.0;
const char* const TEXT =
    "CQ CQ DE DL0XYZ THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 12345 67890\r\n"
    "WEATHER NORTH SEA. WIND WEST 5, LATER 7. SEA 3 METRES.\r\n";

class TextList : public TextSink
{
public:
    void transmissionStarted(const Line& line, std::int64_t time_us) override
    {
        lines.push_back(line);
        starts_us.push_back(time_us);
        found_s = now_s;
    }
    void character(std::uint8_t character, std::int64_t) override
    {
        text += QLatin1Char(static_cast<char>(character));
    }
    void transmissionStopped(const Line&, std::int64_t time_us) override
    {
        stops_us.push_back(time_us);
    }

    QString text;
    std::vector<Line> lines;
    std::vector<std::int64_t> starts_us;
    std::vector<std::int64_t> stops_us;
    double now_s = 0.0;
    double found_s = 0.0;
};

TextList receive(const std::vector<float>& samples, const Settings& settings = {},
                 std::size_t piece = 400)
{
    TextList list;
    Receiver receiver(settings, list);
    for (std::size_t at = 0; at < samples.size(); at += piece) {
        const std::size_t count = std::min(piece, samples.size() - at);
        list.now_s = static_cast<double>(at + count) / settings.sampleRate_Hz;
        receiver.push(samples.data() + at, count);
    }
    receiver.finish();
    return list;
}

std::vector<float> sent(const Machine& machine, const TonePath& path, double rate_Hz = RATE_Hz)
{
    return teleprinterSound(teleprinterElements(TEXT, machine, "receiver"), path, rate_Hz,
                            "receiver");
}

QString expected(TeleprinterCode code)
{
    return QString::fromStdString(teleprinterText(TEXT, code));
}

} // namespace

class tst_TeleprinterReceiver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itReadsWithoutSettings_data();
    void itReadsWithoutSettings();

    void signalIsFoundWithinThreeSecondsOfKeying()
    {
        TonePath path;
        path.snr_dB = 6.0;
        Machine machine;
        const TextList heard = receive(sent(machine, path));
        QVERIFY(!heard.lines.empty());
        // Found within three seconds, and given with what it takes to be sure of a character.
        QVERIFY2(heard.found_s < path.before_s + machine.idle_s + 3.0 + 1.5,
                 qPrintable(QString::number(heard.found_s)));
    }

    void weakSignalIsMostlyRead()
    {
        TonePath path;
        path.snr_dB = -2.0;
        const TextList heard = receive(sent(Machine(), path));
        const std::size_t errors =
            editDistance(expected(TeleprinterCode::Ita2).toStdString(), heard.text.toStdString());
        QVERIFY2(errors <= 13, qPrintable(heard.text));
    }

    void otherSoundsAreNoTeleprinter_data()
    {
        QTest::addColumn<QVector<float>>("samples");
        const auto add = [](const char* name, const std::vector<float>& samples) {
            QTest::newRow(name) << QVector<float>(samples.begin(), samples.end());
        };
        add("noise", noise(30.0, 0.1, RATE_Hz, "receiver"));
        Path path;
        path.snr_dB = 15.0;
        add("Morse", sound(TEXT, Hand(), path, RATE_Hz, "receiver"));
        path.hum_dB = 10.0;
        path.before_s = 30.0;
        add("hum", sound(std::vector<Piece>(), path, RATE_Hz, "receiver"));
        add("silence", std::vector<float>(240000, 0.0F));
    }
    void otherSoundsAreNoTeleprinter()
    {
        QFETCH(QVector<float>, samples);
        const TextList heard = receive({samples.begin(), samples.end()});
        QCOMPARE(heard.lines.size(), std::size_t(0));
        QCOMPARE(heard.text, QString());
    }

    void resultDoesNotDependOnHowTheInputIsCut()
    {
        TonePath path;
        path.snr_dB = 0.0;
        const std::vector<float> samples = sent(Machine(), path);
        const TextList one = receive(samples, {}, 1);
        const TextList all = receive(samples, {}, samples.size());
        QCOMPARE(one.text, all.text);
        QCOMPARE(one.starts_us, all.starts_us);
        QCOMPARE(one.stops_us, all.stops_us);
    }

    void transmissionHasItsTimes()
    {
        TonePath path;
        path.snr_dB = 20.0;
        path.after_s = 6.0;
        const Machine machine;
        const std::vector<float> samples = sent(machine, path);
        const TextList heard = receive(samples);
        QCOMPARE(heard.starts_us.size(), std::size_t(1));
        const double begin_s = path.before_s + machine.idle_s;
        QVERIFY(std::fabs(static_cast<double>(heard.starts_us[0]) / 1e6 - begin_s) < 0.02);
        const double end_s =
            static_cast<double>(samples.size()) / RATE_Hz - path.after_s - machine.idle_s;
        QVERIFY(std::fabs(static_cast<double>(heard.stops_us[0]) / 1e6 - end_s) < 0.05);
    }

    void twoTransmissionsAreTwo()
    {
        TonePath path;
        path.snr_dB = 20.0;
        path.after_s = 6.0;
        std::vector<float> samples = sent(Machine(), path);
        const std::vector<float> again = samples;
        samples.insert(samples.end(), again.begin(), again.end());
        const TextList heard = receive(samples);
        QCOMPARE(heard.stops_us.size(), std::size_t(2));
        QCOMPARE(heard.text, expected(TeleprinterCode::Ita2) + expected(TeleprinterCode::Ita2));
    }

    void messagesOfOneBroadcastAreTransmissions()
    {
        const std::string first = "ZCZC NA12\r\nNORTH SEA. BUOY UNLIT.\r\nNNNN";
        const std::string second = "ZCZC NB07\r\nGALE WARNING GERMAN BIGHT.\r\nNNNN";
        Machine machine;
        machine.code = TeleprinterCode::SitorB;
        machine.baud = 100.0;
        TonePath path;
        path.snr_dB = 10.0;
        const std::vector<float> samples = teleprinterSound(
            teleprinterElements(first + "\r\n\r\n" + second + "\r\n", machine, "messages"), path,
            RATE_Hz, "messages");
        const TextList heard = receive(samples);
        QCOMPARE(heard.text, QString::fromStdString(first + second));
        QCOMPARE(heard.starts_us.size(), std::size_t(2));
        QCOMPARE(heard.stops_us.size(), std::size_t(2));
        QVERIFY(heard.stops_us[0] < heard.starts_us[1]);
    }

    void whatIsSetIsKeptTo()
    {
        TonePath path;
        path.snr_dB = 20.0;
        const std::vector<float> samples = sent(Machine(), path);
        Settings settings;
        settings.known.codes = {Code::Ita2};
        settings.known.baud = 45.45;
        settings.known.shift_Hz = 170.0;
        settings.known.centre_Hz = 1500.0;
        settings.known.reversed = false;
        QCOMPARE(receive(samples, settings).text, expected(TeleprinterCode::Ita2));
        Settings other = settings;
        other.known.centre_Hz = 900.0;
        QCOMPARE(receive(samples, other).text, QString());
        other = settings;
        other.known.shift_Hz = 450.0;
        QCOMPARE(receive(samples, other).text, QString());
        other = settings;
        other.known.codes = {Code::Ccir476};
        other.known.baud.reset();
        QCOMPARE(receive(samples, other).text, QString());
    }

    void typedTextIsFoundByItsFirstCharactersAndReadWhole_data()
    {
        QTest::addColumn<double>("pause_bits");
        QTest::addColumn<double>("snr_dB");
        QTest::addColumn<double>("within_s");
        QTest::newRow("four characters a second") << 6.0 << 20.0 << 5.0;
        QTest::newRow("a character and a half a second") << 20.0 << 10.0 << 14.0;
    }
    void typedTextIsFoundByItsFirstCharactersAndReadWhole()
    {
        QFETCH(double, pause_bits);
        QFETCH(double, snr_dB);
        QFETCH(double, within_s);
        Machine machine;
        machine.typedPause_bits = pause_bits;
        TonePath path;
        path.snr_dB = snr_dB;
        const TextList heard = receive(sent(machine, path));
        QCOMPARE(heard.text, expected(machine.code));
        QCOMPARE(heard.lines.size(), std::size_t(1));
        const double keyed_s = path.before_s + machine.idle_s;
        QVERIFY2(heard.found_s < keyed_s + within_s, qPrintable(QString::number(heard.found_s)));
    }

    // A speed that is wrong by less than a clock may be is followed; by more, it is none.
    void wrongSpeedIsNotReadWithIt_data()
    {
        QTest::addColumn<double>("sent");
        QTest::addColumn<double>("known");
        QTest::addColumn<bool>("isRead");
        QTest::newRow("50 Bd for 45.45") << 45.45 << 50.0 << false;
        QTest::newRow("45.45 Bd for 50") << 50.0 << 45.45 << false;
        QTest::newRow("48 Bd for 45.45") << 45.45 << 48.0 << false;
        QTest::newRow("45 Bd for 45.45") << 45.45 << 45.0 << true;
        QTest::newRow("47.5 Bd for 50") << 50.0 << 47.5 << true;
        QTest::newRow("51 Bd for 50") << 50.0 << 51.0 << true;
        QTest::newRow("48 Bd, which is none of the usual") << 48.0 << 48.0 << true;
    }
    void wrongSpeedIsNotReadWithIt()
    {
        QFETCH(double, sent);
        QFETCH(double, known);
        QFETCH(bool, isRead);
        Machine machine;
        machine.baud = sent;
        TonePath path;
        path.snr_dB = 15.0;
        Settings settings;
        settings.known.codes = {Code::Ita2};
        settings.known.baud = known;
        const TextList heard = receive(::sent(machine, path), settings);
        QCOMPARE(heard.text, isRead ? expected(TeleprinterCode::Ita2) : QString());
        QVERIFY2(heard.found_s < path.before_s + machine.idle_s + 3.0,
                 qPrintable(QString::number(heard.found_s)));
    }

    void parityThatIsKnownIsKeptTo()
    {
        Machine machine;
        machine.code = TeleprinterCode::Ascii8Odd;
        machine.baud = 110.0;
        machine.stop_bits = 1.0;
        TonePath path;
        path.snr_dB = 15.0;
        const std::vector<float> samples = sent(machine, path);
        Settings settings;
        settings.known.parity = Parity::Odd;
        QCOMPARE(receive(samples, settings).text, expected(machine.code));
        for (const Parity other : {Parity::None, Parity::Even}) {
            settings.known.parity = other;
            QCOMPARE(receive(samples, settings).text, QString());
        }
    }

    void samplesThatAreNoNumberAreSilence()
    {
        std::vector<float> samples(80000, std::numeric_limits<float>::quiet_NaN());
        for (std::size_t i = 0; i < samples.size(); i += 2)
            samples[i] = std::numeric_limits<float>::infinity();
        QCOMPARE(receive(samples).text, QString());
    }

    void rateOutsideTheLimitsHearsNothing()
    {
        for (const double rate_Hz : {0.0, 3999.0, 800000.0, std::nan("")}) {
            Settings settings;
            settings.sampleRate_Hz = rate_Hz;
            TextList list;
            Receiver receiver(settings, list);
            const float sample = 0.5F;
            receiver.push(&sample, 1);
            receiver.finish();
            QCOMPARE(list.text, QString());
        }
    }
};

void tst_TeleprinterReceiver::itReadsWithoutSettings_data()
{
    QTest::addColumn<Machine>("machine");
    QTest::addColumn<TonePath>("path");
    QTest::addColumn<double>("rate_Hz");
    const auto add = [](const char* name, const std::function<void(Machine&, TonePath&)>& change,
                        double rate_Hz = RATE_Hz) {
        Machine machine;
        TonePath path;
        path.snr_dB = 15.0;
        change(machine, path);
        QTest::newRow(name) << machine << path << rate_Hz;
    };
    add("45.45 Bd, 170 Hz", [](Machine&, TonePath&) {});
    add(
        "at 44100 samples a second", [](Machine&, TonePath&) {}, 44100.0);
    add(
        "at 4000 samples a second", [](Machine&, TonePath& path) { path.centre_Hz = 1000.0; },
        4000.0);
    add("50 Bd, 450 Hz", [](Machine& machine, TonePath& path) {
        machine.baud = 50.0;
        path.shift_Hz = 450.0;
    });
    add("75 Bd, 850 Hz", [](Machine& machine, TonePath& path) {
        machine.baud = 75.0;
        path.shift_Hz = 850.0;
    });
    add("50 Bd, 85 Hz", [](Machine& machine, TonePath& path) {
        machine.baud = 50.0;
        path.shift_Hz = 85.0;
    });
    add("100 Bd", [](Machine& machine, TonePath&) { machine.baud = 100.0; });
    add("reversed", [](Machine&, TonePath& path) { path.reversed = true; });
    add("one stop element", [](Machine& machine, TonePath&) { machine.stop_bits = 1.0; });
    add("typed by hand", [](Machine& machine, TonePath&) { machine.typedPause_bits = 4.0; });
    // The longer nothing was there, the later it is found.
    add("typed slowly, after 16 s of noise", [](Machine& machine, TonePath& path) {
        machine.typedPause_bits = 6.0;
        path.before_s = 16.0;
    });
    add("after 12 s of noise", [](Machine&, TonePath& path) { path.before_s = 12.0; });
    add("no mark before the first character",
        [](Machine& machine, TonePath&) { machine.idle_s = 0.0; });
    add("clock 2 % fast", [](Machine& machine, TonePath&) { machine.fasterClock = 0.02; });
    add("tones fading in turn", [](Machine&, TonePath& path) { path.selective_dB = 12.0; });
    add("keyed carrier beside it", [](Machine&, TonePath& path) { path.carrier_dB = -3.0; });
    add("ASCII, 110 Bd, even parity", [](Machine& machine, TonePath&) {
        machine.code = TeleprinterCode::Ascii7Even;
        machine.baud = 110.0;
        machine.stop_bits = 2.0;
    });
    const auto addAscii = [&add](const char* name, TeleprinterCode code, double baud,
                                 double shift_Hz, double stop_bits) {
        add(name, [=](Machine& machine, TonePath& path) {
            machine.code = code;
            machine.baud = baud;
            machine.stop_bits = stop_bits;
            path.shift_Hz = shift_Hz;
        });
    };
    addAscii("8E1, 110 Bd", TeleprinterCode::Ascii8Even, 110.0, 170.0, 1.0);
    addAscii("8O1, 300 Bd, 200 Hz", TeleprinterCode::Ascii8Odd, 300.0, 200.0, 1.0);
    // Two characters of ten elements are also one of half the speed.
    addAscii("7N2, 300 Bd, 200 Hz", TeleprinterCode::Ascii7, 300.0, 200.0, 2.0);
    addAscii("7N2, 300 Bd, 170 Hz", TeleprinterCode::Ascii7, 300.0, 170.0, 2.0);
    addAscii("7N1, 300 Bd, 170 Hz", TeleprinterCode::Ascii7, 300.0, 170.0, 1.0);
    addAscii("7E1, 300 Bd, 200 Hz", TeleprinterCode::Ascii7Even, 300.0, 200.0, 1.0);
    addAscii("8N1, 300 Bd, 170 Hz", TeleprinterCode::Ascii8, 300.0, 170.0, 1.0);
    addAscii("8N2, 300 Bd, 170 Hz", TeleprinterCode::Ascii8, 300.0, 170.0, 2.0);
    addAscii("7E1, 150 Bd, 600 Hz", TeleprinterCode::Ascii7Even, 150.0, 600.0, 1.0);
    addAscii("7E1, 300 Bd, 850 Hz", TeleprinterCode::Ascii7Even, 300.0, 850.0, 1.0);
    add("Sitor-B", [](Machine& machine, TonePath&) {
        machine.code = TeleprinterCode::SitorB;
        machine.baud = 100.0;
    });
    add("Sitor-B, after 12 s of noise", [](Machine& machine, TonePath& path) {
        machine.code = TeleprinterCode::SitorB;
        machine.baud = 100.0;
        path.before_s = 12.0;
    });
}

void tst_TeleprinterReceiver::itReadsWithoutSettings()
{
    QFETCH(Machine, machine);
    QFETCH(TonePath, path);
    QFETCH(double, rate_Hz);
    Settings settings;
    settings.sampleRate_Hz = rate_Hz;
    const TextList heard = receive(sent(machine, path, rate_Hz), settings);
    QCOMPARE(heard.text, expected(machine.code));
    QCOMPARE(heard.lines.size(), std::size_t(1));
    QCOMPARE(heard.stops_us.size(), std::size_t(1));
    const Line& line = heard.lines.front();
    QVERIFY(std::fabs(line.baud / (machine.baud * (1.0 + machine.fasterClock)) - 1.0) < 0.02);
    QVERIFY(std::fabs(line.shift_Hz() - path.shift_Hz) < 10.0);
    QVERIFY(std::fabs(line.centre_Hz() - path.centre_Hz) < 8.0);
    QCOMPARE(line.isReversed(), path.reversed);
}

QTEST_GUILESS_MAIN(tst_TeleprinterReceiver)
#include "tst_teleprinterreceiver.moc"
