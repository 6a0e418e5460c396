// SPDX-License-Identifier: MIT
#include "tables/tabletext.h"

#include <QtTest>

class tst_TableText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesAreReadOneByOne_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("lines");
        const auto row = [](const char* name, const QByteArray& bytes, const QStringList& lines) {
            QTest::newRow(name) << bytes << lines;
        };
        row("nothing", "", {});
        row("no line end", "a", {"a"});
        row("LF", "a\nb\n", {"a", "b"});
        row("CR LF", "a\r\nb\r\n", {"a", "b"});
        row("CR alone belongs to the line", "a\rb\nc\r", {"a\rb", "c\r"});
        row("CR CR LF", "a\r\r\n", {"a\r"});
        row("empty lines", "\n\r\n\n", {"", "", ""});
        row("NUL is a character", QByteArray("a\0b\n", 4), {QStringLiteral("a\0b")});
        row("UTF-8", "\xd0\x91\n", {QStringLiteral("\u0411")});
        row("a byte order mark is skipped",
            "\xef\xbb\xbf"
            "a\n",
            {"a"});
        row("only at the start",
            "\xef\xbb\xbf"
            "a\n\xef\xbb\xbf"
            "b",
            {"a", QStringLiteral("\ufeffb")});
        row("no UTF-8: Latin-1", "\xe4\n", {QStringLiteral("\u00e4")});
        row("from the first byte", "\xd0\x91\n\xff",
            {QStringLiteral("\u00d0\u0091"), QStringLiteral("\u00ff")});
        row("a character cut off at the end is no UTF-8", "\xd0\x91\n\xd0",
            {QStringLiteral("\u00d0\u0091"), QStringLiteral("\u00d0")});
        row("nor is an overlong form", "\xc0\xaf", {QStringLiteral("\u00c0\u00af")});
        row("nor is a surrogate", "\xed\xa0\x80", {QStringLiteral("\u00ed\u00a0\u0080")});
        row("UTF-16 is not UTF-8",
            QByteArray("\xff\xfe"
                       "a\0",
                       4),
            {QStringLiteral("\u00ff\u00fe"
                            "a\0")});
    }

    void linesAreReadOneByOne()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, lines);
        QCOMPARE(linesOf(bytes, TableEncoding::Utf8OrLatin1), lines);
    }

    void linesAreCountedFromOne()
    {
        Faults faults;
        TableText text("a\nb\r\n\nc", TableEncoding::Utf8OrLatin1, faults);
        for (const char* line : {"1a", "2b", "3", "4c"}) {
            QCOMPARE(QString::number(text.Number()) + text.Line().toString(), QLatin1String(line));
            QCOMPARE(text.AtEnd(), line[0] == '4');
            text.Next();
        }
        QVERIFY(text.Line().isEmpty());
    }

    void markedFilesAreReadByTheirMarkAndBadBytesReplaced_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("lines");
        const auto row = [](const char* name, const QByteArray& bytes, const QStringList& lines) {
            QTest::newRow(name) << bytes << lines;
        };
        row("UTF-8", "\xd0\x91\n", {QStringLiteral("\u0411")});
        row("UTF-8 with a mark",
            "\xef\xbb\xbf"
            "a\n",
            {"a"});
        row("UTF-16",
            QByteArray("\xff\xfe"
                       "a\0\n\0b\0",
                       8),
            {"a", "b"});
        row("UTF-16, the other byte first", QByteArray("\xfe\xff\0a", 4), {"a"});
        row("no UTF-8", "\xe4\na", {QStringLiteral("\ufffd"), "a"});
        row("a character cut off at the end is left out", "a\n\xd0", {"a"});
    }

    void markedFilesAreReadByTheirMarkAndBadBytesReplaced()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, lines);
        QCOMPARE(linesOf(bytes, TableEncoding::Utf8OrMarked), lines);
    }

    void numbersAreReadWhole_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("base");
        QTest::addColumn<bool>("isNumber");
        QTest::addColumn<int>("number");
        const auto row = [](const char* text, int base, bool isNumber, int number) {
            QTest::addRow("%s by %d", text, base) << text << base << isNumber << number;
        };
        row("", 0, false, 0);
        row("65", 0, true, 65);
        row("0x41", 0, true, 65);
        row("0X41", 0, true, 65);
        row("0101", 0, true, 65);
        row("089", 0, false, 0);
        row("0x", 0, false, 0);
        row("-1", 0, true, -1);
        row(" 65 ", 0, true, 65);
        row("65x", 0, false, 0);
        row("6 5", 0, false, 0);
        row("2147483648", 0, false, 0);
        row("0x80000000", 0, false, 0);
        row("41", 16, true, 65);
        row("0x41", 16, true, 65);
        row("g", 16, false, 0);
    }

    void numbersAreReadWhole()
    {
        QFETCH(QString, text);
        QFETCH(int, base);
        QFETCH(int, number);
        // In the middle of something else.
        const QString surrounded = "1" + text + "1";
        const auto read = numberIn(QStringView(surrounded).mid(1, text.size()), base);
        QTEST(read.has_value(), "isNumber");
        QCOMPARE(read.value_or(0), number);
    }

    void tenMillionDigitsAreNoNumber()
    {
        const QString digits(10 * 1000 * 1000, QLatin1Char('9'));
        QVERIFY(!numberIn(digits, 0));
        const QString zeros(10 * 1000 * 1000, QLatin1Char('0'));
        QCOMPARE(numberIn(zeros, 0).value_or(-1), 0);
    }

    void onlyTheFirst256CodeUnitsAreBytes()
    {
        for (int unit = 0; unit < 0x10000; ++unit) {
            const int byte = static_cast<uchar>(byteOf(QChar(unit)));
            QCOMPARE(byte, unit < 256 ? unit : 0);
        }
        QVERIFY(byteOf(QChar(0x80)) < 0);
    }

private:
    static QStringList linesOf(const QByteArray& bytes, TableEncoding encoding)
    {
        Faults ignored(0);
        TableText text(bytes, encoding, ignored);
        QStringList lines;
        if (!text.AtEnd() || !text.Line().isEmpty())
            lines += text.Line().toString();
        while (!text.AtEnd()) {
            text.Next();
            lines += text.Line().toString();
        }
        return lines;
    }
};

QTEST_APPLESS_MAIN(tst_TableText)
#include "tst_tabletext.moc"
