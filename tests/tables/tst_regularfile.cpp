// SPDX-License-Identifier: MIT
#include "tables/regularfile.h"

#include "support/fewdescriptors.h"
#include "support/files.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

class tst_RegularFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(m_dir.isValid()); }

    void aFileIsOpenedWithItsBytesAsTheyAre()
    {
        QFile file(write("plain", "a\r\nb"));
        QVERIFY(openRegularFile(file));
        QCOMPARE(file.readAll(), QByteArray("a\r\nb"));
    }

    void aLinkToAFileIsOpened()
    {
        const QString path = m_dir.filePath("link");
        QVERIFY(QFile::link(write("target", "x"), path));
        QFile file(path);
        QVERIFY(openRegularFile(file));
    }

    void whatIsNoRegularFileIsNotOpened_data()
    {
        QTest::addColumn<QString>("path");
        QDir(m_dir.path()).mkdir("folder");
        ::mkfifo(QFile::encodeName(m_dir.filePath("pipe")).constData(), 0600);
        QFile::link(m_dir.filePath("loop"), m_dir.filePath("loop"));
        QTest::newRow("missing") << m_dir.filePath("missing");
        QTest::newRow("empty name") << QString();
        QTest::newRow("folder") << m_dir.filePath("folder");
        QTest::newRow("pipe without a writer") << m_dir.filePath("pipe");
        QTest::newRow("device without end") << "/dev/zero";
        QTest::newRow("link to itself") << m_dir.filePath("loop");
    }

    void whatIsNoRegularFileIsNotOpened()
    {
        QFETCH(QString, path);
        QFile file(path);
        QVERIFY(!openRegularFile(file));
        QVERIFY(!file.isOpen());
    }

    void aFileBeyondTheLimitIsNotOpened()
    {
        QFile file(m_dir.filePath("sparse"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(MAX_FILE_BYTES + 1));
        file.close();
        QVERIFY(!openRegularFile(file));
        QVERIFY(file.resize(MAX_FILE_BYTES));
        QVERIFY(openRegularFile(file));
    }

    void withoutADescriptorLeftNoFileIsOpened()
    {
        QFile file(write("plain", "x"));
        {
            const FewDescriptors none(0);
            QVERIFY(!openRegularFile(file));
        }
        QVERIFY(openRegularFile(file));
    }

private:
    QString write(const QString& name, const QByteArray& content)
    {
        return writeFile(m_dir.filePath(name), content);
    }

    QTemporaryDir m_dir;
};

QTEST_APPLESS_MAIN(tst_RegularFile)
#include "tst_regularfile.moc"
