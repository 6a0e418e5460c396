// SPDX-License-Identifier: MIT
// What the decoder modules table asks of the host's configuration: here the test is the host.
#include "charmap/decodermodulescenter.h"

#include "host/cfgcenter.h"
#include "host/standin/tracelog.h"
#include "support/decodermodules.h"
#include "support/files.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Configuration : ICfg
{
    QString GetString(const QString& group, const QString& key) override
    {
        asked += group + QLatin1Char('/') + key;
        return path;
    }

    QStringList asked;
    QString path;
};

Configuration g_configuration;
bool g_hasConfiguration = true;
QStringList g_opened;

} // namespace

// In place of that of the stand-in host.
ICfg* CfgCenter::CreateCfg(QString application, ICfg::View view, QString scope)
{
    g_opened += QStringLiteral("[%1] %2 [%3]").arg(application).arg(int(view)).arg(scope);
    return g_hasConfiguration ? &g_configuration : nullptr;
}

using Quillon::DecoderModulesCenter;

class tst_ConfiguredModules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QVERIFY(m_dir.isValid());
        g_opened.clear();
        g_configuration.asked.clear();
        g_hasConfiguration = true;
        g_configuration.path = writeFile(m_dir.filePath("modules"), moduleLine("Baudot", 'I'));
    }

    void theFileNameComesFromTheConfigurationOfAllApplications()
    {
        DecoderModulesCenter center{QString()};
        QCOMPARE(g_opened, QStringList{"[] 4 [AllCorvoApplications]"});
        QCOMPARE(g_configuration.asked, QStringList{"/DecoderModulesFile"});
        std::vector<Quillon::DecoderModule> modules;
        center.GetModules(modules, false);
        QCOMPARE(modules.size(), std::size_t(1));
    }

    void aNameThatIsGivenAsksForNoConfiguration()
    {
        DecoderModulesCenter center(g_configuration.path);
        QCOMPARE(g_opened, QStringList());
    }

    void aHostWithoutConfigurationHasNoModules()
    {
        g_hasConfiguration = false;
        TraceRecorder traces;
        DecoderModulesCenter center{QString()};
        QCOMPARE(traces.Messages(), QStringList{"Decoder modules file can not be opened: "});
        std::vector<Quillon::DecoderModule> modules(1);
        center.GetModules(modules, false);
        QVERIFY(modules.empty());
    }

private:
    QTemporaryDir m_dir;
};

QTEST_APPLESS_MAIN(tst_ConfiguredModules)
#include "tst_configuredmodules.moc"
