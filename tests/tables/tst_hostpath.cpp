// SPDX-License-Identifier: MIT
#include "tables/hostpath.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class tst_HostPath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(m_dir.isValid()); }

    void aPathWithoutBackslashStays()
    {
        QCOMPARE(localPath(QStringLiteral("/no/such/file")), QStringLiteral("/no/such/file"));
    }

    void backslashesSeparateWhereTheFolderAsWrittenIsMissing()
    {
        QCOMPARE(localPath(QStringLiteral("/no-such\\sub/file")),
                 QStringLiteral("/no-such/sub/file"));
    }

    void backslashesSeparateWhereThatExists()
    {
        QDir(m_dir.path()).mkdir(QStringLiteral("here"));
        touch(m_dir.filePath(QStringLiteral("here/file")));
        QCOMPARE(localPath(m_dir.path() + QStringLiteral("\\here\\file")),
                 m_dir.path() + QStringLiteral("/here/file"));
    }

    void aFileIsFoundByItsComposedName()
    {
        QDir(m_dir.path()).mkdir(QStringLiteral("alphabets"));
        touch(m_dir.filePath(QStringLiteral("alphabets/Greek.mal")));
        const QString folder = m_dir.filePath(QStringLiteral("alphabets"));
        const QString file = folder + QStringLiteral("/Greek.mal");
        QCOMPARE(findFile(folder + QStringLiteral("\\Greek.mal")), file);
        QCOMPARE(findFile(folder + QStringLiteral("\\GREEK.mal")), file);
        QCOMPARE(findFile(folder + QStringLiteral("/greek.MAL")), file);
        QCOMPARE(findFile(folder + QStringLiteral("\\Roman.mal")), QString());
        QCOMPARE(findFile(QString()), QString());
    }

    void anExistingFileWithABackslashInItsNameStays()
    {
        const QString path = m_dir.filePath(QStringLiteral("odd\\name"));
        touch(path);
        QCOMPARE(localPath(path), path);
    }

    void aNewFileWithABackslashInAnExistingFolderStays()
    {
        const QString path = m_dir.filePath(QStringLiteral("new\\name"));
        QCOMPARE(localPath(path), path);
    }

    void theExactSpellingWinsOverOthers()
    {
        touch(m_dir.filePath(QStringLiteral("GREEK.mal")));
        touch(m_dir.filePath(QStringLiteral("Greek.mal")));
        const QDir dir(m_dir.path());
        QCOMPARE(findIgnoringCase(dir, QStringLiteral("Greek.mal")), QStringLiteral("Greek.mal"));
        QCOMPARE(findIgnoringCase(dir, QStringLiteral("greek.MAL")), QStringLiteral("GREEK.mal"));
    }

    void theExactSpellingBeforeTheFirstDotWins()
    {
        touch(m_dir.filePath(QStringLiteral("CYR.ita2.map")));
        touch(m_dir.filePath(QStringLiteral("Cyr.ita2.map")));
        touch(m_dir.filePath(QStringLiteral("cyr.ita2.map")));
        const QDir dir(m_dir.path());
        for (const char* base : {"CYR", "Cyr", "cyr"}) {
            QCOMPARE(findIgnoringCase(dir, QLatin1String(base) + QStringLiteral(".ITA2.map")),
                     QLatin1String(base) + QStringLiteral(".ita2.map"));
        }
        QCOMPARE(findIgnoringCase(dir, QStringLiteral("cYR.ITA2.map")),
                 QStringLiteral("CYR.ita2.map"));
    }

    void whatIsNotThereAndWhatIsAPathIsNotFound()
    {
        const QDir dir(m_dir.path());
        QDir(m_dir.path()).mkdir(QStringLiteral("sub"));
        touch(m_dir.filePath(QStringLiteral("sub/x")));
        QCOMPARE(findIgnoringCase(dir, QStringLiteral("missing")), QString());
        QCOMPARE(findIgnoringCase(dir, QString()), QString());
        QCOMPARE(findIgnoringCase(dir, QStringLiteral("sub/x")), QString());
        QCOMPARE(findIgnoringCase(dir, QStringLiteral("sub\\x")), QString());
    }

    void aFolderSpelledWithBackslashesIsSearched()
    {
        QDir(m_dir.path()).mkdir(QStringLiteral("sub"));
        touch(m_dir.filePath(QStringLiteral("sub/Name")));
        const QDir dir(m_dir.path() + QStringLiteral("\\sub\\"));
        QCOMPARE(findIgnoringCase(dir, QStringLiteral("name")), QStringLiteral("Name"));
    }

private:
    static void touch(const QString& path)
    {
        QFile file(path);
        QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    }

    QTemporaryDir m_dir;
};

QTEST_APPLESS_MAIN(tst_HostPath)
#include "tst_hostpath.moc"
