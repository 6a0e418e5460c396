// SPDX-License-Identifier: MIT
// `morsehost station` from outside: the example that ships is heard, shown, archived and ended.
#include "support/files.h"
#include "support/program.h"
#include "support/soundfile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

using testsupport::HANGS_ms;
using testsupport::run;

namespace {

const QByteArray TEXT = "GOOD EVENING FROM THE NORTH SEA";

} // namespace

class tst_Station : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QProcess m_station;
    QByteArray m_log;

    QString config() const { return m_folder.filePath("station.ini"); }

    // The example, but with places of its own and a port that is free.
    QByteArray example() const
    {
        QByteArray content = contentOf(PROJECT_DATA_DIR "/station/example.ini");
        content.replace("/usr/share/morsehandler", PROJECT_DATA_DIR);
        content.replace("/var/lib/morsehost", m_folder.filePath("kept").toUtf8());
        content.replace("127.0.0.1:8073", "127.0.0.1:0");
        return content;
    }

    bool hasReported(const QByteArray& text, int times = 1)
    {
        m_log += m_station.readAllStandardError();
        return m_log.count(text) >= times;
    }

private Q_SLOTS:
    void initTestCase()
    {
        writeFile(config(), example());
        QCOMPARE(run({"station", "--check", config()}).status, 0);
        m_station.start(MORSEHOST_PATH, {"station", config()});
        QVERIFY(m_station.waitForStarted(HANGS_ms));
        QTRY_VERIFY_WITH_TIMEOUT(hasReported("evening: CQ CQ DE DL0XYZ"), HANGS_ms);
    }

    void whatADecoderDoesNotTakeIsFoundByTheCheck_data()
    {
        QTest::addColumn<QByteArray>("receiver");
        QTest::addColumn<QByteArray>("fault");
        QTest::newRow("no such alphabet") << QByteArray("command=x\nalphabet=Klingon\n")
                                          << QByteArray(":5: Klingon: no such alphabet");
        QTest::newRow("no such map")
            << QByteArray("command=x\ndecoder=Baudot\nmap=Klingon\n")
            << QByteArray(":6: no map 'Klingon' is offered for the decoder 'Baudot'\n");
        QTest::newRow("no such map for a band")
            << QByteArray("command=x\ndecoder=band\nmap=Klingon\n")
            << QByteArray(":6: no map 'Klingon' is offered for a teleprinter");
        QTest::newRow("no frequencies") << QByteArray("command=x\ndecoder=band\nonly=low\n")
                                        << QByteArray(":6: only takes two frequencies");
        QTest::newRow("frequencies above the input")
            << QByteArray("command=x\ndecoder=band\nrate=48000\nonly=24000-25000\n")
            << QByteArray(":7: only 24000-25000 lies outside of what is received, 0 to 24000 Hz\n");
        QTest::newRow("frequencies of another band")
            << QByteArray("command=x\ndecoder=band\niq=yes\ncenter=7e6\nonly=400-800\n")
            << QByteArray(":8: only 400-800 lies outside of what is received, 6976000 to "
                          "7024000 Hz\n");
        QTest::newRow("frequencies above those of a recording")
            << QByteArray("file=" PROJECT_DATA_DIR
                          "/samples/evening.flac\ndecoder=band\nonly=4000-5000\n")
            << QByteArray(":6: only 4000-5000 lies outside of what is received, 0 to 4000 Hz\n");
        QTest::newRow("tone above those of a recording")
            << QByteArray("tone=3000\nfile=silence.wav\n")
            << QByteArray(":4: a tone of 3000 Hz cannot be heard at 4000 samples a second");
        QTest::newRow("cut numbers in another word")
            << QByteArray("command=x\ncut_numbers=false\n")
            << QByteArray(":5: cut_numbers takes 'on' or 'off', not 'false'\n");
        QTest::newRow("key of two words")
            << QByteArray("command=x\ndecoder=Baudot\nunshift_on_space=perhaps\n")
            << QByteArray(":6: unshift_on_space takes 'yes' or 'no', not 'perhaps'\n");
        QTest::newRow("shifts of a code without them")
            << QByteArray("command=x\ndecoder=ASCII RTTY\nbaud=110\nunshift_on_space=yes\n")
            << QByteArray(":7: unshift_on_space is not for ASCII RTTY, which has no shifts\n");
        QTest::newRow("parity of a code without it")
            << QByteArray("command=x\ndecoder=Baudot\nbaud=50\nparity=even\n")
            << QByteArray(":7: parity is for ASCII RTTY, not for Baudot\n");
        QTest::newRow("too many samples for one signal")
            << QByteArray("command=x\nrate=1000000\n")
            << QByteArray(":5: rate takes a whole number from 4000 to 768000");
        QTest::newRow("no recording")
            << QByteArray("file=checked.ini\n") << QByteArray("checked.ini: is not a recording");
    }
    void whatADecoderDoesNotTakeIsFoundByTheCheck()
    {
        QFETCH(QByteArray, receiver);
        QFETCH(QByteArray, fault);
        const QString file = m_folder.filePath("checked.ini");
        QFile::remove(file);
        writeFile(file, "[station]\nfolder=kept\n[receiver a]\n" + receiver);
        testsupport::writeSoundFile(m_folder.filePath("silence.wav").toStdString(), 4000, {0, 0});
        const auto checked = run({"station", "--check", file});
        QCOMPARE(checked.status, 1);
        QVERIFY2(checked.err.contains(fault), checked.err.constData());
    }

    void whatDecodersTakePassesTheCheck_data()
    {
        QTest::addColumn<QByteArray>("receiver");
        QTest::newRow("a signal") << QByteArray("command=x\npictures=yes\nalphabet=Greek\nwpm=20\n"
                                                "tone=600\nrate=48000\nfrequency=7e6\n");
        QTest::newRow("a recording")
            << QByteArray("file=" PROJECT_DATA_DIR "/samples/evening.flac\nrepeat=5\n");
        QTest::newRow("a band") << QByteArray("tcp=host:1\ndecoder=band\nrate=96000\niq=yes\n"
                                              "center=7e6\nonly=7000000-7100000\nformat=u8\n"
                                              "map=Russian\nleast_snr=3\nmost=100\npictures=yes\n");
        QTest::newRow("ASCII") << QByteArray(
            "command=x\ndecoder=ASCII RTTY\nbaud=300\nparity=even\n");
        QTest::newRow("a teleprinter")
            << QByteArray("command=x\ndecoder=Baudot\nmap=Russian\nbaud=50\nshift=170\n"
                          "reverse=yes\ntone=1500\npictures=yes\n");
    }
    void whatDecodersTakePassesTheCheck()
    {
        QFETCH(QByteArray, receiver);
        const QString file = m_folder.filePath("checked.ini");
        QFile::remove(file);
        writeFile(file, "[station]\nfolder=kept\n[receiver a]\n" + receiver);
        const auto checked = run({"station", "--check", file});
        QCOMPARE(checked.err, QByteArray());
        QCOMPARE(checked.status, 0);
    }

    void thePageShowsIt()
    {
        const QRegularExpression line("page: http://127\\.0\\.0\\.1:(\\d+)");
        const int port = line.match(m_log).captured(1).toInt();
        QVERIFY2(port > 0, m_log.constData());
        QTcpSocket reader;
        reader.connectToHost("127.0.0.1", static_cast<quint16>(port));
        QVERIFY(reader.waitForConnected(HANGS_ms));
        reader.write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
        QByteArray bytes;
        QTRY_VERIFY_WITH_TIMEOUT((bytes += reader.readAll()).contains(TEXT), HANGS_ms);
        QTRY_VERIFY_WITH_TIMEOUT((bytes += reader.readAll()).contains("event: spectrum"), HANGS_ms);
    }

    void theArchiveHasIt()
    {
        const QString archive = m_folder.filePath("kept/archive.db");
        const auto search = [&archive] {
            return run({"search", "--archive", archive, "--json", "DL0XYZ"}).out;
        };
        QTRY_VERIFY_WITH_TIMEOUT(search().contains(TEXT), HANGS_ms);
        const QJsonObject found = QJsonDocument::fromJson(search().split('\n').first()).object();
        QCOMPARE(found.value("station").toString(), QString("example"));
        QCOMPARE(found.value("receiver").toString(), QString("evening"));
        const QJsonArray files = found.value("files").toArray();
        QVERIFY(!files.isEmpty());
        for (const QJsonValue& file : files)
            QVERIFY2(QFile::exists(file.toString()), qPrintable(file.toString()));
    }

    void theFileIsReadAgainWhereItHasNoFault()
    {
        QFile::remove(config());
        writeFile(config(), example() + "[receiver wrong]\nrate=fast\n");
        ::kill(static_cast<pid_t>(m_station.processId()), SIGHUP);
        QTRY_VERIFY_WITH_TIMEOUT(hasReported("not taken over"), HANGS_ms);
        QVERIFY(!m_log.contains("wrong: "));
        // What a decoder does not take does not replace a receiver that works.
        QFile::remove(config());
        QByteArray refused = example();
        refused.replace("repeat=", "alphabet=Klingon\nrepeat=");
        QVERIFY(refused.contains("Klingon"));
        writeFile(config(), refused);
        ::kill(static_cast<pid_t>(m_station.processId()), SIGHUP);
        QTRY_VERIFY_WITH_TIMEOUT(hasReported("not taken over", 2), HANGS_ms);
        QVERIFY(m_log.contains("Klingon: no such alphabet"));
        QFile::remove(config());
        writeFile(config(), example() + "[receiver second]\ncommand=exec cat /dev/zero\n");
        ::kill(static_cast<pid_t>(m_station.processId()), SIGHUP);
        QTRY_VERIFY_WITH_TIMEOUT(hasReported("second: running"), HANGS_ms);
        // What was there before goes on.
        QVERIFY(!m_log.contains("evening: down"));
        QVERIFY(!m_log.contains("evening: removed"));
        QCOMPARE(m_log.count("evening: running"), 1);
    }

    void itEndsInOrder()
    {
        m_station.terminate();
        QVERIFY(m_station.waitForFinished(HANGS_ms));
        QCOMPARE(m_station.exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_station.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_Station)
#include "tst_station.moc"
