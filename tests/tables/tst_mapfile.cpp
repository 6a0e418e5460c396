// SPDX-License-Identifier: MIT
#include "tables/mapfile.h"

#include "support/tablecontent.h"

#include <QtTest>

using namespace testsupport;

class tst_MapFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entriesAreStored_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<Bytes>("bytes");
        const auto row = [](const char* name, const QByteArray& content, const Bytes& bytes) {
            QTest::newRow(name) << content << bytes;
        };
        row("nothing", "", {});
        row("numbers", "0x41\t0x05D0\n\n", {{'A', QStringLiteral("\u05d0")}});
        row("characters", "B\tx\n\n", {{'B', "x"}});
        row("the last line is not stored", "A\ta\nB\tb", {{'A', "a"}});
        row("nor when it ends with a line feed", "A\ta\nB\tb\n", {{'A', "a"}});
        row("one line alone is lost", "A\ta\n", {});
        row("the line below the header is lost when it is the last", "@ a b\nA\ta\n", {});
        row("a header alone", "@ a b\n", {});
        row("a remark saves the line before", "A\ta\n# end", {{'A', "a"}});
        row("remarks are skipped", "#A\ta\nB\tb\n#\n\n", {{'B', "b"}});
        row("a remark ends the header", "# x\n@ TextDirection RL\n\n", {{'@', " "}});
        row("an empty line that is not the last is byte 0 to a blank", "\nA\ta\n\n",
            {{0, " "}, {'A', "a"}});
        row("a decimal key", "65\ta\n\n", {{'A', "a"}});
        row("an octal key", "0101\ta\n\n", {{'A', "a"}});
        row("a digit is a number as key", "1\ta\n\n", {{1, "a"}});
        row("the low 8 bits of a key count", "0x141\ta\n-191\tb\n\n", {{'A', "b"}});
        row("a negative key", "-1\ta\n\n", {{255, "a"}});
        row("a key that is not a number is its first character", "ABC\ta\n0y\tb\n\n",
            {{'A', "a"}, {'0', "b"}});
        row("a number too large is its first character", "4294967296\ta\n\n", {{'4', "a"}});
        row("no key is byte 0", "\ta\n\n", {{0, "a"}});
        row("a key above U+00FF is byte 0", "\xd0\x90\ta\n\n", {{0, "a"}});
        row("a Latin-1 key", "\xe4\ta\n\n", {{0xe4, "a"}});
        row("no value is a blank", "A\t\nB\nC\t\t#\n\n", {{'A', " "}, {'B', " "}, {'C', " "}});
        row("blanks are a blank", "A\t      \t#UNDEFINED\n\n", {{'A', " "}});
        row("a decimal value is its first character", "A\t65\n\n", {{'A', "6"}});
        row("0X is not a number as value", "A\t0X41\n\n", {{'A', "0"}});
        row("0x without digits is not a number", "A\t0x\n\n", {{'A', "0"}});
        row("two code points are no number", "A\t0x05F2+0x05B7\n\n", {{'A', "0"}});
        row("the low 16 bits of a value count", "A\t0x10042\n\n", {{'A', "B"}});
        row("the value 0 is stored", "A\t0x0000\n\n", {{'A', QString(QChar(0))}});
        row("what follows a second tab is ignored", "A\ta\tb\tc\n\n", {{'A', "a"}});
        row("a later line wins", "A\ta\n0x41\tb\n\n", {{'A', "b"}});
        row("CR LF", "A\ta\r\n0x42\t0x62\r\n\r\n", {{'A', "a"}, {'B', "b"}});
        row("CR alone belongs to the line", "A\t0x41\rB\tb\n\n", {{'A', "0"}});
        row("NUL is a character", QByteArray("\0\ta\nB\t\0\n\n", 9),
            {{0, "a"}, {'B', QString(QChar(0))}});
        row("byte order mark",
            "\xef\xbb\xbf"
            "A\ta\n\n",
            {{'A', "a"}});
        row("byte order mark before a header", "\xef\xbb\xbf@ a b\nA\ta\n\n", {{'A', "a"}});
        row("a value beyond the BMP is its first half", "A\t\xf0\x9f\x98\x80\n\n",
            {{'A', QString(QChar(0xd83d))}});
    }

    void entriesAreStored()
    {
        QFETCH(QByteArray, content);
        QTEST(bytesOf(readMapFile(content)), "bytes");
    }

    void theLastHeaderLineDecidesTheDirection_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("rightToLeft");
        QTest::newRow("no header") << QByteArray("A\ta\n\n") << false;
        QTest::newRow("declared") << QByteArray("@TextDirection RL\nA\ta\n\n") << true;
        QTest::newRow("declared last") << QByteArray("@Version 2\n@TextDirection RL\n\n") << true;
        QTest::newRow("another header behind")
            << QByteArray("@TextDirection RL\n@Version 2\n\n") << false;
        QTest::newRow("below the first entry")
            << QByteArray("A\ta\n@TextDirection RL\n\n") << false;
        QTest::newRow("the only line") << QByteArray("@TextDirection RL") << true;
    }

    void theLastHeaderLineDecidesTheDirection()
    {
        QFETCH(QByteArray, content);
        QTEST(readMapFile(content).rightToLeft, "rightToLeft");
    }

    void hugeAndBinaryContentIsRead_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("a line of 10 MB") << QByteArray(HUGE_BYTES, 'x');
        QTest::newRow("10 MB of tabs") << QByteArray(HUGE_BYTES, '\t');
        QTest::newRow("10 MB of blanks behind @") << QByteArray("@" + QByteArray(HUGE_BYTES, ' '));
        QTest::newRow("a number of 10 MB")
            << QByteArray("0x" + QByteArray(HUGE_BYTES, '0') + "\tb");
        QTest::newRow("a million lines") << QByteArray("0x42\t0x62\n").repeated(MANY_LINES);
        QTest::newRow("a million header lines")
            << QByteArray("@ name value\n").repeated(MANY_LINES);
        QTest::newRow("binary") << binaryContent();
    }

    void hugeAndBinaryContentIsRead()
    {
        QFETCH(QByteArray, content);
        const Bytes bytes = bytesOf(readMapFile(content + "\n0x41\t0x61\n\n"));
        QCOMPARE(bytes.value('A'), "a");
    }
};

QTEST_APPLESS_MAIN(tst_MapFile)
#include "tst_mapfile.moc"
