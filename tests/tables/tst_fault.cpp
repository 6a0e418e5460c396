// SPDX-License-Identifier: MIT
#include "tables/fault.h"

#include <QtTest>

class tst_Fault : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void partsOfAFileAreShownPrintable_data()
    {
        QTest::addColumn<QString>("shownAs");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* claim, const QString& shownAs, const QString& expected) {
            QTest::newRow(claim) << shownAs << expected;
        };
        row("a letter has its code point", shown(QChar('A')), "\"A\" (U+0041)");
        row("a text of one letter too", shown(QStringView(u"\u0416")),
            QStringLiteral("\"\u0416\" (U+0416)"));
        row("a control character has that alone", shown(QChar(0x1b)), "U+001B");
        row("a mark too", shown(QChar(0x301)), "U+0301");
        row("half a pair too", shown(QChar(0xd83d)), "U+D83D");
        row("a word stands in quotes", shown(QStringView(u"CQ")), "\"CQ\"");
        row("what cannot be printed is replaced", shown(QStringView(u"a\u001b[31m\nb\u202e")),
            QStringLiteral("\"a\ufffd[31m\ufffdb\ufffd\""));
        row("a long text is cut", shown(QString(41, 'x')), "\"" + QString(40, 'x') + "...\"");
        row("a text of 40 is not", shown(QString(40, 'x')), "\"" + QString(40, 'x') + "\"");
        row("nothing is two quotes", shown(QStringView()), "\"\"");
        row("a byte has its character", shown(uchar('A')), "0x41 (\"A\")");
        row("a byte that is no printable character has none", shown(uchar(0x0a)), "0x0A");
        row("the blank has none", shown(uchar(' ')), "0x20");
        row("delete has none", shown(uchar(0x7f)), "0x7F");
        row("bytes above ASCII have none", shown(uchar(0xc4)), "0xC4");
        row("a number is plain", shown(12), "12");
    }

    void partsOfAFileAreShownPrintable()
    {
        QFETCH(QString, shownAs);
        QTEST(shownAs, "expected");
    }

    void argumentsAreNotTakenForPlaceholders()
    {
        Faults faults;
        faults.Error(1, "%1 and %2 in line %3", QStringView(u"%2%3"), QStringView(u"%1x"), 7);
        QCOMPARE(faults.Take().at(0).text, "\"%2%3\" and \"%1x\" in line 7");
    }

    void faultsComeByLine()
    {
        Faults faults;
        faults.Error(3, "third");
        faults.Warning(1, "first");
        faults.Error(3, "behind third");
        faults.Error(0, "file");
        const QVector<Fault> taken = faults.Take();
        QStringList texts;
        for (const Fault& fault : taken)
            texts += fault.text;
        QCOMPARE(texts, (QStringList{"file", "first", "third", "behind third"}));
        QVERIFY(taken[1].severity == Fault::Severity::Warning);
        QVERIFY(taken[2].severity == Fault::Severity::Error);
        QVERIFY(faults.Take().isEmpty());
    }

    void theNumberOfFaultsIsBounded()
    {
        Faults faults(2);
        for (int line = 1; line <= 5; ++line) {
            QCOMPARE(faults.IsFull(), line > 2);
            faults.Error(line, "x");
        }
        const QVector<Fault> taken = faults.Take();
        QCOMPARE(taken.size(), 3);
        QCOMPARE(taken[2].text, "and 3 more findings");
        QCOMPARE(taken[2].line, 2);
    }

    void noneIsKeptWhereNoneIsAskedFor()
    {
        Faults faults(0);
        faults.Error(1, "x");
        QVERIFY(faults.IsFull());
        QVERIFY(faults.Take().isEmpty());
    }
};

QTEST_APPLESS_MAIN(tst_Fault)
#include "tst_fault.moc"
