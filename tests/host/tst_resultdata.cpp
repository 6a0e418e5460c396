// SPDX-License-Identifier: MIT
// Result documents on disk: what is in them, and that nothing is lost on the way.
#include "host/resultdata.h"
#include "host/standin/resultpolicy.h"
#include "host/standin/resultreader.h"
#include "host/standin/tracelog.h"
#include "support/fewdescriptors.h"
#include "support/files.h"
#include "support/fulldisk.h"
#include "support/resultschema.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

using namespace TavikResultDataXml;

namespace {

constexpr unsigned long long STAMP_us = 1494584100123456; ///< 2017-05-12 10:15:00.123456 UTC

const QDateTime START(QDate(2017, 5, 12), QTime(10, 15, 0, 123), Qt::UTC);
const QDateTime STOP(QDate(2017, 5, 12), QTime(10, 15, 4), Qt::UTC);

void appendFrame(DataBlock* block, const QString& text, unsigned long long timestamp_us = STAMP_us)
{
    block->BeginFrame();
    block->SetTimeStamp(timestamp_us);
    block->AppendData(text);
    block->EndFrame();
}

/// A new transmission of the document, with one frame in one block.
DataBlock* addTransmission(TavikResultData& document, const QString& text)
{
    auto* const transmission = new Transmission;
    transmission->SetStartTime(START);
    document.AddTransmission(transmission);
    auto* const block = new DataBlock(-1, 0, 0);
    transmission->AddDataBlock(block);
    appendFrame(block, text);
    transmission->SetStopTime(STOP);
    return block;
}

ResultDocument readFile(const QString& path)
{
    QFile file(path);
    QString error;
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const std::optional<ResultDocument> document = readResultDocument(file, &error);
    if (!document)
        qWarning("%s: %s", qPrintable(path), qPrintable(error));
    return document.value_or(ResultDocument());
}

/// The first text of every transmission.
QStringList textsOf(const QString& path)
{
    QStringList texts;
    for (const ResultTransmission& transmission : readFile(path).transmissions)
        texts.append(transmission.blocks.at(0).frames.at(0).text);
    return texts;
}

} // namespace

class tst_ResultData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    // Whatever a test leaves under a name of ours is a valid document, and there is no litter.
    void cleanup()
    {
        const QDir dir(m_dir->path());
        const QStringList documents = dir.entryList({QStringLiteral("r*.xml")}, QDir::Files);
        QStringList paths;
        for (const QString& name : documents)
            paths.append(dir.filePath(name));
        if (!paths.isEmpty())
            QCOMPARE(schemaErrors(paths), QString());
        QCOMPARE(dir.entryList({QStringLiteral("*.lock"), QStringLiteral("*.xml.*")}, QDir::Files),
                 QStringList());
        m_dir.reset();
    }

    // Content

    void aDocumentIsTheseBytes()
    {
        TavikResultData document;
        DataBlock* const block = addTransmission(document, QStringLiteral("C"));
        appendFrame(block, QStringLiteral("Q "), STAMP_us + 1);
        auto* const bare = new Transmission;
        document.AddTransmission(bare);
        bare->AddDataBlock(new DataBlock(3, 1, 7));
        document.AddTransmission(new Transmission);
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(contentOf(path("r.xml")),
                 QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                            "<TavikResultData Version=\"1.0\">\n"
                            "  <Transmission StartTime=\"2017-05-12T10:15:00,123Z\""
                            " StopTime=\"2017-05-12T10:15:04,000Z\">\n"
                            "    <DataBlock Channel=\"-1\" Format=\"0\" Flags=\"0\">\n"
                            "      <Frame Time=\"2017-05-12T10:15:00,123456Z\">C</Frame>\n"
                            "      <Frame Time=\"2017-05-12T10:15:00,123457Z\">Q </Frame>\n"
                            "    </DataBlock>\n"
                            "  </Transmission>\n"
                            "  <Transmission>\n"
                            "    <DataBlock Channel=\"3\" Format=\"1\" Flags=\"7\">\n"
                            "    </DataBlock>\n"
                            "  </Transmission>\n"
                            "  <Transmission>\n"
                            "  </Transmission>\n"
                            "</TavikResultData>\n"));
    }

    void aDocumentIsReadBackAsItWas()
    {
        TavikResultData document;
        DataBlock* const block = addTransmission(document, QStringLiteral("a"));
        appendFrame(block, QString(), STAMP_us + 999999);
        appendFrame(block, QStringLiteral("\n"), 0);
        QVERIFY(document.SaveFile(path("r.xml")));
        const ResultDocument read = readFile(path("r.xml"));
        QCOMPARE(read.version, QStringLiteral("1.0"));
        QCOMPARE(read.transmissions.size(), std::size_t(1));
        QCOMPARE(read.transmissions[0].startTime, START);
        QCOMPARE(read.transmissions[0].stopTime, STOP);
        QCOMPARE(read.transmissions[0].blocks.size(), std::size_t(1));
        const ResultBlock& readBlock = read.transmissions[0].blocks[0];
        QCOMPARE(readBlock.channel, -1);
        QCOMPARE(readBlock.format, 0);
        QCOMPARE(readBlock.flags, 0);
        QCOMPARE(readBlock.frames.size(), std::size_t(3));
        QCOMPARE(readBlock.frames[0].timestamp_us, STAMP_us);
        QCOMPARE(readBlock.frames[0].text, QStringLiteral("a"));
        QCOMPARE(readBlock.frames[1].timestamp_us, STAMP_us + 999999);
        QCOMPARE(readBlock.frames[1].text, QString());
        QCOMPARE(readBlock.frames[2].timestamp_us, 0ULL);
        QCOMPARE(readBlock.frames[2].text, QStringLiteral("\n"));
    }

    void textComesBackUnchangedOrVisiblyReplaced_data()
    {
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("read");
        const auto same = [](const char* name, const QString& text) {
            QTest::newRow(name) << text << text;
        };
        same("markup", QStringLiteral("<a href=\"x\">&amp;'</a>]]>"));
        same("white space only", QStringLiteral("  \t \n "));
        same("carriage returns", QStringLiteral("\r\n\r\r\n"));
        same("carriage return alone", QStringLiteral("\r"));
        same("Greek and Hebrew", QStringLiteral("\u0391\u05d0"));
        same("next line and line separator", QStringLiteral("\u0085\u2028"));
        same("outside the basic plane", QString::fromUcs4(U"\U0001F4FB\U0010FFFD"));
        same("ends of the planes", QStringLiteral("\ud7ff\ue000\ufffd"));
        const QString replaced(QChar::ReplacementCharacter);
        QTest::newRow("NUL") << QString(QChar(QChar::Null)) << replaced;
        QTest::newRow("controls") << QStringLiteral("a\x01\x0b\x0c\x1f") + QLatin1Char('z')
                                  << QLatin1Char('a') + replaced.repeated(4) + QLatin1Char('z');
        QTest::newRow("high surrogate alone") << QString(QChar(0xd83d)) << replaced;
        QTest::newRow("low surrogate alone")
            << QString(QChar(0xdc00)) + QLatin1Char('x') << replaced + QLatin1Char('x');
        QTest::newRow("surrogates in the wrong order")
            << QString(QChar(0xdc00)) + QChar(0xd83d) << replaced + replaced;
        same("first outside the basic plane", QString::fromUcs4(U"\U00010000"));
        QTest::newRow("lowest surrogate alone") << QString(QChar(0xd800)) << replaced;
        QTest::newRow("no characters")
            << QString(QChar(0xfffe)) + QChar(0xffff) << replaced + replaced;
    }

    void textComesBackUnchangedOrVisiblyReplaced()
    {
        QFETCH(QString, written);
        QFETCH(QString, read);
        TavikResultData document;
        addTransmission(document, written);
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("r.xml")), QStringList{read});
    }

    void everyCharacterOfTheBasicPlaneIsWritten()
    {
        QString written;
        QString expected;
        for (ushort unit = 0; unit < 0xffff; ++unit) {
            if (unit >= 0xd800 && unit < 0xe000)
                continue;
            written.append(QChar(unit));
            const bool isPossible =
                (unit >= 0x20 && unit <= 0xfffd) || unit == '\t' || unit == '\n' || unit == '\r';
            expected.append(isPossible ? QChar(unit) : QChar(QChar::ReplacementCharacter));
        }
        TavikResultData document;
        addTransmission(document, written);
        QVERIFY(document.SaveFile(path("r.xml")));
        QVERIFY(textsOf(path("r.xml")) == QStringList{expected});
    }

    void aPairOfSurrogatesMayArriveInTwoPieces()
    {
        const QString radio = QString::fromUcs4(U"\U0001F4FB");
        TavikResultData document;
        DataBlock* const block = addTransmission(document, QStringLiteral("x"));
        block->BeginFrame();
        block->AppendData(radio.left(1));
        block->AppendData(radio.mid(1));
        block->EndFrame();
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(readFile(path("r.xml")).transmissions[0].blocks[0].frames[1].text, radio);
    }

    void aPairOfSurrogatesInTwoFramesIsTwoHalves()
    {
        const QString radio = QString::fromUcs4(U"\U0001F4FB");
        TavikResultData document;
        DataBlock* const block = addTransmission(document, radio.left(1));
        appendFrame(block, radio.mid(1));
        QVERIFY(document.SaveFile(path("r.xml")));
        const auto frames = readFile(path("r.xml")).transmissions[0].blocks[0].frames;
        QCOMPARE(frames[0].text, QStringLiteral("\ufffd"));
        QCOMPARE(frames[1].text, QStringLiteral("\ufffd"));
    }

    void outsideAFrameTheSettersDoNothing()
    {
        TavikResultData document;
        DataBlock* const block = addTransmission(document, QStringLiteral("x"));
        block->SetTimeStamp(1);
        block->AppendData(QStringLiteral("lost"));
        block->EndFrame();
        QVERIFY(document.SaveFile(path("r.xml")));
        const ResultDocument read = readFile(path("r.xml"));
        QCOMPARE(read.transmissions[0].blocks[0].frames.size(), std::size_t(1));
        QCOMPARE(read.transmissions[0].blocks[0].frames[0].text, QStringLiteral("x"));
        QCOMPARE(read.transmissions[0].blocks[0].frames[0].timestamp_us, STAMP_us);
    }

    void aFrameThatIsNotEndedIsSavedAsItStands()
    {
        TavikResultData document;
        DataBlock* const block = addTransmission(document, QStringLiteral("x"));
        block->BeginFrame();
        block->AppendData(QStringLiteral("a"));
        block->BeginFrame();
        block->AppendData(QStringLiteral("b"));
        QVERIFY(document.SaveFile(path("r.xml")));
        const auto frames = readFile(path("r.xml")).transmissions[0].blocks[0].frames;
        QCOMPARE(frames.size(), std::size_t(3));
        QCOMPARE(frames[1].text, QStringLiteral("a"));
        QCOMPARE(frames[2].text, QStringLiteral("b"));
        QCOMPARE(frames[2].timestamp_us, 0ULL);
    }

    void timesAreWrittenInUtc()
    {
        TavikResultData document;
        auto* const transmission = new Transmission;
        document.AddTransmission(transmission);
        transmission->SetStartTime(
            QDateTime(QDate(2017, 5, 12), QTime(12, 15, 0, 123), Qt::OffsetFromUTC, 2 * 3600));
        transmission->SetStopTime(QDateTime());
        QVERIFY(document.SaveFile(path("r.xml")));
        const ResultDocument read = readFile(path("r.xml"));
        QCOMPARE(read.transmissions[0].startTime, START);
        QVERIFY(!read.transmissions[0].stopTime.isValid());
    }

    void anyTimeStampIsKept()
    {
        TavikResultData document;
        DataBlock* const block = addTransmission(document, QStringLiteral("x"));
        const QVector<unsigned long long> stamps{1, 999999, 1000000, 4294967296000001, ~0ULL};
        for (const unsigned long long stamp_us : stamps)
            appendFrame(block, QStringLiteral("y"), stamp_us);
        QVERIFY(document.SaveFile(path("r.xml")));
        const auto frames = readFile(path("r.xml")).transmissions[0].blocks[0].frames;
        QCOMPARE(frames.size(), static_cast<std::size_t>(stamps.size()) + 1);
        for (int i = 0; i < stamps.size(); ++i)
            QCOMPARE(frames[static_cast<std::size_t>(i) + 1].timestamp_us, stamps[i]);
    }

    void whatWasAddedOnceIsNotAddedAgain()
    {
        TavikResultData document;
        TavikResultData other;
        auto* const transmission = new Transmission;
        document.AddTransmission(transmission);
        document.AddTransmission(transmission);
        other.AddTransmission(transmission);
        document.AddTransmission(nullptr);
        auto* const block = new DataBlock(-1, 0, 0);
        transmission->AddDataBlock(block);
        transmission->AddDataBlock(block);
        transmission->AddDataBlock(nullptr);
        auto* const second = new Transmission;
        document.AddTransmission(second);
        second->AddDataBlock(block);
        QVERIFY(document.SaveFile(path("r.xml")));
        QVERIFY(other.SaveFile(path("r_other.xml")));
        const ResultDocument read = readFile(path("r.xml"));
        QCOMPARE(read.transmissions.size(), std::size_t(2));
        QCOMPARE(read.transmissions[0].blocks.size(), std::size_t(1));
        QCOMPARE(read.transmissions[1].blocks.size(), std::size_t(0));
        QVERIFY(!QFile::exists(path("r_other.xml")));
    }

    void whatIsNeverAddedIsTheCallers()
    {
        const auto transmission = std::make_unique<Transmission>();
        transmission->AddDataBlock(new DataBlock(-1, 0, 0)); // the sanitizers count
        const DataBlock block(-1, 0, 0);
    }

    // Saving

    void aDocumentWithoutTransmissionsWritesNoFile()
    {
        TavikResultData document;
        QVERIFY(document.SaveFile(path("r.xml")));
        QVERIFY(document.SaveFile(QString()));
        QCOMPARE(files(), QStringList());
    }

    void afterAResetTheNextSaveHoldsOnlyWhatIsNew()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("first"));
        QVERIFY(document.SaveFile(path("r1.xml")));
        document.Reset();
        QVERIFY(document.SaveFile(path("r2.xml")));
        addTransmission(document, QStringLiteral("second"));
        QVERIFY(document.SaveFile(path("r3.xml")));
        QCOMPARE(files(), (QStringList{QStringLiteral("r1.xml"), QStringLiteral("r3.xml")}));
        QCOMPARE(textsOf(path("r1.xml")), QStringList{QStringLiteral("first")});
        QCOMPARE(textsOf(path("r3.xml")), QStringList{QStringLiteral("second")});
    }

    void aNameUsedTwiceGetsTheNewTransmissionsAdded()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("first"));
        QVERIFY(document.SaveFile(path("r.xml")));
        document.Reset();
        addTransmission(document, QStringLiteral("second"));
        QVERIFY(document.SaveFile(path("r.xml")));
        document.Reset();
        TavikResultData other;
        addTransmission(other, QStringLiteral("third"));
        QVERIFY(other.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("r.xml")),
                 (QStringList{QStringLiteral("first"), QStringLiteral("second"),
                              QStringLiteral("third")}));
        QCOMPARE(files(), QStringList{QStringLiteral("r.xml")});

        TavikResultData atOnce;
        addTransmission(atOnce, QStringLiteral("first"));
        addTransmission(atOnce, QStringLiteral("second"));
        addTransmission(atOnce, QStringLiteral("third"));
        QVERIFY(atOnce.SaveFile(path("r_at_once.xml")));
        QCOMPARE(contentOf(path("r.xml")), contentOf(path("r_at_once.xml")));
    }

    void savingAgainAddsOnlyWhatIsNewOrChanged()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("first"));
        QVERIFY(document.SaveFile(path("r.xml")));
        QVERIFY(document.SaveFile(path("r.xml")));
        QVERIFY(document.SaveFile(QString()));
        DataBlock* const block = addTransmission(document, QStringLiteral("second"));
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("r.xml")),
                 (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
        appendFrame(block, QStringLiteral("more"));
        QVERIFY(document.SaveFile(path("r.xml")));
        const ResultDocument read = readFile(path("r.xml"));
        QCOMPARE(read.transmissions.size(), std::size_t(3));
        QCOMPARE(read.transmissions[2].blocks[0].frames.size(), std::size_t(2));
        block->BeginFrame(); // without a text
        block->SetTimeStamp(STAMP_us);
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("r.xml")).size(), 4);
        QVERIFY(document.SaveFile(path("r2.xml"))); // another file has nothing yet
        QCOMPARE(textsOf(path("r2.xml")),
                 (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
    }

    void everyChangeOfATransmissionIsSaved()
    {
        TavikResultData document;
        auto* const transmission = new Transmission;
        document.AddTransmission(transmission);
        QVERIFY(document.SaveFile(path("r.xml")));
        const auto saved = [&] {
            document.SaveFile(path("r.xml"));
            return readFile(path("r.xml")).transmissions;
        };
        QCOMPARE(saved().size(), std::size_t(1));
        transmission->SetStartTime(START);
        QCOMPARE(saved().back().startTime, START);
        transmission->SetStopTime(STOP);
        QCOMPARE(saved().back().stopTime, STOP);
        transmission->AddDataBlock(new DataBlock(1, 0, 0));
        QCOMPARE(saved().back().blocks.size(), std::size_t(1));
        auto* const block = new DataBlock(2, 0, 0);
        transmission->AddDataBlock(block);
        block->BeginFrame();
        QCOMPARE(saved().back().blocks[1].frames.size(), std::size_t(1));
        block->SetTimeStamp(STAMP_us);
        block->AppendData(QStringLiteral("two changes"));
        QCOMPARE(saved().back().blocks[1].frames[0].text, QStringLiteral("two changes"));
        QCOMPARE(saved().size(), std::size_t(6));
    }

    void aBareNameCountsFromTheWorkDirectory()
    {
        TavikResultData document;
        document.SetWorkDir(m_dir->path());
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(document.SaveFile(QStringLiteral("r.xml")));
        QVERIFY(document.SaveFile(path("r_full.xml")));
        QCOMPARE(files(), (QStringList{QStringLiteral("r.xml"), QStringLiteral("r_full.xml")}));
    }

    void aFolderMayBeSpelledWithBackslashes()
    {
        TavikResultData document;
        QDir(m_dir->path()).mkdir(QStringLiteral("Temp"));
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(document.SaveFile(m_dir->path() + QStringLiteral("\\Temp/r.xml")));
        QVERIFY(QFile::exists(path("Temp/r.xml")));
    }

    // Files that are there already

    void aFileThatIsNoResultDocumentIsLeftAlone_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray start = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("notes\n");
        QTest::newRow("another document") << start + "<html></html>\n";
        QTest::newRow("another version")
            << start + "<TavikResultData Version=\"2.0\"></TavikResultData>\n";
        QTest::newRow("cut off") << start + "<TavikResultData Version=\"1.0\">\n  <Transmission>\n";
        QTest::newRow("broken inside")
            << start + "<TavikResultData Version=\"1.0\"><a></b></TavikResultData>\n";
        QTest::newRow("something behind the end")
            << start + "<TavikResultData Version=\"1.0\"></TavikResultData>\n<!-- mine -->\n";
        QTest::newRow("empty element") << start + "<TavikResultData Version=\"1.0\"/>\n";
        QTextCodec* const utf16 = QTextCodec::codecForName("UTF-16");
        QTest::newRow("another encoding") << utf16->fromUnicode(
            QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n"
                           "<TavikResultData Version=\"1.0\"></TavikResultData>\n"));
        QTest::newRow("another 8-bit encoding")
            << QByteArray("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                          "<TavikResultData Version=\"1.0\"></TavikResultData>\n");
    }

    void aFileThatIsNoResultDocumentIsLeftAlone()
    {
        QFETCH(QByteArray, content);
        writeFile(path("x.xml"), content);
        TavikResultData document;
        addTransmission(document, QStringLiteral("first"));
        QVERIFY(document.SaveFile(path("x.xml")));
        QCOMPARE(contentOf(path("x.xml")), content);
        QCOMPARE(textsOf(path("x_2.xml")), QStringList{QStringLiteral("first")});
        document.Reset();
        addTransmission(document, QStringLiteral("second"));
        QVERIFY(document.SaveFile(path("x.xml")));
        QCOMPARE(contentOf(path("x.xml")), content);
        QCOMPARE(textsOf(path("x_2.xml")), QStringList{QStringLiteral("first")});
        QCOMPARE(textsOf(path("x_3.xml")), QStringList{QStringLiteral("second")});
    }

    void aFolderOfThatNameIsLeftAlone()
    {
        QDir(m_dir->path()).mkdir(QStringLiteral("a.b"));
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(document.SaveFile(path("a.b")));
        QVERIFY(QFileInfo(path("a.b")).isDir());
        QCOMPARE(files(), QStringList{QStringLiteral("a_2.b")});
    }

    void aNameWithoutASuffixGetsItsNumberAtTheEnd()
    {
        writeFile(path("notes"), "mine");
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(document.SaveFile(path("notes")));
        QCOMPARE(files(), (QStringList{QStringLiteral("notes"), QStringLiteral("notes_2")}));
    }

    void whatSomebodyElseWroteInADocumentStays()
    {
        const QByteArray foreign = "<?xml version=\"1.0\"?><!-- by hand -->\n"
                                   "<TavikResultData Version=\"1.0\" Site=\"north\">"
                                   "<Remark>fine</Remark></TavikResultData>  \n\n";
        writeFile(path("x.xml"), foreign);
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(document.SaveFile(path("x.xml")));
        QVERIFY(contentOf(path("x.xml"))
                    .startsWith(foreign.left(foreign.indexOf("</TavikResultData>"))));
        QCOMPARE(textsOf(path("x.xml")), QStringList{QStringLiteral("x")});
        QCOMPARE(files(), QStringList{QStringLiteral("x.xml")});
    }

    void anyAmountOfWhiteSpaceMayStandBeforeTheEndTag()
    {
        const QByteArray foreign = "<TavikResultData Version=\"1.0\">" + QByteArray(100, ' ');
        writeFile(path("x.xml"), foreign + "</TavikResultData>");
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(document.SaveFile(path("x.xml")));
        QCOMPARE(textsOf(path("x.xml")), QStringList{QStringLiteral("x")});
        QCOMPARE(files(), QStringList{QStringLiteral("x.xml")});
        // Of the last 64 bytes, the tag's 18 among them, none is kept.
        QVERIFY(
            contentOf(path("x.xml")).startsWith(foreign.chopped(64 - 18) + "\n  <Transmission"));
    }

    void aLittleWhiteSpaceMayStandBehindTheEndTag()
    {
        // The tag has to begin within the last 64 bytes.
        const QByteArray whole = "<TavikResultData Version=\"1.0\"></TavikResultData>";
        writeFile(path("x.xml"), whole + QByteArray(46, '\n'));
        writeFile(path("y.xml"), whole + QByteArray(47, '\n'));
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(document.SaveFile(path("x.xml")));
        QVERIFY(document.SaveFile(path("y.xml")));
        QCOMPARE(files(), (QStringList{QStringLiteral("x.xml"), QStringLiteral("y.xml"),
                                       QStringLiteral("y_2.xml")}));
    }

    // Faults

    void withoutANameWhatThereIsWaitsForOne()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("first"));
        QVERIFY(!document.SaveFile(QString()));
        document.Reset();
        addTransmission(document, QStringLiteral("second"));
        QVERIFY(!document.SaveFile(QString()));
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("r.xml")),
                 (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
    }

    void whatWasNeverToBeSavedIsForgotten()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("first"));
        document.Reset();
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(files(), QStringList());
    }

    void whatCouldNotBeWrittenFollowsUnderItsName()
    {
        TavikResultData document;
        for (const char* name : {"missing/r1.xml", "missing/r2.xml"}) {
            addTransmission(document, QLatin1String(name));
            QVERIFY(!document.SaveFile(path(name)));
            document.Reset();
        }
        QVERIFY(!document.SaveFile(path("missing/r3.xml")));
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("missing")));
        addTransmission(document, QStringLiteral("last"));
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("missing/r1.xml")), QStringList{QStringLiteral("missing/r1.xml")});
        QCOMPARE(textsOf(path("missing/r2.xml")), QStringList{QStringLiteral("missing/r2.xml")});
        QCOMPARE(textsOf(path("r.xml")), QStringList{QStringLiteral("last")});
        QVERIFY(!QFile::exists(path("missing/r3.xml")));
        QCOMPARE(schemaErrors({path("missing/r1.xml"), path("missing/r2.xml")}), QString());
    }

    void aSaveWithNothingNewWritesWhatWaits()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(!document.SaveFile(path("missing/r.xml")));
        document.Reset();
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("missing")));
        QVERIFY(document.SaveFile(QString()));
        QCOMPARE(textsOf(path("missing/r.xml")), QStringList{QStringLiteral("x")});
    }

    void whatWaitsIsWrittenAtTheDocumentsEnd()
    {
        {
            TavikResultData document;
            addTransmission(document, QStringLiteral("kept"));
            QVERIFY(!document.SaveFile(path("missing/r1.xml")));
            document.Reset();
            addTransmission(document, QStringLiteral("held"));
            QVERIFY(!document.SaveFile(path("missing/r2.xml")));
            QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("missing")));
        }
        QCOMPARE(textsOf(path("missing/r1.xml")), QStringList{QStringLiteral("kept")});
        QCOMPARE(textsOf(path("missing/r2.xml")), QStringList{QStringLiteral("held")});
    }

    void whatIsLostAtTheDocumentsEndIsTraced()
    {
        TraceRecorder traces;
        {
            TavikResultData document;
            addTransmission(document, QStringLiteral("x"));
            QVERIFY(!document.SaveFile(path("missing/r.xml")));
        }
        QCOMPARE(traces.Messages().size(), 1);
        QVERIFY(traces.Messages().first().contains(path("missing/r.xml")));
    }

    void aFolderThatIsAFileCountsAsMissing()
    {
        writeFile(path("missing"), "no folder");
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(!document.SaveFile(path("missing/r.xml")));
        QVERIFY(QFile::remove(path("missing")));
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("missing")));
        QVERIFY(document.SaveFile(path("missing/r.xml")));
        QCOMPARE(textsOf(path("missing/r.xml")), QStringList{QStringLiteral("x")});
    }

    void aFullDiskCostsNothingThatWasOnIt()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("first"));
        QVERIFY(document.SaveFile(path("r.xml")));
        const QByteArray before = contentOf(path("r.xml"));
        document.Reset();
        const QString longText(100000, QLatin1Char('e'));
        addTransmission(document, longText);
        {
            const FullDisk full(20000);
            QVERIFY(!document.SaveFile(path("r.xml")));
            document.Reset();
            addTransmission(document, QStringLiteral("third"));
            // The short one fits, the long one goes on waiting.
            QVERIFY(!document.SaveFile(path("r3.xml")));
            document.Reset();
            QCOMPARE(contentOf(path("r.xml")), before);
            QCOMPARE(textsOf(path("r3.xml")), QStringList{QStringLiteral("third")});
        }
        QVERIFY(document.SaveFile(path("r4.xml")));
        QCOMPARE(textsOf(path("r.xml")), (QStringList{QStringLiteral("first"), longText}));
        QVERIFY(!QFile::exists(path("r4.xml")));
    }

    void aFileThatNeverCanBeWrittenDoesNotBlockTheOthers()
    {
        TavikResultData document;
        for (int i = 0; i < 22; ++i) {
            addTransmission(document, QStringLiteral("x"));
            QVERIFY(!document.SaveFile(path("never") + QStringLiteral("/r%1.xml").arg(i)));
            document.Reset();
        }
        addTransmission(document, QStringLiteral("y"));
        QVERIFY(!document.SaveFile(path("later/r.xml")));
        document.Reset();
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("later")));
        // A save ends with its eighth failure, and the next one begins behind that.
        QVERIFY(!document.SaveFile(path("r.xml")));
        QVERIFY(!QFile::exists(path("later/r.xml")));
        QVERIFY(!document.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("later/r.xml")), QStringList{QStringLiteral("y")});
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("never")));
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(QDir(path("never")).entryList(QDir::Files).size(), 22);
    }

    void ofTooMuchThatWaitsTheOldestGoesFirstWithATrace()
    {
        TraceRecorder traces;
        TavikResultData document;
        const QString text(15 << 20, QLatin1Char('e')); // 30 MiB in memory
        for (int i = 0; i <= 3; ++i) {
            addTransmission(document, i > 0 ? text + QString::number(i) : QString());
            QVERIFY(!document.SaveFile(path("missing") + QStringLiteral("/r%1.xml").arg(i)));
            document.Reset();
        }
        // To give up the first, which is short, is not enough.
        QCOMPARE(traces.Messages().size(), 2);
        QVERIFY(traces.Messages()[0].contains(path("missing/r0.xml")));
        QVERIFY(traces.Messages()[1].contains(path("missing/r1.xml")));
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("missing")));
        QVERIFY(document.SaveFile(QString()));
        QCOMPARE(QDir(path("missing")).entryList(QDir::Files),
                 (QStringList{QStringLiteral("r2.xml"), QStringLiteral("r3.xml")}));
        QVERIFY(textsOf(path("missing/r3.xml")).first().endsWith(QLatin1Char('3')));
        // What was written no longer counts.
        for (int i = 0; i < 2; ++i) {
            addTransmission(document, text);
            QVERIFY(!document.SaveFile(path("gone/r.xml")));
            document.Reset();
        }
        QCOMPARE(traces.Messages().size(), 2);
    }

    // Others at the same file

    void twoDocumentsMaySaveUnderOneNameAtTheSameTime()
    {
        constexpr int SAVES = 5;
        const QString target = path("r.xml");
        std::vector<std::thread> threads;
        for (int i = 0; i < 2; ++i) {
            threads.emplace_back([target] {
                TavikResultData document;
                for (int j = 0; j < SAVES; ++j) {
                    addTransmission(document, QString::number(j));
                    document.SaveFile(target); // what fails follows with the next
                    document.Reset();
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(readFile(target).transmissions.size(), std::size_t(2 * SAVES));
        QCOMPARE(files(), QStringList{QStringLiteral("r.xml")});
    }

    void aReaderNeverSeesHalfADocument()
    {
        const QString target = path("r.xml");
        TavikResultData document;
        addTransmission(document, QString(50000, QLatin1Char('e')));
        QVERIFY(document.SaveFile(target));
        std::atomic<bool> isOver{false};
        std::atomic<int> bad{0};
        std::thread reader([&] {
            while (!isOver) {
                QFile file(target);
                if (!file.open(QIODevice::ReadOnly) || !readResultDocument(file))
                    ++bad;
            }
        });
        for (int i = 0; i < 20; ++i) {
            document.Reset();
            addTransmission(document, QString(50000, QLatin1Char('e')));
            QVERIFY(document.SaveFile(target));
        }
        isOver = true;
        reader.join();
        QCOMPARE(bad.load(), 0);
    }

    void aLockThatSomebodyLeftBehindDoesNotStopASave()
    {
        // Of a process that cannot be alive: its number is beyond the highest.
        writeFile(path("r.xml.lock"), "2147483647\nmorsehost\n\n");
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(document.SaveFile(path("r.xml")));
    }

    // Size

    void twoHundredThousandFramesAreReadBackEqual()
    {
        constexpr int FRAMES = 200000;
        const auto textOf = [](int i) {
            return i % 7 == 6 ? QStringLiteral("\n") : QString(QLatin1Char('A' + i % 26));
        };
        TavikResultData document;
        DataBlock* const block = addTransmission(document, QStringLiteral("first"));
        for (int i = 0; i < FRAMES; ++i)
            appendFrame(block, textOf(i), STAMP_us + static_cast<unsigned long long>(i) * 12345);
        QVERIFY(document.SaveFile(path("r.xml")));
        const ResultDocument read = readFile(path("r.xml"));
        QCOMPARE(read.transmissions.size(), std::size_t(1));
        const auto& frames = read.transmissions[0].blocks[0].frames;
        QCOMPARE(frames.size(), std::size_t(FRAMES) + 1);
        for (int i = 0; i < FRAMES; ++i) {
            const ResultFrame& frame = frames[static_cast<std::size_t>(i) + 1];
            if (frame.text != textOf(i) ||
                frame.timestamp_us != STAMP_us + static_cast<unsigned long long>(i) * 12345)
                QFAIL(qPrintable(QStringLiteral("frame %1").arg(i)));
        }
    }

    void aDocumentThatIsNotKeptWritesNothing()
    {
        QTemporaryDir dir;
        const auto save = [&dir](TavikResultData& document, const char* name) {
            addTransmission(document, QString::fromLatin1(name));
            return document.SaveFile(dir.filePath(name));
        };
        TavikResultData before;
        {
            const ResultPolicyScope scope({false, false, {}});
            TavikResultData dropped;
            QVERIFY(save(dropped, "dropped.xml"));
            auto* const filledBefore = new Transmission;
            auto* const block = new DataBlock(-1, 0, 0);
            filledBefore->AddDataBlock(block);
            dropped.AddTransmission(filledBefore);
            appendFrame(block, "x");
            QVERIFY(dropped.SaveFile(dir.filePath("filled.xml")));
            QVERIFY(save(before, "before.xml"));
        }
        TavikResultData after;
        QVERIFY(save(after, "after.xml"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList({"after.xml", "before.xml"}));
    }

    void everySaveMakesAFileOfItsOwnWhereThatIsWanted()
    {
        QTemporaryDir dir;
        const ResultPolicyScope scope({true, true, {}});
        for (const char* text : {"first", "second", "third"}) {
            TavikResultData document;
            addTransmission(document, QString::fromLatin1(text));
            QVERIFY(document.SaveFile(dir.filePath("x.xml")));
        }
        const auto textIn = [&dir](const char* name) {
            const ResultDocument read = readFile(dir.filePath(name));
            return read.transmissions.size() == 1 ? read.transmissions[0].blocks[0].frames[0].text
                                                  : QString();
        };
        QCOMPARE(textIn("x.xml"), QStringLiteral("first"));
        QCOMPARE(textIn("x_2.xml"), QStringLiteral("second"));
        QCOMPARE(textIn("x_3.xml"), QStringLiteral("third"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 3);
    }

    void whatWaitsForTheDiskAndWhatIsLostIsReported()
    {
        QTemporaryDir dir;
        std::vector<std::pair<std::size_t, std::size_t>> balances;
        {
            const ResultPolicyScope scope({true, true, [&balances](const ResultBalance& balance) {
                                               balances.emplace_back(balance.waiting, balance.lost);
                                           }});
            TavikResultData document;
            for (int i = 0; i < 2; ++i) {
                addTransmission(document, QStringLiteral("waits"));
                QVERIFY(!document.SaveFile(dir.filePath("none/x.xml")));
                document.Reset();
            }
            QVERIFY(QDir(dir.path()).mkdir("none"));
            QVERIFY(document.SaveFile(dir.filePath("none/y.xml")));
            addTransmission(document, QStringLiteral("lost"));
            QVERIFY(!document.SaveFile(dir.filePath("never/x.xml")));
        }
        const std::vector<std::pair<std::size_t, std::size_t>> expected = {
            {1, 0}, {2, 0}, {0, 0}, {1, 0}, {0, 1}};
        QCOMPARE(balances, expected);
        QCOMPARE(QDir(dir.filePath("none")).entryList(QDir::Files).size(), 2);
    }

    void onlyABareNameCountsFromTheWorkDirectory()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir->path()));
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        const bool isSavedWithoutOne = document.SaveFile(QStringLiteral("r.xml"));
        document.SetWorkDir(path("elsewhere"));
        const bool isPathSaved = document.SaveFile(QStringLiteral("r\\r.xml"));
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(isSavedWithoutOne);
        QVERIFY(isPathSaved);
        QCOMPARE(files(), (QStringList{QStringLiteral("r.xml"), QStringLiteral("r\\r.xml")}));
    }

    void aFrameOfTheFirstSecondOfAllHasItsTime()
    {
        TavikResultData document;
        auto* const transmission = new Transmission;
        document.AddTransmission(transmission);
        auto* const block = new DataBlock(-1, 0, 0);
        transmission->AddDataBlock(block);
        appendFrame(block, QStringLiteral("x"), 0);
        appendFrame(block, QStringLiteral("y"), 7);
        QVERIFY(document.SaveFile(path("r.xml")));
        const ResultDocument read = readFile(path("r.xml"));
        QCOMPARE(read.transmissions[0].blocks[0].frames[0].timestamp_us, 0ULL);
        QCOMPARE(read.transmissions[0].blocks[0].frames[1].timestamp_us, 7ULL);
    }

    void halfAPairOfSurrogatesIsReplacedVisibly()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("a") + QChar(0xd83d) + QStringLiteral("b") +
                                      QChar(0xde00) + QChar(0xd83d));
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("r.xml")), QStringList{QStringLiteral("a\ufffdb\ufffd\ufffd")});
    }

    void aSaveWithoutANameLeavesWhatIsOwedItsName()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(!document.SaveFile(path("missing/r.xml")));
        QVERIFY(!document.SaveFile(QString()));
        document.Reset();
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("missing")));
        QVERIFY(document.SaveFile(QString()));
        QCOMPARE(textsOf(path("missing/r.xml")), QStringList{QStringLiteral("x")});
    }

    void ofTwoNamesThatFailedTheLastOneCounts()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(!document.SaveFile(path("missing/r1.xml")));
        QVERIFY(!document.SaveFile(path("missing/r2.xml")));
        document.Reset();
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("missing")));
        QVERIFY(document.SaveFile(QString()));
        QCOMPARE(QDir(path("missing")).entryList(QDir::Files),
                 QStringList{QStringLiteral("r2.xml")});
    }

    void framesWithoutTextCountAmongWhatWaits()
    {
        TraceRecorder traces;
        TavikResultData document;
        for (int i = 0; i < 2; ++i) {
            DataBlock* const block = addTransmission(document, QString());
            for (int frames = 0; frames < 2500000; ++frames)
                block->BeginFrame();
            QVERIFY(!document.SaveFile(path("missing/r.xml")));
            document.Reset();
        }
        // Of 16 bytes each; more than 64 MiB in all.
        QCOMPARE(traces.Messages().size(), 1);
    }

    void transmissionsThatWaitForOneFileAreWrittenInTheirOrder()
    {
        TavikResultData document;
        for (const char* text : {"first", "second"})
            addTransmission(document, QLatin1String(text));
        QVERIFY(!document.SaveFile(path("missing/r.xml")));
        document.Reset();
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("missing")));
        QVERIFY(document.SaveFile(QString()));
        QCOMPARE(textsOf(path("missing/r.xml")),
                 (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
    }

    void aLinkThatLeadsNowhereIsLeftAlone()
    {
        QVERIFY(QFile::link(path("nowhere"), path("r.xml")));
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(document.SaveFile(path("r.xml")));
        QVERIFY(QFileInfo(path("r.xml")).isSymLink());
        QVERIFY(!QFile::exists(path("nowhere")));
        QCOMPARE(textsOf(path("r_2.xml")), QStringList{QStringLiteral("x")});
    }

    void whereTenThousandNamesAreTakenADocumentWaits()
    {
        writeFile(path("x.xml"), "mine");
        for (int i = 2; i <= 10000; ++i)
            QVERIFY(
                QFile::link(path("x.xml"), path(qPrintable(QStringLiteral("x_%1.xml").arg(i)))));
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        QVERIFY(!document.SaveFile(path("x.xml")));
        QCOMPARE(contentOf(path("x.xml")), QByteArray("mine"));
        QVERIFY(QFile::remove(path("x_77.xml")));
        QVERIFY(document.SaveFile(path("x.xml")));
        QCOMPARE(textsOf(path("x_77.xml")), QStringList{QStringLiteral("x")});
    }

    void whereOnlyTheLockCanBeOpenedADocumentWaits()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("x"));
        {
            const FewDescriptors onlyOne(1);
            QVERIFY(!document.SaveFile(path("r.xml")));
        }
        QCOMPARE(files(), QStringList());
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("r.xml")), QStringList{QStringLiteral("x")});
    }

    void aDocumentThatCannotBeOpenedForNowIsAddedToLater()
    {
        TavikResultData document;
        addTransmission(document, QStringLiteral("first"));
        QVERIFY(document.SaveFile(path("r.xml")));
        document.Reset();
        addTransmission(document, QStringLiteral("second"));
        {
            const FewDescriptors onlyOne(1);
            QVERIFY(!document.SaveFile(path("r.xml")));
        }
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(files(), QStringList{QStringLiteral("r.xml")});
        QCOMPARE(textsOf(path("r.xml")),
                 (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
    }

    void howeverLittleTheDiskTakesADocumentIsWholeOrNotThere()
    {
        TavikResultData empty;
        addTransmission(empty, QString());
        QVERIFY(empty.SaveFile(path("r.xml")));
        const int frame = contentOf(path("r.xml")).size();
        QVERIFY(QFile::remove(path("r.xml")));
        // Qt hands the disk 16 KiB at a time. So of the first nothing is written before all is
        // flushed, of the second the end tag finds no room, of the third the text.
        for (const int length : {2000, (16 << 10) - frame + 10, 40000}) {
            int saved = 0;
            for (int part = 0; part <= 25; ++part) {
                TavikResultData document;
                addTransmission(document, QString(length, QLatin1Char('e')));
                const QString target = path("r.xml");
                {
                    const FullDisk full(static_cast<rlim_t>(part * length / 20));
                    const bool isSaved = document.SaveFile(target);
                    QCOMPARE(QFile::exists(target), isSaved);
                    saved += isSaved;
                }
                QVERIFY(document.SaveFile(target));
                QCOMPARE(readFile(target).transmissions.size(), std::size_t(1));
                QVERIFY(QFile::remove(target));
            }
            QVERIFY(saved > 0); // in the end it takes all
        }
    }

    void aDocumentThatTheDiskCannotCopyStaysAsItIs()
    {
        TavikResultData document;
        addTransmission(document, QString(100000, QLatin1Char('e')));
        QVERIFY(document.SaveFile(path("r.xml")));
        const QByteArray before = contentOf(path("r.xml"));
        document.Reset();
        addTransmission(document, QStringLiteral("second"));
        {
            const FullDisk full(1000);
            QVERIFY(!document.SaveFile(path("r.xml")));
        }
        QCOMPARE(contentOf(path("r.xml")), before);
        QVERIFY(document.SaveFile(path("r.xml")));
        QCOMPARE(textsOf(path("r.xml")).size(), 2);
    }

private:
    QString path(const char* name) const { return m_dir->filePath(QLatin1String(name)); }

    QStringList files() const { return QDir(m_dir->path()).entryList(QDir::Files, QDir::Name); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_APPLESS_MAIN(tst_ResultData)
#include "tst_resultdata.moc"
