// SPDX-License-Identifier: MIT
#include "charmap/charactermap.h"

#include "support/files.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

class tst_CharacterMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theEndingSaysHowAFileIsRead_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("loaded");
        const QByteArray map = "@TextDirection RL\nA\tx\n\n";
        const QByteArray codec = "title\nRL\nA;0x78\n";
        QTest::newRow("map file") << "a.ascii.map" << map << true;
        QTest::newRow("any map file") << "a.map" << map << true;
        QTest::newRow("codec file") << "a.codec" << codec << true;
        QTest::newRow("map file in capitals") << "a.ITA2.MAP" << map << false;
        QTest::newRow("codec file in capitals") << "a.CODEC" << codec << false;
        QTest::newRow("another ending") << "a.txt" << map << false;
    }

    void theEndingSaysHowAFileIsRead()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(bool, loaded);
        const CharacterMap map = readCharacterMap(writeFile(m_dir.filePath(name), content));
        QCOMPARE(map.loaded, loaded);
        QCOMPARE(map.rightToLeft, loaded);
        QCOMPARE(map.table.value('A'), loaded ? QChar('x') : QChar());
    }

    void anEmptyFileIsLoaded()
    {
        const CharacterMap map = readCharacterMap(writeFile(m_dir.filePath("empty.map"), ""));
        QVERIFY(map.loaded);
        QVERIFY(map.table.isEmpty());
    }

    void whatIsNoFileIsNotLoaded_data()
    {
        QTest::addColumn<QString>("name");
        QDir(m_dir.path()).mkdir("folder.map");
        ::mkfifo(QFile::encodeName(m_dir.filePath("pipe.map")).constData(), 0600);
        QFile::link(m_dir.filePath("loop.map"), m_dir.filePath("loop.map"));
        QTest::newRow("missing") << "missing.map";
        QTest::newRow("folder") << "folder.map";
        QTest::newRow("pipe without a writer") << "pipe.map";
        QTest::newRow("link to itself") << "loop.map";
    }

    void whatIsNoFileIsNotLoaded()
    {
        QFETCH(QString, name);
        QVERIFY(!readCharacterMap(m_dir.filePath(name)).loaded);
    }

private:
    QTemporaryDir m_dir;
};

QTEST_APPLESS_MAIN(tst_CharacterMap)
#include "tst_charactermap.moc"
