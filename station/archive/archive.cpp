// SPDX-License-Identifier: MIT
#include "station/archive/archive.h"

#include "station/archive/columns.h"
#include "station/archive/dialect.h"
#include "station/archive/wantedwords.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <atomic>
#include <utility>

namespace morsehost {

namespace {

// Ids of so many rows are put into order faster than the rows of others are passed by.
constexpr int NARROW_ROWS = 200000;
// So many rows are read and compared faster than an index of words is asked.
constexpr int COMPARED_ROWS = 20000;
// So many ids are a block, of which the archive knows when what is in it began.
constexpr int BLOCK_IDS = 4096;

const char* const NO_ARCHIVE = "is no archive";
// What the file of a database begins with, unless it is empty.
const char* const DATABASE_HEADER = "SQLite format 3";

// The database's own words, without those of the driver.
QString reasonOf(const QSqlError& error)
{
    const QString words = error.databaseText().simplified();
    return words.isEmpty() ? error.driverText().simplified() : words;
}

QString columnNames()
{
    QStringList names;
    for (const ArchiveColumn& column : archiveColumns())
        names += QStringLiteral("transmissions.") + QLatin1String(column.name);
    return names.join(QLatin1String(", "));
}

// What a query says of rows, in SQL, and the values that stand in it as "?".
struct Conditions
{
    QStringList texts;
    QVariantList values;

    QString joined() const { return texts.join(QLatin1String(" AND ")); }
    /// From an index that is not to be used: of a value that is reckoned with there is none.
    void hide()
    {
        for (QString& text : texts)
            text.prepend(QLatin1Char('+'));
    }
    Conditions& operator+=(const Conditions& others)
    {
        texts += others.texts;
        values += others.values;
        return *this;
    }
};

// Conditions that one index serves.
enum Group : std::size_t { TIME, FREQUENCY, RECEIVER, DECODER, STATION };

// A row each: what is said, and the value that a query gives for it; none where it says nothing.
struct Condition
{
    const char* text;
    QVariant (*value)(const ArchiveQuery&);
};

template <typename Value>
QVariant given(const std::optional<Value>& value)
{
    return value ? QVariant(*value) : QVariant();
}

QVariant given(const QString& text)
{
    return text.isEmpty() ? QVariant() : QVariant(text);
}

constexpr Condition TIME_CONDITIONS[] = {
    {"start_us >= ?", [](const ArchiveQuery& query) { return given(query.since_us); }},
    {"start_us < ?", [](const ArchiveQuery& query) { return given(query.until_us); }},
};
// Of blocks that may hold what fulfils these.
constexpr Condition BLOCK_CONDITIONS[] = {
    {"last_us >= ?", [](const ArchiveQuery& query) { return given(query.since_us); }},
    {"first_us < ?", [](const ArchiveQuery& query) { return given(query.until_us); }},
};
constexpr Condition FREQUENCY_CONDITIONS[] = {
    {"frequency_hz >= ?", [](const ArchiveQuery& query) { return given(query.lowest_Hz); }},
    {"frequency_hz <= ?", [](const ArchiveQuery& query) { return given(query.highest_Hz); }},
};
constexpr Condition RECEIVER_CONDITIONS[] = {
    {"receiver = ?", [](const ArchiveQuery& query) { return given(query.receiver); }},
};
constexpr Condition DECODER_CONDITIONS[] = {
    {"decoder = ?", [](const ArchiveQuery& query) { return given(query.decoder); }},
};
constexpr Condition STATION_CONDITIONS[] = {
    {"station = ?", [](const ArchiveQuery& query) { return given(query.station); }},
};
constexpr Condition ID_CONDITIONS[] = {
    {"id > ?",
     [](const ArchiveQuery& query) {
         return query.after > 0 ? QVariant(query.after) : QVariant();
     }},
    {"id < ?", [](const ArchiveQuery& query) { return given(query.before); }},
    {"id = ?", [](const ArchiveQuery& query) { return given(query.id); }},
    {"key = ?", [](const ArchiveQuery& query) { return given(query.key); }},
};

template <std::size_t COUNT>
Conditions conditionsIn(const ArchiveQuery& query, const Condition (&rows)[COUNT])
{
    Conditions conditions;
    for (const Condition& row : rows) {
        const QVariant value = row.value(query);
        if (!value.isValid())
            continue;
        conditions.texts += QLatin1String(row.text);
        conditions.values += value;
    }
    return conditions;
}

// In the order of Group.
std::vector<Conditions> groupsOf(const ArchiveQuery& query)
{
    return {conditionsIn(query, TIME_CONDITIONS), conditionsIn(query, FREQUENCY_CONDITIONS),
            conditionsIn(query, RECEIVER_CONDITIONS), conditionsIn(query, DECODER_CONDITIONS),
            conditionsIn(query, STATION_CONDITIONS)};
}

} // namespace

Archive::Archive(const QString& connection, const ArchiveDialect& dialect, const QString& place)
    : m_connection(connection)
    , m_dialect(dialect)
    , m_place(place)
{
}

Archive::~Archive()
{
    QSqlDatabase::database(m_connection, false).close();
    QSqlDatabase::removeDatabase(m_connection);
}

bool isArchiveOnServer(const QString& url)
{
    return url.startsWith(QLatin1String("postgresql:"), Qt::CaseInsensitive);
}

QString archiveUrlFault(const QString& url)
{
    const ArchiveDialect& dialect = archiveDialect(url);
    return dialect.urlFault ? dialect.urlFault(url) : QString();
}

QString archivePath(const QString& url)
{
    const QString scheme = QStringLiteral("sqlite:");
    return url.startsWith(scheme) ? url.mid(scheme.size()) : url;
}

QString archiveFileFault(const QString& path)
{
    const QFileInfo there(path);
    if (!there.exists())
        return {};
    if (!there.isFile())
        return there.isDir() ? QStringLiteral("is a folder") : QLatin1String(NO_ARCHIVE);
    QFile file(path);
    if (there.size() == 0 || !file.open(QIODevice::ReadOnly))
        return {};
    return file.peek(qstrlen(DATABASE_HEADER)) == DATABASE_HEADER ? QString()
                                                                  : QLatin1String(NO_ARCHIVE);
}

std::unique_ptr<Archive> Archive::open(const QString& url, QString& error)
{
    const QString fault = archiveUrlFault(url);
    if (!fault.isEmpty()) {
        error = QStringLiteral("the URL ") + fault;
        return nullptr;
    }
    const QString path = isArchiveOnServer(url) ? QString() : archivePath(url);
    const QString place = path.isEmpty() ? QString() : path + QStringLiteral(": ");
    if (const QString fileFault = archiveFileFault(path); !fileFault.isEmpty()) {
        error = place + fileFault;
        return nullptr;
    }
    static std::atomic<int> s_connections{0};
    const QString name = QStringLiteral("archive%1").arg(++s_connections);
    const ArchiveDialect& dialect = archiveDialect(url);
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QLatin1String(dialect.driver), name);
        dialect.setUp(database, url);
        database.open();
    }
    std::unique_ptr<Archive> archive(new Archive(name, dialect, place));
    const QSqlDatabase database = QSqlDatabase::database(name, false);
    if (!database.isOpen()) {
        error = place + reasonOf(database.lastError());
        return nullptr;
    }
    if (!archive->prepareSchema()) {
        error = archive->error();
        return nullptr;
    }
    return archive;
}

bool Archive::prepareSchema()
{
    // Of another program: nothing of it is touched.
    if (m_dialect.isForeign && number(QLatin1String(m_dialect.isForeign)) != 0) {
        if (m_error.isEmpty())
            fail(QLatin1String(NO_ARCHIVE));
        return false;
    }
    for (const char* const sql : m_dialect.onOpening) {
        if (!run(QLatin1String(sql)))
            return false;
    }
    // Who only looks for something waits for nobody who writes.
    const auto newest = static_cast<qint64>(m_dialect.schema.size());
    if (number(QLatin1String(m_dialect.version)) == newest)
        return true;
    // Two that open an empty one at once make it once.
    if (!run(QLatin1String(m_dialect.begin)))
        return false;
    const auto rollBack = [this] {
        const QString reason = m_error;
        run(QStringLiteral("ROLLBACK"));
        m_error = reason;
        return false;
    };
    if (m_dialect.beforeAdding && !run(QLatin1String(m_dialect.beforeAdding)))
        return rollBack();
    const std::optional<qint64> version = number(QLatin1String(m_dialect.version));
    if (!version)
        return rollBack();
    if (*version < 0 || *version > newest) {
        fail(QStringLiteral("holds an archive of version %1, not %2").arg(*version).arg(newest));
        return rollBack();
    }
    for (auto step = static_cast<std::size_t>(*version); step < m_dialect.schema.size(); ++step) {
        for (const char* const sql : m_dialect.schema[step]) {
            if (!run(QLatin1String(sql)))
                return rollBack();
        }
    }
    if (*version < newest && !noteTimes(-1))
        return rollBack();
    return run(QStringLiteral("COMMIT"));
}

bool Archive::run(QSqlQuery& query)
{
    // exec() would forget why a query could not be prepared.
    if (!query.lastError().isValid() && query.exec())
        return true;
    fail(reasonOf(query.lastError()));
    return false;
}

bool Archive::run(const QString& sql)
{
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    if (query.exec(sql))
        return true;
    fail(reasonOf(query.lastError()));
    return false;
}

std::optional<qint64> Archive::number(const QString& sql, const QVariantList& values)
{
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.prepare(sql);
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!run(query) || !query.next())
        return std::nullopt;
    return query.value(0).toLongLong();
}

// All that the work does, or nothing of it.
template <typename Work>
bool Archive::transact(Work work)
{
    QSqlDatabase database = QSqlDatabase::database(m_connection, false);
    if (!database.transaction()) {
        fail(reasonOf(database.lastError()));
        return false;
    }
    if ((m_dialect.beforeAdding && !run(QLatin1String(m_dialect.beforeAdding))) || !work()) {
        database.rollback();
        return false;
    }
    if (!database.commit()) {
        fail(reasonOf(database.lastError()));
        database.rollback();
        return false;
    }
    return true;
}

bool Archive::insert(const std::vector<ArchiveRecord>& records, qint64 after)
{
    QStringList names;
    QStringList places;
    for (const ArchiveColumn& column : archiveColumns()) {
        names += QLatin1String(column.name);
        places += QStringLiteral("?");
    }
    if (m_dialect.wordsColumn) {
        names += QLatin1String(m_dialect.wordsColumn);
        places += QLatin1String(m_dialect.wordsPlace);
    }
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.prepare(QLatin1String(m_dialect.insertInto) +
                  QStringLiteral("transmissions (%1) VALUES (%2)")
                      .arg(names.join(QLatin1String(", ")), places.join(QLatin1String(", "))) +
                  QLatin1String(m_dialect.insertBehind));
    for (const ArchiveRecord& record : records) {
        for (const ArchiveColumn& column : archiveColumns())
            query.addBindValue(column.get(record));
        if (m_dialect.wordsColumn)
            query.addBindValue(m_dialect.wordsValue(archiveWords(record)));
        if (!run(query))
            return false;
    }
    return noteTimes(after);
}

bool Archive::add(const std::vector<ArchiveRecord>& records)
{
    // Before the transaction, in which who has read something may not be let write.
    const std::optional<qint64> before = latest();
    return before && transact([&] { return insert(records, *before); });
}

bool Archive::addRecording(const QString& key, const QString& source,
                           const std::vector<ArchiveRecord>& records)
{
    const std::optional<qint64> before = latest();
    return before && transact([&] {
               QSqlQuery query(QSqlDatabase::database(m_connection, false));
               query.prepare(
                   QLatin1String(m_dialect.insertInto) +
                   QStringLiteral("recordings (key, source, transmissions) VALUES (?, ?, ?)") +
                   QLatin1String(m_dialect.insertBehind));
               query.addBindValue(key);
               query.addBindValue(storable(source));
               query.addBindValue(static_cast<int>(records.size()));
               return run(query) && (query.numRowsAffected() == 0 || insert(records, *before));
           });
}

std::optional<bool> Archive::hasRecording(const QString& key)
{
    const std::optional<qint64> rows =
        number(QStringLiteral("SELECT count(*) FROM recordings WHERE key = ?"), {key});
    return rows ? std::optional<bool>(*rows > 0) : std::nullopt;
}

// A block keeps the times of what has left it: they may be wider than those of what is in it.
bool Archive::noteTimes(qint64 after)
{
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.prepare(QStringLiteral("INSERT INTO blocks (block, first_us, last_us) "
                                 "SELECT id / %1, min(start_us), max(start_us) FROM transmissions "
                                 "WHERE id > ? GROUP BY id / %1 ON CONFLICT (block) DO UPDATE SET "
                                 "first_us = CASE WHEN excluded.first_us < blocks.first_us "
                                 "THEN excluded.first_us ELSE blocks.first_us END, "
                                 "last_us = CASE WHEN excluded.last_us > blocks.last_us "
                                 "THEN excluded.last_us ELSE blocks.last_us END")
                      .arg(BLOCK_IDS));
    query.addBindValue(after);
    return run(query);
}

// Whether a query gives more than so many rows. It is not run further than that.
std::optional<bool> Archive::givesMore(const QString& rows, const QVariantList& values, int most)
{
    const std::optional<qint64> count = number(
        QStringLiteral("SELECT count(*) FROM (%1 LIMIT %2) AS those").arg(rows).arg(most + 1),
        values);
    return count ? std::optional<bool>(*count > most) : std::nullopt;
}

// A database without statistics takes any index for a good one.
std::optional<Archive::Plan> Archive::planOf(const ArchiveQuery& query)
{
    Plan plan;
    plan.asked = wantedWords(query.words);
    if (query.id || !query.key.isEmpty() || query.after > 0)
        return plan;
    const std::vector<Conditions> groups = groupsOf(query);
    for (std::size_t index = 0; index < groups.size(); ++index) {
        const Conditions& group = groups[index];
        if (m_dialect.plansItself || group.texts.isEmpty())
            continue;
        const std::optional<bool> isWide =
            givesMore(QStringLiteral("SELECT 1 FROM transmissions WHERE ") + group.joined(),
                      group.values, plan.asked.empty() ? NARROW_ROWS : COMPARED_ROWS);
        if (!isWide)
            return std::nullopt;
        if (*isWide)
            continue;
        plan.group = index;
        plan.isNarrow = true;
        std::swap(plan.asked, plan.compared);
        return plan;
    }
    for (const WantedWord& one : std::exchange(plan.asked, {})) {
        const std::optional<bool> isCommon =
            one.isPrefix ? givesMore(QLatin1String(m_dialect.rowsOfBeginning),
                                     m_dialect.beginning(one), m_dialect.commonRows)
                         : std::optional<bool>(false);
        if (!isCommon)
            return std::nullopt;
        (*isCommon ? plan.compared : plan.asked).push_back(one);
    }
    // Their indices have the order of ids.
    for (const std::size_t index : {RECEIVER, DECODER}) {
        if (plan.asked.empty() && plan.group == NO_GROUP && !groups[index].texts.isEmpty())
            plan.group = index;
    }
    return plan;
}

// In the order of ids, all that was archived since would be passed by.
std::optional<Archive::Ids> Archive::idsOf(const ArchiveQuery& query)
{
    const Conditions blocks = conditionsIn(query, BLOCK_CONDITIONS);
    const QString of = QStringLiteral(" FROM blocks WHERE ") + blocks.joined();
    const auto first = number(QStringLiteral("SELECT coalesce(min(block), 0)") + of, blocks.values);
    const auto last = number(QStringLiteral("SELECT coalesce(max(block), -1)") + of, blocks.values);
    if (!first || !last)
        return std::nullopt;
    return Ids{*first * BLOCK_IDS, (*last + 1) * BLOCK_IDS};
}

std::optional<std::vector<ArchivedTransmission>> Archive::search(const ArchiveQuery& wanted)
{
    const std::optional<Plan> plan = planOf(wanted);
    if (!plan)
        return std::nullopt;
    const bool asksIndex = !plan->asked.empty();
    const QString id = QLatin1String(asksIndex ? m_dialect.idOfFound : "id");
    Conditions all = conditionsIn(wanted, ID_CONDITIONS);
    if (!plan->isNarrow && (wanted.since_us || wanted.until_us)) {
        const std::optional<Ids> ids = idsOf(wanted);
        if (!ids)
            return std::nullopt;
        all += {{id + QStringLiteral(" >= ?"), id + QStringLiteral(" < ?")},
                {ids->first, ids->behind}};
    }
    const std::vector<Conditions> groups = groupsOf(wanted);
    for (std::size_t index = 0; index < groups.size(); ++index) {
        Conditions group = groups[index];
        if (plan->isNarrow && plan->group == index)
            group.texts =
                QStringList{QStringLiteral("id IN (SELECT id FROM transmissions WHERE %1)")
                                .arg(group.joined())};
        else if (!m_dialect.plansItself && plan->group != index)
            group.hide();
        all += group;
    }
    QString sql = QStringLiteral("SELECT id, %1 FROM transmissions").arg(columnNames());
    if (asksIndex) {
        sql += QLatin1String(m_dialect.join);
        all.texts.prepend(QLatin1String(m_dialect.condition));
        all.values.prepend(m_dialect.match(plan->asked));
    }
    const bool comparesHere = !plan->compared.empty() && !m_dialect.compared;
    if (!plan->compared.empty() && !comparesHere) {
        all.texts += QLatin1String(m_dialect.compared);
        all.values += m_dialect.match(plan->compared);
    }
    if (!all.texts.isEmpty())
        sql += QStringLiteral(" WHERE ") + all.joined();
    sql += QStringLiteral(" ORDER BY %1 %2")
               .arg(id, QLatin1String(wanted.isOldestFirst ? "ASC" : "DESC"));
    if (!comparesHere)
        sql += QStringLiteral(" LIMIT %1").arg(wanted.limit);

    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.setForwardOnly(true);
    query.prepare(sql);
    for (const QVariant& value : qAsConst(all.values))
        query.addBindValue(value);
    if (!run(query))
        return std::nullopt;
    std::vector<ArchivedTransmission> found;
    while (found.size() < static_cast<std::size_t>(wanted.limit) && query.next()) {
        ArchivedTransmission one;
        one.id = query.value(0).toLongLong();
        int index = 1;
        for (const ArchiveColumn& column : archiveColumns())
            column.set(one.record, query.value(index++));
        if (!comparesHere || contains(one.record, plan->compared))
            found.push_back(one);
    }
    return found;
}

std::optional<qint64> Archive::count()
{
    return number(QStringLiteral("SELECT count(*) FROM transmissions"));
}

std::optional<qint64> Archive::latest()
{
    return number(QStringLiteral("SELECT coalesce(max(id), 0) FROM transmissions"));
}

std::optional<qint64> Archive::removeBefore(qint64 stop_us, const std::optional<QString>& station,
                                            int most)
{
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.prepare(QStringLiteral("DELETE FROM transmissions WHERE id IN (SELECT id FROM "
                                 "transmissions WHERE stop_us < ? %1 ORDER BY stop_us LIMIT ?)")
                      .arg(QLatin1String(station ? "AND station = ?" : "")));
    query.addBindValue(stop_us);
    if (station)
        query.addBindValue(storable(*station));
    query.addBindValue(most);
    if (!run(query))
        return std::nullopt;
    return query.numRowsAffected();
}

std::optional<bool> Archive::tidy(bool isFirst)
{
    if (!m_dialect.tidyFirst)
        return false;
    const QString changes = QLatin1String(m_dialect.changes);
    const std::optional<qint64> before = number(changes);
    if (!before || !run(QLatin1String(isFirst ? m_dialect.tidyFirst : m_dialect.tidyOn)))
        return std::nullopt;
    const std::optional<qint64> after = number(changes);
    if (!after)
        return std::nullopt;
    return *after - *before > 1; // the command itself counts as one
}

std::optional<qint64> Archive::size()
{
    return number(QLatin1String(m_dialect.size));
}

} // namespace morsehost
