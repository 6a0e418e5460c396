// SPDX-License-Identifier: MIT
#include "tables/lint/lint.h"

#include "tables/alphabetfile.h"
#include "tables/codecfile.h"
#include "tables/mapfile.h"

#include <QBuffer>
#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>

#include <random>

using lint::Kind;
using lint::Report;
using lint::Severity;

Q_DECLARE_METATYPE(lint::Kind)

namespace {

/// One string a finding, in the order of the lines: what a row expects is the beginning of it.
QStringList texts(const Report& report)
{
    QStringList lines;
    for (const lint::Finding& finding : report.findings) {
        lines += QStringLiteral("%1%2 %3")
                     .arg(finding.line)
                     .arg(finding.severity == Severity::Error ? QStringLiteral(":")
                                                              : QStringLiteral("?"))
                     .arg(finding.message);
    }
    return lines;
}

QStringList shippedTables()
{
    QStringList files;
    QDirIterator it(QStringLiteral(PROJECT_DATA_DIR), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (lint::kindOf(path) != Kind::Unknown)
            files += path;
    }
    files.sort();
    return files;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What the library's readers store: a report without findings.
Report readByTheLibrary(Kind kind, QByteArray bytes)
{
    Report report;
    if (kind == Kind::Alphabet) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        const MorseAlphabet read = readAlphabetFile(buffer);
        report.alphabet = read.codes;
        report.rightToLeft = read.rightToLeft;
        return report;
    }
    const CharacterTable read = kind == Kind::Codec ? readCodecFile(bytes) : readMapFile(bytes);
    for (auto it = read.characters.cbegin(); it != read.characters.cend(); ++it)
        report.characters.insert(uchar(it.key()), it.value());
    report.rightToLeft = read.rightToLeft;
    return report;
}

bool storesTheSame(const Report& one, const Report& other)
{
    return one.alphabet == other.alphabet && one.characters == other.characters &&
           one.rightToLeft == other.rightToLeft;
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
    void whatLintThinksStoredIsWhatTheReaderStores_data();
    void whatLintThinksStoredIsWhatTheReaderStores();
    void randomLinesAreStoredAsTheReadersStoreThem_data();
    void randomLinesAreStoredAsTheReadersStoreThem();
    void findingsComeInTheOrderOfTheLines();
    void theNumberOfFindingsIsBounded();
    void aFileThatCannotBeReadIsToldInOneLine();
    void findingsAreWrittenInTheStyleOfCompilers();
    void cleanFilesSayNothing();
    void keysAreWrittenInUtf8WhateverTheLocale();
};

void tst_Lint::eachTrapHasItsFinding_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("expected");

    const auto row = [](const char* claim, Kind kind, const QByteArray& content,
                        const QStringList& expected) {
        QTest::newRow(claim) << kind << content << expected;
    };

    // Alphabets
    const Kind mal = Kind::Alphabet;
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
    row("a Cyrillic letter in a Latin alphabet is told", mal, "A\t.-\nB\t-...\nЖ\t...-\n\n",
        {"3? the key \"Ж\" (U+0416) is Cyrillic in an alphabet that is Latin"});
    row("a letter of a script without a name is told", mal, "A\t.-\nB\t-...\nԱ\t.-.-\n\n",
        {"3? the key \"Ա\" (U+0531) is of another script in an alphabet that is Latin"});
    row("a word of mixed scripts is told", mal, "Α\t.-\nΒ\t-...\nΟK\t----\n\n",
        {"3? the key \"K\" (U+004B) is Latin in an alphabet that is Greek; it looks like \"Κ\""});
    row("a key given twice is replaced", mal, "A\t.-\nB\t-...\nA\t.-.-\n\n",
        {"3: the key \"A\" (U+0041) was given in line 1 already"});
    row("a line without a key is skipped", mal, "A\t.-\n\t-...\n\n", {"2: no key before the tab"});
    row("a line without a tab is a key", mal, "A\t.-\nB -...\n\n",
        {"2: no tab: the whole line becomes a key with an empty code"});
    row("there are no comments", mal, "# letters\nA\t.-\n\n", {"1: there are no comment lines"});
    row("a header behind the first entry is an entry", mal, "A\t.-\n@ TextDirection RL\n\n",
        {"2: a header line after the first entry is an entry"});
    row("a header with a tab behind the first entry is an entry", mal,
        "A\t.-\n@ TextDirection\tRL\n\n",
        {"2: a header line after the first entry is an entry",
         "2: the code of \"@ TextDirection\" holds \"R\""});
    row("an empty code is told", mal, "A\t.-\nB\t\n\n", {"2: the code of \"B\" (U+0042) is empty"});
    row("a code of other characters is told", mal, "A\t.-\nB\t-··\n\n",
        {"2: the code of \"B\" (U+0042) holds \"·\" (U+00B7)"});
    row("a blank behind the code is told", mal, "A\t.- \n\n",
        {"1: the code of \"A\" (U+0041) holds \" \" (U+0020)"});
    row("a header that is switched off by the next is told", mal,
        "@ TextDirection RL\n@ Version 2\nא\t.-\n\n",
        {"1: right-to-left is switched off again by the header line 2"});
    row("a direction spelt otherwise is told", mal, "@ TextDirection RTL\nא\t.-\n\n",
        {"1: this is no right-to-left header"});
    row("a direction in small letters is told", mal, "@ textdirection RL\nא\t.-\n\n",
        {"1: this is no right-to-left header"});
    row("left-to-right may be said", mal, "@ TextDirection LR\nA\t.-\n\n", {});
    row("invalid UTF-8 is told", mal, "A\t.-\n\xC4\t.-.-\n\n", {"2: invalid UTF-8"});
    row("a file that ends within a character is told", mal, "A\t.-\n\n\xC4",
        {"3: the file ends within a UTF-8 character"});
    row("UTF-16 is told", mal,
        QByteArray("\xFF\xFE"
                   "A\0\t\0.\0-\0\n\0\n\0",
                   14),
        {"1? the file is UTF-16"});
    row("a lone carriage return ends no line", mal, "A\t.-\rB\t-...\n\n",
        {"1: a lone carriage return does not end a line",
         "1: the code of \"A\" (U+0041) holds U+000D"});
    row("blanks around a key are told", mal, " A\t.-\n\n", {"1? the key \" A\" has blanks"});
    row("an invisible character in a key is told", mal, "A\u200E\t.-\n\n",
        {"1? the key holds the invisible character U+200E"});
    row("a decomposed key is told", mal, "A\u0308\t.-.-\n\n",
        {"1? the key \"A\u0308\" is not in composed form"});
    row("a presentation form is told", mal, "\uFE80\t.\n\n",
        {"1? the key \"\uFE80\" (U+FE80) is the shape of a letter in one place of a word; the "
         "letter itself is \"ء\" (U+0621)"});

    // Codecs
    const Kind codec = Kind::Codec;
    row("a plain codec is clean", codec, "title\nLR\nA;0x0410\nB;0x0411\n", {});
    row("the last line of a codec counts", codec, "title\nRL\nA;0x0410", {});
    row("empty lines and lines of \"#\" are skipped in a codec", codec,
        "title\n\nA;0x0410\n\n# more\n", {});
    row("a semicolon can be a key", codec, "title\nLR\n;;0x003D\n", {});
    row("a codec of two lines stores nothing", codec, "title\nRL\n", {"0: no entry is stored"});
    row("the first line of a codec is no entry", codec, "A;0x0410\nLR\nB;0x0411\n",
        {"1: the first line is a title"});
    row("the second line of a codec is no entry", codec, "title\nA;0x0410\nB;0x0411\n",
        {"2: the second line tells the text direction"});
    row("a direction in small letters is told in a codec", codec, "title\nrl\nB;0x0411\n",
        {"2? this is not right-to-left"});
    row("a codec line of another shape is skipped", codec, "title\nLR\nA;0x0410\nB=0x0411\n",
        {"4: the line is skipped: an entry is one character"});
    row("a codec number without 0x is skipped", codec, "title\nLR\nA;0x0410\nC;41\n",
        {"4: the line is skipped: a value is written with a leading \"0x\""});
    row("a codec value that is no number is skipped", codec, "title\nLR\nA;0x0410\nC;Б\n",
        {"4: the line is skipped: \"Б\" (U+0411) is no number"});
    row("a codec value of 0 is not stored", codec, "title\nLR\nA;0x0410\nD;0x0\n",
        {"4: the value is 0"});
    row("a codec value above 16 bits is cut", codec, "title\nLR\nA;0x10410\n",
        {"3: the character code does not fit in 16 bits: it is cut to \"А\""});
    row("half a surrogate pair is told", codec, "title\nLR\nA;0xD83D\n",
        {"3: the character code U+D83D is half of a pair"});
    row("a codec key above U+00FF goes to byte 0", codec, "title\nLR\nЖ;0x0416\n",
        {"3: the key \"Ж\" (U+0416) is no 8-bit character"});
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
    const Kind map = Kind::Map;
    row("a plain map is clean", map, "# title\n0x41\t0x0410\nB\t0x0411\t# BE\n# end\n", {});
    row("an entry that shows its byte as itself has no effect", map, "B\tB\n0x41\t0x0041\n\n",
        {"1? the byte 0x42 (\"B\") shows as itself without this line",
         "2? the byte 0x41 (\"A\") shows as itself without this line"});
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
        {"2: a header line after the first other line",
         "2: \"@ TextDirection\" is no number: only its first character counts",
         "2: \"RL\" is no number: only its first character counts"});
    row("a header that is switched off by the next is told in a map", map,
        "@ TextDirection RL\n@ Version 2\n0x41\t0x05D0\n\n",
        {"1: right-to-left is switched off again by the header line 2"});
    row("a line without a tab shows a blank", map, "0x41\t0x0410\n0x20\n\n",
        {"2: no tab: the line shows its byte as a blank"});
    row("a map key above 255 is cut", map, "0x141\t0x0410\n\n",
        {"1: the key \"0x141\" is no byte: its low 8 bits are 0x41 (\"A\")"});
    row("a digit as key is a number", map, "5\t0x0665\n\n",
        {"1? the key \"5\" (U+0035) is the number 5, not the digit, which is byte 0x35"});
    row("a leading 0 makes a key octal", map, "065\t0x0410\n\n",
        {"1? the key \"065\" begins with 0 and is therefore octal: byte 0x35 (\"5\")"});
    row("a map key above U+00FF goes to byte 0", map, "Ж\t0x0416\n\n",
        {"1: the key \"Ж\" (U+0416) is no 8-bit character"});
    row("only the first character of a map key counts", map, "AB\t0x0410\n\n",
        {"1: \"AB\" is no number: only its first character counts, byte 0x41 (\"A\")"});
    row("an empty map key goes to byte 0", map, "\t0x0410\n\n", {"1: no key before the tab"});
    row("a decimal value is no character code", map, "0x41\t65\n\n",
        {"1: only a number with a leading \"0x\" is a character code: \"65\" shows \"6\""});
    row("a map value of several characters shows the first", map, "0x41\txyz\n\n",
        {"1: \"xyz\" is no number: only its first character counts, \"x\""});
    row("a map value that only begins as a number is none", map, "0x41\t0x0410 # A\n\n",
        {"1: \"0x0410 # A\" is no number"});
    row("a map value of 0 shows a blank", map, "0x41\t0x0000\n\n", {"1? the value is 0"});
    row("a map value above 16 bits is cut", map, "0x41\t0x10410\n\n",
        {"1: the character code does not fit in 16 bits"});
    row("a map key given twice is replaced", map, "0x41\t0x0410\nA\t0x0411\n\n",
        {"2: the byte 0x41 (\"A\") was given in line 1 already"});
    row("a shared character in a map is told in the order of signed bytes", map,
        "0x41\t0x0410\n0xC1\t0x0410\n\n",
        {"1? 0x41 (\"A\") shows the same character \"А\" (U+0410) as 0xC1 in line 2"});
    row("a blank for the blank itself is clean", map, "0x20\t0x0020\n0x41\t0x0410\n\n", {});
    row("a map that is not UTF-8 is Latin-1", map, "A\t\xC4\n\n",
        {"1? invalid UTF-8: the whole file is read as Latin-1"});

    row("another kind of file is not read", Kind::Unknown, "A\t.-\n\n", {});
}

void tst_Lint::eachTrapHasItsFinding()
{
    QFETCH(Kind, kind);
    QFETCH(QByteArray, content);
    QFETCH(QStringList, expected);

    const QStringList found = texts(lint::lintBytes(kind, content));
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
        {"0: a map file is only found under a name"});
    row("the name None is taken", "none.mal", {"0: the name \"None\""});
    row("names from Default on are taken", "Default2.ita2.map",
        {"0: a name that begins with \"Default\""});
    row("an alphabet may be called Default", "Default.mal", {});
    row("a separator in the name is told", "A - B.ascii.map", {"0: \" - \" in the name"});
    row("a codec of another name is told", "Greek.codec", {"0? only the codec file ITA2.codec"});
}

void tst_Lint::eachNameTrapHasItsFinding()
{
    QFETCH(QString, name);
    QFETCH(QStringList, expected);

    const QByteArray content = name.endsWith(QStringLiteral(".codec")) ? "title\nLR\nA;0x0410\n"
                               : name.endsWith(QStringLiteral(".map")) ? "A\t0x0410\n\n"
                                                                       : "A\t.-\n\n";
    QTemporaryDir folder;
    QFile file(folder.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();

    const Report report = lint::lintFile(file.fileName());
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
}

void tst_Lint::whatLintThinksStoredIsWhatTheReaderStores_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QByteArray>("content");
    for (const QString& path : shippedTables()) {
        QTest::newRow(qPrintable(QFileInfo(path).fileName()))
            << lint::kindOf(path) << contentOf(path);
    }
    const struct
    {
        const char* name;
        Kind kind;
    } kinds[] = {{"alphabet", Kind::Alphabet}, {"codec", Kind::Codec}, {"map", Kind::Map}};
    const auto row = [&kinds](const char* name, const QByteArray& content) {
        for (const auto& kind : kinds)
            QTest::addRow("%s as %s", name, kind.name) << kind.kind << content;
    };
    row("no final line end", "A\t.-\nB\t-...");
    row("one line", "A\t.-");
    row("CR LF", "A\t.-\r\nB\t-...\r\nA;0x0041\r\nB;\r\n\r\n");
    row("lone CR", "A\t.-\rB\t-...\n\nC\t-.-.\rC;\r");
    row("only headers", "@ TextDirection RL\n@ A B\n");
    row("headers and one line", "@ TextDirection RL\nA\t.-");
    row("UTF-8 mark", "\xEF\xBB\xBF@ TextDirection RL\nA\t.-\n\n");
    row("UTF-16 mark", QByteArray("\xFF\xFE"
                                  "A\0\t\0.\0-\0\n\0\n\0",
                                  14));
    row("invalid UTF-8", "A\t.-\n\xC4\xE4\t.-.-\n\xE2\x82\t-\n\n");
    row("NUL bytes", QByteArray("A\0B\t.-\nC\t-\0.\n\n", 14));
    row("empty", QByteArray());
    row("empty lines", "\n\n\nA\t.-\n\n\n");
    row("blanks around numbers", "0x41 \t 0x42\n 0x43\t0x44 \nA; 0x45\nB;0x46 \n\n");
    row("numbers of all kinds",
        "-1\t0x41\n+65\t0x1FFFF\n0x1FFFFFFFF\t0x42\n0b11\t0X43\n08\t-0x44\n1e2\t0x\n\n");
    row("codec numbers of all kinds", "t\n\nA;0x1FFFF\nB;0xFFFFFFFF\nC;-0x41\nD;0x\nE;0X41\n");
}

void tst_Lint::whatLintThinksStoredIsWhatTheReaderStores()
{
    QFETCH(Kind, kind);
    QFETCH(QByteArray, content);
    const Report report = lint::lintBytes(kind, content);
    const Report read = readByTheLibrary(kind, content);
    QCOMPARE(report.alphabet, read.alphabet);
    QCOMPARE(report.characters, read.characters);
    QCOMPARE(report.rightToLeft, read.rightToLeft);
}

void tst_Lint::randomLinesAreStoredAsTheReadersStoreThem_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("alphabets") << Kind::Alphabet;
    QTest::newRow("codecs") << Kind::Codec;
    QTest::newRow("maps") << Kind::Map;
}

void tst_Lint::randomLinesAreStoredAsTheReadersStoreThem()
{
    QFETCH(Kind, kind);
    const QVector<QByteArray> pieces = {
        "A",    "B",       "\xC3\x84",     "\t", "\t",   ".-", "-",    "\n",
        "\n",   "\n",      "\r",           "#",  "\r\n", "@ ", "RL",   " ",
        "\xFF", "\xE2",    "\xEF\xBB\xBF", ";",  ";",    "0x", "0x04", "TextDirection ",
        "7",    "\xD0\x96"};
    std::mt19937 random(1844);
    for (int round = 0; round < 5000; ++round) {
        QByteArray content;
        for (unsigned length = random() % 30; length > 0; --length)
            content += pieces.at(int(random() % unsigned(pieces.size())));
        QVERIFY2(storesTheSame(lint::lintBytes(kind, content), readByTheLibrary(kind, content)),
                 content.toPercentEncoding().constData());
    }
}

void tst_Lint::findingsComeInTheOrderOfTheLines()
{
    const Report report = lint::lintBytes(Kind::Alphabet, "B\t.-\n\t-\nA\t.-\nA\t.-\nlast");
    QVector<int> lines;
    for (const lint::Finding& finding : report.findings)
        lines += finding.line;
    QCOMPARE(lines, (QVector<int>{1, 2, 4, 5}));
}

void tst_Lint::theNumberOfFindingsIsBounded()
{
    const Report report = lint::lintBytes(Kind::Map, QByteArray("\n").repeated(5000) + "x\ty\n\n");
    QCOMPARE(report.findings.size(), 1001);
    QVERIFY(report.findings.last().message.contains(QStringLiteral("more findings")));
}

void tst_Lint::aFileThatCannotBeReadIsToldInOneLine()
{
    QTemporaryDir folder;
    QDir(folder.path()).mkdir(QStringLiteral("folder.mal"));
    QFile large(folder.filePath(QStringLiteral("large.mal")));
    QVERIFY(large.open(QIODevice::WriteOnly));
    QVERIFY(large.resize(5 * 1024 * 1024));
    large.close();

    const struct
    {
        const char* name;
        const char* reason;
    } files[] = {
        {"missing.mal", "No such file"},
        {"folder.mal", "not a regular file"},
        {"large.mal", "larger than 4 MiB"},
        {"text.txt", "not the name of an alphabet"},
    };
    for (const auto& expected : files) {
        const QString path = folder.filePath(QLatin1String(expected.name));
        QString out;
        QString err;
        QTextStream outStream(&out);
        QTextStream errStream(&err);
        QCOMPARE(lint::runLint({path}, outStream, errStream), 1);
        QCOMPARE(out, QString());
        QVERIFY2(err.startsWith(
                     QStringLiteral("morsehost: %1: %2").arg(path, QLatin1String(expected.reason))),
                 qPrintable(err));
        QCOMPARE(err.count(QLatin1Char('\n')), 1);
    }
}

void tst_Lint::findingsAreWrittenInTheStyleOfCompilers()
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("a.b.mal")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("A\t.-\n B\t-...\nC\t-.-.");
    file.close();

    QString out;
    QString err;
    QTextStream outStream(&out);
    QTextStream errStream(&err);
    QCOMPARE(lint::runLint({file.fileName()}, outStream, errStream), 1);
    QCOMPARE(err, QString());
    const QStringList lines = out.split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 4);
    QVERIFY(lines.at(0).startsWith(file.fileName() + QStringLiteral(": the name")));
    QVERIFY(lines.at(1).startsWith(file.fileName() + QStringLiteral(":2: warning: the key")));
    QVERIFY(lines.at(2).startsWith(file.fileName() + QStringLiteral(":3: the last line")));
}

void tst_Lint::cleanFilesSayNothing()
{
    QString out;
    QString err;
    QTextStream outStream(&out);
    QTextStream errStream(&err);
    QCOMPARE(lint::runLint(shippedTables(), outStream, errStream), 0);
    QCOMPARE(out + err, QString());
}

void tst_Lint::keysAreWrittenInUtf8WhateverTheLocale()
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("a.mal")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("Ж\t\n\n");
    file.close();

    QByteArray out;
    QTextStream outStream(&out);
    outStream.setCodec("US-ASCII");
    QString err;
    QTextStream errStream(&err);
    QCOMPARE(lint::runLint({file.fileName()}, outStream, errStream), 1);
    QVERIFY(out.contains("\"Ж\""));
}

QTEST_APPLESS_MAIN(tst_Lint)
#include "tst_lint.moc"
