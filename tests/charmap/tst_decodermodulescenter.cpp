// SPDX-License-Identifier: MIT
#include "charmap/decodermodulescenter.h"

#include "host/standin/configuration.h"
#include "host/standin/tracelog.h"
#include "support/decodermodules.h"
#include "support/writefile.h"

#include <QDir>
#include <QRandomGenerator>
#include <QRegExp>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <thread>

#include <sys/stat.h>

using namespace Quillon;
using Modules = std::vector<DecoderModule>;

class tst_DecoderModulesCenter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        setConfigurationValue(QString(), "DecoderModulesFile", m_dir.filePath("configured"));
        writeFile(m_dir.filePath("configured"), moduleLine("first", 'I'));
    }

    void aLineIsAModule()
    {
        const DecoderModule module = read("17 4 x 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 0 1 "
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
        const DecoderModule module = read(moduleLine("m", 'N', {column})).at(0);
        for (int i = 1; i <= 26; ++i)
            QCOMPARE(module.flags.at(std::size_t(i) - 1), i == flag);
        QVERIFY(module.ColumnFlag(column));
    }

    void anyDigitButZeroIsAFlag()
    {
        const DecoderModule module =
            read("1 2 T 0 1 2 3 4 5 6 7 8 9 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 N m").at(0);
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
        const Modules modules = read(line + moduleLine("good", 'A') + line);
        QCOMPARE(modules.size(), std::size_t(1));
        QCOMPARE(modules[0].name, "good");
    }

    void aModuleMayStandAnywhereInItsLineAndIsTakenByColumnsAllTheSame()
    {
        // Blanks in front are an empty first column, and move every other by one.
        DecoderModule module = read("  7 2 T" + QByteArray(" 1").repeated(26) + " B name").at(0);
        QCOMPARE(module.id, 0);
        QCOMPARE(module.number, 7.0);
        QCOMPARE(module.type, '2');
        QVERIFY(!module.ColumnFlag(4)); // the letter T
        QVERIFY(module.ColumnFlag(5));
        QCOMPARE(module.charset, '1');
        QCOMPARE(module.name, "B name");

        module = read("id7 2 T" + QByteArray(" 1").repeated(26) + " B name").at(0);
        QCOMPARE(module.id, 0);
        QCOMPARE(module.charset, 'B');

        module = read("1.5 x7 2 T" + QByteArray(" 1").repeated(26) + " B name-1 \t").at(0);
        QCOMPARE(module.id, 0);
        QCOMPARE(module.number, 0.0);
        QCOMPARE(module.name, "B name-1");
    }

    void linesEndAtALineFeedAlone()
    {
        const Modules modules =
            read(moduleLine("a", 'I').trimmed() + "\r\n" + moduleLine("b", 'A').trimmed());
        QCOMPARE(modules.size(), std::size_t(2));
        QCOMPARE(modules[0].name, "a");
        QCOMPARE(modules[1].name, "b");
        // A lone carriage return is white space like any other.
        QCOMPARE(read(moduleLine("a\rb", 'I')).at(0).name, QStringLiteral("a\rb"));
    }

    void theFileIsLatin1()
    {
        const DecoderModule module = read(moduleLine("D\xe4mon \xff", '\xe9')).at(0);
        QCOMPARE(module.name, QStringLiteral("D\u00e4mon \u00ff"));
        QCOMPARE(module.charset, '\xe9');
        QCOMPARE(read(moduleLine(QByteArray("a\0b", 3), 'I')).at(0).name, QStringLiteral("a\0b"));
    }

    void modulesAreSortedByNameWhateverItsLetterCase()
    {
        const Modules modules =
            read(moduleLine("zeta", 'I') + moduleLine("abc", 'A') + moduleLine("Beta", 'B') +
                 moduleLine("ABC", 'I') + moduleLine("abc", 'N'));
        QCOMPARE(namesOf(modules), (QStringList{"abc", "ABC", "abc", "Beta", "zeta"}));
        // Equal names keep the order of the file.
        QCOMPARE(modules[0].charset, 'A');
        QCOMPARE(modules[1].charset, 'I');
        QCOMPARE(modules[2].charset, 'N');
    }

    void aFileThatCannotBeOpenedIsTracedAndTheModulesStay_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << "missing";
        QTest::newRow("folder") << "folder";
        QTest::newRow("pipe without a writer") << "pipe";
        QTest::newRow("link to itself") << "loop";
    }

    void aFileThatCannotBeOpenedIsTracedAndTheModulesStay()
    {
        QFETCH(QString, name);
        const QString path = m_dir.filePath(name);
        writeFile(path, moduleLine("kept", 'I'));
        DecoderModulesCenter center(path);
        QVERIFY(QFile::remove(path));
        if (name == "folder")
            QDir(m_dir.path()).mkdir(name);
        else if (name == "pipe")
            ::mkfifo(QFile::encodeName(path).constData(), 0600);
        else if (name == "loop")
            QFile::link(path, path);

        TraceRecorder traces;
        QVERIFY(!center.ReadModulesFile());
        QVERIFY(!center.ReadModulesFile());
        QCOMPARE(traces.Traces().size(), 2);
        QCOMPARE(traces.Traces()[0].message, "Decoder modules file can not be opened: " + path);
        QCOMPARE(traces.Traces()[0].sourceFile, "shared\\source\\decodermoduelscenter");
        QCOMPARE(traces.Traces()[0].line, 532);
        QCOMPARE(namesOf(center), QStringList{"kept"});

        traces.Clear();
        setTraceMask(~0x20u);
        QVERIFY(!center.ReadModulesFile());
        QVERIFY(traces.Traces().isEmpty());
    }

    void aFileWithoutModulesEmptiesTheTable()
    {
        const QString path = writeFile(m_dir.filePath("emptied"), moduleLine("gone", 'I'));
        DecoderModulesCenter center(path);
        writeFile(path, "");
        QVERIFY(center.ReadModulesFile());
        QVERIFY(namesOf(center).isEmpty());
    }

    void anEmptyNameStandsForTheConfiguredFile()
    {
        DecoderModulesCenter center{QString()};
        QCOMPARE(namesOf(center), QStringList{"first"});
    }

    void withoutConfigurationThereIsNoFile()
    {
        clearConfiguration();
        TraceRecorder traces;
        DecoderModulesCenter center{QString()};
        QCOMPARE(traces.Messages(), QStringList{"Decoder modules file can not be opened: "});
        QVERIFY(namesOf(center).isEmpty());
        setConfigurationValue(QString(), "DecoderModulesFile", m_dir.filePath("configured"));
    }

    void aPathOfTheHostIsFound()
    {
        writeFile(m_dir.filePath("hostpath"), moduleLine("m", 'I'));
        DecoderModulesCenter center(m_dir.path() + "\\hostpath");
        QCOMPARE(namesOf(center), QStringList{"m"});
    }

    void thereIsOneInstance()
    {
        DecoderModulesCenter& center = DecoderModulesCenter::Instance(QString());
        QCOMPARE(&DecoderModulesCenter::Instance(m_dir.filePath("other")), &center);
        QCOMPARE(namesOf(center), QStringList{"first"});

        writeFile(m_dir.filePath("configured"), moduleLine("second", 'I'));
        QCOMPARE(namesOf(center), QStringList{"first"});
        Modules modules(5);
        center.GetModules(modules, true);
        QCOMPARE(namesOf(modules), QStringList{"second"});
        // Any other object rereads the single one, not itself.
        writeFile(m_dir.filePath("configured"), moduleLine("third", 'I'));
        DecoderModulesCenter other(writeFile(m_dir.filePath("x"), moduleLine("x", 'I')));
        other.GetModules(modules, true);
        QCOMPARE(namesOf(modules), QStringList{"x"});
        QCOMPARE(namesOf(center), QStringList{"third"});
    }

    void modulesAreFoundByFamilyAndMode_data()
    {
        QTest::addColumn<QString>("family");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<int>("column");
        const auto row = [](const char* family, const char* mode, int column) {
            QTest::addRow("%s %s", family, mode) << family << mode << column;
        };
        row("FSK", "FSK2", 5);
        row("FSK", "FSK4", 6);
        row("FSK", "MSK", 7);
        row("PSK", "PSK2", 8);
        row("PSK", "PSK4", 9);
        row("PSK", "PSK8", 10);
        row("McPSK", "McPSK2", 12);
        row("McPSK", "McPSK4", 13);
        row("PSK31", "", 23);
        row("PSK31", "anything", 23);
        row("FSK", "PSK2", 0);
        row("FSK", "", 0);
        row("fsk", "FSK2", 0);
        row("", "FSK2", 0);
    }

    void modulesAreFoundByFamilyAndMode()
    {
        QFETCH(QString, family);
        QFETCH(QString, mode);
        QFETCH(int, column);
        // One module with each flag, and one with all.
        QByteArray content;
        QSet<int> all;
        for (int flag = 4; flag <= 29; ++flag) {
            content += moduleLine("m" + QByteArray::number(flag), 'N', {flag}, 1,
                                  QByteArray::number(flag));
            all.insert(flag);
        }
        content += moduleLine("z", 'N', all, 1, "99");
        DecoderModulesCenter center(writeFile(m_dir.filePath("modes"), content));

        const bool finds = column > 0;
        const QString name = "m" + QString::number(column);
        QString names;
        center.GetNames(family, mode, names, false);
        QCOMPARE(names, finds ? name + ";z" : QString());
        center.GetNames(family, mode, names, false);
        QCOMPARE(names, finds ? name + ";z;" + name + ";z" : QString());
        Modules modules(1);
        center.GetModules(family, mode, modules, false);
        QCOMPARE(namesOf(modules), finds ? (QStringList{"", name, "z"}) : QStringList{""});
        std::vector<double> numbers{-1};
        center.GetNumbers(family, mode, numbers, false);
        QCOMPARE(numbers,
                 finds ? (std::vector<double>{-1.0, double(column), 99}) : std::vector<double>{-1});
    }

    void ofTheModeNamesOnlyOneIsKnown()
    {
        DecoderModulesCenter center(
            writeFile(m_dir.filePath("psk31"),
                      moduleLine("a", 'N', {23}, 1, "31") + moduleLine("b", 'N', {5, 8})));
        QString names;
        Modules modules;
        std::vector<double> numbers;
        for (const char* mode : {"PSK31", "FSK2", "FSK", ""}) {
            center.GetNames(mode, names, false);
            center.GetModules(mode, modules, false);
            center.GetNumbers(mode, numbers, false);
        }
        QCOMPARE(names, "a");
        QCOMPARE(namesOf(modules), QStringList{"a"});
        QCOMPARE(numbers, std::vector<double>{31});
    }

    void everyModeHasAFamily()
    {
        DecoderModulesCenter center(m_dir.filePath("configured"));
        const auto family = [&](const char* mode) {
            QString result = "before";
            center.GetFamily(mode, result, false);
            return result;
        };
        for (const char* mode : {"FSK", "ASK", "PSK", "McFSK", "McPSK", "F7W"})
            QCOMPARE(family(mode), "ASCII");
        QCOMPARE(family("PSK31"), "PSK31_BPSK");
        for (const char* mode : {"", "fsk", "FSK2", "None"})
            QCOMPARE(family(mode), "NONE");
    }

    void aQueryReadsTheFileAgainWhenAsked()
    {
        DecoderModulesCenter& center = DecoderModulesCenter::Instance(QString());
        const auto rewrite = [&](const char* name) {
            writeFile(m_dir.filePath("configured"), moduleLine(name, 'I', {5, 23}));
        };
        rewrite("one");
        QString names;
        center.GetNames("FSK", "FSK2", names, true);
        rewrite("two");
        center.GetNames("FSK", "FSK2", names, false);
        center.GetNames("PSK31", names, true);
        QCOMPARE(names, "one;one;two");
        rewrite("three");
        QString family;
        center.GetFamily("FSK", family, true);
        QCOMPARE(namesOf(center), QStringList{"three"});
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
        const Modules modules = read(content);
        QCOMPARE(modules.size(), std::size_t(200));
        DecoderModulesCenter center(writeFile(m_dir.filePath("source"), content));
        const QString copy = m_dir.filePath("copy");
        QVERIFY(center.WriteModulesFile(copy));
        QCOMPARE(readFile(copy).count('\n'), 200);
        const Modules again = read(readFile(copy));
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
        DecoderModulesCenter center(
            writeFile(m_dir.filePath("line"), "7\t 1000000 x" + QByteArray(" 0").repeated(19) +
                                                  " 1 2 0 0 0 0 1  B\tMorse  Decoder \r\n"));
        const QString path = m_dir.filePath("written");
        writeFile(path, "what was there before");
        QVERIFY(center.WriteModulesFile(path));
        QCOMPARE(readFile(path), "7 1000000 x" + QByteArray(" 0").repeated(19) +
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
        DecoderModulesCenter center(writeFile(m_dir.filePath("number"), content));
        QVERIFY(center.WriteModulesFile(m_dir.filePath("digits")));
        const QByteArray line = readFile(m_dir.filePath("digits"));
        QTEST(line.split(' ').at(1), "written");
        QCOMPARE(read(line).at(0).number, read(content).at(0).number);
    }

    void aNumberThatIsNoneIsWrittenAsZero()
    {
        // Such numbers come from lines that begin with something else.
        for (const char* number : {"nan", "-5", "x"}) {
            const QByteArray line =
                QByteArray("x ") + number + " 7 2 T" + QByteArray(" 1").repeated(26) + " B name";
            DecoderModulesCenter center(writeFile(m_dir.filePath("odd"), line));
            QVERIFY(center.WriteModulesFile(m_dir.filePath("even")));
            QCOMPARE(readFile(m_dir.filePath("even")).split(' ').at(1), QByteArray("0"));
        }
    }

    void whatCannotBeWrittenIsRefusedWithoutATrace()
    {
        DecoderModulesCenter center(m_dir.filePath("configured"));
        ::mkfifo(QFile::encodeName(m_dir.filePath("outpipe")).constData(), 0600);
        TraceRecorder traces;
        QVERIFY(!center.WriteModulesFile(m_dir.filePath("missing/file")));
        QVERIFY(!center.WriteModulesFile(m_dir.path()));
        QVERIFY(!center.WriteModulesFile(QString()));
        QVERIFY(!center.WriteModulesFile(m_dir.filePath("outpipe")));
        QVERIFY(!center.WriteModulesFile("/dev/full"));
        QVERIFY(traces.Traces().isEmpty());
    }

    void theSwitchIsKept()
    {
        DecoderModulesCenter center(m_dir.filePath("configured"));
        QVERIFY(!center.GetFlag0());
        center.SetFlag0(true);
        QVERIFY(center.GetFlag0());
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

    void eightThreadsMayAskWhileTheFileIsRewritten()
    {
        const QString path = m_dir.filePath("configured");
        // Of equal length, so that a file half of one and half of the other is one of whole lines.
        const auto content = [](int generation) {
            QByteArray lines;
            for (int i = 0; i < 50; ++i)
                lines += moduleLine("m" + QByteArray::number(i), 'I', {5, 23}, 100 + generation);
            return lines;
        };
        writeFile(path, content(0));
        Modules before;
        DecoderModulesCenter::Instance(QString()).GetModules(before, true);
        std::atomic<bool> failed{false};
        const auto ask = [&failed] {
            for (int round = 0; round < 100 && !failed; ++round) {
                DecoderModulesCenter& center = DecoderModulesCenter::Instance(QString());
                Modules modules;
                center.GetModules(modules, round % 2);
                QString names;
                center.GetNames("FSK", "FSK2", names, round % 3 == 0);
                std::vector<double> numbers;
                center.GetNumbers("PSK31", numbers, false);
                QString family;
                center.GetFamily("PSK", family, false);
                // Whatever of the file was there to be read: whole modules in their order.
                const bool isSorted =
                    std::is_sorted(modules.begin(), modules.end(),
                                   [](const auto& a, const auto& b) { return a.name < b.name; });
                const bool isWhole =
                    std::all_of(modules.begin(), modules.end(), [](const DecoderModule& module) {
                        return module.name.startsWith('m') && module.ColumnFlag(23);
                    });
                if (!isSorted || !isWhole || modules.size() > 50 || family != "ASCII")
                    failed = true;
            }
        };
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back(ask);
        for (int generation = 0; generation < 100; ++generation)
            writeFile(path, content(generation));
        for (std::thread& thread : threads)
            thread.join();
        QVERIFY(!failed);
        Modules after;
        DecoderModulesCenter::Instance(QString()).GetModules(after, true);
        QCOMPARE(after.size(), std::size_t(50));
    }

    void hugeAndBinaryContentIsRead_data()
    {
        QTest::addColumn<QByteArray>("content");
        QByteArray binary;
        QByteArray lines;
        for (int i = 0; i < 1000 * 1000; ++i) {
            binary += static_cast<char>(i * 7 + i / 256);
            lines += "# id\n";
        }
        const int huge = 100 * 1000 * 1000;
        QTest::newRow("a line of ten million digits") << QByteArray(10 * 1000 * 1000, '7');
        QTest::newRow("a line of 100 MB") << QByteArray(huge, 'x');
        QTest::newRow("100 MB of blanks") << QByteArray(huge, ' ');
        QTest::newRow("100 MB of columns") << QByteArray("1 ").repeated(huge / 2);
        QTest::newRow("NUL bytes") << QByteArray(huge / 10, '\0');
        QTest::newRow("a million lines") << lines;
        QTest::newRow("binary") << binary;
    }

    void hugeAndBinaryContentIsRead()
    {
        QFETCH(QByteArray, content);
        const Modules modules = read(content + "\n" + moduleLine("~", 'I').replace("~", "zz"));
        QVERIFY(!modules.empty());
        QCOMPARE(modules.back().name, "zz");
    }

private:
    Modules read(const QByteArray& content)
    {
        DecoderModulesCenter center(writeFile(m_dir.filePath("read"), content));
        Modules modules;
        center.GetModules(modules, false);
        return modules;
    }

    static QByteArray readFile(const QString& path)
    {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    static QStringList namesOf(const Modules& modules)
    {
        QStringList names;
        for (const DecoderModule& module : modules)
            names += module.name;
        return names;
    }

    static QStringList namesOf(DecoderModulesCenter& center)
    {
        Modules modules;
        center.GetModules(modules, false);
        return namesOf(modules);
    }

    QTemporaryDir m_dir;
};

QTEST_APPLESS_MAIN(tst_DecoderModulesCenter)
#include "tst_decodermodulescenter.moc"
