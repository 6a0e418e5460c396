// SPDX-License-Identifier: MIT
#include "tables/decodermodulesfile.h"

#include "support/decodermodules.h"
#include "support/tablecontent.h"

#include <QRandomGenerator>
#include <QRegExp>
#include <QtTest>

using namespace Quillon;
using namespace testsupport;
using Modules = std::vector<DecoderModule>;

class tst_DecoderModulesFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aLineIsAModule()
    {
        const DecoderModule module =
            readDecoderModulesFile("17 4 x 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 "
                                   "0 1 0 A Morse  Decoder \n")
                .at(0);
        QCOMPARE(module.id, 17);
        QCOMPARE(module.number, 4.0);
        QCOMPARE(module.type, 'x');
        QCOMPARE(module.charset, 'A');
        QCOMPARE(module.name, "Morse  Decoder");
        for (int column = 4; column <= 29; ++column)
            QCOMPARE(module.ColumnFlag(column), column % 2 == 0);
    }

    void theFlagsStandInAnOrderOfTheirOwn_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("flag");
        for (int column = 4; column <= 22; ++column)
            QTest::addRow("column %d", column) << column << column - 3;
        QTest::newRow("column 27") << 27 << 20;
        QTest::newRow("column 28") << 28 << 21;
        QTest::newRow("column 29") << 29 << 22;
        QTest::newRow("column 25") << 25 << 23;
        QTest::newRow("column 26") << 26 << 24;
        QTest::newRow("column 23") << 23 << 25;
        QTest::newRow("column 24") << 24 << 26;
    }

    void theFlagsStandInAnOrderOfTheirOwn()
    {
        QFETCH(int, column);
        QFETCH(int, flag);
        const DecoderModule module = readDecoderModulesFile(moduleLine("m", 'N', {column})).at(0);
        for (int i = 1; i <= 26; ++i)
            QCOMPARE(module.flags.at(std::size_t(i) - 1), i == flag);
        QVERIFY(module.ColumnFlag(column));
    }

    void anyDigitButZeroIsAFlag()
    {
        const DecoderModule module =
            readDecoderModulesFile("1 2 T 0 1 2 3 4 5 6 7 8 9 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 N m")
                .at(0);
        for (int column = 4; column <= 29; ++column)
            QCOMPARE(module.ColumnFlag(column), column > 4 && column < 14);
    }

    void linesWithoutAModuleAreSkipped_data()
    {
        QTest::addColumn<QByteArray>("line");
        const QByteArray line = moduleLine("m", 'N');
        QTest::newRow("empty") << QByteArray("\n");
        QTest::newRow("remark") << QByteArray("# id number type ...\n");
        QTest::newRow("no name") << moduleLine("", 'N');
        QTest::newRow("a flag too few") << QByteArray(line).replace(5, 2, "");
        QTest::newRow("a flag of two digits") << QByteArray(line).replace(6, 1, "10");
        QTest::newRow("a flag that is no digit") << QByteArray(line).replace(6, 1, "x");
        QTest::newRow("a type of two letters") << QByteArray(line).replace(4, 1, "TT");
        QTest::newRow("a type that is no letter") << QByteArray(line).replace(4, 1, "-");
        QTest::newRow("a charset of two letters") << QByteArray(line).replace(" N ", " NN ");
        QTest::newRow("a number that is none") << QByteArray(line).replace(2, 1, "2.5");
        QTest::newRow("an id that does not end with a digit")
            << QByteArray(line).replace(0, 1, "x");
        QTest::newRow("a name that does not begin with a letter") << moduleLine("-m", 'N');
        QTest::newRow("NUL between") << QByteArray(line).replace(5, 1, QByteArray(1, '\0'));
    }

    void linesWithoutAModuleAreSkipped()
    {
        QFETCH(QByteArray, line);
        const Modules modules = readDecoderModulesFile(line + moduleLine("good", 'A') + line);
        QCOMPARE(modules.size(), std::size_t(1));
        QCOMPARE(modules[0].name, "good");
    }

    void aModuleMayStandAnywhereInItsLineAndIsTakenByColumnsAllTheSame()
    {
        // Blanks in front are an empty first column, and move every other by one.
        DecoderModule module =
            readDecoderModulesFile("  7 2 T" + QByteArray(" 1").repeated(26) + " B name").at(0);
        QCOMPARE(module.id, 0);
        QCOMPARE(module.number, 7.0);
        QCOMPARE(module.type, '2');
        QVERIFY(!module.ColumnFlag(4)); // the letter T
        QVERIFY(module.ColumnFlag(5));
        QCOMPARE(module.charset, '1');
        QCOMPARE(module.name, "B name");

        module =
            readDecoderModulesFile("id7 2 T" + QByteArray(" 1").repeated(26) + " B name").at(0);
        QCOMPARE(module.id, 0);
        QCOMPARE(module.charset, 'B');

        module =
            readDecoderModulesFile("1.5 x7 2 T" + QByteArray(" 1").repeated(26) + " B name-1 \t")
                .at(0);
        QCOMPARE(module.id, 0);
        QCOMPARE(module.number, 0.0);
        QCOMPARE(module.name, "B name-1");
    }

    void linesEndAtALineFeedAlone()
    {
        const Modules modules = readDecoderModulesFile(moduleLine("a", 'I').trimmed() + "\r\n" +
                                                       moduleLine("b", 'A').trimmed());
        QCOMPARE(modules.size(), std::size_t(2));
        QCOMPARE(modules[0].name, "a");
        QCOMPARE(modules[1].name, "b");
        // A lone carriage return is white space like any other.
        QCOMPARE(readDecoderModulesFile(moduleLine("a\rb", 'I')).at(0).name,
                 QStringLiteral("a\rb"));
    }

    void theFileIsLatin1()
    {
        const DecoderModule module =
            readDecoderModulesFile(moduleLine("D\xe4mon \xff", '\xe9')).at(0);
        QCOMPARE(module.name, QStringLiteral("D\u00e4mon \u00ff"));
        QCOMPARE(module.charset, '\xe9');
        QCOMPARE(readDecoderModulesFile(moduleLine(QByteArray("a\0b", 3), 'I')).at(0).name,
                 QStringLiteral("a\0b"));
    }

    void modulesAreSortedByNameWhateverItsLetterCase()
    {
        const Modules modules = readDecoderModulesFile(
            moduleLine("zeta", 'I') + moduleLine("abc", 'A') + moduleLine("Beta", 'B') +
            moduleLine("ABC", 'I') + moduleLine("abc", 'N'));
        QCOMPARE(namesOf(modules), (QStringList{"abc", "ABC", "abc", "Beta", "zeta"}));
        // Equal names keep the order of the file.
        QCOMPARE(modules[0].charset, 'A');
        QCOMPARE(modules[1].charset, 'I');
        QCOMPARE(modules[2].charset, 'N');
    }

    void whatIsWrittenReadsBackToTheSameModules()
    {
        QByteArray content;
        QRandomGenerator random(23);
        for (int i = 0; i < 200; ++i) {
            QSet<int> columns;
            for (int column = 4; column <= 29; ++column) {
                if (random.bounded(2))
                    columns.insert(column);
            }
            content += moduleLine("n" + QByteArray::number(random.bounded(50)) + "  \xe4",
                                  "IABN"[random.bounded(4)], columns, random.bounded(1000000),
                                  QByteArray::number(random.generate64()));
        }
        const Modules modules = readDecoderModulesFile(content);
        QCOMPARE(modules.size(), std::size_t(200));
        const QByteArray copy = decoderModulesFileOf(modules);
        QCOMPARE(copy.count('\n'), 200);
        const Modules again = readDecoderModulesFile(copy);
        QCOMPARE(again.size(), modules.size());
        for (std::size_t i = 0; i < modules.size(); ++i) {
            QCOMPARE(again[i].id, modules[i].id);
            QCOMPARE(again[i].number, modules[i].number);
            QCOMPARE(again[i].type, modules[i].type);
            QVERIFY(again[i].flags == modules[i].flags);
            QCOMPARE(again[i].charset, modules[i].charset);
            QCOMPARE(again[i].name, modules[i].name);
        }
    }

    void aModuleIsWrittenOnOneLine()
    {
        const Modules modules =
            readDecoderModulesFile("7\t 1000000 x" + QByteArray(" 0").repeated(19) +
                                   " 1 2 0 0 0 0 1  B\tMorse  Decoder \r\n");
        QCOMPARE(decoderModulesFileOf(modules), "7 1000000 x" + QByteArray(" 0").repeated(19) +
                                                    " 1 1 0 0 0 0 1 B Morse  Decoder\n");
    }

    void numbersAreWrittenInDigits_data()
    {
        QTest::addColumn<QByteArray>("number");
        QTest::addColumn<QByteArray>("written");
        QTest::newRow("0") << QByteArray("000") << QByteArray("0");
        QTest::newRow("six digits") << QByteArray("123456") << QByteArray("123456");
        QTest::newRow("seven digits") << QByteArray("1234567") << QByteArray("1234567");
        QTest::newRow("a power of ten") << QByteArray("10000000") << QByteArray("10000000");
        QTest::newRow("beyond 53 bits")
            << QByteArray("18446744073709551616") << QByteArray("18446744073709551616");
        QTest::newRow("beyond a double") << QByteArray(1000, '1') << QByteArray(400, '9');
    }

    void numbersAreWrittenInDigits()
    {
        QFETCH(QByteArray, number);
        const QByteArray content = moduleLine("m", 'I', {}, 1, number);
        const QByteArray line = decoderModulesFileOf(readDecoderModulesFile(content));
        QTEST(line.split(' ').at(1), "written");
        QCOMPARE(readDecoderModulesFile(line).at(0).number,
                 readDecoderModulesFile(content).at(0).number);
    }

    void aNumberThatIsNoneIsWrittenAsZero()
    {
        // Such numbers come from lines that begin with something else.
        for (const char* number : {"nan", "-5", "x"}) {
            const QByteArray line =
                QByteArray("x ") + number + " 7 2 T" + QByteArray(" 1").repeated(26) + " B name";
            QCOMPARE(decoderModulesFileOf(readDecoderModulesFile(line)).split(' ').at(1),
                     QByteArray("0"));
        }
    }

    void linesHoldAModuleAsTheExpressionSays()
    {
        const QRegExp expression("\\d+\\s+\\d+\\s+\\w" + QStringLiteral("\\s+\\d").repeated(26) +
                                 "\\s+\\w\\s+\\w+");
        QRandomGenerator random(29);
        int held = 0;
        for (int round = 0; round < 20000; ++round) {
            QString line = QString::fromLatin1(moduleLine("m", 'N'));
            if (random.bounded(2))
                line.prepend(QStringLiteral("1 2 3 4 ").left(random.bounded(9)));
            // Few changes, so that many lines still hold a module.
            for (int changes = random.bounded(3); changes > 0; --changes) {
                const int at = random.bounded(line.size());
                line.replace(at, random.bounded(2),
                             QString(QChar(random.bounded(4) ? "0 1a_\t-Z"[random.bounded(8)]
                                                             : char(random.bounded(256)))));
            }
            const bool expected = expression.indexIn(line) >= 0;
            held += expected;
            if (holdsDecoderModule(line) != expected)
                QFAIL(line.toLatin1().toPercentEncoding().constData());
        }
        QVERIFY(held > 4000 && held < 16000);
    }

    void aLineNeedsNoEndToHoldAModuleOrNone()
    {
        const QString line = QString::fromLatin1(moduleLine("name", 'N')).trimmed();
        for (int length = 0; length <= line.size(); ++length)
            QCOMPARE(holdsDecoderModule(line.left(length)), length > line.size() - 4);
    }

    void everyCharacterIsOfTheClassThatTheExpressionPutsItIn()
    {
        const QRegExp expression("\\d+\\s+\\d+\\s+\\w" + QStringLiteral("\\s+\\d").repeated(26) +
                                 "\\s+\\w\\s+\\w+");
        const QString line = QString::fromLatin1(moduleLine("m", 'N'));
        for (int c = 0; c < 256; ++c) {
            for (const int at : {0, 1, 2, 3, 4, 5, 6, 7, 56, 57, 58, 59, 60}) {
                QString changed = line;
                changed[at] = QChar(c);
                QCOMPARE(holdsDecoderModule(changed), expression.indexIn(changed) >= 0);
            }
        }
    }

    void hugeAndBinaryContentIsRead_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("a line of ten million digits") << QByteArray(HUGE_BYTES, '7');
        QTest::newRow("a line of 10 MB") << QByteArray(HUGE_BYTES, 'x');
        QTest::newRow("10 MB of blanks") << QByteArray(HUGE_BYTES, ' ');
        QTest::newRow("10 MB of columns") << QByteArray("1 ").repeated(HUGE_BYTES / 2);
        QTest::newRow("NUL bytes") << QByteArray(HUGE_BYTES, '\0');
        QTest::newRow("a million lines") << QByteArray("# id\n").repeated(MANY_LINES);
        QTest::newRow("binary") << binaryContent();
    }

    void hugeAndBinaryContentIsRead()
    {
        QFETCH(QByteArray, content);
        const Modules modules =
            readDecoderModulesFile(content + "\n" + moduleLine("~", 'I').replace("~", "zz"));
        QVERIFY(!modules.empty());
        QCOMPARE(modules.back().name, "zz");
    }

private:
    static QStringList namesOf(const Modules& modules)
    {
        QStringList names;
        for (const DecoderModule& module : modules)
            names += module.name;
        return names;
    }
};

QTEST_APPLESS_MAIN(tst_DecoderModulesFile)
#include "tst_decodermodulesfile.moc"
