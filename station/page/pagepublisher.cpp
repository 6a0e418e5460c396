// SPDX-License-Identifier: MIT
#include "station/page/pagepublisher.h"

#include <utility>

namespace morsehost {

namespace {

constexpr int TICKS_BETWEEN_TRIES = 40;

} // namespace

PagePublisher::PagePublisher(const PageSettings& settings, const QString& station,
                             const QString& archive, const QString& folder, Report report)
    : m_settings(settings)
    , m_report(std::move(report))
    , m_live(station)
    , m_page(settings, {m_live, archive, folder})
    , m_others({archive, station},
               [this](const ArchiveRecord& record) { m_live.transmission(record); })
{
    serve();
}

void PagePublisher::serve()
{
    HttpSettings http;
    http.address = m_settings.address;
    http.port = m_settings.port;
    http.certificate = m_settings.certificate;
    http.key = m_settings.key;
    m_server = std::make_unique<HttpServer>(http, m_page);
    const QString problem = m_server->error();
    if (problem.isEmpty()) {
        m_report(QStringLiteral("page: %1://%2:%3")
                     .arg(QLatin1String(http.certificate.isEmpty() ? "http" : "https"),
                          http.address.contains(QLatin1Char(':'))
                              ? QLatin1Char('[') + http.address + QLatin1Char(']')
                              : http.address)
                     .arg(m_server->port()));
    } else {
        m_server.reset();
        if (problem != m_problem)
            m_report(QStringLiteral("page: %1; tried again").arg(problem));
    }
    m_problem = problem;
}

void PagePublisher::receivers(const std::vector<ReceiverFacts>& all)
{
    m_live.receivers(all);
}

void PagePublisher::heard(const QString& receiver, const QJsonObject& object)
{
    m_live.heard(receiver, object);
}

void PagePublisher::transmission(const ArchiveRecord& record)
{
    m_live.transmission(record);
}

void PagePublisher::tick()
{
    m_live.flush();
    m_ticks = (m_ticks + 1) % TICKS_BETWEEN_TRIES;
    if (!m_server && m_ticks == 0)
        serve();
}

int PagePublisher::port() const
{
    return m_server ? m_server->port() : 0;
}

} // namespace morsehost
