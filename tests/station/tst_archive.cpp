// SPDX-License-Identifier: MIT
// The archive: what goes in comes out, once, and is found. On a file of this machine, or in the
// database that MORSEHANDLER_TEST_POSTGRESQL names.
#include "station/archive/archive.h"
#include "station/archive/dialect.h"
#include "station/archive/recording.h"
#include "support/files.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <limits>
#include <thread>

using morsehost::Archive;
using morsehost::ArchivedTransmission;
using morsehost::ArchiveQuery;
using morsehost::ArchiveRecord;

namespace {

constexpr qint64 SECOND_us = 1000000;

ArchiveRecord recordOf(const QString& text, qint64 start_s = 0, double frequency_Hz = 7025000)
{
    ArchiveRecord record;
    record.transmission.text = text;
    record.transmission.decoder = "Morse";
    record.transmission.start_us = start_s * SECOND_us;
    record.transmission.stop_us = (start_s + 5) * SECOND_us;
    record.transmission.frequency_Hz = frequency_Hz;
    record.key = morsehost::keyOfRecorded({}, record.transmission);
    return record;
}

QStringList textsOf(const std::optional<std::vector<ArchivedTransmission>>& found)
{
    if (!found)
        return {"(failed)"};
    QStringList texts;
    for (const ArchivedTransmission& one : *found)
        texts += one.record.transmission.text;
    return texts;
}

// Whether a text in capital letters holds all of them; one that ends in "*" begins a word of it.
bool holds(const QString& text, const QStringList& words)
{
    const QString apart = ' ' + text + ' ';
    return std::all_of(words.begin(), words.end(), [&apart](const QString& word) {
        const QString whole = ' ' + word.toUpper() + ' ';
        return word.isEmpty() || apart.contains(word.endsWith('*') ? whole.chopped(2) : whole);
    });
}

ArchiveQuery wordsQuery(const QStringList& words)
{
    ArchiveQuery query;
    query.words = words;
    return query;
}

} // namespace

class tst_Archive : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    std::unique_ptr<Archive> m_archive;

    QString path() const
    {
        return qEnvironmentVariable("MORSEHANDLER_TEST_POSTGRESQL",
                                    m_folder.filePath("archive.db"));
    }

private Q_SLOTS:
    void init()
    {
        QFile::remove(path());
        QString error;
        m_archive = Archive::open(path(), error);
        QVERIFY2(m_archive, qPrintable(error));
        QVERIFY(m_archive->removeBefore(std::numeric_limits<qint64>::max()));
    }

    void cleanup() { m_archive.reset(); }

    void everyFieldComesBack()
    {
        ArchiveRecord record;
        record.key = "key";
        record.station = "north";
        morsehost::Transmission& transmission = record.transmission;
        transmission.number = 7;
        transmission.receiver = "hf1";
        transmission.source = "evening.flac";
        transmission.decoder = "Baudot";
        transmission.tone_Hz = 650.25;
        transmission.frequency_Hz = 14023410.5;
        transmission.speed_wpm = 24.5;
        transmission.baudRate = 45.45;
        transmission.shift_Hz = 170;
        transmission.isReversed = true;
        transmission.snr_dB = -3.5;
        transmission.start_us = 1794000000123456;
        transmission.stop_us = 1794000005654321;
        transmission.text = QString::fromUtf8("ПРИВЕТ 'мир' %1");
        transmission.rawText = "PRIWET";
        transmission.map = "Russian - ITA2";
        transmission.unknownCodes = QStringList{".-.-.-.-"};
        transmission.files = QStringList{"/a b/c.txt", "/d\"e.xml"};
        QVERIFY2(m_archive->add({record}), qPrintable(m_archive->error()));
        const auto found = m_archive->search({});
        QVERIFY(found);
        QCOMPARE(found->size(), std::size_t(1));
        QCOMPARE(morsehost::toLine(found->front().record), morsehost::toLine(record));
    }

    void whatIsNotKnownStaysUnknown()
    {
        ArchiveRecord record;
        record.key = "key";
        QVERIFY(m_archive->add({record}));
        const auto found = m_archive->search({});
        QVERIFY(found && found->size() == 1);
        const morsehost::Transmission& transmission = found->front().record.transmission;
        QVERIFY(!transmission.tone_Hz && !transmission.isReversed && !transmission.baudRate);
        QVERIFY(transmission.unknownCodes.isEmpty());
    }

    void aKeyIsArchivedOnce()
    {
        ArchiveRecord record = recordOf("FIRST");
        QVERIFY(m_archive->add({record, recordOf("SECOND")}));
        record.transmission.text = "CHANGED";
        QVERIFY(m_archive->add({record, recordOf("THIRD")}));
        QCOMPARE(textsOf(m_archive->search({})), QStringList({"THIRD", "SECOND", "FIRST"}));
        QCOMPARE(*m_archive->count(), 3);
    }

    void aRecordingIsArchivedOnceAndWhole()
    {
        // A server keeps what another run has noted.
        const QString key = QUuid::createUuid().toString();
        QCOMPARE(*m_archive->hasRecording(key), false);
        QVERIFY(m_archive->addRecording(key, "a.flac", {recordOf("FIRST"), recordOf("SECOND")}));
        QCOMPARE(*m_archive->hasRecording(key), true);
        // Another attempt, which heard something else.
        QVERIFY(m_archive->addRecording(key, "a.flac", {recordOf("FIRST"), recordOf("OTHER")}));
        QCOMPARE(textsOf(m_archive->search({})), QStringList({"SECOND", "FIRST"}));
        // One that holds nothing is known all the same.
        const QString silent = QUuid::createUuid().toString();
        QVERIFY(m_archive->addRecording(silent, "b.flac", {}));
        QCOMPARE(*m_archive->hasRecording(silent), true);
    }

    void twoThatArchiveOneRecordingArchiveItOnce()
    {
        const QString key = QUuid::createUuid().toString();
        std::vector<std::thread> threads;
        std::atomic<int> good{0};
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([this, i, key, &good] {
                QString error;
                const auto own = Archive::open(path(), error);
                good += own && own->addRecording(key, "a.flac", {recordOf(QString::number(i))});
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(good.load(), 4);
        QCOMPARE(*m_archive->count(), 1);
    }

    void contentAndDecodingMakeTheKeyOfARecording()
    {
        const auto keysOf = [this](const char* name, const QByteArray& content,
                                   const QStringList& words) {
            QFile file(m_folder.filePath(name));
            if (!file.open(QIODevice::WriteOnly) || file.write(content) < 0)
                qFatal("no file");
            file.close();
            return morsehost::recordingKeys(file.fileName(), words);
        };
        const QString key = keysOf("a.wav", "sound", {"Morse"}).content;
        QVERIFY(!key.isEmpty());
        QCOMPARE(keysOf("b.wav", "sound", {"Morse"}).content, key);
        QVERIFY(keysOf("a.wav", "sounds", {"Morse"}).content != key);
        QVERIFY(keysOf("a.wav", "sound", {"Baudot"}).content != key);
        QVERIFY(keysOf("a.wav", "sound", {"Morse", ""}).content !=
                keysOf("a.wav", "sound", {"", "Morse"}).content);
        // Every byte of a long one counts.
        QByteArray large(20 << 20, 'x');
        const QString whole = keysOf("a.wav", large, {}).content;
        for (const int at : {0, 200000, 11000001, large.size() - 1}) {
            large[at] = 'y';
            QVERIFY(keysOf("a.wav", large, {}).content != whole);
            large[at] = 'x';
        }
        QCOMPARE(keysOf("a.wav", large, {}).content, whole);
        // Its place stays when it grows, and is not that of a file of the same name elsewhere.
        const QString place = keysOf("a.wav", "sound", {"Morse"}).place;
        QCOMPARE(keysOf("a.wav", "sounds", {"Morse"}).place, place);
        QCOMPARE(keysOf("a.wav", "sound", {"Baudot"}).place, place);
        QVERIFY(morsehost::recordingKeys(m_folder.filePath("a.wav"), {}, 1).place != place);
        QVERIFY(QDir(m_folder.path()).mkpath("other"));
        QVERIFY(keysOf("other/a.wav", "sound", {"Morse"}).place != place);
        for (const QString& none : {m_folder.filePath("gone.wav"), m_folder.path()}) {
            QCOMPARE(morsehost::recordingKeys(none, {}).content, QString());
            QCOMPARE(morsehost::recordingKeys(none, {}).place, QString());
        }
    }

    void optionsOfAnUrlReachTheServersLibrary()
    {
        const QString name = QUuid::createUuid().toString();
        {
            QSqlDatabase database = QSqlDatabase::addDatabase("QPSQL", name);
            const QString url = "postgresql://me@host/radio?sslmode=verify-full&sslrootcert=/a%27b";
            morsehost::archiveDialect(url).setUp(database, url);
            QCOMPARE(database.connectOptions(),
                     QString("connect_timeout=10;sslmode='verify-full';sslrootcert='/a\\'b'"));
            QCOMPARE(database.databaseName(), QString("radio"));
        }
        QSqlDatabase::removeDatabase(name);
    }

    void twoTransmissionsNeverHaveOneKey()
    {
        // Live, all that is known of two may be the same.
        QVERIFY(morsehost::keyOfHeard() != morsehost::keyOfHeard());
        morsehost::Transmission first;
        first.text = "E";
        const QString key = morsehost::keyOfRecorded("tape", first);
        QCOMPARE(morsehost::keyOfRecorded("tape", first), key);
        QVERIFY(morsehost::keyOfRecorded("other tape", first) != key);
        const auto differs = [&](auto change) {
            morsehost::Transmission other = first;
            change(other);
            return morsehost::keyOfRecorded("tape", other) != key;
        };
        QVERIFY(differs([](auto& other) { other.number = 2; }));
        QVERIFY(differs([](auto& other) { other.start_us = 1000; }));
        QVERIFY(differs([](auto& other) { other.decoder = "Baudot"; }));
        QVERIFY(differs([](auto& other) { other.text = "T"; }));
        QVERIFY(differs([](auto& other) { other.tone_Hz = 700; }));
        // What is measured better at the end of a recording that has grown makes no other one of
        // it.
        QVERIFY(!differs([](auto& other) { other.snr_dB = 3; }));
    }

    // More than are read one by one: which way is taken makes no difference to what is found.
    void ofManyTheLatestAreFound()
    {
        constexpr int ROWS = 42000;
        constexpr int LIMIT = 40;
        std::vector<ArchiveRecord> records;
        for (int row = 0; row < ROWS; ++row) {
            // A piece of what was heard first is archived last.
            const int second = (row + 1000) % ROWS;
            ArchiveRecord record = recordOf(QString("CQ TEST TU TNX N%1").arg(row), second,
                                            7000000 + 1000 * (row % 3));
            record.transmission.receiver = row % 3000 == 7 ? "rare" : "usual";
            record.transmission.decoder = row < 20500 ? "Morse" : "Baudot";
            record.station = row % 4000 == 9 ? "south" : "north";
            record.key = QString::number(row);
            records.push_back(record);
        }
        QVERIFY2(m_archive->add(records), qPrintable(m_archive->error()));

        struct Time
        {
            std::optional<qint64> since_us;
            std::optional<qint64> until_us;
        };
        const auto at = [](int second) { return std::optional<qint64>(second * SECOND_us); };
        const Time times[] = {{},
                              {at(100), {}},
                              {{}, at(41000)},
                              {{}, at(30000)},
                              {at(500), at(25000)},
                              {at(20000), at(20100)},
                              {at(990), at(1010)}};
        for (const Time& time : times) {
            // Words that begin with T are too many for the index, those with N1 are not.
            for (const QString word : {"", "CQ", "N7", "t*", "N1*", "CQ T* N1*", "T* X*"}) {
                for (const char* const receiver : {"", "usual", "rare", "none"}) {
                    for (const char* const decoder : {"", "Baudot"}) {
                        ArchiveQuery query;
                        query.since_us = time.since_us;
                        query.until_us = time.until_us;
                        query.receiver = receiver;
                        query.decoder = decoder;
                        if (*receiver == 'u')
                            query.lowest_Hz = 7000500;
                        if (*receiver == 'r')
                            query.station = "north";
                        query.words = word.split(' ');
                        query.limit = LIMIT;
                        QStringList expected;
                        for (int row = ROWS - 1; row >= 0 && expected.size() < LIMIT; --row) {
                            const ArchiveRecord& one = records[std::size_t(row)];
                            const auto& heard = one.transmission;
                            const bool isWanted =
                                (!time.since_us || heard.start_us >= *time.since_us) &&
                                (!time.until_us || heard.start_us < *time.until_us) &&
                                (query.receiver.isEmpty() || heard.receiver == query.receiver) &&
                                (query.decoder.isEmpty() || heard.decoder == query.decoder) &&
                                (query.station.isEmpty() || one.station == query.station) &&
                                (!query.lowest_Hz || *heard.frequency_Hz >= *query.lowest_Hz) &&
                                holds(heard.text, query.words);
                            if (isWanted)
                                expected += heard.text;
                        }
                        const QStringList found = textsOf(m_archive->search(query));
                        QVERIFY2(found == expected,
                                 qPrintable(QString("since %1 until %2 '%3' of '%4' by '%5': %6, "
                                                    "not %7")
                                                .arg(time.since_us.value_or(-1))
                                                .arg(time.until_us.value_or(-1))
                                                .arg(word, QString(receiver), QString(decoder))
                                                .arg(found.join(", ").left(300))
                                                .arg(expected.join(", ").left(300))));
                    }
                }
            }
        }
    }

    // Only files are that old.
    void anArchiveOfTheFirstVersionIsTakenOver()
    {
        const QString old = m_folder.filePath("old.db");
        QString error;
        auto archive = Archive::open(old, error);
        QVERIFY2(archive, qPrintable(error));
        QVERIFY(archive->add({recordOf("BEFORE")}));
        archive.reset();
        {
            QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "first");
            database.setDatabaseName(old);
            QVERIFY(database.open());
            QSqlQuery query(database);
            for (const char* const sql :
                 {"DROP TABLE recordings", "DROP INDEX by_station", "DROP INDEX by_receiver",
                  "DROP INDEX by_decoder", "CREATE INDEX by_stop ON transmissions (stop_us)",
                  "DROP TABLE blocks", "DROP TABLE words_of_rows",
                  "UPDATE transmissions SET station = NULL", "PRAGMA user_version = 1"})
                QVERIFY2(query.exec(sql), sql);
            database.close();
        }
        QSqlDatabase::removeDatabase("first");
        archive = Archive::open(old, error);
        QVERIFY2(archive, qPrintable(error));
        QCOMPARE(textsOf(archive->search({})), QStringList({"BEFORE"}));
        QCOMPARE(textsOf(archive->search(wordsQuery({"BEF*"}))), QStringList({"BEFORE"}));
        QCOMPARE(*archive->hasRecording("none"), false);
        // What had no station is of the station without a name.
        QCOMPARE(*archive->removeBefore(100 * SECOND_us, QString()), 1);
    }

    // On a server, others may have tables in the same database.
    void theDatabaseOfAnotherProgramIsLeftAsItIs()
    {
        const QString other = m_folder.filePath("other.db");
        {
            QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "other");
            database.setDatabaseName(other);
            QVERIFY(database.open());
            QSqlQuery query(database);
            QVERIFY(query.exec("CREATE TABLE transmissions (speaker TEXT)"));
            database.close();
        }
        QSqlDatabase::removeDatabase("other");
        const QByteArray before = contentOf(other);
        QString error;
        QVERIFY(!Archive::open(other, error));
        QCOMPARE(error, other + ": is no archive");
        QCOMPARE(contentOf(other), before);
    }

    void aDamagedArchiveIsNamed()
    {
        const QString damaged = m_folder.filePath("damaged.db");
        writeFile(damaged, QByteArray("SQLite format 3\0", 16) + QByteArray(5000, 'x'));
        QString error;
        QVERIFY(!Archive::open(damaged, error));
        QCOMPARE(error, damaged + ": file is not a database");
    }

    void wordsAreFoundWhole_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("whole, not a part") << QStringList{"DL0XY"} << QStringList{};
        QTest::newRow("in any letter case")
            << QStringList{"dl0xyz"} << QStringList{"DL0XYZ/P TEST", "CQ DE DL0XYZ K"};
        QTest::newRow("beginning")
            << QStringList{"DL0X*"} << QStringList{"DL0XYZ/P TEST", "CQ DE DL0XYZ K"};
        QTest::newRow("all of them")
            << QStringList{"CQ", "DL0XYZ"} << QStringList{"CQ DE DL0XYZ K"};
        QTest::newRow("a word with a stroke is two")
            << QStringList{"DL0XYZ/P"} << QStringList{"DL0XYZ/P TEST"};
        QTest::newRow("another script")
            << QStringList{QString::fromUtf8("привет")} << QStringList{QString::fromUtf8("ПРИВЕТ")};
        QTest::newRow("signs alone narrow nothing")
            << QStringList{"\"'*"}
            << QStringList{QString::fromUtf8("ПРИВЕТ"), "DL0XYZ/P TEST", "CQ DE DL0XYZ K"};
        QTest::newRow("words of the query language are words")
            << QStringList{"AND", "OR"} << QStringList{};
    }

    void wordsAreFoundWhole()
    {
        QFETCH(QStringList, words);
        QFETCH(QStringList, texts);
        QVERIFY(m_archive->add({recordOf("CQ DE DL0XYZ K"), recordOf("DL0XYZ/P TEST"),
                                recordOf(QString::fromUtf8("ПРИВЕТ"))}));
        QCOMPARE(textsOf(m_archive->search(wordsQuery(words))), texts);
        // The same where time leaves few rows, which are compared without the index.
        ArchiveQuery narrow = wordsQuery(words);
        narrow.since_us = 0;
        QCOMPARE(textsOf(m_archive->search(narrow)), texts);
    }

    void timeAndFrequencyNarrow()
    {
        QVERIFY(m_archive->add({recordOf("A", 100, 7000000), recordOf("B", 200, 7040000),
                                recordOf("C", 300, 14000000)}));
        ArchiveQuery query;
        query.since_us = 200 * SECOND_us;
        QCOMPARE(textsOf(m_archive->search(query)), QStringList({"C", "B"}));
        query.until_us = 300 * SECOND_us;
        QCOMPARE(textsOf(m_archive->search(query)), QStringList({"B"}));
        query = {};
        query.lowest_Hz = 7000000;
        query.highest_Hz = 7040000;
        QCOMPARE(textsOf(m_archive->search(query)), QStringList({"B", "A"}));
        query.words = QStringList{"A"};
        QCOMPARE(textsOf(m_archive->search(query)), QStringList({"A"}));
    }

    void whatCameLaterIsFollowed()
    {
        QVERIFY(m_archive->add({recordOf("A"), recordOf("B")}));
        ArchiveQuery query;
        query.after = *m_archive->latest();
        query.isOldestFirst = true;
        QCOMPARE(textsOf(m_archive->search(query)), QStringList());
        QVERIFY(m_archive->add({recordOf("C"), recordOf("D")}));
        QCOMPARE(textsOf(m_archive->search(query)), QStringList({"C", "D"}));
        query.limit = 1;
        QCOMPARE(textsOf(m_archive->search(query)), QStringList({"C"}));
    }

    void whatIsRemovedIsNotFound()
    {
        QVERIFY(m_archive->add({recordOf("OLD ONE", 100), recordOf("NEW ONE", 200)}));
        QCOMPARE(*m_archive->removeBefore(150 * SECOND_us), 1);
        QCOMPARE(textsOf(m_archive->search(wordsQuery({"ONE"}))), QStringList({"NEW ONE"}));
        // Its number is not given again.
        const qint64 before = *m_archive->latest();
        QCOMPARE(*m_archive->removeBefore(1000 * SECOND_us), 1);
        QCOMPARE(*m_archive->latest(), 0);
        QVERIFY(m_archive->add({recordOf("NEXT")}));
        QVERIFY(*m_archive->latest() > before);
    }

    void aStationRemovesItsOwnTheOldestFirst()
    {
        const auto of = [](const QString& station, const QString& text, qint64 start_s) {
            ArchiveRecord record = recordOf(text, start_s);
            record.station = station;
            record.key = text;
            return record;
        };
        QVERIFY(m_archive->add({of("north", "N3", 300), of("south", "S1", 100),
                                of("north", "N1", 100), of("north", "N2", 200), of("", "X", 100)}));
        QCOMPARE(*m_archive->removeBefore(1000 * SECOND_us, QString("north"), 2), 2);
        QCOMPARE(textsOf(m_archive->search({})), QStringList({"X", "S1", "N3"}));
        QCOMPARE(*m_archive->removeBefore(1000 * SECOND_us, QString()), 1);
        QCOMPARE(textsOf(m_archive->search({})), QStringList({"S1", "N3"}));
    }

    void theSizeIsThatOfWhatIsKept()
    {
        std::vector<ArchiveRecord> records;
        for (int i = 0; i < 2000; ++i)
            records.push_back(recordOf(QString("CQ TEST ").repeated(40) + QString::number(i), i));
        const qint64 before = *m_archive->size();
        QVERIFY(m_archive->add(records));
        const qint64 full = *m_archive->size();
        const bool isServer = qEnvironmentVariableIsSet("MORSEHANDLER_TEST_POSTGRESQL");
        QVERIFY(isServer ? full == 0 : full > before + 2000 * 300);
        QCOMPARE(*m_archive->removeBefore(1000 * SECOND_us), 995);
        QVERIFY(isServer ? *m_archive->size() == 0 : *m_archive->size() < full - 900 * 300);
    }

    void twoProcessesWriteOneArchive()
    {
        QString error;
        const std::unique_ptr<Archive> other = Archive::open(path(), error);
        QVERIFY2(other, qPrintable(error));
        QVERIFY(m_archive->add({recordOf("A")}));
        QVERIFY(other->add({recordOf("B"), recordOf("A")}));
        QCOMPARE(textsOf(m_archive->search({})), QStringList({"B", "A"}));
    }

    // A file lets one write at a time.
    void whoSearchesDoesNotWaitForWhoWrites()
    {
        const QString busy = m_folder.filePath("busy.db");
        QString error;
        QVERIFY(Archive::open(busy, error)->add({recordOf("BEFORE")}));
        {
            QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "writer");
            database.setDatabaseName(busy);
            QVERIFY(database.open());
            QSqlQuery query(database);
            QVERIFY(query.exec("BEGIN IMMEDIATE"));
            const auto archive = Archive::open(busy, error);
            QVERIFY2(archive, qPrintable(error));
            QCOMPARE(textsOf(archive->search(wordsQuery({"BEF*"}))), QStringList({"BEFORE"}));
            database.close();
        }
        QSqlDatabase::removeDatabase("writer");
    }

    void whatIsNoArchiveIsRefused()
    {
        QString error;
        QVERIFY(!Archive::open(m_folder.filePath("missing/archive.db"), error));
        QVERIFY(!error.isEmpty());
        const QString text = m_folder.filePath("text.db");
        QFile file(text);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(8192, 'x'));
        file.close();
        error.clear();
        QVERIFY(!Archive::open(text, error));
        QVERIFY(!error.isEmpty());
        QCOMPARE(file.size(), 8192);
    }
};

QTEST_GUILESS_MAIN(tst_Archive)
#include "tst_archive.moc"
