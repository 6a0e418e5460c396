// SPDX-License-Identifier: MIT
#include "tables/codecfile.h"

#include "support/tablecontent.h"

#include <QRandomGenerator>
#include <QRegExp>
#include <QtTest>

using namespace testsupport;

class tst_CodecFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entriesAreStored_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<Bytes>("bytes");
        const auto row = [](const char* name, const QByteArray& content, const Bytes& bytes) {
            QTest::newRow(name) << QByteArray("title\n\n" + content) << bytes;
        };
        row("nothing", "", {});
        row("a number", "A;0x0410\n", {{'A', QStringLiteral("\u0410")}});
        row("the last line without its end", "A;0x0410", {{'A', QStringLiteral("\u0410")}});
        row("no value is a blank", "B;\n", {{'B', " "}});
        row("a number without 0x is skipped", "C;41\n", {});
        row("0X is not 0x", "C;0X41\n", {});
        row("the value 0 is not stored", "D;0x0\n", {});
        row("nor does it remove", "D;0x41\nD;0x0\n", {{'D', "A"}});
        row("no number is skipped", "D;x\nE;0xg\nF; \n", {});
        row("a blank before the number", "D; 0x41\n", {});
        row("a blank behind the number", "D;0x41 \n", {{'D', "A"}});
        row("a remark behind the number", "D;0x41 A\n", {});
        row("the low 16 bits count", "D;0x10041\n", {{'D', "A"}});
        row("they may be 0", "D;0x10000\n", {});
        row("a number beyond 31 bits is none", "D;0x80000000\n", {});
        row("a later line wins", "A;0x41\nA;0x42\n", {{'A', "B"}});
        row("lines of another shape are skipped", "\nA\n;\nAB;0x41\n;0x41\n A;0x41\n", {});
        row("the separator as key", ";;0x41\n", {{';', "A"}});
        row("CR LF", "A;0x41\r\nB;\r\n", {{'A', "A"}, {'B', " "}});
        row("CR alone belongs to the value", "B;\r", {});
        row("a CR as key", "\r;0x41\n", {{'\r', "A"}});
        row("NUL as key", QByteArray("\0;0x41\n", 7), {{0, "A"}});
        row("UTF-8 key up to U+00FF", "\xc3\xa4;0x41\n", {{0xe4, "A"}});
        row("Latin-1 key", "\xe4;0x41\n", {{0xe4, "A"}});
        row("a key above U+00FF is 0", "\xd0\x90;0x41\n", {{0, "A"}});
        row("a key beyond the BMP is none", "\xf0\x9f\x98\x80;0x41\n", {});
    }

    void entriesAreStored()
    {
        QFETCH(QByteArray, content);
        QTEST(bytesOf(readCodecFile(content)), "bytes");
    }

    void theFirstTwoLinesAreNoEntries()
    {
        QCOMPARE(bytesOf(readCodecFile("A;0x41\nB;0x42\nC;0x43\n")), (Bytes{{'C', "C"}}));
        QVERIFY(readCodecFile("").characters.isEmpty());
        QVERIFY(readCodecFile("A;0x41").characters.isEmpty());
        QVERIFY(readCodecFile("A;0x41\nB;0x42").characters.isEmpty());
    }

    void theSecondLineDeclaresTheDirection_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("rightToLeft");
        QTest::newRow("declared") << QByteArray("x\nRL\n") << true;
        QTest::newRow("last line") << QByteArray("x\nRL") << true;
        QTest::newRow("begins with it") << QByteArray("x\nRLx\n") << true;
        QTest::newRow("CR LF") << QByteArray("x\r\nRL\r\n") << true;
        QTest::newRow("lower case") << QByteArray("x\nrl\n") << false;
        QTest::newRow("after a blank") << QByteArray("x\n RL\n") << false;
        QTest::newRow("first line") << QByteArray("RL\nx\n") << false;
        QTest::newRow("third line") << QByteArray("x\n\nRL\n") << false;
        QTest::newRow("one line") << QByteArray("RL") << false;
        QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbfx\nRL\n") << true;
    }

    void theSecondLineDeclaresTheDirection()
    {
        QFETCH(QByteArray, content);
        QTEST(readCodecFile(content).rightToLeft, "rightToLeft");
    }

    void randomLinesAreEntriesAsTheExpressionSays()
    {
        QRegExp expression(QStringLiteral("(.);(.*)"));
        QRandomGenerator random(5);
        for (int round = 0; round < 50000; ++round) {
            QString line;
            for (int length = random.bounded(10); length > 0; --length)
                line += QStringLiteral(";;;A\r 0x41\u00e4")[random.bounded(11)];
            line += 'x'; // a carriage return at the end would be a part of the line end
            if (random.bounded(4))
                line.remove(QRegExp("\r*x$"));
            const bool matches = expression.exactMatch(line);
            bool isNumber = false;
            const int number = expression.cap(2).toInt(&isNumber, 16);
            Bytes expected;
            if (matches && isNumber && expression.cap(2).startsWith("0x") && number)
                expected.insert(expression.cap(1)[0].unicode(), QChar(number));
            else if (matches && expression.cap(2).isEmpty())
                expected.insert(expression.cap(1)[0].unicode(), " ");
            const QByteArray content = "\n\n" + line.toUtf8() + "\n";
            if (bytesOf(readCodecFile(content)) != expected)
                QFAIL(content.toPercentEncoding().constData());
        }
    }

    void hugeAndBinaryContentIsRead_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("a line of 10 MB") << QByteArray(HUGE_BYTES, 'x');
        QTest::newRow("a number of 10 MB") << QByteArray("B;0x" + QByteArray(HUGE_BYTES, '1'));
        QTest::newRow("a million lines") << QByteArray("B;0x42\n").repeated(MANY_LINES);
        QTest::newRow("binary") << binaryContent();
    }

    void hugeAndBinaryContentIsRead()
    {
        QFETCH(QByteArray, content);
        const Bytes bytes = bytesOf(readCodecFile("\n\n" + content + "\nA;0x41\n"));
        QCOMPARE(bytes.value('A'), "A");
    }
};

QTEST_APPLESS_MAIN(tst_CodecFile)
#include "tst_codecfile.moc"
