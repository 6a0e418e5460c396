// SPDX-License-Identifier: MIT
// `morsehost map` from outside: a decoder's stream, an operator at it, and what both may do wrong.
#include "support/program.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using testsupport::Ended;

Ended run(const QStringList& words, const QByteArray& input = QByteArray())
{
    return testsupport::run(QStringList("map") + words, input);
}

} // namespace

class tst_Map : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRussianStreamSwitchedInTheMiddleAndTranslatedAgain()
    {
        const Ended ended = run({"--decoder", "Baudot", "--interactive"}, "PRIWET IZ MOSKWY\n"
                                                                          ":map Russian\n"
                                                                          "PRIWET IZ MOSKWY\n"
                                                                          ":history\n"
                                                                          ":map Default\n"
                                                                          "RYRYRY\n");
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(QString::fromUtf8(ended.out),
                 QString::fromUtf8("PRIWET IZ MOSKWY\n"
                                   "ПРИВЕТ ИЗ МОСКВЫ\n"
                                   "ПРИВЕТ ИЗ МОСКВЫ\nПРИВЕТ ИЗ МОСКВЫ\n"
                                   "RYRYRY\n"));
        QCOMPARE(ended.status, 0);
    }

    void aGreekStreamAndAnotherDecoderInTheMiddle()
    {
        const Ended ended = run({"--decoder", "ASCII RTTY", "--map", "Greek", "--interactive"},
                                "KALGMERA\n"
                                ":decoder Baudot\n"
                                "PRIWET\n"
                                ":map Russian - ITA2\n"
                                "PRIWET\n"
                                ":history\n");
        QCOMPARE(ended.err, QByteArray());
        QCOMPARE(QString::fromUtf8(ended.out), QString::fromUtf8("ΚΑΛΗΜΕΡΑ\n"
                                                                 "PRIWET\n"
                                                                 "ПРИВЕТ\n"
                                                                 "КАЛГМЕРА\nПРИВЕТ\nПРИВЕТ\n"));
    }

    void theMapsOnOfferFollowTheDecoder()
    {
        const Ended ended = run({"--decoder", "Baudot", "--map", "Russian", "--interactive"},
                                ":maps\n:decoder ASCII RTTY\n:maps\n:decoder Morse\n:maps");
        const QStringList lines = QString::fromUtf8(ended.out).split('\n');
        QVERIFY(lines.contains("* Russian - ITA2"));
        QVERIFY(lines.contains("  German - ASCII"));
        QCOMPARE(lines.filter("Default"), QStringList({"  Default", "* Default", "* Default"}));
    }

    void whatComesWhileDisabledIsNotTranslated()
    {
        const Ended ended = run({"--decoder", "Baudot", "--map", "Russian", "--interactive"},
                                "A\n:disable\nB\n:enable\nW\n:clear\nZ\n:history\n");
        QCOMPARE(QString::fromUtf8(ended.out), QString::fromUtf8("А\nВ\nЗ\nЗ\n"));
    }

    void piecesThatRepeatAreTranslatedEachTime()
    {
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH),
                      {"map", "--decoder", "Baudot", "--map", "Russian"});
        QByteArray out;
        for (int i = 1; i <= 3; ++i) {
            process.write("W");
            while (out.size() < 2 * i && process.waitForReadyRead(testsupport::HANGS_ms))
                out += process.readAllStandardOutput();
        }
        QCOMPARE(out, QByteArray("\xD0\x92\xD0\x92\xD0\x92"));
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished(testsupport::HANGS_ms));
        QCOMPARE(process.exitCode(), 0);
    }

    void withoutInteractiveAColonIsText()
    {
        QCOMPARE(run({"--decoder", "Baudot"}, ":maps\n").out, QByteArray(":maps\n"));
        // Within a line it is text also for an operator.
        QCOMPARE(run({"--decoder", "Baudot", "--interactive"}, "AT 12:30\n").out,
                 QByteArray("AT 12:30\n"));
    }

    void anyByteIsTakenAsItIs()
    {
        QByteArray bytes;
        for (int byte = 0; byte < 256; ++byte)
            bytes += static_cast<char>(byte);
        const Ended ended = run({"--decoder", "Baudot"}, bytes);
        QCOMPARE(QString::fromUtf8(ended.out.constData(), ended.out.size()),
                 QString::fromLatin1(bytes.constData(), bytes.size()));
    }

    void tenMegabytesPass()
    {
        const Ended ended =
            run({"--decoder", "Baudot", "--map", "Russian"}, QByteArray(10000000, 'W'));
        QCOMPARE(ended.out.size(), 20000000);
    }

    void eventsAreWholeObjects()
    {
        const Ended ended =
            run({"--decoder", "ASCII RTTY", "--map", "Hebrew", "--json", "--interactive"},
                "A\n:history\n:maps\n:map Default\n");
        QStringList events;
        for (const QByteArray& line : ended.out.trimmed().split('\n')) {
            QJsonParseError error;
            const QJsonObject object = QJsonDocument::fromJson(line, &error).object();
            QCOMPARE(error.error, QJsonParseError::NoError);
            events += object.value("event").toString();
            if (events.size() == 1)
                QVERIFY(object.value("rightToLeft").toBool());
        }
        QCOMPARE(events, QStringList({"map", "text", "history", "maps", "map"}));
    }

    void whatIsNotUnderstoodIsSaidAndTheRestGoesOn_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("command") << QByteArray(":bogus") << QByteArray("no command ':bogus'");
        QTest::newRow("nothing") << QByteArray(":") << QByteArray("no command ':'");
        QTest::newRow("map") << QByteArray(":map Elvish") << QByteArray("no map 'Elvish'");
        QTest::newRow("no name") << QByteArray(":map") << QByteArray("':map' needs a name");
        QTest::newRow("no decoder's name")
            << QByteArray(":decoder ") << QByteArray("':decoder' needs a name");
        QTest::newRow("long") << QByteArray(":") + QByteArray(1000000, 'x')
                              << QByteArray("no command ':xxxx");
    }

    void whatIsNotUnderstoodIsSaidAndTheRestGoesOn()
    {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, reason);
        const Ended ended =
            run({"--decoder", "Baudot", "--interactive"}, "A\n" + command + "\nB\n");
        QCOMPARE(ended.out, QByteArray("A\nB\n"));
        QVERIFY2(ended.err.startsWith("morsehost: line 2: " + reason),
                 ended.err.left(200).constData());
        QCOMPARE(ended.err.count('\n'), 1);
        QVERIFY(ended.err.size() < 200);
        QCOMPARE(ended.status, 1);
    }

    void badInputIsSaidInOneLine_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("no decoder") << QStringList{"-"} << 2 << QByteArray("--decoder NAME");
        QTest::newRow("unknown decoder")
            << QStringList{"--decoder", "x"} << 1
            << QByteArray("x: no map fits this decoder (see 'morsehost decoders')");
        QTest::newRow("unknown map") << QStringList{"--decoder", "Baudot", "--map", "Elvish"} << 1
                                     << QByteArray("Baudot: no map 'Elvish' is offered (see");
        QTest::newRow("missing file") << QStringList{"--decoder", "Baudot", "/no/such"} << 1
                                      << QByteArray("/no/such: No such file");
        QTest::newRow("directory")
            << QStringList{"--decoder", "Baudot", "/"} << 1 << QByteArray("/: is a folder");
        QTest::newRow("missing folder") << QStringList{"--decoder", "Baudot", "--maps", "/no/such"}
                                        << 1 << QByteArray("/no/such: No such file or directory");
        QTest::newRow("missing decoder modules")
            << QStringList{"--decoder", "Baudot", "--decoders", "/no/such"} << 1
            << QByteArray("/no/such: No such file");
        QTest::newRow("a folder for decoder modules")
            << QStringList{"--decoder", "Baudot", "--decoders", "/"} << 1
            << QByteArray("/: is a folder");
    }

    void badInputIsSaidInOneLine()
    {
        QFETCH(QStringList, words);
        QFETCH(int, status);
        QFETCH(QByteArray, reason);
        const Ended ended = run(words);
        QCOMPARE(ended.status, status);
        QVERIFY2(ended.err.startsWith("morsehost: " + reason), ended.err.constData());
        QCOMPARE(ended.err.count('\n'), 1);
        QCOMPARE(ended.out, QByteArray());
    }
};

QTEST_GUILESS_MAIN(tst_Map)
#include "tst_map.moc"
