// SPDX-License-Identifier: MIT
// One session file alone: names, size limit, wrapping, and disks that refuse.
#include "session/sessionfile.h"

#include "host/standin/tracelog.h"
#include "support/files.h"
#include "support/fulldisk.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <QtTest>

#include <limits>
#include <set>

#include <sys/stat.h>

namespace {

// A file with the fields that a handler keeps for it.
struct OneFile
{
    QString name;
    QFile* file = nullptr;
    QTextStream* stream = nullptr;
    unsigned int column = 0;
    UnfinishedFiles unfinished;
    SessionFile session{{name, file, stream, column}, "UTF-8", unfinished};

    ~OneFile()
    {
        session.Close();
        unfinished.Finish();
    }
};

} // namespace

class tst_SessionFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void frequenciesBecomePartsOfNames_data()
    {
        QTest::addColumn<double>("frequency_Hz");
        QTest::addColumn<QString>("text");
        QTest::newRow("megahertz") << 7025000.0 << "7_025MHz";
        QTest::newRow("kilohertz") << 500000.0 << "500_000KHz";
        QTest::newRow("exactly one megahertz") << 1000000.0 << "1000_000KHz";
        QTest::newRow("just above") << 1000100.0 << "1_000MHz";
        QTest::newRow("none") << 0.0 << "0_000KHz";
        QTest::newRow("negative") << -500.0 << "-0_500KHz";
        QTest::newRow("single precision") << 145123456.789 << "145_123MHz";
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << "nanKHz";
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << "infMHz";
    }

    void frequenciesBecomePartsOfNames()
    {
        QFETCH(double, frequency_Hz);
        QFETCH(QString, text);
        QCOMPARE(sessionfile::frequencyText(frequency_Hz), text);
    }

    void aNameInAFileNameIsNoPath()
    {
        QCOMPARE(sessionfile::namePart(QStringLiteral("../a/b\\c/")), QStringLiteral("..abc"));
        QCOMPARE(sessionfile::namePart(QStringLiteral("Greek")), QStringLiteral("Greek"));
        QCOMPARE(sessionfile::namePart(QString()), QString());
    }

    void theFirstFreeNumberIsTaken()
    {
        std::set<QString> taken;
        const auto isTaken = [&](const QString& path) { return taken.count(path) != 0; };
        for (int number = 1; number <= 12; ++number) {
            const auto name = sessionfile::freeName(QStringLiteral("/d"), QStringLiteral("stamp"),
                                                    QStringLiteral("_MO__"), isTaken);
            QCOMPARE(name.path, QStringLiteral("/d/stamp_%1_MO__.txt").arg(number));
            QVERIFY(!name.counterWrapped);
            taken.insert(name.path);
        }
    }

    void aPercentSignInTheFolderIsNoPlaceholder()
    {
        const auto name = sessionfile::freeName(
            QStringLiteral("/a%1b"), QStringLiteral("s"), QStringLiteral("__%2"),
            [](const QString& path) { return path.contains(QLatin1String("_1__")); });
        QCOMPARE(name.path, QStringLiteral("/a%1b/s_2__%2.txt"));
    }

    void theCounterWrapsAroundWhenEveryNumberIsTaken()
    {
        const auto name = sessionfile::freeName(
            QStringLiteral("/d"), QStringLiteral("s"), QString(),
            [](const QString&) { return true; }, std::numeric_limits<qint32>::max() - 1);
        QVERIFY(name.counterWrapped);
        QCOMPARE(name.path, QStringLiteral("/d/s_2147483647.txt"));
    }

    void aNewNameIsNeededFromTheLimitOn_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<bool>("needed");
        QTest::newRow("missing file") << qint64(-1) << false;
        QTest::newRow("empty") << qint64(0) << false;
        QTest::newRow("one below") << qint64(256000) << false;
        QTest::newRow("limit") << qint64(256001) << true;
        QTest::newRow("above") << qint64(300000) << true;
    }

    void aNewNameIsNeededFromTheLimitOn()
    {
        QFETCH(qint64, size);
        QFETCH(bool, needed);
        QTemporaryDir dir;
        OneFile one;
        QVERIFY(one.session.NeedsNewName());
        one.name = dir.filePath("x.txt");
        if (size >= 0) {
            QFile file(one.name);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(size));
        }
        QCOMPARE(one.session.NeedsNewName(), needed);
    }

    void aLineBreaksBehindThePieceThatFollowsAHundredCharacters()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.filePath("x.txt");
        QVERIFY(one.session.Open([] {}));
        one.session.Write(QString(99, QLatin1Char('a')));
        one.session.Write(QStringLiteral("b"));
        QCOMPARE(one.column, 100U);
        QCOMPARE(contentOf(one.name), QByteArray(99, 'a') + "b");
        one.session.Write(QStringLiteral("cd"));
        QCOMPARE(contentOf(one.name), QByteArray(99, 'a') + "bcd\n");
        QCOMPARE(one.column, 2U);
        // A line end inside a piece counts as a character like any other.
        one.session.Write(QString(98, QLatin1Char('\n')));
        one.session.Write(QStringLiteral("e"));
        QVERIFY(contentOf(one.name).endsWith("\ne\n"));
    }

    void everyPieceCanBeReadAtOnce()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.filePath("x.txt");
        QVERIFY(one.session.Open([] {}));
        for (const QString& piece : {QStringLiteral("a"), QStringLiteral("\u05D0"),
                                     QString::fromUtf8("\xF0\x9D\x84\x9E")}) {
            one.session.Write(piece);
            QVERIFY(contentOf(one.name).endsWith(piece.toUtf8()));
        }
    }

    void whatStandsUnderANameIsNeverEmptied_data()
    {
        QTest::addColumn<QString>("there");
        QTest::newRow("a file that somebody began") << "file";
        QTest::newRow("a folder") << "folder";
        QTest::newRow("a link to a file") << "link";
        QTest::newRow("a link that leads nowhere") << "nowhere";
        QTest::newRow("a pipe that nobody reads") << "pipe";
    }

    void whatStandsUnderANameIsNeverEmptied()
    {
        QFETCH(QString, there);
        QTemporaryDir dir;
        const QString path = dir.filePath("x.txt");
        const QString other = dir.filePath("other");
        if (there == "folder")
            QVERIFY(QDir().mkdir(path));
        else if (there == "pipe")
            QCOMPARE(mkfifo(qPrintable(path), 0600), 0);
        else if (there != "file")
            QVERIFY(QFile::link(other, path));
        if (there == "file" || there == "link")
            writeFile(there == "file" ? path : other, "old");
        QVERIFY(sessionfile::isTaken(path));
        OneFile one;
        one.name = path;
        QVERIFY(one.session.Open([&] { one.name = dir.filePath("y.txt"); }));
        one.session.Write(QStringLiteral("new"));
        QCOMPARE(contentOf(one.name), QByteArray("new"));
        QVERIFY(one.name.endsWith("y.txt"));
        if (there == "file" || there == "link")
            QCOMPARE(contentOf(path), QByteArray("old"));
        QCOMPARE(QFile::exists(other), there == "link");
    }

    void aTakenNameIsReplacedByTheNext()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.filePath("folder");
        QVERIFY(QDir().mkdir(one.name));
        int made = 0;
        QVERIFY(one.session.Open([&] {
            ++made;
            one.name = made < 5 ? dir.filePath("folder") : dir.filePath("x.txt");
        }));
        QCOMPARE(made, 5);
        QVERIFY(one.stream);
    }

    void namesThatStayTakenAreGivenUpAfterTenThousand()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.path();
        int made = 0;
        QVERIFY(!one.session.Open([&] { ++made; }));
        QCOMPARE(made, 10000);
        QVERIFY(!one.file && !one.stream);
    }

    void aFolderThatTakesNoNameIsGivenUpAtOnce()
    {
        OneFile one;
        one.name = QStringLiteral("/no/such/folder/x.txt");
        int made = 0;
        QVERIFY(!one.session.Open([&] { ++made; }));
        QCOMPARE(made, 1);
        one.session.Write(QStringLiteral("dropped"));
        QVERIFY(!one.file && !one.stream);
        QCOMPARE(one.column, 0U);
    }

    void aNameThatCannotBeCreatedIsReplacedByTheNext()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = QStringLiteral("/no/such/folder/x.txt");
        QVERIFY(one.session.Open([&] { one.name = dir.filePath("x.txt"); }));
        one.session.Write(QStringLiteral("kept"));
        QCOMPARE(contentOf(dir.filePath("x.txt")), QByteArray("kept"));
    }

    void takenNamesBehindOneThatCannotBeCreatedAreSkipped()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = QStringLiteral("/no/such/folder/x.txt");
        int made = 0;
        QVERIFY(
            one.session.Open([&] { one.name = ++made < 5 ? dir.path() : dir.filePath("x.txt"); }));
        QCOMPARE(made, 5);
    }

    void beginningAndClosingSetTheStateBack()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.filePath("x.txt");
        QVERIFY(one.session.Open([] {}));
        one.session.Write(QStringLiteral("abc"));
        one.session.Begin();
        QVERIFY(!one.file && !one.stream);
        QCOMPARE(one.column, 0U);
        QVERIFY(!one.name.isEmpty());
        one.name = dir.filePath("y.txt");
        QVERIFY(one.session.Open([] {}));
        one.session.Write(QStringLiteral("abc"));
        one.session.Close();
        QVERIFY(!one.file && !one.stream);
        QCOMPARE(one.column, 3U);
        QVERIFY(one.name.isEmpty());
    }

    void whatAFullDiskRefusesIsWrittenWhenItHasRoom_data()
    {
        QTest::addColumn<int>("pieces");
        QTest::newRow("less than a buffer") << 100;
        QTest::newRow("many buffers") << 50000;
    }

    void whatAFullDiskRefusesIsWrittenWhenItHasRoom()
    {
        QFETCH(int, pieces);
        QTemporaryDir dir;
        OneFile one;
        const QString path = dir.filePath("x.txt");
        one.name = path;
        QVERIFY(one.session.Open([] {}));
        QByteArray expected;
        unsigned int column = 0;
        const auto write = [&](const QString& piece) {
            one.session.Write(piece);
            expected += piece.toUtf8();
            if (column >= 100) {
                expected += '\n';
                column = 0;
            }
            column += static_cast<unsigned int>(piece.size());
        };
        for (int i = 0; i < 40; ++i)
            write(QStringLiteral("before "));
        {
            const FullDisk full(100);
            for (int i = 0; i < pieces; ++i)
                write(QStringLiteral("\u00E4%1 ").arg(i));
            QVERIFY(contentOf(path).size() < expected.size());
        }
        write(QStringLiteral("after"));
        QCOMPARE(contentOf(path), expected);
        one.session.Close();
        QCOMPARE(contentOf(path), expected);
    }

    void aFileClosedOnAFullDiskIsFinishedWhenItHasRoom()
    {
        QTemporaryDir dir;
        OneFile one;
        const QString first = dir.filePath("first.txt");
        const QString second = dir.filePath("second.txt");
        one.name = first;
        QVERIFY(one.session.Open([] {}));
        {
            const FullDisk full(10);
            for (int i = 0; i < 30000; ++i)
                one.session.Write(QStringLiteral("\n"));
            one.session.Close();
            one.name = second;
            one.column = 0;
            QVERIFY(one.session.Open([] {}));
            one.session.Write(QStringLiteral("the second file"));
            QCOMPARE(contentOf(first).size(), 10);
            QCOMPARE(contentOf(second).size(), 10);
        }
        one.session.Write(QStringLiteral(" goes on"));
        QCOMPARE(contentOf(first), QByteArray(30000 + 30000 / 100 - 1, '\n'));
        QCOMPARE(contentOf(second), QByteArray("the second file goes on"));
    }

    void ofTooManyUnfinishedFilesTheOldestIsGivenUpAndTraced()
    {
        QTemporaryDir dir;
        TraceRecorder traces;
        QStringList paths;
        {
            const FullDisk full(0);
            OneFile one;
            for (int i = 0; i < 33; ++i) {
                paths += dir.filePath(QStringLiteral("%1.txt").arg(i));
                one.name = paths.last();
                QVERIFY(one.session.Open([] {}));
                one.session.Write(QStringLiteral("x"));
                one.session.Close();
            }
            QCOMPARE(traces.Traces().size(), 1);
            QVERIFY(traces.Messages().first().endsWith(paths.first()));
        }
        // The others were tried a last time, and the disk was still full.
        QCOMPARE(traces.Traces().size(), 33);
        QCOMPARE(contentOf(paths.first()), QByteArray());
    }

    void whatTheFileItselfKeptIsNotLostWhenThereIsRoomAgain()
    {
        QTemporaryDir dir;
        TraceRecorder traces;
        const QString path = dir.filePath("x.txt");
        {
            OneFile one;
            one.name = path;
            QVERIFY(one.session.Open([] {}));
            const FullDisk full(0);
            one.session.Write(QStringLiteral("few letters"));
            one.session.Close();
            QCOMPARE(contentOf(path), QByteArray());
        }
        QCOMPARE(contentOf(path), QByteArray("few letters"));
        QCOMPARE(traces.Messages(), QStringList());
    }

    void closingWritesWhatWaitsWhenThereIsRoomAgain()
    {
        QTemporaryDir dir;
        OneFile one;
        const QString path = dir.filePath("x.txt");
        one.name = path;
        QVERIFY(one.session.Open([] {}));
        {
            const FullDisk full(0);
            for (int i = 0; i < 30000; ++i)
                one.session.Write(QStringLiteral("\n"));
            QCOMPARE(contentOf(path).size(), 0);
        }
        one.session.Close();
        QCOMPARE(contentOf(path).size(), 30000 + 30000 / 100 - 1);
    }

    void onlyAWrappedCounterIsTraced()
    {
        TraceRecorder traces;
        sessionfile::traceWrapped({QStringLiteral("/d/s_1.txt"), false}, "Operation");
        QCOMPARE(traces.Messages(), QStringList());
        const sessionfile::Name wrapped{QStringLiteral("/d/Ström_1.txt"), true};
        sessionfile::traceWrapped(wrapped, "MorseHandler::CreateTextFilename");
        const QString message = QStringLiteral("Error in MorseHandler::CreateTextFilename: file "
                                               "name already exists: /d/Ström_1.txt");
        QCOMPARE(traces.Messages(), QStringList{message});
        setTraceMask(0);
        sessionfile::traceWrapped(wrapped, "MorseHandler::CreateTextFilename");
        QCOMPARE(traces.Messages(), QStringList{message});
    }

    void closingWritesALittleThatWaitsWhenThereIsRoomAgain()
    {
        QTemporaryDir dir;
        OneFile one;
        const QString path = dir.filePath("x.txt");
        one.name = path;
        QVERIFY(one.session.Open([] {}));
        {
            const FullDisk full(0);
            one.session.Write(QStringLiteral("few"));
            QCOMPARE(contentOf(path), QByteArray());
        }
        one.session.Close();
        QCOMPARE(contentOf(path), QByteArray("few"));
    }

    void ofWhatAFullDiskRefusesEightMillionCharactersAreKept()
    {
        constexpr int MOST = 8 * 1024 * 1024;
        QTemporaryDir dir;
        OneFile one;
        const QString path = dir.filePath("x.txt");
        one.name = path;
        QVERIFY(one.session.Open([] {}));
        {
            const FullDisk full(0);
            // What the file's own buffer takes does not wait.
            one.session.Write(QString(MOST + 100000, QLatin1Char('k')));
            one.session.Write(QStringLiteral("too much"));
        }
        one.session.Write(QStringLiteral("too late"));
        one.session.Write(QStringLiteral("after"));
        one.session.Close();
        const QByteArray content = contentOf(path);
        QCOMPARE(content.count('k'), MOST + 100000);
        QVERIFY(!content.contains("too "));
        QVERIFY(content.endsWith("after"));
    }
};

QTEST_GUILESS_MAIN(tst_SessionFile)
#include "tst_sessionfile.moc"
