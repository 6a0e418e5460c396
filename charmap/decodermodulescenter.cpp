// SPDX-License-Identifier: MIT
#include "charmap/decodermodulescenter.h"

#include "host/cfgcenter.h"
#include "host/trace.h"
#include "tables/hostpath.h"
#include "tables/regularfile.h"

#include <QFileInfo>
#include <QMutex>
#include <QStringList>

#include <algorithm>
#include <atomic>

namespace Quillon {

namespace {

struct ModeColumn
{
    const char* family;
    const char* mode; ///< null for any mode
    int column;
};

constexpr ModeColumn MODE_COLUMNS[] = {
    {"FSK", "FSK2", 5},      {"FSK", "FSK4", 6},      {"FSK", "MSK", 7},
    {"PSK", "PSK2", 8},      {"PSK", "PSK4", 9},      {"PSK", "PSK8", 10},
    {"McPSK", "McPSK2", 12}, {"McPSK", "McPSK4", 13}, {"PSK31", nullptr, 23},
};

/// Guards the modules of the single object.
QMutex g_mutex;

/// Whether the latest reading of the file succeeded.
std::atomic<bool> g_lastReadSucceeded{false};

/// The columns that stand for a mode of a family: one or none.
std::vector<int> columnsOf(const QString& family, const QString& mode)
{
    std::vector<int> columns;
    for (const ModeColumn& row : MODE_COLUMNS) {
        if (family == QLatin1String(row.family) && (!row.mode || mode == QLatin1String(row.mode)))
            columns.push_back(row.column);
    }
    return columns;
}

std::vector<int> columnsOfMode(const QString& mode)
{
    return mode == QLatin1String("PSK31") ? columnsOf(mode, mode) : std::vector<int>();
}

QString configuredFileName()
{
    ICfg* const configuration =
        CfgCenter::CreateCfg(QString(), ICfg::eVIEW_ALL, QStringLiteral("AllCorvoApplications"));
    return configuration ? configuration->GetString(QString(), QStringLiteral("DecoderModulesFile"))
                         : QString();
}

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface has it by value
DecoderModulesCenter& DecoderModulesCenter::Instance(QString fileName)
{
    static DecoderModulesCenter center(fileName);
    return center;
}

DecoderModulesCenter::DecoderModulesCenter(const QString& fileName)
    : m_fileName(fileName.isEmpty() ? configuredFileName() : fileName)
{
    g_lastReadSucceeded = ReadModulesFile();
}

DecoderModulesCenter::~DecoderModulesCenter() = default;

bool DecoderModulesCenter::ReadModulesFile()
{
    QMutexLocker lock(&g_mutex);
    QFile file(localPath(m_fileName));
    if (!openRegularFile(file)) {
        // The receiver of the trace may ask for the modules.
        lock.unlock();
        traceMessage(QStringLiteral("Decoder modules file can not be opened: ") + m_fileName,
                     QStringLiteral("shared\\source\\decodermoduelscenter"), 532);
        return false;
    }
    m_modules = readDecoderModulesFile(file.readAll());
    return true;
}

bool DecoderModulesCenter::WriteModulesFile(const QString& path)
{
    const QMutexLocker lock(&g_mutex);
    QFile file(localPath(path));
    const QFileInfo info(file);
    if ((info.exists() && !info.isFile()) || !file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray content = decoderModulesFileOf(m_modules);
    return file.write(content) == content.size() && file.flush();
}

template <typename Visit>
void DecoderModulesCenter::Query(const std::vector<int>& columns, bool reread, Visit visit)
{
    if (reread)
        g_lastReadSucceeded = Instance(QString()).ReadModulesFile();
    const QMutexLocker lock(&g_mutex);
    for (const DecoderModule& module : m_modules) {
        if (std::any_of(columns.begin(), columns.end(),
                        [&](int column) { return module.ColumnFlag(column); }))
            visit(module);
    }
}

void DecoderModulesCenter::GetModules(std::vector<DecoderModule>& modules, bool reread)
{
    if (reread)
        g_lastReadSucceeded = Instance(QString()).ReadModulesFile();
    const QMutexLocker lock(&g_mutex);
    modules = m_modules;
}

namespace {

auto appendNameTo(QString& names)
{
    return [&names](const DecoderModule& module) {
        if (!names.isEmpty())
            names += QLatin1Char(';');
        names += module.name;
    };
}

auto appendTo(std::vector<DecoderModule>& modules)
{
    return [&modules](const DecoderModule& module) { modules.push_back(module); };
}

auto appendNumberTo(std::vector<double>& numbers)
{
    return [&numbers](const DecoderModule& module) { numbers.push_back(module.number); };
}

} // namespace

void DecoderModulesCenter::GetNames(const QString& family, const QString& mode, QString& names,
                                    bool reread)
{
    Query(columnsOf(family, mode), reread, appendNameTo(names));
}

void DecoderModulesCenter::GetModules(const QString& family, const QString& mode,
                                      std::vector<DecoderModule>& modules, bool reread)
{
    Query(columnsOf(family, mode), reread, appendTo(modules));
}

void DecoderModulesCenter::GetNumbers(const QString& family, const QString& mode,
                                      std::vector<double>& numbers, bool reread)
{
    Query(columnsOf(family, mode), reread, appendNumberTo(numbers));
}

void DecoderModulesCenter::GetNames(const QString& mode, QString& names, bool reread)
{
    Query(columnsOfMode(mode), reread, appendNameTo(names));
}

void DecoderModulesCenter::GetModules(const QString& mode, std::vector<DecoderModule>& modules,
                                      bool reread)
{
    Query(columnsOfMode(mode), reread, appendTo(modules));
}

void DecoderModulesCenter::GetNumbers(const QString& mode, std::vector<double>& numbers,
                                      bool reread)
{
    Query(columnsOfMode(mode), reread, appendNumberTo(numbers));
}

void DecoderModulesCenter::GetFamily(const QString& mode, QString& family, bool reread)
{
    static const QStringList ASCII_MODES{QStringLiteral("FSK"),   QStringLiteral("ASK"),
                                         QStringLiteral("PSK"),   QStringLiteral("McFSK"),
                                         QStringLiteral("McPSK"), QStringLiteral("F7W")};
    Query({}, reread, [](const DecoderModule&) {});
    if (ASCII_MODES.contains(mode))
        family = QStringLiteral("ASCII");
    else if (mode == QLatin1String("PSK31"))
        family = QStringLiteral("PSK31_BPSK");
    else
        family = QStringLiteral("NONE");
}

void DecoderModulesCenter::SetFlag0(bool flag)
{
    m_flag0 = flag;
}

bool DecoderModulesCenter::GetFlag0() const
{
    return m_flag0;
}

} // namespace Quillon
