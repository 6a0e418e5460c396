// SPDX-License-Identifier: MIT
#include "host/cfgcenter.h"
#include "host/standin/configuration.h"

#include "support/files.h"

#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

ICfg* openConfiguration()
{
    return CfgCenter::CreateCfg(QString(), ICfg::eVIEW_ALL, QStringLiteral("AllCorvoApplications"));
}

QString read(const char* group, const char* key)
{
    return openConfiguration()->GetString(QLatin1String(group), QLatin1String(key));
}

} // namespace

class tst_Configuration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(m_dir.isValid()); }
    void cleanup() { clearConfiguration(); }

    void anUnknownKeyIsEmpty()
    {
        QVERIFY(openConfiguration());
        QCOMPARE(read("", "DecoderModulesFile"), QString());
    }

    void keysAreReadFromAFile()
    {
        QVERIFY(setConfigurationFile(write("DecoderModulesFile=/srv/modules.txt\n"
                                           "Separated=C:\\\\Tavik\\\\modules.txt\n"
                                           "List=\"a, b;c\"\n"
                                           "Parts=a,b\n"
                                           "Name=Str\xc3\xb6me\n"
                                           "[Display]\n"
                                           "Columns=80\n"
                                           "[Sound]\n"
                                           "Columns=2\n")));
        QCOMPARE(read("", "DecoderModulesFile"), QStringLiteral("/srv/modules.txt"));
        QCOMPARE(read("", "Separated"), QStringLiteral("C:\\Tavik\\modules.txt"));
        QCOMPARE(read("", "List"), QStringLiteral("a, b;c"));
        QCOMPARE(read("", "Parts"), QStringLiteral("a, b"));
        QCOMPARE(read("", "Name"), QStringLiteral("Ströme"));
        QCOMPARE(read("Display", "Columns"), QStringLiteral("80"));
        QCOMPARE(read("Sound", "Columns"), QStringLiteral("2"));
        QCOMPARE(read("Display", "DecoderModulesFile"), QString());
        QCOMPARE(read("", "Columns"), QString());
    }

    void aFileReplacesTheOneBefore()
    {
        QVERIFY(setConfigurationFile(write("a=1\nb=1\n")));
        QVERIFY(setConfigurationFile(write("b=2\n")));
        QCOMPARE(read("", "a"), QString());
        QCOMPARE(read("", "b"), QStringLiteral("2"));
    }

    void aFileThatCannotBeReadChangesNothing()
    {
        QVERIFY(setConfigurationFile(write("a=1\n")));
        QVERIFY(!setConfigurationFile(m_dir.filePath(QStringLiteral("missing.ini"))));
        QVERIFY(!setConfigurationFile(m_dir.path()));
        QVERIFY(!setConfigurationFile(QString()));
        QCOMPARE(read("", "a"), QStringLiteral("1"));
    }

    void aFolderMayBeSpelledWithBackslashes()
    {
        const QString path = write("a=1\n");
        QVERIFY(setConfigurationFile(QString(path).replace(QLatin1Char('/'), QLatin1Char('\\'))));
        QCOMPARE(read("", "a"), QStringLiteral("1"));
    }

    void aKeySetDirectlyGoesBeforeTheFile()
    {
        setConfigurationValue(QString(), QStringLiteral("a"), QStringLiteral("mine"));
        QVERIFY(setConfigurationFile(write("a=1\n")));
        QCOMPARE(read("", "a"), QStringLiteral("mine"));
        setConfigurationValue(QStringLiteral("g"), QStringLiteral("a"), QStringLiteral("other"));
        QCOMPARE(read("", "a"), QStringLiteral("mine"));
        QCOMPARE(read("g", "a"), QStringLiteral("other"));
        clearConfiguration();
        QCOMPARE(read("", "a"), QString());
    }

    void anOpenConfigurationSeesLaterChanges()
    {
        ICfg* const configuration = openConfiguration();
        setConfigurationValue(QString(), QStringLiteral("a"), QStringLiteral("1"));
        QCOMPARE(configuration->GetString(QString(), QStringLiteral("a")), QStringLiteral("1"));
    }

    void severalThreadsMayOpenReadAndSet()
    {
        const QString path = write("a=1\n");
        std::atomic<int> bad{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&, i] {
                for (int j = 0; j < 200; ++j) {
                    if (i == 0)
                        setConfigurationValue(QString(), QStringLiteral("b"), QString::number(j));
                    else if (i == 1 && !setConfigurationFile(path))
                        ++bad;
                    const QString text = read("", "a");
                    if (!text.isEmpty() && text != QLatin1String("1"))
                        ++bad;
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(bad.load(), 0);
    }

    void aFileWithABrokenLineChangesNothing()
    {
        QVERIFY(setConfigurationFile(write("a=1\n")));
        QVERIFY(!setConfigurationFile(write("a=2\n[Display\nColumns=80\n")));
        QCOMPARE(read("", "a"), QStringLiteral("1"));
    }

    void aConfigurationEndsThroughItsInterface()
    {
        struct Own : ICfg
        {
            explicit Own(bool* ended)
                : isEnded(ended)
            {
            }
            ~Own() override { *isEnded = true; }
            QString GetString(const QString&, const QString& key) override { return key; }
            bool* isEnded;
        };
        bool isEnded = false;
        std::unique_ptr<ICfg> configuration = std::make_unique<Own>(&isEnded);
        QCOMPARE(configuration->GetString(QString(), QStringLiteral("a")), QStringLiteral("a"));
        configuration.reset();
        QVERIFY(isEnded);
    }

private:
    QString write(const QByteArray& content)
    {
        return writeFile(m_dir.filePath(QStringLiteral("host%1.ini").arg(++m_files)), content);
    }

    QTemporaryDir m_dir;
    int m_files = 0;
};

QTEST_APPLESS_MAIN(tst_Configuration)
#include "tst_configuration.moc"
