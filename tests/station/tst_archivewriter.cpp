// SPDX-License-Identifier: MIT
// What waits on disk until the archive has it: in order, once, across crashes.
#include "station/archive/archive.h"
#include "station/archive/spool.h"
#include "station/archive/writer.h"
#include "support/program.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace morsehost;

namespace {

ArchiveRecord recordOf(int number)
{
    ArchiveRecord record;
    record.transmission.text = QString::number(number);
    record.transmission.number = number;
    record.key = keyOfRecorded({}, record.transmission);
    return record;
}

QStringList archivedTexts(const QString& url)
{
    QString error;
    const std::unique_ptr<Archive> archive = Archive::open(url, error);
    ArchiveQuery query;
    query.isOldestFirst = true;
    query.limit = 100000;
    const auto found = archive ? archive->search(query) : std::nullopt;
    if (!found)
        return {"(failed)"};
    QStringList texts;
    for (const ArchivedTransmission& one : *found)
        texts += one.record.transmission.text;
    return texts;
}

QStringList numbers(int first, int last)
{
    QStringList list;
    for (int number = first; number <= last; ++number)
        list += QString::number(number);
    return list;
}

} // namespace

class tst_ArchiveWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsTooOldLeavesTheArchive()
    {
        const QTemporaryDir folder;
        const QString url = folder.filePath("archive.db");
        ArchiveWriter writer({url, folder.filePath("unsent")});
        for (const char* const text : {"A", "B", "C"}) {
            ArchiveRecord record;
            record.station = "north";
            record.key = text;
            record.transmission.text = text;
            record.transmission.stop_us = text[0];
            QVERIFY(writer.add(record));
        }
        QVERIFY(writer.flush());
        ArchiveLimits limits;
        limits.station = "south";
        limits.before_us = 'C';
        writer.prune(limits);
        limits.station = "north";
        limits.before_us = 'B';
        writer.prune(limits);
        QTRY_COMPARE_WITH_TIMEOUT(archivedTexts(url), QStringList({"B", "C"}),
                                  testsupport::HANGS_ms);
        // An archive is never as small as a byte, so all of the station's go.
        limits.before_us.reset();
        limits.mostBytes = 1;
        writer.prune(limits);
        QTRY_COMPARE_WITH_TIMEOUT(archivedTexts(url), QStringList(), testsupport::HANGS_ms);
    }

    // Words that come but once are most of an archive.
    void anArchiveOfUniqueWordsIsNotMadeSmallerThanItHasToBe()
    {
        const QTemporaryDir folder;
        const QString url = folder.filePath("archive.db");
        constexpr int COUNT = 6000;
        ArchiveWriter writer({url, folder.filePath("unsent")});
        QString error;
        const std::unique_ptr<Archive> archive = Archive::open(url, error);
        QVERIFY2(archive, qPrintable(error));
        std::vector<ArchiveRecord> records;
        for (int number = 1; number <= COUNT; ++number) {
            ArchiveRecord record = recordOf(number);
            record.transmission.stop_us = number;
            for (int word = 0; word < 20; ++word)
                record.transmission.text +=
                    QString(" %1").arg(qHash(number * 20 + word, 7025), 0, 36);
            records.push_back(record);
        }
        QVERIFY(archive->add(records));
        const qint64 before = *archive->size();
        ArchiveLimits limits;
        limits.mostBytes = before * 4 / 5;
        // Two rounds: what the first leaves is small enough for the second.
        for (int round = 0; round < 2; ++round) {
            writer.prune(limits);
            QTRY_VERIFY_WITH_TIMEOUT(*archive->size() <= limits.mostBytes, testsupport::HANGS_ms);
            QVERIFY(writer.flush());
        }
        const qint64 kept = *archive->count();
        QVERIFY2(kept > COUNT * 0.70 && kept < COUNT * 0.80, qPrintable(QString::number(kept)));
        ArchiveQuery oldest;
        oldest.isOldestFirst = true;
        oldest.limit = 1;
        QCOMPARE(qint64(archive->search(oldest)->front().record.transmission.number),
                 COUNT - kept + 1);
    }

    void recordsReachTheArchive()
    {
        const QTemporaryDir folder;
        const QString url = folder.filePath("archive.db");
        ArchiveWriter writer({url, folder.filePath("spool")});
        for (int number = 1; number <= 1200; ++number)
            QVERIFY(writer.add(recordOf(number)));
        QVERIFY(writer.flush());
        QCOMPARE(archivedTexts(url), numbers(1, 1200));
    }

    void anArchiveThatWasAwayGetsAllInOrder()
    {
        const QTemporaryDir folder;
        const QString url = folder.filePath("later/archive.db");
        QStringList problems;
        {
            ArchiveWriter writer({url, folder.filePath("spool")},
                                 [&problems](const QString& problem) { problems += problem; });
            QVERIFY(writer.add(recordOf(1)));
            QVERIFY(writer.add(recordOf(2)));
            QVERIFY(!writer.flush());
        }
        QVERIFY(!problems.isEmpty() && !problems.first().isEmpty());
        // Another process, the archive still away.
        ArchiveWriter writer({url, folder.filePath("spool")});
        QVERIFY(writer.add(recordOf(3)));
        QVERIFY(!writer.flush());
        QVERIFY(QDir(folder.path()).mkdir("later"));
        QVERIFY(writer.flush());
        QCOMPARE(archivedTexts(url), numbers(1, 3));
    }

    void whatWasSentBeforeACrashIsNotThereTwice()
    {
        const QTemporaryDir folder;
        const QString url = folder.filePath("archive.db");
        const QString spool = folder.filePath("spool");
        {
            ArchiveWriter writer({url, spool});
            for (int number = 1; number <= 3; ++number)
                QVERIFY(writer.add(recordOf(number)));
            QVERIFY(writer.flush());
        }
        // As if the process had died between the archive's answer and the note of it.
        QVERIFY(QFile::remove(spool + "/taken"));
        ArchiveWriter writer({url, spool});
        QVERIFY(writer.add(recordOf(4)));
        QVERIFY(writer.flush());
        QCOMPARE(archivedTexts(url), numbers(1, 4));
    }

    void linesThatAreNoRecordsDoNotStopTheOthers()
    {
        const QTemporaryDir folder;
        const QString url = folder.filePath("archive.db");
        {
            Spool spool(folder.filePath("spool"));
            QVERIFY(spool.append("rubbish") && spool.append("{\"text\":\"no key\"}"));
        }
        ArchiveWriter writer({url, folder.filePath("spool")});
        QVERIFY(writer.add(recordOf(1)));
        QVERIFY(writer.flush());
        QCOMPARE(archivedTexts(url), numbers(1, 1));
    }
};

QTEST_GUILESS_MAIN(tst_ArchiveWriter)
#include "tst_archivewriter.moc"
