// SPDX-License-Identifier: MIT
// HTTP and HTTPS for a handful of pages that are read only: bounded in connections, sizes, times
// and in what waits for a reader.
#pragma once

#include "station/page/eventstream.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <memory>
#include <string>

namespace morsehost {

struct HttpSettings
{
    QString address;     ///< of this machine, as digits
    int port = 0;        ///< 0 for any that is free
    QString certificate; ///< a PEM file with its chain; empty for HTTP without TLS
    QString key;         ///< PEM file
    int mostConnections = 512;
    std::chrono::milliseconds requestTime{10000}; ///< for a whole request to arrive
    std::chrono::milliseconds readerTime{20000};  ///< for a reader to take what it is sent
    std::chrono::milliseconds pulse{15000};       ///< between signs of life in live events
};

struct HttpRequest
{
    std::string method;
    std::string target; ///< path and query as they came
    std::string host;
    std::string origin;
    std::string fetchSite; ///< Sec-Fetch-Site
    std::string authorization;
};

struct HttpAnswer
{
    int status = 200;
    QByteArray type; ///< of the body
    QByteArray body;
    QByteArray fileName; ///< ASCII; not empty: to be kept as a file of that name
    bool asksPassword = false;
    int retryAfter_s = 0;                ///< 0: not mentioned
    std::shared_ptr<EventStream> events; ///< live, in place of a body
};

class HttpHandler
{
public:
    virtual ~HttpHandler();

    /// From several threads at once. Requests that HTTP itself does not allow do not come here.
    virtual HttpAnswer answer(const HttpRequest& request) = 0;
    /// Whether an answer may take long, so that the others do not wait behind it. Answers at once.
    virtual bool isSlow(const HttpRequest& request) const = 0;
};

/// Why these PEM files cannot be used, a certificate with its chain and its key; empty when they
/// can.
QString certificateFault(const QString& certificate, const QString& key);

/// Why this PEM file cannot say whom to trust; empty when it can.
QString authorityFault(const QString& file);

/// Serves from threads of its own until it is destroyed.
class HttpServer
{
public:
    /// The handler outlives it.
    HttpServer(const HttpSettings& settings, HttpHandler& handler);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// Why it does not serve; empty when it does.
    const QString& error() const;
    int port() const;
    int connections() const;

private:
    class Private;
    std::unique_ptr<Private> m_d;
};

} // namespace morsehost
