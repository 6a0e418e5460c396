// SPDX-License-Identifier: MIT
// Teleprinters from their sound to the operator's alphabet, as a user runs the program.
#include "support/files.h"
#include "support/program.h"
#include "support/soundfile.h"
#include "support/teleprinterkeyer.h"
#include "support/terminal.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using testsupport::Ended;
using testsupport::run;

namespace {

const QString RECORDINGS = QStringLiteral(TEST_DATA_DIR "/teleprinters/");

// What all files of a kind hold, in the order of their names.
QByteArray contentOfAll(const QDir& folder, const QString& pattern)
{
    QByteArray content;
    for (const QString& name : folder.entryList({pattern}, QDir::Files, QDir::Name))
        content += contentOf(folder.filePath(name));
    return content;
}

} // namespace

class tst_Teleprinters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "UTC"); }

    void everyByteIsAsBefore_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("transmissions");
        QTest::newRow("minimodem-ita2")
            << QStringList{"--decoder", "Baudot", "--map", "Russian"} << 1;
        QTest::newRow("minimodem-ascii")
            << QStringList{"--decoder", "ASCII RTTY", "--map", "Greek"} << 1;
        QTest::newRow("hf-weather") << QStringList{"--decoder", "Baudot"} << 1;
        QTest::newRow("navtex") << QStringList{"--decoder", "Sitor-B"} << 2;
    }
    void everyByteIsAsBefore()
    {
        QFETCH(QStringList, options);
        QFETCH(int, transmissions);
        const QString name = QTest::currentDataTag();
        QTemporaryDir folder;
        const Ended ended = run(QStringList{"decode", "--save", folder.path()} + options +
                                QStringList{RECORDINGS + name + ".flac"});
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.status, 0);
        const QDir saved(folder.path());
        QCOMPARE(saved.entryList({"1970_01_01__00_00_??_*.txt"}, QDir::Files).size(),
                 transmissions);
        QCOMPARE(contentOfAll(saved, "*.txt"), contentOf(RECORDINGS + name + ".txt"));
        QCOMPARE(contentOfAll(saved, "*.raw"), contentOf(RECORDINGS + name + ".raw"));
    }

    void whatTheOtherProgramSentIsReadInTheOperatorsAlphabet_data()
    {
        QTest::addColumn<QString>("decoder");
        QTest::addColumn<QString>("sent");
        QTest::newRow("Russian")
            << QStringLiteral("Baudot")
            << "РЫРЫРЫРЫРЫ\nПРИВЕТ ИЗ МОСКВЫ 12345 67890\nЯРА ДЕ УА3АБЦ УА3АБЦ ПСЕ К\n";
        QTest::newRow("Greek") << QStringLiteral("ASCII RTTY")
                               << "ΚΑΛΗΜΕΡΑ ΕΛΛΑΔΑ. ΠΕΙΡΑΙΕΥΣ, ΑΘΗΝΑΙ, ΘΕΣΣΑΛΟΝΙΚΗ 0123456789\n"
                                  "ΑΝΕΜΟΣ ΒΟΡΕΙΟΣ 5 ΜΠΟΦΟΡ.\n";
    }
    void whatTheOtherProgramSentIsReadInTheOperatorsAlphabet()
    {
        QFETCH(QString, decoder);
        QFETCH(QString, sent);
        const QString recording = decoder == QLatin1String("Baudot") ? "ita2" : "ascii";
        const Ended ended = run({"decode", "--decoder", decoder, "--map", QTest::currentDataTag(),
                                 RECORDINGS + "minimodem-" + recording + ".flac"});
        QCOMPARE(QString::fromUtf8(ended.out), sent);
    }

    void lineIsReportedAsJson()
    {
        const Ended ended =
            run({"decode", "--decoder", "Sitor-B", "--json", RECORDINGS + "navtex.flac"});
        QCOMPARE(ended.status, 0);
        QList<QJsonObject> transmissions;
        for (const QByteArray& line : ended.out.split('\n')) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            if (object["event"] == "transmission")
                transmissions += object;
        }
        QCOMPARE(transmissions.size(), 2);
        QCOMPARE(transmissions[0]["decoder"].toString(), QString("Sitor-B"));
        QCOMPARE(transmissions[0]["baud_rate"].toDouble(), 100.0);
        QVERIFY(qAbs(transmissions[0]["shift_Hz"].toDouble() - 170.0) <= 3.0);
        QCOMPARE(transmissions[0]["reversed"].toBool(), false);
        QVERIFY(transmissions[0]["snr_dB"].toDouble() > 0.0);
        QVERIFY(transmissions[0]["text"].toString().startsWith("ZCZC NA12\n"));
        QVERIFY(transmissions[0]["raw_text"].toString().startsWith("ZCZC NA12\r\n"));
        QVERIFY(transmissions[1]["text"].toString().endsWith("NNNN"));
    }

    void autoSaysWhatItFound_data()
    {
        QTest::addColumn<QString>("recording");
        QTest::addColumn<QByteArray>("said");
        QTest::newRow("Baudot") << RECORDINGS + "minimodem-ita2.flac" << QByteArray("Baudot");
        QTest::newRow("ASCII") << RECORDINGS + "minimodem-ascii.flac" << QByteArray("ASCII RTTY");
        QTest::newRow("Sitor-B") << RECORDINGS + "navtex.flac" << QByteArray("Sitor-B");
        QTest::newRow("Morse") << QString(PROJECT_DATA_DIR "/samples/evening.flac")
                               << QByteArray("heard as Morse");
    }
    void autoSaysWhatItFound()
    {
        QFETCH(QString, recording);
        QFETCH(QByteArray, said);
        const Ended ended = run({"decode", "--decoder", "auto", recording});
        QCOMPARE(ended.status, 0);
        QVERIFY2(ended.err.contains(said), ended.err.constData());
        QVERIFY(ended.out.size() > 30);
    }

    // What it found to be Morse is read as it would have been from the beginning.
    void autoTakesTheOptionsOfMorse()
    {
        const QStringList options = {"--live", "--wpm",
                                     "25",     "--alphabet",
                                     "Greek",  PROJECT_DATA_DIR "/samples/evening.flac"};
        const Ended found = run(QStringList{"decode", "--decoder", "auto"} + options);
        QCOMPARE(found.status, 0);
        QCOMPARE(found.out, run(QStringList{"decode"} + options).out);
        QVERIFY(found.out.size() > 30);
    }

    void autoReadsAPipeFromItsBegin_data()
    {
        QTest::addColumn<QString>("recording");
        QTest::newRow("teleprinter") << RECORDINGS + "minimodem-ita2.flac";
        QTest::newRow("Morse") << QString(PROJECT_DATA_DIR "/samples/evening.flac");
    }
    void autoReadsAPipeFromItsBegin()
    {
        QFETCH(QString, recording);
        const Ended ofFile = run({"decode", "--decoder", "auto", recording});
        const Ended ofPipe = run({"decode", "--decoder", "auto", "-"}, contentOf(recording));
        QCOMPARE(ofPipe.status, 0);
        QVERIFY(ofPipe.out.size() > 30);
        QCOMPARE(ofPipe.out, ofFile.out);
    }

    void nameOfADecoderIsTakenInAnyLetterCase()
    {
        const QString recording = RECORDINGS + "minimodem-ascii.flac";
        const Ended ended = run({"decode", "--decoder", "ascii rtty", recording});
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.out, run({"decode", "--decoder", "ASCII RTTY", recording}).out);
    }

    void autoIsTakenInAnyLetterCase()
    {
        const Ended ended =
            run({"decode", "--decoder", "AUTO", RECORDINGS + "minimodem-ascii.flac"});
        QCOMPARE(ended.status, 0);
        QVERIFY2(ended.err.contains("ASCII RTTY"), ended.err.constData());
        QVERIFY(!ended.out.isEmpty());
    }

    void nameOfAMapIsTakenInAnyLetterCase()
    {
        const QString recording = RECORDINGS + "minimodem-ita2.flac";
        const Ended ended = run({"decode", "--decoder", "Baudot", "--map", "russian", recording});
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(ended.out,
                 run({"decode", "--decoder", "Baudot", "--map", "Russian", recording}).out);
    }

    // As in a band: it is for those that it fits.
    void mapThatTheFoundDecoderHasNoUseForIsSaid_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::newRow("decode") << QStringList{"decode"};
        QTest::newRow("inspect") << QStringList{"inspect", "-o", "-"};
    }
    void mapThatTheFoundDecoderHasNoUseForIsSaid()
    {
        QFETCH(QStringList, command);
        const Ended ended = run(command + QStringList{"--decoder", "auto", "--map", "Russian",
                                                      RECORDINGS + "minimodem-ascii.flac"});
        QCOMPARE(ended.status, 0);
        QVERIFY2(ended.err.contains("the map 'Russian' is not for ASCII RTTY"),
                 ended.err.constData());
        QVERIFY(ended.out.size() > 30);
        const Ended none = run(command + QStringList{"--decoder", "auto", "--map", "Foo",
                                                     RECORDINGS + "minimodem-ascii.flac"});
        QCOMPARE(none.status, 1);
        QVERIFY2(none.err.contains("no map 'Foo'"), none.err.constData());
    }

    void aPictureOfNothingIsSaidToBeOne()
    {
        QTemporaryDir folder;
        const Ended ended =
            run({"inspect", "--decoder", "Baudot", "-o", folder.filePath("nothing.svg"),
                 RECORDINGS + "minimodem-ascii.flac"});
        QCOMPARE(ended.status, 0);
        QVERIFY2(ended.err.contains("no Baudot was heard"), ended.err.constData());
        QVERIFY(QFile::exists(folder.filePath("nothing.svg")));
    }

    // What rings a bell or moves the cursor is an order to a terminal alone.
    void aTerminalGetsNoOrders()
    {
        using testsupport::TeleprinterCode;
        testsupport::Machine machine;
        machine.code = TeleprinterCode::Ascii7;
        machine.baud = 110.0;
        const std::string text = "THE BELL RINGS \a NOW AND THE SCREEN TURNS \x1b[31m RED";
        QTemporaryDir folder;
        const QString recording = folder.filePath("orders.wav");
        testsupport::writeSoundFile(
            recording.toStdString(), 8000.0,
            testsupport::teleprinterSound(testsupport::teleprinterElements(text, machine, "orders"),
                                          {}, 8000.0, "orders"));
        const QStringList words = {"decode", "--decoder", "ASCII RTTY", recording};
        QCOMPARE(run(words).out, QByteArray::fromStdString(text + "\n"));
        QByteArray harmless = QByteArray::fromStdString(text + "\n");
        for (const char order : {'\a', '\x1b'})
            harmless.replace(order, "\xEF\xBF\xBD");
        QCOMPARE(testsupport::runAtTerminal(words).out, harmless);
    }

    void mapIsNoUseToMorse()
    {
        const Ended ended = run({"decode", "--decoder", "auto", "--map", "Russian",
                                 PROJECT_DATA_DIR "/samples/evening.flac"});
        QCOMPARE(ended.status, 0);
        QVERIFY2(ended.err.contains("--map is for teleprinters"), ended.err.constData());
    }

    void wrongSettingsAreSaidWithWhatIsThere_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QByteArray>("said");
        QTest::newRow("speed") << QStringList{"--baud", "75"} << QByteArray("Baudot, 45.45 Bd");
        QTest::newRow("speed that is near")
            << QStringList{"--baud", "50"} << QByteArray("Baudot, 45.45 Bd");
        QTest::newRow("polarity") << QStringList{"--reverse"} << QByteArray("Baudot, 45.45 Bd");
        QTest::newRow("right ones") << QStringList{"--baud", "45.45"} << QByteArray();
    }
    void wrongSettingsAreSaidWithWhatIsThere()
    {
        QFETCH(QStringList, options);
        QFETCH(QByteArray, said);
        const Ended ended = run(QStringList{"decode", "--decoder", "Baudot"} + options +
                                QStringList{RECORDINGS + "minimodem-ita2.flac"});
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.out.isEmpty(), !said.isEmpty());
        QCOMPARE(ended.err.isEmpty(), said.isEmpty());
        QVERIFY2(ended.err.contains(said), ended.err.constData());
    }

    void wrongSettingsWhereNothingSendsAreSaidAsSuch()
    {
        const Ended ended = run({"decode", "--decoder", "Baudot", "--baud", "50",
                                 PROJECT_DATA_DIR "/samples/evening.flac"});
        QCOMPARE(ended.status, 0);
        QVERIFY2(ended.err.contains("nor without them"), ended.err.constData());
    }

    void frequencyIsPartOfTheNamesOfFiles()
    {
        QTemporaryDir folder;
        QCOMPARE(run({"decode", "--decoder", "Baudot", "--frequency", "14087000", "--save",
                      folder.path(), RECORDINGS + "minimodem-ita2.flac"})
                     .status,
                 0);
        const QDir saved(folder.path());
        QCOMPARE(saved.entryList({"*_Baudot__14.087MHz.txt"}, QDir::Files).size(), 1);
        QCOMPARE(saved.entryList({"*_Baudot__14.087MHz.raw"}, QDir::Files).size(), 1);
    }

    void dayIsPartOfTheFolder()
    {
        QTemporaryDir folder;
        QCOMPARE(run({"decode", "--decoder", "Baudot", "--start", "2026-05-12T10:15:00Z", "--save",
                      folder.filePath("{day}/hf"), RECORDINGS + "minimodem-ita2.flac"})
                     .status,
                 0);
        const QDir saved(folder.filePath("2026-05-12/hf"));
        QCOMPARE(saved.entryList({"2026_05_12__10_15_*_Baudot.txt"}, QDir::Files).size(), 1);
        QCOMPARE(saved.entryList({"2026_05_12__10_15_*_Baudot.raw"}, QDir::Files).size(), 1);
    }

    void pipeIsReadToo()
    {
        const Ended ended =
            run({"decode", "--decoder", "Sitor-B", "-"}, contentOf(RECORDINGS + "navtex.flac"));
        QCOMPARE(ended.status, 0);
        QVERIFY(ended.out.startsWith("ZCZC NA12\n"));
    }

    void severalComeInTheirOrderHoweverManyAreHeardAtOnce()
    {
        QStringList recordings;
        for (const char* name : {"navtex", "minimodem-ascii", "minimodem-ita2"})
            recordings += RECORDINGS + name + ".flac";
        recordings += QString(PROJECT_DATA_DIR "/samples/evening.flac");
        const auto decoded = [&recordings](const char* jobs) {
            return run(QStringList{"decode", "--decoder", "auto", "--json", "--jobs", jobs} +
                       recordings);
        };
        const Ended one = decoded("1");
        QCOMPARE(one.status, 0);
        int at = -1;
        for (const char* said : {"Sitor-B", "ASCII RTTY", "Baudot", "heard as Morse"}) {
            const int next = one.err.indexOf(said);
            QVERIFY2(next > at, one.err.constData());
            at = next;
        }
        QCOMPARE(one.out.count("\"event\":\"transmission\""), 5);
        const Ended three = decoded("3");
        QCOMPARE(three.out, one.out);
        QCOMPARE(three.err, one.err);
    }

    void recordingHeardOtherwiseIsAnother()
    {
        QTemporaryDir folder;
        const QStringList words = {"decode",
                                   "--decoder",
                                   "auto",
                                   "--archive",
                                   folder.filePath("heard.db"),
                                   PROJECT_DATA_DIR "/samples/evening.flac"};
        for (const QStringList& option :
             {QStringList{}, QStringList{"--live"}, QStringList{"--cut-numbers", "off"}}) {
            const Ended first = run(words + option);
            QCOMPARE(first.status, 0);
            QVERIFY2(!first.err.contains("is in the archive"), first.err.constData());
            const Ended again = run(words + option);
            QVERIFY2(again.err.contains("is in the archive"), again.err.constData());
        }
    }

    void recordingIsArchivedOnce()
    {
        QTemporaryDir folder;
        const QStringList words = {"decode",
                                   "--decoder",
                                   "Baudot",
                                   "--map",
                                   "Russian",
                                   "--archive",
                                   folder.filePath("heard.db"),
                                   RECORDINGS + "minimodem-ita2.flac"};
        QCOMPARE(run(words).status, 0);
        const Ended again = run(words);
        QCOMPARE(again.status, 0);
        QVERIFY2(again.err.contains("is in the archive"), again.err.constData());
        const Ended found =
            run({"search", "--archive", folder.filePath("heard.db"), "--json", "МОСКВЫ"});
        QCOMPARE(found.status, 0);
        QCOMPARE(found.out.count('\n'), 1);
        const QJsonObject object = QJsonDocument::fromJson(found.out).object();
        QCOMPARE(object["decoder"].toString(), QString("Baudot"));
        QCOMPARE(object["baud_rate"].toDouble(), 45.45);
        QVERIFY(object["raw_text"].toString().contains("MOSKWY"));
        // Through another map it is another text.
        const Ended other = run({"decode", "--decoder", "Baudot", "--archive",
                                 folder.filePath("heard.db"), RECORDINGS + "minimodem-ita2.flac"});
        QVERIFY2(other.err.isEmpty(), other.err.constData());
    }

    void whatIsNoTeleprinterGivesNothing()
    {
        const Ended ended =
            run({"decode", "--decoder", "Baudot", PROJECT_DATA_DIR "/samples/evening.flac"});
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.out, QByteArray());
    }

    void whatCannotBeIsSaidInOneLine_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QByteArray>("said");
        QTest::newRow("no such decoder")
            << QStringList{"--decoder", "Foo"} << QByteArray("no decoder 'Foo'");
        QTest::newRow("no demodulator for it") << QStringList{"--decoder", "PSK31"}
                                               << QByteArray("there is no demodulator for 'PSK31'");
        QTest::newRow("no such map")
            << QStringList{"--decoder", "Baudot", "--map", "Foo"} << QByteArray("no map 'Foo'");
        QTest::newRow("a map of another set")
            << QStringList{"--decoder", "ASCII RTTY", "--map", "Russian"}
            << QByteArray("no map 'Russian'");
        QTest::newRow("odd speed") << QStringList{"--decoder", "Baudot", "--baud", "9"}
                                   << QByteArray("--baud takes a number from 40 to 300");
        QTest::newRow("speed of another decoder")
            << QStringList{"--decoder", "Baudot", "--baud", "300"}
            << QByteArray("--baud takes 40 to 150 for Baudot");
        QTest::newRow("speed that it never has")
            << QStringList{"--decoder", "Sitor-B", "--baud", "50"}
            << QByteArray("--baud takes 100 for Sitor-B");
        QTest::newRow("shifts of a code without them")
            << QStringList{"--decoder", "ASCII RTTY", "--unshift-on-space", "yes"}
            << QByteArray("--unshift-on-space is not for ASCII RTTY, which has no shifts");
        QTest::newRow("odd shift") << QStringList{"--decoder", "Baudot", "--shift", "5"}
                                   << QByteArray("--shift takes a number from 70 to 1100");
        QTest::newRow("tone outside the band")
            << QStringList{"--decoder", "Baudot", "--tone", "3550"}
            << QByteArray("--tone takes a number from 200 to 3500");
        QTest::newRow("lower tone below the band")
            << QStringList{"--decoder", "Baudot", "--tone", "250", "--shift", "850"}
            << QByteArray("with this --shift one of them is outside 200 to 3600 Hz");
        QTest::newRow("upper tone above the band")
            << QStringList{"--decoder", "Baudot", "--tone", "3500", "--shift", "1000"}
            << QByteArray("with this --shift one of them is outside 200 to 3600 Hz");
        QTest::newRow("tone that leaves no room")
            << QStringList{"--decoder", "Baudot", "--tone", "220"}
            << QByteArray("with any shift one of them is outside 200 to 3600 Hz");
        QTest::newRow("odd parity word") << QStringList{"--decoder", "auto", "--parity", "mark"}
                                         << QByteArray("--parity takes 'none', 'even' or 'odd'");
        QTest::newRow("parity of a code without it")
            << QStringList{"--decoder", "Baudot", "--parity", "even"}
            << QByteArray("--parity is for ASCII RTTY, not for Baudot");
        QTest::newRow("tone of Morse only") << QStringList{"--decoder", "auto", "--tone", "150"}
                                            << QByteArray("--tone takes a number from 200 to 3500");
        QTest::newRow("odd word") << QStringList{"--decoder", "Baudot", "--unshift-on-space", "x"}
                                  << QByteArray("--unshift-on-space takes 'yes' or 'no'");
        QTest::newRow("an option of Morse") << QStringList{"--decoder", "Baudot", "--wpm", "20"}
                                            << QByteArray("--wpm is for Morse");
        QTest::newRow("codes of what is yet to be found")
            << QStringList{"--decoder", "auto", "--codes"} << QByteArray("--codes is for Morse");
        QTest::newRow("no folder of maps")
            << QStringList{"--decoder", "Baudot", "--maps", "/nowhere"}
            << QByteArray("No such file or directory");
        QTest::newRow("a file in place of the folder")
            << QStringList{"--decoder", "Baudot", "--maps", "/dev/null"}
            << QByteArray("/dev/null: is not a folder");
    }
    void whatCannotBeIsSaidInOneLine()
    {
        QFETCH(QStringList, options);
        QFETCH(QByteArray, said);
        const Ended ended =
            run(QStringList{"decode"} + options + QStringList{RECORDINGS + "minimodem-ita2.flac"});
        QVERIFY(ended.status > 0);
        QCOMPARE(ended.out, QByteArray());
        QCOMPARE(ended.err.count('\n'), 1);
        QVERIFY2(ended.err.contains(said), ended.err.constData());
    }
};

QTEST_GUILESS_MAIN(tst_Teleprinters)
#include "tst_teleprinters.moc"
