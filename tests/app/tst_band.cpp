// SPDX-License-Identifier: MIT
// `morsehost band` from outside: its forms of output, its kinds of input, and what is wrong with
// either.
#include "support/drawn.h"
#include "support/files.h"
#include "support/keyer.h"
#include "support/program.h"
#include "support/terminal.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <vector>

namespace {

constexpr double RATE_Hz = 8000.0;
constexpr double TONES_Hz[] = {-2000.0, 1500.0};
const char* const TEXTS[] = {"CQ CQ DE DL0ABC DL0ABC K", "TEST G4XYZ G4XYZ TEST"};

using testsupport::Ended;
using Samples = std::vector<std::complex<float>>;

Ended run(const QStringList& words, const QByteArray& input = QByteArray())
{
    return testsupport::run(QStringList("band") + words, input);
}

// Two signals, one on each side of the centre.
const Samples& band()
{
    static const Samples samples = [] {
        Samples sum;
        const auto i = testsupport::noise(20.0, 0.01, RATE_Hz, "i");
        const auto q = testsupport::noise(20.0, 0.01, RATE_Hz, "q");
        for (std::size_t n = 0; n < i.size(); ++n)
            sum.emplace_back(i[n], q[n]);
        for (std::size_t one = 0; one < 2; ++one) {
            testsupport::Hand hand;
            hand.speed_wpm = one == 0 ? 20.0 : 26.0;
            double start_s = 1.0;
            for (const testsupport::Piece& piece :
                 testsupport::keying(TEXTS[one], hand, TEXTS[one])) {
                constexpr double EDGE_s = 0.005;
                const double end_s = start_s + piece.duration_s;
                for (auto n = static_cast<std::size_t>(start_s * RATE_Hz);
                     piece.mark && static_cast<double>(n) < end_s * RATE_Hz; ++n) {
                    const double t = static_cast<double>(n) / RATE_Hz;
                    const double rising = std::clamp((t - start_s) / EDGE_s, 0.0, 1.0);
                    const double falling = std::clamp((end_s - t) / EDGE_s, 0.0, 1.0);
                    sum[n] += std::complex<float>(
                        std::polar(0.3 * rising * falling, 6.283185307179586 * TONES_Hz[one] * t));
                }
                start_s = end_s;
            }
        }
        return sum;
    }();
    return samples;
}

QByteArray raw(const QString& format)
{
    QByteArray bytes;
    const auto put = [&](float value) {
        if (format == QLatin1String("f32")) {
            bytes.append(reinterpret_cast<const char*>(&value), 4);
        } else if (format == QLatin1String("s16")) {
            const auto number = static_cast<std::int16_t>(std::lround(32767.0F * value));
            bytes.append(static_cast<char>(number & 0xFF));
            bytes.append(static_cast<char>(number >> 8));
        } else if (format == QLatin1String("u8")) {
            bytes.append(static_cast<char>(std::lround(127.5F + 127.0F * value)));
        } else {
            bytes.append(static_cast<char>(std::lround(127.0F * value)));
        }
    };
    for (const std::complex<float>& sample : band()) {
        put(sample.real());
        put(sample.imag());
    }
    return bytes;
}

const QStringList IQ = {"--iq", "--rate", "8000", "--start", "2026-05-12T10:15:00Z"};

} // namespace

class tst_Band : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachTransmissionHasALine_data()
    {
        QTest::addColumn<QString>("format");
        for (const char* const format : {"s16", "f32", "u8", "s8"})
            QTest::newRow(format) << format;
    }
    void eachTransmissionHasALine()
    {
        QFETCH(QString, format);
        const Ended ended =
            run(IQ + QStringList{"--format", format, "--center", "7025000", "-"}, raw(format));
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        const QString out = QString::fromUtf8(ended.out);
        QVERIFY2(QRegularExpression("(?m)^ *7023\\.00 kHz  2[01] wpm  \\d+ dB  10:15:0[01]Z  "
                                    "CQ CQ DE DL0ABC DL0ABC K$")
                     .match(out)
                     .hasMatch(),
                 qPrintable(out));
        QVERIFY2(QRegularExpression("(?m)^ *7026\\.50 kHz  2[67] wpm  \\d+ dB  10:15:0[01]Z  "
                                    "TEST G4XYZ G4XYZ TEST$")
                     .match(out)
                     .hasMatch(),
                 qPrintable(out));
    }

    void teleprintersHaveDecoderSpeedAndShift()
    {
        const QString recording = QStringLiteral(TEST_DATA_DIR "/teleprinters/hf-weather.flac");
        QTemporaryDir folder;
        const Ended ended = run({"--json", "--save", folder.path(), recording});
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        QStringList events;
        QString text;
        QString whole;
        for (const QByteArray& line : ended.out.trimmed().split('\n')) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            QCOMPARE(object["decoder"].toString(), QString("Baudot"));
            QCOMPARE(object["baud_rate"].toDouble(), 45.45);
            QVERIFY(qAbs(object["shift_Hz"].toDouble() - 170.0) <= 3.0);
            QCOMPARE(object["number"].toInt(), 1);
            const QString event = object["event"].toString();
            if (event == "text")
                text += object["text"].toString();
            else
                events += event + object["state"].toString();
            if (event == "transmission")
                whole = object["text"].toString();
        }
        QCOMPARE(events.join(' '), QString("signalfound transmission signallost"));
        QVERIFY2(whole.contains("WIND SOUTHWEST 6, LATER WEST 7 TO 8."), qPrintable(whole));
        QCOMPARE(text.simplified(), whole.simplified());
        QCOMPARE(QDir(folder.path()).entryList({"*.txt"}, QDir::Files).size(), 1);
        const QString lines = QString::fromUtf8(run({recording}).out);
        QVERIFY2(lines.contains(QRegularExpression("(?m)kHz +45 Bd +\\d+ dB .*WIND SOUTHWEST 6")),
                 qPrintable(lines));
    }

    void teleprintersAreShownThroughTheirMap()
    {
        const QString russian = QStringLiteral(TEST_DATA_DIR "/teleprinters/minimodem-ita2.flac");
        const QString mapped = QString::fromUtf8(run({"--map", "Russian", russian}).out);
        QVERIFY2(mapped.contains(QStringLiteral("ПРИВЕТ ИЗ МОСКВЫ")), qPrintable(mapped));
        const QString received = QString::fromUtf8(run({russian}).out);
        QVERIFY2(received.contains(QStringLiteral("PRIWET IZ MOSKWY")), qPrintable(received));
        const Ended none = run({"--map", "Foo", russian});
        QCOMPARE(none.status, 1);
        QVERIFY2(none.err.contains("no map 'Foo' is offered for a teleprinter"),
                 none.err.constData());
    }

    void jsonReportsSignalsTextAndTransmissions()
    {
        const Ended ended =
            run(IQ + QStringList{"--json", "--only", "7000000-7025000", "--center", "7025000", "-"},
                raw("s16"));
        QStringList events;
        QString text;
        QString at = "2026-05-12T10:15:0";
        QJsonObject transmission;
        for (const QByteArray& line : ended.out.trimmed().split('\n')) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            const QString event = object.value("event").toString();
            if (event == "text") {
                text += object.value("text").toString();
                QVERIFY(object.value("at").toString() >= at);
                at = object.value("at").toString();
            } else {
                events += event + object.value("state").toString();
            }
            if (event == "transmission")
                transmission = object;
            QCOMPARE(object.value("number").toInt(), 1);
        }
        QCOMPARE(events, QStringList({"signalfound", "transmission", "signallost"}));
        QCOMPARE(text.trimmed(), QString(TEXTS[0]));
        QCOMPARE(transmission.value("text").toString().trimmed(), QString(TEXTS[0]));
        QVERIFY(std::fabs(transmission.value("frequency_Hz").toDouble() - 7023000.0) < 2.0);
        QVERIFY(std::fabs(transmission.value("tone_Hz").toDouble() + 2000.0) < 2.0);
        QVERIFY(transmission.value("start").toString().startsWith("2026-05-12T10:15:0"));
        // The last mark ends both.
        QCOMPARE(at, transmission.value("stop").toString());
    }

    void colonLinesAreAsOthersWriteThem()
    {
        const Ended ended = run(IQ + QStringList{"--form", "colon", "-i", "-"}, raw("s16"));
        QString texts[2];
        for (const QByteArray& line : ended.out.trimmed().split('\n')) {
            const int colon = line.indexOf(':');
            const int frequency_Hz = line.left(colon).toInt();
            QVERIFY(std::abs(frequency_Hz + 2000) < 2 || std::abs(frequency_Hz - 1500) < 2);
            texts[frequency_Hz > 0] += QString::fromUtf8(line.mid(colon + 1));
        }
        QCOMPARE(texts[0].simplified(), QString(TEXTS[0]));
        QCOMPARE(texts[1].simplified(), QString(TEXTS[1]));
    }

    void theTableShowsWhoSends()
    {
        const Ended ended = testsupport::runAtTerminal(
            QStringList("band") + IQ + QStringList{"--table", "-"}, raw("s16"));
        QCOMPARE(ended.status, 0);
        QVERIFY(ended.out.startsWith("\x1b[H\x1b[J"));
        QVERIFY2(ended.out.contains("1.50 kHz") && ended.out.contains("-2.00 kHz") &&
                     ended.out.contains("DL0ABC"),
                 ended.out.constData());
    }

    void theHelpWritesLimitsOut()
    {
        const QByteArray help = run({"--help"}).out.simplified();
        QVERIFY2(help.contains("4000 to 2400000"), help.constData());
        QVERIFY2(help.contains("1 to 5000"), help.constData());
    }
    void withoutATerminalTheTableIsLines()
    {
        const Ended ended = run(IQ + QStringList{"--table", "-"}, raw("s16"));
        QCOMPARE(ended.out, run(IQ + QStringList("-"), raw("s16")).out);
        QVERIFY(ended.out.contains("DL0ABC"));
    }

    // As a web receiver calls its background decoders.
    void lettersStandForRateAndFormat()
    {
        const QStringList colon = {"--iq", "--form", "colon"};
        const Ended named =
            run(colon + QStringList{"--rate", "8000", "--format", "s16", "-"}, raw("s16"));
        QVERIFY(named.out.contains(":CQ CQ DE "));
        QCOMPARE(run(colon + QStringList{"-r", "8000", "-i", "-"}, raw("s16")).out, named.out);
        const Ended floats = run(colon + QStringList{"-r", "8000", "-f", "-"}, raw("f32"));
        QVERIFY(floats.out.contains("DL0ABC"));
        QCOMPARE(run(colon + QStringList{"-r", "8000", "-"}, raw("f32")).out, floats.out);
    }

    void aLineOfTheColonFormIsAsLongAsAskedFor()
    {
        const Ended words =
            run(IQ + QStringList{"--form", "colon", "--format", "s16", "-n", "1", "-"}, raw("s16"));
        QVERIFY2(words.out.contains(":CQ \n") && words.out.contains(":TEST \n"),
                 words.out.constData());
    }

    void theOutputDoesNotDependOnTheNumberOfJobs()
    {
        const Ended one = run(IQ + QStringList{"--jobs", "1", "--json", "-"}, raw("s16"));
        const Ended three = run(IQ + QStringList{"--jobs", "3", "--json", "-"}, raw("s16"));
        QVERIFY(!one.out.isEmpty());
        QCOMPARE(three.out, one.out);
    }

    void eachSignalHasFilesOfItsOwn()
    {
        const QTemporaryDir folder;
        const Ended ended =
            run(IQ + QStringList{"--save", folder.filePath("saved"), "--center", "7025000", "-"},
                raw("s16"));
        QCOMPARE(ended.status, 0);
        QStringList texts;
        const QDir saved(folder.filePath("saved"));
        for (const QString& name : saved.entryList({"*International*.txt"})) {
            texts += QString::fromUtf8(contentOf(saved.filePath(name))).simplified();
        }
        texts.sort();
        QCOMPARE(texts, QStringList({TEXTS[0], TEXTS[1]}));
    }

    void inputThatIsCutIsReadAsFarAsItGoes()
    {
        const Ended ended = run(IQ + QStringList{"-"}, raw("s16").chopped(3));
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.err, QByteArray("morsehost: standard input: ends in the middle of a "
                                       "sample\n"));
        QVERIFY(ended.out.contains("DL0ABC DL0ABC K"));
    }

    void tooManySignalsAreSaid()
    {
        const Ended ended = run(IQ + QStringList{"--most", "1", "-"}, raw("s16"));
        QVERIFY2(ended.err.contains("dropped"), ended.err.constData());
        QCOMPARE(ended.status, 0);
    }

    void aPictureOfEachTransmissionIsKept_data()
    {
        QTest::addColumn<QString>("recording");
        QTest::addColumn<int>("transmissions");
        QTest::newRow("Morse") << TEST_DATA_DIR "/recordings/three-overs.flac" << 3;
        QTest::newRow("a teleprinter") << TEST_DATA_DIR "/teleprinters/minimodem-ita2.flac" << 1;
    }
    void aPictureOfEachTransmissionIsKept()
    {
        QFETCH(QString, recording);
        QFETCH(int, transmissions);
        QTemporaryDir dir;
        const Ended ended = run({"--json", "--pictures", "--save", dir.path(), "--center",
                                 "7000000", "--start", "2026-05-12T10:15:00Z", recording});
        QCOMPARE(ended.status, 0);
        int pictures = 0;
        const QList<QByteArray> lines = ended.out.split('\n');
        for (const QByteArray& line : lines) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            if (object.value("event") != QJsonValue("transmission"))
                continue;
            ++pictures;
            const QByteArray picture = contentOf(object.value("files").toArray().last().toString());
            const QString title =
                QString::number(1e-3 * object.value("frequency_Hz").toDouble(), 'f', 2) + " kHz, ";
            QVERIFY2(picture.contains(title.toUtf8()), qPrintable(title));
            const auto drawn = testsupport::readDrawn(picture);
            QCOMPARE(drawn.error, QString());
            QString text;
            for (const auto& piece : drawn.inRows("text"))
                text += piece.text;
            const QString sent = object.value("text").toString();
            QCOMPARE(text, QString(sent).remove(QRegularExpression("\\s")));
        }
        QCOMPARE(pictures, transmissions);
        QCOMPARE(QDir(dir.path()).entryList({"*_picture*.svg"}).size(), transmissions);
    }

    void aPictureThatCannotBeSavedIsSaid()
    {
        QTemporaryDir dir;
        // No other name is free in this second.
        for (int i = 1; i <= 1000; ++i) {
            const QString number = i > 1 ? QString("_%1").arg(i) : QString();
            writeFile(dir.filePath("1970_01_01__00_00_00_picture" + number + ".svg"), "taken");
        }
        const Ended ended = run({"--pictures", "--save", dir.path(),
                                 TEST_DATA_DIR "/teleprinters/minimodem-ita2.flac"});
        QVERIFY2(ended.err.contains("the picture cannot be saved"), ended.err.constData());
        QVERIFY(ended.out.contains("PRIWET"));
    }

    void whatCannotBeUsedIsRefused_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("status");
        QTest::newRow("no such file") << QStringList{"missing.wav"} << QByteArray() << 1;
        QTest::newRow("no such file of I/Q")
            << QStringList{"--iq", "missing.wav"} << QByteArray() << 1;
        QTest::newRow("a folder") << QStringList{"--iq", "/"} << QByteArray() << 1;
        QTest::newRow("no recording")
            << QStringList{"--iq", "/proc/self/status"} << QByteArray() << 1;
        QTest::newRow("format") << QStringList{"--format", "s24", "-"} << QByteArray() << 2;
        QTest::newRow("form") << QStringList{"--form", "csv", "-"} << QByteArray() << 2;
        QTest::newRow("two forms") << QStringList{"--json", "--table", "-"} << QByteArray() << 2;
        QTest::newRow("rate too low") << QStringList{"--rate", "3000", "-"} << QByteArray() << 2;
        QTest::newRow("rate of a file")
            << QStringList{"--rate", "8000", "x.wav"} << QByteArray() << 2;
        QTest::newRow("two formats")
            << QStringList{"-i", "--format", "f32", "-"} << QByteArray() << 2;
        QTest::newRow("two rates")
            << QStringList{"-r", "8000", "--rate", "8000", "-"} << QByteArray() << 2;
        QTest::newRow("length of lines without them")
            << QStringList{"-n", "4", "-"} << QByteArray() << 2;
        QTest::newRow("limits the wrong way round")
            << QStringList{"--only", "200-100", "-"} << QByteArray() << 2;
        QTest::newRow("limits outside of the input")
            << QStringList{"--rate", "8000", "--only", "4000-5000", "-"} << QByteArray() << 1;
        QTest::newRow("pictures of nothing") << QStringList{"--pictures", "-"} << QByteArray() << 2;
        QTest::newRow("limits that are none")
            << QStringList{"--only", "20", "-"} << QByteArray() << 2;
    }
    void whatCannotBeUsedIsRefused()
    {
        QFETCH(QStringList, words);
        QFETCH(QByteArray, input);
        QFETCH(int, status);
        const Ended ended = run(words, input);
        QCOMPARE(ended.status, status);
        QVERIFY(ended.out.isEmpty());
        QVERIFY(ended.err.startsWith("morsehost: "));
    }

    // What rounding adds to a clean tone, and the edge of a filter, are no signals.
    void theSamplesGiveTheirTextsAlone_data()
    {
        QTest::addColumn<QString>("sample");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("evening") << "evening.flac"
                                 << QStringList{"CQ CQ DE DL0XYZ DL0XYZ K = GOOD EVENING FROM THE "
                                                "NORTH SEA = 73"};
        QTest::newRow("three overs")
            << "three-overs.flac"
            << QStringList{"VVV DE OK2XYZ OK2XYZ", "OK2XYZ DE G3ABC = UR 579 IN LEEDS",
                           "73 DE OK2XYZ EE"};
    }
    void theSamplesGiveTheirTextsAlone()
    {
        QFETCH(QString, sample);
        QFETCH(QStringList, texts);
        const Ended ended = run({QStringLiteral(PROJECT_DATA_DIR "/samples/") + sample});
        const QStringList lines =
            QString::fromUtf8(ended.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QVERIFY2(lines.size() == texts.size(), ended.out.constData());
        for (int i = 0; i < texts.size(); ++i)
            QVERIFY2(lines[i].endsWith(QStringLiteral("Z  ") + texts[i]), qPrintable(lines[i]));
    }

    void nothingIsHeardInNothing()
    {
        const Ended ended = run(QStringList{"-"});
        QCOMPARE(ended.status, 0);
        QVERIFY(ended.out.isEmpty());
        QVERIFY(ended.err.isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_Band)
#include "tst_band.moc"
