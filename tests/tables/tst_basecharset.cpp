// SPDX-License-Identifier: MIT
#include "charmap/codechandler.h"
#include "tables/basecharset.h"

#include <QtTest>

#include <type_traits>

class tst_BaseCharset : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itIsStoredAs32Bits()
    {
        QCOMPARE(sizeof(eBASE_CHARSET), std::size_t(4));
        QVERIFY((std::is_same<CodecHandler::eBASE_CHARSET, eBASE_CHARSET>::value));
    }

    void everySetHasItsValueAndName_data()
    {
        QTest::addColumn<int>("charset");
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("name");
        QTest::newRow("none") << int(eCHARSET_NONE) << 0 << "None";
        QTest::newRow("ITA2") << int(eCHARSET_ITA2) << 1 << "ITA2";
        QTest::newRow("ASCII") << int(eCHARSET_ASCII) << 2 << "ASCII";
        QTest::newRow("both") << int(eCHARSET_BOTH) << 3 << "None";
    }

    void everySetHasItsValueAndName()
    {
        QFETCH(int, charset);
        QTEST(charset, "value");
        QTEST(baseCharsetName(static_cast<eBASE_CHARSET>(charset)), "name");
    }

    void threeLettersStandForASet()
    {
        for (int letter = 0; letter < 256; ++letter) {
            const eBASE_CHARSET expected = letter == 'I'   ? eCHARSET_ITA2
                                           : letter == 'A' ? eCHARSET_ASCII
                                           : letter == 'B' ? eCHARSET_BOTH
                                                           : eCHARSET_NONE;
            QCOMPARE(baseCharsetOfLetter(static_cast<char>(letter)), expected);
        }
    }
};

QTEST_APPLESS_MAIN(tst_BaseCharset)
#include "tst_basecharset.moc"
