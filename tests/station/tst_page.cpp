// SPDX-License-Identifier: MIT
// The page of a station, asked by real requests: good ones, bad ones, and readers that never read.
#include "station/page/stationpage.h"

#include "station/archive/archive.h"
#include "station/page/archivewatch.h"
#include "support/certificate.h"
#include "support/program.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSemaphore>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>

using namespace morsehost;

namespace {

const QString SCRIPT = "<script>alert(1)</script> & \"DL0XYZ\"";

struct Reply
{
    int status = 0;
    QByteArray head;
    QByteArray body;
};

Reply replyOf(const QByteArray& bytes)
{
    Reply reply;
    const int end = bytes.indexOf("\r\n\r\n");
    reply.head = bytes.left(end);
    reply.body = end < 0 ? QByteArray() : bytes.mid(end + 4);
    reply.status = reply.head.split(' ').value(1).toInt();
    return reply;
}

QByteArray readAll(QTcpSocket& socket)
{
    QByteArray bytes;
    while (socket.waitForReadyRead(testsupport::HANGS_ms))
        bytes += socket.readAll();
    return bytes + socket.readAll();
}

// Until what came holds the text.
bool readUntil(QTcpSocket& socket, const QByteArray& text, QByteArray& bytes)
{
    while (!bytes.contains(text)) {
        if (!socket.waitForReadyRead(testsupport::HANGS_ms))
            return false;
        bytes += socket.readAll();
    }
    return true;
}

QByteArray get(const QByteArray& target, const QByteArray& more = "Host: localhost\r\n")
{
    return "GET " + target + " HTTP/1.1\r\nConnection: close\r\n" + more + "\r\n";
}

QByteArray basic(const QByteArray& password)
{
    return "Host: localhost\r\nAuthorization: Basic " + ("me:" + password).toBase64() + "\r\n";
}

ArchiveRecord recordOf(const QString& text, const QStringList& files = {})
{
    ArchiveRecord record;
    record.station = "north";
    record.transmission.receiver = "hf";
    record.transmission.decoder = "Morse";
    record.transmission.start_us = 1700000000000000;
    record.transmission.stop_us = 1700000005000000;
    record.transmission.frequency_Hz = 7025000;
    record.transmission.text = text;
    record.transmission.files = files;
    record.key = keyOfRecorded(record.station, record.transmission);
    return record;
}

// Answers a path that begins with /slow only when it is let.
class WaitingHandler : public HttpHandler
{
public:
    HttpAnswer answer(const HttpRequest& request) override
    {
        if (isSlow(request)) {
            ++begun;
            slow.acquire();
        }
        return {};
    }
    bool isSlow(const HttpRequest& request) const override
    {
        return request.target.rfind("/slow", 0) == 0;
    }

    std::atomic<int> begun{0};
    QSemaphore slow;
};

} // namespace

class tst_Page : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    struct Site
    {
        LiveFeed live;
        StationPage page;
        HttpServer server;

        Site(const PageSettings& settings, const HttpSettings& http, const QString& folder)
            : live("north")
            , page(settings, {live, folder + "/archive.db", folder + "/kept"})
            , server(http, page)
        {
        }
    };

    static HttpSettings local()
    {
        HttpSettings http;
        http.address = "127.0.0.1";
        return http;
    }

    std::unique_ptr<Site> site(const PageSettings& settings = {},
                               const HttpSettings& http = local()) const
    {
        auto made = std::make_unique<Site>(settings, http, m_folder.path());
        if (!made->server.error().isEmpty())
            qFatal("%s", qPrintable(made->server.error()));
        return made;
    }

    static std::unique_ptr<QTcpSocket> connectTo(const Site& site)
    {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost("127.0.0.1", static_cast<quint16>(site.server.port()));
        if (!socket->waitForConnected(testsupport::HANGS_ms))
            qFatal("no connection");
        return socket;
    }

    static Reply ask(const Site& site, const QByteArray& request)
    {
        const auto socket = connectTo(site);
        socket->write(request);
        return replyOf(readAll(*socket));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir(m_folder.path()).mkpath("kept/files"));
        for (const char* const name :
             {"/kept/files/heard here.txt", "/kept/files/a_picture.svg", "/secret.txt"}) {
            QFile file(m_folder.path() + name);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("content");
        }
        QString error;
        const auto archive = Archive::open(m_folder.filePath("archive.db"), error);
        QVERIFY2(archive, qPrintable(error));
        QVERIFY(archive->add(
            {recordOf(SCRIPT), recordOf("CQ CQ DE G3ABC"),
             recordOf("WITH FILES",
                      {m_folder.filePath("kept/files/heard here.txt"),
                       m_folder.filePath("secret.txt"), m_folder.filePath("kept/../secret.txt"),
                       m_folder.filePath("kept/files/a_picture.svg")})}));
    }

    void eachFileOfTheSiteIsServedWithAStrictPolicy_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("type");
        QTest::newRow("the page") << QByteArray("/") << QByteArray("text/html; charset=utf-8");
        QTest::newRow("its style")
            << QByteArray("/page.css") << QByteArray("text/css; charset=utf-8");
        QTest::newRow("its script")
            << QByteArray("/page.js") << QByteArray("text/javascript; charset=utf-8");
        QTest::newRow("its icon") << QByteArray("/icon.svg") << QByteArray("image/svg+xml");
    }

    void eachFileOfTheSiteIsServedWithAStrictPolicy()
    {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, type);
        const auto served = site();
        const Reply reply = ask(*served, get(path));
        QCOMPARE(reply.status, 200);
        QVERIFY(reply.head.contains("Content-Type: " + type));
        QVERIFY(reply.head.contains("Content-Security-Policy: default-src 'none'"));
        QVERIFY(reply.head.contains("X-Content-Type-Options: nosniff"));
        QVERIFY(!reply.body.isEmpty());
        const Reply head = ask(*served, "HEAD" + get(path).mid(3));
        QCOMPARE(head.status, 200);
        QVERIFY(head.head.contains("Content-Length: " + QByteArray::number(reply.body.size())));
        QVERIFY(head.body.isEmpty());
    }

    void thePageLoadsNothingFromElsewhereAndHoldsNoScript()
    {
        const auto served = site();
        const QByteArray page = ask(*served, get("/")).body;
        QVERIFY(!page.contains("http://") && !page.contains("https://") && !page.contains("//"));
        QCOMPARE(page.count("<script"), 1);
        QVERIFY(page.contains("<script src=\"/page.js\" defer></script>"));
        const QByteArray script = ask(*served, get("/page.js")).body;
        for (const char* const way : {"innerHTML", "outerHTML", "insertAdjacentHTML",
                                      "document.write", "eval(", "new Function"})
            QVERIFY2(!script.contains(way), way);
    }

    void onlyItsOwnNamesAreAnswered_data()
    {
        QTest::addColumn<QByteArray>("fields");
        QTest::addColumn<int>("status");
        const auto row = [](const char* name, const char* fields, int status) {
            QTest::newRow(name) << QByteArray(fields) << status;
        };
        row("localhost", "Host: localhost:8073\r\n", 200);
        row("an address", "Host: 127.0.0.1\r\n", 200);
        row("a new address", "Host: [::1]:8073\r\n", 200);
        row("a name of the file", "Host: Radio.Example:8073\r\n", 200);
        row("another name", "Host: evil.example\r\n", 421);
        row("a name of digits and a letter", "Host: 127.0.0.1.evil.example\r\n", 421);
        row("a name that is empty", "Host: \r\n", 421);
        row("no name", "", 400);
        row("two names", "Host: localhost\r\nHost: evil.example\r\n", 400);
        row("its own origin", "Host: localhost\r\nOrigin: http://localhost\r\n", 200);
        row("another origin", "Host: localhost\r\nOrigin: http://evil.example\r\n", 421);
        row("another scheme", "Host: localhost\r\nOrigin: https://localhost\r\n", 421);
        row("an address that goes on", "Host: [::1].evil.example\r\n", 421);
        row("an address before a name", "Host: [::1]@evil.example\r\n", 421);
        row("an address without an end", "Host: [::1\r\n", 421);
        row("dots", "Host: ...\r\n", 421);
        row("a port that is none", "Host: localhost:evil\r\n", 421);
        row("a name in brackets", "Host: [dead.beef]\r\n", 421);
        row("two origins",
            "Host: localhost\r\nOrigin: http://localhost\r\nOrigin: http://evil.example\r\n", 400);
        row("an origin that hides", "Host: localhost\r\nOrigin: null\r\n", 421);
    }

    void onlyItsOwnNamesAreAnswered()
    {
        QFETCH(QByteArray, fields);
        QFETCH(int, status);
        PageSettings settings;
        settings.hosts = QStringList{"radio.example"};
        const auto served = site(settings);
        QCOMPARE(ask(*served, get("/", fields)).status, status);
    }

    void otherSitesGetThePageAlone()
    {
        const auto served = site();
        const QByteArray link = "Host: localhost\r\nSec-Fetch-Site: cross-site\r\n";
        QCOMPARE(ask(*served, get("/", link)).status, 200);
        for (const char* const target : {"/search", "/events", "/page.js", "/transmission/1"})
            QCOMPARE(ask(*served, get(target, link)).status, 421);
        const QByteArray own = "Host: localhost\r\nSec-Fetch-Site: same-origin\r\n";
        QCOMPARE(ask(*served, get("/search", own)).status, 200);
        QCOMPARE(ask(*served, get("/search", own + "Sec-Fetch-Site: none\r\n")).status, 400);
    }

    void badRequestsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<int>("status");
        const auto row = [](const char* name, const QByteArray& request, int status) {
            QTest::newRow(name) << request << status;
        };
        const QByteArray host = "Host: localhost\r\n";
        row("another method", "POST / HTTP/1.1\r\n" + host + "Connection: close\r\n\r\n", 405);
        row("a method that nobody knows",
            "FETCH / HTTP/1.1\r\n" + host + "Connection: close\r\n\r\n", 405);
        row("no HTTP", "\x16\x03\x01 rubbish\r\n\r\n", 400);
        row("a header without an end", "GET / HTTP/1.1\r\n" + host + "X: " + QByteArray(20000, 'x'),
            431);
        row("a thousand fields",
            "GET / HTTP/1.1\r\n" + host + QByteArray("X: y\r\n").repeated(5000) + "\r\n", 431);
        row("two lengths of a body",
            "GET / HTTP/1.1\r\n" + host + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n",
            400);
        row("a body of pieces without end",
            "GET / HTTP/1.1\r\n" + host + "Transfer-Encoding: chunked\r\n\r\nFFFFFFFFFFFFFFFF\r\n",
            413);
        row("a long path", "GET /" + QByteArray(20000, 'x'), 431);
        row("a long body", "GET / HTTP/1.1\r\n" + host + "Content-Length: 1000000000\r\n\r\n", 413);
        row("a length that is none", "GET / HTTP/1.1\r\n" + host + "Content-Length: x\r\n\r\n",
            400);
        row("up", get("/../secret.txt"), 404);
        row("up, encoded", get("/%2e%2e/secret.txt"), 404);
        row("up from a file", get("/transmission/3/file/../../../secret.txt"), 404);
        row("a way out, encoded whole", get("/..%2f..%2fetc/passwd"), 404);
        row("a name that ends", get("/page.js%00.html"), 404);
        row("a path of the system", get("//etc/passwd"), 404);
        row("an address", get("http://localhost/"), 404);
        row("no transmission", get("/transmission/999"), 404);
        row("a transmission that is no number", get("/transmission/1'--"), 404);
        row("a number that is too large", get("/transmission/99999999999999999999"), 404);
        row("no file", get("/transmission/3/file/4"), 404);
        row("no name", get("/transmission/"), 404);
        row("a negative file", get("/transmission/3/file/-1"), 404);
        row("a file elsewhere", get("/transmission/3/file/1"), 404);
        row("a file elsewhere, by way of the folder", get("/transmission/3/file/2"), 404);
        row("words without a letter", get("/search?words=%22%27%3B--"), 400);
        row("a time that is none", get("/search?since=yesterday"), 400);
        row("a frequency that is none", get("/search?frequency=high"), 400);
        row("a limit that is no number", get("/search?limit=abc"), 400);
        row("a limit of nothing", get("/search?limit=0"), 400);
        row("a place that is no number", get("/search?before=zz"), 400);
        row("a place before all", get("/search?before=-1"), 400);
        row("a key that is none", get("/search?colour=red"), 400);
    }

    void badRequestsAreRefused()
    {
        QFETCH(QByteArray, request);
        QFETCH(int, status);
        const auto served = site();
        QCOMPARE(ask(*served, request).status, status);
        QCOMPARE(ask(*served, get("/")).status, 200);
    }

    void whoSendsTooSlowlyIsDropped_data()
    {
        QTest::addColumn<QByteArray>("begin");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("half a header") << QByteArray("GET / HTTP/1.1\r\nHost: loc");
        QTest::newRow("a body that does not come")
            << QByteArray("GET / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 5\r\n\r\nab");
    }

    void whoSendsTooSlowlyIsDropped()
    {
        QFETCH(QByteArray, begin);
        HttpSettings http = local();
        http.requestTime = std::chrono::milliseconds(300);
        const auto served = site({}, http);
        const auto socket = connectTo(*served);
        socket->write(begin);
        QCOMPARE(readAll(*socket), QByteArray());
        QCOMPARE(socket->state(), QAbstractSocket::UnconnectedState);
        QTRY_COMPARE_WITH_TIMEOUT(served->server.connections(), 0, testsupport::HANGS_ms);
    }

    void aConnectionServesOneRequestAfterTheOther()
    {
        const auto served = site();
        const auto socket = connectTo(*served);
        const QByteArray request = "GET /icon.svg HTTP/1.1\r\nHost: localhost\r\n\r\n";
        socket->write(request + request);
        QByteArray bytes;
        while (bytes.count("</svg>") < 2 && socket->waitForReadyRead(testsupport::HANGS_ms))
            bytes += socket->readAll();
        QCOMPARE(bytes.count("HTTP/1.1 200 OK"), 2);
    }

    void nobodyWaitsBehindWhoAsksTheArchive()
    {
        WaitingHandler handler;
        const HttpServer server(local(), handler);
        const auto request = [&server](const QByteArray& target) {
            auto socket = std::make_unique<QTcpSocket>();
            socket->connectToHost("127.0.0.1", static_cast<quint16>(server.port()));
            if (!socket->waitForConnected(testsupport::HANGS_ms))
                qFatal("no connection");
            socket->write(get(target));
            socket->flush();
            return socket;
        };
        std::vector<std::unique_ptr<QTcpSocket>> slow;
        for (int i = 0; i < 33; ++i)
            slow.push_back(request("/slow"));
        QTRY_COMPARE_WITH_TIMEOUT(handler.begun.load(), 2, testsupport::HANGS_ms);
        // One is too many.
        const auto isAnswered = [](const auto& socket) { return socket->bytesAvailable() > 0; };
        QTRY_VERIFY_WITH_TIMEOUT(std::any_of(slow.begin(), slow.end(), isAnswered),
                                 testsupport::HANGS_ms);
        QCOMPARE(replyOf(readAll(*request("/"))).status, 200);
        handler.slow.release(32);
        std::map<int, int> answers; // by their status
        for (const auto& socket : slow)
            ++answers[replyOf(readAll(*socket)).status];
        QCOMPARE(answers, (std::map<int, int>{{200, 32}, {503, 1}}));
    }

    void onlyWhatTheArchiveIsAskedForIsSlow()
    {
        const auto served = site();
        const auto isSlow = [&served](const char* target) {
            HttpRequest request;
            request.target = target;
            return served->page.isSlow(request);
        };
        for (const char* const target : {"/search", "/search?words=CQ", "/transmission/1",
                                         "/transmission/1/file/0", "/transmission"})
            QVERIFY2(isSlow(target), target);
        for (const char* const target : {"/", "/events", "/page.js", "/searching", "//search", ""})
            QVERIFY2(!isSlow(target), target);
    }

    void moreConnectionsThanAreAllowedAreClosed()
    {
        HttpSettings http = local();
        http.mostConnections = 2;
        const auto served = site({}, http);
        const auto first = connectTo(*served);
        const auto second = connectTo(*served);
        QTRY_COMPARE_WITH_TIMEOUT(served->server.connections(), 2, testsupport::HANGS_ms);
        const auto third = connectTo(*served);
        QCOMPARE(readAll(*third), QByteArray());
        first->disconnectFromHost();
        QTRY_COMPARE_WITH_TIMEOUT(served->server.connections(), 1, testsupport::HANGS_ms);
        QCOMPARE(ask(*served, get("/")).status, 200);
    }

    void thePasswordIsAskedFor()
    {
        PageSettings settings;
        settings.passwordHash = hashOfPassword("räuberleiter: 7");
        QVERIFY(isPasswordHash(settings.passwordHash));
        const auto served = site(settings);
        for (const char* const path : {"/", "/page.js", "/events", "/search", "/transmission/1"}) {
            const Reply reply = ask(*served, get(path));
            QCOMPARE(reply.status, 401);
            QVERIFY(reply.head.contains("WWW-Authenticate: Basic"));
        }
        QCOMPARE(ask(*served, get("/", basic("wrong"))).status, 401);
        QCOMPARE(ask(*served, get("/", basic(""))).status, 401);
        QCOMPARE(ask(*served, get("/", basic(QByteArray(2000, 'x')))).status, 401);
        QCOMPARE(ask(*served, get("/", "Host: localhost\r\nAuthorization: Basic ???\r\n")).status,
                 401);
        QCOMPARE(ask(*served, get("/", "Host: localhost\r\nAuthorization: Bearer x\r\n")).status,
                 401);
        QCOMPARE(ask(*served, get("/", basic("räuberleiter: 7"))).status, 200);
        QCOMPARE(ask(*served, get("/", basic("räuberleiter: 7"))).status, 200);
        QCOMPARE(ask(*served, get("/", basic("wrong"))).status, 401);
    }

    void hashesDifferAndOthersAreNone()
    {
        QVERIFY(hashOfPassword("a") != hashOfPassword("a"));
        QCOMPARE(hashOfPassword(QByteArray(600, 'x')), QByteArray());
        QVERIFY(!isPasswordHash("secret"));
        QVERIFY(!isPasswordHash(""));
        QVERIFY(!isPasswordHash("$nothing$of$this"));
    }

    void whatWasKeyedIsDataNeverMarkup()
    {
        const auto served = site();
        const Reply reply = ask(*served, get("/search?words=DL0*"));
        QCOMPARE(reply.status, 200);
        QVERIFY(reply.head.contains("Content-Type: application/json"));
        const QJsonArray found =
            QJsonDocument::fromJson(reply.body).object().value("found").toArray();
        QCOMPARE(found.size(), 1);
        QCOMPARE(found[0].toObject().value("text").toString(), SCRIPT);
    }

    void theArchiveIsSearched_data()
    {
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<int>("found");
        QTest::newRow("all") << QByteArray("") << 3;
        QTest::newRow("a word") << QByteArray("words=g3abc") << 1;
        QTest::newRow("two words") << QByteArray("words=CQ+g3abc") << 1;
        QTest::newRow("two words, encoded") << QByteArray("words=CQ%20g3abc") << 1;
        QTest::newRow("a frequency") << QByteArray("frequency=7000-7040") << 3;
        QTest::newRow("another frequency") << QByteArray("frequency=14000") << 0;
        QTest::newRow("another time") << QByteArray("since=2026-01-01") << 0;
        QTest::newRow("another station") << QByteArray("station=south") << 0;
        QTest::newRow("few") << QByteArray("limit=2") << 2;
        QTest::newRow("earlier ones") << QByteArray("before=2") << 1;
        QTest::newRow("a decoder, however typed") << QByteArray("decoder=morse") << 3;
    }

    void theArchiveIsSearched()
    {
        QFETCH(QByteArray, query);
        QFETCH(int, found);
        const auto served = site();
        const Reply reply = ask(*served, get("/search?" + query));
        QCOMPARE(reply.status, 200);
        QCOMPARE(QJsonDocument::fromJson(reply.body).object().value("found").toArray().size(),
                 found);
    }

    void aTransmissionAndItsFilesAreShown()
    {
        const auto served = site();
        const Reply one = ask(*served, get("/transmission/3"));
        QCOMPARE(one.status, 200);
        const QJsonObject object = QJsonDocument::fromJson(one.body).object();
        QCOMPARE(object.value("text").toString(), QString("WITH FILES"));
        const QJsonArray files = object.value("files").toArray();
        QCOMPARE(files.at(0).toString(), QString("heard here.txt"));
        QVERIFY(files.at(1).isNull() && files.at(2).isNull()); // which are not given away
        QCOMPARE(files.at(3).toString(), QString("a_picture.svg"));
        QVERIFY(!one.body.contains(m_folder.path().toUtf8()));
        const QByteArray byKey = "/transmission/" + object.value("key").toString().toUtf8();
        QCOMPARE(ask(*served, get(byKey)).body, one.body);
        QCOMPARE(ask(*served, get(byKey + "/file/0")).body, QByteArray("content"));
        const Reply file = ask(*served, get("/transmission/3/file/0"));
        QCOMPARE(file.status, 200);
        QCOMPARE(file.body, QByteArray("content"));
        QVERIFY(file.head.contains("filename=\"heard_here.txt\""));
        QVERIFY(file.head.contains("Content-Type: application/octet-stream"));
        const Reply picture = ask(*served, get("/transmission/3/file/3"));
        QCOMPARE(picture.body, QByteArray("content"));
        QVERIFY(picture.head.contains("Content-Type: image/svg+xml"));
        // Opened by itself it is a file, in which nothing runs.
        QVERIFY(picture.head.contains("Content-Disposition: attachment"));
    }

    void aFileThatWasRemovedIsNotNamed()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("kept.txt");
        QString error;
        const auto archive = Archive::open(folder.filePath("archive.db"), error);
        QVERIFY(archive && archive->add({recordOf("GONE", {path})}));
        LiveFeed live("north");
        StationPage page({}, {live, folder.filePath("archive.db"), folder.path()});
        HttpRequest request;
        request.method = "GET";
        request.host = "localhost";
        request.target = "/search";
        const auto files = [&] {
            const QJsonArray found =
                QJsonDocument::fromJson(page.answer(request).body).object()["found"].toArray();
            return found.at(0).toObject().value("files").toArray();
        };
        QCOMPARE(files(), QJsonArray({QJsonValue()}));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(files(), QJsonArray({"kept.txt"}));
    }

    void aLargeFileComesWhole()
    {
        const QByteArray content(3000001, 'x');
        QFile file(m_folder.filePath("kept/files/large.raw"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), qint64(content.size()));
        file.close();
        const QTemporaryDir folder;
        QString error;
        const auto archive = Archive::open(folder.filePath("archive.db"), error);
        QVERIFY(archive && archive->add({recordOf("LARGE", {file.fileName()})}));
        LiveFeed live("north");
        StationPage page({}, {live, folder.filePath("archive.db"), m_folder.filePath("kept")});
        const HttpServer server(local(), page);
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", static_cast<quint16>(server.port()));
        QVERIFY(socket.waitForConnected(testsupport::HANGS_ms));
        socket.write(get("/transmission/1/file/0"));
        const Reply reply = replyOf(readAll(socket));
        QCOMPARE(reply.status, 200);
        QVERIFY(reply.body == content);
    }

    void whatOtherStationsArchiveIsShown()
    {
        const QTemporaryDir folder;
        const QString url = folder.filePath("archive.db");
        const auto from = [](const char* station, const char* text) {
            ArchiveRecord record = recordOf(text);
            record.station = station;
            record.key = QByteArray(station) + text;
            return record;
        };
        QString error;
        const auto archive = Archive::open(url, error);
        QVERIFY(archive && archive->add({from("south", "BEFORE")}));
        std::mutex mutex;
        QStringList texts;
        const ArchiveWatch watch({url, "north", std::chrono::milliseconds(1)},
                                 [&](const ArchiveRecord& record) {
                                     const std::lock_guard<std::mutex> lock(mutex);
                                     texts += record.transmission.text;
                                 });
        const auto seen = [&] {
            const std::lock_guard<std::mutex> lock(mutex);
            return texts;
        };
        // When it looks first is not known; so news are added until it has seen some.
        for (int i = 0; seen().isEmpty() && i < 10000; ++i)
            QVERIFY(archive->add({from("south", qPrintable(QString("FIRST %1").arg(i)))}));
        QVERIFY(archive->add({from("north", "OWN"), from("south", "LAST"), from("east", "END")}));
        QTRY_VERIFY_WITH_TIMEOUT(seen().contains("END"), testsupport::HANGS_ms);
        QCOMPARE(seen().mid(seen().size() - 2), QStringList({"LAST", "END"}));
        QCOMPARE(seen().filter("OWN"), QStringList());
        QCOMPARE(seen().filter("BEFORE"), QStringList());
    }

    void aSingleSignalIsThereFromItsFirstLetterOn()
    {
        LiveFeed live("north");
        live.receivers({{"hf", "Morse", "running", "", 0, 7025000.0}});
        const auto hear = [&live](const char* text, const char* at) {
            live.heard("hf", {{"event", "character"}, {"text", text}, {"at", at}});
        };
        hear("E", "2026-05-12T10:15:01.000Z");
        std::string state = live.subscribe()->take();
        QVERIFY(state.find("\"frequency_Hz\":7025000") != std::string::npos);
        QVERIFY(state.find("\"text\":\"E\"") != std::string::npos);
        live.heard("hf", {{"event", "transmission"}, {"number", 1}, {"speed_wpm", 33.0}});
        QVERIFY(live.subscribe()->take().find("\"speed_wpm\":33") != std::string::npos);
        // The next one is another one.
        hear("T", "2026-05-12T10:15:05.000Z");
        state = live.subscribe()->take();
        QVERIFY(state.find("\"speed_wpm\"") == std::string::npos);
        QVERIFY(state.find("\"since\":\"2026-05-12T10:15:05.000Z\"") != std::string::npos);
        live.heard("hf", {{"event", "transmission"}, {"number", 2}});
        for (int quarters = 0; quarters < 4 * 29; ++quarters)
            live.flush();
        QVERIFY(live.subscribe()->take().find("\"since\"") != std::string::npos);
        for (int quarters = 0; quarters < 4 * 2; ++quarters)
            live.flush();
        QVERIFY(live.subscribe()->take().find("\"since\"") == std::string::npos);
    }

    void anArchiveThatIsAwayIsSaid()
    {
        LiveFeed live("north");
        StationPage page({}, {live, "/dev/null/archive.db", m_folder.path()});
        HttpRequest request;
        request.method = "GET";
        request.host = "localhost";
        for (const char* const target : {"/search", "/transmission/1", "/transmission/1/file/0"}) {
            request.target = target;
            const HttpAnswer answer = page.answer(request);
            QCOMPARE(answer.status, 503);
            QVERIFY(!answer.body.contains("null"));
        }
    }

    void whatGoesOnComesLive()
    {
        const auto served = site();
        served->live.receivers({{"hf", "Morse", "running", "", 0}});
        served->live.transmission(recordOf("BEFORE"));
        const auto socket = connectTo(*served);
        socket->write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
        QByteArray bytes;
        QVERIFY(readUntil(*socket, "\"station\":\"north\"", bytes));
        QVERIFY(bytes.contains("Content-Type: text/event-stream"));
        QVERIFY(bytes.contains("event: state\ndata: "));
        QVERIFY(bytes.contains("\"name\":\"hf\""));
        QVERIFY(bytes.contains("BEFORE"));
        bytes.clear();
        for (const char c : QByteArray("CQ"))
            served->live.heard("hf", {{"event", "character"}, {"text", QString(QChar(c))}});
        served->live.heard("hf", {{"event", "word"}});
        served->live.flush();
        QVERIFY(readUntil(*socket, "\"text\":\"CQ \"", bytes));
        QCOMPARE(bytes.count("event: signals"), 1);
        served->live.transmission(recordOf(SCRIPT));
        QVERIFY(readUntil(*socket, "\"start\":", bytes));
        QVERIFY(bytes.contains("event: transmission\n"));
        served->live.receivers({{"hf", "Morse", "down", "no tuner", 0}});
        QVERIFY(readUntil(*socket, "no tuner", bytes));
        served->live.receivers({});
        QVERIFY(readUntil(*socket, "event: removed", bytes));
    }

    void signalsOfABandComeAndGo()
    {
        LiveFeed live("north");
        live.receivers({{"band", "band", "running", "", 0}});
        const QJsonObject found = {{"event", "signal"},
                                   {"state", "found"},
                                   {"number", 7},
                                   {"frequency_Hz", 7025000.0},
                                   {"snr_dB", 12.0}};
        live.heard("band", found);
        const auto hear = [&live](const QString& text, const QString& at) {
            live.heard("band", {{"event", "text"}, {"number", 7}, {"text", text}, {"at", at}});
        };
        hear("E", "2026-05-12T10:15:01.000Z");
        hear("E", "2026-05-12T10:15:02.000Z");
        const std::string state = live.subscribe()->take();
        QVERIFY(state.find("\"frequency_Hz\":7025000") != std::string::npos);
        QVERIFY(state.find("\"since\":\"2026-05-12T10:15:01.000Z\"") != std::string::npos);
        // Its next transmission.
        live.heard("band", {{"event", "transmission"}, {"number", 7}});
        hear(" ", "2026-05-12T10:15:03.000Z");
        hear("E", "2026-05-12T10:15:20.000Z");
        QVERIFY(live.subscribe()->take().find("\"since\":\"2026-05-12T10:15:20.000Z\"") !=
                std::string::npos);
        const auto reader = live.subscribe();
        reader->take();
        live.heard("band", {{"event", "signal"}, {"state", "lost"}, {"number", 7}});
        live.flush();
        QVERIFY(reader->take().find("\"gone\":[7]") != std::string::npos);
        QVERIFY(live.subscribe()->take().find("7025000") == std::string::npos);
    }

    // Another decoder begins its numbers again.
    void aReceiverThatIsDownHearsNobody()
    {
        LiveFeed live("north");
        live.receivers({{"band", "band", "running", "", 0}});
        live.heard("band", {{"event", "text"}, {"number", 7}, {"text", "E"}});
        const auto reader = live.subscribe();
        QVERIFY(reader->take().find("\"number\":7") != std::string::npos);
        live.receivers({{"band", "band", "down", "the decoder ended", 0}});
        live.flush();
        QVERIFY(reader->take().find("\"gone\":[7]") != std::string::npos);
        QVERIFY(live.subscribe()->take().find("\"number\":7") == std::string::npos);
    }

    void aReaderThatNeverReadsIsDroppedAndOthersMissNothing()
    {
        const auto served = site();
        const QByteArray request = "GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n";
        const auto idle = connectTo(*served);
        idle->setReadBufferSize(1);
        idle->write(request);
        QVERIFY(idle->waitForBytesWritten(testsupport::HANGS_ms));
        const auto busy = connectTo(*served);
        busy->write(request);
        QByteArray bytes;
        QVERIFY(readUntil(*busy, "event: state", bytes));
        QTRY_COMPARE_WITH_TIMEOUT(served->server.connections(), 2, testsupport::HANGS_ms);
        const QString filling(4000, 'x');
        int sent = 0;
        qint64 taken = 0;
        while (served->server.connections() == 2) {
            const QString text = QString::number(++sent) + filling;
            served->live.transmission(recordOf(text));
            bytes.clear();
            QVERIFY(readUntil(*busy, "\"text\":\"" + QByteArray::number(sent) + "x", bytes));
            taken += bytes.size();
            QVERIFY2(taken < 100000000, "a reader that never reads is still there");
        }
        QVERIFY(sent > 1);
    }

    void aStreamIsBounded()
    {
        EventStream stream(10);
        QVERIFY(stream.push("12345"));
        QVERIFY(stream.push("67890"));
        QCOMPARE(stream.take(), std::string("1234567890"));
        QVERIFY(stream.push("12345"));
        QVERIFY(!stream.push("678901"));
        QVERIFY(stream.isClosed());
        QCOMPARE(stream.take(), std::string());
        QVERIFY(!stream.push("1"));
    }

    void aServerEndsWhileReadersLook()
    {
        auto served = site();
        const auto socket = connectTo(*served);
        socket->write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
        QByteArray bytes;
        QVERIFY(readUntil(*socket, "event: state", bytes));
        served.reset();
        readAll(*socket);
        QCOMPARE(socket->state(), QAbstractSocket::UnconnectedState);
    }

    void anAddressThatIsTakenIsReported()
    {
        const auto served = site();
        HttpSettings http = local();
        http.port = served->server.port();
        const HttpServer second(http, served->page);
        QVERIFY(!second.error().isEmpty());
        QCOMPARE(ask(*served, get("/")).status, 200);
    }

    void aCertificateGivesTls()
    {
        const QString certificate = m_folder.filePath("certificate.pem");
        const QString key = m_folder.filePath("key.pem");
        QVERIFY(testsupport::makeCertificate(certificate, key));
        HttpSettings http = local();
        http.certificate = certificate;
        http.key = key;
        PageSettings settings;
        settings.certificate = certificate;
        const auto served = site(settings, http);
        QSslSocket socket;
        socket.setPeerVerifyMode(QSslSocket::VerifyNone);
        socket.connectToHostEncrypted("127.0.0.1", static_cast<quint16>(served->server.port()));
        QVERIFY2(socket.waitForEncrypted(testsupport::HANGS_ms), qPrintable(socket.errorString()));
        socket.write(get("/", "Host: localhost\r\nOrigin: https://localhost\r\n"));
        QCOMPARE(replyOf(readAll(socket)).status, 200);
        // A client that speaks no TLS gets nothing.
        QCOMPARE(ask(*served, get("/")).status, 0);

        http.key = m_folder.filePath("none.pem");
        const HttpServer without(http, served->page);
        QVERIFY(without.error().startsWith(http.key));
    }
};

QTEST_GUILESS_MAIN(tst_Page)
#include "tst_page.moc"
