// SPDX-License-Identifier: MIT
// What people write to narrow a search.
#pragma once

#include "station/archive/archive.h"

#include <QString>

#include <optional>

namespace morsehost {

/// Microseconds since 1970-01-01 00:00 UTC from a day or an ISO 8601 time; UTC where it names no
/// zone. Nothing for whatever is neither.
std::optional<qint64> archiveTimeOf(const QString& text);

/// "7000-7040", or "7025" for 500 Hz around it, in kHz. False for whatever is neither.
bool readArchiveFrequency(const QString& text, ArchiveQuery& query);

} // namespace morsehost
