// SPDX-License-Identifier: MIT
#include "tables/headerline.h"

#include "support/amounts.h"

#include <QRandomGenerator>
#include <QRegExp>
#include <QtTest>

class tst_HeaderLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nameAndValueAreTaken_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::newRow("blanks after @") << "@  TextDirection RL"
                                        << "TextDirection"
                                        << "RL";
        QTest::newRow("none after @") << "@TextDirection RL"
                                      << "TextDirection"
                                      << "RL";
        QTest::newRow("tab between") << "@a\t \tb"
                                     << "a"
                                     << "b";
        QTest::newRow("anything behind") << "@a b\tc @ d"
                                         << "a"
                                         << "b";
        QTest::newRow("value ends at no word character") << "@a b-c"
                                                         << "a"
                                                         << "b";
        QTest::newRow("underscore and digits") << "@_1 2_"
                                               << "_1"
                                               << "2_";
        QTest::newRow("letters of any script")
            << QStringLiteral("@\u0434\u0430 \u05d0\u05d1") << QStringLiteral("\u0434\u0430")
            << QStringLiteral("\u05d0\u05d1");
    }

    void nameAndValueAreTaken()
    {
        QFETCH(QString, line);
        const auto header = matchHeaderLine(line);
        QVERIFY(header);
        QTEST(header->name.toString(), "name");
        QTEST(header->value.toString(), "value");
    }

    void whatStandsBehindTheLineIsNoPartOfIt()
    {
        const QString lines = "@name\nvalue";
        QVERIFY(!matchHeaderLine(QStringView(lines).left(5)));
        const QString longer = "@name value";
        for (int length = 0; length < 7; ++length)
            QVERIFY(!matchHeaderLine(QStringView(longer).left(length)));
        QCOMPARE(matchHeaderLine(QStringView(longer).left(8))->value.toString(), "va");
    }

    void otherLinesAreNoHeaders_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("empty") << QString();
        QTest::newRow("@ alone") << "@";
        QTest::newRow("name alone") << "@ name";
        QTest::newRow("name and blank") << "@ name ";
        QTest::newRow("@ not first") << " @ name value";
        QTest::newRow("two @") << "@@ name value";
        QTest::newRow("no blank between") << "@ name:value";
        QTest::newRow("value begins with no word character") << "@ name -value";
    }

    void otherLinesAreNoHeaders()
    {
        QFETCH(QString, line);
        QVERIFY(!matchHeaderLine(line));
    }

    void onlyTheExactSpellingDeclaresRightToLeft()
    {
        const auto declares = [](const QString& line) {
            return matchHeaderLine(line)->declaresRightToLeft();
        };
        QVERIFY(declares("@ TextDirection RL"));
        QVERIFY(declares("@TextDirection RL, as Hebrew does"));
        QVERIFY(!declares("@ TextDirection rl"));
        QVERIFY(!declares("@ textDirection RL"));
        QVERIFY(!declares("@ TextDirection RLx"));
        QVERIFY(!declares("@ RL TextDirection"));
    }

    void everyCodeUnitIsOfTheClassThatTheExpressionPutsItIn()
    {
        for (uint unit = 0; unit < 0x10000; ++unit) {
            const QString c(QChar(static_cast<ushort>(unit)));
            compareWithExpression("@" + c + "a" + c + "b" + c);
            compareWithExpression("@a" + c + " " + c);
            compareWithExpression(c + "a b");
            if (QTest::currentTestFailed())
                return;
        }
    }

    void randomLinesMatchAsTheExpressionDoes()
    {
        QRandomGenerator random(20240131);
        const QString alphabet =
            QStringLiteral("@@  \t\n\r\v_aZ09.-:\u00a0\u0301\u05d0\u2028\u00b2") + QChar(0) +
            QChar(0xd83d) + QChar(0x0085);
        for (int round = 0; round < 200000; ++round) {
            QString line = round % 4 ? QStringLiteral("@") : QString();
            for (int length = random.bounded(12); length > 0; --length)
                line += alphabet[random.bounded(alphabet.size())];
            compareWithExpression(line);
            if (QTest::currentTestFailed())
                return;
        }
    }

    void aLongLineIsMatchedToo()
    {
        const int length = testsupport::largeAmount(50 * 1000 * 1000);
        const QString blanks(length, QLatin1Char(' '));
        QVERIFY(!matchHeaderLine("@" + blanks));
        const QString line = "@" + blanks + "name" + blanks + "value" + blanks;
        const auto header = matchHeaderLine(line);
        QVERIFY(header);
        QCOMPARE(header->value.toString(), "value");
    }

private:
    static void compareWithExpression(const QString& line)
    {
        static QRegExp expression(QStringLiteral("@\\s*(\\w+)\\s+(\\w+).*"));
        const bool expected = expression.exactMatch(line);
        const auto header = matchHeaderLine(line);
        QVERIFY2(header.has_value() == expected, line.toUtf8().toPercentEncoding().constData());
        if (!header)
            return;
        QCOMPARE(header->name.toString(), expression.cap(1));
        QCOMPARE(header->value.toString(), expression.cap(2));
    }
};

QTEST_APPLESS_MAIN(tst_HeaderLine)
#include "tst_headerline.moc"
