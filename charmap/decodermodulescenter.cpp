// SPDX-License-Identifier: MIT
#include "charmap/decodermodulescenter.h"

#include "host/cfgcenter.h"
#include "host/trace.h"
#include "tables/hostpath.h"
#include "tables/regularfile.h"

#include <QFileInfo>
#include <QMutex>
#include <QStringList>
#include <QTextStream>

#include <algorithm>
#include <atomic>
#include <cmath>

namespace Quillon {

namespace {

// Columns of the file, counted from 1.
constexpr int ID_COLUMN = 1;
constexpr int NUMBER_COLUMN = 2;
constexpr int TYPE_COLUMN = 3;
constexpr int FIRST_FLAG_COLUMN = 4;
constexpr int LAST_FLAG_COLUMN = 29;
constexpr int CHARSET_COLUMN = 30;
constexpr int NAME_COLUMN = 31; ///< and everything behind it

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

/// Index of a column's flag: the last columns of the file lie in another order.
std::size_t flagIndex(int column)
{
    Q_ASSERT(column >= FIRST_FLAG_COLUMN && column <= LAST_FLAG_COLUMN);
    static constexpr std::array<int, 7> LAST_COLUMNS = {24, 25, 22, 23, 19, 20, 21};
    constexpr int FIRST_CROSSED = 23;
    return static_cast<std::size_t>(column < FIRST_CROSSED
                                        ? column - FIRST_FLAG_COLUMN
                                        : LAST_COLUMNS[std::size_t(column - FIRST_CROSSED)]);
}

bool isDigit(QChar c)
{
    return c.isDigit();
}

/// Of Latin-1, which has no combining marks.
bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_');
}

/// Cuts off and returns the next column, which is empty at the start of a line that begins with
/// white space, and at its end.
QStringView takeColumn(QStringView& line)
{
    qsizetype end = 0;
    while (end < line.size() && !line[end].isSpace())
        ++end;
    const QStringView column = line.left(end);
    while (end < line.size() && line[end].isSpace())
        ++end;
    line = line.mid(end);
    return column;
}

constexpr quint32 bitOf(int column)
{
    return 1u << (column - 1);
}

/// The bits of all flag columns.
constexpr quint32 FLAG_BITS = bitOf(LAST_FLAG_COLUMN + 1) - bitOf(FIRST_FLAG_COLUMN);

/// For each column of the pattern one bit, set when `word` may stand there.
quint32 possibleColumns(QStringView word)
{
    const bool isSingle = word.size() == 1;
    // The match may begin within a word and end within one.
    quint32 columns = isWordCharacter(word[0]) ? bitOf(NAME_COLUMN) : 0;
    if (isSingle && columns)
        columns |= bitOf(TYPE_COLUMN) | bitOf(CHARSET_COLUMN);
    if (!isDigit(word.back()))
        return columns;
    columns |= bitOf(ID_COLUMN);
    if (isSingle)
        columns |= FLAG_BITS;
    if (std::all_of(word.begin(), word.end(), isDigit))
        columns |= bitOf(NUMBER_COLUMN);
    return columns;
}

/// 0 for what is no number.
int integerIn(QStringView column)
{
    return QString::fromRawData(column.data(), static_cast<int>(column.size())).toInt();
}

/// Of a line that holds a module, and so a word for each column.
DecoderModule moduleOf(const QString& line)
{
    QStringView rest = line;
    DecoderModule module;
    module.id = integerIn(takeColumn(rest));
    module.number = takeColumn(rest).toString().toDouble();
    module.type = takeColumn(rest).front().toLatin1();
    for (int column = FIRST_FLAG_COLUMN; column <= LAST_FLAG_COLUMN; ++column)
        module.SetColumnFlag(column, integerIn(takeColumn(rest)) != 0);
    module.charset = takeColumn(rest).front().toLatin1();
    module.name = rest.trimmed().toString();
    return module;
}

/// Digits alone, which is what the column must hold to be read again.
QString digitsOf(double number)
{
    if (!(number > 0))
        return QStringLiteral("0");
    if (std::isinf(number))
        return QString(400, QLatin1Char('9'));
    const QString text = QString::number(number);
    return std::all_of(text.begin(), text.end(), isDigit) ? text : QString::number(number, 'f', 0);
}

QString configuredFileName()
{
    ICfg* const configuration =
        CfgCenter::CreateCfg(QString(), ICfg::eVIEW_ALL, QStringLiteral("AllCorvoApplications"));
    return configuration ? configuration->GetString(QString(), QStringLiteral("DecoderModulesFile"))
                         : QString();
}

} // namespace

bool DecoderModule::ColumnFlag(int column) const
{
    return flags[flagIndex(column)];
}

void DecoderModule::SetColumnFlag(int column, bool flag)
{
    flags[flagIndex(column)] = flag;
}

bool holdsDecoderModule(const QString& line)
{
    // One bit for each number of columns that the words read last may have filled.
    constexpr quint32 ALL_COLUMNS = bitOf(NAME_COLUMN);
    quint32 filled = 0;
    for (QStringView rest = line; !rest.isEmpty();) {
        const QStringView word = takeColumn(rest);
        if (word.isEmpty())
            continue;
        filled = (filled << 1 | 1) & possibleColumns(word);
        if (filled & ALL_COLUMNS)
            return true;
    }
    return false;
}

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
        // Whoever takes the trace may ask for the modules.
        lock.unlock();
        traceMessage(QStringLiteral("Decoder modules file can not be opened: ") + m_fileName,
                     QStringLiteral("shared\\source\\decodermoduelscenter"), 532);
        return false;
    }
    m_modules.clear();
    while (!file.atEnd()) {
        const QByteArray bytes = file.readLine();
        const QString line = QString::fromLatin1(bytes.constData(), bytes.size());
        if (holdsDecoderModule(line))
            m_modules.push_back(moduleOf(line));
    }
    std::stable_sort(m_modules.begin(), m_modules.end(),
                     [](const DecoderModule& a, const DecoderModule& b) {
                         return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
                     });
    return true;
}

bool DecoderModulesCenter::WriteModulesFile(const QString& path)
{
    const QMutexLocker lock(&g_mutex);
    QFile file(localPath(path));
    const QFileInfo info(file);
    if ((info.exists() && !info.isFile()) || !file.open(QIODevice::WriteOnly))
        return false;
    for (const DecoderModule& module : m_modules) {
        QString line = QString::number(module.id) + QLatin1Char(' ') + digitsOf(module.number) +
                       QLatin1Char(' ') + QLatin1Char(module.type);
        for (int column = FIRST_FLAG_COLUMN; column <= LAST_FLAG_COLUMN; ++column)
            line += QLatin1String(module.ColumnFlag(column) ? " 1" : " 0");
        line += QLatin1Char(' ') + QString(QLatin1Char(module.charset)) + QLatin1Char(' ') +
                module.name + QLatin1Char('\n');
        file.write(line.toLatin1());
    }
    return file.flush();
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
