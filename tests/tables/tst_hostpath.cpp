// SPDX-License-Identifier: MIT
#include "tables/hostpath.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class tst_HostPath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theBaseNameEndsAtTheFirstDot()
    {
        QCOMPARE(baseNameOf("Cyrillic.old.mal"), "Cyrillic");
        QCOMPARE(baseNameOf("Greek"), "Greek");
        QCOMPARE(baseNameOf(".mal"), "");
    }

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

    void hiddenFilesAreFoundInAnyLetterCaseAndNotListed()
    {
        QTemporaryDir folder;
        touch(folder.filePath(QStringLiteral(".Secret.mal")));
        touch(folder.filePath(QStringLiteral("Open.mal")));
        const QDir dir(folder.path());
        QCOMPARE(findIgnoringCase(dir, QStringLiteral(".Secret.mal")),
                 QStringLiteral(".Secret.mal"));
        QCOMPARE(findIgnoringCase(dir, QStringLiteral(".secret.MAL")),
                 QStringLiteral(".Secret.mal"));
        QCOMPARE(findFile(folder.filePath(QStringLiteral(".SECRET.mal"))),
                 folder.filePath(QStringLiteral(".Secret.mal")));
        QCOMPARE(filesIn(dir), QStringList{QStringLiteral("Open.mal")});
    }

    void theEmptyPathHoldsNoFiles()
    {
        const QString before = QDir::currentPath();
        touch(m_dir.filePath(QStringLiteral("present")));
        QVERIFY(QDir::setCurrent(m_dir.path()));
        QDir dir;
        dir.setPath(QString());
        const QStringList files = filesIn(dir);
        const QString found = FolderNames(dir).Find(QStringLiteral("PRESENT"));
        QDir::setCurrent(before);
        QCOMPARE(files, QStringList());
        QCOMPARE(found, QString());
    }

    void namesThatDifferInLetterCaseOnlyAreSorted()
    {
        QStringList names{"b", "aB", "Ab", "AB", "c", "a", "ab"};
        sortIgnoringCase(names);
        QCOMPARE(names, (QStringList{"a", "AB", "Ab", "aB", "ab", "b", "c"}));
    }

    void manyNamesAreFoundInOneListing()
    {
        QTemporaryDir folder;
        for (const char* name : {"CYR.ita2.map", "cyr.ita2.map", "Greek.ascii.map", ".h"})
            touch(folder.filePath(QLatin1String(name)));
        const FolderNames names{QDir(folder.path())};
        for (const char* name : {"CYR.ITA2.map", "cyr.ITA2.map", "Cyr.ITA2.map", "GREEK.ascii.MAP",
                                 ".H", "Roman.map", "", "a/b", "a\\b"}) {
            QCOMPARE(names.Find(QLatin1String(name)),
                     findIgnoringCase(QDir(folder.path()), QLatin1String(name)));
        }
        QCOMPARE(names.Find(QStringLiteral("Cyr.ITA2.map")), QStringLiteral("CYR.ita2.map"));
        QCOMPARE(names.Find(QStringLiteral("cyr.ITA2.map")), QStringLiteral("cyr.ita2.map"));
        QCOMPARE(names.Find(QString()), QString());
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
