// SPDX-License-Identifier: MIT
#include "charmap/decodermodulescenter.h"

#include "host/standin/configuration.h"
#include "host/standin/tracelog.h"
#include "support/decodermodules.h"
#include "support/files.h"
#include "support/fulldisk.h"

#include <QDir>
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

    void theModulesAreWrittenInPlaceOfWhatWasThere()
    {
        const QByteArray content = moduleLine("b", 'I', {5, 23}) + moduleLine("a", 'A');
        DecoderModulesCenter center(writeFile(m_dir.filePath("source"), content));
        const QString path = m_dir.filePath("written");
        writeFile(path, QByteArray(1000, 'x'));
        QVERIFY(center.WriteModulesFile(path));
        QCOMPARE(contentOf(path), moduleLine("a", 'A') + moduleLine("b", 'I', {5, 23}));
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

    void whatAFullDiskCutsOffIsNoSuccess()
    {
        QByteArray content;
        for (int i = 0; i < 100; ++i)
            content += moduleLine("m" + QByteArray::number(i), 'I');
        DecoderModulesCenter center(writeFile(m_dir.filePath("many"), content));
        const QString path = m_dir.filePath("cut");
        {
            // Less than is kept back in memory, so that only the last bytes fail.
            const FullDisk disk(rlim_t(content.size()) - 10);
            QVERIFY(!center.WriteModulesFile(path));
        }
        QVERIFY(center.WriteModulesFile(path));
        QCOMPARE(contentOf(path).size(), content.size());
    }

    void aFileThatIsMissingFromTheStartIsReadOnceItIsThere()
    {
        const QString path = m_dir.filePath("later");
        TraceRecorder traces;
        DecoderModulesCenter center(path);
        QCOMPARE(traces.Messages(), QStringList{"Decoder modules file can not be opened: " + path});
        QVERIFY(namesOf(center).isEmpty());
        QString names = "kept";
        center.GetNames("FSK", "FSK2", names, false);
        QCOMPARE(names, "kept");
        writeFile(path, moduleLine("first", 'I'));
        QVERIFY(center.ReadModulesFile());
        QCOMPARE(namesOf(center), QStringList{"first"});
    }

    void theSwitchIsKept()
    {
        DecoderModulesCenter center(m_dir.filePath("configured"));
        DecoderModulesCenter other(m_dir.filePath("configured"));
        QVERIFY(!center.GetFlag0());
        for (const bool flag : {true, true, false, true}) {
            center.SetFlag0(flag);
            QCOMPARE(center.GetFlag0(), flag);
            QVERIFY(!other.GetFlag0());
            QVERIFY(center.ReadModulesFile());
            QCOMPARE(center.GetFlag0(), flag);
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

private:
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
