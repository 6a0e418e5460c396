// SPDX-License-Identifier: MIT
// The result document that a Morse handler keeps: transmissions, frames, names, and the signals
// and slots between the handler and its helper.
#include "session/morsehandler.h"
#include "session/tavikresultdatahandler.h"

#include "host/standin/resultreader.h"
#include "support/files.h"
#include "support/morsefixture.h"
#include "support/resultschema.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>
#include <optional>
#include <utility>
#include <vector>

using TavikResultDataXml::ResultDocument;
using TavikResultDataXml::ResultTransmission;

namespace {

constexpr unsigned long long TEN_FIFTEEN_us = 1494584100123456ULL; // 2017-05-12 10:15:00.123456 UTC
constexpr unsigned long long SECOND_us = 1000000;

QDateTime utc(const char* time)
{
    QDateTime result =
        QDateTime::fromString(QLatin1String(time), QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
    result.setTimeSpec(Qt::UTC);
    return result;
}

std::optional<ResultDocument> read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? TavikResultDataXml::readResultDocument(file)
                                          : std::nullopt;
}

struct Documents : MorseFixture
{
    Documents()
    {
        wireFiles(directory.path());
        handler.StartNewMorseSession();
    }

    // Whatever a test has saved is valid.
    ~Documents()
    {
        QStringList paths;
        QDirIterator saved(directory.path(), {"*.xml"}, QDir::Files, QDirIterator::Subdirectories);
        while (saved.hasNext())
            paths += saved.next();
        if (!paths.isEmpty())
            QCOMPARE(schemaErrors(paths), QString());
    }

    void save() { saveDocument->HasChanged(eCHANGE_FORCED, nullptr); }
    QString name() const { return xmlFileName->GetValue(); }
    QStringList files() const
    {
        return QDir(directory.path()).entryList({"*.xml"}, QDir::Files, QDir::Name);
    }

    QTemporaryDir directory;
};

struct Order : IObserver
{
    void Update(Observable* source, TChangeCode code) override
    {
        if (code == eCHANGE_CONTENT)
            sources += source;
    }
    QVector<Observable*> sources;
};

} // namespace

class tst_ResultDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "UTC"); }

    // From the meta-objects

    void metaObjectsHoldTheSlotsAndSignals_data()
    {
        QTest::addColumn<bool>("ofHandler");
        QTest::addColumn<QByteArray>("signature");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("parameter");
        QTest::newRow("name slot") << true << QByteArray("SetXmlFileName(QString)")
                                   << int(QMetaMethod::Slot) << QByteArray("strXmlFileName");
        QTest::newRow("settings slot") << true << QByteArray("GetXmlTunerDemodulatorSettings()")
                                       << int(QMetaMethod::Slot) << QByteArray();
        QTest::newRow("name signal") << false << QByteArray("SetFilename(QString)")
                                     << int(QMetaMethod::Signal) << QByteArray("sFilename");
        QTest::newRow("settings signal") << false << QByteArray("GetXmlTunerDemodulatorSettings()")
                                         << int(QMetaMethod::Signal) << QByteArray();
    }

    void metaObjectsHoldTheSlotsAndSignals()
    {
        QFETCH(bool, ofHandler);
        QFETCH(QByteArray, signature);
        QFETCH(int, type);
        QFETCH(QByteArray, parameter);
        const QMetaObject& meta =
            ofHandler ? MorseHandler::staticMetaObject : TavikResultDataHandler::staticMetaObject;
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
        QCOMPARE(meta.propertyCount() - meta.propertyOffset(), 0);
        QCOMPARE(meta.enumeratorCount() - meta.enumeratorOffset(), 0);
        const int index = meta.indexOfMethod(signature.constData());
        QVERIFY(index >= meta.methodOffset());
        const QMetaMethod method = meta.method(index);
        QCOMPARE(int(method.methodType()), type);
        QCOMPARE(int(method.access()), int(QMetaMethod::Protected));
        const QList<QByteArray> expected =
            parameter.isEmpty() ? QList<QByteArray>() : QList<QByteArray>{parameter};
        QCOMPARE(method.parameterNames(), expected);
    }

    void metacastAnswersTheOwnNameAndTheObserverPart()
    {
        MorseHandler handler;
        QCOMPARE(handler.qt_metacast("MorseHandler"), static_cast<void*>(&handler));
        QCOMPARE(handler.qt_metacast("IObserver"),
                 static_cast<void*>(static_cast<IObserver*>(&handler)));
        QCOMPARE(handler.qt_metacast("QObject"),
                 static_cast<void*>(static_cast<QObject*>(&handler)));
        QCOMPARE(handler.qt_metacast("Observable"), nullptr);
        QCOMPARE(handler.qt_metacast(nullptr), nullptr);
        TavikResultDataHandler results(nullptr, QStringLiteral("TAVIK"));
        QCOMPARE(results.qt_metacast("TavikResultDataHandler"), static_cast<void*>(&results));
        QCOMPARE(results.qt_metacast("QObject"),
                 static_cast<void*>(static_cast<QObject*>(&results)));
        QCOMPARE(results.qt_metacast("MorseHandler"), nullptr);
    }

    void theHelperIsAChildOfTheHandler()
    {
        MorseHandler handler;
        QCOMPARE(handler.children().size(), 1);
        QCOMPARE(handler.children().at(0)->metaObject()->className(), "TavikResultDataHandler");
    }

    // Transmissions

    void theFirstTimeStampOpensATransmission()
    {
        Documents host;
        QCOMPARE(host.name(), QString());
        TextLog names(host.xmlFileName);
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        QCOMPARE(names.texts.size(), 1);
        QVERIFY(host.settingsRequest->GetValue());
        const QRegularExpression pattern(QRegularExpression::anchoredPattern(
            QRegularExpression::escape(host.directory.path()) +
            QStringLiteral("/TavikResultData_\\d{4}_\\d\\d_\\d\\d__\\d\\d_\\d\\d_\\d\\d\\.xml")));
        QVERIFY2(pattern.match(host.name()).hasMatch(), qPrintable(host.name()));
        QVERIFY(host.files().isEmpty());
        host.save();
        const auto document = read(host.name());
        QVERIFY(document);
        QCOMPARE(document->transmissions.size(), std::size_t(1));
        const ResultTransmission& transmission = document->transmissions.front();
        QCOMPARE(transmission.startTime, utc("2017-05-12 10:15:00.123"));
        QCOMPARE(transmission.blocks.size(), std::size_t(1));
        QCOMPARE(transmission.blocks.front().channel, -1);
        QCOMPARE(transmission.blocks.front().format, 0);
        QCOMPARE(transmission.blocks.front().flags, 0);
        QVERIFY(transmission.blocks.front().frames.empty());
    }

    void theNameIsPublishedBeforeTheSettingsAreAskedFor()
    {
        Documents host;
        Order order;
        host.xmlFileName->AddObserver(&order);
        host.settingsRequest->AddObserver(&order);
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        QCOMPARE(order.sources, (QVector<Observable*>{host.xmlFileName, host.settingsRequest}));
        host.xmlFileName->DeleteObserver(&order);
        host.settingsRequest->DeleteObserver(&order);
    }

    void theStampOfADocumentIsLocalTime()
    {
        qputenv("TZ", "Asia/Kolkata");
        Documents host;
        const QDateTime before = QDateTime::currentDateTimeUtc();
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        const QString stamp = QFileInfo(host.name()).completeBaseName().mid(16);
        qputenv("TZ", "UTC");
        QDateTime time = QDateTime::fromString(stamp, QStringLiteral("yyyy_MM_dd__hh_mm_ss"));
        time.setTimeSpec(Qt::UTC);
        const qint64 ahead_s = before.secsTo(time);
        QVERIFY2(ahead_s >= 5 * 3600 + 1799 && ahead_s <= 5 * 3600 + 1860, qPrintable(stamp));
    }

    void aTransmissionBegunWhileAnotherWasAnnouncedHasOneBlock()
    {
        Documents host;
        TextLog names(host.xmlFileName);
        bool isFirst = true;
        names.onText = [&](const QString&) {
            if (!std::exchange(isFirst, false))
                return;
            host.save();
            host.handler.SetTimestamp(TEN_FIFTEEN_us + SECOND_us);
        };
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.save();
        std::vector<std::size_t> blocks;
        for (const QString& name : host.files()) {
            const auto document = read(host.directory.filePath(name));
            QVERIFY(document);
            for (const auto& transmission : document->transmissions)
                blocks.push_back(transmission.blocks.size());
        }
        QCOMPARE(blocks, (std::vector<std::size_t>{0, 1}));
    }

    void aRequestThatStandsIsAnnouncedAgain()
    {
        Documents host;
        host.settingsRequest->SetValue(true, nullptr);
        struct Counter : IObserver
        {
            void Update(Observable*, TChangeCode code) override
            {
                if (code == eCHANGE_CONTENT)
                    ++count;
            }
            int count = 0;
        } counter;
        host.settingsRequest->AddObserver(&counter);
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        QCOMPARE(counter.count, 1);
        host.settingsRequest->DeleteObserver(&counter);
    }

    void laterTimeStampsMoveTheStopTimeOnly()
    {
        Documents host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        const QString name = host.name();
        host.settingsRequest->SetValue(false, nullptr);
        TextLog names(host.xmlFileName);
        host.handler.SetTimestamp(TEN_FIFTEEN_us + SECOND_us);
        host.handler.SetTimestamp(TEN_FIFTEEN_us + 2 * SECOND_us);
        QVERIFY(!host.settingsRequest->GetValue());
        QVERIFY(names.texts.isEmpty());
        host.save();
        const auto document = read(name);
        QVERIFY(document);
        QCOMPARE(document->transmissions.size(), std::size_t(1));
        QCOMPARE(document->transmissions.front().startTime, utc("2017-05-12 10:15:00.123"));
        QCOMPARE(document->transmissions.front().stopTime, utc("2017-05-12 10:15:02.123"));
    }

    void laterTimeStampsMakeNoName()
    {
        Documents host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        const QString name = host.name();
        // Within one second a second name would be equal, but for its folder.
        host.handler.SetSaveDirectoryPath(host.directory.filePath("other"), QString(), QString(),
                                          MorseValues::path("XmlFileName"));
        host.handler.SetTimestamp(TEN_FIFTEEN_us + SECOND_us);
        QCOMPARE(host.name(), name);
        host.save();
        QVERIFY(QFile::exists(name));
    }

    void timeStampsAreWholeSecondsInThirtyTwoBits_data()
    {
        QTest::addColumn<quint64>("timestamp_us");
        QTest::addColumn<QDateTime>("time");
        QTest::newRow("zero") << quint64(0) << utc("1970-01-01 00:00:00.000");
        QTest::newRow("below a millisecond") << quint64(999) << utc("1970-01-01 00:00:00.000");
        QTest::newRow("last second") << quint64(4294967295999999) << utc("2106-02-07 06:28:15.999");
        QTest::newRow("one more") << quint64(4294967296000000) << utc("1970-01-01 00:00:00.000");
    }

    void timeStampsAreWholeSecondsInThirtyTwoBits()
    {
        QFETCH(quint64, timestamp_us);
        QFETCH(QDateTime, time);
        Documents host;
        host.handler.SetTimestamp(timestamp_us);
        host.save();
        const auto document = read(host.name());
        QVERIFY(document);
        QCOMPARE(document->transmissions.front().startTime, time);
    }

    // Frames

    void everyDecodedTextIsAFrameWithTheLatestTime()
    {
        Documents host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.send(".-c......c");
        host.handler.SetTimestamp(TEN_FIFTEEN_us + SECOND_us);
        host.send("-.w......wn");
        host.save();
        const auto document = read(host.name());
        QVERIFY(document);
        const auto& frames = document->transmissions.front().blocks.front().frames;
        QStringList texts;
        QVector<quint64> times;
        for (const auto& frame : frames) {
            texts += frame.text;
            times += frame.timestamp_us;
        }
        // A code without a character gives no frame at a character gap, and a blank at a word gap.
        QCOMPARE(texts, QStringList({"A", "N ", " ", "\n"}));
        const quint64 later = TEN_FIFTEEN_us + SECOND_us;
        QCOMPARE(times, QVector<quint64>({TEN_FIFTEEN_us, later, later, later}));
    }

    void aLineEndIsAFrameEvenBeforeTwoTimeStamps()
    {
        Documents host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.send("n");
        host.save();
        const auto document = read(host.name());
        QVERIFY(document);
        const auto& frames = document->transmissions.front().blocks.front().frames;
        QCOMPARE(frames.size(), std::size_t(1));
        QCOMPARE(frames.front().text, QStringLiteral("\n"));
    }

    void textBeforeTheFirstTimeStampIsSkipped()
    {
        Documents host;
        host.send(".c");
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.send("-c");
        host.save();
        host.send("..c");
        host.handler.SetTimestamp(TEN_FIFTEEN_us + SECOND_us);
        host.send("--c");
        host.save();
        const QStringList files = host.files();
        QString all;
        for (const QString& file : files) {
            const auto document = read(host.directory.filePath(file));
            QVERIFY(document);
            for (const auto& transmission : document->transmissions) {
                for (const auto& frame : transmission.blocks.front().frames)
                    all += frame.text;
            }
        }
        QCOMPARE(all, QStringLiteral("TM"));
    }

    void aWordIsInTheDocumentBeforeItIsPublished()
    {
        Documents host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        const QString name = host.name();
        TextLog log(host.text);
        log.onText = [&](const QString&) { host.save(); };
        host.send(".w");
        const auto document = read(name);
        QVERIFY(document);
        const auto& frames = document->transmissions.front().blocks.front().frames;
        QCOMPARE(frames.size(), std::size_t(1));
        QCOMPARE(frames.front().text, QStringLiteral("E "));
    }

    // Saving

    void aSaveClosesTheTransmissionAndTheNextTimeStampOpensAnother()
    {
        Documents host;
        for (int i = 0; i < 3; ++i) {
            host.settingsRequest->SetValue(false, nullptr);
            host.handler.SetTimestamp(TEN_FIFTEEN_us + unsigned(i) * SECOND_us);
            QVERIFY(host.settingsRequest->GetValue());
            host.send(".-c");
            host.save();
        }
        // Names are a second apart; within one second they are equal, and nothing is lost.
        int transmissions = 0;
        for (const QString& file : host.files()) {
            const auto document = read(host.directory.filePath(file));
            QVERIFY(document);
            transmissions += int(document->transmissions.size());
        }
        QCOMPARE(transmissions, 3);
    }

    void eachTransmissionNamesItsDocumentAgain()
    {
        Documents host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        const QString first = host.name();
        host.save();
        const QString folder = host.directory.filePath("other");
        QVERIFY(QDir().mkdir(folder));
        host.handler.SetSaveDirectoryPath(folder, QString(), QString(),
                                          MorseValues::path("XmlFileName"));
        QCOMPARE(host.name(), first);
        host.handler.SetTimestamp(TEN_FIFTEEN_us + SECOND_us);
        QVERIFY2(host.name().startsWith(folder + "/TavikResultData_"), qPrintable(host.name()));
        host.save();
        QVERIFY(QFile::exists(first) && QFile::exists(host.name()));
    }

    void aSaveWithoutATransmissionWritesNothing()
    {
        Documents host;
        host.save();
        QVERIFY(host.files().isEmpty());
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.save();
        QCOMPARE(host.files().size(), 1);
        host.save();
        QCOMPARE(host.files().size(), 1);
    }

    void aSaveWithoutATransmissionReachesTheDocument()
    {
        Documents host;
        const QString folder = host.directory.filePath("later");
        host.handler.SetSaveDirectoryPath(folder, QString(), QString(),
                                          MorseValues::path("XmlFileName"));
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.save(); // cannot be written
        QVERIFY(QDir().mkdir(folder));
        host.save();
        QVERIFY(QFile::exists(host.name()));
    }

    void onlyTheForcedNotificationSaves()
    {
        Documents host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.saveDocument->SetValue(false, nullptr);
        host.saveDocument->SetValue(true, nullptr);
        host.saveDocument->HasChanged(eCHANGE_CONTENT, nullptr);
        QVERIFY(host.files().isEmpty());
    }

    void aSaveFromTheSettingsRequestClosesTheNewTransmission()
    {
        Documents host;
        struct Saver : IObserver
        {
            void Update(Observable*, TChangeCode code) override
            {
                if (code == eCHANGE_CONTENT)
                    host->save();
            }
            Documents* host = nullptr;
        } saver;
        saver.host = &host;
        host.settingsRequest->AddObserver(&saver);
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.settingsRequest->DeleteObserver(&saver);
        host.send(".c");
        const auto document = read(host.name());
        QVERIFY(document);
        QCOMPARE(document->transmissions.size(), std::size_t(1));
        QVERIFY(document->transmissions.front().blocks.empty());
    }

    void aTimeStampFromTheSettingsRequestIsTheSecondOne()
    {
        Documents host;
        struct Stamper : IObserver
        {
            void Update(Observable*, TChangeCode code) override
            {
                if (code == eCHANGE_CONTENT)
                    host->handler.SetTimestamp(TEN_FIFTEEN_us + SECOND_us);
            }
            Documents* host = nullptr;
        } stamper;
        stamper.host = &host;
        host.settingsRequest->AddObserver(&stamper);
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.settingsRequest->DeleteObserver(&stamper);
        host.save();
        const auto document = read(host.name());
        QVERIFY(document);
        QCOMPARE(document->transmissions.front().stopTime, utc("2017-05-12 10:15:01.123"));
        QCOMPARE(document->transmissions.front().blocks.size(), std::size_t(1));
    }

    void aMissingFolderKeepsTheDocumentUntilItIsThere()
    {
        Documents host;
        const QString folder = host.directory.filePath("later");
        host.handler.SetSaveDirectoryPath(folder, QString(), QString(),
                                          MorseValues::path("XmlFileName"));
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.send(".-c");
        host.save();
        QVERIFY(QDir().mkdir(folder));
        host.handler.SetTimestamp(TEN_FIFTEEN_us + SECOND_us);
        host.send("-c");
        host.save();
        QString all;
        for (const QString& file : QDir(folder).entryList({"*.xml"}, QDir::Files, QDir::Name)) {
            const auto document = read(folder + QLatin1Char('/') + file);
            QVERIFY(document);
            for (const auto& transmission : document->transmissions)
                all += transmission.blocks.front().frames.front().text;
        }
        QCOMPARE(all, QStringLiteral("AT"));
    }

    // The receiver's settings

    void settingsAreAcceptedWheneverTheyCome()
    {
        Documents host;
        host.settings->SetValue(QStringLiteral("<Settings/>"), nullptr);
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.settings->SetValue(QStringLiteral("<Settings>1</Settings>"), nullptr);
        host.frequency->SetValue(7025000, nullptr);
        host.handler.SetFrequency_ValuePath(MorseValues::path("Frequency"));
        host.frequency->SetValue(7030000, nullptr);
        host.save();
        // The document has no place for them, and none of it is disturbed.
        const QByteArray document = contentOf(host.name());
        QVERIFY(document.startsWith("<?xml"));
        QVERIFY(!document.contains("Settings"));
    }

    void anUnattachedRequestIsNoError()
    {
        MorseFixture host;
        QTemporaryDir dir;
        host.handler.SetSaveDirectoryPath(dir.path(), QString(), QString(), QString());
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.handler.SetMorseXmlSaveToFile_ValuePath(MorseValues::path("SaveDocument"));
        host.saveDocument->HasChanged(eCHANGE_FORCED, nullptr);
        QCOMPARE(QDir(dir.path()).entryList({"*.xml"}).size(), 1);
    }
};

QTEST_GUILESS_MAIN(tst_ResultDocument)
#include "tst_resultdocument.moc"
