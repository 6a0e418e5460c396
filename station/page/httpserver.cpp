// SPDX-License-Identifier: MIT
#include "station/page/httpserver.h"

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>

#include <algorithm>
#include <atomic>
#include <optional>
#include <sstream>
#include <thread>
#include <type_traits>

namespace morsehost {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using tcp = asio::ip::tcp;
using Error = boost::system::error_code;

constexpr std::uint32_t MOST_HEADER_BYTES = 8192;
constexpr std::uint64_t MOST_BODY_BYTES = 1024; // nothing here reads one
constexpr int MOST_WAITING_REQUESTS = 256;
constexpr int MOST_WAITING_SLOW_REQUESTS = 32;
constexpr std::size_t WORKERS = 2; // of each kind of requests
// What the system takes for a reader that takes nothing.
constexpr int SEND_BUFFER_BYTES = 128 * 1024;
// That a reader has to take within the time it is given.
constexpr std::size_t PIECE_BYTES = std::size_t{64} * 1024;
constexpr std::chrono::milliseconds ACCEPT_PAUSE{100};

// Nothing of another site is loaded, nothing runs that did not come as a file of this one.
const char* const CONTENT_POLICY =
    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; "
    "base-uri 'none'; form-action 'self'; frame-ancestors 'none'";

struct Fixed
{
    const char* name;
    const char* value;
};
const Fixed FIXED_FIELDS[] = {
    {"Content-Security-Policy", CONTENT_POLICY},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
};

std::string stringOf(const QByteArray& bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

// The body goes the way of everything else that is sent, as bytes: with templates that send headers
// and bodies in pieces, this file takes twice as long to compile.
std::string headerOf(const HttpAnswer& answer, bool isKept)
{
    http::response<http::empty_body> response;
    response.result(static_cast<unsigned>(answer.status));
    for (const Fixed& field : FIXED_FIELDS)
        response.set(field.name, field.value);
    if (!answer.type.isEmpty())
        response.set(http::field::content_type, stringOf(answer.type));
    if (!answer.fileName.isEmpty())
        response.set(http::field::content_disposition,
                     "attachment; filename=\"" + stringOf(answer.fileName) + '"');
    if (answer.asksPassword)
        response.set(http::field::www_authenticate, "Basic realm=\"station\", charset=\"UTF-8\"");
    if (answer.retryAfter_s > 0)
        response.set(http::field::retry_after, std::to_string(answer.retryAfter_s));
    if (answer.status == 405)
        response.set(http::field::allow, "GET, HEAD");
    if (!answer.events) // whose length is not known
        response.content_length(static_cast<std::uint64_t>(answer.body.size()));
    response.keep_alive(isKept);
    std::ostringstream text;
    text << response.base();
    return text.str();
}

// Threads that answer, and what waits for them.
struct Queue
{
    const int mostWaiting;
    std::atomic<int> waiting{0};
    std::optional<asio::thread_pool> workers{WORKERS};

    explicit Queue(int most)
        : mostWaiting(most)
    {
    }
};

// What all connections share.
struct Shared
{
    HttpSettings settings;
    HttpHandler& handler;
    Queue quick{MOST_WAITING_REQUESTS};
    Queue slow{MOST_WAITING_SLOW_REQUESTS};
    std::atomic<int> connections{0};

    Shared(HttpSettings its, HttpHandler& itsHandler)
        : settings(std::move(its))
        , handler(itsHandler)
    {
    }
};

template <typename Stream>
constexpr bool IS_TLS = !std::is_same_v<Stream, beast::tcp_stream>;

// One connection. Lives as long as something waits for it.
template <typename Stream>
class Session : public std::enable_shared_from_this<Session<Stream>>
{
public:
    template <typename... Context>
    Session(Shared& shared, tcp::socket socket, Context&... context)
        : m_shared(shared)
        , m_stream(std::move(socket), context...)
        , m_pulse(m_stream.get_executor())
    {
        ++m_shared.connections;
    }

    ~Session()
    {
        if (m_events) {
            m_events->onChange({});
            m_events->close();
        }
        --m_shared.connections;
    }

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void start()
    {
        if constexpr (IS_TLS<Stream>) {
            lowest().expires_after(m_shared.settings.requestTime);
            m_stream.async_handshake(asio::ssl::stream_base::server,
                                     [self = this->shared_from_this()](Error error) {
                                         if (!error)
                                             self->read();
                                     });
        } else {
            read();
        }
    }

private:
    beast::tcp_stream& lowest() { return beast::get_lowest_layer(m_stream); }

    // The time counts for the request as a whole, however slowly it drips in.
    void read()
    {
        m_parser.emplace();
        m_parser->header_limit(MOST_HEADER_BYTES);
        m_parser->body_limit(MOST_BODY_BYTES);
        lowest().expires_after(m_shared.settings.requestTime);
        http::async_read(
            m_stream, m_buffer, *m_parser,
            [self = this->shared_from_this()](Error error, std::size_t) { self->wasRead(error); });
    }

    void wasRead(const Error& error)
    {
        lowest().expires_never();
        if (error == http::error::header_limit)
            return refuse(431);
        if (error == http::error::body_limit)
            return refuse(413);
        if (error == http::error::end_of_stream)
            return end();
        if (error.category() == http::make_error_code(http::error::bad_method).category())
            return refuse(400);
        if (error)
            return;
        const auto& message = m_parser->get();
        m_isHead = message.method() == http::verb::head;
        m_isKept = message.keep_alive();
        const auto field = [&message](const auto& name) {
            return message.count(name) == 1 ? std::string(message[name]) : std::string();
        };
        // With two of them, somebody before this may have looked at the other one.
        if (message.count(http::field::host) != 1 || message.count(http::field::origin) > 1 ||
            message.count("Sec-Fetch-Site") > 1)
            return refuse(400);
        const HttpRequest request = {std::string(message.method_string()),
                                     std::string(message.target()),
                                     field(http::field::host),
                                     field(http::field::origin),
                                     field("Sec-Fetch-Site"),
                                     field(http::field::authorization)};
        Queue& queue = m_shared.handler.isSlow(request) ? m_shared.slow : m_shared.quick;
        if (queue.waiting >= queue.mostWaiting)
            return refuse(503);
        ++queue.waiting;
        asio::post(*queue.workers, [self = this->shared_from_this(), &queue, request] {
            HttpAnswer answer = self->m_shared.handler.answer(request);
            --queue.waiting;
            asio::post(self->m_stream.get_executor(),
                       [self, answer = std::move(answer)] { self->send(answer); });
        });
    }

    void refuse(int status)
    {
        HttpAnswer answer;
        answer.status = status;
        m_isKept = false;
        send(answer);
    }

    void send(const HttpAnswer& answer)
    {
        const bool isLive = answer.events && !m_isHead;
        m_isKept = m_isKept && !isLive;
        m_out = headerOf(answer, m_isKept);
        if (isLive)
            watch(answer.events);
        else if (!m_isHead)
            m_out += stringOf(answer.body);
        write();
    }

    void write()
    {
        m_written = 0;
        writeMore();
    }

    // The time counts for a piece: who takes a large file slowly, but takes it, gets all of it.
    void writeMore()
    {
        lowest().expires_after(m_shared.settings.readerTime);
        const std::size_t size = std::min(m_out.size() - m_written, PIECE_BYTES);
        asio::async_write(m_stream, asio::buffer(m_out.data() + m_written, size),
                          [self = this->shared_from_this()](Error error, std::size_t written) {
                              if (error)
                                  return;
                              self->m_written += written;
                              if (self->m_written < self->m_out.size())
                                  self->writeMore();
                              else
                                  self->wasWritten();
                          });
    }

    void wasWritten()
    {
        if (m_events)
            sendEvents();
        else if (m_isKept)
            read();
        else
            end();
    }

    void watch(const std::shared_ptr<EventStream>& events)
    {
        m_events = events;
        // From the thread that pushes, which may not be the one that ends this connection.
        m_events->onChange([weak = this->weak_from_this(), loop = m_stream.get_executor()] {
            asio::post(loop, [weak] {
                if (const auto self = weak.lock())
                    self->eventsChanged();
            });
        });
    }

    // A reader that took too little is dropped, also while it is being sent to.
    void eventsChanged()
    {
        m_pulse.cancel();
        if (m_events->isClosed())
            lowest().close();
    }

    // What waits is sent; when nothing does, the stream or the pulse wakes.
    void sendEvents()
    {
        m_out = m_events->take();
        if (m_out.empty() && !m_isPulseDue)
            return waitForEvents();
        if (m_out.empty())
            m_out = ":\n\n"; // a comment
        m_isPulseDue = false;
        write();
    }

    void waitForEvents()
    {
        lowest().expires_never();
        m_pulse.expires_after(m_shared.settings.pulse);
        m_pulse.async_wait([self = this->shared_from_this()](Error error) {
            self->m_isPulseDue = !error;
            if (self->lowest().socket().is_open())
                self->sendEvents();
        });
        // What came before the timer was set has woken nobody.
        if (m_events->isWaiting())
            m_pulse.cancel();
    }

    void end()
    {
        if constexpr (IS_TLS<Stream>) {
            lowest().expires_after(m_shared.settings.requestTime);
            m_stream.async_shutdown([self = this->shared_from_this()](Error) {});
        } else {
            Error ignored;
            lowest().socket().shutdown(tcp::socket::shutdown_send, ignored);
        }
    }

    Shared& m_shared;
    Stream m_stream;
    beast::flat_buffer m_buffer;
    std::optional<http::request_parser<http::string_body>> m_parser;
    bool m_isHead = false;
    bool m_isKept = false;
    std::shared_ptr<EventStream> m_events;
    asio::steady_timer m_pulse;
    bool m_isPulseDue = false;
    std::string m_out;
    std::size_t m_written = 0; ///< of it
};

using PlainSession = Session<beast::tcp_stream>;
using TlsSession = Session<beast::ssl_stream<beast::tcp_stream>>;

} // namespace

HttpHandler::~HttpHandler() = default;

static QString faultOf(const QString& file, const Error& error)
{
    return error
               ? QStringLiteral("%1: %2").arg(file, QString::fromLocal8Bit(error.message().c_str()))
               : QString();
}

// The same for a server and for a check.
static QString useCertificate(asio::ssl::context& tls, const QString& certificate,
                              const QString& key)
{
    Error error;
    tls.use_certificate_chain_file(certificate.toLocal8Bit().toStdString(), error);
    if (error)
        return faultOf(certificate, error);
    tls.use_private_key_file(key.toLocal8Bit().toStdString(), asio::ssl::context::pem, error);
    return faultOf(key, error);
}

QString certificateFault(const QString& certificate, const QString& key)
{
    asio::ssl::context tls(asio::ssl::context::tls_server);
    return useCertificate(tls, certificate, key);
}

QString authorityFault(const QString& file)
{
    asio::ssl::context tls(asio::ssl::context::tls_client);
    Error error;
    tls.load_verify_file(file.toLocal8Bit().toStdString(), error);
    return faultOf(file, error);
}

class HttpServer::Private
{
public:
    Private(const HttpSettings& settings, HttpHandler& handler)
        : m_shared(settings, handler)
        , m_acceptor(m_loop)
        , m_pause(m_loop)
    {
        if (!settings.certificate.isEmpty())
            beginTls();
        if (m_error.isEmpty())
            listen();
        if (!m_error.isEmpty())
            return;
        accept();
        m_thread = std::thread([this] { m_loop.run(); });
    }

    ~Private()
    {
        m_loop.stop();
        if (m_thread.joinable())
            m_thread.join();
        for (Queue* const queue : {&m_shared.quick, &m_shared.slow}) {
            queue->workers->stop();
            queue->workers->join();
            queue->workers.reset(); // connections that wait for it go before their loop
        }
    }

    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;

    const QString& error() const { return m_error; }
    int port() const { return m_port; }
    int connections() const { return m_shared.connections; }

private:
    void fail(const QString& subject, const Error& error)
    {
        m_error =
            QStringLiteral("%1: %2").arg(subject, QString::fromLocal8Bit(error.message().c_str()));
    }

    void beginTls()
    {
        const HttpSettings& settings = m_shared.settings;
        m_tls.emplace(asio::ssl::context::tls_server);
        m_tls->set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_tlsv1 |
                           asio::ssl::context::no_tlsv1_1);
        m_error = useCertificate(*m_tls, settings.certificate, settings.key);
    }

    void listen()
    {
        const HttpSettings& settings = m_shared.settings;
        const QString where = QStringLiteral("%1 port %2").arg(settings.address).arg(settings.port);
        Error error;
        const auto address = asio::ip::make_address(settings.address.toStdString(), error);
        if (error)
            return fail(where, error);
        const tcp::endpoint endpoint(address, static_cast<std::uint16_t>(settings.port));
        m_acceptor.open(endpoint.protocol(), error);
        if (!error)
            m_acceptor.set_option(asio::socket_base::reuse_address(true), error);
        if (!error)
            m_acceptor.set_option(asio::socket_base::send_buffer_size(SEND_BUFFER_BYTES), error);
        if (!error)
            m_acceptor.bind(endpoint, error);
        if (!error)
            m_acceptor.listen(asio::socket_base::max_listen_connections, error);
        if (!error)
            m_port = m_acceptor.local_endpoint(error).port();
        if (error)
            fail(where, error);
    }

    void accept()
    {
        m_acceptor.async_accept([this](Error error, tcp::socket socket) {
            if (error)
                return acceptLater(); // such as no descriptor left
            if (m_shared.connections < m_shared.settings.mostConnections) {
                if (m_tls)
                    std::make_shared<TlsSession>(m_shared, std::move(socket), *m_tls)->start();
                else
                    std::make_shared<PlainSession>(m_shared, std::move(socket))->start();
            }
            accept();
        });
    }

    void acceptLater()
    {
        m_pause.expires_after(ACCEPT_PAUSE);
        m_pause.async_wait([this](Error error) {
            if (!error)
                accept();
        });
    }

    Shared m_shared; ///< outlives the connections, which the loop holds
    std::optional<asio::ssl::context> m_tls;
    asio::io_context m_loop{1};
    tcp::acceptor m_acceptor;
    asio::steady_timer m_pause;
    QString m_error;
    int m_port = 0;
    std::thread m_thread;
};

HttpServer::HttpServer(const HttpSettings& settings, HttpHandler& handler)
    : m_d(std::make_unique<Private>(settings, handler))
{
}

HttpServer::~HttpServer() = default;

const QString& HttpServer::error() const
{
    return m_d->error();
}

int HttpServer::port() const
{
    return m_d->port();
}

int HttpServer::connections() const
{
    return m_d->connections();
}

} // namespace morsehost
