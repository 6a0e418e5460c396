// SPDX-License-Identifier: MIT
#include "charmap/codechandler.h"

#include "host/standin/configuration.h"
#include "host/standin/tracelog.h"
#include "support/decodermodules.h"
#include "support/files.h"
#include "support/privatemember.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <cstring>

#include <iconv.h>
#include <sys/stat.h>

PRIVATE_MEMBER(CodecNameToFile, CodecHandler, codecNameToFile,
               QString (CodecHandler::*)(const QString&));
PRIVATE_MEMBER(ReadCodecFile, CodecHandler, readCodecFile, bool (CodecHandler::*)(const QString&));
PRIVATE_MEMBER(ReadMapFile, CodecHandler, readMapFile, bool (CodecHandler::*)(const QString&));
PRIVATE_MEMBER(FileToCodecName, CodecHandler, fileToCodecName,
               QString (CodecHandler::*)(const QString&));

namespace {

/// The mapping tables of the Unicode consortium, as the package catdoc installs them.
const QString CONSORTIUM_TABLES = QStringLiteral("/usr/share/catdoc");

/// What iconv makes of a byte; null where it is not defined, or where iconv has no such charset.
QString decodeByIconv(const QByteArray& charset, char byte)
{
    const iconv_t converter = ::iconv_open("UTF-16LE", charset.constData());
    if (converter == reinterpret_cast<iconv_t>(-1))
        return {};
    char* from = &byte;
    std::size_t fromLeft = 1;
    char16_t decoded[8];
    char* to = reinterpret_cast<char*>(decoded);
    std::size_t toLeft = sizeof decoded;
    ::iconv(converter, &from, &fromLeft, &to, &toLeft);
    // Some charsets wait whether a combining character follows.
    ::iconv(converter, nullptr, nullptr, &to, &toLeft);
    ::iconv_close(converter);
    return fromLeft ? QString()
                    : QString::fromUtf16(decoded, int((sizeof decoded - toLeft) / sizeof *decoded));
}

/// The same by Qt, which asks ICU for the charsets that iconv lacks or knows in an old edition.
QString decodeByCodec(const QByteArray& charset, char byte)
{
    QTextCodec* const codec = QTextCodec::codecForName(charset);
    QTextCodec::ConverterState state;
    const QString text = codec ? codec->toUnicode(&byte, 1, &state) : QString();
    return state.invalidChars ? QString() : text;
}

/// What the world makes of a byte in the charset of that table.
QString decodeByOracle(const QString& table, char byte)
{
    if (table.startsWith("8859"))
        return decodeByIconv("ISO-" + table.toLatin1(), byte);
    static const QMap<QString, QByteArray> MAC_CHARSETS{{"mac-roman", "macintosh"},
                                                        {"mac-greek", "x-mac-greek"},
                                                        {"mac-cyrillic", "x-mac-cyrillic"},
                                                        {"mac-centeuro", "x-mac-centraleurroman"}};
    if (table.startsWith("mac-"))
        return decodeByCodec(MAC_CHARSETS.value(table), byte);
    return decodeByIconv(table.toUpper().toLatin1(), byte);
}

} // namespace

class tst_CodecHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        setConfigurationValue(QString(), "DecoderModulesFile", m_dir.filePath("modules"));
        writeFile(m_dir.filePath("modules"),
                  moduleLine("Teletype", 'I') + moduleLine("Packet", 'A') + moduleLine("Any", 'B') +
                      moduleLine("Voice", 'N') + moduleLine("Small", 'i') +
                      moduleLine("Twice", 'I') + moduleLine("Twice", 'A') + moduleLine("All", 'I'));
        QDir(m_dir.path()).mkdir("maps");
        for (const char* name :
             {"Greek.ita2.map", "Greek.ascii.map", "Arabic.ascii.map", "Cyrillic.Old.codec",
              "Latin.ITA2.MAP", "notes.txt", "Greek.map", ".hidden.codec", "a - b.ita2.map"})
            write(name, "");
        QDir(m_dir.filePath("maps")).mkdir("folder.codec");
    }

    void itsOperationsStandBehindThoseOfTheInterface()
    {
        auto operation = &CodecHandler::CharsetForDecoder;
        std::ptrdiff_t offset = 0;
        std::memcpy(&offset, &operation, sizeof offset);
        QCOMPARE(offset, std::ptrdiff_t(11 * sizeof(void*) + 1));
    }

    void aNewHandlerPassesTextThrough()
    {
        CodecHandler handler;
        QCOMPARE(handler.Alphabet(), "None");
        QCOMPARE(handler.AvailableAlphabets(), QStringList{"None"});
        QVERIFY(!handler.TextDirectionRTL());
        QCOMPARE(handler.Translate(QStringLiteral("A\u0410\0")), QStringLiteral("A\u0410\0"));
        QCOMPARE(handler.Backtranslate(QStringLiteral("A\u0410\0")), QStringLiteral("A\u0410\0"));
    }

    void aDecoderHasTheBaseCharacterSetOfItsLetter()
    {
        CodecHandler handler;
        QCOMPARE(handler.CharsetForDecoder("Teletype"), eCHARSET_ITA2);
        QCOMPARE(handler.CharsetForDecoder("Packet"), eCHARSET_ASCII);
        QCOMPARE(handler.CharsetForDecoder("Any"), eCHARSET_BOTH);
        QCOMPARE(handler.CharsetForDecoder("Voice"), eCHARSET_NONE);
        QCOMPARE(handler.CharsetForDecoder("Small"), eCHARSET_NONE);
        QCOMPARE(handler.CharsetForDecoder("Unknown"), eCHARSET_NONE);
        QCOMPARE(handler.CharsetForDecoder("teletype"), eCHARSET_NONE);
        // The last of two modules of one name.
        QCOMPARE(handler.CharsetForDecoder("Twice"), eCHARSET_ASCII);
    }

    void theCharacterSetsAreThoseOfTheConstruction()
    {
        const QString path = m_dir.filePath("modules");
        const QByteArray content = contentOf(path);
        CodecHandler before;
        writeFile(path, moduleLine("Packet", 'I'));
        CodecHandler after;
        writeFile(path, content);
        QCOMPARE(before.CharsetForDecoder("Packet"), eCHARSET_ASCII);
        QCOMPARE(after.CharsetForDecoder("Packet"), eCHARSET_ITA2);
        QCOMPARE(after.CharsetForDecoder("Teletype"), eCHARSET_NONE);
    }

    void theAlphabetsOfTheDecoderAreListed_data()
    {
        QTest::addColumn<QString>("decoder");
        QTest::addColumn<QStringList>("names");
        const QStringList ita2{"Cyrillic - ITA2", "Greek - ITA2", "Latin - ITA2", "a - b - ITA2"};
        const QStringList both{"Arabic - ASCII", "Cyrillic - ITA2", "Greek - ASCII",
                               "Greek - ITA2",   "Latin - ITA2",    "a - b - ITA2"};
        const QStringList all{"Arabic", "Cyrillic", "Greek", "Latin", "a"};
        const QStringList none{"None"};
        QTest::newRow("ITA2") << "Teletype" << none + ita2;
        QTest::newRow("ASCII") << "Packet" << none + QStringList{"Arabic - ASCII", "Greek - ASCII"};
        QTest::newRow("both") << "Any" << none + both;
        QTest::newRow("none") << "Voice" << none;
        QTest::newRow("unknown") << "Unknown" << none;
        QTest::newRow("no decoder") << QString() << none;
        QTest::newRow("All") << "All" << none + all;
        QTest::newRow("ALL") << "ALL" << none + all;
    }

    void theAlphabetsOfTheDecoderAreListed()
    {
        QFETCH(QString, decoder);
        CodecHandler handler;
        handler.SetAlphabetsDir(maps());
        handler.SetDecoder(decoder);
        QTEST(handler.AvailableAlphabets(), "names");
    }

    void theFolderIsListedWhenItIsSet()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("one.codec"), "");
        CodecHandler handler;
        handler.SetDecoder("all");
        handler.SetAlphabetsDir(dir.path());
        writeFile(dir.filePath("two.codec"), "");
        QCOMPARE(handler.AvailableAlphabets(), (QStringList{"None", "one"}));
        handler.SetAlphabetsDir(dir.path() + "\\");
        QCOMPARE(handler.AvailableAlphabets(), (QStringList{"None", "one", "two"}));
        handler.SetAlphabetsDir(dir.filePath("missing"));
        QCOMPARE(handler.AvailableAlphabets(), QStringList{"None"});
    }

    void aShortNameIsCompletedForTheDecoder_data()
    {
        QTest::addColumn<QString>("decoder");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("alphabet");
        QTest::addColumn<bool>("isLoaded");
        QTest::newRow("ITA2") << "Teletype"
                              << "Greek"
                              << "Greek - ITA2" << true;
        QTest::newRow("ASCII") << "Packet"
                               << "Greek"
                               << "Greek - ASCII" << true;
        QTest::newRow("both prefer ASCII") << "Any"
                                           << "Greek"
                                           << "Greek - ASCII" << true;
        QTest::newRow("both never take ITA2") << "Any"
                                              << "Latin"
                                              << "Latin - ASCII" << false;
        QTest::newRow("none") << "Voice"
                              << "Greek"
                              << "Greek" << false;
        QTest::newRow("unknown") << "Unknown"
                                 << "Greek"
                                 << "Greek" << false;
        QTest::newRow("full name") << "Packet"
                                   << "Greek - ITA2"
                                   << "Greek - ITA2" << true;
        QTest::newRow("full name, unknown decoder") << "?"
                                                    << "Greek - ITA2"
                                                    << "Greek - ITA2" << true;
        QTest::newRow("found in any letter case") << "?"
                                                  << "GREEK - ita2"
                                                  << "GREEK - ita2" << true;
        QTest::newRow("suffix in capitals") << "?"
                                            << "Latin - ITA2"
                                            << "Latin - ITA2" << true;
        QTest::newRow("base name with a separator") << "?"
                                                    << "a - b - ITA2"
                                                    << "a - b - ITA2" << false;
        QTest::newRow("codec file") << "?"
                                    << "Cyrillic - ITA2"
                                    << "Cyrillic - ITA2" << false;
        QTest::newRow("missing") << "?"
                                 << "Klingon - ITA2"
                                 << "Klingon - ITA2" << false;
        QTest::newRow("a path is no name") << "?"
                                           << "../maps/Greek - ITA2"
                                           << "../maps/Greek - ITA2" << false;
        QTest::newRow("nor with backslashes") << "?"
                                              << "..\\maps\\Greek - ITA2"
                                              << "..\\maps\\Greek - ITA2" << false;
        QTest::newRow("empty") << "Packet"
                               << ""
                               << " - ASCII" << false;
        QTest::newRow("placeholder") << "Packet"
                                     << "%2"
                                     << "%2 - ASCII" << false;
    }

    void aShortNameIsCompletedForTheDecoder()
    {
        QFETCH(QString, decoder);
        QFETCH(QString, name);
        CodecHandler handler;
        handler.SetAlphabetsDir(maps());
        handler.SetDecoder(decoder);
        QTEST(handler.SetAlphabet(name), "isLoaded");
        QTEST(handler.Alphabet(), "alphabet");
    }

    void namesAndFilesBelongTogether()
    {
        CodecHandler handler;
        handler.SetAlphabetsDir(maps());
        const auto fileOf = [&](const char* name) {
            return (handler.*memberOf(CodecNameToFile()))(name);
        };
        const auto nameOf = [&](const char* file) {
            return (handler.*memberOf(FileToCodecName()))(file);
        };
        // The name as it is composed, whatever the spelling on disk.
        QCOMPARE(fileOf("Greek - ITA2"), "Greek.ITA2.map");
        QCOMPARE(fileOf("GREEK - ascii - more"), "GREEK.ascii.map");
        QCOMPARE(fileOf("Greek"), "");
        QCOMPARE(fileOf("Cyrillic - ITA2"), "");
        QCOMPARE(nameOf("Cyrillic.Old.codec"), "Cyrillic - ITA2");
        QCOMPARE(nameOf("Latin.ITA2.MAP"), "Latin - ITA2");
        QCOMPARE(nameOf("Greek.Ascii.map"), "Greek - ASCII");
        QCOMPARE(nameOf("Greek.map"), "");
        QCOMPARE(nameOf("notes.txt"), "");
    }

    void noneIsTheEmptyAlphabetInAnyLetterCase()
    {
        CodecHandler handler = loaded("@TextDirection RL\nA\tx\n\n");
        QVERIFY(handler.TextDirectionRTL());
        for (const char* name : {"none", "None", "NONE"}) {
            QVERIFY(handler.SetAlphabet(name));
            QCOMPARE(handler.Alphabet(), "None");
            QCOMPARE(handler.Translate("A"), "A");
            QVERIFY(!handler.TextDirectionRTL());
        }
    }

    void aFailedLoadLeavesNoTable()
    {
        CodecHandler handler = loaded("@TextDirection RL\nA\tx\n\n");
        QVERIFY(!handler.SetAlphabet("Missing - ITA2"));
        QCOMPARE(handler.Translate("A"), "A");
        QVERIFY(!handler.TextDirectionRTL());
    }

    void whatIsNoFileIsNotLoaded_data()
    {
        QTest::addColumn<QString>("name");
        QDir(maps()).mkdir("folder.ita2.map");
        ::mkfifo(QFile::encodeName(maps() + "/pipe.ita2.map").constData(), 0600);
        QFile::link(maps() + "/loop.ita2.map", maps() + "/loop.ita2.map");
        QTest::newRow("folder") << "folder - ITA2";
        QTest::newRow("pipe without a writer") << "pipe - ITA2";
        QTest::newRow("link to itself") << "loop - ITA2";
    }

    void whatIsNoFileIsNotLoaded()
    {
        QFETCH(QString, name);
        CodecHandler handler;
        handler.SetAlphabetsDir(maps());
        QVERIFY(!handler.SetAlphabet(name));
        QCOMPARE(handler.Translate("A"), "A");
        handler.SetDecoder("All");
        QVERIFY(!handler.AvailableAlphabets().contains(name.section(" - ", 0, 0)));
    }

    void theCodecFileThatIsNoFileIsNotLoaded()
    {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("ITA2.codec"));
        CodecHandler handler;
        handler.SetAlphabetsDir(dir.path());
        handler.SetDecoder("Teletype");
        QVERIFY(!handler.SetAlphabet("ITA2 - ITA2"));
        QCOMPARE(handler.Translate("A"), "A");
    }

    void aDecoderOfBothNeverLooksForACodecFile()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("Greek.codec"), "\n\nA;0x0391\n");
        writeFile(dir.filePath("ITA2.codec"), "\n\nA;0x0391\n");
        CodecHandler handler;
        handler.SetAlphabetsDir(dir.path());
        handler.SetDecoder("Any");
        QVERIFY(!handler.SetAlphabet("Greek"));
        QCOMPARE(handler.Alphabet(), "Greek - ASCII");
        QCOMPARE(handler.Translate("A"), "A");
    }

    void charactersAboveLatin1PassThoughTheirLowByteHasAnEntry()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("T.ascii.map"), "0x41\t0x0391\n\n");
        CodecHandler handler;
        handler.SetAlphabetsDir(dir.path());
        QVERIFY(handler.SetAlphabet("T - ASCII"));
        QCOMPARE(handler.Translate(QStringLiteral("A\u0441\u0141")),
                 QStringLiteral("\u0391\u0441\u0141"));
        const QString many = QStringLiteral("A\u0441").repeated(5000);
        QCOMPARE(handler.Translate(many), QStringLiteral("\u0391\u0441").repeated(5000));
    }

    void aFileOfTheFolderIsReadInEitherFormat()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("a"), "first\nRL\nA;0x0410\n");
        writeFile(dir.filePath("b"), "A\t0x0391\n\n");
        CodecHandler handler;
        handler.SetAlphabetsDir(dir.path());
        QVERIFY((handler.*memberOf(ReadCodecFile()))("a"));
        QCOMPARE(handler.Translate("A"), QStringLiteral("\u0410"));
        QVERIFY(handler.TextDirectionRTL());
        QVERIFY((handler.*memberOf(ReadMapFile()))("b"));
        QCOMPARE(handler.Translate("A"), QStringLiteral("\u0391"));
        QVERIFY(!handler.TextDirectionRTL());
        QVERIFY(!(handler.*memberOf(ReadCodecFile()))("c"));
        QVERIFY(!(handler.*memberOf(ReadMapFile()))("c"));
    }

    void theOneCodecFileThatCanBeLoadedIsCalledITA2()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("Greek.codec"), "\n\nA;0x0391\n");
        CodecHandler handler;
        handler.SetDecoder("Teletype");
        handler.SetAlphabetsDir(dir.path());
        QCOMPARE(handler.AvailableAlphabets(), (QStringList{"None", "Greek - ITA2"}));
        QVERIFY(!handler.SetAlphabet("Greek - ITA2"));
        QVERIFY(!handler.SetAlphabet("ITA2 - ITA2"));
        QCOMPARE(handler.Translate("A"), "A");

        writeFile(dir.filePath("ITA2.codec"), "first\n\nA;0x0410\nB;\nC;41\nD;0x0\n");
        handler.SetAlphabetsDir(dir.path());
        QVERIFY(handler.SetAlphabet("ITA2 - ITA2"));
        QCOMPARE(handler.Translate("ABCD"), QStringLiteral("\u0410 CD"));
        // Whatever stands behind the separator, but only for that base name in capitals.
        QVERIFY(handler.SetAlphabet("ITA2 - ASCII"));
        QVERIFY(!handler.SetAlphabet("ita2 - ITA2"));

        // A map file of the name goes first.
        writeFile(dir.filePath("ITA2.ita2.map"), "A\tx\n\n");
        QVERIFY(handler.SetAlphabet("ITA2 - ITA2"));
        QCOMPARE(handler.Translate("A"), "x");
    }

    void theCodecFileThatCanBeLoadedMayRunFromRightToLeft()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("ITA2.codec"), "\nRL\nA;0x0627\n");
        CodecHandler handler;
        handler.SetDecoder("Teletype");
        handler.SetAlphabetsDir(dir.path());
        QVERIFY(handler.SetAlphabet("ITA2 - ITA2"));
        QVERIFY(handler.TextDirectionRTL());
    }

    void anotherDecoderOrFolderKeepsTheTable()
    {
        CodecHandler handler = loaded("A\tx\n\n");
        handler.SetDecoder("Packet");
        handler.SetAlphabetsDir("/");
        handler.ResetInternalState();
        QCOMPARE(handler.Translate("A"), "x");
        QCOMPARE(handler.Alphabet(), "table - ITA2");
    }

    void theLastHeaderLineDecidesTheDirection()
    {
        QVERIFY(loaded("@TextDirection RL\nA\tx\n\n").TextDirectionRTL());
        QVERIFY(!loaded("@TextDirection RL\n@Version 2\nA\tx\n\n").TextDirectionRTL());
    }

    void theLastLineOfAMapFileHasNoEffect()
    {
        CodecHandler handler = loaded("A\tx\nB\ty");
        QCOMPARE(handler.Translate("AB"), "xB");
    }

    void textIsTranslatedInBothDirections()
    {
        CodecHandler handler =
            loaded("0x41\t0x05D0\nB\tx\nC\tx\n0x80\ty\n0x01\ty\n0x44\t0x0000\n0x00\tz\n\n");
        QCOMPARE(handler.Translate("ABCE"), QStringLiteral("\u05d0xxE"));
        QCOMPARE(handler.Translate("D"), " ");
        QCOMPARE(handler.Translate(QStringLiteral("\u0080\u0081\u0410\0")),
                 QStringLiteral("y\u0081\u0410z"));
        QCOMPARE(handler.Backtranslate(QStringLiteral("\u05d0xyABz\0")),
                 QStringLiteral("AB\u0080ABzD"));
    }

    void theCharacterSetsAreMembersToo()
    {
        static_assert(CodecHandler::eCHARSET_NONE == eCHARSET_NONE && eCHARSET_NONE == 0);
        static_assert(CodecHandler::eCHARSET_ITA2 == eCHARSET_ITA2 && eCHARSET_ITA2 == 1);
        static_assert(CodecHandler::eCHARSET_ASCII == eCHARSET_ASCII && eCHARSET_ASCII == 2);
        static_assert(CodecHandler::eCHARSET_BOTH == eCHARSET_BOTH && eCHARSET_BOTH == 3);
        CodecHandler handler;
        const CodecHandler::eBASE_CHARSET charset = handler.CharsetForDecoder("Any");
        QCOMPARE(charset, CodecHandler::eCHARSET_BOTH);
    }

    void codecFilesAreFoundInAnyLetterCase()
    {
        for (const char* file : {"ita2.codec", "ITA2.CODEC", "Ita2.Codec"}) {
            QTemporaryDir dir;
            writeFile(dir.filePath(file), "title\nRL\nA;0x0410\n");
            CodecHandler handler;
            handler.SetAlphabetsDir(dir.path());
            QVERIFY2(handler.SetAlphabet("ITA2 - ITA2"), file);
            QCOMPARE(handler.Translate("A"), QStringLiteral("\u0410"));
            QVERIFY(handler.TextDirectionRTL());
        }
    }

    void hiddenFilesAreFoundInAnyLetterCaseAndNotListed()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath(".Secret.ita2.map"), "A\tx\n\n");
        CodecHandler handler;
        handler.SetDecoder("All");
        handler.SetAlphabetsDir(dir.path());
        QCOMPARE(handler.AvailableAlphabets(), QStringList{"None"});
        QVERIFY(handler.SetAlphabet(".SECRET - ITA2"));
        QCOMPARE(handler.Translate("A"), "x");
    }

    void theEmptyFolderNameListsNothing()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(maps()));
        CodecHandler handler;
        handler.SetDecoder("All");
        handler.SetAlphabetsDir(QString());
        const QStringList names = handler.AvailableAlphabets();
        QDir::setCurrent(before);
        QCOMPARE(names, QStringList{"None"});
    }

    void aCopyHoldsWhatTheOriginalHeld_data()
    {
        QTest::addColumn<bool>("isAssigned");
        QTest::newRow("constructed") << false;
        QTest::newRow("assigned") << true;
    }

    void aCopyHoldsWhatTheOriginalHeld()
    {
        QFETCH(bool, isAssigned);
        QTemporaryDir dir;
        writeFile(dir.filePath("one.ita2.map"), "@TextDirection RL\nA\tx\n\n");
        writeFile(dir.filePath("two.ascii.map"), "A\ty\n\n");
        CodecHandler handler;
        handler.SetAlphabetsDir(dir.path());
        handler.SetDecoder("Teletype");
        QVERIFY(handler.SetAlphabet("one"));

        // With something else in every member beforehand, the decoders' character sets included.
        const QString modules = m_dir.filePath("modules");
        const QByteArray content = contentOf(modules);
        writeFile(modules, moduleLine("Other", 'A'));
        CodecHandler other;
        writeFile(modules, content);
        other.SetAlphabetsDir(maps());
        other.SetDecoder("Other");
        QVERIFY(other.SetAlphabet("Greek"));
        CodecHandler copy = isAssigned ? other : handler;
        if (isAssigned)
            copy = handler;
        handler.SetAlphabetsDir(maps());
        handler.SetDecoder("Packet");
        handler.SetAlphabet("None");

        QCOMPARE(copy.Alphabet(), "one - ITA2");
        QCOMPARE(copy.Translate("A"), "x");
        QVERIFY(copy.TextDirectionRTL());
        QCOMPARE(copy.CharsetForDecoder("Any"), eCHARSET_BOTH);
        QCOMPARE(copy.CharsetForDecoder("Other"), eCHARSET_NONE);
        QCOMPARE(copy.AvailableAlphabets(), (QStringList{"None", "one - ITA2"}));
        QVERIFY(copy.SetAlphabet("one"));
        QVERIFY(!copy.SetAlphabet("Greek"));
    }

    void withoutAModulesFileEveryDecoderHasNoCharacterSet()
    {
        const QString modules = m_dir.filePath("modules");
        const QString aside = m_dir.filePath("aside");
        QVERIFY(QFile::rename(modules, aside));
        // A file that cannot be read leaves the modules of the last one, so it has to be emptied.
        writeFile(modules, "");
        CodecHandler handler;
        QVERIFY(QFile::remove(modules));
        TraceRecorder traces;
        CodecHandler second;
        QVERIFY(QFile::rename(aside, modules));
        QCOMPARE(traces.Messages(),
                 QStringList{"Decoder modules file can not be opened: " + modules});
        for (CodecHandler* one : {&handler, &second}) {
            one->SetAlphabetsDir(maps());
            one->SetDecoder("Teletype");
            QCOMPARE(one->CharsetForDecoder("Teletype"), eCHARSET_NONE);
            QCOMPARE(one->AvailableAlphabets(), QStringList{"None"});
            QVERIFY(!one->SetAlphabet("Greek"));
            QVERIFY(one->SetAlphabet("Greek - ITA2"));
            one->SetDecoder("All");
            QVERIFY(one->AvailableAlphabets().size() > 1);
        }
    }

    void aCopyTranslatesByItself()
    {
        CodecHandler handler = loaded("A\tx\n\n");
        CodecHandler copy(handler);
        CodecHandler assigned;
        assigned = handler;
        handler.SetAlphabet("None");
        QCOMPARE(copy.Translate("A"), "x");
        QCOMPARE(assigned.Translate("A"), "x");
        QCOMPARE(assigned.Alphabet(), "table - ITA2");
        QCOMPARE(assigned.CharsetForDecoder("Packet"), eCHARSET_ASCII);
    }

    void tablesOfTheUnicodeConsortiumAreTheirCharsets_data()
    {
        QTest::addColumn<QString>("table");
        const QStringList files = QDir(CONSORTIUM_TABLES).entryList({"*.txt"}, QDir::Files);
        QVERIFY2(files.size() >= 46, "scripts/setup.sh installs catdoc, which brings them");
        for (const QString& file : files)
            QTest::newRow(qPrintable(file)) << file.chopped(4);
    }

    void tablesOfTheUnicodeConsortiumAreTheirCharsets()
    {
        QFETCH(QString, table);
        const QByteArray content = contentOf(CONSORTIUM_TABLES + "/" + table + ".txt");
        CodecHandler handler = loaded(content);

        // Every line but the last, in columns; a line without any is byte 0 without a value.
        QMap<int, QByteArray> values;
        QList<QByteArray> lines =
            content.trimmed().isEmpty() ? QList<QByteArray>() : content.split('\n');
        if (lines.last().isEmpty())
            lines.removeLast();
        lines.removeLast();
        for (const QByteArray& line : qAsConst(lines)) {
            if (line.startsWith('#'))
                continue;
            const QList<QByteArray> columns =
                (line.trimmed().isEmpty() ? QByteArray() : line).split('\t');
            values.insert(columns[0].toInt(nullptr, 16), columns.value(1).trimmed());
        }

        const bool hasOracle = table != "mac-arabic" && table != "mac-hebrew";
        int compared = 0;
        QMap<QString, int> keysOf;
        for (int byte = 0; byte < 256; ++byte)
            ++keysOf[handler.Translate(QString(QChar(byte)))];
        for (int byte = 0; byte < 256; ++byte) {
            const QByteArray value = values.value(byte);
            bool isNumber = false;
            const int number = value.toInt(&isNumber, 16);
            QString expected;
            if (!values.contains(byte))
                expected = QChar(byte); // no line, or the last one
            else if (value.isEmpty())
                expected = " "; // "UNDEFINED"
            else if (!isNumber)
                expected = QChar(value[0]); // "<LR>+0x0020", "0x05F2+0x05B7"
            else if (number == 0)
                expected = " "; // NUL
            else if (table == "us-ascii" && (byte == '\'' || byte == '`'))
                expected = QChar(number); // this table has typographic quotes in their place
            else if (!hasOracle)
                expected = QChar(number);
            else {
                expected = decodeByOracle(table, static_cast<char>(byte));
                ++compared;
            }
            const QString text = handler.Translate(QString(QChar(byte)));
            QVERIFY2(text == expected,
                     qPrintable(QStringLiteral("byte %1: %2 instead of %3")
                                    .arg(byte, 2, 16)
                                    .arg(text[0].unicode(), 4, 16)
                                    .arg(expected.isEmpty() ? 0 : expected[0].unicode(), 4, 16)));
            // Nothing is ever translated back to byte 0.
            if (keysOf[text] == 1 && byte != 0)
                QCOMPARE(handler.Backtranslate(text), QString(QChar(byte)));
        }
        QVERIFY(!hasOracle || compared > (table == "us-ascii" ? 120 : 200));
    }

private:
    QString maps() const { return m_dir.filePath("maps"); }

    void write(const QString& name, const QByteArray& content)
    {
        writeFile(maps() + "/" + name, content);
    }

    /// A handler with a map file of that content.
    static CodecHandler loaded(const QByteArray& content)
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("table.ita2.map"), content);
        CodecHandler handler;
        handler.SetAlphabetsDir(dir.path());
        if (!handler.SetAlphabet("table - ITA2"))
            throw std::runtime_error("not loaded");
        return handler;
    }

    QTemporaryDir m_dir;
};

QTEST_APPLESS_MAIN(tst_CodecHandler)
#include "tst_codechandler.moc"
