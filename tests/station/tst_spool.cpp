// SPDX-License-Identifier: MIT
// Lines on disk come back whole, in order, and none twice, also after a crash.
#include "station/archive/spool.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace morsehost;

namespace {

std::vector<QByteArray> lines(std::initializer_list<const char*> texts)
{
    return {texts.begin(), texts.end()};
}

} // namespace

class tst_Spool : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesWaitInOrderUntilTheyAreTaken()
    {
        const QTemporaryDir folder;
        Spool spool(folder.path());
        QVERIFY(spool.append("a") && spool.append("b") && spool.append("c"));
        QCOMPARE(spool.oldest(2), lines({"a", "b"}));
        QCOMPARE(spool.oldest(9), lines({"a", "b", "c"}));
        QVERIFY(spool.take(2));
        QCOMPARE(spool.oldest(9), lines({"c"}));
        QVERIFY(spool.append("d"));
        QVERIFY(spool.take(1));
        QCOMPARE(spool.oldest(9), lines({"d"}));
    }

    void theNextOneGoesOnWhereTheLastOneEnded()
    {
        const QTemporaryDir folder;
        {
            Spool spool(folder.path());
            QVERIFY(spool.append("a") && spool.append("b"));
            QCOMPARE(spool.oldest(1), lines({"a"}));
            QVERIFY(spool.take(1));
        }
        Spool spool(folder.path());
        QVERIFY(spool.append("c"));
        QCOMPARE(spool.oldest(9), lines({"b", "c"}));
    }

    void aLineThatACrashCutOffIsNotContinued()
    {
        const QTemporaryDir folder;
        {
            Spool spool(folder.path());
            QVERIFY(spool.append("whole"));
        }
        const QString name = QDir(folder.path()).entryList({"*.lines"}).value(0);
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::Append));
        file.write("half a li");
        file.close();
        Spool spool(folder.path());
        QVERIFY(spool.append("next"));
        QCOMPARE(spool.oldest(9), lines({"whole", "next"}));
    }

    void aLineOfAnyLengthComesBackWhole_data()
    {
        QTest::addColumn<int>("length");
        QTest::newRow("none at all") << 0;
        QTest::newRow("as long as a piece that is read") << 64 * 1024;
        QTest::newRow("longer than what is given at once") << 5 * 1024 * 1024;
        QTest::newRow("longer than several files") << 20 * 1024 * 1024;
    }
    void aLineOfAnyLengthComesBackWhole()
    {
        QFETCH(int, length);
        const QTemporaryDir folder;
        QByteArray line;
        for (int i = 0; i < length; ++i)
            line += static_cast<char>('a' + i % 23);
        {
            Spool spool(folder.path());
            QVERIFY(spool.append("before") && spool.append(line) && spool.append("after"));
        }
        // Also where it is the last one that was written.
        {
            Spool spool(folder.path());
            QVERIFY(spool.append(line));
        }
        Spool spool(folder.path());
        std::vector<QByteArray> all;
        for (auto some = spool.oldest(9); !some.empty(); some = spool.oldest(9)) {
            all.insert(all.end(), some.begin(), some.end());
            QVERIFY(spool.take(static_cast<int>(some.size())));
        }
        QVERIFY(all == (std::vector<QByteArray>{"before", line, "after", line}));
    }

    void whatIsGivenAtOnceIsBounded()
    {
        const QTemporaryDir folder;
        Spool spool(folder.path());
        const QByteArray line(1024 * 1024 - 1, 'x');
        for (int i = 0; i < 20; ++i)
            QVERIFY(spool.append(line));
        QCOMPARE(spool.oldest(100).size(), std::size_t(4));
        QVERIFY(spool.take(3));
        QCOMPARE(spool.oldest(2).size(), std::size_t(2));
    }

    void aCutOffLineOfAnyLengthIsNotContinued()
    {
        const QTemporaryDir folder;
        QString path;
        {
            Spool spool(folder.path());
            QVERIFY(spool.append("whole"));
            path = folder.filePath(QDir(folder.path()).entryList({"*.lines"}).value(0));
        }
        QVERIFY(QFile::resize(path, 40 * 1024 * 1024));
        {
            Spool spool(folder.path());
            QCOMPARE(QFileInfo(path).size(), 6);
            QVERIFY(spool.append("next"));
            QCOMPARE(spool.oldest(9), lines({"whole", "next"}));
        }
        // Nothing but the beginning of a line.
        QVERIFY(QFile::resize(path, 0) && QFile::resize(path, 3));
        Spool spool(folder.path());
        QVERIFY(spool.append("only"));
        QCOMPARE(spool.oldest(9), lines({"only"}));
    }

    void whatComesIsGivenWhateverTheNoteOfWhatIsTakenSays_data()
    {
        QTest::addColumn<QByteArray>("note");
        QTest::newRow("a place behind the end") << QByteArray("1 999999");
        QTest::newRow("a file that is gone") << QByteArray("7 12");
        QTest::newRow("rubbish") << QByteArray("x");
    }
    void whatComesIsGivenWhateverTheNoteOfWhatIsTakenSays()
    {
        QFETCH(QByteArray, note);
        const QTemporaryDir folder;
        QFile file(folder.filePath("taken"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(note) == note.size());
        file.close();
        Spool spool(folder.path());
        QVERIFY(spool.append("next"));
        QCOMPARE(spool.oldest(9), lines({"next"}));
    }

    void whatIsTakenLeavesTheDisk()
    {
        const QTemporaryDir folder;
        Spool spool(folder.path());
        const QByteArray line(100000, 'x');
        for (int i = 0; i < 100; ++i)
            QVERIFY(spool.append(line));
        QVERIFY(spool.size() > 9000000);
        for (auto some = spool.oldest(1000); !some.empty(); some = spool.oldest(1000))
            QVERIFY(spool.take(static_cast<int>(some.size())));
        QCOMPARE(spool.size(), 0);
        QCOMPARE(QDir(folder.path()).entryList({"*.lines"}).size(), 1);
        QVERIFY(spool.append("next"));
        QCOMPARE(spool.oldest(9), lines({"next"}));
    }

    void aFolderThatCannotBeMadeIsReported()
    {
        Spool spool("/dev/null/spool");
        QVERIFY(!spool.error().isEmpty());
        QVERIFY(!spool.append("a"));
    }
};

QTEST_GUILESS_MAIN(tst_Spool)
#include "tst_spool.moc"
