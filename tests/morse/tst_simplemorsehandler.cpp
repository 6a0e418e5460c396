// SPDX-License-Identifier: MIT
#include "morse/simplemorsehandler.h"
#include "support/files.h"
#include "support/privatemember.h"
#include "tables/alphabetfile.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

PRIVATE_MEMBER(ConvertOneChar, SimpleMorseHandler, ConvertOneChar,
               QString (SimpleMorseHandler::*)(const QString&));
PRIVATE_MEMBER(Decoder, SimpleMorseHandler, m_decoder, QString SimpleMorseHandler::*);
PRIVATE_MEMBER(ReadDefaultAlphabet, SimpleMorseHandler, readDefaultAlphabet,
               void (SimpleMorseHandler::*)());
PRIVATE_MEMBER(FileToCodecName, SimpleMorseHandler, fileToCodecName,
               QString (SimpleMorseHandler::*)(const QString&));
PRIVATE_MEMBER(CodecNameToFile, SimpleMorseHandler, codecNameToFile,
               QString (SimpleMorseHandler::*)(const QString&));

namespace {

const QString ERROR_MARK = QStringLiteral("[PAUSE TO SHORT]");

/// The translation step by step, as slow as it is plain.
QString translateStepByStep(const QMap<QString, QString>& codes, QString& pending, bool& digit,
                            const QString& symbols)
{
    pending += symbols;
    QString text;
    QString code;
    QString sinceLastGap = pending;
    const auto convert = [&] {
        if (code.isEmpty())
            return QString();
        const QString one = digit && code == "-" ? QStringLiteral("0") : codes.key(code);
        digit = one.contains(QRegExp(QStringLiteral("^[0-9]$")));
        code.clear();
        return one;
    };
    while (pending.contains(' ') || pending.contains('\t') || pending.contains('\n')) {
        if (pending.startsWith('.') || pending.startsWith('-')) {
            code += pending[0];
            pending.remove(0, 1);
        } else if (pending.startsWith(ERROR_MARK)) {
            pending.remove(0, ERROR_MARK.size());
        } else if (pending.startsWith(' ') || pending.startsWith('\t') ||
                   pending.startsWith('\n')) {
            const QChar gap = pending[0];
            text += convert();
            if (gap != ' ')
                text += gap == '\t' ? ' ' : '\n';
            pending.remove(0, 1);
            sinceLastGap = pending;
        } else if (ERROR_MARK.startsWith(pending)) {
            pending = sinceLastGap;
            break;
        } else {
            pending.remove(0, 1);
        }
    }
    return text;
}

} // namespace

class tst_SimpleMorseHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QByteArray content;
        const QMap<QString, QString> codes = defaultAlphabet();
        for (auto entry = codes.cbegin(); entry != codes.cend(); ++entry)
            content += (entry.key() + "\t" + entry.value() + "\n").toUtf8();
        write("International.mal", content + "\n");
    }

    void theSymbolStringsAreWhatTheHostExpects()
    {
        QCOMPARE(SimpleMorseHandler::DOT, ".");
        QCOMPARE(SimpleMorseHandler::DASH, "-");
        QCOMPARE(SimpleMorseHandler::NEW_CHAR, " ");
        QCOMPARE(SimpleMorseHandler::NEW_WORD, "\t");
        QCOMPARE(SimpleMorseHandler::NEW_LINE, "\n");
        QCOMPARE(SimpleMorseHandler::DOT_TOO_SHORT, ERROR_MARK);
        QCOMPARE(SimpleMorseHandler::DASH_TOO_LONG, ERROR_MARK);
        QCOMPARE(SimpleMorseHandler::PAUSE_TOO_SHORT, ERROR_MARK);
        QCOMPARE(SimpleMorseHandler::UNKNOWN, "[UNKNOWN]");
    }

    void theLowSevenBitsOfACodeGiveItsString()
    {
        const QMap<int, QString> strings{{0, "."},         {1, "-"},        {3, " "},
                                         {4, "\t"},        {5, "\n"},       {64, ERROR_MARK},
                                         {65, ERROR_MARK}, {66, ERROR_MARK}};
        for (int code = -32768; code <= 32767; ++code) {
            const QString expected = strings.value(code & 127);
            if (SimpleMorseHandler::ConvertSymbol(static_cast<short>(code)) != expected)
                QFAIL(qPrintable(QString::number(code)));
        }
        QCOMPARE(SimpleMorseHandler::ConvertSymbol(131), " ");
        QCOMPARE(SimpleMorseHandler::ConvertSymbol(-128), ".");
        QCOMPARE(SimpleMorseHandler::ConvertSymbol(130), "");
        QCOMPARE(SimpleMorseHandler::ConvertSymbol(255), "");
    }

    void codesAreConvertedInTheirOrder_data()
    {
        QTest::addColumn<QVector<short>>("codes");
        QTest::addColumn<QString>("symbols");
        QTest::newRow("none") << QVector<short>() << "";
        QTest::newRow("all gaps") << QVector<short>{0, 1, 3, 1, 0, 4, 0, 5} << ".- -.\t.\n";
        QTest::newRow("error mark") << QVector<short>{0, 64, 1} << ".[PAUSE TO SHORT]-";
        QTest::newRow("unknown codes") << QVector<short>{2, 0, 127, 6} << ".";
    }

    void codesAreConvertedInTheirOrder()
    {
        QFETCH(QVector<short>, codes);
        QTEST(SimpleMorseHandler::ConvertSymbols(codes), "symbols");
    }

    void aNewHandlerPassesTextThrough()
    {
        SimpleMorseHandler handler;
        QCOMPARE(handler.Alphabet(), "None");
        QVERIFY(!handler.TextDirectionRTL());
        QCOMPARE(handler.Translate(".- x"), ".- x");
        QCOMPARE(handler.Backtranslate("A"), "");
    }

    void nothingIsTranslatedBackWithAnAlphabetEither()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("Test.mal"), "A\t.-\n\n");
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(dir.path());
        QVERIFY(handler.SetAlphabet("Test"));
        QCOMPARE(handler.Translate(".- "), "A");
        QCOMPARE(handler.Backtranslate("A"), "");
    }

    void piecesAreTranslatedWhenTheirGapArrives_data()
    {
        QTest::addColumn<QStringList>("pieces");
        QTest::addColumn<QStringList>("texts");
        const auto row = [](const char* name, const QStringList& pieces, const QStringList& texts) {
            QTest::newRow(name) << pieces << texts;
        };
        row("nothing", {""}, {""});
        row("a code waits for its gap", {"...", " --- ... "}, {"", "SOS"});
        row("word", {".-\t-... "}, {"A B"});
        row("line", {".-\n-...\n"}, {"A\nB\n"});
        row("what follows the last gap waits", {".- -", "... "}, {"A", "B"});
        row("a gap alone", {" ", "\t", "\n"}, {"", " ", "\n"});
        row("a dash after a digit is a cut zero", {".---- - "}, {"10"});
        row("in the next call as well", {".---- ", "- ", "- "}, {"1", "0", "0"});
        row("a digit counts at every gap", {".----\t-\t", ".----\n-\n"}, {"1 0 ", "1\n0\n"});
        row("a doubled gap keeps the digit", {".----  - "}, {"10"});
        row("an unknown code forgets the digit", {".---- .-.-. ......... - "}, {"1+T"});
        row("an error mark is dropped", {".[PAUSE TO SHORT]- "}, {"A"});
        row("several error marks", {".[PAUSE TO SHORT][PAUSE TO SHORT]-[PAUSE TO SHORT] "}, {"A"});
        row("an error mark at the end takes its code along", {".-[PAUSE TO SHORT]", "- "},
            {"", "T"});
        row("but not what was translated", {". .-[PAUSE TO SHORT]", "- "}, {"E", "T"});
        row("symbols behind that error mark wait", {".-[PAUSE TO SHORT]-", ". "}, {"", "N"});
        row("an error mark may be cut", {".-[PAUSE TO SH", "ORT].. "}, {"", "L"});
        row("cut before its first blank", {".-[PAU", "SE TO SHORT].. "}, {"", "L"});
        row("cut anywhere", {".", "[PAUSE", " ", "TO", " ", "SHORT", "]", "- "},
            {"", "", "", "", "", "", "", "T"});
        row("cut behind a translated character", {". -[PAUSE TO SHORT].[PAUSE TO ", "SHORT]. "},
            {"E", "D"});
        row("what only looked like an error mark is dropped", {".[PAUSE TO ", "- "}, {"", "ET"});
        row("no symbols are dropped", {".x-y z "}, {"A"});
        row("the text of an unknown symbol too", {".[UNKNOWN]- "}, {"A"});
        row("marks of another set too", {".c-w "}, {"A"});
        row("no symbols wait like others", {"xyz", " . "}, {"", "E"});
    }

    void piecesAreTranslatedWhenTheirGapArrives()
    {
        QFETCH(QStringList, pieces);
        SimpleMorseHandler handler;
        load(handler, "International");
        QStringList texts;
        for (const QString& piece : qAsConst(pieces))
            texts += handler.Translate(piece);
        QTEST(texts, "texts");
    }

    void randomPiecesAreTranslatedAsStepByStep()
    {
        const QMap<QString, QString> codes = defaultAlphabet();
        const QStringList strings{".",        "-",         ".",       "-",     " ", "\t", "\n",
                                  ERROR_MARK, "[PAUSE TO", " SHORT]", "-----", "x", "[",  " "};
        QRandomGenerator random(3);
        for (int round = 0; round < 300; ++round) {
            SimpleMorseHandler handler;
            load(handler, "International");
            QString pending;
            bool digit = false;
            for (int call = 0; call < 20; ++call) {
                QString piece;
                for (int i = random.bounded(round % 2 ? 6 : 120); i > 0; --i)
                    piece += strings[random.bounded(strings.size())];
                // Cut anywhere.
                piece.chop(random.bounded(4));
                QCOMPARE(handler.Translate(piece),
                         translateStepByStep(codes, pending, digit, piece));
            }
        }
    }

    void aMillionSinglePiecesWithoutAGapTakeNoLongerThanOne()
    {
        // Would not end in a day if every call searched everything that waits.
        SimpleMorseHandler handler;
        load(handler, "International");
        for (int i = 0; i < 1000 * 1000; ++i)
            QVERIFY(handler.Translate(".").isEmpty());
        for (const QChar symbol : ERROR_MARK)
            QVERIFY(handler.Translate(QString(symbol)).isEmpty());
        QCOMPARE(handler.Translate("- "), "T");
    }

    void resettingForgetsWhatWaitsAndTheDigit()
    {
        SimpleMorseHandler handler;
        load(handler, "International");
        QCOMPARE(handler.Translate(".---- ..."), "1");
        handler.ResetInternalState();
        QCOMPARE(handler.Translate("- "), "T");
    }

    void anotherAlphabetStartsAgain()
    {
        SimpleMorseHandler handler;
        load(handler, "International");
        handler.Translate(".---- ...");
        QVERIFY(handler.SetAlphabet("International"));
        QCOMPARE(handler.Translate("- "), "T");
    }

    void theAlphabetsOfTheFolderAreListed()
    {
        QTemporaryDir dir;
        for (const char* name : {"Latin.mal", "extra.MAL", "notes.txt", "Cyrillic.old.mal",
                                 "Cyrillic.mal", ".hidden.mal", "mal"})
            writeFile(dir.filePath(name), "");
        QDir(dir.path()).mkdir("folder.mal");
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(dir.path());
        QCOMPARE(handler.AvailableAlphabets(),
                 (QStringList{"None", "Cyrillic", "Cyrillic", "extra", "Latin"}));
        handler.SetAlphabetsDir(dir.path() + "\\folder.mal");
        QCOMPARE(handler.AvailableAlphabets(), QStringList{"None"});
    }

    void namesThatDifferInLetterCaseOnlyAreListedInAscendingOrder()
    {
        QTemporaryDir dir;
        for (const char* name : {"latin.mal", "LATIN.mal", "Latin.mal", "b.mal", "A.mal"})
            writeFile(dir.filePath(name), "");
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(dir.path());
        QCOMPARE(handler.AvailableAlphabets(),
                 (QStringList{"None", "A", "b", "LATIN", "Latin", "latin"}));
    }

    void hiddenAlphabetsAreFoundInAnyLetterCaseAndNotListed()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath(".Secret.mal"), "A\t.-\n\n");
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(dir.path());
        QCOMPARE(handler.AvailableAlphabets(), QStringList{"None"});
        QVERIFY(handler.SetAlphabet(".secret"));
        QCOMPARE(handler.Translate(".- "), "A");
    }

    void theEmptyFolderNameListsNothing()
    {
        const QString before = QDir::currentPath();
        QTemporaryDir dir;
        writeFile(dir.filePath("Here.mal"), "A\t.-\n\n");
        QVERIFY(QDir::setCurrent(dir.path()));
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(QString());
        const QStringList names = handler.AvailableAlphabets();
        QDir::setCurrent(before);
        QCOMPARE(names, QStringList{"None"});
    }

    void aMissingFolderHoldsNoAlphabets()
    {
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(m_dir.filePath("missing"));
        QCOMPARE(handler.AvailableAlphabets(), QStringList{"None"});
        QVERIFY(!handler.SetAlphabet("International"));
    }

    void noneIsTheEmptyAlphabetInAnyLetterCase()
    {
        SimpleMorseHandler handler;
        load(handler, "International");
        for (const char* name : {"None", "NONE", "none"}) {
            QVERIFY(handler.SetAlphabet(name));
            QCOMPARE(handler.Alphabet(), "None");
            QCOMPARE(handler.Translate(".- "), ".- ");
        }
    }

    void aMissingAlphabetKeepsItsNameAndPassesTextThrough_data()
    {
        QTest::addColumn<QString>("name");
        QDir(m_dir.path()).mkdir("folder.mal");
        ::mkfifo(QFile::encodeName(m_dir.filePath("pipe.mal")).constData(), 0600);
        QFile::link(m_dir.filePath("loop.mal"), m_dir.filePath("loop.mal"));
        QDir(m_dir.path()).mkdir("sub");
        write("sub/inner.mal", "A\t.-\n\n");
        QTest::newRow("missing") << "Missing";
        QTest::newRow("empty name") << QString();
        QTest::newRow("with its suffix") << "International.mal";
        QTest::newRow("folder") << "folder";
        QTest::newRow("pipe") << "pipe";
        QTest::newRow("link to itself") << "loop";
        QTest::newRow("a path is no name") << "sub/inner";
        QTest::newRow("nor with backslashes") << "sub\\inner";
    }

    void aMissingAlphabetKeepsItsNameAndPassesTextThrough()
    {
        QFETCH(QString, name);
        SimpleMorseHandler handler;
        load(handler, "International");
        QVERIFY(!handler.SetAlphabet(name));
        QCOMPARE(handler.Alphabet(), name);
        QCOMPARE(handler.Translate(".- "), ".- ");
    }

    void anUnknownNameReadsAFileCalledNone()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("None"), "X\t.-\n\n");
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(dir.path());
        QVERIFY(handler.SetAlphabet("Missing"));
        QCOMPARE(handler.Translate(".- "), "X");
        QVERIFY(handler.SetAlphabet("None"));
        QCOMPARE(handler.Translate(".- "), ".- ");
    }

    void aFileIsFoundInAnyLetterCase()
    {
        SimpleMorseHandler handler;
        load(handler, "INTERNATIONAL");
        QCOMPARE(handler.Alphabet(), "INTERNATIONAL");
        QCOMPARE(handler.Translate(".- "), "A");
    }

    void aFileWithoutEntriesIsLoadedAndPassesTextThrough()
    {
        write("empty.mal", "@ TextDirection RL\n");
        SimpleMorseHandler handler;
        load(handler, "empty");
        QVERIFY(handler.TextDirectionRTL());
        QCOMPARE(handler.Translate(".- "), ".- ");
    }

    void theDirectionIsThatOfTheCurrentAlphabet()
    {
        write("Hebrew.mal", QByteArray("@ TextDirection RL\n\xd7\x90\t.-\n\n"));
        SimpleMorseHandler handler;
        load(handler, "Hebrew");
        QVERIFY(handler.TextDirectionRTL());
        QCOMPARE(handler.Translate(".- "), QStringLiteral("\u05d0"));
        QVERIFY(!handler.SetAlphabet("Missing"));
        QVERIFY(!handler.TextDirectionRTL());
    }

    void anEntryWithoutACodeIsNeverWritten()
    {
        write("remark.mal", "# remark\nA\t.-\n\n");
        SimpleMorseHandler handler;
        load(handler, "remark");
        QCOMPARE(handler.Translate(" .-  "), "A");
    }

    void aDigitIsOneOfTheTenAsciiDigits()
    {
        write("digits.mal", QByteArray("12\t.\n\xd9\xa1\t..\n7\t...\nT\t-\n\n"));
        SimpleMorseHandler handler;
        load(handler, "digits");
        QCOMPARE(handler.Translate(". - "), "12T");
        QCOMPARE(handler.Translate(".. - "), QStringLiteral("\u0661T"));
        QCOMPARE(handler.Translate("... - "), "70");
    }

    void theDefaultAlphabetIsThere()
    {
        SimpleMorseHandler handler;
        (handler.*memberOf(ReadDefaultAlphabet()))();
        const QMap<QString, QString> codes = defaultAlphabet();
        for (auto entry = codes.cbegin(); entry != codes.cend(); ++entry) {
            handler.ResetInternalState();
            QCOMPARE(handler.Translate(entry.value() + " "), entry.key());
        }
    }

    void oneCharacterIsConvertedByTheSameRules()
    {
        SimpleMorseHandler handler;
        load(handler, "International");
        const auto convert = [&](const char* code) {
            return (handler.*memberOf(ConvertOneChar()))(code);
        };
        QCOMPARE(convert("-"), "T");
        QCOMPARE(convert(".----"), "1");
        QCOMPARE(convert(""), "");
        QCOMPARE(convert("-"), "0");
        QCOMPARE(convert("--"), "M");
        QCOMPARE(convert("-"), "T");
        QCOMPARE(convert("x"), "");
    }

    void namesAndFilesBelongTogether()
    {
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(m_dir.path());
        const auto nameOf = [&](const char* file) {
            return (handler.*memberOf(FileToCodecName()))(file);
        };
        const auto fileOf = [&](const char* name) {
            return (handler.*memberOf(CodecNameToFile()))(name);
        };
        QCOMPARE(nameOf("Cyrillic.old.mal"), "Cyrillic");
        QCOMPARE(nameOf("extra.MAL"), "extra");
        QCOMPARE(nameOf("notes.txt"), "None");
        QCOMPARE(nameOf("mal"), "None");
        QCOMPARE(fileOf("International"), "International.mal");
        // The name as it is composed, whatever the spelling on disk.
        QCOMPARE(fileOf("INTERNATIONAL"), "INTERNATIONAL.mal");
        QCOMPARE(fileOf("Missing"), "None");
    }

    void aCopyGoesOnByItself()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("Copy.mal"), "@ TextDirection RL\n1\t.----\nT\t-\n\n");
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(dir.path());
        QVERIFY(handler.SetAlphabet("Copy"));
        handler.*memberOf(Decoder()) = "reserved";
        handler.Translate(".---- -");
        SimpleMorseHandler copy(handler);
        SimpleMorseHandler assigned;
        assigned = handler;
        handler.ResetInternalState();
        QCOMPARE(handler.Translate("- "), "T");
        for (SimpleMorseHandler* const other : {&copy, &assigned}) {
            QCOMPARE(other->Alphabet(), "Copy");
            QCOMPARE(other->AvailableAlphabets(), (QStringList{"None", "Copy"}));
            QVERIFY(other->TextDirectionRTL());
            QCOMPARE(other->*memberOf(Decoder()), "reserved");
            QCOMPARE(other->Translate(" "), "0"); // a dash was pending behind a digit
        }
    }

    void aSubclassHearsThatItsStateIsReset()
    {
        struct Subclass : SimpleMorseHandler
        {
            void ResetInternalState() override { ++resets; }
            int resets = 0;
        } handler;
        handler.SetAlphabet("None");
        QCOMPARE(handler.resets, 1);
    }

    void theDecoderMakesNoDifference()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("Own.mal"), "\nX\t.-\n");
        SimpleMorseHandler handler;
        handler.SetAlphabetsDir(dir.path());
        QVERIFY(handler.SetAlphabet("Own"));
        const QStringList offered = handler.AvailableAlphabets();
        handler.SetDecoder("Teletype");
        QCOMPARE(handler.Alphabet(), "Own");
        QCOMPARE(handler.AvailableAlphabets(), offered);
        QVERIFY(handler.SetAlphabet("Own"));
    }

private:
    void load(SimpleMorseHandler& handler, const QString& alphabet)
    {
        handler.SetAlphabetsDir(m_dir.path());
        QVERIFY(handler.SetAlphabet(alphabet));
    }

    void write(const QString& name, const QByteArray& content)
    {
        writeFile(m_dir.filePath(name), content);
    }

    QTemporaryDir m_dir;
};

QTEST_APPLESS_MAIN(tst_SimpleMorseHandler)
#include "tst_simplemorsehandler.moc"
