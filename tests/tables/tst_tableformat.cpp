// SPDX-License-Identifier: MIT
#include "tables/tableformat.h"

#include <QtTest>

class tst_TableFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesSayWhatAFileIs_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("row"); // of the table of formats
        QTest::addColumn<int>("charset");
        QTest::addColumn<bool>("isReadAsMap");
        QTest::addColumn<bool>("isReadAsCodec");
        const auto row = [](const char* name, int index, int charset, const char* readAs) {
            QTest::newRow(name) << name << index << charset << (*readAs == 'm') << (*readAs == 'c');
        };
        row("Greek.mal", 0, 0, "-");
        row("Greek.MAL", 0, 0, "-");
        row("ITA2.codec", 1, 1, "c");
        row("ITA2.Codec", 1, 1, "-");
        row("Greek.ita2.map", 2, 1, "m");
        row("Greek.ITA2.map", 2, 1, "m");
        row("Greek.ITA2.MAP", 2, 1, "-");
        row("Greek.ascii.map", 3, 2, "m");
        row("Greek.Ascii.Map", 3, 2, "-");
        row("Greek.map", -1, 0, "m");
        row("Greek.ita2map", -1, 0, "-");
        row("Greek.old.codec", 1, 1, "c");
        row(".codec", 1, 1, "c");
        row("codec", -1, 0, "-");
        row("README.md", -1, 0, "-");
        row("", -1, 0, "-");
    }

    void namesSayWhatAFileIs()
    {
        QFETCH(QString, name);
        QFETCH(int, row);
        QFETCH(int, charset);
        const TableFormat* const format = formatOfFile(name);
        QCOMPARE(format ? int(format - TABLE_FORMATS.data()) : -1, row);
        QCOMPARE(format ? int(format->charset) : 0, charset);
        QTEST(isReadAs(name, TableKind::Map), "isReadAsMap");
        QTEST(isReadAs(name, TableKind::Codec), "isReadAsCodec");
    }

    void everyFormatIsFoundByItsOwnSuffix()
    {
        for (const TableFormat& format : TABLE_FORMATS) {
            QCOMPARE(formatOfFile(QLatin1Char('x') + format.suffix), &format);
            QVERIFY(isReadAs(QLatin1Char('x') + format.suffix, format.kind));
            QVERIFY(QString(format.suffix).endsWith(format.ending));
            QCOMPARE(QString(format.suffix).toLower(), QString(format.suffix));
        }
    }
};

QTEST_APPLESS_MAIN(tst_TableFormat)
#include "tst_tableformat.moc"
