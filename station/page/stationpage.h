// SPDX-License-Identifier: MIT
// The page of a station: what is asked of it, and what it answers.
#pragma once

#include "station/archive/archive.h"
#include "station/page/httpserver.h"
#include "station/page/livefeed.h"
#include "station/page/password.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QUrlQuery>

#include <memory>

namespace morsehost {

struct PageSettings
{
    QString address; ///< of this machine, as digits; empty: no page
    int port = 0;
    QByteArray passwordHash; ///< empty: everybody may look
    QString certificate;
    QString key;
    QStringList hosts; ///< names that the page may be called by, beside addresses and "localhost"

    bool operator==(const PageSettings& other) const;
};

/// Everything is only read. What was received is data in JSON, never markup.
class StationPage : public HttpHandler
{
public:
    struct Sources
    {
        LiveFeed& live;  ///< outlives the page
        QString archive; ///< URL
        QString folder;  ///< only files below it are given away
    };

    StationPage(const PageSettings& settings, const Sources& sources);

    HttpAnswer answer(const HttpRequest& request) override;
    /// What is in the archive.
    bool isSlow(const HttpRequest& request) const override;

private:
    bool isForUs(const HttpRequest& request) const;
    PasswordGate::Answer admit(const HttpRequest& request);
    HttpAnswer answerPath(const QStringList& path, const QUrlQuery& query);
    HttpAnswer search(const QUrlQuery& query) const;
    HttpAnswer transmission(const QString& name) const;
    HttpAnswer file(const QString& name, int index) const;
    QString fileToGive(const QString& path) const;
    QJsonObject foundObject(const ArchivedTransmission& found) const;

    PageSettings m_settings;
    Sources m_sources;
    std::unique_ptr<PasswordGate> m_gate; ///< null when nobody is asked
};

} // namespace morsehost
