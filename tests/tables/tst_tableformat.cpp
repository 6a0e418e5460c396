// SPDX-License-Identifier: MIT
#include "tables/tableformat.h"

#include "tables/displayname.h"

#include <QtTest>

class tst_TableFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesSayWhatAFileIs_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("suffix"); // of the format that it is listed as
        QTest::addColumn<int>("charset");
        QTest::addColumn<bool>("isRead");
        QTest::addColumn<QString>("meant"); // the suffix of that format
        const auto row = [](const char* name, const char* suffix, int charset, bool isRead,
                            const char* meant) {
            QTest::newRow(name) << name << suffix << charset << isRead << meant;
        };
        row("Greek.mal", ".mal", 0, true, ".mal");
        row("Greek.MAL", ".mal", 0, false, ".mal");
        row("ITA2.codec", ".codec", 1, true, ".codec");
        row("ITA2.Codec", ".codec", 1, false, ".codec");
        row("Greek.ita2.map", ".ita2.map", 1, true, ".ita2.map");
        row("Greek.ITA2.map", ".ita2.map", 1, true, ".ita2.map");
        row("Greek.ITA2.MAP", ".ita2.map", 1, false, ".ita2.map");
        row("Greek.ascii.map", ".ascii.map", 2, true, ".ascii.map");
        row("Greek.Ascii.Map", ".ascii.map", 2, false, ".ascii.map");
        row("Greek.map", "", 0, true, ".ita2.map");
        row("Greek.MAP", "", 0, false, ".ita2.map");
        row("Greek.ita2map", "", 0, false, "");
        row("Greek.old.codec", ".codec", 1, true, ".codec");
        row(".codec", ".codec", 1, true, ".codec");
        row("codec", "", 0, false, "");
        row("modules.txt", ".txt", 0, true, ".txt");
        row("README.md", "", 0, false, "");
        row("", "", 0, false, "");
    }

    void namesSayWhatAFileIs()
    {
        QFETCH(QString, name);
        QFETCH(int, charset);
        const TableFormat* const format = formatOfFile(name);
        QTEST(format ? QString(format->suffix) : QString(), "suffix");
        QCOMPARE(format ? int(format->charset) : 0, charset);
        QTEST(formatReadFrom(name) != nullptr, "isRead");
        const TableFormat* const meant = formatMeantBy(name);
        QTEST(meant ? QString(meant->suffix) : QString(), "meant");
    }

    void everyFormatIsFoundByItsOwnSuffix()
    {
        for (const TableFormat& format : TABLE_FORMATS) {
            const QString name = QLatin1Char('x') + format.suffix;
            QCOMPARE(formatOfFile(name), &format);
            QCOMPARE(formatMeantBy(name), &format);
            // Formats of one ending have one reader, whichever of them is found.
            const TableFormat* const read = formatReadFrom(name);
            QVERIFY(read);
            QCOMPARE(read->ending, format.ending);
            QCOMPARE(read->kind, format.kind);
            QVERIFY(read->readCharacters == format.readCharacters);
            QCOMPARE(QString(format.suffix).toLower(), QString(format.suffix));
        }
    }

    void everyFormatOfCharactersHasASetAndAReader()
    {
        for (const TableFormat& format : TABLE_FORMATS) {
            const bool holdsCharacters = format.kind == TableKind::Characters;
            QCOMPARE(format.readCharacters != nullptr, holdsCharacters);
            QCOMPARE(format.charset != eCHARSET_NONE, holdsCharacters);
        }
    }

    void aSuffixIsTheEndingWithOrWithoutTheSetInFront()
    {
        for (const TableFormat& format : TABLE_FORMATS) {
            const QString set = format.NamesCharset()
                                    ? QLatin1Char('.') + baseCharsetName(format.charset).toLower()
                                    : QString();
            QCOMPARE(set + format.ending, QString(format.suffix));
        }
    }

    void everyFileOfATableOfCharactersIsFoundBehindItsFullName()
    {
        for (const TableFormat& format : TABLE_FORMATS) {
            if (format.kind != TableKind::Characters)
                continue;
            const QString base = format.onlyBase.isEmpty() ? "Greek" : QString(format.onlyBase);
            const QStringList files = filesOfFullName(fullName(base, format.charset));
            QVERIFY(files.contains(base + format.suffix, Qt::CaseInsensitive));
        }
    }
};

QTEST_APPLESS_MAIN(tst_TableFormat)
#include "tst_tableformat.moc"
