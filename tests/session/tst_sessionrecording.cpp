// SPDX-License-Identifier: MIT
// The code and text files that a Morse handler writes, and what may go wrong with them.
#include "session/morsehandler.h"

#include "support/files.h"
#include "support/fulldisk.h"
#include "support/morsefixture.h"
#include "support/privatemember.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <algorithm>
#include <limits>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

PRIVATE_MEMBER(SaveDirectory, MorseHandler, m_strSaveDirectory, QString MorseHandler::*);
PRIVATE_MEMBER(CodeName, MorseHandler, m_strCodeFileName, QString MorseHandler::*);
PRIVATE_MEMBER(TextName, MorseHandler, m_strTextFileName, QString MorseHandler::*);

namespace {

constexpr unsigned long long TEN_FIFTEEN_us = 1494584102120000ULL; // 2017-05-12 10:15:02.120 UTC

// The contents of all files of a folder whose name fits, in order.
QList<QByteArray> contentsOf(const QString& folder, const char* names)
{
    QList<QByteArray> contents;
    for (const QString& name : QDir(folder).entryList({names}, QDir::Files))
        contents += contentOf(folder + QLatin1Char('/') + name);
    std::sort(contents.begin(), contents.end());
    return contents;
}

// A handler that saves into a folder of its own.
struct Recording : MorseFixture
{
    explicit Recording(const QString& folder = QString())
        : directory(folder.isEmpty() ? temporary.path() : folder)
    {
        wireFiles(directory);
        saveToFile->SetValue(true, nullptr);
        handler.StartNewMorseSession();
    }

    void attachFrequency(double frequency_Hz)
    {
        frequency->SetValue(frequency_Hz, nullptr);
        handler.SetFrequency_ValuePath(path("Frequency"));
    }

    QString code() const { return codeFileName->GetValue(); }
    QString text() const { return textFileName->GetValue(); }
    TextValue* textValue() const { return MorseValues::text; }
    QString decoded() const { return textValue()->GetValue(); }
    QStringList files() const
    {
        return QDir(directory).entryList({"*.txt"}, QDir::Files, QDir::Name);
    }

    QTemporaryDir temporary;
    QString directory;
};

void verifyName(const QString& path, const QString& folder, const QString& pattern)
{
    QVERIFY2(path.startsWith(folder + QLatin1Char('/')), qPrintable(path));
    const QRegularExpression name(QRegularExpression::anchoredPattern(pattern));
    const QString fileName = QFileInfo(path).fileName();
    QVERIFY2(name.match(fileName).hasMatch(), qPrintable(fileName));
}

} // namespace

class tst_SessionRecording : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "UTC"); }

    // Names

    void theCodeFileComesWithTheFirstSymbolAndTheTextFileWithTheFirstCharacter()
    {
        Recording host;
        host.attachFrequency(7025000);
        host.alphabet->AddItems({"Greek"}, nullptr);
        host.alphabet->Select(QStringLiteral("Greek"), nullptr);
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        QVERIFY(host.files().isEmpty());
        host.send(".");
        QCOMPARE(host.files().size(), 1);
        verifyName(host.code(), host.directory, "\\d{8}_\\d{6}_1_MO__7_025MHz\\.txt");
        QCOMPARE(contentOf(host.code()), QByteArray("."));
        QCOMPARE(host.text(), QString());
        host.send("-c");
        QCOMPARE(host.files().size(), 2);
        verifyName(host.text(), host.directory, "\\d{8}_\\d{6}_1_MO__7_025MHz__Greek\\.txt");
        QCOMPARE(contentOf(host.text()), QByteArray("A"));
    }

    void namesWithoutFrequencyAndAlphabetKeepTheirUnderscores()
    {
        Recording host;
        host.send(".c");
        verifyName(host.code(), host.directory, "\\d{8}_\\d{6}_1_MO__\\.txt");
        verifyName(host.text(), host.directory, "\\d{8}_\\d{6}_1_MO____Default\\.txt");
    }

    void anAlphabetSelectionWithoutCurrentItemGivesAnEmptyName()
    {
        Recording host;
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        host.send(".c");
        verifyName(host.text(), host.directory, "\\d{8}_\\d{6}_1_MO____\\.txt");
    }

    void theStampIsTheTimeInUtc()
    {
        qputenv("TZ", "Asia/Kolkata");
        const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
        Recording host;
        host.send(".");
        qputenv("TZ", "UTC");
        QDateTime stamp = QDateTime::fromString(QFileInfo(host.code()).fileName().left(15),
                                                QStringLiteral("yyyyMMdd_hhmmss"));
        stamp.setTimeSpec(Qt::UTC);
        QVERIFY(stamp >= before && stamp <= QDateTime::currentDateTimeUtc());
    }

    void takenNumbersAreSkipped()
    {
        Recording host;
        const QDateTime now = QDateTime::currentDateTimeUtc();
        for (int second = 0; second < 20; ++second) {
            const QString stamp = now.addSecs(second).toString(QStringLiteral("yyyyMMdd_hhmmss"));
            for (const char* number : {"_1", "_2"}) {
                writeFile(host.directory + QLatin1Char('/') + stamp + QLatin1String(number) +
                              QLatin1String("_MO__.txt"),
                          "mine");
            }
        }
        host.send(".");
        verifyName(host.code(), host.directory, "\\d{8}_\\d{6}_3_MO__\\.txt");
        for (const QString& name : host.files()) {
            if (!name.contains(QLatin1String("_3_")))
                QCOMPARE(contentOf(host.directory + QLatin1Char('/') + name), QByteArray("mine"));
        }
    }

    void twoSessionsInOneSecondAndOneFolderWriteFilesOfTheirOwn()
    {
        QTemporaryDir dir;
        MorseFixture host;
        MorseHandler second;
        host.wireFiles(dir.path());
        second.SetSymbol_ValuePath(MorseValues::path("Symbol"));
        second.SetMorseAvailable_ValuePath(MorseValues::path("Available"));
        second.SetMorseSaveToFile_ValuePath(MorseValues::path("SaveToFile"));
        second.SetSaveDirectoryPath(dir.path(), QString(), QString(), QString());
        host.saveToFile->SetValue(true, nullptr);
        host.handler.StartNewMorseSession();
        second.StartNewMorseSession();
        host.send(".-c");
        QCOMPARE(QDir(dir.path()).entryList({"*_MO__.txt"}).size(), 2);
        QCOMPARE(QDir(dir.path()).entryList({"*__Default.txt"}).size(), 2);
        for (const QString& name : QDir(dir.path()).entryList({"*_MO__.txt"}))
            QCOMPARE(contentOf(dir.filePath(name)), QByteArray(".- "));
    }

    void twoHandlersOnOneFrequencyKeepTheirOwnFiles()
    {
        Recording host;
        host.attachFrequency(500000);
        MorseHandler second;
        second.SetMorseAvailable_ValuePath(MorseValues::path("Available"));
        second.SetMorseSaveToFile_ValuePath(MorseValues::path("SaveToFile"));
        second.SetFrequency_ValuePath(MorseValues::path("Frequency"));
        second.SetSaveDirectoryPath(host.directory, QString(), QString(), QString());
        second.StartNewMorseSession();
        // Both make their names in one notification; the second to write finds its own taken.
        host.frequency->SetValue(501000, nullptr);
        host.send(".-c");
        for (const int code : {1, 0, 3})
            second.AddSymbol(code);
        QCOMPARE(contentOf(host.code()), QByteArray(".- "));
        QCOMPARE(contentOf(host.text()), QByteArray("A"));
        QCOMPARE(contentsOf(host.directory, "*KHz.txt"), (QList<QByteArray>{"-. ", ".- "}));
        QCOMPARE(contentsOf(host.directory, "*__Default.txt"), (QList<QByteArray>{"A", "N"}));
    }

    void severalProcessesInOneFolderKeepTheirOwnFiles()
    {
        constexpr int PROCESSES = 4;
        constexpr int SESSIONS = 40;
        QTemporaryDir dir;
        int start[2];
        QCOMPARE(pipe(start), 0);
        std::vector<pid_t> children;
        for (int number = 0; number < PROCESSES; ++number) {
            const pid_t child = fork();
            QVERIFY(child >= 0);
            if (child == 0) {
                char go = 0;
                close(start[1]);
                static_cast<void>(read(start[0], &go, 1)); // until all are there
                for (int i = 0; i < SESSIONS; ++i) {
                    Recording host(dir.path());
                    for (int dots = 0; dots <= number; ++dots)
                        host.send(".");
                    host.send("c");
                }
                _exit(0);
            }
            children.push_back(child);
        }
        close(start[0]);
        close(start[1]);
        for (const pid_t child : children) {
            int status = 0;
            QCOMPARE(waitpid(child, &status, 0), child);
            QCOMPARE(status, 0);
        }
        QMap<QByteArray, int> found;
        for (const char* names : {"*_MO__.txt", "*__Default.txt"}) {
            for (const QByteArray& content : contentsOf(dir.path(), names))
                ++found[content];
        }
        QMap<QByteArray, int> expected;
        for (const char* content : {". ", ".. ", "... ", ".... ", "E", "I", "S", "H"})
            expected[content] = SESSIONS;
        QCOMPARE(found, expected);
    }

    // Contents

    void symbolsAndTextAreWrittenAsTheyCome()
    {
        Recording host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.handler.SetTimestamp(TEN_FIFTEEN_us + 2360000);
        host.send("-.-.c--.-w-.-.c--.-n");
        QCOMPARE(contentOf(host.code()), QByteArray("-.-. --.--.-. --.- "));
        QCOMPARE(contentOf(host.text()),
                 QByteArray("CQ CQ\n[Stop Time:  10:15:02.120]\n[Start Time:  10:15:04.480]\n"));
    }

    void theTimesOfALineAreLocal()
    {
        qputenv("TZ", "Asia/Kolkata");
        Recording host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.handler.SetTimestamp(TEN_FIFTEEN_us + 2360000);
        host.send("n");
        qputenv("TZ", "UTC");
        QCOMPARE(contentOf(host.text()),
                 QByteArray("\n[Stop Time:  15:45:02.120]\n[Start Time:  15:45:04.480]\n"));
    }

    void errorMarksFollowTheirCharacterInBothFiles()
    {
        Recording host;
        host.send(".dl-cp.wd");
        QCOMPARE(contentOf(host.code()),
                 QByteArray(".-[DOT_TOO_SHORT][DASH_TOO_LONG] .[PAUSE_TOO_SHORT]"));
        QCOMPARE(contentOf(host.text()),
                 QByteArray("A[DOT_TOO_SHORT][DASH_TOO_LONG]E [PAUSE_TOO_SHORT]"));
    }

    void pendingErrorMarksGoToTheCodeFileAtALineEnd()
    {
        Recording host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.send(".cdn");
        QCOMPARE(contentOf(host.code()), QByteArray(". [DOT_TOO_SHORT]"));
        host.send(".c");
        QCOMPARE(contentOf(host.code()), QByteArray(". [DOT_TOO_SHORT]. "));
    }

    void undecodableCodesLeaveTheirSymbolsOnly()
    {
        Recording host;
        host.send("......c.-c");
        QCOMPARE(contentOf(host.code()), QByteArray("...... .- "));
        QCOMPARE(contentOf(host.text()), QByteArray("A"));
    }

    void theTextFileIsUtf8WhateverTheLocale()
    {
        QTextCodec* const codec = QTextCodec::codecForLocale();
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        Recording host;
        writeFile(host.directory + QStringLiteral("/Hebrew.mal"), "\xD7\x90\t.-\n\n");
        host.alphabetDirectory->SetValue(host.directory, nullptr);
        host.alphabet->AddItems({"Hebrew"}, nullptr);
        host.alphabet->Select(QStringLiteral("Hebrew"), nullptr);
        host.handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        host.handler.StartNewMorseSession();
        host.send(".-c");
        QTextCodec::setCodecForLocale(codec);
        QCOMPARE(contentOf(host.text()), QByteArray("\xD7\x90"));
    }

    void errorMarksAreForgottenAtAWordGapAndAtTheEndOfASession()
    {
        Recording host;
        host.send(".dw.c");
        QCOMPARE(contentOf(host.code()), QByteArray(".[DOT_TOO_SHORT]. "));
        QCOMPARE(contentOf(host.text()), QByteArray("E [DOT_TOO_SHORT]E"));
        host.send("d");
        host.handler.EndMorseSession();
        host.handler.StartNewMorseSession();
        host.send(".c");
        QCOMPARE(contentOf(host.code()), QByteArray(". "));
    }

    void linesBreakBehindThePieceThatFollowsAHundredCharacters()
    {
        Recording host;
        for (int i = 0; i < 50; ++i)
            host.send(".c"); // two characters of code, one of text
        QCOMPARE(contentOf(host.code()).count('\n'), 0);
        host.send(".");
        QVERIFY(contentOf(host.code()).endsWith(" .\n"));
        for (int i = 0; i < 51; ++i)
            host.send("c.");
        const QByteArray text = contentOf(host.text());
        QCOMPARE(text.indexOf('\n'), 101);
    }

    // Beginning and ending files

    void nothingIsWrittenWithoutTheSaveFlag()
    {
        Recording host;
        host.saveToFile->SetValue(false, nullptr);
        host.send(".-cw");
        QVERIFY(host.files().isEmpty());
    }

    void theSaveFlagTakesEffectWhenItIsAttached()
    {
        QTemporaryDir dir;
        MorseFixture host;
        host.saveToFile->SetValue(true, nullptr);
        host.wireFiles(dir.path());
        host.handler.StartNewMorseSession();
        host.send(".");
        QCOMPARE(contentOf(host.codeFileName->GetValue()), QByteArray("."));
    }

    void theSaveFlagMayChangeInTheMiddleOfACharacter()
    {
        Recording host;
        host.send(".");
        const QString first = host.code();
        host.saveToFile->SetValue(false, nullptr);
        host.send("-");
        host.saveToFile->SetValue(true, nullptr);
        host.send(".c");
        QCOMPARE(contentOf(first), QByteArray("."));
        QVERIFY(host.code() != first);
        QCOMPARE(contentOf(host.code()), QByteArray(". "));
        QCOMPARE(contentOf(host.text()), QByteArray("R"));
    }

    void newFilesBegin_data()
    {
        QTest::addColumn<int>("cause");
        QTest::newRow("with another frequency") << 0;
        QTest::newRow("with another modulation") << 1;
        QTest::newRow("with another decoder result") << 2;
        QTest::newRow("when the save flag asks again") << 3;
    }

    void newFilesBegin()
    {
        QFETCH(int, cause);
        Recording host;
        host.attachFrequency(500000);
        host.modulation->AddItems({"CW", "AM"}, nullptr);
        host.decoderResult->AddItems({"1", "2"}, nullptr);
        host.handler.SetModtype_ValuePath(MorseValues::path("Modulation"));
        host.handler.SetDecResult_ValuePath(MorseValues::path("DecoderResult"));
        host.send(".-c.");
        const QString code = host.code();
        const QString text = host.text();
        switch (cause) {
        case 0:
            host.frequency->SetValue(501000, nullptr);
            break;
        case 1:
            host.modulation->Select(QStringLiteral("AM"), nullptr);
            break;
        case 2:
            host.decoderResult->Select(QStringLiteral("2"), nullptr);
            break;
        default:
            host.saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
            break;
        }
        // Names are made at once, files with the next piece.
        QCOMPARE(host.files().size(), 2);
        host.send("-c");
        QCOMPARE(host.files().size(), 4);
        QCOMPARE(contentOf(code), QByteArray(".- ."));
        QCOMPARE(contentOf(text), QByteArray("A"));
        QCOMPARE(contentOf(host.code()), QByteArray("- "));
        QCOMPARE(contentOf(host.text()), QByteArray("A"));
        if (cause == 0)
            verifyName(host.code(), host.directory, "\\d{8}_\\d{6}_1_MO__501_000KHz\\.txt");
    }

    void settingsMayChangeWithoutSaving()
    {
        Recording host;
        host.saveToFile->SetValue(false, nullptr);
        host.attachFrequency(500000);
        host.frequency->SetValue(1, nullptr);
        host.saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
        QVERIFY(host.files().isEmpty());
    }

    void aModulationMayChangeWithoutAFrequency()
    {
        Recording host;
        host.handler.SetModtype_ValuePath(MorseValues::path("Modulation"));
        host.send(".-c");
        host.modulation->HasChanged(eCHANGE_CONTENT, nullptr);
        host.send("-c");
        QCOMPARE(host.files().size(), 4);
        verifyName(host.code(), host.directory, "\\d{8}_\\d{6}_2_MO__\\.txt");
    }

    void theEndOfASessionClosesTheFilesAndNothingFollows()
    {
        Recording host;
        host.send(".-c");
        const QStringList files = host.files();
        host.handler.EndMorseSession();
        host.send(".-c");
        QCOMPARE(host.files(), files);
        QCOMPARE(contentOf(host.code()), QByteArray(".- "));
        const QString first = host.code();
        host.handler.StartNewMorseSession();
        host.send(".-c");
        QVERIFY(host.code() != first);
    }

    void aFileAfterTheEndOfASessionBeginsAtColumnZero()
    {
        Recording host;
        for (int i = 0; i < 60; ++i)
            host.send(".");
        host.handler.EndMorseSession();
        host.handler.StartNewMorseSession();
        for (int i = 0; i < 60; ++i)
            host.send(".");
        QCOMPARE(contentOf(host.code()), QByteArray(60, '.'));
    }

    void aFileAtItsLimitIsClosedBeforeTheNextWrite()
    {
        Recording host;
        host.send(".-c");
        const QString code = host.code();
        const QString text = host.text();
        for (const QString& path : {code, text}) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::Append) && file.resize(256000));
        }
        host.send(".");
        QCOMPARE(host.code(), code);
        QCOMPARE(QFileInfo(code).size(), qint64(256000));
        QFile file(code);
        QVERIFY(file.open(QIODevice::Append) && file.resize(256001));
        host.send("-");
        QVERIFY(host.code() != code);
        QCOMPARE(contentOf(host.code()), QByteArray("-"));
        QCOMPARE(host.text(), text);
        // Its columns are counted from 0: the line breaks behind the 101st symbol, no sooner.
        for (int i = 0; i < 100; ++i)
            host.send("-");
        QCOMPARE(contentOf(host.code()), QByteArray(101, '-') + '\n');
    }

    void theTextFileRollsOverAsTheCodeFile()
    {
        Recording host;
        host.send(".-c");
        const QString text = host.text();
        QFile file(text);
        QVERIFY(file.open(QIODevice::Append) && file.resize(256001));
        host.send("-c");
        QVERIFY(host.text() != text);
        QCOMPARE(contentOf(host.text()), QByteArray("T"));
    }

    void aLongReceptionLosesNothingAtTheLimit()
    {
        Recording host;
        QByteArray sent;
        unsigned int seed = 1;
        for (int i = 0; i < 300000; ++i) {
            seed = seed * 1664525U + 1013904223U;
            const char symbol = ".-c"[(seed >> 16) % 3];
            host.send(MorseFixture::codeOf(symbol));
            sent += symbol == 'c' ? ' ' : symbol;
        }
        QByteArray saved;
        QMap<QString, QByteArray> byStamp;
        for (const QString& name : QDir(host.directory).entryList({"*_MO__.txt"}, QDir::Files)) {
            const QByteArray content = contentOf(host.directory + QLatin1Char('/') + name);
            QVERIFY(content.size() < 256001 + 200);
            // Numbers within one second have to be put in order as numbers.
            byStamp[name.left(15) + name.section('_', 2, 2).rightJustified(6, '0')] = content;
        }
        QVERIFY(byStamp.size() > 1);
        for (const QByteArray& content : byStamp)
            saved += content;
        saved.replace("\n", "");
        QCOMPARE(saved, sent);
    }

    void aNewFolderHoldsFromTheNextNameOn()
    {
        QTemporaryDir other;
        Recording host;
        host.send(".");
        const QString first = host.code();
        host.handler.SetSaveDirectoryPath(other.path(), MorseValues::path("TextFileName"),
                                          MorseValues::path("CodeFileName"),
                                          MorseValues::path("XmlFileName"));
        host.send("-c");
        QCOMPARE(host.code(), first);
        QCOMPARE(contentOf(first), QByteArray(".- "));
        verifyName(host.text(), other.path(), ".*__Default\\.txt");
        host.saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
        host.send(".");
        verifyName(host.code(), other.path(), ".*_MO__\\.txt");
    }

    void aFolderSpelledWithBackslashesIsUsed()
    {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("sub")));
        Recording host(dir.path() + QStringLiteral("\\sub"));
        host.send(".");
        QCOMPARE(QDir(dir.filePath("sub")).entryList({"*.txt"}).size(), 1);
        QVERIFY(host.code().contains(QLatin1String("\\sub/")));
    }

    void aNameThatIsTakenMeanwhileIsReplacedByTheNextOfItsKind()
    {
        Recording host;
        host.saveToFile->HasChanged(eCHANGE_FORCED, nullptr); // names are made, no file is open
        QVERIFY(QDir().mkdir(host.handler.*memberOf(CodeName())));
        QVERIFY(QDir().mkdir(host.handler.*memberOf(TextName())));
        host.send(".c");
        QVERIFY(host.code().endsWith(QLatin1String("_MO__.txt")));
        QVERIFY(host.text().endsWith(QLatin1String("_MO____Default.txt")));
        QCOMPARE(contentOf(host.text()), QByteArray("E"));
    }

    // Faults

    void aMissingFolderDropsWritesUntilItIsThere()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath("later");
        Recording host(folder);
        host.send(".-c");
        QCOMPARE(host.code(), QString());
        QCOMPARE(host.decoded(), QStringLiteral("A"));
        QVERIFY(QDir().mkdir(folder));
        host.send("-c");
        QCOMPARE(contentOf(host.code()), QByteArray("- "));
        QCOMPARE(contentOf(host.text()), QByteArray("T"));
    }

    void theFirstWriteAfterOneThatFailedIsInTheNewFile()
    {
        QTemporaryDir good;
        Recording host(QStringLiteral("/no/such/folder"));
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.send(".c"); // dropped: both files have a name in the missing folder now
        QCOMPARE(host.code(), QString());
        host.handler.SetSaveDirectoryPath(good.path(), MorseValues::path("TextFileName"),
                                          MorseValues::path("CodeFileName"),
                                          MorseValues::path("XmlFileName"));
        host.send("-.-n");
        QCOMPARE(contentOf(host.code()), QByteArray("-.- "));
        QCOMPARE(contentOf(host.text()),
                 QByteArray("K\n[Stop Time:  10:15:02.120]\n[Start Time:  10:15:02.120]\n"));
        verifyName(host.text(), good.path(), "\\d{8}_\\d{6}_1_MO____Default\\.txt");
    }

    void aTimeBlockAfterAFailedOpenIsInTheNewFile()
    {
        QTemporaryDir good;
        Recording host(QStringLiteral("/no/such/folder"));
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.send(".c");
        host.handler.SetSaveDirectoryPath(good.path(), MorseValues::path("TextFileName"),
                                          MorseValues::path("CodeFileName"),
                                          MorseValues::path("XmlFileName"));
        host.send("n");
        QCOMPARE(contentOf(host.text()),
                 QByteArray("\n[Stop Time:  10:15:02.120]\n[Start Time:  10:15:02.120]\n"));
    }

    void theFirstCharacterAfterAnAlphabetWithoutAPossibleNameIsSaved()
    {
        Recording host;
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        host.alphabet->AddItem(QString(300, QLatin1Char('x')), 0, 0, nullptr);
        host.alphabet->AddItem(QStringLiteral("Greek"), 1, 1, nullptr);
        host.alphabet->Select(0L, nullptr);
        host.send(".c");
        QCOMPARE(host.text(), QString());
        host.alphabet->Select(1L, nullptr);
        host.send("-c");
        verifyName(host.text(), host.directory, ".*__Greek\\.txt");
        QCOMPARE(contentOf(host.text()), QByteArray("T"));
    }

    void anAlphabetNameLosesItsSeparatorsInAFileName()
    {
        Recording host;
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        host.alphabet->AddItem(QStringLiteral("../Old\\Greek/2"), 0, 0, nullptr);
        host.alphabet->Select(0L, nullptr);
        host.send(".c");
        verifyName(host.text(), host.directory, ".*_MO____\\.\\.OldGreek2\\.txt");
        QCOMPARE(contentOf(host.text()), QByteArray("E"));
    }

    void aFolderThatIsAFileDropsWrites()
    {
        QTemporaryDir dir;
        Recording host(writeFile(dir.filePath("file"), {}));
        host.send(".-c");
        QCOMPARE(host.code(), QString());
        QCOMPARE(host.decoded(), QStringLiteral("A"));
    }

    void theDefaultFolderIsNoneOnThisPlatform()
    {
        MorseFixture host;
        QCOMPARE(host.handler.*memberOf(SaveDirectory()), QStringLiteral("C:\\Temp"));
        host.saveToFile->SetValue(true, nullptr);
        host.handler.SetMorseSaveToFile_ValuePath(MorseValues::path("SaveToFile"));
        host.handler.StartNewMorseSession();
        host.send(".-c");
        QCOMPARE(host.text->GetValue(), QStringLiteral("A"));
        QVERIFY(!QFile::exists(QStringLiteral("C:\\Temp")) && !QFile::exists(QStringLiteral("C:")));
    }

    void aFolderRemovedWhileSavingDoesNotStopTheText()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath("gone");
        QVERIFY(QDir().mkdir(folder));
        Recording host(folder);
        host.send(".-c");
        QVERIFY(QDir(folder).removeRecursively());
        host.send("-c");
        QCOMPARE(host.decoded(), QStringLiteral("T"));
        host.saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
        host.send(".c");
        QVERIFY(QDir().mkdir(folder));
        host.send("-c");
        QCOMPARE(contentOf(host.code()), QByteArray("- "));
    }

    void aDeletedFileIsWrittenOnUntilTheNextOneBegins()
    {
        Recording host;
        host.send(".-c");
        QVERIFY(QFile::remove(host.code()));
        host.send("-c");
        QVERIFY(!QFile::exists(host.code()));
        host.saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
        host.send("-c");
        QCOMPARE(contentOf(host.code()), QByteArray("- "));
    }

    void aSessionEndedByAnObserverOfAFileNameHarmsNothing()
    {
        Recording host;
        TextLog log(host.textFileName);
        log.onText = [&](const QString&) { host.handler.EndMorseSession(); };
        host.send(".-c");
        QCOMPARE(log.texts.size(), 1);
        // Nothing is written after the end; a new session goes on.
        QCOMPARE(host.files().size(), 2);
        QCOMPARE(contentOf(host.code()), QByteArray(".-"));
        log.onText = nullptr;
        host.handler.StartNewMorseSession();
        host.send("-c");
        QCOMPARE(contentOf(host.text()), QByteArray("T"));
    }

    void savingSwitchedOffByAnObserverOfAFileNameStopsTheCodeFile()
    {
        Recording host;
        TextLog log(host.textFileName);
        log.onText = [&](const QString&) { host.saveToFile->SetValue(false, nullptr); };
        host.send(".-c");
        QCOMPARE(log.texts.size(), 1);
        QCOMPARE(contentOf(host.code()), QByteArray(".-"));
        QCOMPARE(host.files().size(), 2);
    }

    void aSessionEndedByAnObserverOfTheTextWritesNothingMore()
    {
        Recording host;
        TextLog log(host.textValue());
        log.onText = [&](const QString&) { host.handler.EndMorseSession(); };
        host.send(".-c");
        QCOMPARE(host.files().size(), 1);
        QCOMPARE(contentOf(host.code()), QByteArray(".-"));
    }

    void aTimeStampWithAllBitsSetCountsAsNone()
    {
        Recording host;
        host.handler.SetTimestamp(1494584100123456ULL);
        host.handler.SetTimestamp(std::numeric_limits<unsigned long long>::max());
        host.send(".-cn");
        QCOMPARE(contentOf(host.text()), QByteArray("A"));
    }

    void aLineEndBeforeAnyTimeStampLeavesTheFilesAlone()
    {
        Recording host;
        host.send("dn");
        QVERIFY(host.files().isEmpty());
        host.send(".-n");
        QCOMPARE(contentOf(host.code()), QByteArray(".-[DOT_TOO_SHORT] "));
        QCOMPARE(contentOf(host.text()), QByteArray("A[DOT_TOO_SHORT]"));
    }

    void aClockThatStepsBackIsWrittenAsItIs()
    {
        Recording host;
        host.handler.SetTimestamp(TEN_FIFTEEN_us);
        host.handler.SetTimestamp(TEN_FIFTEEN_us - 3600000000ULL);
        host.send("n.cn");
        QCOMPARE(contentOf(host.text()),
                 QByteArray("\n[Stop Time:  10:15:02.120]\n[Start Time:  09:15:02.120]\nE"
                            "\n[Stop Time:  10:15:02.120]\n[Start Time:  09:15:02.120]\n"));
    }

    void aFullDiskThatHasRoomAgainMissesNothing()
    {
        Recording host;
        QByteArray sent;
        const auto send = [&](int count) {
            for (int i = 0; i < count; ++i) {
                host.send(".-c");
                sent += ".- ";
            }
        };
        send(50);
        {
            const FullDisk full(200);
            send(2000);
            host.saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
            send(2000);
        }
        send(1);
        QByteArray saved;
        for (const QString& name : QDir(host.directory).entryList({"*_MO__.txt"}, QDir::Files))
            saved += contentOf(host.directory + QLatin1Char('/') + name);
        saved.replace("\n", "");
        QCOMPARE(saved, sent);
    }

    void theSaveFlagSwitchedOffByAnObserverOfTheTextStopsTheFiles()
    {
        Recording host;
        TextLog log(host.textValue());
        log.onText = [&](const QString&) { host.saveToFile->SetValue(false, nullptr); };
        host.send(".-c");
        QCOMPARE(host.text(), QString());
        QCOMPARE(contentOf(host.code()), QByteArray(".-"));
    }

    void fileNameValuesAreFoundAgainByTheirPaths()
    {
        Recording host;
        delete host.codeFileName;
        host.send(".");
        host.codeFileName = host.tree.Add<TextValue>(MorseValues::path("CodeFileName"));
        host.saveToFile->HasChanged(eCHANGE_FORCED, nullptr);
        host.send("-");
        QCOMPARE(contentOf(host.code()), QByteArray("-"));
    }

    void aDestroyedHandlerLeavesCompleteFiles()
    {
        QTemporaryDir dir;
        QString code;
        {
            Recording host(dir.path());
            host.send(".-c");
            code = host.code();
        }
        QCOMPARE(contentOf(code), QByteArray(".- "));
    }
};

QTEST_GUILESS_MAIN(tst_SessionRecording)
#include "tst_sessionrecording.moc"
