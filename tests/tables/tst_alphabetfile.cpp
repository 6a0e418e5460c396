// SPDX-License-Identifier: MIT
#include "tables/alphabetfile.h"

#include "support/amounts.h"

#include <QTextCodec>
#include <QtTest>

using Codes = QMap<QString, QString>;

class tst_AlphabetFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entriesAreStored_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<Codes>("codes");
        const auto row = [](const char* name, const QByteArray& content, const Codes& codes) {
            QTest::newRow(name) << content << codes;
        };
        row("empty file", "", {});
        row("the last line is not stored", "A\t.-\nB\t-...", {{"A", ".-"}});
        row("nor when it ends with a line feed", "A\t.-\nB\t-...\n", {{"A", ".-"}});
        row("an empty last line saves the one before", "A\t.-\nB\t-...\n\n",
            {{"A", ".-"}, {"B", "-..."}});
        row("a spare last line of any kind does", "A\t.-\n# end", {{"A", ".-"}});
        row("one line alone is lost", "A\t.-\n", {});
        row("the line below the header is lost when it is the last", "@ a b\nA\t.-", {});
        row("a header alone", "@ a b\n", {});
        row("CR LF ends a line", "A\t.-\r\nB\t-...\r\n\r\n", {{"A", ".-"}, {"B", "-..."}});
        row("CR alone does not", "A\t.-\rB\n\n", {{"A", ".-\rB"}});
        row("text behind a second tab is ignored", "A\t.-\tas in alfa\t1\n\n", {{"A", ".-"}});
        row("also when there is no code before it", "A\t\tas in alfa\n\n", {{"A", ""}});
        row("no tab: the line is a key without code", "abc\n\n", {{"abc", ""}});
        row("a tab at the end: no code", "abc\t\n\n", {{"abc", ""}});
        row("no key: skipped", "\n\t.-\n\t\n\nA\t.-\n\n", {{"A", ".-"}});
        row("comments are entries", "# text\nA\t.-\n\n", {{"# text", ""}, {"A", ".-"}});
        row("a header below the first entry is an entry", "A\t.-\n@ a b\n\n",
            {{"A", ".-"}, {"@ a b", ""}});
        row("an empty line ends the header", "\n@ a b\n\n", {{"@ a b", ""}});
        row("a later line of the same key wins", "A\t.-\nA\t-\n\n", {{"A", "-"}});
        row("two keys may share a code", "A\t.-\na\t.-\n\n", {{"A", ".-"}, {"a", ".-"}});
        row("blanks belong to key and code", " A \t .- \n\n", {{" A ", " .- "}});
        row("words are keys", "WARNING\t.-..-\n\n", {{"WARNING", ".-..-"}});
        row("UTF-8", "\xd0\x91\t-...\n\n", {{QStringLiteral("\u0411"), "-..."}});
        row("UTF-8 with byte order mark",
            "\xef\xbb\xbf"
            "A\t.-\n\n",
            {{"A", ".-"}});
        row("invalid UTF-8 is replaced visibly", "\xff\t.-\n\n",
            {{QStringLiteral("\ufffd"), ".-"}});
        row("NUL is a character", QByteArray("A\0B\t.-\0\n\n", 10),
            {{QStringLiteral("A") + QChar(0) + "B", QStringLiteral(".-") + QChar(0)}});
    }

    void entriesAreStored()
    {
        QFETCH(QByteArray, content);
        QTEST(readAlphabetFile(content).codes, "codes");
    }

    void theLocaleDoesNotDecideHowAFileIsRead()
    {
        QTextCodec* const codec = QTextCodec::codecForLocale();
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        const Codes codes = readAlphabetFile("\xd0\x91\t-...\n\n").codes;
        QTextCodec::setCodecForLocale(codec);
        QCOMPARE(codes, Codes({{QStringLiteral("\u0411"), "-..."}}));
    }

    void theLastHeaderLineDecidesTheDirection_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("rightToLeft");
        const auto row = [](const char* name, const char* content, bool rightToLeft) {
            QTest::newRow(name) << QByteArray(content) << rightToLeft;
        };
        row("no header", "A\t.-\n\n", false);
        row("declared", "@ TextDirection RL\nA\t.-\n\n", true);
        row("declared last", "@ Version 2\n@ TextDirection RL\nA\t.-\n\n", true);
        row("another header behind", "@ TextDirection RL\n@ Version 2\nA\t.-\n\n", false);
        row("left to right behind", "@ TextDirection RL\n@ TextDirection LR\n\n", false);
        row("below the first entry it means nothing", "A\t.-\n@ TextDirection RL\n\n", false);
        row("without any entry", "@ TextDirection RL\n", true);
    }

    void theLastHeaderLineDecidesTheDirection()
    {
        QFETCH(QByteArray, content);
        QTEST(readAlphabetFile(content).rightToLeft, "rightToLeft");
    }

    void byteOrderMarksOfUtf16AreObeyed()
    {
        const QString text = QStringLiteral("@ TextDirection RL\n\u05d0\t.-\n\n");
        for (const char* name : {"UTF-16LE", "UTF-16BE", "UTF-32LE"}) {
            QTextCodec::ConverterState withMark;
            const QByteArray content =
                QTextCodec::codecForName(name)->fromUnicode(text.data(), text.size(), &withMark);
            const MorseAlphabet alphabet = readAlphabetFile(content);
            QCOMPARE(alphabet.codes, (Codes{{QStringLiteral("\u05d0"), ".-"}}));
            QVERIFY(alphabet.rightToLeft);
        }
    }

    void everyEntryKnowsItsLine()
    {
        const QByteArray content = "@ Version 2\nA\t.-\n\nB\t-...\r\nA\t.-.-\n\n";
        Faults faults;
        QCOMPARE(readAlphabetFile(content, faults).lines,
                 (QHash<QString, int>{{"A", 5}, {"B", 4}}));
        QVERIFY(readAlphabetFile(content).lines.isEmpty());
    }

    void aLineOf100MillionCharactersIsOneKey()
    {
        const int length = testsupport::largeAmount(100 * 1000 * 1000);
        const MorseAlphabet alphabet = readAlphabetFile(QByteArray(length, 'x') + "\t.-\n\n");
        QCOMPARE(alphabet.codes.size(), 1);
        QCOMPARE(alphabet.codes.firstKey().size(), length);
        QCOMPARE(alphabet.codes.first(), ".-");
    }

    void aMillionLinesAreAMillionEntries()
    {
        const int count = testsupport::largeAmount(1000 * 1000);
        QByteArray content;
        for (int i = 0; i < count; ++i)
            content += QByteArray::number(i) + "\t.-\n";
        QCOMPARE(readAlphabetFile(content + "\n").codes.size(), count);
    }

    void binaryContentIsReadToItsEnd()
    {
        QByteArray content;
        for (int i = 0; i < 100000; ++i)
            content += static_cast<char>(i * 7 + i / 256);
        const MorseAlphabet alphabet = readAlphabetFile(content + "\nA\t.-\n\n");
        QCOMPARE(alphabet.codes.value("A"), ".-");
        QVERIFY(!alphabet.rightToLeft);
    }

    void theDefaultAlphabetHoldsEachCodeOnce()
    {
        const Codes codes = defaultAlphabet();
        QCOMPARE(codes.size(), 53);
        const QStringList values = codes.values();
        QCOMPARE(QSet<QString>(values.begin(), values.end()).size(), 53);
        for (const QString& code : values)
            QVERIFY2(QString(code).remove('.').remove('-').isEmpty() && !code.isEmpty(),
                     qPrintable(code));
        QCOMPARE(codes.value("WARNING"), ".-..-");
        QCOMPARE(codes.value("ERROR"), "........");
        QCOMPARE(codes.value("\""), ".-..-.");
        QCOMPARE(codes.value("$"), "...-..-");
    }
};

QTEST_APPLESS_MAIN(tst_AlphabetFile)
#include "tst_alphabetfile.moc"
