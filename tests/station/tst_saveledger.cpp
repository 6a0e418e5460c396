// SPDX-License-Identifier: MIT
// What counts as saved, and what as lost.
#include "station/saveledger.h"
#include "support/writefile.h"

#include <QTemporaryDir>
#include <QtTest>

using morsehost::SaveLedger;

class tst_SaveLedger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDocumentThatIsGoneAfterItsSaveWasSaved()
    {
        SaveLedger ledger;
        const QString path = m_dir.filePath("a.xml");
        ledger.documentBegun(path);
        QCOMPARE(ledger.lostDocuments(), 1LL);
        writeFile(path, "<x/>");
        ledger.documentsSaved();
        QCOMPARE(ledger.lostDocuments(), 0LL);
        QVERIFY(QFile::remove(path));
        ledger.documentsSaved();
        QCOMPARE(ledger.lostDocuments(), 0LL);
    }

    void aDocumentMayBeWrittenByALaterSave()
    {
        SaveLedger ledger;
        ledger.documentBegun(m_dir.filePath("late.xml"));
        ledger.documentsSaved();
        ledger.documentBegun(m_dir.filePath("never.xml"));
        QCOMPARE(ledger.lostDocuments(), 2LL);
        writeFile(m_dir.filePath("late.xml"), "<x/>");
        ledger.documentsSaved();
        QCOMPARE(ledger.lostDocuments(), 1LL);
    }

    void documentsAreCountedHoweverManyAreLost()
    {
        SaveLedger ledger;
        for (int i = 0; i < 12000; ++i)
            ledger.documentBegun(m_dir.filePath(QStringLiteral("lost%1").arg(i)));
        ledger.documentsSaved();
        QCOMPARE(ledger.lostDocuments(), 12000LL);
    }

    void aCodeFileIsFoundUnderItsNewName()
    {
        SaveLedger ledger;
        const QString path = m_dir.filePath("code.txt");
        QFile code(path);
        QVERIFY(code.open(QIODevice::WriteOnly));
        ledger.codeFileBegun(path);
        QVERIFY(QFile::rename(path, m_dir.filePath("moved.txt")));
        for (int i = 0; i < 3; ++i)
            ledger.symbolReceived();
        QVERIFY(code.write("-. ") > 0 && code.flush());
        QCOMPARE(ledger.lostSymbols(), 1LL);
        QVERIFY(code.write(".") > 0 && code.flush());
        QCOMPARE(ledger.lostSymbols(), 0LL);
    }

    void aCodeFileMayGoOnceTheNextHasBegun()
    {
        SaveLedger ledger;
        writeFile(m_dir.filePath("1.txt"), "... ---");
        writeFile(m_dir.filePath("2.txt"), ".");
        ledger.codeFileBegun(m_dir.filePath("1.txt"));
        for (int i = 0; i < 7; ++i)
            ledger.symbolReceived();
        ledger.codeFileBegun(m_dir.filePath("2.txt"));
        QVERIFY(QFile::remove(m_dir.filePath("1.txt")));
        QCOMPARE(ledger.lostSymbols(), 0LL);
    }

    void whatIsWrittenToADeletedFileIsLost()
    {
        SaveLedger ledger;
        const QString path = m_dir.filePath("deleted.txt");
        writeFile(path, ".");
        ledger.codeFileBegun(path);
        ledger.symbolReceived();
        QVERIFY(QFile::remove(path));
        QCOMPARE(ledger.lostSymbols(), 1LL);
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(tst_SaveLedger)
#include "tst_saveledger.moc"
