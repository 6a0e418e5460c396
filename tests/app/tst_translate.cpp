// SPDX-License-Identifier: MIT
#include "app/translate/filter.h"
#include "app/translate/lintfiles.h"
#include "app/translate/listing.h"
#include "support/decodermodules.h"
#include "tables/alphabetfile.h"

#include "charmap/codechandler.h"
#include "host/standin/configuration.h"
#include "support/files.h"

#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {
std::atomic<int> openedFolders{0};
}

// In place of the C library's, for the libraries too.
extern "C" Q_DECL_EXPORT DIR* opendir(const char* name)
{
    ++openedFolders;
    using Function = DIR* (*)(const char*);
    static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "opendir"));
    return original(name);
}

using translate::Filter;
using translate::FilterOptions;

namespace {

const QString shippedMaps = QStringLiteral(PROJECT_DATA_DIR "/maps");
const QString shippedAlphabets = QStringLiteral(PROJECT_DATA_DIR "/alphabets");

struct Outcome
{
    QString out;
    QString error; ///< empty when all went well

    QStringList lines() const { return out.split(QLatin1Char('\n'), Qt::SkipEmptyParts); }
    QStringList names() const
    {
        QStringList names;
        for (const QString& line : lines())
            names += line.section(QLatin1Char('\t'), 0, 0);
        return names;
    }
};

Outcome alphabetsOf(const QString& folder)
{
    Outcome outcome;
    QTextStream out(&outcome.out);
    outcome.error = translate::listAlphabets(folder, out);
    out.flush();
    return outcome;
}

Outcome lintOf(const QStringList& files)
{
    Outcome outcome;
    QTextStream out(&outcome.out);
    const translate::LintOutcome lint = translate::lintFiles(files, out);
    outcome.error = lint.failures.join(QLatin1Char('\n'));
    if (outcome.out.isEmpty() && outcome.error.isEmpty() && !lint.isClean)
        outcome.error = QStringLiteral("not clean");
    return outcome;
}

Outcome mapsOf(const QString& folder, const QString& decoder = {})
{
    Outcome outcome;
    QTextStream out(&outcome.out);
    outcome.error = translate::listMaps(folder, decoder, out);
    out.flush();
    return outcome;
}

class Pipe
{
public:
    Pipe()
    {
        if (pipe(m_ends) != 0)
            qFatal("no pipe");
    }
    ~Pipe()
    {
        closeReader();
        closeWriter();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return m_ends[0]; }
    int writer() const { return m_ends[1]; }
    void closeReader() { closeEnd(0); }
    void closeWriter() { closeEnd(1); }
    void write(const QByteArray& bytes)
    {
        QCOMPARE(::write(writer(), bytes.constData(), size_t(bytes.size())), ssize_t(bytes.size()));
    }
    QByteArray readSome() const
    {
        QByteArray bytes(1024, Qt::Uninitialized);
        bytes.resize(int(qMax(ssize_t(0), ::read(reader(), bytes.data(), size_t(bytes.size())))));
        return bytes;
    }

private:
    void closeEnd(int end)
    {
        if (m_ends[end] >= 0)
            close(m_ends[end]);
        m_ends[end] = -1;
    }

    int m_ends[2] = {-1, -1};
};

/// Runs the subcommand on a short input.
Outcome run(const FilterOptions& options, const QByteArray& input, QByteArray& output)
{
    Pipe in;
    Pipe out;
    in.write(input);
    in.closeWriter();
    Outcome outcome;
    outcome.error = translate::runTranslate(options, in.reader(), out.writer());
    out.closeWriter();
    output = out.readSome();
    return outcome;
}

FilterOptions with(const QString& folder, const char* map, const char* decoder = "",
                   bool back = false)
{
    return {folder, QString::fromUtf8(map), QString::fromUtf8(decoder), back};
}

QByteArray allBytes()
{
    QByteArray bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += char(byte);
    return bytes;
}

} // namespace

class tst_Translate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        setConfigurationValue(QString(), QStringLiteral("DecoderModulesFile"),
                              QStringLiteral(PROJECT_DATA_DIR "/decoders/decodermodules.txt"));
    }

    void alphabetsAreListedWithFileDirectionAndSize()
    {
        const Outcome outcome = alphabetsOf(shippedAlphabets);
        QCOMPARE(outcome.error, QString());
        QVERIFY(outcome.names().contains(QStringLiteral("Greek")));
        QCOMPARE(outcome.lines().first(),
                 QStringLiteral("Default\t(built in)\tleft to right\t%1 entries")
                     .arg(defaultAlphabet().size()));
        const QString path = shippedAlphabets + QStringLiteral("/Hebrew.mal");
        QVERIFY(outcome.lines().contains(QStringLiteral("Hebrew\t%1\tright to left\t%2 entries")
                                             .arg(path)
                                             .arg(readAlphabetFile(contentOf(path)).codes.size())));
        QVERIFY(outcome.lines()
                    .filter(QStringLiteral("Greek\t"))
                    .first()
                    .contains(QStringLiteral("\tleft to right\t")));
    }

    void anAlphabetThatIsNotFoundAgainIsMarked()
    {
        QTemporaryDir folder;
        writeFile(folder.filePath(QStringLiteral("Cyrillic.old.mal")), "А\t.-\n\n");
        const Outcome outcome = alphabetsOf(folder.path());
        QCOMPARE(outcome.error, QString());
        QCOMPARE(outcome.lines().size(), 2); // the built-in one is first
        QVERIFY(outcome.out.contains(QStringLiteral("cannot be chosen")));
    }

    void aFileOfTheBuiltInAlphabetsNameCannotBeChosen()
    {
        QTemporaryDir folder;
        writeFile(folder.filePath(QStringLiteral("default.mal")), "A\t.-\n\n");
        const Outcome outcome = alphabetsOf(folder.path());
        QCOMPARE(outcome.lines().size(), 2);
        QVERIFY(outcome.lines().last().endsWith(QStringLiteral("\tcannot be chosen")));
    }

    void aNameGivesTheTerminalNoOrders()
    {
        QTemporaryDir folder;
        writeFile(folder.filePath(QStringLiteral("x\x1B[31m\ny.mal")), "A\t.-\n\n");
        const Outcome outcome = alphabetsOf(folder.path());
        QCOMPARE(outcome.lines().size(), 2);
        QVERIFY(!outcome.out.contains(QLatin1Char('\x1B')));
    }

    void allMapsAreListedUnderTheirFullNames()
    {
        const Outcome outcome = mapsOf(shippedMaps);
        QCOMPARE(outcome.error, QString());
        QVERIFY(outcome.names().contains(QStringLiteral("Greek - ASCII")));
        QVERIFY(outcome.names().contains(QStringLiteral("Russian - ITA2")));
        QVERIFY(outcome.names().contains(QStringLiteral("ITA2 - ITA2")));
        QCOMPARE(outcome.names().size(),
                 QDir(shippedMaps)
                     .entryList({QStringLiteral("*.map"), QStringLiteral("*.codec")})
                     .size());
        QVERIFY(!outcome.out.contains(QStringLiteral("cannot be chosen")));
        QVERIFY(outcome.lines()
                    .filter(QStringLiteral("Hebrew"))
                    .first()
                    .endsWith(QStringLiteral("\tright to left\t27 entries")));
    }

    void mapsAreListedPerDecoder_data()
    {
        QTest::addColumn<QString>("decoder");
        QTest::addColumn<bool>("ita2");
        QTest::addColumn<bool>("ascii");
        QTest::newRow("an ITA2 decoder") << QStringLiteral("Baudot") << true << false;
        QTest::newRow("an ASCII decoder") << QStringLiteral("ASCII RTTY") << false << true;
        QTest::newRow("a decoder of both") << QStringLiteral("PSK31") << true << true;
    }

    void mapsAreListedPerDecoder()
    {
        QFETCH(QString, decoder);
        QFETCH(bool, ita2);
        QFETCH(bool, ascii);
        const Outcome outcome = mapsOf(shippedMaps, decoder);
        QCOMPARE(outcome.error, QString());
        QCOMPARE(outcome.names().contains(QStringLiteral("Russian - ITA2")), ita2);
        QCOMPARE(outcome.names().contains(QStringLiteral("Greek - ASCII")), ascii);
    }

    void aDecoderWithoutACharacterSetIsReported_data()
    {
        QTest::addColumn<QString>("decoder");
        QTest::newRow("unknown") << QStringLiteral("Teleplay");
        QTest::newRow("letter N") << QStringLiteral("Morse");
    }

    void aDecoderWithoutACharacterSetIsReported()
    {
        QFETCH(QString, decoder);
        const Outcome outcome = mapsOf(shippedMaps, decoder);
        QVERIFY(!outcome.error.isEmpty());
        QCOMPARE(outcome.out, QString());
        QVERIFY(outcome.error.contains(decoder));
        QCOMPARE(outcome.error.count(QLatin1Char('\n')), 0);
    }

    void decodersAreListedWithTheirCharacterSets()
    {
        QTemporaryDir folder;
        const QString flags = QStringLiteral(" R") + QStringLiteral(" 0").repeated(26);
        const QString file = folder.filePath(QStringLiteral("modules.txt"));
        writeFile(file, QStringLiteral("# a comment\n1 1%1 I Baudot\n"
                                       "2 1%1 A ASCII  RTTY\n3 1%1 B \u00DCber\n"
                                       "4 1%1 N Morse\n")
                            .arg(flags)
                            .toLatin1());
        QString text;
        QTextStream out(&text);
        QCOMPARE(translate::listDecoders(file, out), QString());
        QCOMPARE(text, QStringLiteral("ASCII  RTTY\tASCII\nBaudot\tITA2\n"
                                      "Morse\tno character set\n\u00DCber\tITA2 and ASCII\n"));
    }

    void aFileThatNamesNoDecoderIsReported()
    {
        QString text;
        QTextStream out(&text);
        const QString readme = shippedMaps + QStringLiteral("/README.md");
        QCOMPARE(translate::listDecoders(readme, out),
                 QStringLiteral("%1: names no decoder").arg(readme));
        QCOMPARE(text, QString());
    }

    void aMissingFolderIsReported()
    {
        for (const Outcome& outcome :
             {alphabetsOf(QStringLiteral("/no/such")), mapsOf(QStringLiteral("/no/such"))}) {
            QVERIFY(!outcome.error.isEmpty());
            QVERIFY(outcome.error.contains(QStringLiteral("/no/such")));
        }
    }

    void aFileBehindAnotherOfItsNameIsMarked()
    {
        QTemporaryDir folder;
        const auto at = [&](const char* name) { return folder.filePath(QLatin1String(name)); };
        writeFile(at("ITA2.codec"), "title\nRL\nA;0x0391\n");
        writeFile(at("ITA2.ita2.map"), "0x41\t0x0410\n\n");
        const QStringList maps = mapsOf(folder.path()).out.split(QLatin1Char('\n'));
        QCOMPARE(maps.filter(QStringLiteral("codec\tcannot be chosen")).size(), 1);
        QCOMPARE(maps.filter(QStringLiteral("map\tleft to right\t1 entry")).size(), 1);
        writeFile(at("Cyr.mal"), "A\t.-\n\n");
        writeFile(at("Cyr.old.mal"), "@ TextDirection RL\nA\t.-\nB\t-...\n\n");
        writeFile(at("none.mal"), "A\t.-\n\n");
        const QStringList alphabets = alphabetsOf(folder.path()).out.split(QLatin1Char('\n'));
        QCOMPARE(alphabets.filter(QStringLiteral("Cyr.old.mal\tcannot be chosen")).size(), 1);
        QCOMPARE(alphabets.filter(QStringLiteral("none.mal\tcannot be chosen")).size(), 1);
        QCOMPARE(alphabets.filter(QStringLiteral("Cyr.mal\tleft to right\t1 entry")).size(), 1);
    }

    void aFileThatIsTooLargeToCountSaysSo()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("Large.ascii.map"));
        writeFile(path, "0x41\t0x0410\n" + QByteArray("# comment\n").repeated(500000) + "\n");
        QVERIFY(mapsOf(folder.path()).out.contains(QStringLiteral("\tnot counted: ")));
    }

    void aCodecThatCannotBeChosenIsMarked()
    {
        QTemporaryDir folder;
        writeFile(folder.filePath(QStringLiteral("Greek.codec")), "title\nLR\nA;0x0391\n");
        QVERIFY(mapsOf(folder.path()).out.contains(QStringLiteral("cannot be chosen")));
        QByteArray output;
        const Outcome outcome = run(with(folder.path(), "Greek - ITA2"), "A", output);
        QVERIFY(!outcome.error.isEmpty());
        QCOMPARE(output, QByteArray());
        QVERIFY(outcome.error.contains(QStringLiteral("ITA2.codec")));
    }

    // Names whose letter case is to be looked for, in a folder that is read as often as for one.
    void aThousandMapsAreListedInOneGo()
    {
        const auto foldersRead = [](int count) {
            QTemporaryDir folder;
            for (int i = 0; i < count; ++i)
                writeFile(folder.filePath(QStringLiteral("m%1.ITA2.MAP").arg(i)), "A\ta\n\n");
            const int before = openedFolders;
            const QStringList lines = mapsOf(folder.path()).lines();
            const int read = openedFolders - before;
            const QStringList listed = lines.filter(QStringLiteral("\tleft to right\t1 entry"));
            return listed.size() == count ? read : -1;
        };
        const int readForOne = foldersRead(1);
        QVERIFY(readForOne > 0);
        QCOMPARE(foldersRead(1000), readForOne);
    }

    void filesThatCannotBeCheckedAreReportedInOneLine()
    {
        const Outcome outcome = lintOf({QStringLiteral("/no/such.mal")});
        QCOMPARE(outcome.out, QString());
        QCOMPARE(outcome.error, QStringLiteral("/no/such.mal: No such file or directory"));
    }

    void otherFilesArePassedOverBesideTables()
    {
        const QString greek = shippedAlphabets + QStringLiteral("/Greek.mal");
        const QString readme = shippedAlphabets + QStringLiteral("/README.md");
        const Outcome both = lintOf({readme, greek});
        QCOMPARE(both.out + both.error, QString());
        const Outcome alone = lintOf({readme});
        QVERIFY(alone.error.startsWith(QStringLiteral("no file to check")));
    }

    void whatIsNoFileIsReportedBesideTables_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("error");
        QTest::newRow("a name mistyped")
            << shippedAlphabets + "/Greek.mla"
            << shippedAlphabets + "/Greek.mla: No such file or directory";
        QTest::newRow("a folder") << shippedAlphabets << shippedAlphabets + ": is a folder";
        QTest::newRow("a device") << "/dev/null"
                                  << "/dev/null: is not a regular file";
    }
    void whatIsNoFileIsReportedBesideTables()
    {
        QFETCH(QString, name);
        QFETCH(QString, error);
        const Outcome outcome = lintOf({shippedAlphabets + "/Greek.mal", name});
        QCOMPARE(outcome.out, QString());
        QCOMPARE(outcome.error, error);
    }

    void findingsAreWrittenInTheStyleOfCompilers()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("a.b.mal"));
        writeFile(path, "A\t.-\n B\t-...\nC\t-.-.");
        const Outcome outcome = lintOf({path});
        QCOMPARE(outcome.error, QString());
        const QStringList lines = outcome.lines();
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines[0].startsWith(path + QStringLiteral(": the name")));
        QVERIFY(lines[1].startsWith(path + QStringLiteral(":2: warning: the key")));
        QVERIFY(lines[2].startsWith(path + QStringLiteral(":3: the last line")));
    }

    void whatLintFindsGivesTheTerminalNoOrders()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("a\u001b[31m\nb"));
        writeFile(path + QStringLiteral(".mal"), "\x1b[2J\t\x1b\nA\t\x1b[2J.\n\n");
        writeFile(path + QStringLiteral(".txt"), " \x1bz\n" + moduleLine("x\x1b[2Jy", '\x1b'));
        const Outcome outcome =
            lintOf({path + QStringLiteral(".mal"), path + QStringLiteral(".txt")});
        QVERIFY(outcome.lines().size() > 5);
        QVERIFY(!outcome.out.contains(QChar(0x1b)));
        for (const QString& line : outcome.lines())
            QVERIFY2(line.contains(QStringLiteral("/a\ufffd[31m\ufffdb.")), qPrintable(line));
    }

    void keysAreWrittenInUtf8WhateverTheLocale()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("a.mal"));
        writeFile(path, "Ж\t\n\n");
        QByteArray bytes;
        QTextStream out(&bytes);
        out.setCodec("US-ASCII");
        QVERIFY(!translate::lintFiles({path}, out).isClean);
        QVERIFY(bytes.contains("\"Ж\""));
    }

    void eightBitBecomesUtf8()
    {
        QByteArray output;
        const Outcome outcome = run(with(shippedMaps, "Russian - ITA2"), "PRIWET MIR\r\n", output);
        QCOMPARE(outcome.error, QString());
        QCOMPARE(QString::fromUtf8(output), QStringLiteral("ПРИВЕТ МИР\r\n"));
    }

    void utf8BecomesEightBit()
    {
        QByteArray output;
        const Outcome outcome =
            run(with(shippedMaps, "Russian - ITA2", "", true), "ПРИВЕТ МИР\r\n", output);
        QCOMPARE(outcome.error, QString());
        QCOMPARE(output, QByteArray("PRIWET MIR\r\n"));
    }

    void withoutAMapLatin1Passes()
    {
        QByteArray output;
        QCOMPARE(run(with(shippedMaps, "none"), allBytes(), output).error, QString());
        const QByteArray bytes = allBytes();
        QCOMPARE(output, QString::fromLatin1(bytes.constData(), bytes.size()).toUtf8());
        QByteArray back;
        QCOMPARE(run(with(shippedMaps, "none", "", true), output, back).error, QString());
        QCOMPARE(back, bytes);
    }

    void aShortNameIsEnoughWhereItIsOneFile()
    {
        QByteArray output;
        QCOMPARE(run(with(shippedMaps, "german"), "[", output).error, QString());
        QCOMPARE(output, QByteArray("Ä"));
    }

    void aShortNameOfTwoFilesNeedsTheDecoder()
    {
        QTemporaryDir folder;
        writeFile(folder.filePath(QStringLiteral("Two.ita2.map")), "A\ti\n\n");
        writeFile(folder.filePath(QStringLiteral("Two.ascii.map")), "A\ta\n\n");
        QByteArray output;
        const Outcome outcome = run(with(folder.path(), "Two"), "A", output);
        QVERIFY(!outcome.error.isEmpty());
        QVERIFY(outcome.error.contains(QStringLiteral("'Two - ASCII' or 'Two - ITA2'")));
        QCOMPARE(run(with(folder.path(), "Two", "Baudot"), "A", output).error, QString());
        QCOMPARE(output, QByteArray("i"));
        QCOMPARE(run(with(folder.path(), "Two", "ASCII RTTY"), "A", output).error, QString());
        QCOMPARE(output, QByteArray("a"));
    }

    void anUnknownMapIsReported()
    {
        QByteArray output;
        const Outcome outcome = run(with(shippedMaps, "Klingon"), "A", output);
        QVERIFY(!outcome.error.isEmpty());
        QCOMPARE(output, QByteArray());
        QCOMPARE(outcome.error,
                 QStringLiteral("%1: no map 'Klingon' (see 'morsehost maps')").arg(shippedMaps));
    }

    void whatNoByteStandsForBecomesAQuestionMark()
    {
        QByteArray output;
        const Outcome outcome =
            run(with(shippedMaps, "Russian - ITA2", "", true), "МИР Ω 🆘!", output);
        QCOMPARE(output, QByteArray("MIR ? ?!"));
        QVERIFY(!outcome.error.isEmpty());
        QVERIFY(outcome.error.startsWith(QStringLiteral("2 characters")));
        QVERIFY(outcome.error.contains(QStringLiteral("U+03A9")));
    }

    void aByteThatIsNoUtf8BecomesAQuestionMark_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("inside") << QByteArray("a\xFFz") << QByteArray("a?z");
        QTest::newRow("cut off by the end") << QByteArray("a\xD0") << QByteArray("a?");
    }

    void aByteThatIsNoUtf8BecomesAQuestionMark()
    {
        QFETCH(QByteArray, input);
        QFETCH(QByteArray, expected);
        QByteArray output;
        QVERIFY(!run(with(shippedMaps, "none", "", true), input, output).error.isEmpty());
        QCOMPARE(output, expected);
    }

    void piecesGiveWhatTheWholeGives_data()
    {
        QTest::addColumn<bool>("back");
        QTest::newRow("to text") << false;
        QTest::newRow("back") << true;
    }

    void piecesGiveWhatTheWholeGives()
    {
        QFETCH(bool, back);
        QTemporaryDir folder;
        // Two entries that are one character outside the first plane, cut between every two bytes.
        writeFile(folder.filePath(QStringLiteral("Pair.ascii.map")),
                  "A\t0xD83C\nB\t0xDD98\nC\t0x20AC\n\n");
        CodecHandler handler;
        handler.SetAlphabetsDir(folder.path());
        QVERIFY(handler.SetAlphabet(QStringLiteral("Pair - ASCII")));
        const QByteArray input =
            back ? QByteArray("x€🆘Ω\xC3\xA4\xFFy") : QByteArray("xCABABCy\xE4");

        Filter whole(handler, back);
        const QByteArray expected = whole.next(input) + whole.finish();
        for (int size = 1; size <= input.size(); ++size) {
            Filter filter(handler, back);
            QByteArray output;
            for (int at = 0; at < input.size(); at += size)
                output += filter.next(input.mid(at, size));
            output += filter.finish();
            QCOMPARE(output, expected);
            QCOMPARE(filter.replaced(), whole.replaced());
        }
    }

    void whatHasComeInIsWrittenBeforeMoreIsWaitedFor()
    {
        Pipe in;
        Pipe out;
        const FilterOptions options = with(shippedMaps, "Greek - ASCII");
        QString error = QStringLiteral("(not ended)");
        QScopedPointer<QThread> thread(QThread::create(
            [&] { error = translate::runTranslate(options, in.reader(), out.writer()); }));
        thread->start();
        in.write("A");
        QCOMPARE(QString::fromUtf8(out.readSome()), QStringLiteral("Α"));
        in.write("B");
        QCOMPARE(QString::fromUtf8(out.readSome()), QStringLiteral("Β"));
        in.closeWriter();
        QVERIFY(thread->wait(10000));
        QCOMPARE(error, QString());
    }

    void aReaderThatGoesAwayEndsTheFilterQuietly()
    {
        Pipe in;
        Pipe out;
        in.write("A");
        in.closeWriter();
        out.closeReader();
        QCOMPARE(translate::runTranslate(with(shippedMaps, "none"), in.reader(), out.writer()),
                 QString());
    }

    void anInputThatCannotBeReadIsReported()
    {
        Pipe out;
        QVERIFY(translate::runTranslate(with(shippedMaps, "none"), -1, out.writer())
                    .startsWith(QStringLiteral("standard input: ")));
    }

    void anOutputThatCannotBeWrittenIsReported()
    {
        const int full = open("/dev/full", O_WRONLY);
        QVERIFY(full >= 0);
        Pipe in;
        in.write("A");
        in.closeWriter();
        const QString error = translate::runTranslate(with(shippedMaps, "none"), in.reader(), full);
        close(full);
        QVERIFY(error.startsWith(QStringLiteral("standard output: ")));
    }

    void descriptorsThatDoNotBlockAreWaitedFor()
    {
        Pipe in;
        Pipe out;
        for (const int descriptor : {in.reader(), out.writer()})
            QVERIFY(fcntl(descriptor, F_SETFL, O_NONBLOCK) == 0);
        const QByteArray input(1024 * 1024, 'A');
        QByteArray output;
        QScopedPointer<QThread> feeder(QThread::create([&] {
            in.write(input);
            in.closeWriter();
        }));
        QScopedPointer<QThread> taker(QThread::create([&] {
            for (QByteArray some = out.readSome(); !some.isEmpty(); some = out.readSome())
                output += some;
        }));
        feeder->start();
        taker->start();
        QCOMPARE(
            translate::runTranslate(with(shippedMaps, "Greek - ASCII"), in.reader(), out.writer()),
            QString());
        out.closeWriter();
        QVERIFY(feeder->wait(10000));
        QVERIFY(taker->wait(10000));
        QCOMPARE(output, QByteArray("Α").repeated(input.size()));
    }
};

QTEST_APPLESS_MAIN(tst_Translate)
#include "tst_translate.moc"
