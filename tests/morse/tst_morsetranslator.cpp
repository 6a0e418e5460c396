// SPDX-License-Identifier: MIT
#include "morse/morsetranslator.h"

#include "support/files.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

class tst_MorseTranslator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(m_dir.isValid()); }

    void symbolsOfTheDemodulatorHaveTheirStrings_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("string");
        const auto row = [](int code, const char* string) {
            QTest::addRow("%d", code) << code << string;
        };
        row(0, ".");
        row(1, "-");
        row(2, "");
        row(3, "c");
        row(4, "w");
        row(5, "\n");
        row(6, "");
        row(64, "[DOT_TOO_SHORT]");
        row(65, "[DASH_TOO_LONG]");
        row(66, "[PAUSE_TOO_SHORT]");
        row(127, "");
        // Codes are not masked here.
        row(128, "");
        row(131, "");
        row(-1, "");
        row(-128, "");
        row(65536, "");
    }

    void symbolsOfTheDemodulatorHaveTheirStrings()
    {
        QFETCH(int, code);
        MorseTranslator translator;
        QTEST(translator.DecodeSymbol(code), "string");
    }

    void noOtherCodeHasAString()
    {
        MorseTranslator translator;
        int known = 0;
        for (int code = -70000; code <= 70000; ++code)
            known += !translator.DecodeSymbol(code).isEmpty();
        QCOMPARE(known, 8);
    }

    void withoutAnAlphabetNothingIsDecoded()
    {
        MorseTranslator translator;
        QCOMPARE(translator.DecodeMorse(".-"), "");
        QCOMPARE(translator.Translate(".-c-...w.\n"), " \n");
        QVERIFY(!translator.isTextDirectionRTL());
    }

    void codesAreDecodedByTheDefaultAlphabet_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("text");
        QTest::newRow("letter") << ".-"
                                << "A";
        QTest::newRow("digit") << "-----"
                               << "0";
        QTest::newRow("punctuation") << "...-..-"
                                     << "$";
        QTest::newRow("word WARNING") << ".-..-"
                                      << "WARNING";
        QTest::newRow("word ERROR") << "........"
                                    << "ERROR";
        QTest::newRow("six dots") << "......"
                                  << "";
        QTest::newRow("no code") << ""
                                 << "";
        QTest::newRow("no Morse") << "x"
                                  << "";
    }

    void codesAreDecodedByTheDefaultAlphabet()
    {
        QFETCH(QString, code);
        MorseTranslator translator;
        translator.SetMorseAlphabet(QString());
        QTEST(translator.DecodeMorse(code), "text");
    }

    void symbolsAreTranslated_data()
    {
        QTest::addColumn<QString>("symbols");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const char* symbols, const char* text) {
            QTest::newRow(name) << symbols << text;
        };
        row("nothing", "", "");
        row("characters", "...c---c...c", "SOS");
        row("what follows the last mark is decoded", ".-w-...c", "A B");
        row("without a last mark", ".-c-...", "AB");
        row("line", ".-\n-...\n", "A\nB\n");
        row("a dash after a digit is a cut zero", ".----c-c", "10");
        row("a dash alone is T", "-c", "T");
        row("a digit counts across a word mark", ".----cw-c", "1 0");
        row("and across a line mark", ".----c\n-c", "1\n0");
        row("a digit at a word mark does not count", ".----w-c", "1 T");
        row("nor at a line mark", ".----\n-c", "1\nT");
        row("a cut zero is a digit too", ".----c-c-c", "100");
        row("only a lone dash is cut", ".----c--c-c", "1MT");
        row("a dash at a word mark is never cut", ".----c-w", "1T ");
        row("a dash at the end is never cut", ".----c-", "1T");
        row("a word is no digit", ".-..-c-c", "WARNINGT");
        row("an empty code at a mark forgets the digit", ".----cc-c", "1T");
        row("unknown code at the end", ".-.-", "");
        row("unknown code at a mark", ".-.-c.c", "E");
        row("doubled character marks", "cc", "");
        row("doubled word marks", "ww", "  ");
        row("doubled line marks", "\n\n", "\n\n");
        row("an error mark spoils its code only", ".[DOT_TOO_SHORT]-c-c", "T");
        row("marks of another set spoil a code", ".- -...c.c", "E");
        row("nine dots", ".........c", "");
    }

    void symbolsAreTranslated()
    {
        QFETCH(QString, symbols);
        QFETCH(QString, text);
        MorseTranslator translator;
        translator.SetMorseAlphabet(QString());
        QCOMPARE(translator.Translate(symbols), text);
        // Nothing is left over, and a long text gives the same as a short one.
        QCOMPARE(translator.Translate(symbols), text);
        const QString lead = QStringLiteral(".c").repeated(100);
        QCOMPARE(translator.Translate(lead + symbols), QString(100, 'E') + text);
    }

    void longTextsAreTranslatedCodeByCode()
    {
        MorseTranslator translator;
        translator.SetMorseAlphabet(QString());
        QRandomGenerator random(11);
        for (int round = 0; round < 100; ++round) {
            QString symbols;
            for (int i = 0; i < 2000; ++i)
                symbols += QStringLiteral("....----cw\nx")[random.bounded(i % 5 ? 11 : 12)];
            QString expected;
            QString code;
            bool digit = false;
            for (const QChar symbol : qAsConst(symbols)) {
                if (!QStringLiteral("cw\n").contains(symbol)) {
                    code += symbol;
                    continue;
                }
                QString text = translator.DecodeMorse(code);
                if (symbol == 'c') {
                    if (digit && code == "-")
                        text = "0";
                    digit = QStringLiteral("0123456789").contains(text) && text.size() == 1;
                }
                expected += text + (symbol == 'w' ? " " : symbol == '\n' ? "\n" : "");
                code.clear();
            }
            expected += translator.DecodeMorse(code);
            QCOMPARE(translator.Translate(symbols), expected);
        }
    }

    void aResultMayBeTranslatedAgain()
    {
        MorseTranslator translator;
        translator.SetMorseAlphabet(write("dots.mal", ".\t-\n-\t--\n\n"));
        QCOMPARE(translator.Translate(translator.Translate("--")), ".");
        QCOMPARE(translator.DecodeMorse(translator.DecodeMorse("--")), ".");
    }

    void allTranslatorsShareTheirResults()
    {
        MorseTranslator one;
        MorseTranslator other;
        one.SetMorseAlphabet(QString());
        QCOMPARE(&one.DecodeMorse("."), &other.DecodeMorse("."));
        QCOMPARE(&one.Translate("."), &other.Translate("."));
        QCOMPARE(one.DecodeMorse("."), "E");
    }

    void theStringOfAnUnknownSymbolIsTheTranslatorsOwn()
    {
        MorseTranslator one;
        MorseTranslator other;
        QVERIFY(&one.DecodeSymbol(99) == &one.DecodeSymbol(2));
        QVERIFY(&one.DecodeSymbol(99) != &other.DecodeSymbol(99));
        QVERIFY(&one.DecodeSymbol(0) == &other.DecodeSymbol(0));
    }

    void anAlphabetFileReplacesTheAlphabet()
    {
        MorseTranslator translator;
        QVERIFY(translator.SetMorseAlphabet(
            write("two.mal", "@ TextDirection RL\nA\t.-\nB\t-...\n\n")));
        QCOMPARE(translator.Translate(".-c-...c...c"), "AB");
        QVERIFY(translator.isTextDirectionRTL());
        QVERIFY(translator.SetMorseAlphabet(write("one.mal", "C\t.-\n\n")));
        QCOMPARE(translator.Translate(".-c-...c"), "C");
        QVERIFY(!translator.isTextDirectionRTL());
    }

    void theRightToLeftHeaderOfAFileWithoutSpareLineStands()
    {
        MorseTranslator translator;
        QVERIFY(
            translator.SetMorseAlphabet(write("lost.mal", "@ TextDirection RL\nA\t.-\nB\t-...")));
        QVERIFY(translator.isTextDirectionRTL());
        QCOMPARE(translator.Translate(".-c-...c"), "A");
    }

    void aFileWithoutEntriesLeavesAnEmptyAlphabet()
    {
        MorseTranslator translator;
        translator.SetMorseAlphabet(QString());
        QVERIFY(translator.SetMorseAlphabet(write("empty.mal", "")));
        QCOMPARE(translator.DecodeMorse("."), "");
    }

    void ofTwoTextsWithOneCodeTheFirstInOrderWins()
    {
        MorseTranslator translator;
        translator.SetMorseAlphabet(write("shared.mal", "a\t.-\nA\t.-\n1\t.-\nB\t-\n,\t-\n\n"));
        QCOMPARE(translator.DecodeMorse(".-"), "1");
        QCOMPARE(translator.DecodeMorse("-"), ",");
        QCOMPARE(translator.Translate(QStringLiteral(".-w").repeated(50)),
                 QStringLiteral("1 ").repeated(50));
    }

    void anEntryWithoutCodeIsWhatAnEmptyCodeDecodesTo()
    {
        MorseTranslator translator;
        translator.SetMorseAlphabet(write("remark.mal", "# text\nA\t.-\n\n"));
        QCOMPARE(translator.DecodeMorse(QString()), "# text");
        QCOMPARE(translator.Translate(".-cc"), "A# text");
        QCOMPARE(translator.Translate("w"), "# text ");
        QCOMPARE(translator.Translate(".-"), "A");
    }

    void whatCannotBeReadLoadsTheDefaultAlphabet_data()
    {
        QTest::addColumn<QString>("path");
        QDir(m_dir.path()).mkdir("folder.mal");
        ::mkfifo(QFile::encodeName(m_dir.filePath("pipe.mal")).constData(), 0600);
        QFile::link(m_dir.filePath("loop.mal"), m_dir.filePath("loop.mal"));
        QTest::newRow("no path") << QString();
        QTest::newRow("missing") << m_dir.filePath("missing.mal");
        QTest::newRow("folder") << m_dir.filePath("folder.mal");
        QTest::newRow("pipe") << m_dir.filePath("pipe.mal");
        QTest::newRow("device") << "/dev/zero";
        QTest::newRow("link to itself") << m_dir.filePath("loop.mal");
    }

    void whatCannotBeReadLoadsTheDefaultAlphabet()
    {
        QFETCH(QString, path);
        MorseTranslator translator;
        QVERIFY(translator.SetMorseAlphabet(write("other.mal", "x\t.-\n\n")));
        QVERIFY(!translator.SetMorseAlphabet(path));
        QCOMPARE(translator.DecodeMorse(".-"), "A");
    }

    void theDefaultAlphabetIsTheWholeTable_data()
    {
        QTest::addColumn<QString>("code");
        const char* const rows[][2] = {
            {"A", ".-"},          {"B", "-..."},    {"C", "-.-."},    {"D", "-.."},
            {"E", "."},           {"F", "..-."},    {"G", "--."},     {"H", "...."},
            {"I", ".."},          {"J", ".---"},    {"K", "-.-"},     {"L", ".-.."},
            {"M", "--"},          {"N", "-."},      {"O", "---"},     {"P", ".--."},
            {"Q", "--.-"},        {"R", ".-."},     {"S", "..."},     {"T", "-"},
            {"U", "..-"},         {"V", "...-"},    {"W", ".--"},     {"X", "-..-"},
            {"Y", "-.--"},        {"Z", "--.."},    {"1", ".----"},   {"2", "..---"},
            {"3", "...--"},       {"4", "....-"},   {"5", "....."},   {"6", "-...."},
            {"7", "--..."},       {"8", "---.."},   {"9", "----."},   {"0", "-----"},
            {".", ".-.-.-"},      {",", "--..--"},  {"/", "-..-."},   {"+", ".-.-."},
            {"=", "-...-"},       {"?", "..--.."},  {"(", "-.--."},   {")", "-.--.-"},
            {"-", "-....-"},      {"\"", ".-..-."}, {"_", "..--.-"},  {"'", ".----."},
            {":", "---..."},      {";", "-.-.-."},  {"$", "...-..-"}, {"WARNING", ".-..-"},
            {"ERROR", "........"}};
        for (const auto& row : rows)
            QTest::newRow(row[0]) << row[1];
    }

    void theDefaultAlphabetIsTheWholeTable()
    {
        QFETCH(QString, code);
        MorseTranslator translator;
        translator.SetMorseAlphabet(QString());
        QCOMPARE(translator.DecodeMorse(code), QString(QTest::currentDataTag()));
    }

    void theDefaultAlphabetKeepsTheDirection()
    {
        MorseTranslator translator;
        translator.SetMorseAlphabet(write("rtl.mal", "@ TextDirection RL\nA\t.-\n\n"));
        QVERIFY(!translator.SetMorseAlphabet(QString()));
        QVERIFY(translator.isTextDirectionRTL());
    }

    void aFileIsFoundUnderThePathOfTheHost()
    {
        write("Greek.mal", "G\t.-\n\n");
        MorseTranslator translator;
        QVERIFY(translator.SetMorseAlphabet(m_dir.path() + "\\GREEK.mal"));
        QCOMPARE(translator.DecodeMorse(".-"), "G");
    }

    void aCopyHasTheAlphabetAndTheDirection()
    {
        MorseTranslator original;
        original.SetMorseAlphabet(write("copy.mal", "@ TextDirection RL\nA\t.-\n\n"));
        MorseTranslator copy(original);
        MorseTranslator assigned;
        assigned = original;
        original.SetMorseAlphabet(write("later.mal", "B\t.-\n\n"));
        QCOMPARE(copy.DecodeMorse(".-"), "A");
        QCOMPARE(assigned.DecodeMorse(".-"), "A");
        QVERIFY(copy.isTextDirectionRTL() && assigned.isTextDirectionRTL());
    }

    void aTranslatorAssignedToItselfLosesItsAlphabet()
    {
        MorseTranslator translator;
        translator.SetMorseAlphabet(write("self.mal", "@ TextDirection RL\nA\t.-\n\n"));
        MorseTranslator& same = translator;
        translator = same;
        QCOMPARE(translator.DecodeMorse(".-"), "");
        QVERIFY(translator.isTextDirectionRTL());
    }

private:
    QString write(const QString& name, const QByteArray& content)
    {
        return writeFile(m_dir.filePath(name), content);
    }

    QTemporaryDir m_dir;
};

QTEST_APPLESS_MAIN(tst_MorseTranslator)
#include "tst_morsetranslator.moc"
