// SPDX-License-Identifier: MIT
// Every byte that the program saves of a recording with three transmissions. Renewed by
// scripts/renew-golden.sh, in a commit of its own.
#include "support/files.h"
#include "support/resultschema.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

class tst_GoldenSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TZ", "UTC");
        QVERIFY(m_dir.isValid());
        QProcess program;
        program.start(QStringLiteral(MORSEHOST_PATH),
                      {"decode", "--save", m_dir.path(), "--frequency", "7025000", "--start",
                       "2026-05-12T10:15:00Z", TEST_DATA_DIR "/recordings/three-overs.flac"});
        QVERIFY(program.waitForFinished(600000));
        QCOMPARE(program.readAllStandardError(), QByteArray());
        QCOMPARE(program.exitCode(), 0);
        m_shown = program.readAllStandardOutput();
    }

    // The file names hold the time of the computer's clock, so they are known by their pattern.
    void theFilesAreAsBefore_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("golden");
        const QString stamp = QStringLiteral("\\d{8}_\\d{6}_1_MO__7_025MHz");
        const QString document =
            QStringLiteral("TavikResultData_\\d{4}(_\\d\\d){2}__\\d\\d(_\\d\\d){2}(_\\d)?\\.xml");
        QTest::newRow("codes") << stamp + "\\.txt" << 0 << "code.txt";
        QTest::newRow("text") << stamp + "__International\\.txt" << 0 << "text.txt";
        QTest::newRow("first document") << document << 0 << "document1.xml";
        QTest::newRow("second document") << document << 1 << "document2.xml";
        QTest::newRow("third document") << document << 2 << "document3.xml";
    }

    void theFilesAreAsBefore()
    {
        QFETCH(QString, pattern);
        QFETCH(int, index);
        QFETCH(QString, golden);
        const QRegularExpression name(QRegularExpression::anchoredPattern(pattern));
        const QStringList files =
            QDir(m_dir.path()).entryList(QDir::Files, QDir::Name).filter(name);
        QVERIFY2(files.size() > index, qPrintable(pattern));
        QCOMPARE(contentOf(m_dir.filePath(files.at(index))),
                 contentOf(TEST_DATA_DIR "/golden/three-overs/" + golden));
    }

    void nothingElseIsSaved() { QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files).size(), 5); }

    void theDocumentsAreValid()
    {
        QStringList paths;
        for (const QString& name : QDir(m_dir.path()).entryList({"*.xml"}, QDir::Files))
            paths += m_dir.filePath(name);
        QCOMPARE(paths.size(), 3);
        QCOMPARE(schemaErrors(paths), QString());
    }

    void whatIsSavedIsWhatIsShown()
    {
        QByteArray text = contentOf(TEST_DATA_DIR "/golden/three-overs/text.txt");
        QString plain = QString::fromUtf8(text);
        plain.replace(QRegularExpression("\\[St[a-z]+ Time:  [^\\]]*\\]"), QString());
        QCOMPARE(plain.simplified(), QString::fromUtf8(m_shown).simplified());
    }

private:
    QTemporaryDir m_dir;
    QByteArray m_shown;
};

QTEST_GUILESS_MAIN(tst_GoldenSession)
#include "tst_goldensession.moc"
