// SPDX-License-Identifier: MIT
#include "host/cfgcenter.h"

#include "host/standin/configuration.h"
#include "tables/hostpath.h"

#include <QFile>
#include <QMap>
#include <QSettings>
#include <QStringList>

#include <mutex>
#include <utility>

namespace {

using Key = std::pair<QString, QString>; ///< group and key

/// One configuration for every application, view and scope: the stand-in has only one host.
class Configuration : public ICfg
{
public:
    QString GetString(const QString& group, const QString& key) override
    {
        const Key wanted(group, key);
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto direct = m_direct.constFind(wanted);
        return direct != m_direct.constEnd() ? direct.value() : m_fromFile.value(wanted);
    }

    bool Load(const QString& path)
    {
        const QString local = localPath(path);
        if (local.isEmpty())
            return false;
        QFile readable(local); // settings look the same for a missing file and an empty one
        if (!readable.open(QIODevice::ReadOnly))
            return false;
        QSettings file(local, QSettings::IniFormat);
        file.setIniCodec("UTF-8");
        QMap<Key, QString> read = Read(file);
        if (file.status() != QSettings::NoError)
            return false;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_fromFile = std::move(read);
        return true;
    }

    void Set(const QString& group, const QString& key, const QString& value)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_direct[{group, key}] = value;
    }

    void Clear()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_direct.clear();
        m_fromFile.clear();
    }

private:
    static QMap<Key, QString> Read(QSettings& file)
    {
        QMap<Key, QString> read;
        const auto readGroup = [&](const QString& group) {
            const QStringList keys = file.childKeys();
            for (const QString& key : keys)
                read[{group, key}] = file.value(key).toStringList().join(QLatin1String(", "));
        };
        readGroup(QString());
        const QStringList groups = file.childGroups();
        for (const QString& group : groups) {
            file.beginGroup(group);
            readGroup(group);
            file.endGroup();
        }
        return read;
    }

    mutable std::mutex m_mutex;
    QMap<Key, QString> m_direct;
    QMap<Key, QString> m_fromFile;
};

/// Never destroyed, since its users may keep it.
Configuration& configuration()
{
    static auto* const instance = new Configuration;
    return *instance;
}

} // namespace

ICfg::~ICfg() = default;

// NOLINTNEXTLINE(performance-unnecessary-value-param): the host's interface has them by value
ICfg* CfgCenter::CreateCfg(QString application, ICfg::View view, QString scope)
{
    Q_UNUSED(application)
    Q_UNUSED(view)
    Q_UNUSED(scope)
    return &configuration();
}

bool setConfigurationFile(const QString& path)
{
    return configuration().Load(path);
}

void setConfigurationValue(const QString& group, const QString& key, const QString& value)
{
    configuration().Set(group, key, value);
}

void clearConfiguration()
{
    configuration().Clear();
}
