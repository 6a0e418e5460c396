// SPDX-License-Identifier: MIT
#include "station/archive/archive.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>
#include <QVariant>

#include <algorithm>
#include <atomic>

namespace morsehost {

namespace {

constexpr int SCHEMA_VERSION = 3;

// So many rows are read and compared faster than an index of words is asked.
constexpr int NARROW_ROWS = 20000;

// A field of a record and its column, in the order of the table.
struct Column
{
    const char* name;
    QVariant (*get)(const ArchiveRecord&);
    void (*set)(ArchiveRecord&, const QVariant&);
};

QVariant variantOf(const std::optional<double>& number)
{
    return number ? QVariant(*number) : QVariant(QVariant::Double);
}

std::optional<double> numberOf(const QVariant& value)
{
    return value.isNull() ? std::nullopt : std::optional<double>(value.toDouble());
}

QString jsonOf(const QStringList& list)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonArray::fromStringList(list)).toJson(QJsonDocument::Compact));
}

QStringList listOf(const QVariant& json)
{
    QStringList list;
    const QJsonArray values = QJsonDocument::fromJson(json.toString().toUtf8()).array();
    for (const QJsonValue& value : values)
        list += value.toString();
    return list;
}

// A database that speaks SQL keeps no NUL in a text, and compares nothing with what is null.
QString storable(QString text)
{
    return text.isNull() ? QStringLiteral("")
                         : text.replace(QChar(QChar::Null), QChar(QChar::ReplacementCharacter));
}

// clang-format off
#define TEXT_COLUMN(name, field) \
    Column{name, [](const ArchiveRecord& r) { return QVariant(storable(r.field)); }, \
           [](ArchiveRecord& r, const QVariant& v) { r.field = v.toString(); }}
#define NUMBER_COLUMN(name, field) \
    Column{name, [](const ArchiveRecord& r) { return variantOf(r.field); }, \
           [](ArchiveRecord& r, const QVariant& v) { r.field = numberOf(v); }}
#define TIME_COLUMN(name, field) \
    Column{name, [](const ArchiveRecord& r) { return QVariant(r.field); }, \
           [](ArchiveRecord& r, const QVariant& v) { r.field = v.toLongLong(); }}
#define LIST_COLUMN(name, field) \
    Column{name, [](const ArchiveRecord& r) { return QVariant(storable(jsonOf(r.field))); }, \
           [](ArchiveRecord& r, const QVariant& v) { r.field = listOf(v); }}

const Column COLUMNS[] = {
    TEXT_COLUMN("key", key),
    TEXT_COLUMN("station", station),
    TEXT_COLUMN("receiver", transmission.receiver),
    TEXT_COLUMN("source", transmission.source),
    TEXT_COLUMN("decoder", transmission.decoder),
    Column{"number", [](const ArchiveRecord& r) { return QVariant(r.transmission.number); },
           [](ArchiveRecord& r, const QVariant& v) { r.transmission.number = v.toInt(); }},
    NUMBER_COLUMN("tone_hz", transmission.tone_Hz),
    NUMBER_COLUMN("frequency_hz", transmission.frequency_Hz),
    NUMBER_COLUMN("speed_wpm", transmission.speed_wpm),
    NUMBER_COLUMN("baud_rate", transmission.baudRate),
    NUMBER_COLUMN("shift_hz", transmission.shift_Hz),
    Column{"reversed",
           [](const ArchiveRecord& r) {
               return r.transmission.isReversed ? QVariant(int(*r.transmission.isReversed))
                                                : QVariant(QVariant::Int);
           },
           [](ArchiveRecord& r, const QVariant& v) {
               if (!v.isNull())
                   r.transmission.isReversed = v.toInt() != 0;
           }},
    NUMBER_COLUMN("snr_db", transmission.snr_dB),
    TIME_COLUMN("start_us", transmission.start_us),
    TIME_COLUMN("stop_us", transmission.stop_us),
    TEXT_COLUMN("text", transmission.text),
    TEXT_COLUMN("raw_text", transmission.rawText),
    TEXT_COLUMN("map", transmission.map),
    LIST_COLUMN("unknown_codes", transmission.unknownCodes),
    LIST_COLUMN("files", transmission.files),
};
// clang-format on
#undef TEXT_COLUMN
#undef NUMBER_COLUMN
#undef TIME_COLUMN
#undef LIST_COLUMN

QString columnNames()
{
    QStringList names;
    for (const Column& column : COLUMNS)
        names += QLatin1String(column.name);
    return names.join(QLatin1String(", "));
}

// A word of a query and whether it may go on.
struct Wanted
{
    QString word;
    bool isPrefix;
};

std::vector<Wanted> wantedWords(const QStringList& words)
{
    std::vector<Wanted> wanted;
    for (const QString& word : words) {
        const QStringList parts = archiveWords(word);
        for (const QString& part : parts)
            wanted.push_back({part, false});
        if (!parts.isEmpty() && word.endsWith(QLatin1Char('*')))
            wanted.back().isPrefix = true;
    }
    return wanted;
}

bool contains(const ArchiveRecord& record, const std::vector<Wanted>& wanted)
{
    const QStringList words =
        archiveWords(record.transmission.text + QLatin1Char(' ') + record.transmission.rawText);
    const QSet<QString> whole(words.begin(), words.end());
    return std::all_of(wanted.begin(), wanted.end(), [&](const Wanted& one) {
        return whole.contains(one.word) ||
               (one.isPrefix && std::any_of(words.begin(), words.end(), [&](const QString& word) {
                    return word.startsWith(one.word);
                }));
    });
}

} // namespace

/// The differences between two kinds of database.
struct ArchiveDialect
{
    const char* driver;
    std::vector<const char*> onOpening;
    const char* version; ///< a query
    /// What makes an archive of version 1 of an empty database, of version 2 of that, and so on.
    std::vector<std::vector<const char*>> schema;
    const char* beforeAdding; ///< within its transaction; null for nothing
    const char* insertInto;   ///< before the table
    const char* insertBehind; ///< the values, for rows whose key is there already to be left alone
    const char* join;         ///< of the index of words
    const char* condition;    ///< that the words are there
    const char* size;         ///< a query: bytes in use
    QString (*match)(const std::vector<Wanted>&);
};

namespace {

QString sqliteMatch(const std::vector<Wanted>& wanted)
{
    QStringList terms;
    for (const Wanted& one : wanted) {
        terms += QLatin1Char('"') + one.word + QLatin1Char('"') +
                 (one.isPrefix ? QStringLiteral(" *") : QString());
    }
    return terms.join(QLatin1String(" AND "));
}

QString postgresqlMatch(const std::vector<Wanted>& wanted)
{
    QStringList terms;
    for (const Wanted& one : wanted) {
        terms += QLatin1Char('\'') + one.word + QLatin1Char('\'') +
                 (one.isPrefix ? QStringLiteral(":*") : QString());
    }
    return terms.join(QLatin1String(" & "));
}

const ArchiveDialect SQLITE = {
    "QSQLITE",
    {"PRAGMA journal_mode = WAL", "PRAGMA synchronous = FULL"},
    "PRAGMA user_version",
    {{"CREATE TABLE transmissions (id INTEGER PRIMARY KEY AUTOINCREMENT, key TEXT NOT NULL UNIQUE, "
      "station TEXT, receiver TEXT, source TEXT, decoder TEXT, number INTEGER, tone_hz REAL, "
      "frequency_hz REAL, speed_wpm REAL, baud_rate REAL, shift_hz REAL, reversed INTEGER, "
      "snr_db REAL, start_us INTEGER NOT NULL, stop_us INTEGER NOT NULL, text TEXT, raw_text TEXT, "
      "map TEXT, unknown_codes TEXT, files TEXT)",
      "CREATE INDEX by_start ON transmissions (start_us)",
      "CREATE INDEX by_frequency ON transmissions (frequency_hz)",
      "CREATE INDEX by_stop ON transmissions (stop_us)",
      // Words alone are looked for, so places within a text need not be kept.
      "CREATE VIRTUAL TABLE words USING fts5 (text, raw_text, content = 'transmissions', "
      "content_rowid = 'id', detail = none, columnsize = 0, "
      "tokenize = \"unicode61 remove_diacritics 0 categories 'L* N* M*'\")",
      "CREATE TRIGGER words_added AFTER INSERT ON transmissions BEGIN "
      "INSERT INTO words (rowid, text, raw_text) VALUES (new.id, new.text, new.raw_text); END",
      "CREATE TRIGGER words_removed AFTER DELETE ON transmissions BEGIN "
      "INSERT INTO words (words, rowid, text, raw_text) "
      "VALUES ('delete', old.id, old.text, old.raw_text); END",
      "PRAGMA user_version = 1"},
     {"CREATE TABLE recordings (key TEXT PRIMARY KEY, source TEXT, transmissions INTEGER)",
      "PRAGMA user_version = 2"},
     {"UPDATE transmissions SET station = '' WHERE station IS NULL", "DROP INDEX by_stop",
      "CREATE INDEX by_station ON transmissions (station, stop_us)", "PRAGMA user_version = 3"}},
    nullptr,
    "INSERT OR IGNORE INTO ",
    "",
    " JOIN words ON words.rowid = transmissions.id",
    "words MATCH ?",
    "SELECT (page_count - freelist_count) * page_size "
    "FROM pragma_page_count, pragma_freelist_count, pragma_page_size",
    sqliteMatch,
};

const ArchiveDialect POSTGRESQL = {
    "QPSQL",
    {},
    "SELECT coalesce((SELECT obj_description(to_regclass('transmissions')))::int, 0)",
    {{"CREATE TABLE transmissions (id BIGSERIAL PRIMARY KEY, key TEXT NOT NULL UNIQUE, "
      "station TEXT, receiver TEXT, source TEXT, decoder TEXT, number INTEGER, "
      "tone_hz DOUBLE PRECISION, frequency_hz DOUBLE PRECISION, speed_wpm DOUBLE PRECISION, "
      "baud_rate DOUBLE PRECISION, shift_hz DOUBLE PRECISION, reversed INTEGER, "
      "snr_db DOUBLE PRECISION, start_us BIGINT NOT NULL, stop_us BIGINT NOT NULL, text TEXT, "
      "raw_text TEXT, map TEXT, unknown_codes TEXT, files TEXT, words TSVECTOR)",
      "CREATE INDEX by_start ON transmissions (start_us)",
      "CREATE INDEX by_frequency ON transmissions (frequency_hz)",
      "CREATE INDEX by_stop ON transmissions (stop_us)",
      "CREATE INDEX by_words ON transmissions USING gin (words)",
      "COMMENT ON TABLE transmissions IS '1'"},
     {"CREATE TABLE recordings (key TEXT PRIMARY KEY, source TEXT, transmissions INTEGER)",
      "COMMENT ON TABLE transmissions IS '2'"},
     {"UPDATE transmissions SET station = '' WHERE station IS NULL", "DROP INDEX by_stop",
      "CREATE INDEX by_station ON transmissions (station, stop_us)",
      "COMMENT ON TABLE transmissions IS '3'"}},
    // Ids become visible in ascending order, whichever station writes.
    "SELECT pg_advisory_xact_lock(7025000)",
    "INSERT INTO ",
    " ON CONFLICT (key) DO NOTHING",
    "",
    "words @@ CAST(? AS tsquery)",
    "SELECT 0",
    postgresqlMatch,
};

QString postgresqlArray(const QStringList& words)
{
    // Letters and digits alone need no escape.
    return QLatin1Char('{') + words.join(QLatin1Char(',')) + QLatin1Char('}');
}

bool isPostgresql(const ArchiveDialect& dialect)
{
    return &dialect == &POSTGRESQL;
}

} // namespace

Archive::Archive(const QString& connection, const ArchiveDialect& dialect)
    : m_connection(connection)
    , m_dialect(dialect)
{
}

Archive::~Archive()
{
    QSqlDatabase::database(m_connection, false).close();
    QSqlDatabase::removeDatabase(m_connection);
}

std::unique_ptr<Archive> Archive::open(const QString& url, QString& error)
{
    static std::atomic<int> s_connections{0};
    const QString name = QStringLiteral("archive%1").arg(++s_connections);
    const QUrl parsed(url);
    const bool isServer = parsed.scheme() == QLatin1String("postgresql");
    const ArchiveDialect& dialect = isServer ? POSTGRESQL : SQLITE;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QLatin1String(dialect.driver), name);
        if (isServer) {
            database.setHostName(parsed.host());
            database.setPort(parsed.port(5432));
            database.setDatabaseName(parsed.path().mid(1));
            database.setUserName(parsed.userName(QUrl::FullyDecoded));
            database.setPassword(parsed.password(QUrl::FullyDecoded));
            database.setConnectOptions(QStringLiteral("connect_timeout=10"));
        } else {
            const QString scheme = QStringLiteral("sqlite:");
            database.setDatabaseName(url.startsWith(scheme) ? url.mid(scheme.size()) : url);
            database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
        }
        database.open();
    }
    std::unique_ptr<Archive> archive(new Archive(name, dialect));
    const QSqlDatabase database = QSqlDatabase::database(name, false);
    if (!database.isOpen()) {
        error = database.lastError().text();
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
    for (const char* const sql : m_dialect.onOpening) {
        if (!run(QLatin1String(sql)))
            return false;
    }
    // Two that open an empty one at once make it once.
    QSqlDatabase database = QSqlDatabase::database(m_connection, false);
    if (!run(isPostgresql(m_dialect) ? QStringLiteral("BEGIN") : QStringLiteral("BEGIN IMMEDIATE")))
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
    if (*version < 0 || *version > SCHEMA_VERSION) {
        m_error = QStringLiteral("holds an archive of version %1, not %2")
                      .arg(*version)
                      .arg(SCHEMA_VERSION);
        return rollBack();
    }
    for (auto step = static_cast<std::size_t>(*version); step < m_dialect.schema.size(); ++step) {
        for (const char* const sql : m_dialect.schema[step]) {
            if (!run(QLatin1String(sql)))
                return rollBack();
        }
    }
    return run(QStringLiteral("COMMIT"));
}

bool Archive::run(QSqlQuery& query)
{
    if (query.exec())
        return true;
    m_error = query.lastError().text();
    return false;
}

bool Archive::run(const QString& sql)
{
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    if (query.exec(sql))
        return true;
    m_error = query.lastError().text();
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
        m_error = database.lastError().text();
        return false;
    }
    if ((m_dialect.beforeAdding && !run(QLatin1String(m_dialect.beforeAdding))) || !work()) {
        database.rollback();
        return false;
    }
    if (!database.commit()) {
        m_error = database.lastError().text();
        database.rollback();
        return false;
    }
    return true;
}

bool Archive::insert(const std::vector<ArchiveRecord>& records)
{
    QStringList marks;
    for (std::size_t i = 0; i < std::size(COLUMNS); ++i)
        marks += QStringLiteral("?");
    const bool hasWords = isPostgresql(m_dialect);
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.prepare(QLatin1String(m_dialect.insertInto) + QStringLiteral("transmissions (") +
                  columnNames() + QLatin1String(hasWords ? ", words" : "") +
                  QStringLiteral(") VALUES (") + marks.join(QLatin1Char(',')) +
                  QLatin1String(hasWords ? ", array_to_tsvector(?::text[]))" : ")") +
                  QLatin1String(m_dialect.insertBehind));
    for (const ArchiveRecord& record : records) {
        for (const Column& column : COLUMNS)
            query.addBindValue(column.get(record));
        if (hasWords) {
            const Transmission& transmission = record.transmission;
            query.addBindValue(postgresqlArray(
                archiveWords(transmission.text + QLatin1Char(' ') + transmission.rawText)));
        }
        if (!run(query))
            return false;
    }
    return true;
}

bool Archive::add(const std::vector<ArchiveRecord>& records)
{
    return transact([&] { return insert(records); });
}

bool Archive::addRecording(const QString& key, const QString& source,
                           const std::vector<ArchiveRecord>& records)
{
    return transact([&] {
        QSqlQuery query(QSqlDatabase::database(m_connection, false));
        query.prepare(QLatin1String(m_dialect.insertInto) +
                      QStringLiteral("recordings (key, source, transmissions) VALUES (?, ?, ?)") +
                      QLatin1String(m_dialect.insertBehind));
        query.addBindValue(key);
        query.addBindValue(storable(source));
        query.addBindValue(static_cast<int>(records.size()));
        return run(query) && (query.numRowsAffected() == 0 || insert(records));
    });
}

std::optional<bool> Archive::hasRecording(const QString& key)
{
    const std::optional<qint64> rows =
        number(QStringLiteral("SELECT count(*) FROM recordings WHERE key = ?"), {key});
    return rows ? std::optional<bool>(*rows > 0) : std::nullopt;
}

// Whether few enough rows fulfil the conditions for all of them to be read.
bool Archive::isNarrow(const QString& conditions, const QVariantList& values)
{
    const std::optional<qint64> rows = number(
        QStringLiteral("SELECT count(*) FROM (SELECT 1 FROM transmissions WHERE %1 LIMIT %2) "
                       "AS some")
            .arg(conditions)
            .arg(NARROW_ROWS + 1),
        values);
    return rows && *rows <= NARROW_ROWS;
}

std::optional<std::vector<ArchivedTransmission>> Archive::search(const ArchiveQuery& wantedQuery)
{
    struct Conditions
    {
        QStringList texts;
        QVariantList values;
        void add(const char* text, const QVariant& value)
        {
            texts += QLatin1String(text);
            values += value;
        }
        QString joined() const { return texts.join(QLatin1String(" AND ")); }
    };
    Conditions time;
    if (wantedQuery.since_us)
        time.add("start_us >= ?", *wantedQuery.since_us);
    if (wantedQuery.until_us)
        time.add("start_us < ?", *wantedQuery.until_us);
    Conditions frequency;
    if (wantedQuery.lowest_Hz)
        frequency.add("frequency_hz >= ?", *wantedQuery.lowest_Hz);
    if (wantedQuery.highest_Hz)
        frequency.add("frequency_hz <= ?", *wantedQuery.highest_Hz);
    Conditions all;
    all.texts = time.texts + frequency.texts;
    all.values = time.values + frequency.values;
    if (!wantedQuery.decoder.isEmpty())
        all.add("decoder = ?", wantedQuery.decoder);
    if (!wantedQuery.receiver.isEmpty())
        all.add("receiver = ?", wantedQuery.receiver);
    if (!wantedQuery.station.isEmpty())
        all.add("station = ?", wantedQuery.station);
    if (wantedQuery.after > 0)
        all.add("id > ?", wantedQuery.after);
    if (wantedQuery.before)
        all.add("id < ?", *wantedQuery.before);
    if (wantedQuery.id)
        all.add("id = ?", *wantedQuery.id);
    if (!wantedQuery.key.isEmpty())
        all.add("key = ?", wantedQuery.key);

    const std::vector<Wanted> wanted = wantedWords(wantedQuery.words);
    // An index of words gives its rows one after the other; where time or frequency leave few,
    // those are read instead and compared here.
    bool comparesHere = false;
    if (!wanted.empty() && !isPostgresql(m_dialect)) {
        for (const Conditions& one : {time, frequency})
            comparesHere =
                comparesHere || (!one.texts.isEmpty() && isNarrow(one.joined(), one.values));
    }
    const bool asksIndex = !wanted.empty() && !comparesHere;
    QString sql = QStringLiteral("SELECT id, ");
    QStringList names;
    for (const Column& column : COLUMNS)
        names += QStringLiteral("transmissions.") + QLatin1String(column.name);
    sql += names.join(QLatin1String(", ")) + QStringLiteral(" FROM transmissions");
    if (asksIndex) {
        sql += QLatin1String(m_dialect.join);
        all.texts.prepend(QLatin1String(m_dialect.condition));
        all.values.prepend(m_dialect.match(wanted));
    }
    if (!all.texts.isEmpty())
        sql += QStringLiteral(" WHERE ") + all.joined();
    const bool isFtsOrder = asksIndex && !isPostgresql(m_dialect);
    sql += QStringLiteral(" ORDER BY %1 %2")
               .arg(QLatin1String(isFtsOrder ? "words.rowid" : "id"),
                    QLatin1String(wantedQuery.isOldestFirst ? "ASC" : "DESC"));
    if (!comparesHere)
        sql += QStringLiteral(" LIMIT %1").arg(wantedQuery.limit);

    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.setForwardOnly(true);
    query.prepare(sql);
    for (const QVariant& value : qAsConst(all.values))
        query.addBindValue(value);
    if (!run(query))
        return std::nullopt;
    std::vector<ArchivedTransmission> found;
    while (query.next() && found.size() < static_cast<std::size_t>(wantedQuery.limit)) {
        ArchivedTransmission one;
        one.id = query.value(0).toLongLong();
        int index = 1;
        for (const Column& column : COLUMNS)
            column.set(one.record, query.value(index++));
        if (!comparesHere || contains(one.record, wanted))
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

std::optional<qint64> Archive::size()
{
    return number(QLatin1String(m_dialect.size));
}

} // namespace morsehost
