// SPDX-License-Identifier: MIT
// What counts as saved, what as lost, and what is said about it.
#include "station/saveledger.h"
#include "support/fewdescriptors.h"
#include "support/files.h"

#include <QTemporaryDir>
#include <QtTest>

#include <optional>

using morsehost::SaveLedger;
using morsehost::SaveLosses;
using morsehost::SessionFileKind;

namespace {

constexpr SessionFileKind CODES = SessionFileKind::Codes;
constexpr SessionFileKind TEXT = SessionFileKind::Text;

// A file as the library has it open: it grows, whatever becomes of its name.
class GrowingFile
{
public:
    GrowingFile(SaveLedger& ledger, SessionFileKind kind, const QString& path)
        : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly))
            qFatal("%s", qPrintable(m_file.errorString()));
        ledger.begun(kind, path);
    }

    void grow(const QByteArray& bytes)
    {
        QVERIFY(m_file.write(bytes) == bytes.size() && m_file.flush());
    }

private:
    QFile m_file;
};

} // namespace

class tst_SaveLedger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_said.clear();
        m_ledger.emplace(m_dir.path(), [this](const QString& message) { m_said += message; });
    }

    void whatIsInTheFilesIsSaved()
    {
        GrowingFile codes(*m_ledger, CODES, path("codes"));
        GrowingFile text(*m_ledger, TEXT, path("text"));
        for (int i = 0; i < 3; ++i) {
            codes.grow("- "); // more than is due: a blank, a line break, an error mark
            QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        }
        text.grow("\xC3\x96");
        QVERIFY(m_ledger->isWritten(TEXT, 2, 1));
        QVERIFY(!m_ledger->losses().any());
        QCOMPARE(m_said, QStringList());
    }

    void whatTheDiskTakesLaterIsSaved()
    {
        GrowingFile codes(*m_ledger, CODES, path("full"));
        for (int i = 0; i < 3; ++i)
            QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        QCOMPARE(m_said.size(), 1);
        QVERIFY2(m_said.last().contains("full: the code file cannot be written"),
                 qPrintable(m_said.last()));
        QCOMPARE(m_ledger->losses().symbols, 3LL);
        codes.grow("-.-.");
        QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        QCOMPARE(m_said.size(), 2);
        QVERIFY2(m_said.last().contains("is written again"), qPrintable(m_said.last()));
        QVERIFY(!m_ledger->losses().any());
    }

    void whatTheDiskTakesAfterTheNextFileHasBegunIsSaved()
    {
        GrowingFile first(*m_ledger, CODES, path("first"));
        QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        GrowingFile second(*m_ledger, CODES, path("second"));
        second.grow(".");
        QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        QCOMPARE(m_ledger->losses().symbols, 1LL);
        first.grow("-");
        QVERIFY(!m_ledger->losses().any());
    }

    void aPartOfWhatIsDueIsNotAllOfIt()
    {
        GrowingFile text(*m_ledger, TEXT, path("part"));
        text.grow("a");
        QVERIFY(m_ledger->isWritten(TEXT, 5, 5));
        QCOMPARE(m_ledger->losses().characters, 5LL);
    }

    void aFileIsFoundUnderItsNewName()
    {
        GrowingFile codes(*m_ledger, CODES, path("before"));
        QVERIFY(QFile::rename(path("before"), path("after")));
        codes.grow("-");
        QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        QVERIFY(!m_ledger->losses().any());
    }

    void aFileMayGoOnceTheNextHasBegun()
    {
        GrowingFile first(*m_ledger, CODES, path("1"));
        first.grow("-");
        QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        GrowingFile second(*m_ledger, CODES, path("2"));
        QVERIFY(QFile::remove(path("1")));
        second.grow("-");
        QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        QVERIFY(!m_ledger->losses().any());
    }

    void whatGoesIntoADeletedFileIsLost_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("code file") << static_cast<int>(CODES);
        QTest::newRow("text file") << static_cast<int>(TEXT);
    }

    void whatGoesIntoADeletedFileIsLost()
    {
        QFETCH(int, kind);
        const auto of = static_cast<SessionFileKind>(kind);
        GrowingFile file(*m_ledger, of, path("deleted"));
        file.grow("-");
        QVERIFY(m_ledger->isWritten(of, 1, 1));
        QVERIFY(QFile::remove(path("deleted")));
        file.grow("-");
        QVERIFY(!m_ledger->isWritten(of, 1, 1));
        QVERIFY(m_said.value(0).contains("was deleted while it was written"));
        GrowingFile next(*m_ledger, of, path("next"));
        next.grow("-");
        QVERIFY(m_ledger->isWritten(of, 1, 1));
        QCOMPARE(m_said.size(), 2);
        const SaveLosses lost = m_ledger->losses();
        QCOMPARE(of == CODES ? lost.symbols : lost.characters, 1LL);
    }

    void whatNoFileTakesIsLost()
    {
        QVERIFY(m_ledger->isWritten(TEXT, 1, 1));
        QVERIFY(m_ledger->isWritten(TEXT, 1, 1));
        QCOMPARE(m_said.size(), 1);
        QVERIFY2(m_said.last().contains("the text file cannot be created"),
                 qPrintable(m_said.last()));
        QCOMPARE(m_ledger->losses().characters, 2LL);
    }

    void filesAreWatchedWithoutADescriptor()
    {
        QFile file(path("few"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        {
            const FewDescriptors limit(0);
            m_ledger->begun(CODES, path("few"));
        }
        QVERIFY(file.write("-") == 1 && file.flush());
        QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        QVERIFY(!m_ledger->losses().any());
        QVERIFY(file.remove());
        QVERIFY(!m_ledger->isWritten(CODES, 1, 1));
        QCOMPARE(m_ledger->losses().symbols, 1LL);
    }

    void aDiskThatStaysFullIsCountedOverManyFiles()
    {
        for (int i = 0; i < 100; ++i) {
            GrowingFile file(*m_ledger, CODES, path("many"));
            QVERIFY(m_ledger->isWritten(CODES, 1, 1));
        }
        QCOMPARE(m_ledger->losses().symbols, 100LL);
        QCOMPARE(m_said.size(), 1);
    }

    void documentsThatWaitAreSaidOnceAndOnceMoreWhenTheyAreWritten()
    {
        m_ledger->documents(1, 0);
        m_ledger->documents(2, 0);
        QCOMPARE(m_ledger->losses().documents, 2LL);
        QCOMPARE(m_said.size(), 1);
        m_ledger->documents(0, 0);
        QCOMPARE(m_said.size(), 2);
        QVERIFY(!m_ledger->losses().any());
        m_ledger->documents(1, 2);
        QCOMPARE(m_said.size(), 3);
        m_ledger->documents(0, 3); // given up at the end, which is no good news
        QCOMPARE(m_said.size(), 3);
        QCOMPARE(m_ledger->losses().documents, 3LL);
    }

private:
    QString path(const char* name) const { return m_dir.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_dir;
    QStringList m_said;
    std::optional<SaveLedger> m_ledger;
};

QTEST_GUILESS_MAIN(tst_SaveLedger)
#include "tst_saveledger.moc"
