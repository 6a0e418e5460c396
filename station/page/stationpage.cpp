// SPDX-License-Identifier: MIT
#include "station/page/stationpage.h"

#include "station/archive/archive.h"
#include "station/archive/querytext.h"
#include "station/archive/receptions.h"
#include "station/archive/wantedwords.h"
#include "station/decoders.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <arpa/inet.h>
#include <iterator>

// Resources of a static library have to be asked for, outside of any namespace.
static void loadSite()
{
    Q_INIT_RESOURCE(site);
}

namespace morsehost {

namespace {

constexpr int MOST_FOUND = 200;
constexpr int USUALLY_FOUND = 50;
constexpr int MOST_WORDS = 16;
constexpr const char* SEARCH_KEYS[] = {"words", "decoder",   "receiver", "station", "since",
                                       "until", "frequency", "limit",    "before"};
const char* const SEARCH = "search";
const char* const TRANSMISSION = "transmission";
constexpr qint64 MOST_FILE_BYTES = qint64{64} << 20;

struct SiteFile
{
    const char* path; ///< as it is asked for
    const char* name;
    const char* type;
};
const SiteFile SITE[] = {
    {"", "index.html", "text/html; charset=utf-8"},
    {"page.css", "page.css", "text/css; charset=utf-8"},
    {"page.js", "page.js", "text/javascript; charset=utf-8"},
    {"icon.svg", "icon.svg", "image/svg+xml"},
};

HttpAnswer plain(int status, const char* text)
{
    HttpAnswer answer;
    answer.status = status;
    answer.type = "text/plain; charset=utf-8";
    answer.body = QByteArray(text) + '\n';
    return answer;
}

HttpAnswer notFound()
{
    return plain(404, "There is no such page.");
}

HttpAnswer json(const QJsonObject& object)
{
    HttpAnswer answer;
    answer.type = "application/json";
    answer.body = QJsonDocument(object).toJson(QJsonDocument::Compact);
    return answer;
}

bool isAddress(int family, const QString& text)
{
    in6_addr address; // that of either family
    return inet_pton(family, text.toLatin1().constData(), &address) == 1;
}

struct HostName
{
    QString name;
    bool isAddress = false;
};

// Of "name", "name:80", "127.0.0.1:80" and "[::1]:80"; empty where it is none of these.
HostName hostName(const QString& host)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(?:\\[([0-9A-Fa-f:.]+)\\]|([^\\[\\]:@/]+))(?::\\d{1,5})?$"));
    const QRegularExpressionMatch match = pattern.match(host);
    const QString address = match.captured(1);
    if (!address.isEmpty())
        return {address, isAddress(AF_INET6, address)};
    const QString name = match.captured(2);
    return {name.toLower(), isAddress(AF_INET, name)};
}

// Readers of the page are not shown where the database is.
HttpAnswer archiveIsAway()
{
    HttpAnswer answer = plain(503, "The archive cannot be reached.");
    answer.retryAfter_s = 5;
    return answer;
}

} // namespace

bool PageSettings::operator==(const PageSettings& other) const
{
    return address == other.address && port == other.port && passwordHash == other.passwordHash &&
           certificate == other.certificate && key == other.key && hosts == other.hosts;
}

StationPage::StationPage(const PageSettings& settings, const Sources& sources)
    : m_settings(settings)
    , m_sources(sources)
{
    loadSite();
    if (!settings.passwordHash.isEmpty())
        m_gate = std::make_unique<PasswordGate>(settings.passwordHash);
}

bool StationPage::isForUs(const HttpRequest& request) const
{
    const QString host = QString::fromStdString(request.host);
    // Another site can make its own name stand for this machine, but no address.
    const HostName called = hostName(host);
    if (!called.isAddress && called.name != QLatin1String("localhost") &&
        !m_settings.hosts.contains(called.name, Qt::CaseInsensitive))
        return false;
    // Who follows a link from another site gets the page, and that asks for the rest.
    if (request.fetchSite == "cross-site" && request.target != "/")
        return false;
    const QString scheme =
        m_settings.certificate.isEmpty() ? QStringLiteral("http://") : QStringLiteral("https://");
    return request.origin.empty() ||
           QString::fromStdString(request.origin).compare(scheme + host, Qt::CaseInsensitive) == 0;
}

PasswordGate::Answer StationPage::admit(const HttpRequest& request)
{
    if (!m_gate)
        return PasswordGate::Answer::Right;
    const QByteArray words = QByteArray::fromStdString(request.authorization);
    const int blank = words.indexOf(' ');
    if (blank < 0 || words.left(blank).toLower() != "basic")
        return PasswordGate::Answer::Wrong;
    const QByteArray both = QByteArray::fromBase64(words.mid(blank + 1).trimmed());
    const int colon = both.indexOf(':');
    // There is one password, whatever name is typed beside it.
    return colon < 0 ? PasswordGate::Answer::Wrong : m_gate->check(both.mid(colon + 1));
}

bool StationPage::isSlow(const HttpRequest& request) const
{
    const std::string& target = request.target;
    const std::string first = target.substr(0, target.find_first_of("/?", 1));
    return first == std::string("/") + SEARCH || first == std::string("/") + TRANSMISSION;
}

HttpAnswer StationPage::answer(const HttpRequest& request)
{
    if (request.method != "GET" && request.method != "HEAD")
        return plain(405, "This page is only read.");
    if (!isForUs(request))
        return plain(421, "This page is not called by that name; its file can name it: hosts=");
    switch (admit(request)) {
    case PasswordGate::Answer::Right:
        break;
    case PasswordGate::Answer::Wrong: {
        HttpAnswer answer = plain(401, "This page wants a password.");
        answer.asksPassword = true;
        return answer;
    }
    case PasswordGate::Answer::Busy: {
        HttpAnswer answer = plain(503, "Another password is being checked.");
        answer.retryAfter_s = 1;
        return answer;
    }
    }
    const QByteArray target = QByteArray::fromStdString(request.target);
    if (!target.startsWith('/'))
        return notFound();
    const int mark = target.indexOf('?');
    const QString path = QString::fromLatin1(mark < 0 ? target : target.left(mark));
    QUrlQuery query;
    if (mark >= 0)
        query.setQuery(QString::fromLatin1(target.mid(mark + 1).replace('+', ' ')));
    return answerPath(path.mid(1).split(QLatin1Char('/')), query);
}

// Names are compared, never looked up in a folder.
HttpAnswer StationPage::answerPath(const QStringList& path, const QUrlQuery& query)
{
    if (path.size() == 1) {
        for (const SiteFile& file : SITE) {
            if (path[0] != QLatin1String(file.path))
                continue;
            QFile resource(QStringLiteral(":/site/") + QLatin1String(file.name));
            if (!resource.open(QIODevice::ReadOnly))
                return notFound();
            HttpAnswer answer;
            answer.type = file.type;
            answer.body = resource.readAll();
            return answer;
        }
        if (path[0] == QLatin1String("events")) {
            HttpAnswer answer;
            answer.type = "text/event-stream";
            answer.events = m_sources.live.subscribe();
            return answer;
        }
        if (path[0] == QLatin1String(SEARCH))
            return search(query);
        return notFound();
    }
    if (path[0] != QLatin1String(TRANSMISSION))
        return notFound();
    if (path.size() == 2)
        return transmission(path[1]);
    bool isNumber = false;
    const int index = path.value(3).toInt(&isNumber);
    if (path.size() == 4 && path[2] == QLatin1String("file") && isNumber)
        return file(path[1], index);
    return notFound();
}

HttpAnswer StationPage::search(const QUrlQuery& query) const
{
    const auto value = [&query](const char* name) {
        return query.queryItemValue(QLatin1String(name), QUrl::FullyDecoded).trimmed();
    };
    for (const auto& item : query.queryItems(QUrl::FullyDecoded)) {
        if (std::none_of(std::begin(SEARCH_KEYS), std::end(SEARCH_KEYS),
                         [&item](const char* key) { return item.first == QLatin1String(key); }))
            return plain(400, "A search has other keys.");
    }
    ArchiveQuery wanted;
    wanted.words = value("words").split(QLatin1Char(' '), Qt::SkipEmptyParts).mid(0, MOST_WORDS);
    for (const QString& word : qAsConst(wanted.words)) {
        if (wantedWords({word}).empty())
            return plain(400, "A word has a letter or a digit.");
    }
    wanted.decoder = decoderSpelled(value("decoder"));
    wanted.receiver = value("receiver");
    wanted.station = value("station");
    const auto readTime = [&value](const char* name, std::optional<qint64>& time_us) {
        time_us = archiveTimeOf(value(name));
        return time_us || value(name).isEmpty();
    };
    if (!readTime("since", wanted.since_us) || !readTime("until", wanted.until_us))
        return plain(400, "A time is a day or an ISO 8601 time, in UTC.");
    if (!value("frequency").isEmpty() && !readArchiveFrequency(value("frequency"), wanted))
        return plain(400, "A frequency is in kHz: 7025 or 7000-7040.");
    const auto readNumber = [&value](const char* name, qint64 otherwise) {
        bool isNumber = false;
        const qint64 number = value(name).toLongLong(&isNumber);
        return value(name).isEmpty() ? otherwise : isNumber ? number : 0;
    };
    const qint64 limit = readNumber("limit", USUALLY_FOUND);
    const qint64 before = readNumber("before", 1);
    if (limit < 1 || before < 1)
        return plain(400, "limit and before are whole numbers from 1 on.");
    wanted.limit = int(std::min<qint64>(limit, MOST_FOUND));
    if (!value("before").isEmpty())
        wanted.before = before;

    QString error;
    const auto archive = Archive::open(m_sources.archive, error);
    const auto found = archive ? archive->search(wanted) : std::nullopt;
    if (!found)
        return archiveIsAway();
    QJsonArray transmissions;
    for (const ArchivedReception& one : joinReceptions(*found)) {
        QJsonObject object = foundObject(one.transmission);
        if (one.copyOf)
            object.insert(QStringLiteral("copy_of"), QString::number(*one.copyOf));
        transmissions.append(object);
    }
    return json(
        {{QStringLiteral("found"), transmissions},
         {QStringLiteral("more"), int(found->size()) == wanted.limit},
         {QStringLiteral("last"), found->empty() ? QString() : QString::number(found->back().id)}});
}

// By its id, or by its key: what is shown live has no id yet.
static std::optional<std::vector<ArchivedTransmission>> findOne(const QString& url,
                                                                const QString& name)
{
    ArchiveQuery wanted;
    bool isNumber = false;
    const qint64 id = name.toLongLong(&isNumber);
    if (isNumber)
        wanted.id = id;
    else
        wanted.key = name;
    wanted.limit = 1;
    if (name.isEmpty())
        return std::vector<ArchivedTransmission>();
    QString error;
    const auto archive = Archive::open(url, error);
    return archive ? archive->search(wanted) : std::nullopt;
}

HttpAnswer StationPage::transmission(const QString& name) const
{
    const auto found = findOne(m_sources.archive, name);
    if (!found)
        return archiveIsAway();
    if (found->empty())
        return notFound();
    QJsonObject object = foundObject(found->front());
    object.insert(QStringLiteral("text"), found->front().record.transmission.text);
    return json(object);
}

// Empty for what is not given away, or is not there any more.
QString StationPage::fileToGive(const QString& path) const
{
    // Of another station, which shares the archive, a path may name anything here.
    const QFileInfo file(QFileInfo(path).canonicalFilePath());
    const QString folder = QFileInfo(m_sources.folder).canonicalFilePath();
    const bool isOurs = !folder.isEmpty() &&
                        file.filePath().startsWith(folder + QLatin1Char('/')) && file.isFile() &&
                        file.size() <= MOST_FILE_BYTES;
    return isOurs ? file.filePath() : QString();
}

// A file keeps its number when another one is gone.
QJsonObject StationPage::foundObject(const ArchivedTransmission& found) const
{
    QJsonObject object = shownObject(found.record);
    object.insert(QStringLiteral("id"), QString::number(found.id));
    QJsonArray files;
    for (const QString& path : found.record.transmission.files)
        files.append(fileToGive(path).isEmpty() ? QJsonValue() : QFileInfo(path).fileName());
    object.insert(QStringLiteral("files"), files);
    return object;
}

HttpAnswer StationPage::file(const QString& one, int index) const
{
    const auto found = findOne(m_sources.archive, one);
    if (!found)
        return archiveIsAway();
    if (found->empty())
        return notFound();
    const QStringList& files = found->front().record.transmission.files;
    if (index < 0 || index >= files.size())
        return notFound();
    const QString path = fileToGive(files[index]);
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return notFound();
    HttpAnswer answer;
    const QString name = QFileInfo(path).fileName();
    // A picture is shown within the page; opened by itself, it is a file like the others.
    answer.type =
        name.endsWith(QLatin1String(".svg")) ? "image/svg+xml" : "application/octet-stream";
    answer.body = file.readAll();
    for (const QChar c : name) {
        const bool isPlain = c.unicode() < 128 && (c.isLetterOrNumber() || c == QLatin1Char('.') ||
                                                   c == QLatin1Char('-'));
        answer.fileName += isPlain ? c.toLatin1() : '_';
    }
    return answer;
}

} // namespace morsehost
