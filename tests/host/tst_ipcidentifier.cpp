// SPDX-License-Identifier: MIT
#include "host/ipcidentifier.h"

#include <QtTest>

class tst_IpcIdentifier : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itIsMadeOfTheFirstAndTheLastTwo_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("identifier");
        QTest::newRow("leading zero dropped") << "A05"
                                              << "__SGA_IPC5";
        QTest::newRow("another") << "A07"
                                 << "__SGA_IPC7";
        QTest::newRow("two digits") << "B12"
                                    << "__SGB_IPC12";
        QTest::newRow("one character") << "5"
                                       << "__SG5_IPC5";
        QTest::newRow("zero alone") << "0"
                                    << "__SG0_IPC0";
        QTest::newRow("two zeros") << "C00"
                                   << "__SGC_IPC0";
        QTest::newRow("longer") << "A0123"
                                << "__SGA_IPC23";
        QTest::newRow("empty") << ""
                               << "__SG_IPC";
    }

    void itIsMadeOfTheFirstAndTheLastTwo()
    {
        QFETCH(QString, id);
        QFETCH(QString, identifier);
        QCOMPARE(ipcIdentifier(id), identifier);
    }
};

QTEST_APPLESS_MAIN(tst_IpcIdentifier)
#include "tst_ipcidentifier.moc"
