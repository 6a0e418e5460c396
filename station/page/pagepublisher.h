// SPDX-License-Identifier: MIT
// A station's page as the station uses it.
#pragma once

#include "station/page/archivewatch.h"
#include "station/page/livefeed.h"
#include "station/page/stationpage.h"

#include <functional>
#include <memory>

namespace morsehost {

/// Where its address cannot be served now, such as while another program has it, it is tried again.
class PagePublisher : public Publisher
{
public:
    /// Called from the station's thread, once each: an error, or where the page is.
    using Report = std::function<void(const QString& line)>;

    PagePublisher(const PageSettings& settings, const QString& station, const QString& archive,
                  const QString& folder, Report report);

    void receivers(const std::vector<ReceiverFacts>& all) override;
    void heard(const QString& receiver, const QJsonObject& object) override;
    void transmission(const ArchiveRecord& record) override;
    void tick() override;

    /// 0 while it is not served.
    int port() const;

private:
    void serve();

    PageSettings m_settings;
    Report m_report;
    QString m_problem;
    int m_ticks = 0;
    LiveFeed m_live;
    StationPage m_page;
    ArchiveWatch m_others; ///< stations that share the archive
    std::unique_ptr<HttpServer> m_server;
};

} // namespace morsehost
