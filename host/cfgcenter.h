// SPDX-License-Identifier: MIT
// The host's configuration centre, as far as the library reads from it.
#pragma once

#include "host/hostapi.h"

#include <QString>

/// An open configuration. It belongs to the configuration centre; users do not delete it.
class HOST_API ICfg
{
public:
    /// Which layers of the configuration are seen.
    enum View : int {
        eVIEW_ALL = 4,
    };

    virtual ~ICfg();

    /// Empty when there is no such key.
    virtual QString GetString(const QString& group, const QString& key) = 0;

protected:
    ICfg() = default;
    ICfg(const ICfg&) = default;
    ICfg& operator=(const ICfg&) = default;
};

/// Where configurations are opened.
class HOST_API CfgCenter
{
public:
    /// Null when there is no such configuration. May be called from any thread.
    static ICfg* CreateCfg(QString application, ICfg::View view, QString scope);
};
