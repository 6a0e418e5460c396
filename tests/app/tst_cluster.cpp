// SPDX-License-Identifier: MIT
// The script that submits recordings to a cluster, with commands of a cluster that only take note:
// what it submits, what it refuses, and that its tasks archive each recording once.
#include "support/files.h"
#include "support/program.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using testsupport::HANGS_ms;

class tst_Cluster : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString path(const QString& name) const { return m_folder.filePath(name); }

    // A command of the cluster, found before the real one.
    void stub(const char* name, const QByteArray& script) const
    {
        const QString file = path(QString("bin/") + name);
        QFile::remove(file);
        writeFile(file, "#!/bin/bash\n" + script);
        QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    struct Ended
    {
        int status;
        QByteArray err;
    };
    Ended runBash(const QStringList& words, const QStringList& environment = {}) const
    {
        QProcess process;
        process.setWorkingDirectory(m_folder.path());
        QStringList all = QProcess::systemEnvironment() + environment;
        all += "PATH=" + path("bin") + ':' + QFileInfo(MORSEHOST_PATH).path() +
               ":/usr/sbin:/usr/bin:/bin";
        process.setEnvironment(all);
        process.start("/bin/bash", words);
        if (!process.waitForFinished(HANGS_ms))
            return {-1, "it hangs"};
        return {process.exitCode(), process.readAllStandardError()};
    }
    Ended submit(const QStringList& words) const
    {
        return runBash(QStringList{PROJECT_DATA_DIR "/slurm/morsehost-cluster.sh"} + words);
    }

    QStringList submissions() const
    {
        return QString(contentOf(path("submitted"))).split('\n', Qt::SkipEmptyParts);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir(m_folder.path()).mkpath("bin") && QDir(m_folder.path()).mkpath("tapes"));
        for (const char* const name : {"20260512_101500Z.flac", "20260512 111500.flac"})
            QVERIFY(QFile::copy(PROJECT_DATA_DIR "/samples/evening.flac",
                                path(QString("tapes/") + name)));
        stub("sbatch", "echo \"$*\" >>'" + path("submitted").toUtf8() + "'\n");
        stub("scontrol", "echo 'MaxArraySize            = 1001'\n");
        stub("stat", "cat '" + path("filesystem").toUtf8() + "'\n");
    }

    void init()
    {
        QFile::remove(path("filesystem"));
        writeFile(path("filesystem"), "ext2/ext3\n");
        QFile::remove(path("submitted"));
    }

    void eachSubmissionHasAFolderOfItsOwn()
    {
        for (int i = 0; i < 2; ++i) {
            const Ended ended = submit({"--archive", "heard.db", "--partition", "night", "--most",
                                        "5", "tapes", "--", "--wpm", "25"});
            QCOMPARE(ended.status, 0);
        }
        const QStringList all = submissions();
        QCOMPARE(all.size(), 2);
        QStringList tasks;
        for (const QString& one : all) {
            QVERIFY2(one.contains("--array 0-1%5 --requeue"), qPrintable(one));
            QVERIFY2(one.contains("--partition night"), qPrintable(one));
            tasks += one.section(' ', -1);
        }
        QVERIFY(tasks[0] != tasks[1]);
        QVERIFY(QFileInfo(tasks[0]).path().startsWith(path("morsehost-cluster/")));
        // The first one's is as it was.
        const Ended again =
            submit({"--archive", "heard.db", "--state", QFileInfo(tasks[0]).path(), "tapes"});
        QCOMPARE(again.status, 2);
        QVERIFY2(again.err.contains("belongs to another submission"), again.err.constData());
        QCOMPARE(submissions().size(), 2);
    }

    void aFileOnANetworkIsNoArchive_data()
    {
        QTest::addColumn<QByteArray>("fileSystem");
        for (const char* const name : {"nfs", "cifs", "smb2", "ceph", "lustre", "fuseblk", "9p"})
            QTest::newRow(name) << QByteArray(name);
    }
    void aFileOnANetworkIsNoArchive()
    {
        QFETCH(QByteArray, fileSystem);
        QFile::remove(path("filesystem"));
        writeFile(path("filesystem"), fileSystem + '\n');
        const Ended file = submit({"--archive", "heard.db", "tapes"});
        QCOMPARE(file.status, 2);
        QVERIFY2(file.err.contains("several machines cannot write to a file"),
                 file.err.constData());
        QVERIFY(!QFile::exists(path("submitted")));
        // A server is asked over any network.
        QCOMPARE(submit({"--archive", "postgresql://db/radio", "tapes"}).status, 0);
        QCOMPARE(submissions().size(), 1);
    }

    void tasksThatAreTriedAgainArchiveOnce()
    {
        QCOMPARE(submit({"--archive", path("once.db"), "tapes"}).status, 0);
        const QString task = submissions().first().section(' ', -1);
        for (const char* const id : {"0", "1", "0"}) {
            const Ended ended = runBash({task}, {QString("SLURM_ARRAY_TASK_ID=") + id});
            QVERIFY2(ended.status == 0, ended.err.constData());
        }
        const auto found = testsupport::run({"search", "--archive", path("once.db"), "--json"});
        // Of one content, whatever its file is called.
        QCOMPARE(found.out.count('\n'), 1);
    }

    void whatCannotBeSubmittedIsRefused_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QByteArray>("complaint");
        QTest::newRow("no archive")
            << QStringList{"tapes"} << QByteArray("--archive URL is missing");
        QTest::newRow("no folder")
            << QStringList{"--archive", "a.db"} << QByteArray("FOLDER is missing");
        QTest::newRow("a folder without a recording")
            << QStringList{"--archive", "a.db", "bin"} << QByteArray("holds no recording");
        QTest::newRow("no number") << QStringList{"--archive", "a.db", "--most", "0", "tapes"}
                                   << QByteArray("--most takes a number");
    }
    void whatCannotBeSubmittedIsRefused()
    {
        QFETCH(QStringList, words);
        QFETCH(QByteArray, complaint);
        const Ended ended = submit(words);
        QCOMPARE(ended.status, 2);
        QVERIFY2(ended.err.contains(complaint), ended.err.constData());
        QVERIFY(!QFile::exists(path("submitted")));
    }
};

QTEST_GUILESS_MAIN(tst_Cluster)
#include "tst_cluster.moc"
