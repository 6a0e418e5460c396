// SPDX-License-Identifier: MIT
// Passes all that a station reports on to another listener, for those that look at a part of it.
#pragma once

#include "station/stationlistener.h"

namespace morsehost {

class PassingListener : public StationListener
{
public:
    /// The next one outlives it.
    explicit PassingListener(StationListener& next);

    void time(unsigned long long time_us) override;
    void symbol(int code) override;
    void text(const QString& text) override;
    void unknownCode(const QString& elements) override;
    void transmission(const Transmission& transmission) override;
    void saving(const QString& message) override;

private:
    StationListener& m_next;
};

} // namespace morsehost
