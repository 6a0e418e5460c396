// SPDX-License-Identifier: MIT
#include "station/stationlistener.h"

namespace morsehost {

StationListener::~StationListener() = default;
void StationListener::time(unsigned long long /*time_us*/) {}
void StationListener::symbol(int /*code*/) {}
void StationListener::text(const QString& /*text*/) {}
void StationListener::unknownCode(const QString& /*elements*/) {}
void StationListener::transmission(const Transmission& /*transmission*/) {}
void StationListener::saving(const QString& /*message*/) {}

} // namespace morsehost
