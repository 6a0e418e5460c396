// SPDX-License-Identifier: MIT
#include "tables/lint/lint.h"

#include "support/decodermodules.h"
#include "support/files.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>

using lint::Report;

namespace {

/// One string a finding, in the order of the lines: what a row expects is the beginning of it.
QStringList texts(const Report& report)
{
    QStringList lines;
    for (const Fault& fault : report.faults) {
        const bool isError = fault.severity == Fault::Severity::Error;
        lines += QString::number(fault.line) + QLatin1String(isError ? ": " : "? ") + fault.text;
    }
    return lines;
}

QStringList shippedTables()
{
    QStringList files;
    QDirIterator it(QStringLiteral(PROJECT_DATA_DIR), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (lint::isTable(path))
            files += path;
    }
    files.sort();
    return files;
}

} // namespace

class tst_Lint : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachTrapHasItsFinding_data();
    void eachTrapHasItsFinding();
    void eachNameTrapHasItsFinding_data();
    void eachNameTrapHasItsFinding();
    void everyShippedFileIsClean_data();
    void everyShippedFileIsClean();
    void everyFolderOfTablesIsLookedAt();
    void findingsComeInTheOrderOfTheLines();
    void theNumberOfFindingsIsBounded();
    void whatIsStoredIsCounted();
    void aFileThatCannotBeReadSaysWhy();
    void namesOfOtherFilesAreNoTables();
};

void tst_Lint::eachTrapHasItsFinding_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("expected");

    const auto row = [](const char* claim, const QString& name, const QByteArray& content,
                        const QStringList& expected) {
        QTest::newRow(claim) << name << content << expected;
    };

    // Alphabets
    const QString mal = "Greek.mal";
    row("a plain alphabet is clean", mal, "A\t.-\nB\t-...\n\n", {});
    row("line ends of either kind are clean", mal, "A\t.-\r\nB\t-...\r\n\r\n", {});
    row("a byte order mark is clean", mal,
        "\xEF\xBB\xBF"
        "A\t.-\n\n",
        {});
    row("text behind a second tab is clean", mal, "A\t.-\tfirst letter\n\n", {});
    row("empty lines between entries are clean", mal, "A\t.-\n\nB\t-...\n\n", {});
    row("words in an alphabet of another script are clean", mal, "Α\t.-\n<SK>\t...-.-\n\n", {});
    row("the last line is lost", mal, "A\t.-\nB\t-...\n",
        {"2: the last line of the file is never stored"});
    row("the last line is lost without a line end too", mal, "A\t.-\nB\t-...",
        {"2: the last line of the file is never stored"});
    row("an only line is lost", mal, "A\t.-\n",
        {"0: no entry is stored", "1: the last line of the file is never stored"});
    row("an empty file stores nothing", mal, "", {"0: no entry is stored"});
    row("a header alone stores nothing", mal, "@ TextDirection RL\n", {"0: no entry is stored"});
    row("a shared code names the key that hides the other", mal, "B\t.-\nA\t.-\n\n",
        {"1: \"B\" (U+0042) is never written: \"A\" (U+0041) in line 2"});
    row("a final letter form hides the letter", mal, "מ\t--\nם\t--\n\n",
        {"1: \"מ\" (U+05DE) is never written: \"ם\" (U+05DD) in line 2"});
    row("a Latin letter in a Greek alphabet looks like a Greek one", mal,
        "A\t.-\nΒ\t-...\nΓ\t--.\n\n",
        {"1? the key \"A\" (U+0041) is Latin in an alphabet that is Greek; it looks like \"Α\" "
         "(U+0391)"});
    row("a Cyrillic letter in a Latin alphabet is reported", mal, "A\t.-\nB\t-...\nЖ\t...-\n\n",
        {"3? the key \"Ж\" (U+0416) is Cyrillic in an alphabet that is Latin"});
    row("a letter of a script without a name is reported", mal, "A\t.-\nB\t-...\nԱ\t.-.-\n\n",
        {"3? the key \"Ա\" (U+0531) is of another script in an alphabet that is Latin"});
    row("a word of mixed scripts is reported", mal, "Α\t.-\nΒ\t-...\nΟK\t----\n\n",
        {"3? the key \"K\" (U+004B) is Latin in an alphabet that is Greek; it looks like \"Κ\""});
    row("a key given twice is replaced", mal, "A\t.-\nB\t-...\nA\t.-.-\n\n",
        {"3: the key \"A\" (U+0041) was given in line 1 already"});
    row("a line without a key is skipped", mal, "A\t.-\n\t-...\n\n", {"2: no key before the tab"});
    row("a line without a tab is a key", mal, "A\t.-\nB -...\n\n",
        {"2: no tab: the whole line becomes a key with an empty code"});
    row("there are no comments", mal, "# letters\nA\t.-\n\n",
        {"1: there are no comments: the whole line becomes a key"});
    row("a header behind the first entry is an entry", mal, "A\t.-\n@ TextDirection RL\n\n",
        {"2: a header line below any other line is an entry", "2: no tab"});
    row("a header with a tab behind the first entry is an entry", mal,
        "A\t.-\n@ TextDirection\tRL\n\n",
        {"2: a header line below any other line is an entry",
         "2: the code of \"@ TextDirection\" holds \"R\""});
    row("an empty code is reported", mal, "A\t.-\nB\t\n\n",
        {"2: the code of \"B\" (U+0042) is empty"});
    row("two keys without codes are reported once each", mal, "A\t\nB\t\n\n",
        {"1: the code of \"A\" (U+0041) is empty", "2: the code of \"B\" (U+0042) is empty"});
    row("a code of other characters is reported", mal, "A\t.-\nB\t-··\n\n",
        {"2: the code of \"B\" (U+0042) holds \"·\" (U+00B7)"});
    row("a blank behind the code is reported", mal, "A\t.- \n\n",
        {"1: the code of \"A\" (U+0041) holds \" \" (U+0020)"});
    row("a header that is switched off by the next is reported", mal,
        "@ TextDirection RL\n@ Version 2\nא\t.-\n\n",
        {"1: right-to-left is switched off again by the header line 2"});
    row("a direction spelt otherwise is reported", mal, "@ TextDirection RTL\nא\t.-\n\n",
        {"1: this is not a right-to-left header"});
    row("a direction in small letters is reported", mal, "@ textdirection RL\nא\t.-\n\n",
        {"1: this is not a right-to-left header"});
    row("left-to-right may be said", mal, "@ TextDirection LR\nA\t.-\n\n", {});
    row("invalid UTF-8 is reported", mal, "A\t.-\n\xC4\t.-.-\n\n", {"2: invalid UTF-8"});
    row("a file that ends within a character is reported", mal, "A\t.-\n\n\xC4",
        {"3: the file ends within a character"});
    row("UTF-16 is reported", mal,
        QByteArray("\xFF\xFE"
                   "A\0\t\0.\0-\0\n\0\n\0",
                   14),
        {"1? the file is encoded as \"UTF-16LE\""});
    row("a lone carriage return ends no line", mal, "A\t.-\rB\t-...\n\n",
        {"1: a lone carriage return does not end a line",
         "1: the code of \"A\" (U+0041) holds U+000D"});
    row("blanks around a key are reported", mal, " A\t.-\n\n", {"1? the key \" A\" has blanks"});
    row("a control character in a key is reported", mal, "A\x07\t.-\n\n",
        {"1? the key holds the invisible character U+0007"});
    row("an invisible character in a key is reported", mal, "A\u200E\t.-\n\n",
        {"1? the key holds the invisible character U+200E"});
    row("a decomposed key is reported", mal, "A\u0308\t.-.-\n\n",
        {"1? the key \"A\u0308\" is not in composed form"});
    row("a presentation form is reported", mal, "\uFE80\t.\n\n",
        {"1? the key \"\uFE80\" (U+FE80) is the shape of a letter in one place of a word; the "
         "letter itself is \"ء\" (U+0621)"});

    // Codecs
    const QString codec = "ITA2.codec";
    row("a plain codec is clean", codec, "title\nLR\nA;0x0410\nB;0x0411\n", {});
    row("the last line of a codec counts", codec, "title\nRL\nA;0x0410", {});
    row("empty lines and lines of \"#\" are skipped in a codec", codec,
        "title\n\nA;0x0410\n\n# more\n", {});
    row("a semicolon can be a key", codec, "title\nLR\n;;0x003D\n", {});
    row("a codec of two lines stores nothing", codec, "title\nRL\n", {"0: no entry is stored"});
    row("the first line of a codec is no entry", codec, "A;0x0410\nLR\nB;0x0411\n",
        {"1: the first line is a title"});
    row("the second line of a codec is no entry", codec, "title\nA;0x0410\nB;0x0411\n",
        {"2: the second line says the text direction"});
    row("a direction in small letters is reported in a codec", codec, "title\nrl\nB;0x0411\n",
        {"2? this is not right-to-left"});
    row("a codec line of another shape is skipped", codec, "title\nLR\nA;0x0410\nB=0x0411\n",
        {"4: the line is skipped: an entry is one character"});
    row("a codec number without 0x is skipped", codec, "title\nLR\nA;0x0410\nC;41\n",
        {"4: the line is skipped: a value is written with a leading \"0x\""});
    row("a codec value that is not a number is skipped", codec, "title\nLR\nA;0x0410\nC;Б\n",
        {"4: the line is skipped: \"Б\" (U+0411) is not a number"});
    row("a codec value of 0 is not stored", codec, "title\nLR\nA;0x0410\nD;0x0\n",
        {"4: the value is 0"});
    row("a codec value above 16 bits is cut", codec, "title\nLR\nA;0x10410\n",
        {"3: the character code does not fit in 16 bits: it is cut to \"А\""});
    row("half a surrogate pair is reported", codec, "title\nLR\nA;0xD83D\n",
        {"3: the character code U+D83D is half of a pair"});
    row("a codec key above U+00FF goes to byte 0", codec, "title\nLR\nЖ;0x0416\n",
        {"3: the key \"Ж\" (U+0416) is not an 8-bit character"});
    row("a codec key of U+0100 goes to byte 0", codec, "title\nLR\n\u0100;0x0416\n",
        {"3: the key \"\u0100\" (U+0100) is not an 8-bit character"});
    row("a codec key of U+00FF is a byte", codec, "title\nLR\n\u00FF;0x0416\n", {});
    row("a codec key given twice is replaced", codec, "title\nLR\nA;0x0410\nA;0x0411\n",
        {"4: the byte 0x41 (\"A\") was given in line 3 already"});
    row("a codec that is not UTF-8 is Latin-1", codec, "title\nLR\n\xC4;0x0410\n",
        {"3? invalid UTF-8: the whole file is read as Latin-1"});
    row("a shared character is turned back to the smallest byte", codec,
        "title\nLR\nB;0x0410\nA;0x0410\n",
        {"3? 0x42 (\"B\") shows the same character \"А\" (U+0410) as 0x41 (\"A\") in line 4"});
    row("a byte shown as a blank swallows blanks", codec, "title\nLR\nB;\n",
        {"3? 0x42 (\"B\") is shown as a blank, so every blank"});

    // Maps
    const QString map = "Greek.ascii.map";
    row("a plain map is clean", map, "# title\n0x41\t0x0410\nB\t0x0411\t# BE\n# end\n", {});
    row("an entry that shows its byte as itself has no effect", map, "B\tB\n0x41\t0x0041\n\n",
        {"1? no effect: the byte 0x42 (\"B\") is shown as itself without this line",
         "2? no effect: the byte 0x41 (\"A\") is shown as itself without this line"});
    row("an entry that takes back an earlier one has", map, "B\t0x0411\nB\tB\n\n",
        {"2: the byte 0x42 (\"B\") was given in line 1 already"});
    row("an empty line closes a map", map, "0x41\t0x0410\n\n", {});
    row("the last line of a map is lost", map, "0x41\t0x0410\n0x42\t0x0411\n",
        {"2: the last line of the file is never stored"});
    row("a map of comments stores nothing", map, "# one\n# two\n", {"0: no entry is stored"});
    row("an empty line in a map is an entry", map, "0x41\t0x0410\n\n# end\n",
        {"2: an empty line that is not the last is an entry",
         "2? 0x00 is shown as a blank, so every blank"});
    row("a header below a comment is an entry", map,
        "# title\n@ TextDirection\tRL\n0x41\t0x05D0\n\n",
        {"2: a header line below any other line is an entry",
         "2: \"@ TextDirection\" is not a number: only its first character counts",
         "2: \"RL\" is not a number: only its first character counts"});
    row("a header that is switched off by the next is reported in a map", map,
        "@ TextDirection RL\n@ Version 2\n0x41\t0x05D0\n\n",
        {"1: right-to-left is switched off again by the header line 2"});
    row("a line without a tab shows a blank", map, "0x41\t0x0410\n0x20\n\n",
        {"2: no tab: the line shows its byte as a blank"});
    row("a map key above 255 is cut", map, "0x141\t0x0410\n\n",
        {"1: the key \"0x141\" is not a byte: its low 8 bits are 0x41 (\"A\")"});
    row("a digit as key is a number", map, "5\t0x0665\n\n",
        {"1? the key \"5\" (U+0035) is the number 5, not the figure, which is byte 0x35 (\"5\")"});
    row("a leading 0 makes a key octal", map, "065\t0x0410\n\n",
        {"1? the key \"065\" begins with 0 and is therefore octal: byte 0x35 (\"5\")"});
    row("a map key above U+00FF goes to byte 0", map, "Ж\t0x0416\n\n",
        {"1: the key \"Ж\" (U+0416) is not an 8-bit character"});
    row("U+0100 is the first that is no byte", map, "\u0100\t0x0410\n\n",
        {"1: the key \"\u0100\" (U+0100) is not an 8-bit character"});
    row("U+00FF is the last that is one", map, "\u00FF\t0x0410\n\n", {});
    row("256 is the first number that is no byte", map, "256\t0x0410\n\n",
        {"1: the key \"256\" is not a byte: its low 8 bits are 0x00"});
    row("255 is the last that is one", map, "255\t0x0410\n\n", {});
    row("a number below 0 is no byte", map, "-1\t0x0410\n\n",
        {"1: the key \"-1\" is not a byte: its low 8 bits are 0xFF"});
    row("what looks like a placeholder is shown as it is", map, "%1x\t0x0410\n%2\t0x0411\n\n",
        {"1: \"%1x\" is not a number: only its first character counts, byte 0x25 (\"%\")",
         "2: \"%2\" is not a number: only its first character counts, byte 0x25 (\"%\")",
         "2: the byte 0x25 (\"%\") was given in line 1 already"});
    row("the whole of 16 bits fits", map, "A\t0xFFFE\n\n", {});
    row("only the first character of a map key counts", map, "AB\t0x0410\n\n",
        {"1: \"AB\" is not a number: only its first character counts, byte 0x41 (\"A\")"});
    row("an empty map key goes to byte 0", map, "\t0x0410\n\n", {"1: no key before the tab"});
    row("a decimal value is not a character code", map, "0x41\t65\n\n",
        {"1: \"65\" has no leading \"0x\" and is not a character code: only its first character "
         "counts, \"6\" (U+0036)"});
    row("a map value of several characters shows the first", map, "0x41\txyz\n\n",
        {"1: \"xyz\" is not a number: only its first character counts, \"x\""});
    row("a map value that only begins as a number is none", map, "0x41\t0x0410 # A\n\n",
        {"1: \"0x0410 # A\" is not a number"});
    row("a map value of 0 shows a blank", map, "0x41\t0x0000\n\n", {"1? the value is 0"});
    row("a map value above 16 bits is cut", map, "0x41\t0x10410\n\n",
        {"1: the character code does not fit in 16 bits"});
    row("a map key given twice is replaced", map, "0x41\t0x0410\nA\t0x0411\n\n",
        {"2: the byte 0x41 (\"A\") was given in line 1 already"});
    row("a shared character in a map is reported in the order of signed bytes", map,
        "0x41\t0x0410\n0xC1\t0x0410\n\n",
        {"1? 0x41 (\"A\") shows the same character \"А\" (U+0410) as 0xC1 in line 2"});
    row("a blank for the blank itself is clean", map, "0x20\t0x0020\n0x41\t0x0410\n\n", {});
    row("a map that is not UTF-8 is Latin-1", map, "A\t\xC4\n\n",
        {"1? invalid UTF-8: the whole file is read as Latin-1"});

    // Decoder modules
    const QString modules = "modules.txt";
    const QByteArray line = moduleLine("Baudot", 'I');
    row("plain decoders are clean", modules,
        "# a comment\n" + line + "\n" + moduleLine("Morse", 'N') + moduleLine("PSK31", 'B'), {});
    row("a file without decoders stores nothing", modules, "# none\n", {"0: no entry is stored"});
    row("a line of another shape is skipped", modules, line + "102 2 R 0 1 A Packet\n",
        {"2: the line is skipped: it does not have the columns of a decoder"});
    row("a name without a letter in front is none", modules, line + moduleLine("-x", 'A'),
        {"2: the line is skipped"});
    row("a blank in front moves the columns", modules, " " + line,
        {"1: the line begins with a blank", "1? the letter \"0\" (U+0030) stands for no base"});
    row("another word in front does too", modules, "x" + line,
        {"1: the line does not begin with the id"});
    row("a small letter is no character set", modules, moduleLine("Baudot", 'i'),
        {"1? the letter \"i\" (U+0069) stands for no base character set"});
    row("a decoder given twice is reported", modules, line + moduleLine("Baudot", 'A'),
        {"2: the decoder \"Baudot\" was given in line 1 already; this line decides"});
    row("names that differ in letter case are two", modules, line + moduleLine("BAUDOT", 'A'), {});
}

void tst_Lint::eachTrapHasItsFinding()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QStringList, expected);

    const QStringList found = texts(lint::lintBytes(name, content));
    QVERIFY2(found.size() == expected.size(), qPrintable(found.join(QLatin1Char('\n'))));
    for (int i = 0; i < found.size(); ++i)
        QVERIFY2(found.at(i).startsWith(expected.at(i)), qPrintable(found.at(i)));
}

void tst_Lint::eachNameTrapHasItsFinding_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("expected");

    const auto row = [](const char* claim, const char* name, const QStringList& expected) {
        QTest::newRow(claim) << QString::fromUtf8(name) << expected;
    };
    row("an alphabet of a plain name is clean", "Greek.mal", {});
    row("the letter case of the ending does not matter", "Greek.MAL", {});
    row("a map of a plain name is clean", "Greek.ascii.map", {});
    row("a codec named ITA2 is clean", "ITA2.codec", {});
    row("an alphabet with further dots is not found again", "Cyrillic.old.mal",
        {"0: the name is cut at its first dot, so \"Cyrillic\" is offered"});
    row("a map with further dots is not found again", "Cyrillic.old.ita2.map",
        {"0: the name is cut at its first dot, so \"Cyrillic\" is offered"});
    row("a map without a character set is not found", "Greek.map",
        {"0: the file is only found under a name that ends in \".ita2.map\" or \".ascii.map\""});
    row("the name None is taken", "none.mal", {"0: the name \"None\""});
    row("names from Default on are taken", "Default2.ita2.map",
        {"0: a name that begins with \"Default\""});
    row("an alphabet may be called Default", "Default.mal", {});
    row("a separator in the name is reported", "A - B.ascii.map", {"0: \" - \" in the name"});
    row("a codec of another name is reported", "Greek.codec",
        {"0? only \"ITA2.codec\" can be chosen by name among such files; a file "
         "\"Greek.ita2.map\""});
}

void tst_Lint::eachNameTrapHasItsFinding()
{
    QFETCH(QString, name);
    QFETCH(QStringList, expected);

    const QByteArray content = name.endsWith(QStringLiteral(".codec")) ? "title\nLR\nA;0x0410\n"
                               : name.endsWith(QStringLiteral(".map")) ? "A\t0x0410\n\n"
                                                                       : "A\t.-\n\n";
    QTemporaryDir folder;
    const QString path = writeFile(folder.filePath(name), content);
    const Report report = lint::lintFile(path);
    QCOMPARE(report.failure, QString());
    const QStringList found = texts(report);
    QVERIFY2(found.size() == expected.size(), qPrintable(found.join(QLatin1Char('\n'))));
    for (int i = 0; i < found.size(); ++i)
        QVERIFY2(found.at(i).startsWith(expected.at(i)), qPrintable(found.at(i)));
}

void tst_Lint::everyShippedFileIsClean_data()
{
    QTest::addColumn<QString>("path");
    for (const QString& path : shippedTables())
        QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path;
}

void tst_Lint::everyShippedFileIsClean()
{
    QFETCH(QString, path);
    const Report report = lint::lintFile(path);
    QCOMPARE(report.failure, QString());
    QCOMPARE(texts(report), QStringList());
}

void tst_Lint::everyFolderOfTablesIsLookedAt()
{
    const QStringList files = shippedTables();
    QVERIFY(!files.filter(QStringLiteral("/alphabets/")).isEmpty());
    QVERIFY(!files.filter(QStringLiteral("/maps/")).isEmpty());
    QVERIFY(!files.filter(QStringLiteral("/decoders/")).isEmpty());
}

void tst_Lint::findingsComeInTheOrderOfTheLines()
{
    const Report report = lint::lintBytes("Greek.mal", "B\t.-\n\t-\nA\t.-\nA\t.-\nlast");
    QVector<int> lines;
    for (const Fault& fault : report.faults)
        lines += fault.line;
    QCOMPARE(lines, (QVector<int>{1, 2, 4, 5}));
}

void tst_Lint::theNumberOfFindingsIsBounded()
{
    const Report report =
        lint::lintBytes("Greek.ascii.map", QByteArray("\n").repeated(5000) + "x\ty\n\n");
    QCOMPARE(report.faults.size(), 1001);
    QVERIFY(report.faults.last().text.contains(QStringLiteral("more findings")));
}

void tst_Lint::whatIsStoredIsCounted()
{
    const Report alphabet = lint::lintBytes("Greek.mal", "@ TextDirection RL\nא\t.-\nב\t-...\n\n");
    QVERIFY(alphabet.rightToLeft);
    QCOMPARE(alphabet.entryCount, 2);
    const Report codec = lint::lintBytes("ITA2.codec", "title\nRL\nA;0x5D0\nA;0x5D1\n");
    QVERIFY(codec.rightToLeft);
    QCOMPARE(codec.entryCount, 1);
    const Report map = lint::lintBytes("Greek.ascii.map", "A\ta\nB\tb\nC\tc\n\n");
    QVERIFY(!map.rightToLeft);
    QCOMPARE(map.entryCount, 3);
    const Report modules =
        lint::lintBytes("modules.txt", moduleLine("a", 'I') + moduleLine("b", 'A'));
    QCOMPARE(modules.entryCount, 2);
}

void tst_Lint::aFileThatCannotBeReadSaysWhy()
{
    QTemporaryDir folder;
    const auto failureOf = [&folder](const char* name) {
        return lint::lintFile(folder.filePath(QLatin1String(name))).failure;
    };
    QDir(folder.path()).mkdir(QStringLiteral("folder.mal"));
    QFile large(writeFile(folder.filePath(QStringLiteral("large.mal")), {}));
    QVERIFY(large.resize(4 * 1024 * 1024 + 1));
    QFile notYet(writeFile(folder.filePath(QStringLiteral("full.mal")), {}));
    QVERIFY(notYet.resize(4 * 1024 * 1024));
    QCOMPARE(failureOf("missing.mal"), QStringLiteral("No such file or directory"));
    QCOMPARE(failureOf("folder.mal"), QStringLiteral("not a regular file"));
    QCOMPARE(failureOf("large.mal"), QStringLiteral("larger than 4 MiB, which no table is"));
    QCOMPARE(failureOf("full.mal"), QString());
}

void tst_Lint::namesOfOtherFilesAreNoTables()
{
    for (const char* name : {"README.md", "", "mal", "table.csv", "Greek.mal.bak"}) {
        QVERIFY2(!lint::isTable(QLatin1String(name)), name);
        QVERIFY2(!lint::lintBytes(QLatin1String(name), "A\t.-\n\n").failure.isEmpty(), name);
        QVERIFY2(!lint::lintFile(QLatin1String(name)).failure.isEmpty(), name);
    }
    for (const char* name : {"Greek.MAL", "a.codec", "a.Map", "modules.TXT"})
        QVERIFY2(lint::isTable(QLatin1String(name)), name);
}

QTEST_APPLESS_MAIN(tst_Lint)
#include "tst_lint.moc"
