// SPDX-License-Identifier: MIT
// One session file alone: names, size limit, wrapping, and disks that refuse.
#include "session/sessionfile.h"

#include "host/standin/tracelog.h"
#include "support/fulldisk.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <QtTest>

#include <limits>
#include <set>

namespace {

// The state that a handler keeps for one file.
struct OneFile
{
    QString name;
    QFile* file = nullptr;
    QTextStream* stream = nullptr;
    unsigned int column = 0;
    QString backlog;
    UnfinishedFiles unfinished;
    const char* codec = "UTF-8";

    ~OneFile() { sessionfile::close(view()); }
    SessionFile view() { return {name, file, stream, column, backlog, unfinished, codec}; }
};

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
}

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

    void theFirstFreeNumberIsTaken()
    {
        std::set<QString> taken;
        const auto exists = [&](const QString& path) { return taken.count(path) != 0; };
        for (int number = 1; number <= 12; ++number) {
            const auto name = sessionfile::freeName(QStringLiteral("/d"), QStringLiteral("stamp"),
                                                    QStringLiteral("_MO__"), exists);
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
        QVERIFY(sessionfile::needsNewName(one.view()));
        one.name = dir.filePath("x.txt");
        if (size >= 0) {
            QFile file(one.name);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(size));
        }
        QCOMPARE(sessionfile::needsNewName(one.view()), needed);
    }

    void aLineBreaksBehindThePieceThatFollowsAHundredCharacters()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.filePath("x.txt");
        QVERIFY(sessionfile::open(one.view(), [] {}));
        sessionfile::write(one.view(), QString(99, QLatin1Char('a')));
        sessionfile::write(one.view(), QStringLiteral("b"));
        QCOMPARE(one.column, 100U);
        QCOMPARE(contentOf(one.name), QByteArray(99, 'a') + "b");
        sessionfile::write(one.view(), QStringLiteral("cd"));
        QCOMPARE(contentOf(one.name), QByteArray(99, 'a') + "bcd\n");
        QCOMPARE(one.column, 2U);
        // A line end inside a piece counts as a character like any other.
        sessionfile::write(one.view(), QString(98, QLatin1Char('\n')));
        sessionfile::write(one.view(), QStringLiteral("e"));
        QVERIFY(contentOf(one.name).endsWith("\ne\n"));
    }

    void everyPieceCanBeReadAtOnce()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.filePath("x.txt");
        QVERIFY(sessionfile::open(one.view(), [] {}));
        for (const QString& piece : {QStringLiteral("a"), QStringLiteral("\u05D0"),
                                     QString::fromUtf8("\xF0\x9D\x84\x9E")}) {
            sessionfile::write(one.view(), piece);
            QVERIFY(contentOf(one.name).endsWith(piece.toUtf8()));
        }
    }

    void anExistingFileIsEmptiedAndAnOpenOneKept()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.filePath("x.txt");
        QFile before(one.name);
        QVERIFY(before.open(QIODevice::WriteOnly) && before.write("old") == 3);
        before.close();
        QVERIFY(sessionfile::open(one.view(), [] {}));
        QCOMPARE(contentOf(one.name), QByteArray());
        sessionfile::write(one.view(), QStringLiteral("new"));
        QVERIFY(sessionfile::open(one.view(), [] {}));
        QCOMPARE(contentOf(one.name), QByteArray("new"));
    }

    void aTakenNameIsReplacedByTheNext()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.filePath("folder");
        QVERIFY(QDir().mkdir(one.name));
        int made = 0;
        QVERIFY(sessionfile::open(one.view(), [&] {
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
        QVERIFY(!sessionfile::open(one.view(), [&] { ++made; }));
        QCOMPARE(made, 10000);
        QVERIFY(!one.file && !one.stream);
    }

    void aFolderThatTakesNoNameIsGivenUpAtOnce()
    {
        OneFile one;
        one.name = QStringLiteral("/no/such/folder/x.txt");
        int made = 0;
        QVERIFY(!sessionfile::open(one.view(), [&] { ++made; }));
        QCOMPARE(made, 1);
    }

    void beginningAndClosingSetTheStateBack()
    {
        QTemporaryDir dir;
        OneFile one;
        one.name = dir.filePath("x.txt");
        QVERIFY(sessionfile::open(one.view(), [] {}));
        sessionfile::write(one.view(), QStringLiteral("abc"));
        sessionfile::begin(one.view());
        QVERIFY(!one.file && !one.stream);
        QCOMPARE(one.column, 0U);
        QVERIFY(!one.name.isEmpty());
        QVERIFY(sessionfile::open(one.view(), [] {}));
        sessionfile::write(one.view(), QStringLiteral("abc"));
        sessionfile::close(one.view());
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
        QVERIFY(sessionfile::open(one.view(), [] {}));
        QByteArray expected;
        unsigned int column = 0;
        const auto write = [&](const QString& piece) {
            sessionfile::write(one.view(), piece);
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
        sessionfile::close(one.view());
        QCOMPARE(contentOf(path), expected);
    }

    void aFileClosedOnAFullDiskIsFinishedWhenItHasRoom()
    {
        QTemporaryDir dir;
        OneFile one;
        const QString first = dir.filePath("first.txt");
        const QString second = dir.filePath("second.txt");
        one.name = first;
        QVERIFY(sessionfile::open(one.view(), [] {}));
        {
            const FullDisk full(10);
            for (int i = 0; i < 30000; ++i)
                sessionfile::write(one.view(), QStringLiteral("\n"));
            sessionfile::close(one.view());
            QVERIFY(one.backlog.isEmpty());
            one.name = second;
            one.column = 0;
            QVERIFY(sessionfile::open(one.view(), [] {}));
            sessionfile::write(one.view(), QStringLiteral("the second file"));
            QCOMPARE(contentOf(first).size(), 10);
            QCOMPARE(contentOf(second).size(), 10);
        }
        sessionfile::write(one.view(), QStringLiteral(" goes on"));
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
                QVERIFY(sessionfile::open(one.view(), [] {}));
                sessionfile::write(one.view(), QStringLiteral("x"));
                sessionfile::close(one.view());
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
            QVERIFY(sessionfile::open(one.view(), [] {}));
            const FullDisk full(0);
            sessionfile::write(one.view(), QStringLiteral("few letters"));
            sessionfile::close(one.view());
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
        QVERIFY(sessionfile::open(one.view(), [] {}));
        {
            const FullDisk full(0);
            for (int i = 0; i < 30000; ++i)
                sessionfile::write(one.view(), QStringLiteral("\n"));
            QCOMPARE(contentOf(path).size(), 0);
        }
        sessionfile::close(one.view());
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
        QVERIFY(sessionfile::open(one.view(), [] {}));
        {
            const FullDisk full(0);
            sessionfile::write(one.view(), QStringLiteral("few"));
            QCOMPARE(contentOf(path), QByteArray());
        }
        sessionfile::close(one.view());
        QCOMPARE(contentOf(path), QByteArray("few"));
    }

    void ofWhatAFullDiskRefusesEightMillionCharactersAreKept()
    {
        constexpr int MOST = 8 * 1024 * 1024;
        QTemporaryDir dir;
        OneFile one;
        const QString path = dir.filePath("x.txt");
        one.name = path;
        QVERIFY(sessionfile::open(one.view(), [] {}));
        {
            const FullDisk full(0);
            // What the file's own buffer takes does not wait.
            sessionfile::write(one.view(), QString(MOST + 100000, QLatin1Char('k')));
            QVERIFY(one.backlog.size() >= MOST);
            sessionfile::write(one.view(), QStringLiteral("too much"));
        }
        sessionfile::write(one.view(), QStringLiteral("too late"));
        QVERIFY(one.backlog.isEmpty());
        sessionfile::write(one.view(), QStringLiteral("after"));
        sessionfile::close(one.view());
        const QByteArray content = contentOf(path);
        QCOMPARE(content.count('k'), MOST + 100000);
        QVERIFY(!content.contains("too "));
        QVERIFY(content.endsWith("after"));
    }
};

QTEST_GUILESS_MAIN(tst_SessionFile)
#include "tst_sessionfile.moc"
